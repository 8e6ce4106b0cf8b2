// Builds a data set as a tree of this library.
#ifndef BENCHMARKS_VOK_TREE_H
#define BENCHMARKS_VOK_TREE_H

#include "benchmarks/data_sets.h"
#include "vok/data/data.h"

namespace bench {

// Appends uChildren items and what is below them to oNode; oNameOf gives the name or key of
// an item.
template <class NameOf>
void BuildTree(const Set& oSet, vok::Data& oNode, std::uint32_t uChildren, std::size_t& uNext,
               const NameOf& oNameOf) {
    for (std::uint32_t u = 0; u < uChildren; ++u) {
        const Item& oItem = oSet.items[uNext++];
        const vok::Data_Name oName = oNameOf(oItem);
        switch (oItem.eKind) {
            case Kind::Integer: oNode.AddInt(oName, oItem.iValue); break;
            case Kind::Double: oNode.AddDbl(oName, oItem.dValue); break;
            case Kind::Boolean: oNode.AddBool(oName, oItem.iValue != 0); break;
            case Kind::Text: oNode.AddStr(oName, {oItem.pText, oItem.uText}); break;
            case Kind::Binary: oNode.AddBin(oName, oItem.pText, oItem.uText); break;
            case Kind::Map:
            case Kind::List:
                oNode.SetToNewSucc(oName);
                BuildTree(oSet, oNode, oItem.uChildren, uNext, oNameOf);
                oNode.SetToPred();
        }
    }
}

// The whole tree, built by names.
inline vok::Data MakeTree(const Set& oSet) {
    vok::Data oTree;
    oTree.SetToRoot();
    oTree.SetRootName(oSet.names[oSet.items[0].uName].c_str());
    std::size_t uNext = 1;
    BuildTree(oSet, oTree, oSet.items[0].uChildren, uNext,
              [&](const Item& oItem) { return vok::Data_Name(oSet.names[oItem.uName]); });
    return oTree;
}

}  // namespace bench

#endif  // BENCHMARKS_VOK_TREE_H

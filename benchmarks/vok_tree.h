// SPDX-License-Identifier: MIT
// Builds a data set as a tree of this library.
#ifndef BENCHMARKS_VOK_TREE_H
#define BENCHMARKS_VOK_TREE_H

#include "benchmarks/data_sets.h"
#include "vok/data/builder.h"

namespace bench {

// Appends uChildren items and what is below them to the open node; oNameOf gives the name or key of
// an item.
template <class NameOf>
void BuildTree(const Set& oSet, vok::Data_Builder& o, std::uint32_t uChildren, std::size_t& uNext,
               const NameOf& oNameOf) {
    for (std::uint32_t u = 0; u < uChildren; ++u) {
        const Item& oItem = oSet.items[uNext++];
        const vok::Data_Name oName = oNameOf(oItem);
        switch (oItem.eKind) {
            case Kind::Integer: o.AddInt(oName, oItem.iValue); break;
            case Kind::Double: o.AddDbl(oName, oItem.dValue); break;
            case Kind::Boolean: o.AddBool(oName, oItem.iValue != 0); break;
            case Kind::Text: o.AddStr(oName, {oItem.pText, oItem.uText}); break;
            case Kind::Binary: o.AddBin(oName, oItem.pText, oItem.uText); break;
            case Kind::Map:
            case Kind::List:
                o.Open(oName);
                BuildTree(oSet, o, oItem.uChildren, uNext, oNameOf);
                o.Close();
        }
    }
}

// The whole tree below its root, by names or keys.
template <class NameOf>
void BuildTree(const Set& oSet, vok::Data& oRoot, const NameOf& oNameOf) {
    vok::Data_Builder oBuilder(oRoot);
    std::size_t uNext = 1;
    BuildTree(oSet, oBuilder, oSet.items[0].uChildren, uNext, oNameOf);
}

// The whole tree, built by names.
inline vok::Data MakeTree(const Set& oSet) {
    vok::Data oTree;
    oTree.SetToRoot();
    oTree.SetRootName(oSet.names[oSet.items[0].uName].c_str());
    BuildTree(oSet, oTree,
              [&](const Item& oItem) { return vok::Data_Name(oSet.names[oItem.uName]); });
    return oTree;
}

}  // namespace bench

#endif  // BENCHMARKS_VOK_TREE_H

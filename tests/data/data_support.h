// What the tests of trees share.
#ifndef TESTS_DATA_DATA_SUPPORT_H
#define TESTS_DATA_DATA_SUPPORT_H

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/base/msg_capture.h"
#include "vok/data/data.h"
#include "vok/data/succ_it.h"

namespace vok {

// Raised errors print nothing.
inline const bool g_bQuiet = (Msg::SetBanner(false), true);

using Ids = std::vector<u2_t>;
using Texts = std::vector<std::string>;

// The live nodes that an iterator delivers.
inline Ids IdsOf(Data_SuccIt oIt) {
    Ids oIds;
    for (; oIt.SkipZombies(); oIt.Advance()) oIds.push_back(oIt.GetData().GetId());
    return oIds;
}

inline Ids IdsOf(const Data_NodeSet& oSet) {
    Ids oIds;
    for (std::size_t u = 0; u < oSet.Size(); ++u) oIds.push_back(oSet.GetNth(u).GetId());
    return oIds;
}

// The where-trail of the error that oBody raises; empty if none.
template <class F>
std::string Trail(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        return oError.where();
    }
    return "";
}

inline u2_t Below(std::mt19937& oRandom, std::size_t uEnd) {
    return static_cast<u2_t>(oRandom() % uEnd);
}

// Appends uCount nodes below random nodes of a tree, named at random from sNames.
inline void Grow(const Data& oRoot, std::mt19937& oRandom, unsigned uCount, const Texts& sNames) {
    for (unsigned u = 0; u < uCount;) {
        Data oParent = oRoot.GetNodeFromID(Below(oRandom, oRoot.GetNodes()));
        if (oParent.GetType() != Data_Node::Tree && oParent.GetType() != Data_Node::Empty) continue;
        oParent.CreateNewSucc(sNames[Below(oRandom, sNames.size())].c_str());
        ++u;
    }
}

inline Data NewTree() {
    Data oRoot;
    oRoot.SetToRoot();
    return oRoot;
}

}  // namespace vok

#endif  // TESTS_DATA_DATA_SUPPORT_H

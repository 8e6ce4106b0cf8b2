// SPDX-License-Identifier: MIT
// Trees of all that a tree can have, and edits of them, from a seed.
#ifndef TESTS_DATA_RANDOM_TREE_H
#define TESTS_DATA_RANDOM_TREE_H

#include "tests/support.h"

namespace vok {

class Random_Tree {
  public:
    explicit Random_Tree(unsigned uSeed) : m_oRandom(uSeed) {}

    [[nodiscard]] unsigned Below(std::size_t uBound) {
        return static_cast<unsigned>(m_oRandom() % uBound);
    }
    [[nodiscard]] Data Make(unsigned uSteps) {
        Data oRoot = NewTree();
        for (unsigned u = 0; u < uSteps; ++u) Grow(oRoot);
        return oRoot;
    }
    void Edit(Data& oRoot, unsigned uSteps) {
        for (unsigned u = 0; u < uSteps; ++u) EditOnce(oRoot);
    }

  private:
    // A live node.
    Data Any(const Data& oRoot) {
        for (;;) {
            const Data o = oRoot.GetNodeFromID(Below(oRoot.GetNodes()));
            if (o.GetType() != Data_Node::Zombi) return o;
        }
    }
    const char* Name() {
        constexpr const char* NAMES[] = {"a", "b", "order", "", "x/y [1]", "ä"};
        return NAMES[Below(std::size(NAMES))];
    }
    void SetValue(Data o) {
        // Few values of each type, so that nodes look the same.
        const i2_t i = static_cast<i2_t>(Below(4));
        constexpr const char* TEXTS[] = {"", "one", "two\nlines", "\xC3\xA4"};
        switch (Below(12)) {
            case 0: return o.SetValBool(i != 0);
            case 1: return o.SetValInt(i);
            case 2: return o.SetValInt('a' + i, Data_Node::Char);
            case 3: return o.SetValDbl(i / 4.0);
            case 4: return o.SetValDbl(i / 4.0, Data_Node::Float);
            case 5: return o.SetValDbl(i * 86400, Data_Node::Date);
            case 6: return o.SetValLng(u3_t{1} << i * 8);
            case 7: return o.SetValBin("abcd", static_cast<u2_t>(i));
            case 8: return o.SetValQuad(1, 2, 3, static_cast<u2_t>(i));
            case 9: return o.SetValLink(i != 0 ? Any(o) : Data());
            default: return o.SetValStr(TEXTS[i]);
        }
    }
    void SetAttribute(Data o) {
        constexpr const char* NAMES[] = {"id", "k", "a b"};
        constexpr const char* VALUES[] = {nullptr, "", "1", "2", "v<&\""};
        o.SetAttVal(NAMES[Below(std::size(NAMES))], VALUES[Below(std::size(VALUES))]);
    }
    void Grow(const Data& oRoot) {
        Data o = Any(oRoot);
        if (o.GetType() != Data_Node::Tree && o.GetType() != Data_Node::Empty) return;
        if (Below(4) == 0) return SetAttribute(o);
        Data oNew = o.Insert(Name(), Below(3) == 0 ? Below(4) : Data::LAST);
        if (Below(3) != 0) SetValue(oNew);
    }
    void EditOnce(Data& oRoot) {
        Data o = Any(oRoot);
        const bool bTree = o.GetType() == Data_Node::Tree || o.GetType() == Data_Node::Empty;
        const bool bTop = o == oRoot;
        switch (Below(9)) {
            case 0: return SetAttribute(o);
            case 1: return o.GetType() != Data_Node::Tree ? SetValue(o) : Grow(oRoot);
            case 2: return bTop ? Grow(oRoot) : o.Remove();
            case 3: return Below(8) == 0 ? o.RemoveSuccs() : Grow(oRoot);
            case 4: return bTree ? void(Any(oRoot).MkCopy(o, Below(3))) : Grow(oRoot);
            case 5: return bTop ? Grow(oRoot) : o.MoveTo(o.GetPred(), Below(4));
            case 6: return Below(9) == 0 ? oRoot.SetRootName(Name()) : Grow(oRoot);
            case 7:
                if (bTop) return Grow(oRoot);
                o.RemoveSuccs();
                o.ClearVal();
                return SetValue(o);
            default: return Grow(oRoot);
        }
    }

    std::mt19937 m_oRandom;
};

}  // namespace vok

#endif  // TESTS_DATA_RANDOM_TREE_H

// SPDX-License-Identifier: MIT
// Random editing against a plain model of a tree: a vector of children per node.
#include <algorithm>
#include <map>
#include <memory>

#include "tests/support.h"
#include "vok/dgraph/dgraph.h"

namespace vok {
namespace {

// One step; the numbers pick nodes, names and positions among what is there.
struct Op {
    unsigned uKind, a, b, c;
};

struct Model_Node {
    std::string sName, sValue;  // the value as ValueOf shows it; links apart
    std::map<std::string, std::string> oAttributes;
    Model_Node* pParent = nullptr;
    std::vector<Model_Node*> oSuccs;  // removed ones that keep their place included
    Model_Node* pTarget = nullptr;
    bool bDead = false;
    u2_t uId = 0;

    [[nodiscard]] bool IsLink() const { return sValue == "Link"; }
};

std::string ValueOf(const Data& o) {
    const std::string sType = Data_Node::TypeName(o.GetType());
    switch (o.GetType()) {
        case Data_Node::Binary: return sType + BlockOf(o);
        case Data_Node::Empty:
        case Data_Node::Tree: return "";
        case Data_Node::Link:
        case Data_Node::Zombi: return sType;
        default: {
            Str oText;
            o.CvtStr(oText);
            return sType + oText.CStr();
        }
    }
}

// Raises a failure, which is caught where a script is run.
template <class A, class B>
void Same(const A& oReal, const B& oModel, const char* sWhat, u2_t uId) {
    if (oReal == oModel) return;
    std::ostringstream oText;
    oText << sWhat << " of node " << uId << ": " << oReal << " instead of " << oModel;
    throw std::runtime_error(oText.str());
}

class Model {
  public:
    Model() { m_pRoot = Make(""); }

    Model_Node* Make(const std::string& sName) {
        m_oPool.push_back(std::make_unique<Model_Node>());
        m_oPool.back()->sName = sName;
        return m_oPool.back().get();
    }
    // Live nodes below the root and the root, in pre-order.
    [[nodiscard]] std::vector<Model_Node*> Live() const {
        std::vector<Model_Node*> oAll{m_pRoot};
        Collect(m_pRoot, oAll);
        return oAll;
    }
    static void Collect(Model_Node* p, std::vector<Model_Node*>& oAll) {
        for (Model_Node* pSucc : p->oSuccs) {
            if (pSucc->bDead) continue;
            oAll.push_back(pSucc);
            Collect(pSucc, oAll);
        }
    }
    [[nodiscard]] std::vector<Model_Node*> Placeholders() const {
        std::vector<Model_Node*> oAll;
        for (const Model_Node* p : Live()) {
            for (Model_Node* pSucc : p->oSuccs) {
                if (pSucc->bDead) oAll.push_back(pSucc);
            }
        }
        return oAll;
    }

    static void Hang(Model_Node* p, Model_Node* pParent, std::size_t uPos) {
        auto& o = pParent->oSuccs;
        const auto oIsLess = [](const Model_Node* x, const Model_Node* y) {
            return x->sName < y->sName;
        };
        const auto [oFirst, oEnd] = std::equal_range(o.begin(), o.end(), p, oIsLess);
        const auto uRun = static_cast<std::size_t>(oEnd - oFirst);
        o.insert(oFirst + static_cast<std::ptrdiff_t>(std::min(uPos, uRun)), p);
        p->pParent = pParent;
        pParent->sValue.clear();
    }
    static void Unhang(Model_Node* p) {
        std::erase(p->pParent->oSuccs, p);
        p->pParent = nullptr;
    }
    static void Kill(Model_Node* p) {
        for (Model_Node* pSucc : p->oSuccs) {
            Kill(pSucc);
            pSucc->pParent = nullptr;
        }
        p->oSuccs.clear();
        p->sValue.clear();
        p->pTarget = nullptr;
        p->bDead = true;
    }
    [[nodiscard]] static bool IsBelow(const Model_Node* p, const Model_Node* pTop) {
        while (p != nullptr && p != pTop) p = p->pParent;
        return p == pTop;
    }
    // A copy with ids from uId on in pre-order; links that lead out are kept or lost.
    Model_Node* Copy(const Model_Node* p, u2_t& uId, bool bKeepOuter) {
        std::map<const Model_Node*, Model_Node*> oCopies;
        Model_Node* pCopy = CopyNodes(p, uId, oCopies);
        for (const auto& [pOld, pNew] : oCopies) {
            const auto oFound = oCopies.find(pOld->pTarget);
            pNew->pTarget = oFound != oCopies.end() ? oFound->second
                            : bKeepOuter            ? pOld->pTarget
                                                    : nullptr;
        }
        return pCopy;
    }

    // What Shrink does: ids close up in their order.
    void DropDead() {
        std::vector<Model_Node*> oLive = Live();
        for (Model_Node* p : oLive) {
            std::erase_if(p->oSuccs, [](const Model_Node* pSucc) { return pSucc->bDead; });
            if (p->pTarget != nullptr && p->pTarget->bDead) p->pTarget = nullptr;
        }
        std::sort(oLive.begin(), oLive.end(),
                  [](const Model_Node* x, const Model_Node* y) { return x->uId < y->uId; });
        for (std::size_t u = 0; u < oLive.size(); ++u) oLive[u]->uId = static_cast<u2_t>(u);
    }

    void Compare(const Data& oRoot) const {
        for (const Model_Node* p : Live()) {
            const Data o = oRoot.GetNodeFromID(p->uId);
            const char* sShown = o.GetName() != nullptr ? o.GetName() : "";
            Same(sShown, p == m_pRoot && p->sName.empty() ? "Root" : p->sName, "name", p->uId);
            Same(ValueOf(o), p->sValue, "value", p->uId);
            Same(o.GetType() == Data_Node::Tree, !p->oSuccs.empty(), "being a tree", p->uId);
            Texts oExpected;
            for (const auto& [sName, sText] : p->oAttributes) {
                oExpected.push_back(sName + "=" + sText);
            }
            Same(Joined(AttributesOf(o, true)), Joined(oExpected), "attributes", p->uId);
            if (p->pParent != nullptr) {
                Same(o.GetPred().GetId(), p->pParent->uId, "predecessor", p->uId);
            }
            if (p->IsLink()) Same(TargetOf(o), TargetOf(*p), "target", p->uId);
            CompareSuccs(o, *p);
        }
    }
    [[nodiscard]] bool HasLooseLinks() const {
        return std::ranges::any_of(Live(), [this](const Model_Node* p) {
            return p->IsLink() && (TargetOf(*p) == Data_Node::NONE || p->pTarget == m_pRoot);
        });
    }

    Model_Node* m_pRoot;

  private:
    Model_Node* CopyNodes(const Model_Node* p, u2_t& uId,
                          std::map<const Model_Node*, Model_Node*>& oCopies) {
        Model_Node* pCopy = Make(p->sName);
        oCopies[p] = pCopy;
        pCopy->sValue = p->sValue;
        pCopy->oAttributes = p->oAttributes;
        pCopy->uId = uId++;
        for (const Model_Node* pSucc : p->oSuccs) {
            if (pSucc->bDead) continue;
            pCopy->oSuccs.push_back(CopyNodes(pSucc, uId, oCopies));
            pCopy->oSuccs.back()->pParent = pCopy;
        }
        return pCopy;
    }
    static void CompareSuccs(const Data& o, const Model_Node& oNode) {
        const auto uSize = static_cast<u2_t>(oNode.oSuccs.size());
        Same(o.GetSuccIt().Size(), uSize, "number of successors", oNode.uId);
        u2_t uNth = 0;
        for (u2_t u = 0; u < uSize; ++u) {
            const Model_Node& oSucc = *oNode.oSuccs[u];
            uNth = u != 0 && oNode.oSuccs[u - 1]->sName == oSucc.sName ? uNth + 1 : 0;
            Same(o.GetNthSucc(u).GetId(), oSucc.uId, "a successor", oNode.uId);
            const Data oNamed = o.GetNthSucc(oSucc.sName.c_str(), uNth);
            Same(oNamed.GetId(), oSucc.uId, "a named successor", oNode.uId);
            Same(oNamed.GetType() == Data_Node::Zombi, oSucc.bDead, "death", oSucc.uId);
            CompareSiblings(oNamed, oNode, u);
            const std::string sEnd = "[" + std::to_string(uNth) + "]";
            Same(std::string(oNamed.GetPath().CStr()).ends_with(sEnd), true, "path", oSucc.uId);
        }
    }
    static void CompareSiblings(const Data& o, const Model_Node& oParent, u2_t uPlace) {
        const auto& oAll = oParent.oSuccs;
        const auto oIsLive = [](const Model_Node* p) { return !p->bDead; };
        const auto pNext = std::find_if(oAll.begin() + uPlace + 1, oAll.end(), oIsLive);
        const auto pPrev = std::find_if(oAll.rend() - uPlace, oAll.rend(), oIsLive);
        const Data oNext = o.GetNext();
        const Data oPrev = o.GetPrev();
        Same(oNext.IsNode() ? oNext.GetId() : Data_Node::NONE,
             pNext != oAll.end() ? (*pNext)->uId : Data_Node::NONE, "the next one", o.GetId());
        Same(oPrev.IsNode() ? oPrev.GetId() : Data_Node::NONE,
             pPrev != oAll.rend() ? (*pPrev)->uId : Data_Node::NONE, "the one in front", o.GetId());
        Same(o.GetPred().GetLiveSuccs(),
             static_cast<u2_t>(std::count_if(oAll.begin(), oAll.end(), oIsLive)), "live ones",
             oParent.uId);
    }
    static u2_t TargetOf(const Model_Node& o) {
        return o.pTarget != nullptr && !o.pTarget->bDead ? o.pTarget->uId : Data_Node::NONE;
    }
    static u2_t TargetOf(const Data& o) {
        const Data oTarget = o.GetValLink();
        const bool bLive = oTarget.IsNode() && oTarget.GetType() != Data_Node::Zombi;
        return bLive ? oTarget.GetId() : Data_Node::NONE;
    }

    std::vector<std::unique_ptr<Model_Node>> m_oPool;
};

// A tree and its model, which take the same steps.
class Editing {
  public:
    static constexpr unsigned KINDS = 22;
    static constexpr unsigned SHRINK = 12;

    void Step(const Op& o) {
        Model_Node* const p = Pick(o.a);
        switch (o.uKind % KINDS) {
            case 0:
            case 1:
            case 2: return Insert(o, false);
            case 3:
            case 4: return Insert(o, true);
            case 5:
                if (p == m_oModel.m_pRoot) return;
                At(p).Remove();
                return Model::Kill(p);
            case 6: return RemoveSuccs(o);
            case 7:
            case 8: return Move(o);
            case 9: return Copy(o, false);
            case 10: return EraseOrRevive(o, true);
            case 11: return EraseOrRevive(o, false);
            case SHRINK: {
                Data oFollow = At(p);
                oFollow.Shrink();
                m_oModel.DropDead();
                return Same(oFollow.GetId(), p->uId, "followed id", p->uId);
            }
            case 13: return ThroughDump(o);
            case 14: return ThroughClone();
            case 15: return Copy(o, true);
            case 16: return SetAttribute(o);
            case 17: return CopyValue(o);
            case 18: return Reset(o);
            case 19:
                if (p == m_oModel.m_pRoot) return;
                At(p).Delete();
                Model::Kill(p);
                return Model::Unhang(p);
            case 20: return Rename(o);
            default: return SetValue(o);
        }
    }
    void Compare() const {
        EXPECT_EQ(Fault(m_oRoot), "");
        m_oModel.Compare(m_oRoot);
    }

  private:
    static const char* NameFor(unsigned u) {
        static constexpr const char* NAMES[] = {"b", "a", "", "c d", "ab", "long name of a node"};
        return NAMES[u % std::size(NAMES)];
    }
    Data At(const Model_Node* p) const { return m_oRoot.GetNodeFromID(p->uId); }
    Model_Node* Pick(unsigned u) const {
        const auto oLive = m_oModel.Live();
        return oLive[u % oLive.size()];
    }
    Model_Node* PickParent(unsigned u) const {
        auto oLive = m_oModel.Live();
        std::erase_if(oLive, [](const Model_Node* p) { return !p->sValue.empty(); });
        return oLive.empty() ? nullptr : oLive[u % oLive.size()];
    }
    // Positions near the front, and past the end.
    static u2_t Position(unsigned u) { return u % 5 == 4 ? Data::LAST : u % 5; }
    [[nodiscard]] u2_t NextId() const { return m_oRoot.GetNodes(); }

    void Insert(const Op& o, bool bAtPosition) {
        Model_Node* const pParent = PickParent(o.a);
        if (pParent == nullptr) return;
        Model_Node* const p = m_oModel.Make(NameFor(o.b));
        p->uId = NextId();
        const u2_t uPos = bAtPosition ? Position(o.c) : Data::LAST;
        Data oParent = At(pParent);
        const Data oNew =
            bAtPosition ? oParent.Insert(NameFor(o.b), uPos) : oParent.Append(NameFor(o.b));
        Same(oNew.GetId(), p->uId, "new id", p->uId);
        Model::Hang(p, pParent, uPos);
    }
    void RemoveSuccs(const Op& o) {
        if (o.b % 4 != 0) return;
        Model_Node* const p = Pick(o.a);
        At(p).RemoveSuccs();
        const std::string sValue = p->sValue;
        Model_Node* const pTarget = p->pTarget;
        Model::Kill(p);
        p->bDead = false;
        p->sValue = sValue;
        p->pTarget = pTarget;
    }
    void Move(const Op& o) {
        Model_Node* const p = Pick(o.a);
        Model_Node* const pParent = PickParent(o.b);
        if (p == m_oModel.m_pRoot || pParent == nullptr) return;
        Data oNode = At(p);
        if (Model::IsBelow(pParent, p)) {
            Same(Raised([&] { oNode.MoveTo(At(pParent)); }),
                 std::string("cannot link with outer structure\n"), "move", p->uId);
            return;
        }
        oNode.MoveTo(At(pParent), Position(o.c));
        Same(oNode.GetId(), p->uId, "id after move", p->uId);
        Model::Unhang(p);
        Model::Hang(p, pParent, Position(o.c));
    }
    void Rename(const Op& o) {
        Model_Node* const p = Pick(o.a);
        At(p).Rename(NameFor(o.b), Position(o.c));
        Model_Node* const pParent = p->pParent;
        if (pParent != nullptr) Model::Unhang(p);
        p->sName = NameFor(o.b);
        if (pParent != nullptr) Model::Hang(p, pParent, Position(o.c));
    }
    // Another tree on the way loses the links that lead out of the copy.
    void Copy(const Op& o, bool bThroughOther) {
        Model_Node* const p = Pick(o.a);
        Model_Node* const pParent = PickParent(o.b);
        if (pParent == nullptr || m_oRoot.GetNodes() > 400) return;
        u2_t uId = NextId();
        Model_Node* const pCopy = m_oModel.Copy(p, uId, !bThroughOther);
        Data oCopy;
        if (bThroughOther) {
            Data oOther = NewTree();
            oOther.CreateNewSucc("a").SetValStr("a text in front");
            oCopy = At(p).MkCopy(oOther);
            oCopy.MoveTo(At(pParent), Position(o.c));
            oOther.Shrink();
            Same(oOther.GetNodes(), 2u, "nodes left behind", 0);
        } else {
            oCopy = At(p).MkCopy(At(pParent), Position(o.c));
        }
        Same(oCopy.GetId(), pCopy->uId, "id of copy", p->uId);
        Model::Hang(pCopy, pParent, Position(o.c));
    }
    void EraseOrRevive(const Op& o, bool bErase) {
        const auto oGone = m_oModel.Placeholders();
        if (oGone.empty()) return;
        Model_Node* const p = oGone[o.a % oGone.size()];
        if (bErase) {
            At(p).Erase();
            return Model::Unhang(p);
        }
        At(p).ClearVal();
        p->bDead = false;
    }
    // The tree as it comes back from a form it was saved in.
    template <class Save, class Load>
    [[nodiscard]] Data Again(const char* sForm, Save&& oSave, Load&& oLoad,
                             const char* sBehind = "") const {
        File_Buf oBuf("w");
        oSave(oBuf);
        File_Buf oIn(oBuf.Data(), oBuf.Size());
        Data oLoaded;
        oLoad(oLoaded, oIn);
        Same(std::string_view(oIn.Peek(), oIn.Remaining()), std::string_view(sBehind), sForm, 0);
        Same(Data::Equal(m_oRoot, oLoaded), true, sForm, 0);
        return oLoaded;
    }
    void ThroughDump(const Op& o) {
        const auto SaveDGraph = [&](File_Buf& oOut) { Dgraph_SaveDGraph(m_oRoot, oOut); };
        const auto LoadDGraph = [](Data& oTree, File_Buf& oIn) { Dgraph_LoadDGraph(oTree, oIn); };
        Dgraph_SetVersion(m_oRoot, 2, 3, 0);
        if (o.b % 2 == 0) {
            m_oRoot = Again("a document of a dump", SaveDGraph, LoadDGraph);
        } else {
            m_oRoot = Again(
                "a dump", [&](File_Buf& oOut) { m_oRoot.Dump(oOut); },
                [](Data& oTree, File_Buf& oIn) { oTree.Load(oIn); });
        }
        m_oModel.Compare(m_oRoot);
        if (m_oModel.HasLooseLinks()) return;
        // Documents of records and XML leave placeholders out.
        Dgraph_SetVersion(m_oRoot, 1, 3, 0);
        (void)Again("a document", SaveDGraph, LoadDGraph);
        (void)Again(
            "XML", [&](File_Buf& oOut) { m_oRoot.SaveToXML(oOut); },
            [](Data& oTree, File_Buf& oIn) { oTree.LoadFromXML(oIn, 0); }, "\n");
    }
    void ThroughClone() {
        const Data oClone = m_oRoot.MkClone();
        Same(Data::Equal(m_oRoot, oClone), true, "equality of clone", 0);
        m_oRoot = oClone;
        m_oModel.DropDead();
        u2_t uId = 0;
        for (Model_Node* p : m_oModel.Live()) p->uId = uId++;
        Same(m_oRoot.GetNodes(), uId, "nodes of clone", 0);
    }
    void Reset(const Op& o) {
        if (o.a % 16 != 0) return;
        m_oRoot.Reset();
        m_oModel.m_pRoot = m_oModel.Make("");
        Same(m_oRoot.GetNodes(), 1u, "nodes after reset", 0);
    }
    void SetAttribute(const Op& o) {
        static constexpr const char* NAMES[] = {"q", "p", "é", "longer_than_eight", "longer_than"};
        Model_Node* const p = Pick(o.a);
        Data oNode = At(p);
        const char* sName = NAMES[o.b % std::size(NAMES)];
        const std::string sValue(1 + o.c % 20, static_cast<char>('a' + o.b % 26));
        if (o.c % 64 == 0) {
            oNode.RemoveAttributes();
            p->oAttributes.clear();
        } else if (o.c % 8 == 1) {
            Model_Node* const pTo = Pick(o.b);
            Data oTo = At(pTo);
            oNode.CopyAtt(oTo);
            pTo->oAttributes = std::map(p->oAttributes);
        } else if (o.c % 5 == 0) {
            oNode.SetAttVal(sName, nullptr);
            p->oAttributes.erase(sName);
        } else {
            oNode.SetAttVal(sName, sValue.c_str());
            p->oAttributes[sName] = sValue;
        }
    }
    void CopyValue(const Op& o) {
        Model_Node* const pFrom = Pick(o.a);
        Model_Node* const pTo = Pick(o.b);
        if (!pFrom->oSuccs.empty() || !pTo->oSuccs.empty()) return;
        Data oTo = At(pTo);
        Data::CopyVal(At(pFrom), oTo);
        pTo->sValue = pFrom->sValue;
        pTo->pTarget = pFrom->pTarget;
    }
    void SetValue(const Op& o) {
        Model_Node* const p = Pick(o.a);
        Data oNode = At(p);
        if (!p->oSuccs.empty()) return;
        const std::string sText(o.c % 40, static_cast<char>('a' + o.c % 26));
        p->pTarget = nullptr;
        switch (o.b % 10) {
            case 0: oNode.SetValInt(static_cast<i2_t>(o.c)); break;
            case 1: oNode.SetValBool(o.c % 2 == 0); break;
            case 2: oNode.SetValDbl(o.c * 0.25); break;
            case 3: oNode.SetValDbl(o.c % 100000, Data_Node::Date); break;
            case 4: oNode.SetValLng(u3_t{o.c} << 20); break;
            case 5: oNode.SetValStr(sText); break;
            case 6: oNode.SetValBin(sText.data(), static_cast<u2_t>(sText.size())); break;
            case 7: oNode.SetValQuad(o.a, o.b, o.c, 7); break;
            case 8:
                p->pTarget = Pick(o.c);
                oNode.SetValLink(At(p->pTarget));
                break;
            default: oNode.ClearVal(); break;
        }
        p->sValue = ValueOf(oNode);
    }

    Data m_oRoot = NewTree();
    Model m_oModel;
};

TEST(Model, RandomEditing) {
#ifdef __OPTIMIZE__
    constexpr unsigned SEEDS = 3000;
#else
    constexpr unsigned SEEDS = 500;  // they take as long
#endif
    for (unsigned uSeed = 1; uSeed <= SEEDS; ++uSeed) {
        std::mt19937 oRandom(uSeed);
        const unsigned uSteps = 100 + uSeed % 200;
        Editing oEditing;
        unsigned uStep = 1;
        try {
            for (; uStep <= uSteps; ++uStep) {
                Op o = {RandomBelow(oRandom, Editing::KINDS), RandomBelow(oRandom, 1 << 16),
                        RandomBelow(oRandom, 1 << 16), RandomBelow(oRandom, 1 << 16)};
                // Every second tree is never compacted.
                if (uSeed % 2 == 0 && o.uKind == Editing::SHRINK) o.uKind = 0;
                oEditing.Step(o);
                if (uStep % 8 == 0 || uStep == uSteps) oEditing.Compare();
            }
        } catch (const std::exception& oError) {
            FAIL() << "seed " << uSeed << ", step " << uStep << ": " << oError.what();
        }
    }
}

}  // namespace
}  // namespace vok

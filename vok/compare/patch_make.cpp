// SPDX-License-Identifier: MIT
// What has to be done to one tree for it to be as another.
#include <string>
#include <string_view>

#include "vok/base/where.h"
#include "vok/compare/aligned_walk.h"
#include "vok/compare/patch_form.h"
#include "vok/compare/path_tree.h"
#include "vok/data/checks.h"
#include "vok/data/escape.h"

namespace vok {

namespace {

class PatchMaker : public Data_FoundSink {
  public:
    PatchMaker(Data_Side& oA, Data_Side& oB)
        : a(oA), b(oB), m_oEdits(oA), m_oTargets(oA), m_oCopied(oB.m_oBase.m_oNode.Size()) {}

    bool Take(const Data_Found& o) override {
        switch (o.eWhat) {
            case Data_Difference::OnlyInA: At(o.uA).bRemoved = true; break;
            case Data_Difference::OnlyInB:
                AddPart(m_oEdits.Add(o.uParentA), {NONE, o.uB, o.uTo, nullptr});
                break;
            case Data_Difference::Name: m_bName = true; break;
            case Data_Difference::Type:
            case Data_Difference::Value: At(o.uA).uContent = o.uB; break;
            case Data_Difference::Attribute:
                AddPart(m_oEdits.Add(o.uA), {NONE, o.uB, 0, o.sAttribute});
                break;
            case Data_Difference::Moved: At(o.uA).uTo = o.uTo; break;
        }
        return true;
    }

    Data Make(const Data_ComparePairs& oCompared) {
        Data oPatch;
        oPatch.SetToRoot();
        oPatch.SetRootName(patch::TOP);
        oPatch.SetAttVal(patch::VERSION, patch::VERSION_1);
        m_oOwn.Resize(m_oEdits.Size());
        Data_Builder oBuilder(oPatch);
        m_pBuilder = &oBuilder;
        m_oEdits.Visit([this](u2_t uTwig, u2_t uBase) { return EnterEdit(uTwig, uBase); },
                       [&oBuilder](u2_t uTwig) {
                           if (uTwig != Data_PathTree::TOP) oBuilder.Close();
                       });
        ResolveLinks(oCompared);
        AddTargets();
        oBuilder.Finish();
        for (const Link& o : m_oLink) {
            Data oLink = oPatch.GetNodeFromID(o.uId);
            oLink.SetValLink(oPatch.GetNodeFromID(o.bTwig ? m_oTargetOf(o.uTarget) : o.uTarget));
        }
        return oPatch;
    }

  private:
    static constexpr u2_t NONE = Data_Node::NONE;

    // What is done to a node of A, by its twig.
    struct Own {
        u2_t uContent = 0;  // node of B whose value or successors it gets, or NONE
        u2_t uTo = 0;       // where it moves to, or NONE
        u2_t uFirst = 0;    // of its parts, NONE for none
        u2_t uLast = 0;
        u2_t uInserts = 0;
        bool bRemoved = false;
        bool bKnown = false;
    };
    // An attribute that changes, or a node that comes in.
    struct Part {
        u2_t uNext;
        u2_t uB;
        u2_t uTo;
        const char* sAttribute;  // null for a node
    };
    // A link of the patch: where it stands, and the node of the patch that it leads to, or the twig
    // of A whose target node that will be.
    struct Link {
        u2_t uId;
        u2_t uTarget;
        bool bTwig;
    };

    Own& At(u2_t uA) { return OwnOf(m_oEdits.Add(uA)); }
    Own& OwnOf(u2_t uTwig) {
        if (uTwig >= m_oOwn.Size()) m_oOwn.Resize(m_oEdits.Size());
        Own& o = m_oOwn(uTwig);
        if (!o.bKnown) o = {NONE, NONE, NONE, NONE, 0, false, true};
        return o;
    }
    void AddPart(u2_t uTwig, const Part& oPart) {
        Own& o = OwnOf(uTwig);
        const u2_t uNew = static_cast<u2_t>(m_oPart.Size());
        m_oPart.Add(oPart);
        if (o.uLast != NONE) m_oPart(o.uLast).uNext = uNew;
        if (o.uFirst == NONE) o.uFirst = uNew;
        o.uLast = uNew;
        o.uInserts += oPart.sAttribute == nullptr;
    }

    // ---- edits --------------------------------------------------------------

    bool EnterEdit(u2_t uTwig, u2_t uBase) {
        const Own o = OwnOf(uTwig);
        if (o.bRemoved) {
            m_pBuilder->Open(patch::REMOVE);
            SetPath(uBase, uTwig);
            CopyOld(m_oEdits(uTwig).uId, true);
            return true;
        }
        const bool bOwn = o.uContent != NONE || o.uTo != NONE || HasAttributes(o);
        const bool bOnWay = !bOwn && o.uInserts + m_oEdits(uTwig).uChildren == 1;
        if (uTwig != Data_PathTree::TOP && bOnWay) {
            AddInserts(o, uTwig, uBase);
            return false;
        }
        if (uTwig == Data_PathTree::TOP) {
            AddName();
        } else {
            m_pBuilder->Open(patch::EDIT);
            SetPath(uBase, uTwig);
        }
        if (o.uTo != NONE) m_pBuilder->SetAttVal(patch::TO, std::to_string(o.uTo));
        AddAttributes(o, m_oEdits(uTwig).uId);
        AddInserts(o, uTwig, uTwig);
        if (o.uContent != NONE) {
            CopyNew(o.uContent, false);
            CopyOld(m_oEdits(uTwig).uId, false);
        }
        return true;
    }

    [[nodiscard]] bool HasAttributes(const Own& o) const noexcept {
        for (u2_t u = o.uFirst; u != NONE; u = m_oPart(u).uNext) {
            if (m_oPart(u).sAttribute != nullptr) return true;
        }
        return false;
    }

    void SetPath(u2_t uFrom, u2_t uTo) {
        m_oPath.Resize(0);
        m_oEdits.AppendPath(m_oPath, uFrom, uTo);
        SetPath();
    }
    void SetPath() { m_pBuilder->SetAttVal(patch::AT, {m_oPath.Beg(), m_oPath.Size()}); }

    void AddName() {
        if (!m_bName) return;
        m_pBuilder->Open(patch::NAME);
        m_pBuilder->AddStr(patch::NEW, b.m_oBase.ShownName(b.m_uTop));
        m_pBuilder->AddStr(patch::OLD, a.m_oBase.ShownName(a.m_uTop));
        m_pBuilder->Close();
    }

    void AddAttributes(const Own& o, u2_t uA) {
        for (u2_t u = o.uFirst; u != NONE; u = m_oPart(u).uNext) {
            const Part& oPart = m_oPart(u);
            if (oPart.sAttribute == nullptr) continue;
            m_pBuilder->Open(patch::ATTRIBUTE);
            m_pBuilder->AddStr(patch::NAME, oPart.sAttribute);
            AddAttribute(patch::NEW, b, oPart.uB, oPart.sAttribute);
            AddAttribute(patch::OLD, a, uA, oPart.sAttribute);
            m_pBuilder->Close();
        }
    }
    void AddAttribute(const char* sName, const Data_Side& oSide, u2_t uId, const char* sAttribute) {
        const u2_t uKey = oSide.m_oBase.m_oAtt.Names().Find(sAttribute);
        const char* sValue = uKey != Hash::NONE && oSide.m_oBase.m_oAtt.Has(uId)
                                 ? oSide.m_oBase.AttributeOf(uId, uKey)
                                 : nullptr;
        if (sValue != nullptr) m_pBuilder->AddStr(sName, std::string_view(sValue));
    }

    void AddInserts(const Own& o, u2_t uTwig, u2_t uBase) {
        for (u2_t u = o.uFirst; u != NONE; u = m_oPart(u).uNext) {
            const Part oPart = m_oPart(u);
            if (oPart.sAttribute != nullptr) continue;
            m_pBuilder->Open(patch::INSERT);
            m_oPath.Resize(0);
            m_oEdits.AppendPath(m_oPath, uBase, uTwig);
            if (uBase != uTwig) m_oPath.Add('/');
            detail::AppendStep(m_oPath, b.NameOf(oPart.uB), oPart.uTo);
            SetPath();
            CopyNew(oPart.uB, true);
            m_pBuilder->Close();
        }
    }

    void CopyNew(u2_t uB, bool bWhole) {
        patch::CopySubtree(*m_pBuilder, b.Cursor(uB), patch::NEW, true,
                           [&](u2_t uId, u2_t uNew, std::size_t uDepth) {
                               if (bWhole || uDepth != 0) {
                                   patch::CopyAttributes(*m_pBuilder, b.m_oBase, uId, m_oKeys);
                                   m_oCopied(uId) = uNew;
                               }
                               if (b.Node(uId).GetType() == Data_Node::Link)
                                   m_oLinkB.Add({uNew, uId, false});
                           });
    }
    void CopyOld(u2_t uA, bool bWhole) {
        patch::CopySubtree(*m_pBuilder, a.Cursor(uA), patch::OLD, true,
                           [&](u2_t uId, u2_t uNew, std::size_t uDepth) {
                               if (bWhole || uDepth != 0) {
                                   patch::CopyAttributes(*m_pBuilder, a.m_oBase, uId, m_oKeys);
                               }
                               if (a.Node(uId).GetType() == Data_Node::Link)
                                   AddLink(uNew, a.InnerTarget(uId));
                           });
    }

    // ---- links ----------------------------------------------------------------

    // A link to a node of A, or to nothing.
    void AddLink(u2_t uId, u2_t uTargetA) {
        if (uTargetA != NONE) {
            m_oLink.Add({uId, m_oTargets.Add(uTargetA), true});
            m_oWanted.Resize(m_oTargets.Size());
            m_oWanted(m_oLink.Last().uTarget) = true;
            return;
        }
        m_bNothing = true;
        m_oLink.Add({uId, NONE, false});
    }

    // What links in B lead to: nodes that A has as well, and others that the patch brings.
    void ResolveLinks(const Data_ComparePairs& oCompared) {
        if (m_oLinkB.Size() == 0) return;
        Data_IdMap<u2_t> oMate(b.m_oBase.m_oNode.Size());
        for (const auto& o : oCompared.Pairs()) oMate(o.uB) = o.uA + 1;
        for (const Link& o : m_oLinkB) {
            const u2_t uTarget = b.InnerTarget(o.uTarget);
            const u2_t uMate = uTarget != NONE ? oMate.Find(uTarget) : 0;
            const u2_t uCopy = uTarget != NONE ? m_oCopied.Find(uTarget) : 0;
            if (uMate == 0 && uCopy != 0) {
                m_oLink.Add({o.uId, uCopy, false});
            } else {
                AddLink(o.uId, uMate - 1);
            }
        }
    }

    void AddTargets() {
        if (m_bNothing) m_uNothing = m_pBuilder->AddEmpty(patch::NOTHING);
        for (std::size_t u = 0; u < m_oLink.Size(); ++u) {
            Link& o = m_oLink(u);
            if (!o.bTwig && o.uTarget == NONE) o.uTarget = m_uNothing;
        }
        m_oTargetOf.Resize(m_oTargets.Size());
        m_oWanted.Resize(m_oTargets.Size());
        const auto oEnter = [this](u2_t uTwig, u2_t uBase) {
            const bool bTop = uTwig == Data_PathTree::TOP;
            if (bTop && !m_oWanted(uTwig)) return true;
            if (!bTop && !m_oWanted(uTwig) && m_oTargets(uTwig).uChildren == 1) return false;
            m_oTargetOf(uTwig) = m_pBuilder->Open(patch::TARGET);
            m_oPath.Resize(0);
            if (bTop) m_oPath.Add('.');
            m_oTargets.AppendPath(m_oPath, uBase, uTwig);
            SetPath();
            if (bTop) m_pBuilder->Close();
            return true;
        };
        m_oTargets.Visit(oEnter, [this](u2_t uTwig) {
            if (uTwig != Data_PathTree::TOP) m_pBuilder->Close();
        });
    }

    Data_Side& a;
    Data_Side& b;
    Data_Builder* m_pBuilder = nullptr;
    Data_PathTree m_oEdits;
    Arr<Own> m_oOwn;
    Arr<Part> m_oPart;
    bool m_bName = false;
    Data_PathTree m_oTargets;  // of A
    Arr<bool> m_oWanted;       // by twig: whether links lead there
    Arr<u2_t> m_oTargetOf;     // by twig: the node of the patch
    Arr<Link> m_oLink;
    Arr<Link> m_oLinkB;          // with the link of B in place of the target
    Data_IdMap<u2_t> m_oCopied;  // by id in B: that in the patch, which is never 0
    bool m_bNothing = false;
    u2_t m_uNothing = 0;
    Arr<char> m_oPath;
    Arr<u2_t> m_oKeys;
};

}  // namespace

Data Data::MakePatch(const Data& oA, const Data& oB, const Data_DiffOptions& oOptions) {
    return Where("vok::Data::MakePatch", [&] {
        Data_Side a(oA, detail::LiveNodeOf(oA.m_oBase, oA.m_uId));
        Data_Side b(oB, detail::LiveNodeOf(oB.m_oBase, oB.m_uId));
        a.Ignore(oOptions);
        b.Ignore(oOptions);
        PatchMaker oMaker(a, b);
        Data_AlignedWalk oWalk(a, b, oOptions, &oMaker);
        oWalk.Run();
        return oMaker.Make(oWalk);
    });
}

Data Data::MakePatch(const Data& oA, const Data& oB) {
    return MakePatch(oA, oB, Data_DiffOptions());
}

}  // namespace vok

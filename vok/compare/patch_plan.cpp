// SPDX-License-Identifier: MIT
#include "vok/compare/patch_plan.h"

#include <charconv>

#include "vok/compare/messages.h"
#include "vok/compare/patch_form.h"
#include "vok/data/escape.h"

namespace vok {

Data_PatchPlan::Data_PatchPlan(Data_Side& oTree, Data_Side& oPatch, Data_PatchTargets& oTargets)
    : m_oTree(oTree),
      m_oPatch(oPatch),
      m_oChangeOf(oTree.m_oBase.m_oNode.Size()),
      m_oTargetOf(oTargets),
      m_oTwinOf(oPatch.m_oBase.m_oNode.Size()),
      m_oRunOf(oTree.m_oBase.m_oNode.Size()) {
    m_oNames.Start();
}

void Data_PatchPlan::Read(u2_t uTop) {
    m_uPatchTop = uTop;
    const char* sVersion = AttributeOf(uTop, patch::VERSION);
    if (sVersion == nullptr || std::strcmp(sVersion, patch::VERSION_1) != 0) Refuse(uTop);
    ReadTargets();
    MakeChange(m_oTree.m_uTop, uTop);
    m_oOpen.Add(Open{uTop, m_oTree.m_uTop});
    while (m_oOpen.Size() != 0) {
        const Open o = m_oOpen.Last();
        m_oOpen.Pop();
        ReadEdit(o);
    }
    std::sort(m_oArrival.Beg(), m_oArrival.End());
}

u2_t Data_PatchPlan::FirstArrival(u2_t uParent) const noexcept {
    const Arrival* p = std::lower_bound(m_oArrival.Beg(), m_oArrival.End(), uParent,
                                        [](const Arrival& o, u2_t u) { return o.uParent < u; });
    return static_cast<u2_t>(p - m_oArrival.Beg());
}

// ---- reading ------------------------------------------------------------------

void Data_PatchPlan::ReadTargets() {
    const u2_t uTop = m_uPatchTop;
    m_oOpen.Add(Open{uTop, m_oTree.m_uTop});
    while (m_oOpen.Size() != 0) {
        const Open o = m_oOpen.Last();
        m_oOpen.Pop();
        const Data_Base::Group oGroup = m_oPatch.m_oBase.SuccOf(o.uPatch);
        for (u2_t u = 0; u < oGroup.uSize; ++u) {
            const u2_t uPart = oGroup.pId[u];
            if (!m_oPatch.IsLive(uPart)) continue;
            const std::string_view sName = m_oPatch.NameOf(uPart);
            if (sName == patch::NOTHING && o.uPatch == uTop)
                m_oTargetOf(uPart) = m_oTargetOf.NOTHING;
            if (sName != patch::TARGET) {
                if (o.uPatch != uTop) Refuse(uPart);
                continue;
            }
            const char* sAt = AttributeOf(uPart, patch::AT);
            u2_t uTarget = m_oTree.m_uTop;
            if (o.uPatch != uTop || sAt == nullptr || std::strcmp(sAt, ".") != 0) {
                Data_Xpath oPath;
                ParseAt(uPart, oPath);
                uTarget = Follow(o.uId, oPath, oPath.Size());
            }
            m_oTargetOf(uPart) = uTarget + 1;
            m_oOpen.Add(Open{uPart, uTarget});
        }
    }
}

void Data_PatchPlan::ReadEdit(const Open& o) {
    const Data_Base::Group oGroup = m_oPatch.m_oBase.SuccOf(o.uPatch);
    const u2_t uFirst = static_cast<u2_t>(m_oAttribute.Size());
    for (u2_t u = 0; u < oGroup.uSize; ++u) {
        if (m_oPatch.IsLive(oGroup.pId[u])) ReadPart(o, oGroup.pId[u]);
    }
    ReadContent(o);
    std::sort(m_oAttribute.Beg() + uFirst, m_oAttribute.End(),
              [](const Attribute& x, const Attribute& y) { return x.IsBelow(y.sName); });
    for (std::size_t u = uFirst + std::size_t{1}; u < m_oAttribute.Size(); ++u) {
        if (std::strcmp(m_oAttribute(u - 1).sName, m_oAttribute(u).sName) == 0) Refuse(o.uPatch);
    }
    Change& oChange = m_oChange(m_oChangeOf.Find(o.uId) - 1);
    oChange.uFirstAttribute = uFirst;
    oChange.uAttributes = static_cast<u2_t>(m_oAttribute.Size()) - uFirst;
}

void Data_PatchPlan::ReadPart(const Open& o, u2_t uPart) {
    const std::string_view sName = m_oPatch.NameOf(uPart);
    const bool bTop = o.uPatch == m_uPatchTop;
    if (sName == patch::EDIT) return ReadChild(o, uPart, false);
    if (sName == patch::REMOVE) return ReadChild(o, uPart, true);
    if (sName == patch::INSERT) return ReadInsert(o, uPart);
    if (sName == patch::ATTRIBUTE) return ReadAttribute(o, uPart);
    if (sName == patch::NAME && bTop) return ReadName(o, uPart);
    if (sName == patch::NEW || sName == patch::OLD) return;
    if (!bTop || (sName != patch::TARGET && sName != patch::NOTHING)) Refuse(uPart);
}

namespace {

// A position in decimal; false for anything else.
[[nodiscard]] bool ParsePosition(const char* s, u2_t& uPos) noexcept {
    const char* pEnd = s + std::strlen(s);
    const auto oResult = std::from_chars(s, pEnd, uPos);
    return oResult.ec == std::errc() && oResult.ptr == pEnd && s != pEnd;
}

}  // namespace

// A node that is changed, or removed.
void Data_PatchPlan::ReadChild(const Open& o, u2_t uPart, bool bRemoves) {
    Data_Xpath oPath;
    ParseAt(uPart, oPath);
    const u2_t uId = Follow(o.uId, oPath, oPath.Size());
    Change& oChange = MakeChange(uId, uPart);
    oChange.bLeaves = oChange.bRemoved = bRemoves;
    if (bRemoves) {
        const u2_t uOld = Part(uPart, patch::OLD);
        if (uOld == NONE) Refuse(uPart);
        return CheckFits(uOld, uId, true);
    }
    if (const char* sTo = AttributeOf(uPart, patch::TO); sTo != nullptr) {
        u2_t uTo = 0;
        if (!ParsePosition(sTo, uTo)) Refuse(uPart);
        m_oChange.Last().bLeaves = true;
        m_oArrival.Add(
            Arrival{m_oTree.Node(uId).Pred(), m_oTree.NameOf(uId), uTo, uPart, NONE, uId});
    }
    m_oOpen.Add(Open{uPart, uId});
}

void Data_PatchPlan::ReadInsert(const Open& o, u2_t uPart) {
    Data_Xpath oPath;
    ParseAt(uPart, oPath);
    const u2_t uNew = Part(uPart, patch::NEW);
    if (uNew == NONE) Refuse(uPart);
    const u2_t uParent = Follow(o.uId, oPath, oPath.Size() - 1);
    const Data_XpathStep& oLast = oPath(oPath.Size() - 1);
    const u2_t uName = m_oNames.Insert(oLast.m_sName);
    m_oArrival.Add(Arrival{uParent, m_oNames(uName).View(), static_cast<u2_t>(oLast.m_iIndex),
                           uPart, uNew, NONE});
}

void Data_PatchPlan::ReadAttribute(const Open& o, u2_t uPart) {
    const u2_t uName = Part(uPart, patch::NAME);
    const u2_t uNew = Part(uPart, patch::NEW);
    const u2_t uOld = Part(uPart, patch::OLD);
    if (uName == NONE || (uNew == NONE && uOld == NONE)) Refuse(uPart);
    const char* sName = TextOf(uName);
    if (*sName == 0) Refuse(uPart);
    const char* sOld = uOld != NONE ? TextOf(uOld) : nullptr;
    const Data_Attributes& oAtt = m_oTree.m_oBase.m_oAtt;
    const u2_t uKey = oAtt.Has(o.uId) ? oAtt.Names().Find(sName) : Hash::NONE;
    const char* sHas = uKey != Hash::NONE ? m_oTree.m_oBase.AttributeOf(o.uId, uKey) : nullptr;
    const bool bFits =
        sHas == nullptr || sOld == nullptr ? sHas == sOld : std::strcmp(sHas, sOld) == 0;
    if (!bFits) detail::RaiseOtherAttribute(PathOf(o.uId).CStr(), sName);
    m_oAttribute.Add(Attribute{sName, uNew != NONE ? TextOf(uNew) : nullptr});
}

void Data_PatchPlan::ReadName(const Open& o, u2_t uPart) {
    const u2_t uNew = Part(uPart, patch::NEW);
    const u2_t uOld = Part(uPart, patch::OLD);
    if (uNew == NONE || uOld == NONE) Refuse(uPart);
    const char* sHas = m_oTree.m_oBase.ShownName(o.uId);
    if (std::strcmp(TextOf(uOld), sHas) != 0) detail::RaiseOtherName(TextOf(uOld), sHas);
    m_sNewName = TextOf(uNew);
}

void Data_PatchPlan::ReadContent(const Open& o) {
    const u2_t uNew = Part(o.uPatch, patch::NEW);
    const u2_t uOld = Part(o.uPatch, patch::OLD);
    if (uNew == NONE && uOld == NONE) return;
    if (uNew == NONE || uOld == NONE) Refuse(o.uPatch);
    CheckFits(uOld, o.uId, false);
    m_oChange(m_oChangeOf.Find(o.uId) - 1).uContent = uNew;
}

Data_PatchPlan::Change& Data_PatchPlan::MakeChange(u2_t uId, u2_t uPatch) {
    u2_t& uNth = m_oChangeOf(uId);
    if (uNth != 0) Refuse(uPatch);  // it has one already
    m_oChange.Add(Change{uId, uPatch, NONE, 0, 0, false, false});
    uNth = static_cast<u2_t>(m_oChange.Size());
    return m_oChange.Last();
}

// ---- what is where --------------------------------------------------------------

u2_t Data_PatchPlan::Follow(u2_t uId, const Data_Xpath& oPath, std::size_t uSteps) {
    for (std::size_t u = 0; u < uSteps; ++u) {
        const std::string_view sName = oPath(u).m_sName;
        const u2_t uPos = static_cast<u2_t>(oPath(u).m_iIndex);
        const u2_t uFound = FindLive(uId, sName, uPos);
        if (uFound == NONE) detail::RaiseNoNode(PathOf(uId, sName, uPos).CStr());
        uId = uFound;
    }
    return uId;
}

u2_t Data_PatchPlan::FindLive(u2_t uParent, std::string_view sName, u2_t uPos) {
    const LiveRun oRun = FindRun(uParent, sName);
    return uPos < oRun.uSize ? oRun.pId[uPos] : NONE;
}

Data_PatchPlan::LiveRun Data_PatchPlan::FindRun(u2_t uParent, std::string_view sName) {
    const u2_t uKey = m_oTree.m_oBase.m_oName.Find(sName);
    if (uKey == Hash::NONE) return {};
    const Data_Base::Group oGroup = m_oTree.m_oBase.SuccOf(uParent);
    const Data_Base::Run oRun = m_oTree.m_oBase.FindRun(oGroup, uKey);
    if (oRun.uSize == 0) return {};
    u2_t& uNth = m_oRunOf(oGroup.pId[oRun.uFirst]);
    if (uNth == 0) {
        const std::size_t uFirst = m_oLive.Size();
        for (u2_t u = 0; u < oRun.uSize; ++u) {
            const u2_t uId = oGroup.pId[oRun.uFirst + u];
            if (m_oTree.IsLive(uId)) m_oLive.Add(uId);
        }
        m_oRun.Add(Run{uFirst, static_cast<u2_t>(m_oLive.Size() - uFirst)});
        uNth = static_cast<u2_t>(m_oRun.Size());
    }
    const Run& o = m_oRun(uNth - 1);
    return {m_oLive.Beg() + o.uFirst, o.uSize};
}

// The path of a part: steps down, each with its position.
void Data_PatchPlan::ParseAt(u2_t uPatch, Data_Xpath& oPath) {
    const char* sAt = AttributeOf(uPatch, patch::AT);
    if (sAt == nullptr) Refuse(uPatch);
    oPath.Parse(sAt);
    bool bGood = oPath.Size() != 0 && !oPath.IsAbsolute();
    for (std::size_t u = 0; u < oPath.Size(); ++u) {
        const Data_XpathStep& o = oPath(u);
        bGood = bGood && o.m_eKind == Data_XpathStep::Named && !o.m_bAnyName && !o.m_bDescendant &&
                o.m_iIndex >= 0 && o.m_oAttName.Size() == 0;
    }
    if (!bGood) Refuse(uPatch);
}

const char* Data_PatchPlan::AttributeOf(u2_t uPatch, const char* sName) const noexcept {
    const Data_Base& p = m_oPatch.m_oBase;
    const u2_t uKey = p.m_oAtt.Has(uPatch) ? p.m_oAtt.Names().Find(sName) : Hash::NONE;
    return uKey != Hash::NONE ? p.AttributeOf(uPatch, uKey) : nullptr;
}

// The first live successor of a name.
u2_t Data_PatchPlan::Part(u2_t uPatch, const char* sName) const {
    const u2_t uKey = m_oPatch.m_oBase.m_oName.Find(sName);
    if (uKey == Hash::NONE) return NONE;
    const Data_Base::Group oGroup = m_oPatch.m_oBase.SuccOf(uPatch);
    const Data_Base::Run oRun = m_oPatch.m_oBase.FindRun(oGroup, uKey);
    for (u2_t u = 0; u < oRun.uSize; ++u) {
        if (m_oPatch.IsLive(oGroup.pId[oRun.uFirst + u])) return oGroup.pId[oRun.uFirst + u];
    }
    return NONE;
}

const char* Data_PatchPlan::TextOf(u2_t uPatch) {
    const Data_Node& oNode = m_oPatch.Node(uPatch);
    if (oNode.GetType() == Data_Node::Empty) return "";
    if (oNode.GetType() != Data_Node::String) Refuse(uPatch);
    return m_oPatch.m_oBase.m_oHeap.At(oNode.uWord2);
}

bool Data_PatchPlan::FindTarget(u2_t uLink, u2_t& uId) {
    const u2_t uTarget = m_oPatch.InnerTarget(uLink);
    const u2_t uFound = uTarget != NONE ? m_oTargetOf.Find(uTarget) : m_oTargetOf.NOTHING;
    uId = uFound != m_oTargetOf.NOTHING ? uFound - 1 : NONE;
    return uFound != 0;
}

// ---- what it expects --------------------------------------------------------------

void Data_PatchPlan::CheckFits(u2_t uOld, u2_t uId, bool bWhole) {
    const Data_Node::Type eOld = m_oPatch.Type(uOld);
    const Data_Node::Type eType = m_oTree.Type(uId);
    if (eOld != eType) {
        detail::RaiseOtherType(PathOf(uId).CStr(), Data_Node::TypeName(eOld),
                               Data_Node::TypeName(eType));
    }
    const auto oSameLinks = [this](u2_t uOldLink, u2_t uLink) {
        u2_t uTarget = NONE;
        return FindTarget(uOldLink, uTarget) && uTarget == m_oTree.InnerTarget(uLink);
    };
    const bool bSame = eType == Data_Node::Link
                           ? oSameLinks(uOld, uId)
                           : m_oPatch.IsSameValue(m_oPatch.Node(uOld), m_oTree, m_oTree.Node(uId));
    if (!bSame) detail::RaiseOtherValue(PathOf(uId).CStr());
    if (!patch::IsSameSubtree(m_oPatch, uOld, m_oTree, uId, bWhole, oSameLinks)) {
        detail::RaiseOtherSubtree(PathOf(uId).CStr());
    }
}

// ---- errors ---------------------------------------------------------------------

void Data_PatchPlan::Refuse(u2_t uPatch) {
    Arr<char> oPath;
    m_oPatch.AppendPath(oPath, uPatch);
    detail::RaiseNoPatch(Str(std::string_view(oPath.Beg(), oPath.Size())).CStr());
}

Str Data_PatchPlan::PathOf(u2_t uId) {
    Arr<char> oPath;
    m_oTree.AppendPath(oPath, uId);
    return Str(std::string_view(oPath.Beg(), oPath.Size()));
}

Str Data_PatchPlan::PathOf(u2_t uParent, std::string_view sName, u2_t uPos) {
    Arr<char> oPath;
    m_oTree.AppendPath(oPath, uParent);
    if (oPath.Size() > 1) oPath.Add('/');
    detail::AppendStep(oPath, sName, uPos);
    return Str(std::string_view(oPath.Beg(), oPath.Size()));
}

}  // namespace vok

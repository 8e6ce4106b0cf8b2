// SPDX-License-Identifier: MIT
#include "vok/records/path.h"

#include <algorithm>

#include "vok/base/compare.h"
#include "vok/data/xpath.h"
#include "vok/records/messages.h"

namespace vok::records {

namespace {

// Whether a step, which bDescend says may be taken at any depth, can be told as nodes go by. "//."
// is every node below, the one above included: no step downward tells that.
[[nodiscard]] bool LooksDown(const Data_XpathStep& o, bool bDescend) noexcept {
    if (o.m_eKind == Data_XpathStep::Self) return !bDescend && !o.m_bDescendant;
    return o.m_eKind == Data_XpathStep::Named && !(o.m_bAnyName && o.m_iIndex >= 0);
}

[[nodiscard]] bool LooksDown(const Data_Xpath& oPath) noexcept {
    bool bDescend = oPath.IsDescendantFromRoot();
    for (std::size_t u = 0; u < oPath.Size(); ++u) {
        if (!LooksDown(oPath(u), bDescend)) return false;
        bDescend = oPath(u).m_bDescendant;
    }
    return true;
}

}  // namespace

bool Path::NeedsTree(std::string_view sPath) {
    Data_Xpath oParsed;
    oParsed.Parse(Str(sPath).CStr());
    return !LooksDown(oParsed);
}

Path::Path(std::string_view sPath) {
    const Str oPath(sPath);
    Data_Xpath oParsed;
    oParsed.Parse(oPath.CStr());
    if (!LooksDown(oParsed)) RaisePathNeedsTree(oPath.CStr());
    bool bDescend = oParsed.IsDescendantFromRoot();
    for (std::size_t u = 0; u < oParsed.Size(); ++u) {
        const Data_XpathStep& o = oParsed(u);
        if (o.m_eKind == Data_XpathStep::Self) continue;
        Step& oStep = m_aoStep.emplace_back();
        oStep.bAnyName = o.m_bAnyName;
        oStep.iIndex = o.m_iIndex;
        oStep.bDescend = std::exchange(bDescend, o.m_bDescendant);
        if (!o.m_bAnyName) oStep.oName = Str(o.m_sName);
        for (std::size_t v = 0; v < o.m_oAttName.Size(); ++v) {
            if (*o.m_oAttName(v) == 0) continue;
            oStep.aoAttribute.emplace_back(Str(o.m_oAttName(v)), Str(o.AttVal(v)));
        }
    }
}

bool Path::MayNest() const noexcept {
    for (const Step& o : m_aoStep) {
        if (o.bDescend) return true;
    }
    return false;
}

inline bool Path::Takes(const Data_Record& r, const Step& o, u2_t& uSeen) const noexcept {
    if (!o.bAnyName) {
        const std::string_view sName = r.GetName();
        if (o.oName.Len() != sName.size()) return false;
        if (!IsEqualText(o.oName.View().data(), sName.data(), sName.size())) return false;
    }
    const auto iPosition = static_cast<i2_t>(uSeen++);
    if (o.iIndex >= 0 && o.iIndex != iPosition) return false;
    return o.aoAttribute.empty() || HasAttributes(r, o);
}

[[gnu::noinline]] bool Path::HasAttributes(const Data_Record& r, const Step& o) noexcept {
    return std::all_of(o.aoAttribute.begin(), o.aoAttribute.end(), [&](const auto& oPair) {
        const Data_Record::Attribute* p = r.FindAttribute(oPair.first.View());
        return p != nullptr && p->sValue == oPair.second.View();
    });
}

Path::Verdict Path::Look(const Data_Record& r) {
    const std::size_t uDepth = r.GetDepth();
    if (uDepth == 0) {
        m_oLevel.Truncate(0);
        m_oWay.Truncate(0);
        m_oLevel.Add(0);
        if (m_aoStep.empty()) return {true, false};
        m_oWay.Add(Way{0, m_aoStep[0].bDescend, 0});
        return {false, true};
    }
    // Below what was left out there is nothing to take.
    if (uDepth > m_oLevel.Size()) return {};
    if (uDepth < m_oLevel.Size()) {
        m_oWay.Truncate(m_oLevel(uDepth));
        m_oLevel.Truncate(uDepth);
    }
    const std::size_t uBegin = m_oLevel.Last();
    const std::size_t uEnd = m_oWay.Size();
    Verdict oVerdict;
    for (std::size_t u = uBegin; u < uEnd; ++u) {
        const u2_t uStep = m_oWay(u).uStep;
        const Step& oStep = m_aoStep[uStep];
        if (m_oWay(u).bAnyDepth) Go(uEnd, uStep, true);
        if (!Takes(r, oStep, m_oWay(u).uSeen)) continue;
        if (&oStep == &m_aoStep.back()) {
            oVerdict.bSelected = true;
        } else {
            Go(uEnd, uStep + 1, m_aoStep[uStep + 1].bDescend);
        }
    }
    oVerdict.bBelow = m_oWay.Size() != uEnd;
    if (oVerdict.bBelow) m_oLevel.Add(uEnd);
    return oVerdict;
}

// A way for the level that begins at uLevelEnd, once.
[[gnu::noinline]] void Path::Go(std::size_t uLevelEnd, u2_t uStep, bool bAnyDepth) {
    for (std::size_t u = uLevelEnd; u < m_oWay.Size(); ++u) {
        if (m_oWay(u).uStep != uStep) continue;
        // What may be taken at any depth may be taken here.
        m_oWay(u).bAnyDepth |= bAnyDepth;
        return;
    }
    m_oWay.Add(Way{uStep, bAnyDepth, 0});
}

bool Path::IsThrough(std::size_t uDepth) const noexcept {
    if (m_oLevel.Size() == 0) return false;
    // On every level that is still open the only way asks for a position that has gone by.
    for (std::size_t u = 0; u < m_oLevel.Size() && u < uDepth; ++u) {
        const std::size_t uEnd = u + 1 < m_oLevel.Size() ? m_oLevel(u + 1) : m_oWay.Size();
        for (std::size_t v = m_oLevel(u); v < uEnd; ++v) {
            const Way& o = m_oWay(v);
            const i2_t iIndex = m_aoStep[o.uStep].iIndex;
            if (o.bAnyDepth || iIndex < 0 || static_cast<i2_t>(o.uSeen) <= iIndex) return false;
        }
    }
    return true;
}

}  // namespace vok::records

// Paths of nodes, and nodes made along paths.
#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/escape.h"
#include "vok/data/succ_it.h"
#include "vok/data/xpath.h"

namespace vok {

Str Data::GetPath() const {
    return Where("vok::Data::GetPath", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (m_uId == 0) return Str("/");
        Arr<u2_t> oChain;
        for (u2_t uId = m_uId; uId != 0; uId = b.m_oNode(uId).Pred()) {
            // Cut loose by a removal: no path leads here.
            if (uId >= b.m_oNode.Size()) Msg::TryToAccessDeletedNode();
            oChain.Add(uId);
        }
        Arr<char> oPath;
        for (std::size_t u = oChain.Size(); u-- > 0;) {
            char sIndex[NUMBER_ROOM];
            const Hash_Text& oName = b.m_oName(b.m_oNode(oChain(u)).uKey);
            oPath.Add('/');
            detail::AppendEncoded(oPath, {oName.sText, oName.uLength}, detail::RESERVED.data());
            oPath.Add('[');
            oPath.Add(sIndex, FormatInteger(b.PositionOf(oChain(u)), sIndex));
            oPath.Add(']');
        }
        return Str(std::string_view(oPath.Beg(), oPath.Size()));
    });
}

namespace {

// Sets the attributes of a step on a node.
void SetAttributes(Data& oNode, const Data_XpathStep& oStep) {
    for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
        if (oStep.AttVal(u) != nullptr) oNode.SetAttVal(oStep.m_oAttName(u), oStep.AttVal(u));
    }
}

// Without position: the one successor that matches, or a new one.
Data MatchOrAppend(Data& oParent, const Data_XpathStep& oStep, u2_t& uCreated) {
    Data oResult;
    for (Data_SuccIt oIt = oParent.GetSuccIt(oStep.m_sName); oIt.SkipZombies(); oIt.Advance()) {
        const Data oSucc = oIt.GetData();
        if (!oSucc.Test(oStep)) continue;
        if (oResult.IsNode()) Msg::NodeIsNotUnique();
        oResult = oSucc;
    }
    if (oResult.IsNode()) return oResult;
    uCreated = 1;
    return oParent.CreateNewSucc(oStep.m_sName);
}

// With a position past the end: placeholders up to it, then the new node.
Data AppendUpTo(Data& oParent, const Data_XpathStep& oStep, u2_t uSize, const Limits& oLimits,
                u3_t& uSkipped, u2_t& uCreated) {
    const u2_t uIndex = static_cast<u2_t>(oStep.m_iIndex);
    uSkipped += uIndex - uSize;
    if (uSkipped > oLimits.m_uSkippedSlots) {
        Msg::LimitExceeded("skipped slots", oLimits.m_uSkippedSlots, "Limits::m_uSkippedSlots");
    }
    for (u2_t u = uSize; u < uIndex; ++u) {
        oParent.CreateNewSucc(oStep.m_sName).Remove();
        ++uCreated;
    }
    ++uCreated;
    return oParent.CreateNewSucc(oStep.m_sName);
}

// The successor that a step describes. uSkipped counts placeholders from call to call: the
// limit on them is one for a whole path.
Data MatchOrCreate(Data& oParent, const Data_XpathStep& oStep, const Limits& oLimits,
                   u3_t& uSkipped, u2_t& uCreated) {
    return Where("vok::Data::CreateSucc(const Data_Xpath::Step&, u2_t*)", [&] {
        if (oStep.m_bAnyName) Msg::InvalidCharacter('*');
        if (!oParent.IsNode()) oParent.SetToRoot();
        Data oResult;
        u2_t uMade = 0;
        const u2_t uSize = oParent.GetSuccIt(oStep.m_sName).Size();
        if (oStep.m_iIndex < 0) {
            oResult = MatchOrAppend(oParent, oStep, uMade);
        } else if (static_cast<u2_t>(oStep.m_iIndex) >= uSize) {
            oResult = AppendUpTo(oParent, oStep, uSize, oLimits, uSkipped, uMade);
        } else {
            oResult = oParent.GetNthSucc(oStep.m_sName, static_cast<u2_t>(oStep.m_iIndex));
            if (oResult.GetType() != Data_Node::Zombi) {
                if (!oResult.Test(oStep)) Msg::NodeAlreadyExists();
                return oResult;
            }
            oResult.ClearVal();
            uMade = 1;
        }
        SetAttributes(oResult, oStep);
        uCreated += uMade;
        return oResult;
    });
}

}  // namespace

Data Data::CreateSucc(const Data_XpathStep& oStep, u2_t* pCreated, const Limits& oLimits) {
    u3_t uSkipped = 0;
    u2_t uCreated = 0;
    if (pCreated != nullptr) *pCreated = 0;
    Data oResult = MatchOrCreate(*this, oStep, oLimits, uSkipped, uCreated);
    if (pCreated != nullptr) *pCreated = uCreated;
    return oResult;
}

Data Data::CreateNode(const char* sPath, u2_t* pCreated, const Limits& oLimits) {
    return Where("vok::Data::CreateNode", [&] {
        if (pCreated != nullptr) *pCreated = 0;
        Data_Xpath oPath;
        oPath.Parse(sPath);
        // Checked as a whole before anything is made.
        if (oPath.IsDescendantFromRoot()) Msg::InvalidCharacter('/');
        for (std::size_t u = 0; u < oPath.Size(); ++u) {
            if (oPath(u).m_bAnyName) Msg::InvalidCharacter('*');
            if (oPath(u).m_bDescendant) Msg::InvalidCharacter('/');
        }
        if (!m_oBase) SetToRoot();
        Data oNode = oPath.IsAbsolute() ? GetRoot() : *this;
        u3_t uSkipped = 0;
        u2_t uCreated = 0;
        for (std::size_t u = 0; u < oPath.Size(); ++u) {
            const Data_XpathStep& oStep = oPath(u);
            if (oStep.m_eKind == Data_XpathStep::Self) continue;
            if (oStep.m_eKind == Data_XpathStep::Parent) {
                oNode.SetToPred();
                continue;
            }
            oNode = MatchOrCreate(oNode, oStep, oLimits, uSkipped, uCreated);
            if (pCreated != nullptr) *pCreated = uCreated;
        }
        return oNode;
    });
}

}  // namespace vok

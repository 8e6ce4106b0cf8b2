// SPDX-License-Identifier: MIT
// Paths of nodes, and nodes made along paths.
#include <cstring>
#include <string_view>

#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/base/work.h"
#include "vok/data/checks.h"
#include "vok/data/escape.h"
#include "vok/data/undo.h"
#include "vok/data/xpath.h"

namespace vok {

Str Data::GetPath() const {
    return Where("vok::Data::GetPath", [&] {
        Base& b = detail::NodeOf(m_oBase, m_uId);
        if (m_uId == 0) return Str("/");
        Arr_Near<u2_t, 32> oChain;
        for (u2_t uId = m_uId; uId != 0; uId = b.m_oNode(uId).Pred()) {
            // Cut loose by a removal: no path leads here.
            if (uId >= b.m_oNode.Size()) Msg::TryToAccessDeletedNode();
            oChain.Add(uId);
        }
        detail::Path_Text oPath;
        for (std::size_t u = oChain.Size(); u-- > 0;) {
            const Hash_Text& oName = b.m_oName(b.m_oNode(oChain(u)).uKey);
            oPath.Add('/');
            detail::AppendStep(oPath, oName.View(), b.PositionOf(oChain(u)));
        }
        return Str(std::string_view(oPath.Beg(), oPath.Size()));
    });
}

namespace {

// Makes the nodes that a path describes, and takes them back when that fails on the way.
class PathMaker {
  public:
    PathMaker(Data_Base& oBase, const Limits& oLimits, std::size_t uPath)
        : m_oBase(oBase),
          m_oLimits(oLimits),
          m_oWork(oLimits, uPath + oBase.m_oNode.Size() * sizeof(Data_Node)),
          m_oUndo(oBase) {}

    // What oMake returns, the id of a node, and how many nodes that made; or the tree as it was.
    template <class Make>
    u2_t OrNothing(u2_t* pCreated, const Make& oMake) {
        try {
            const u2_t uId = oMake();
            if (pCreated != nullptr) *pCreated = m_uCreated;
            return uId;
        } catch (...) {
            m_oUndo.TakeBack();
            throw;
        }
    }

    // The successor of uParent that a step describes.
    u2_t MatchOrCreate(u2_t uParent, const Data_XpathStep& oStep) {
        return Where("vok::Data::CreateSucc(const Data_Xpath::Step&, u2_t*)", [&] {
            if (oStep.m_bAnyName) Msg::InvalidCharacter('*');
            m_oWork.Look(1);
            if (oStep.m_iIndex < 0) return MatchOrAppend(uParent, oStep);
            const u2_t uKey = m_oBase.m_oName.Intern(oStep.m_sName);
            const u2_t uIndex = static_cast<u2_t>(oStep.m_iIndex);
            const u2_t uFound = m_oBase.FindNamed(uParent, uKey, uIndex);
            if (uFound == Data_Node::NONE) return AppendUpTo(uParent, uKey, oStep);
            if (m_oBase.m_oNode(uFound).GetType() == Data_Node::Zombi) return Revive(uFound, oStep);
            if (!Matches(uFound, oStep)) Msg::NodeAlreadyExists();
            return uFound;
        });
    }

    u2_t PredOf(u2_t uId) {
        m_oWork.Look(1);
        const u2_t uPred = m_oBase.m_oNode(uId).Pred();
        if (uPred >= m_oBase.m_oNode.Size()) Msg::NodeHasNoPredecessor();
        return uPred;
    }

  private:
    // Without position: the one successor that matches, or a new one.
    u2_t MatchOrAppend(u2_t uParent, const Data_XpathStep& oStep) {
        const u2_t uKey = m_oBase.m_oName.Intern(oStep.m_sName);
        u2_t uFound = Data_Node::NONE;
        m_oBase.VisitNamed(uParent, uKey, [&](const Data_Base::Group& oGroup) {
            m_oWork.Look(oGroup.uSize);
            for (u2_t u = 0; u < oGroup.uSize; ++u) {
                if (!Matches(oGroup.pId[u], oStep)) continue;
                if (uFound != Data_Node::NONE) Msg::NodeIsNotUnique();
                uFound = oGroup.pId[u];
            }
            return true;
        });
        // One that was found has the attributes already.
        if (uFound != Data_Node::NONE) return uFound;
        return WithAttributes(Append(uParent, uKey), oStep);
    }

    // With a position past the end: placeholders up to it, then the new node.
    u2_t AppendUpTo(u2_t uParent, u2_t uKey, const Data_XpathStep& oStep) {
        const u2_t uMissing = static_cast<u2_t>(oStep.m_iIndex) - m_oBase.CountNamed(uParent, uKey);
        m_uSkipped += uMissing;
        if (m_uSkipped > m_oLimits.m_uSkippedSlots) {
            m_oLimits.RaiseExceeded(&Limits::m_uSkippedSlots);
        }
        for (u2_t u = 0; u < uMissing; ++u) m_oBase.Kill(Append(uParent, uKey));
        return WithAttributes(Append(uParent, uKey), oStep);
    }

    u2_t Append(u2_t uParent, u2_t uKey) {
        return Where("vok::Data::CreateNewSucc(const char*)", [&] {
            m_oBase.CheckAppend(uParent);
            m_oUndo.Keep(uParent);
            const u2_t uId = m_oBase.Append(uParent, uKey);
            ++m_uCreated;
            return uId;
        });
    }

    u2_t Revive(u2_t uId, const Data_XpathStep& oStep) {
        m_oUndo.Keep(uId);
        Data_Node& oNode = m_oBase.m_oNode(uId);
        m_oBase.DropValue(oNode);
        oNode.SetType(Data_Node::Empty);
        oNode.SetValue64(0);
        ++m_uCreated;
        return WithAttributes(uId, oStep);
    }

    u2_t WithAttributes(u2_t uId, const Data_XpathStep& oStep) {
        for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
            if (oStep.AttVal(u) == nullptr) continue;
            m_oUndo.KeepAttribute(uId, Utf8_Text(oStep.m_oAttName(u)).View());
            m_oBase.SetOutsideAttribute(uId, oStep.m_oAttName(u), oStep.AttVal(u));
        }
        return uId;
    }

    // Whether a node that is not removed has the attributes of a step.
    [[nodiscard]] bool Matches(u2_t uId, const Data_XpathStep& oStep) {
        if (m_oBase.m_oNode(uId).GetType() == Data_Node::Zombi) return false;
        for (std::size_t u = 0; u < oStep.m_oAttName.Size(); ++u) {
            const char* sName = oStep.m_oAttName(u);
            const char* sValue = oStep.AttVal(u);
            if (*sName == 0 || sValue == nullptr) continue;
            if (!m_oBase.m_oAtt.Has(uId)) return false;
            m_oWork.Charge(1);
            const u2_t uKey = Data_Names::LookIn(m_oBase.m_oAtt.Names(), sName);
            const char* sHas = m_oBase.AttributeOf(uId, uKey);
            if (sHas == nullptr || std::strcmp(sHas, sValue) != 0) return false;
        }
        return true;
    }

    Data_Base& m_oBase;
    const Limits& m_oLimits;
    Work m_oWork;
    Data_Undo m_oUndo;
    u3_t m_uSkipped = 0;  // placeholders of all steps: they have one limit
    u2_t m_uCreated = 0;
};

}  // namespace

Data Data::CreateSucc(const Data_XpathStep& oStep, u2_t* pCreated, const Limits& oLimits) {
    if (pCreated != nullptr) *pCreated = 0;
    Data oFrom(*this);  // an empty cursor stays so until all is made
    if (!oFrom.m_oBase) oFrom.SetToRoot();
    PathMaker oMaker(Where("vok::Data::CreateSucc(const Data_Xpath::Step&, u2_t*)",
                           [&]() -> Base& { return detail::NodeOf(oFrom.m_oBase, oFrom.m_uId); }),
                     oLimits, 0);
    const u2_t uMade =
        oMaker.OrNothing(pCreated, [&] { return oMaker.MatchOrCreate(oFrom.m_uId, oStep); });
    *this = oFrom;
    return Data(m_oBase, uMade);
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
        Data oFrom(*this);
        if (!oFrom.m_oBase) oFrom.SetToRoot();
        PathMaker oMaker(detail::NodeOf(oFrom.m_oBase, oFrom.m_uId), oLimits,
                         sPath != nullptr ? std::strlen(sPath) : 0);
        const u2_t uMade = oMaker.OrNothing(pCreated, [&] {
            u2_t uId = oPath.IsAbsolute() ? 0 : oFrom.m_uId;
            for (std::size_t u = 0; u < oPath.Size(); ++u) {
                const Data_XpathStep& oStep = oPath(u);
                if (oStep.m_eKind == Data_XpathStep::Self) continue;
                uId = oStep.m_eKind == Data_XpathStep::Parent ? oMaker.PredOf(uId)
                                                              : oMaker.MatchOrCreate(uId, oStep);
            }
            return uId;
        });
        *this = oFrom;
        return Data(m_oBase, uMade);
    });
}

}  // namespace vok

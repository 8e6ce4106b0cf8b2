// SPDX-License-Identifier: MIT
#include "vok/compare/match_runs.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "vok/base/number.h"
#include "vok/compare/messages.h"
#include "vok/compare/pairs.h"

namespace vok {

// ---- keys -------------------------------------------------------------------

Data_RunKey::Data_RunKey(const std::string& sPath) {
    const std::size_t uSlash = sPath.rfind('/');
    const std::size_t uLast = uSlash != sPath.npos ? uSlash + 1 : 0;
    std::string sSteps = sPath;
    if (sPath.compare(uLast, 1, "@") == 0) {
        m_sAttribute = sPath.substr(uLast + 1);
        if (m_sAttribute.empty()) detail::RaiseKeyIsNoPath(sPath.c_str());
        sSteps = uSlash != sPath.npos ? sPath.substr(0, uSlash) : std::string(".");
    }
    m_oPath.Parse(sSteps.c_str());
    bool bGood = m_oPath.Size() != 0 && !m_oPath.IsAbsolute();
    for (std::size_t u = 0; u < m_oPath.Size(); ++u) {
        const Data_XpathStep& o = m_oPath(u);
        const bool bSelf = o.m_eKind == Data_XpathStep::Self && !m_sAttribute.empty();
        bGood = bGood && (o.m_eKind == Data_XpathStep::Named || bSelf) && !o.m_bAnyName &&
                !o.m_bDescendant && o.m_oAttName.Size() == 0;
    }
    if (!bGood) detail::RaiseKeyIsNoPath(sPath.c_str());
}

namespace {

// The text of a value that a key may have; empty for others.
[[nodiscard]] std::string_view KeyText(const Data_Side& oSide, u2_t uId, char* sRoom) {
    const Data_Node& oNode = oSide.Node(uId);
    switch (oNode.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char: return {sRoom, FormatInteger(static_cast<i2_t>(oNode.uWord2), sRoom)};
        case Data_Node::Long: return {sRoom, FormatInteger(oNode.Value64(), sRoom)};
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date:
            return {sRoom, FormatReal(std::bit_cast<double>(oNode.Value64()), sRoom)};
        case Data_Node::String: return oSide.Block(oNode).substr(0, oNode.uWord3 - 1);
        default: return {};
    }
}

}  // namespace

u2_t Data_RunKey::Find(Data_Side& oSide, u2_t uId, Hash& oTexts) const {
    Data_Base& b = oSide.m_oBase;
    for (std::size_t u = 0; u < m_oPath.Size(); ++u) {
        if (m_oPath(u).m_eKind == Data_XpathStep::Self) continue;
        const u2_t uName = b.m_oName.Find(m_oPath(u).m_sName);
        if (uName == Hash::NONE) return 0;
        const Data_Base::Group oGroup = b.SuccOf(uId);
        const Data_Base::Run oRun = b.FindRun(oGroup, uName);
        u2_t uToPass = static_cast<u2_t>(std::max(m_oPath(u).m_iIndex, i2_t{0}));
        u2_t uPos = 0;
        while (uPos < oRun.uSize) {
            if (oSide.IsLive(oGroup.pId[oRun.uFirst + uPos]) && uToPass-- == 0) break;
            ++uPos;
        }
        if (uPos == oRun.uSize) return 0;
        uId = oGroup.pId[oRun.uFirst + uPos];
    }
    char sRoom[NUMBER_ROOM];
    std::string_view sText;
    if (m_sAttribute.empty()) {
        sText = KeyText(oSide, uId, sRoom);
    } else if (b.m_oAtt.Has(uId)) {
        const u2_t uKey = b.m_oAtt.Names().Find(m_sAttribute);
        const char* sValue = uKey != Hash::NONE ? b.AttributeOf(uId, uKey) : nullptr;
        if (sValue != nullptr) sText = sValue;
    }
    // The empty text has number 0, and is no key.
    return oTexts.Insert(sText);
}

// ---- runs -------------------------------------------------------------------

Data_MatchRuns::Data_MatchRuns(Data_Side& oA, Data_Side& oB, const Data_DiffOptions& oOptions)
    : a(oA, oOptions.m_dDelta), b(oB, oOptions.m_dDelta), m_dDelta(oOptions.m_dDelta) {
    for (const std::string& s : oOptions.m_asKey) m_oKeys.emplace_back(s);
    m_oTexts.Start();
}

void Data_MatchRuns::Run(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate,
                         Arr<bool>& oMoved) {
    oMate.Resize(oA.Size());
    oMoved.Resize(0);
    oMoved.Resize(oA.Size());
    MakeTokens(a, oA);
    MakeTokens(b, oB);
    m_oAlign.Run(a.oToken, b.oToken, oMate);
    m_oTaken.Resize(0);
    m_oTaken.Resize(oB.Size());
    std::size_t uMatched = 0;
    for (const u2_t uB : std::as_const(oMate)) {
        if (uB == NONE) continue;
        m_oTaken(uB) = true;
        ++uMatched;
    }
    if (uMatched == oA.Size() || uMatched == oB.Size()) return;
    MatchMoved(oA, oB, oMate, oMoved);
    MatchGaps(oA, oB, oMate, oMoved);
    if (HasOnlyValues(a, oA) && HasOnlyValues(b, oB)) PreferPositions(oMate, oB.Size());
}

void Data_MatchRuns::MakeTokens(Half& o, const Arr<u2_t>& oIds) {
    o.oToken.Resize(0);
    o.oKeyed.Resize(0);
    o.oKeyed.Resize(oIds.Size());
    Arr<Place>& oKeyed = m_oPlaceA;
    oKeyed.Resize(0);
    for (u2_t u = 0; u < oIds.Size(); ++u) {
        o.oToken.Add(o.oHash(oIds(u)));
        for (const Data_RunKey& oKey : m_oKeys) {
            const u2_t uText = oKey.Find(o.oSide, oIds(u), m_oTexts);
            if (uText == 0) continue;
            o.oKeyed(u) = true;
            oKeyed.Add(Place{uText, u});
            break;
        }
    }
    // The n-th node of a key has a token of its own.
    std::sort(oKeyed.Beg(), oKeyed.End());
    u3_t uNth = 0;
    for (std::size_t u = 0; u < oKeyed.Size(); ++u) {
        uNth = u != 0 && oKeyed(u - 1).uToken == oKeyed(u).uToken ? uNth + 1 : 0;
        o.oToken(oKeyed(u).uPos) = uNth << 32 | oKeyed(u).uToken;
    }
}

bool Data_MatchRuns::MayMove(const Half& o, u2_t uId, std::size_t uNth) const noexcept {
    return o.oKeyed(uNth) || o.oSide.Node(uId).GetType() == Data_Node::Tree;
}

void Data_MatchRuns::MatchMoved(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate,
                                Arr<bool>& oMoved) {
    m_oPlaceA.Resize(0);
    m_oPlaceB.Resize(0);
    for (u2_t u = 0; u < oA.Size(); ++u) {
        if (oMate(u) == NONE && MayMove(a, oA(u), u)) m_oPlaceA.Add(Place{a.oToken(u), u});
    }
    for (u2_t u = 0; u < oB.Size(); ++u) {
        if (!m_oTaken(u) && MayMove(b, oB(u), u)) m_oPlaceB.Add(Place{b.oToken(u), u});
    }
    std::sort(m_oPlaceA.Beg(), m_oPlaceA.End());
    std::sort(m_oPlaceB.Beg(), m_oPlaceB.End());
    for (std::size_t uA = 0, uB = 0; uA < m_oPlaceA.Size() && uB < m_oPlaceB.Size();) {
        const Place oPlaceA = m_oPlaceA(uA);
        const Place oPlaceB = m_oPlaceB(uB);
        if (oPlaceA.uToken == oPlaceB.uToken) {
            oMate(oPlaceA.uPos) = oPlaceB.uPos;
            oMoved(oPlaceA.uPos) = true;
            m_oTaken(oPlaceB.uPos) = true;
        }
        uA += oPlaceA.uToken <= oPlaceB.uToken;
        uB += oPlaceB.uToken <= oPlaceA.uToken;
    }
}

bool Data_MatchRuns::HasOnlyValues(const Half& o, const Arr<u2_t>& oIds) const noexcept {
    for (std::size_t u = 0; u < oIds.Size(); ++u) {
        if (MayMove(o, oIds(u), u)) return false;
    }
    return true;
}

// Values in another order may differ least where each stands.
void Data_MatchRuns::PreferPositions(Arr<u2_t>& oMate, std::size_t uSizeB) const noexcept {
    const std::size_t uShorter = std::min(oMate.Size(), uSizeB);
    std::size_t uByPosition = oMate.Size() + uSizeB - 2 * uShorter;
    for (std::size_t u = 0; u < uShorter; ++u) uByPosition += a.oToken(u) != b.oToken(u);
    std::size_t uAligned = oMate.Size() + uSizeB;
    for (std::size_t u = 0; u < oMate.Size(); ++u) {
        if (oMate(u) != NONE) uAligned -= a.oToken(u) == b.oToken(oMate(u)) ? 2 : 1;
    }
    if (uAligned <= uByPosition) return;
    for (std::size_t u = 0; u < oMate.Size(); ++u) {
        oMate(u) = u < uShorter ? static_cast<u2_t>(u) : NONE;
    }
}

// ---- what lies between --------------------------------------------------------

void Data_MatchRuns::MatchGaps(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate,
                               const Arr<bool>& oMoved) {
    u2_t uB = 0;
    a.oGap.Resize(0);
    for (u2_t uA = 0; uA <= oA.Size(); ++uA) {
        const bool bEnd = uA == oA.Size();
        if (!bEnd && oMoved(uA)) continue;
        if (!bEnd && oMate(uA) == NONE) {
            if (!a.oKeyed(uA)) a.oGap.Add(uA);
            continue;
        }
        const u2_t uEnd = bEnd ? static_cast<u2_t>(oB.Size()) : oMate(uA);
        b.oGap.Resize(0);
        for (; uB != uEnd; ++uB) {
            if (!m_oTaken(uB) && !b.oKeyed(uB)) b.oGap.Add(uB);
        }
        uB += !bEnd;
        if (a.oGap.Size() != 0 && b.oGap.Size() != 0) MatchGap(oA, oB, oMate);
        a.oGap.Resize(0);
    }
}

void Data_MatchRuns::MatchGap(const Arr<u2_t>& oA, const Arr<u2_t>& oB, Arr<u2_t>& oMate) {
    Arr<Match> oAnchor;
    const std::size_t uNodes = a.oGap.Size() + b.oGap.Size();
    if (uNodes > 2) {
        const std::size_t uMost = std::clamp(MOST_PARTS_OF_ALL / uNodes, LEAST_PARTS, MOST_PARTS);
        MakeParts(a, oA, uMost);
        MakeParts(b, oB, uMost);
        FindAnchors(oAnchor);
    }
    oAnchor.Add(Match{static_cast<u2_t>(a.oGap.Size()), static_cast<u2_t>(b.oGap.Size())});
    Match oFrom{0, 0};
    for (const Match& oTo : std::as_const(oAnchor)) {
        if (u3_t{oTo.uA - oFrom.uA} * (oTo.uB - oFrom.uB) <= SMALL_GAP && uNodes > 2) {
            MatchFew(oA, oB, oFrom, oTo, oMate);
        } else {
            for (Match o = oFrom; o.uA < oTo.uA && o.uB < oTo.uB; ++o.uA, ++o.uB) {
                oMate(a.oGap(o.uA)) = b.oGap(o.uB);
            }
        }
        if (oTo.uA < a.oGap.Size()) oMate(a.oGap(oTo.uA)) = b.oGap(oTo.uB);
        oFrom = {oTo.uA + 1, oTo.uB + 1};
    }
}

void Data_MatchRuns::MakeParts(Half& o, const Arr<u2_t>& oIds, std::size_t uMost) {
    o.oParts.Resize(0);
    o.oPartsEnd.Resize(0);
    for (const u2_t uNth : std::as_const(o.oGap)) {
        const std::size_t uFirst = o.oParts.Size();
        o.oHash.AppendParts(oIds(uNth), uMost, o.oParts);
        std::sort(o.oParts.Beg() + uFirst, o.oParts.End());
        o.oPartsEnd.Add(o.oParts.Size());
    }
}

namespace {

using Place = Data_Align::Place;
using Match = Data_Align::Match;

void ListParts(const Arr<u3_t>& oParts, const Arr<std::size_t>& oEnd, Arr<Place>& oPlace) {
    oPlace.Resize(0);
    std::size_t uPart = 0;
    for (u2_t u = 0; u < oEnd.Size(); ++u) {
        for (; uPart < oEnd(u); ++uPart) oPlace.Add(Place{oParts(uPart), u});
    }
    std::sort(oPlace.Beg(), oPlace.End());
}

// Moves u behind all of its token; whether it is of one node.
[[nodiscard]] bool PassToken(const Arr<Place>& o, std::size_t& u) noexcept {
    const Place oFirst = o(u);
    while (u < o.Size() && o(u).uToken == oFirst.uToken) ++u;
    return o(u - 1).uPos == oFirst.uPos;
}

}  // namespace

// Parts that only one node on each side of the gap has. Who has the most in common with whom that
// way is matched, as far as the order allows.
void Data_MatchRuns::FindAnchors(Arr<Match>& oAnchor) {
    ListParts(a.oParts, a.oPartsEnd, m_oPlaceA);
    ListParts(b.oParts, b.oPartsEnd, m_oPlaceB);
    Arr<Match> oVote;
    for (std::size_t uA = 0, uB = 0; uA < m_oPlaceA.Size() && uB < m_oPlaceB.Size();) {
        const Place oPlaceA = m_oPlaceA(uA);
        const Place oPlaceB = m_oPlaceB(uB);
        const bool bOnceA = oPlaceA.uToken > oPlaceB.uToken || PassToken(m_oPlaceA, uA);
        const bool bOnceB = oPlaceB.uToken > oPlaceA.uToken || PassToken(m_oPlaceB, uB);
        const bool bBoth = oPlaceA.uToken == oPlaceB.uToken;
        if (bBoth && bOnceA && bOnceB) oVote.Add(Match{oPlaceA.uPos, oPlaceB.uPos});
    }
    std::sort(oVote.Beg(), oVote.End(), [](const Match& x, const Match& y) {
        return x.uA != y.uA ? x.uA < y.uA : x.uB < y.uB;
    });
    std::size_t uBest = 0;  // votes of the anchor added last
    for (std::size_t u = 0, uNext; u < oVote.Size(); u = uNext) {
        const Match o = oVote(u);
        for (uNext = u + 1; uNext < oVote.Size() && oVote(uNext).uA == o.uA;) {
            if (oVote(uNext).uB != o.uB) break;
            ++uNext;
        }
        const bool bSame = oAnchor.Size() != 0 && oAnchor.Last().uA == o.uA;
        if (bSame && uNext - u <= uBest) continue;
        if (bSame) oAnchor.Pop();
        oAnchor.Add(o);
        uBest = uNext - u;
    }
    Data_Align::KeepAscending(oAnchor);
}

// How much two nodes of the gap, given by their places in it, have in common; never 0.
u2_t Data_MatchRuns::Alike(u2_t uA, u2_t uIdA, u2_t uB, u2_t uIdB) const noexcept {
    constexpr u2_t PART = 16;
    const u3_t* pA = a.oParts.Beg() + (uA != 0 ? a.oPartsEnd(uA - 1) : 0);
    const u3_t* const pEndA = a.oParts.Beg() + a.oPartsEnd(uA);
    const u3_t* pB = b.oParts.Beg() + (uB != 0 ? b.oPartsEnd(uB - 1) : 0);
    const u3_t* const pEndB = b.oParts.Beg() + b.oPartsEnd(uB);
    u2_t uAlike = 1;
    while (pA != pEndA && pB != pEndB) {
        uAlike += *pA == *pB ? PART : 0;
        const bool bA = *pA <= *pB;
        pB += *pB <= *pA;
        pA += bA;
    }
    const Data_Node& oA = a.oSide.Node(uIdA);
    const Data_Node& oB = b.oSide.Node(uIdB);
    const Data_Node::Type eType = oA.GetType();
    if (eType != oB.GetType()) return uAlike;
    const bool bReal = eType == Data_Node::Float || eType == Data_Node::Double;
    return uAlike + 1 + (bReal && m_dDelta > 0 && IsWithin(oA, oB, m_dDelta) ? PART : 0);
}

// The pairs, in order, that have the most in common.
void Data_MatchRuns::MatchFew(const Arr<u2_t>& oA, const Arr<u2_t>& oB, const Match& oFrom,
                              const Match& oTo, Arr<u2_t>& oMate) {
    const std::size_t uRows = oTo.uA - oFrom.uA;
    const std::size_t uColumns = oTo.uB - oFrom.uB;
    if (uRows == 0 || uColumns == 0) return;
    // By what there is from a row and a column on: how much that has in common at best. Two of
    // each: with this pair, and at all.
    const std::size_t uWidth = uColumns + 1;
    m_oScore.Resize(0);
    m_oScore.Resize(2 * (uRows + 1) * uWidth);
    u2_t* const pBest = m_oScore.Beg();
    u2_t* const pPaired = pBest + (uRows + 1) * uWidth;
    for (std::size_t r = uRows; r-- > 0;) {
        for (std::size_t c = uColumns; c-- > 0;) {
            const u2_t uA = static_cast<u2_t>(oFrom.uA + r);
            const u2_t uB = static_cast<u2_t>(oFrom.uB + c);
            const std::size_t u = r * uWidth + c;
            pPaired[u] = pBest[u + uWidth + 1] + Alike(uA, oA(a.oGap(uA)), uB, oB(b.oGap(uB)));
            pBest[u] = std::max({pPaired[u], pBest[u + 1], pBest[u + uWidth]});
        }
    }
    for (std::size_t r = 0, c = 0; r < uRows && c < uColumns;) {
        const std::size_t u = r * uWidth + c;
        if (pPaired[u] == pBest[u]) {
            oMate(a.oGap(oFrom.uA + r++)) = b.oGap(oFrom.uB + c++);
        } else if (pBest[u + uWidth] == pBest[u]) {
            ++r;
        } else {
            ++c;
        }
    }
}

}  // namespace vok

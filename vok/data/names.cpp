// SPDX-License-Identifier: MIT
#include "vok/data/names.h"

#include <algorithm>

#include "vok/base/compare.h"
#include "vok/base/keyed_sort.h"

namespace vok {

u2_t Data_Names::InternSlow(std::string_view sName) {
    const u2_t uKey = InsertOutside(sName);
    m_oGuess.Note(uKey, Size());
    return uKey;
}

u2_t Data_Names::LookNextSlow(std::string_view sName) {
    const u2_t uKey = Look(sName);
    if (uKey != NONE) m_oGuess.TryNote(uKey, Size());
    return uKey;
}

namespace {

// The eight bytes of a name from uAt on, where it ends at the earliest, as a number that compares
// as they do. What is behind its NUL does not matter: no other name has a NUL there and is equal so
// far.
u3_t WordOf(const Hash_Text& o, std::size_t uAt) noexcept {
    return uAt == 0 ? o.uPrefix : BigEndianAt<u3_t>(o.sText + uAt);
}

}  // namespace

// Names of a tree often begin alike. So they are sorted by the first eight bytes in which they
// differ, those that are equal in these in the same way, and so on; few by comparing them.
Arr<u2_t> Data_Names::Ranks() const {
    constexpr std::size_t COMPARED = 24;
    const auto oIsLess = [this](const Keyed& oA, const Keyed& oB) {
        return IsLess(oA.uValue, oB.uValue);
    };
    const auto oWordOf = [this](const Keyed& o, std::size_t uAt) {
        return WordOf((*this)(o.uValue), uAt);
    };
    Arr<Keyed> oNames;
    Arr<Keyed> oRoom;
    (void)oNames.AddSpace(Size());
    (void)oRoom.AddSpace(Size() > COMPARED ? Size() : 0);
    for (u2_t u = 0; u < Size(); ++u) oNames(u) = {0, u};
    struct Range {
        std::size_t uFirst;
        std::size_t uEnd;
        std::size_t uEqual;  // bytes that all of them have in common
    };
    Arr<Range> oLeft;
    oLeft.Add(Range{0, Size(), 0});
    while (oLeft.Size() != 0) {
        const Range o = oLeft.Last();
        oLeft.Pop();
        Keyed* const pFirst = oNames.Beg() + o.uFirst;
        Keyed* const pEnd = oNames.Beg() + o.uEnd;
        if (o.uEnd - o.uFirst <= COMPARED) {
            std::sort(pFirst, pEnd, oIsLess);
            continue;
        }
        std::size_t uAt = o.uEqual;
        const auto oIsFirst = [&](const Keyed& oName) {
            return oWordOf(oName, uAt) == oWordOf(*pFirst, uAt);
        };
        while (std::all_of(pFirst, pEnd, oIsFirst)) uAt += 8;
        for (Keyed* p = pFirst; p != pEnd; ++p) p->uKey = oWordOf(*p, uAt);
        SortByKey(pFirst, o.uEnd - o.uFirst, oRoom.Beg());
        for (Keyed* p = pFirst; p != pEnd;) {
            Keyed* const pRun = p;
            while (p != pEnd && p->uKey == pRun->uKey) ++p;
            if (p - pRun < 2) continue;
            oLeft.Add(Range{static_cast<std::size_t>(pRun - oNames.Beg()),
                            static_cast<std::size_t>(p - oNames.Beg()), uAt + 8});
        }
    }
    Arr<u2_t> oRank;
    oRank.Resize(Size());
    for (u2_t u = 0; u < oNames.Size(); ++u) oRank(oNames(u).uValue) = u;
    return oRank;
}

bool Data_Names::LookAt(u2_t uKey) {
    if (m_oGuess.IsKnown(uKey)) return m_oGuess.IsVerbatim(uKey);
    const bool bVerbatim = uKey != 0 && !detail::HasReserved((*this)(uKey).View());
    m_oGuess.SetVerbatim(uKey, bVerbatim, Size());
    return bVerbatim;
}

// What is there is valid UTF-8: only a text that is not there may be one that is to be made so.
u2_t Data_Names::LookIn(const Hash& oNames, std::string_view sName) {
    const u2_t uKey = oNames.Find(sName);
    if (uKey != NONE || IsAsciiText(sName.data(), sName.size())) [[likely]]
        return uKey;
    return oNames.Find(Utf8_Text(sName).View());
}

}  // namespace vok

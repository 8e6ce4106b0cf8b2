// SPDX-License-Identifier: MIT
// Texts that people write are found by their first byte, which fails nearly everywhere at once.
// Where that turns out to go wrong ("aaaab" in a text of "a"), the search goes on by the two-way
// algorithm (M. Crochemore, D. Perrin, "Two-way string-matching", Journal of the ACM 38, 1991),
// which looks at no byte more than a few times, whatever there is.
#include "vok/base/find.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "vok/base/types.h"

namespace vok {

namespace {

using Index = std::ptrdiff_t;
constexpr std::size_t NONE = std::string_view::npos;

// The last factor of the greatest suffix in the order oLess: where it begins, less one, and its
// period.
struct Suffix {
    Index iBefore = -1;
    Index iPeriod = 1;
};

template <class It, class Less>
[[nodiscard]] Suffix GreatestSuffix(It pWhat, Index iSize, Less oLess) noexcept {
    Suffix oSuffix;
    Index j = 0;
    Index k = 1;
    while (j + k < iSize) {
        const char cNew = pWhat[j + k];
        const char cOld = pWhat[oSuffix.iBefore + k];
        if (oLess(cNew, cOld)) {
            j += k;
            k = 1;
            oSuffix.iPeriod = j - oSuffix.iBefore;
        } else if (cNew != cOld) {
            oSuffix.iBefore = j++;
            k = 1;
            oSuffix.iPeriod = 1;
        } else if (k != oSuffix.iPeriod) {
            ++k;
        } else {
            j += oSuffix.iPeriod;
            k = 1;
        }
    }
    return oSuffix;
}

// The index of the first place where pWhat stands, -1 if there is none. pWhat is cut where a shift
// by less than its period cannot match on both sides of the cut: the right side is compared first,
// from the cut on, and where it fails all places up to there are out.
template <class It>
[[nodiscard]] Index TwoWay(It pText, Index iText, It pWhat, Index iWhat) noexcept {
    const Suffix oLess = GreatestSuffix(pWhat, iWhat, std::less<>());
    const Suffix oGreater = GreatestSuffix(pWhat, iWhat, std::greater<>());
    const Suffix& oCut = oLess.iBefore > oGreater.iBefore ? oLess : oGreater;
    const Index iCut = oCut.iBefore;
    // Where all of it has that period, what matched in front of a shift by it still does.
    const bool bPeriodic = std::equal(pWhat, pWhat + (iCut + 1), pWhat + oCut.iPeriod);
    const Index iShift = bPeriodic ? oCut.iPeriod : std::max(iCut + 1, iWhat - iCut - 1) + 1;
    Index iKnown = -1;  // up to here pWhat is known to match
    for (Index iAt = 0; iAt <= iText - iWhat;) {
        Index i = std::max(iCut, iKnown) + 1;
        while (i < iWhat && pWhat[i] == pText[iAt + i]) ++i;
        if (i < iWhat) {
            iAt += i - iCut;
            iKnown = -1;
            continue;
        }
        i = iCut;
        while (i > iKnown && pWhat[i] == pText[iAt + i]) --i;
        if (i <= iKnown) return iAt;
        iAt += iShift;
        iKnown = bPeriodic ? iWhat - iShift - 1 : -1;
    }
    return -1;
}

// The same. oNext(i) gives the first index from i on, up to the last place, where pWhat may begin,
// or -1.
template <class It, class Next>
[[nodiscard]] Index Search(It pText, Index iText, It pWhat, Index iWhat, Next oNext) noexcept {
    Index iCompared = 0;
    for (Index iAt = oNext(0); iAt >= 0; iAt = oNext(iAt + 1)) {
        const It pAt = pText + iAt;
        const It pEnd = std::mismatch(pWhat, pWhat + iWhat, pAt).first;
        if (pEnd == pWhat + iWhat) return iAt;
        iCompared += pEnd - pWhat;
        if (iCompared > 8 * iAt + 512) {
            const Index iFound = TwoWay(pAt + 1, iText - iAt - 1, pWhat, iWhat);
            return iFound < 0 ? iFound : iAt + 1 + iFound;
        }
    }
    return -1;
}

}  // namespace

std::size_t FindText(std::string_view sText, std::string_view sWhat, std::size_t uFrom) noexcept {
    if (uFrom > sText.size() || sWhat.size() > sText.size() - uFrom) return NONE;
    if (sWhat.empty()) return uFrom;
    const char* pText = sText.data() + uFrom;
    const auto iText = static_cast<Index>(sText.size() - uFrom);
    const auto iWhat = static_cast<Index>(sWhat.size());
    const auto oNext = [&](Index i) -> Index {
        const Index iPlaces = iText - iWhat + 1 - i;
        if (iPlaces <= 0) return -1;
        const void* p = std::memchr(pText + i, sWhat[0], static_cast<std::size_t>(iPlaces));
        return p != nullptr ? static_cast<const char*>(p) - pText : -1;
    };
    const Index iFound = Search(pText, iText, sWhat.data(), iWhat, oNext);
    return iFound < 0 ? NONE : uFrom + static_cast<std::size_t>(iFound);
}

// From the end: both texts backwards.
std::size_t FindLastText(std::string_view sText, std::string_view sWhat) noexcept {
    if (sWhat.size() > sText.size()) return NONE;
    if (sWhat.empty()) return sText.size();
    const auto pText = std::make_reverse_iterator(sText.data() + sText.size());
    const auto pWhat = std::make_reverse_iterator(sWhat.data() + sWhat.size());
    const auto iText = static_cast<Index>(sText.size());
    const auto iWhat = static_cast<Index>(sWhat.size());
    const auto oNext = [&](Index i) -> Index {
        for (; i <= iText - iWhat; ++i) {
            if (pText[i] == pWhat[0]) return i;
        }
        return -1;
    };
    const Index iFound = Search(pText, iText, pWhat, iWhat, oNext);
    return iFound < 0 ? NONE : static_cast<std::size_t>(iText - iFound - iWhat);
}

}  // namespace vok

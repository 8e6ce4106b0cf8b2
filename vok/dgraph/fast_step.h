// SPDX-License-Identifier: MIT
// Names of step texts told without taking them apart: those that are expected. Internal.
#ifndef VOK_DGRAPH_FAST_STEP_H
#define VOK_DGRAPH_FAST_STEP_H

#include "vok/data/names.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/plain_step.h"

namespace vok::dgraph {

// What a record of a short name and index 0 begins with, which most records of a document do: the
// length of the step, the step. It is compared in words of eight bytes, the last of which overlaps
// others.
inline constexpr std::size_t MOST_HEAD = 32;
// The length of a step or of a text.
inline constexpr std::size_t LENGTH_SIZE = 4;
// The largest value of fixed size among the frequent ones.
inline constexpr std::size_t LARGEST_VALUE = 8;
// So many bytes have to be there to look for a head: a type code and such a value follow.
inline constexpr std::size_t HEAD_ROOM = MOST_HEAD + 1 + LARGEST_VALUE;

// Has the first guess expected by its head from now on, if it has one.
void ExpectHead(Data_Names& oNames);

// Where the type code stands behind the head at p, if that is the one which is expected; else
// null. HEAD_ROOM bytes can be read.
[[nodiscard, gnu::always_inline]] inline const char* MatchHead(const Hash_Guess& oGuess,
                                                               Hash_Guess::Expected oExpected,
                                                               const char* p) noexcept {
    if (!oExpected) return nullptr;
    const Hash_Guess::Image& o = oGuess.ImageOf(oExpected);
    const u3_t uFirst = Load<u3_t>(p);
    if (uFirst != o.uFirst) return nullptr;
    const std::size_t uSize = 4 + std::size_t{static_cast<u2_t>(uFirst)};
    if (Load<u3_t>(p + uSize - 8) != o.uLast) return nullptr;
    if (uSize > 16 && Load<u3_t>(p + 8) != o.uSecond) return nullptr;
    if (uSize > 24 && Load<u3_t>(p + 16) != o.uThird) return nullptr;
    return p + uSize;
}

// Where the type code stands behind the head at p, if that is the one at pBefore but for the last
// digit of its index, which is one more; else null. HEAD_ROOM bytes can be read; the other one was
// read, and has any number of digits.
[[nodiscard, gnu::always_inline]] inline const char* MatchNext(const char* p,
                                                               const char* pBefore) noexcept {
    const u2_t uStep = Load<u2_t>(p);
    if (uStep != Load<u2_t>(pBefore) || uStep > MOST_HEAD - 4) return nullptr;
    const char* const pEnd = p + 4 + uStep;
    const char* const pEndBefore = pBefore + 4 + uStep;
    // The last eight bytes end in the digit and "]".
    constexpr u3_t ONE_MORE = u3_t{1} << 48;
    const u3_t uLast = Load<u3_t>(pEnd - 8);
    if (uLast - Load<u3_t>(pEndBefore - 8) != ONE_MORE || pEnd[-2] > '9') return nullptr;
    if (uStep > 8 && Load<u2_t>(p + 4) != Load<u2_t>(pBefore + 4)) return nullptr;
    if (uStep > 12 && Load<u3_t>(pEnd - 16) != Load<u3_t>(pEndBefore - 16)) return nullptr;
    if (uStep > 20 && Load<u3_t>(pEnd - 24) != Load<u3_t>(pEndBefore - 24)) return nullptr;
    return pEnd;
}

// The key of the name at p, which "[" ends, if it is one of the two that are expected and stands
// there as it is; else 0. uSize bytes can be read.
[[nodiscard]] inline u2_t GuessName(Data_Names& oNames, const char* p, std::size_t uSize) {
    const auto oStandsAt = [&](u2_t uKey) {
        const Hash_Text& oName = oNames(uKey);
        return oName.StandsAt(p, uSize) && p[oName.uLength] == '[' && oNames.IsVerbatim(uKey);
    };
    const u2_t uFirst = oNames.Guess().First();
    if (uFirst != 0 && oStandsAt(uFirst)) {
        if (!oNames.Guess().GetExpected()) ExpectHead(oNames);
        return uFirst;
    }
    const u2_t uSecond = oNames.Guess().Second();
    return uSecond != 0 && oStandsAt(uSecond) ? uSecond : 0;
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_FAST_STEP_H

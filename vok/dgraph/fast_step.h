// SPDX-License-Identifier: MIT
// Names of step texts told without taking them apart: those that are expected. Internal.
#ifndef VOK_DGRAPH_FAST_STEP_H
#define VOK_DGRAPH_FAST_STEP_H

#include "vok/data/names.h"
#include "vok/dgraph/plain_step.h"

namespace vok::dgraph {

// The key of the name at p, which "[" ends, if it is one of the two that are expected and stands
// there as it is; else 0. uSize bytes can be read.
[[nodiscard]] inline u2_t GuessName(Data_Names& oNames, const char* p, std::size_t uSize) {
    const auto oStandsAt = [&](u2_t uKey) {
        const Hash_Text& oName = oNames(uKey);
        return oName.StandsAt(p, uSize) && p[oName.uLength] == '[' && oNames.IsVerbatim(uKey);
    };
    const u2_t uFirst = oNames.Guess().First();
    if (uFirst != 0 && oStandsAt(uFirst)) return uFirst;
    const u2_t uSecond = oNames.Guess().Second();
    return uSecond != 0 && oStandsAt(uSecond) ? uSecond : 0;
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_FAST_STEP_H

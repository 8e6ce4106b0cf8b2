// SPDX-License-Identifier: MIT
#include "vok/dgraph/fast_step.h"

#include <cstring>

namespace vok::dgraph {

void ExpectHead(Data_Names& oNames) {
    Hash_Guess& oGuess = oNames.Guess();
    const u2_t uKey = oGuess.First();
    const Hash_Text& oName = oNames(uKey);
    constexpr u2_t INDEX = '[' | '0' << 8 | ']' << 16;
    constexpr u2_t INDEX_SIZE = 3;
    const u2_t uStep = oName.uLength + INDEX_SIZE;
    if (LENGTH_SIZE + uStep > MOST_HEAD) return;
    // What is behind the head is copied along with it, but is not looked at.
    static_assert(Hash::SLACK == 16);
    char s[LENGTH_SIZE + MOST_HEAD] = {};
    Store<u2_t>(s, uStep);
    std::memcpy(s + LENGTH_SIZE, oName.sText, Hash::SLACK);
    if (oName.uLength > Hash::SLACK) {
        std::memcpy(s + LENGTH_SIZE + Hash::SLACK, oName.sText + Hash::SLACK, Hash::SLACK);
    }
    Store<u2_t>(s + LENGTH_SIZE + oName.uLength, INDEX);
    // A name has at least a byte, so that the last eight bytes are there.
    const Hash_Guess::Image oImage{Load<u3_t>(s), Load<u3_t>(s + 8), Load<u3_t>(s + 16),
                                   Load<u3_t>(s + LENGTH_SIZE + uStep - 8)};
    oGuess.Expect(oImage, oNames.IsLess(oGuess.Second(), uKey), oNames.Size());
}

}  // namespace vok::dgraph

// SPDX-License-Identifier: MIT
// Sorting by numbers that stand beside what is sorted.
#include <algorithm>

#include "tests/support.h"
#include "vok/base/keyed_sort.h"

namespace vok {
namespace {

TEST(KeyedSort, IsThatOfComparing) {
    std::mt19937_64 oRandom(7);
    for (const std::size_t uSize : {0u, 1u, 2u, 100u, 192u, 193u, 5000u}) {
        // Keys that differ in all bytes, in the lowest one, in two far apart, not at all.
        for (const u3_t uMask : {~u3_t{0}, u3_t{0xFF}, u3_t{0xC0'0000'0000'0003}, u3_t{0}}) {
            std::vector<Keyed> oKeyed(uSize), oRoom(uSize);
            for (std::size_t u = 0; u < uSize; ++u) {
                oKeyed[u] = {oRandom() & uMask, static_cast<u2_t>(2 * u)};
            }
            std::vector<Keyed> oExpected = oKeyed;
            std::stable_sort(oExpected.begin(), oExpected.end(),
                             [](const auto& a, const auto& b) { return a.uKey < b.uKey; });
            SortByKey(oKeyed.data(), uSize, oRoom.data());
            const bool bEqual = std::equal(oKeyed.begin(), oKeyed.end(), oExpected.begin(),
                                           [](const auto& a, const auto& b) {
                                               return a.uKey == b.uKey && a.uValue == b.uValue;
                                           });
            EXPECT_TRUE(bEqual) << uSize << ' ' << uMask;
        }
    }
}

TEST(KeyedSort, OfFewKeys) {
    std::mt19937 oRandom(7);
    for (u2_t uSize = 0; uSize <= Few_Keys::MOST; ++uSize) {
        // Different ones nearly all, the largest among them; few; in order; all the same.
        for (const u2_t uKeys : {Few_Keys::ABOVE, 5u, 0u, 1u}) {
            Few_Keys oKeys;
            std::vector<std::pair<u2_t, u2_t>> oExpected;
            for (u2_t u = 0; u < uSize; ++u) {
                const u2_t uKey = uKeys == 0   ? u
                                  : u % 9 == 7 ? uKeys - 1
                                               : RandomBelow(oRandom, uKeys);
                oKeys.Add(uKey);
                oExpected.emplace_back(uKey, 1000 + u);
            }
            std::sort(oExpected.begin(), oExpected.end());
            u2_t auNumber[Few_Keys::MOST + 1] = {};
            auNumber[uSize] = 77;
            oKeys.Sort(1000, auNumber);
            for (u2_t u = 0; u < uSize; ++u) ASSERT_EQ(auNumber[u], oExpected[u].second) << uSize;
            EXPECT_EQ(auNumber[uSize], 77u);
        }
    }
}

}  // namespace
}  // namespace vok

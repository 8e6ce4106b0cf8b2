// What a loader or evaluator may use up, and where it stood when it failed.
#ifndef VOK_BASE_LIMITS_H
#define VOK_BASE_LIMITS_H

#include "vok/base/str.h"
#include "vok/base/types.h"

namespace vok {

// Bounds on one operation over data from outside. Each stops a small input from costing
// much more than its own size; the defaults lie far above real documents. They count per
// operation, never per lifetime. A breach raises
//     limit "%0" of %1 exceeded (raise %2)
// with the name of the limit, its value and the field below that raises it.
struct Limits {
    // Nodes made. A record takes at least 9 bytes of input, so this guards the memory of
    // the process rather than its proportion to the input.
    u3_t m_uNodes = u3_t{1} << 31;
    // Nesting depth. Nothing recurses, so depth costs memory only.
    u3_t m_uDepth = u3_t{1} << 22;
    // Successor slots used up by run indexes: 11 bytes of step text can claim two billion.
    u3_t m_uSkippedSlots = u3_t{1} << 20;
    // Bytes of one text or block. All texts of a tree share 2 GiB.
    u3_t m_uTextBytes = u3_t{1} << 30;
    // Attributes of one node: each costs a search among those before it.
    u3_t m_uAttributes = u3_t{1} << 20;
    // Bytes that one compressed stream or member may inflate to: all of them are held in memory
    // while a tree is loaded, and the texts of a tree share 2 GiB.
    u3_t m_uInflatedBytes = u3_t{1} << 31;
    // How many of these a byte of input may give, on average, once there are more than
    // FREE_INFLATION. Deflate reaches 1032. Trees whose nodes differ give less than 100, but one
    // that is little but repetition gives up to 400, which does no harm as long as it is small.
    u3_t m_uInflationRatio = 200;
    static constexpr u3_t FREE_INFLATION = u3_t{1} << 28;
    // Members of a zip archive.
    u3_t m_uZipEntries = u3_t{1} << 20;
    // Nodes looked at by one path evaluation: each "//" may look at the whole tree again.
    u3_t m_uPathSteps = u3_t{1} << 30;

    // No bounds, for input that the caller made.
    [[nodiscard]] static constexpr Limits Trusted() noexcept {
        constexpr u3_t uNone = ~u3_t{0};
        return {uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone};
    }
};

// Filled by a loader that is handed one, whether it fails or not.
struct Load_Report {
    u3_t m_uOffset = 0;  // bytes from where loading began
    u2_t m_uLine = 0;    // from 1; 0 where the format has no lines
    u2_t m_uColumn = 0;  // characters from 1; 0 where the format has no lines
    u3_t m_uNodes = 0;   // nodes made, the root included
    Str m_oPath;         // path of the record being read, or of its parent while its name is
                         // not known yet; empty before the first one
};

}  // namespace vok

#endif  // VOK_BASE_LIMITS_H

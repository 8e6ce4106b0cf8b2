// SPDX-License-Identifier: MIT
// What a loader or evaluator may use up, and where it stood when it failed.
#ifndef VOK_BASE_LIMITS_H
#define VOK_BASE_LIMITS_H

#include "vok/base/str.h"
#include "vok/base/types.h"

namespace vok {

// Bounds on one operation over data from outside. Together they keep what an input costs in
// proportion to its size: the defaults allow about a microsecond and 200 bytes of memory for each
// of its bytes, beyond an allowance of 0.3 seconds and 64 MiB that every input has. Real documents
// lie far below. They count per operation, never per lifetime. A breach raises
//     limit "%0" of %1 exceeded (raise %2)
// with the name of the limit, its value and the field below that raises it.
struct Limits {
    // Nodes made. An element or a record takes at least 4 bytes of input, so this guards the
    // memory of the process rather than its proportion to the input.
    u3_t m_uNodes = u3_t{1} << 31;
    // Levels of nesting; a root alone is one. Nothing recurses, so depth costs memory only.
    u3_t m_uDepth = u3_t{1} << 22;
    // Successor slots used up by run indexes: 11 bytes of step text can claim two billion.
    u3_t m_uSkippedSlots = u3_t{1} << 20;
    // Bytes of one text, block or attribute value. All texts of a tree share 2 GiB.
    u3_t m_uTextBytes = u3_t{1} << 30;
    // Attributes of one node. Each new name has an array of its own.
    u3_t m_uAttributes = u3_t{1} << 20;
    // Bytes that one compressed stream or member may inflate to: all of them are held in memory
    // while a tree is loaded, and the texts of a tree share 2 GiB.
    u3_t m_uInflatedBytes = u3_t{1} << 31;
    // How many of these a byte of input may give, on average, once there are more than
    // FREE_INFLATION. Deflate reaches 1032. Trees whose nodes differ give less than 100, but one
    // that is little but repetition gives up to 400, which does no harm as long as it is small.
    u3_t m_uInflationRatio = 200;
    static constexpr u3_t FREE_INFLATION = u3_t{1} << 26;
    // Members of a zip archive.
    u3_t m_uZipEntries = u3_t{1} << 20;
    // Nodes looked at by one path evaluation: each "//" may look at the whole tree again.
    u3_t m_uPathSteps = u3_t{1} << 30;
    // Units of work for a byte of input, beyond FREE_WORK. A unit is to look at a node, at an
    // attribute, or at 32 bytes of text, on account of something else than reading them: about 10
    // nanoseconds. So a link whose path asks for many attributes may not cost what it likes.
    u3_t m_uWorkPerByte = 100;
    static constexpr u3_t FREE_WORK = u3_t{1} << 25;
    // Bytes of memory for a byte of input, beyond FREE_MEMORY: those of the tree, and the texts
    // and paths that writing it gives where nodes share one. What is not compressed stays far
    // below: at most about 60.
    u3_t m_uMemoryPerByte = 200;
    static constexpr u3_t FREE_MEMORY = u3_t{48} << 20;
    // The size of the input where it is not what is read: where that was inflated from it. 0
    // stands for what is read. Whoever inflates before loading says here how much there was.
    u3_t m_uInputBytes = 0;

    // Raises the error of the limit in a field of this.
    [[noreturn]] void RaiseExceeded(u3_t Limits::*pField) const;

    // No bounds, for input that the caller made.
    [[nodiscard]] static constexpr Limits Trusted() noexcept {
        constexpr u3_t uNone = ~u3_t{0};
        return {uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone, uNone, 0};
    }
};

// Filled by a loader that is handed one, whether it fails or not: where it ended, and what of the
// document the tree does not hold. A loader that succeeds may still have met a document that was
// cut short, or one that says more than a tree keeps; here it tells.
struct Load_Report {
    u3_t m_uOffset = 0;  // bytes from where loading began
    u2_t m_uLine = 0;    // from 1; 0 where the format has no lines
    u2_t m_uColumn = 0;  // characters from 1; 0 where the format has no lines
    u3_t m_uNodes = 0;   // nodes made, the root included
    Str m_oPath;         // path of the record being read, or of its parent while its name is
                         // not known yet; empty before the first one
    u3_t m_uWork = 0;    // units of work beyond reading, see Limits::m_uWorkPerByte

    // ---- an incomplete document: DGraph -----------------------------------

    u3_t m_uMissingBytes = 0;  // that fields lack because the stream ended; they read as zeros
    u3_t m_uMissingNodes = 0;  // successors that were announced and did not come

    // ---- what stands behind it --------------------------------------------

    // Bytes behind the document, as far as the stream knows: a memory buffer and a file all of
    // them, others those that had been read already.
    u3_t m_uBytesLeft = 0;

    // ---- what a tree does not keep: XML, JSON -----------------------------

    u3_t m_uDroppedTexts = 0;    // runs of text, not blank, beside elements
    u3_t m_uKeptReferences = 0;  // unknown references that were kept as text
    u3_t m_uReordered = 0;       // elements that stand in front of an earlier one now: by name
    u3_t m_uComments = 0;
    u3_t m_uInstructions = 0;  // and document type declarations; not the XML declaration
    u3_t m_uRounded = 0;       // numbers in JSON with digits that no number of a tree has

    // Whether the document had all it announced, and nothing behind it: a line break at the end of
    // a file is something.
    [[nodiscard]] bool IsComplete() const noexcept {
        return m_uMissingBytes == 0 && m_uMissingNodes == 0 && m_uBytesLeft == 0;
    }
};

}  // namespace vok

#endif  // VOK_BASE_LIMITS_H

// SPDX-License-Identifier: MIT
// What can be read of a damaged DGraph document.
#ifndef VOK_INSPECT_SALVAGE_H
#define VOK_INSPECT_SALVAGE_H

#include "vok/inspect/inspect.h"

namespace vok {

// What of a document is written, and what is not.
struct Salvage_Report {
    u3_t m_uNodes = 0;         // written, the root included
    u3_t m_uWithoutValue = 0;  // of those: whose value could not be read
    u3_t m_uLinks = 0;         // of those: links whose target is gone; they have no value either
    u3_t m_uLeftOut = 0;       // read, but not for a tree: a second one of an index, or below it
    u3_t m_uSkippedBytes = 0;  // that nothing is known of
    u3_t m_uFaults = 0;        // fields with a fault

    [[nodiscard]] bool IsWhole() const noexcept {
        return m_uWithoutValue + m_uLinks + m_uLeftOut + m_uSkippedBytes + m_uFaults == 0;
    }
};

// Writes the records of a DGraph document that Inspect finds as a document that loads: with counts
// of those that are there, of the same version, or 1.3 where that cannot be told. Records keep
// their steps, and so their indexes: places whose records are gone are gaps, which loading closes.
// Of the documents in a wrapping it is the first one with records. oTell gets the fields that have
// a fault or were skipped, those of the wrapping included.
//
// Links are kept whose target is written; one with a path longer than 4 KiB counts as gone, and one
// through successors among which a name comes back behind another one.
//
// Linear; goes through the input three times. Memory is that of Inspect, the longest value, 5 bytes
// for every record, 300 for every open level, the names on those and the paths of links. Raises "No
// binary DGraph buffer!" where there is no record, and what Inspect and the streams raise.
Salvage_Report Dgraph_Salvage(File_Stream& in, File_Stream& out,
                              const std::function<void(const Inspect_Field&)>& oTell,
                              const Limits& oLimits = {});

}  // namespace vok

#endif  // VOK_INSPECT_SALVAGE_H

// SPDX-License-Identifier: MIT
// The fields of what documents are wrapped in. Internal.
#ifndef VOK_INSPECT_WRAPPED_H
#define VOK_INSPECT_WRAPPED_H

#include <vector>

#include "vok/base/str.h"
#include "vok/inspect/inflated.h"

namespace vok::inspect {

// A document in a wrapping: its pieces, one behind the other, and what its member is called.
struct Content {
    std::size_t uFirst;
    std::size_t uEnd;
    Str oMember;
};
struct Contents {
    std::vector<Piece> aoPiece;
    std::vector<Content> aoContent;
};

// Each puts all fields up to the end of the bytes, and tells what is in them.
void PutZlib(Fields& f, const Limits& oLimits, Contents& oContents);
// Streams joined end to end are one document.
void PutGzip(Fields& f, const Limits& oLimits, Contents& oContents);
// In the order of the bytes: what stands in the directory only is not looked for.
void PutZip(Fields& f, const Limits& oLimits, Contents& oContents);

}  // namespace vok::inspect

#endif  // VOK_INSPECT_WRAPPED_H

// SPDX-License-Identifier: MIT
// The fields of a native dump; docs/native-dump.md explains them. Internal.
#ifndef VOK_INSPECT_DUMP_H
#define VOK_INSPECT_DUMP_H

#include "vok/inspect/fields.h"

namespace vok::inspect {

// Whether bytes begin with the header of one.
[[nodiscard]] bool IsDump(std::string_view s);
inline constexpr std::size_t DUMP_HEADER_SIZE = 30;

// Up to the end of the bytes. Where a length is wrong nothing says what comes behind it.
void PutDump(Fields& f);

}  // namespace vok::inspect

#endif  // VOK_INSPECT_DUMP_H

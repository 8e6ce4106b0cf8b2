// SPDX-License-Identifier: MIT
// Names of fields that more than one place knows. Internal.
#ifndef VOK_INSPECT_NAMES_H
#define VOK_INSPECT_NAMES_H

namespace vok::inspect {

// Of the header.
inline constexpr const char* MAGIC_FIELD = "magic";
inline constexpr const char* VERSION_FIELD = "version";
// Of a record, in this order; behind its code what the type has.
inline constexpr const char* STEP_LENGTH = "length of step";
inline constexpr const char* STEP = "step";
inline constexpr const char* TYPE_CODE = "type code";
inline constexpr const char* TEXT_LENGTH = "length of text";
inline constexpr const char* TEXT = "text";
inline constexpr const char* TARGET_PATH = "path of target";

}  // namespace vok::inspect

#endif  // VOK_INSPECT_NAMES_H

// SPDX-License-Identifier: MIT
// What inspecting finds: an extension of the message catalog. Internal.
#ifndef VOK_INSPECT_MESSAGES_H
#define VOK_INSPECT_MESSAGES_H

namespace vok::inspect {

enum class Fault {
    None,
    Ends,
    UnknownForm,
    WrongMagic,
    WrongVersion,
    NegativeLength,
    TooLong,
    BeyondEnd,
    EmptyStep,
    NulInStep,
    IndexTaken,
    TooDeep,
    TooMany,
    EmptyTarget,
    OldQuad,
    RecordsMissing,
    BytesBehind,
    Damaged,
    WrongSum,
    WrongSize,
    WrongHeader,
    UnknownMethod,
    Unfinished,
    WrongRecords,
};
// In the current language; empty for None.
[[nodiscard]] const char* TextOf(Fault eFault) noexcept;

}  // namespace vok::inspect

#endif  // VOK_INSPECT_MESSAGES_H

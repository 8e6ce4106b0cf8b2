// SPDX-License-Identifier: MIT
// What DGraph documents and trees are refused with: an extension of the message catalog.
// Each raises a Msg_Exception. Internal.
#ifndef VOK_DGRAPH_MESSAGES_H
#define VOK_DGRAPH_MESSAGES_H

namespace vok::dgraph {

[[noreturn]] void RaiseNoDGraph();
[[noreturn]] void RaiseWrongVersion();
[[noreturn]] void RaiseNoBinaryDGraph();

[[noreturn]] void RaiseEmptyNodePath();
[[noreturn]] void RaiseNegativeLength();
[[noreturn]] void RaiseEmptyTargetName();
[[noreturn]] void RaiseEmptyTargetPath();
[[noreturn]] void RaiseElementExists();
[[noreturn]] void RaiseTargetMissing();
[[noreturn]] void RaiseTargetNotUnique();

// What the checks of names find.
[[noreturn]] void RaiseEmptyAttributeName();
[[noreturn]] void RaiseInvalidAttributeCharacter(char c);
[[noreturn]] void RaiseEmptyNodeType();
[[noreturn]] void RaiseReservedNodeType(const char* sName);
[[noreturn]] void RaiseInvalidNodeTypeCharacter(char c);

// What is wrong with a step text.
enum class StepFault {
    None,
    Empty,
    BeginsWithSlash,
    BeginsWithDot,
    NoIndex,
    IndexNotClosed,
    NoAttributeSign,
    EmptyAttributeName,
    NoAttributeValue,
    NoBeginningQuote,
    NoEndQuote,
    AttributeNotClosed,
};
[[noreturn]] void RaiseInvalidStep(StepFault eFault);
// In the current language.
[[nodiscard]] const char* TextOf(StepFault eFault) noexcept;

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_MESSAGES_H

// SPDX-License-Identifier: MIT
// What JSON is refused with: an extension of the message catalog. Each raises a Msg_Exception.
// Internal.
#ifndef VOK_JSON_MESSAGES_H
#define VOK_JSON_MESSAGES_H

#include <string_view>

#include "vok/base/types.h"

namespace vok::json {

// What is wrong with the text.
enum class Syntax {
    NoValue,
    NoName,
    NoColon,
    NoObjectEnd,
    NoArrayEnd,
    BadHex,
    BadSurrogate,
    BadEscape,
    NoTextEnd,
    NoUtf8,
    TooLarge,
    NoFraction,
    NoExponent,
};
[[noreturn]] void RaiseSyntax(Syntax eSyntax);

[[noreturn]] void RaiseNoValueOf(const char* sType, std::string_view sValue);
[[noreturn]] void RaiseNulInName();
[[noreturn]] void RaiseNoTarget(std::string_view sPath);

}  // namespace vok::json

#endif  // VOK_JSON_MESSAGES_H

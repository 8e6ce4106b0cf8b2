// SPDX-License-Identifier: MIT
// What csv files are refused with, beside what the message catalog has for them. Each raises a
// Msg_Exception. Internal.
#ifndef VOK_CSV_MESSAGES_H
#define VOK_CSV_MESSAGES_H

#include <string_view>

#include "vok/base/types.h"

namespace vok::csv {

[[noreturn]] void RaiseNul(const char* sName, u3_t uLine, u3_t uColumn);
// A field that is not of the type that its column was told to have.
void NoValueOf(bool bRaise, const char* sName, u3_t uLine, std::string_view sColumn,
               std::string_view sText, const char* sType);
[[noreturn]] void RaiseDoesNotFit(const char* sPath);

}  // namespace vok::csv

#endif  // VOK_CSV_MESSAGES_H

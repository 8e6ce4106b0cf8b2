// SPDX-License-Identifier: MIT
// What paths and texts are refused with: an extension of the message catalog. Each raises a
// Msg_Exception. Internal.
#ifndef VOK_FILE_MESSAGES_H
#define VOK_FILE_MESSAGES_H

#include <string_view>

#include "vok/base/types.h"

namespace vok::file {

[[noreturn]] void RaiseLeadsOut(std::string_view sFolder, std::string_view sPath);

// What a scanner expected, and where: lines and columns from 1.
enum class Expected : u0_t { Word, Integer, Real, Quoted };
[[noreturn]] void RaiseExpected(Expected eWhat, const char* sName, u3_t uLine, u3_t uColumn,
                                std::string_view sFound);
// A number that is one, but has no room in its type.
[[noreturn]] void RaiseOutOfRange(const char* sName, u3_t uLine, u3_t uColumn,
                                  std::string_view sFound);

// A message of a pipe that is longer than is allowed.
[[noreturn]] void RaiseLongMessage(const char* sName, u3_t uBytes, u3_t uMost);

}  // namespace vok::file

#endif  // VOK_FILE_MESSAGES_H

// SPDX-License-Identifier: MIT
// What readers and writers of records are refused with: an extension of the message catalog. Each
// raises a Msg_Exception. Internal.
#ifndef VOK_RECORDS_MESSAGES_H
#define VOK_RECORDS_MESSAGES_H

#include <string_view>

#include "vok/base/types.h"

namespace vok::records {

// A path that records cannot be told by as they come.
[[noreturn]] void RaisePathNeedsTree(const char* sPath);
[[noreturn]] void RaiseDump();
[[noreturn]] void RaiseArchiveInStream();

[[noreturn]] void RaiseOutOfOrder(std::string_view sBefore, std::string_view sName);
[[noreturn]] void RaiseNoNode();
[[noreturn]] void RaiseHasValue(std::string_view sName);
[[noreturn]] void RaiseLateAttribute(std::string_view sName);
[[noreturn]] void RaiseComplete();
[[noreturn]] void RaiseStillOpen(std::string_view sName);
[[noreturn]] void RaiseWrongCount(std::string_view sName, u2_t uHas, u2_t uTold);
[[noreturn]] void RaiseCountNeeded();
[[noreturn]] void RaiseUnknownTarget(std::string_view sPath);

}  // namespace vok::records

#endif  // VOK_RECORDS_MESSAGES_H

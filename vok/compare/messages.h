// SPDX-License-Identifier: MIT
// What comparing and patching are refused with: an extension of the message catalog. Each raises a
// Msg_Exception. Internal.
#ifndef VOK_COMPARE_MESSAGES_H
#define VOK_COMPARE_MESSAGES_H

#include "vok/base/types.h"

namespace vok::detail {

[[noreturn]] void RaiseKeyIsNoPath(const char* sKey);

// A part of a patch, by its path there, that has no place in one.
[[noreturn]] void RaiseNoPatch(const char* sPath);

// What a patch expects of the tree and does not find, by the path of the node there.
[[noreturn]] void RaiseOtherName(const char* sExpected, const char* sActual);
[[noreturn]] void RaiseNoNode(const char* sPath);
[[noreturn]] void RaiseOtherType(const char* sPath, const char* sExpected, const char* sActual);
[[noreturn]] void RaiseOtherValue(const char* sPath);
[[noreturn]] void RaiseOtherAttribute(const char* sPath, const char* sName);
[[noreturn]] void RaiseOtherSubtree(const char* sPath);
[[noreturn]] void RaiseOtherCount(const char* sPath);

}  // namespace vok::detail

#endif  // VOK_COMPARE_MESSAGES_H

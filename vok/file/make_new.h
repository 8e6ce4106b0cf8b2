// SPDX-License-Identifier: MIT
// Files and folders under names that nobody has. Internal.
#ifndef VOK_FILE_MAKE_NEW_H
#define VOK_FILE_MAKE_NEW_H

#include <functional>
#include <string_view>

#include "vok/base/str.h"

namespace vok::file {

// A path in a folder at which oMake has made something new: sStart, the number of the process and a
// count. Empty where oMake fails for another reason than that something is there, which is in
// sys::RuntimeError().
[[nodiscard]] Str MakeNew(std::string_view sFolder, std::string_view sStart,
                          const std::function<bool(const char* sPath)>& oMake);

// What files begin with that take the place of another one when they are complete.
inline constexpr std::string_view BESIDE = ".vok-";

}  // namespace vok::file

#endif  // VOK_FILE_MAKE_NEW_H

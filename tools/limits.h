// SPDX-License-Identifier: MIT
// The limits on what input may cost, as options of the program.
#ifndef TOOLS_LIMITS_H
#define TOOLS_LIMITS_H

#include <string>

#include "vok/base/limits.h"

namespace tools {

// Those that every command works with.
vok::Limits& TheLimits() noexcept;

// Takes "inflation=500" or "nodes=none"; raises std::invalid_argument for anything else.
void SetLimit(const std::string& sText);

// "nodes, depth, ...", for help.
std::string LimitNames();

// A message of the library in the words of the program: what raises a limit is an option here.
std::string InOptions(std::string sMessage);

}  // namespace tools

#endif  // TOOLS_LIMITS_H

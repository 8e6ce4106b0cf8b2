// SPDX-License-Identifier: MIT
// How the commands that compare trees are called.
#ifndef TOOLS_COMPARE_COMMANDS_H
#define TOOLS_COMPARE_COMMANDS_H

#include <CLI/CLI.hpp>

namespace tools {

// iExit: what the command that is chosen answers with.
void AddCompareCommands(CLI::App& oApp, int& iExit);

}  // namespace tools

#endif  // TOOLS_COMPARE_COMMANDS_H

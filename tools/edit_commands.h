// SPDX-License-Identifier: MIT
// The commands that change documents, as the command line has them.
#ifndef TOOLS_EDIT_COMMANDS_H
#define TOOLS_EDIT_COMMANDS_H

#include <CLI/CLI.hpp>

namespace tools {

// set, add, delete, move, rename, and edit for several of them. iExit receives the exit status.
void AddEditCommands(CLI::App& oApp, int& iExit);

}  // namespace tools

#endif  // TOOLS_EDIT_COMMANDS_H

// SPDX-License-Identifier: MIT
// What a word of the command line may become, for shells that complete it.
#ifndef TOOLS_COMPLETE_H
#define TOOLS_COMPLETE_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace tools {

// What the last of the words behind the name of the program may be: commands, options, values of
// options that have only some, and paths in the file that was named before. Empty where files
// belong, which shells complete themselves. Never fails: who completes is not told of faults.
std::vector<std::string> Completions(const CLI::App& oApp, const std::vector<std::string>& asWord);

// The lines that make "bash", "zsh" or "fish" ask for them.
std::string CompletionScript(const std::string& sShell);

}  // namespace tools

#endif  // TOOLS_COMPLETE_H

// SPDX-License-Identifier: MIT
// The same done to many files, several of them at a time.
#ifndef TOOLS_EACH_FILE_H
#define TOOLS_EACH_FILE_H

#include <functional>
#include <string>
#include <vector>

namespace tools {

// Calls oDo with each file, in up to uAtOnce threads, and returns the highest status. What each of
// them prints and complains of comes in the order of the files. Raises what one of them raised, the
// others being ended first; which of several that is, is not told.
int ForEachFile(const std::vector<std::string>& asFile, unsigned uAtOnce,
                const std::function<int(const std::string&)>& oDo);

}  // namespace tools

#endif  // TOOLS_EACH_FILE_H

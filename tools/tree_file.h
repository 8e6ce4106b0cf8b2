// Trees into files of any form.
#ifndef TOOLS_TREE_FILE_H
#define TOOLS_TREE_FILE_H

#include <string>

#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace tools {

// What a name asks for by its endings.
struct Endings {
    std::string sFormat;  // empty when none does
    bool bGzip = false;
};
Endings EndingsOf(const std::string& sName);

// What is said of a name that asks for nothing.
std::string NoFormatText(const std::string& sName, const char* sEndings);

// Writes a tree to a file, or standard output ("-"), which gets all of it or nothing. sFormat,
// unless it is empty, counts instead of the ending of the name: "xml", "dgraph", "dump". What the
// form does not keep is told on standard error under the name sWhat.
void SaveTree(vok::Data oTree, const std::string& sPath, const std::string& sFormat,
              const std::string& sWhat);

}  // namespace tools

#endif  // TOOLS_TREE_FILE_H

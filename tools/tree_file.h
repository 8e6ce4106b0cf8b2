// SPDX-License-Identifier: MIT
// Trees into files of any form.
#ifndef TOOLS_TREE_FILE_H
#define TOOLS_TREE_FILE_H

#include <array>
#include <functional>
#include <string>

#include "vok/data/data.h"
#include "vok/file/stream.h"
#include "vok/zip/wrapping.h"

namespace tools {

// What a name asks for by its endings.
struct Endings {
    std::string sFormat;  // empty when none does
    vok::Zip_Wrapping eWrapping = vok::Zip_Wrapping::None;
    bool bTab = false;  // between the fields of a csv file
};
Endings EndingsOf(const std::string& sName);

// What is said of a name that asks for nothing.
std::string NoFormatText(const std::string& sName, const char* sEndings);

// How a document is written.
struct FileForm {
    std::string sFormat;  // "xml", "dgraph", "dump", "json"
    vok::Zip_Wrapping eWrapping = vok::Zip_Wrapping::None;
    std::array<int, 3> auVersion{1, 3, 0};  // of a DGraph document
    bool bCompact = false;                  // JSON on one line
    bool bAttachable = false;               // a dump that can be used where it lies
    bool bDurable = true;                   // see File_Replacement

    // The form whose losses it has: a document that holds a dump keeps all that a dump does.
    [[nodiscard]] std::string Keeps() const {
        return sFormat == "dgraph" && auVersion[0] == 2 ? "dump" : sFormat;
    }
};
// That of a file of such a name; sFormat, unless it is empty, counts instead of its ending. Raises
// std::invalid_argument where neither tells.
FileForm FormOf(const std::string& sPath, const std::string& sFormat);

void WriteTree(vok::Data& oTree, const FileForm& oForm, vok::File_Stream& oOut);

// Calls oWrite with the stream that becomes the file: plain, compressed, or the one member of an
// archive, which is named like it but for its ending. "-" is standard output, which gets all or
// nothing where bWhole. Raises std::invalid_argument for an archive there.
void WriteFile(const std::string& sPath, const FileForm& oForm, bool bWhole,
               const std::function<void(vok::File_Stream&)>& oWrite);

// Both in one, whole. What the form does not keep is told on standard error under the name sWhat.
void SaveTree(vok::Data oTree, const std::string& sPath, const FileForm& oForm,
              const std::string& sWhat);

}  // namespace tools

#endif  // TOOLS_TREE_FILE_H

// SPDX-License-Identifier: MIT
// Trees from files of any form.
#ifndef TOOLS_INPUT_H
#define TOOLS_INPUT_H

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "vok/base/limits.h"
#include "vok/base/msg_exception.h"
#include "vok/base/str.h"
#include "vok/data/data.h"
#include "vok/zip/wrapping.h"

namespace tools {

struct Input {
    vok::Data oTree;
    std::string sFormat;  // "xml", "json", "dgraph", "dump", "csv"
    vok::Zip_Wrapping eWrapping = vok::Zip_Wrapping::None;
    vok::u3_t uBytes = 0;  // as stored
    vok::Load_Report oReport;
    std::vector<vok::Str> asColumn;  // of a csv file
    std::string sBehind;  // why what stands behind the document does not belong to it; mostly empty
    vok::Arr<char> oBytes;  // of the document, without its wrapping; where they were to be kept

    // The nodes at a path. Where there are none, standard error says so.
    [[nodiscard]] vok::Data_NodeSet Find(const std::string& sPath) const;
};

// A file that could not be loaded, and where in it:
//     tree.xml: byte 17, line 2, column 5, at /a[0]: no XML stream or stream is corrupted
struct InputError : std::runtime_error {
    InputError(const std::string& sWhat, bool bTrouble)
        : std::runtime_error(sWhat), m_bTrouble(bTrouble) {}
    // Whether it is not the file's fault: it could not be read, or there was not enough memory.
    bool m_bTrouble;
    // What the text is made of, where a document has been begun.
    std::string m_sReason;
    vok::Load_Report m_oPlace;
};

// Complains of it, and returns the exit status of that.
int TellFault(const InputError& oError);

// That of what reading a document has raised, at the place where it did.
InputError FaultIn(const std::string& sPath, const vok::Load_Report& oReport,
                   const std::exception& oError);

// Raises what is said of bytes that cannot be the beginning of XML, nor of anything else.
void CheckMayBeXml(std::string_view sStart);
// Why what stands behind a document, so many bytes of which the first ones are given, does not
// belong to it; empty where it does. sDocument is the beginning of the document.
std::string WhatIsBehind(std::string_view s, vok::u3_t uBytes, std::string_view sDocument,
                         bool bXml);

// Whether the failure is that there was not enough memory.
inline bool IsNoMemory(const std::exception& oError) {
    return vok::Msg_Exception::KindOf(oError) == vok::Msg_Kind::NoMemory;
}

// Says on standard error that there is nothing at a path, or no such attribute unless that is
// empty, in a tree whose top bears a name.
void TellNothingAt(const std::string& sPath, const std::string& sAttribute, std::string_view sTop);

// Loads a tree, "-" meaning standard input. sFormat, unless it is empty, is what the content
// must be. Raises InputError.
Input Load(const std::string& sPath, const std::string& sFormat = {}, bool bKeepBytes = false);

}  // namespace tools

#endif  // TOOLS_INPUT_H

// SPDX-License-Identifier: MIT
// Csv files as input and output.
#ifndef TOOLS_CSV_H
#define TOOLS_CSV_H

#include <string>
#include <vector>

#include "vok/base/arr.h"
#include "vok/base/limits.h"
#include "vok/base/str.h"
#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace tools {

// What the command line says of csv files.
struct CsvForm {
    char cSeparator = 0;  // 0: by content
    bool bHeader = true;
    bool bRagged = false;  // rows are taken whatever is wrong with them
};
CsvForm& TheCsvForm() noexcept;

// Takes "tab" or a character of one byte; raises std::invalid_argument for anything else.
void SetSeparator(const std::string& sText);

// Whether a file is one by its name, compressed or not, where no form is told, or is told to be
// one: nothing in its content would say so.
bool IsCsv(const std::string& sPath, const std::string& sFormat);

// The names of the columns of a csv file, in their order.
using CsvColumns = std::vector<vok::Str>;

// Loads one, and appends its columns; errors call it by its path.
void LoadCsv(const std::string& sPath, const vok::Arr<char>& oBytes, const vok::Limits& oLimits,
             vok::Data& oTree, vok::Load_Report& oReport, CsvColumns& oColumns);

// Writes the successors of a node as rows for a file of such a name, and returns how many nodes and
// attributes do not fit. Where it comes from a csv file its columns keep their order; else there
// are none, and the command line says how rows are written.
vok::u3_t SaveCsv(const vok::Data& oTop, const CsvColumns& oColumns, const std::string& sPath,
                  vok::File_Stream& oOut);

}  // namespace tools

#endif  // TOOLS_CSV_H

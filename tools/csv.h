// SPDX-License-Identifier: MIT
// Csv files as input.
#ifndef TOOLS_CSV_H
#define TOOLS_CSV_H

#include <string>

#include "vok/base/arr.h"
#include "vok/base/limits.h"
#include "vok/data/data.h"

namespace tools {

// What the command line says of csv files.
struct CsvForm {
    char cSeparator = 0;  // 0: by content
    bool bHeader = true;
};
CsvForm& TheCsvForm() noexcept;

// Takes "tab" or a character of one byte; raises std::invalid_argument for anything else.
void SetSeparator(const std::string& sText);

// Whether a file is one by its name, compressed or not, where no form is told, or is told to be
// one: nothing in its content would say so.
bool IsCsv(const std::string& sPath, const std::string& sFormat);

// Loads one; errors call it by its path.
void LoadCsv(const std::string& sPath, const vok::Arr<char>& oBytes, const vok::Limits& oLimits,
             vok::Data& oTree, vok::Load_Report& oReport);

}  // namespace tools

#endif  // TOOLS_CSV_H

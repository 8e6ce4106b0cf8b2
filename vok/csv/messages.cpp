// SPDX-License-Identifier: MIT
#include "vok/csv/messages.h"

#include "vok/base/msg_entry.h"
#include "vok/base/str.h"

namespace vok::csv {

namespace {

// As much of a text as a message has room for.
[[nodiscard]] Str Shown(std::string_view sText) {
    return Str(sText.substr(0, 64));
}

}  // namespace

void RaiseNul(const char* sName, u3_t uLine, u3_t uColumn) {
    Msg_Entry::Raise({"a NUL in csv file \"%0\", line %1, column %2",
                      "eine NUL in CSV-Datei \"%0\", Zeile %1, Spalte %2"},
                     {Msg_Arg(sName), Msg_Arg(uLine), Msg_Arg(uColumn)});
}

void NoValueOf(bool bRaise, const char* sName, u3_t uLine, std::string_view sColumn,
               std::string_view sText, const char* sType) {
    Msg_Entry::RaiseOrReport(bRaise,
                             {"no %4 in csv file \"%0\", line %1, column \"%2\": \"%3\"",
                              "kein %4 in CSV-Datei \"%0\", Zeile %1, Spalte \"%2\": \"%3\""},
                             {Msg_Arg(sName), Msg_Arg(uLine), Msg_Arg(Shown(sColumn).CStr()),
                              Msg_Arg(Shown(sText).CStr()), Msg_Arg(sType)});
}

void RaiseDoesNotFit(const char* sPath) {
    Msg_Entry::Raise(
        {"node \"%0\" does not fit into a csv file", "Knoten \"%0\" passt nicht in eine CSV-Datei"},
        {Msg_Arg(sPath)});
}

}  // namespace vok::csv

// SPDX-License-Identifier: MIT
#include "vok/file/messages.h"

#include "vok/base/msg_entry.h"
#include "vok/base/str.h"

namespace vok::file {

namespace {

// As much of a text as a message has room for.
[[nodiscard]] Str Shown(std::string_view sText) {
    return Str(sText.substr(0, 64));
}

}  // namespace

void RaiseLeadsOut(std::string_view sFolder, std::string_view sPath) {
    Msg_Entry::Raise({"path \"%1\" leads out of \"%0\"", "Pfad \"%1\" führt aus \"%0\" hinaus"},
                     {Msg_Arg(Str(sFolder).CStr()), Msg_Arg(Str(sPath).CStr())});
}

void RaiseExpected(Expected eWhat, const char* sName, u3_t uLine, u3_t uColumn,
                   std::string_view sFound) {
    // In the order of Expected.
    static constexpr Msg_Text TEXTS[] = {
        {"a word expected in \"%0\", line %1, column %2: \"%3\"",
         "ein Wort wird in \"%0\", Zeile %1, Spalte %2, erwartet: \"%3\""},
        {"an integer expected in \"%0\", line %1, column %2: \"%3\"",
         "eine ganze Zahl wird in \"%0\", Zeile %1, Spalte %2, erwartet: \"%3\""},
        {"a number expected in \"%0\", line %1, column %2: \"%3\"",
         "eine Zahl wird in \"%0\", Zeile %1, Spalte %2, erwartet: \"%3\""},
        {"a text in quotes expected in \"%0\", line %1, column %2: \"%3\"",
         "ein Text in Anführungszeichen wird in \"%0\", Zeile %1, Spalte %2, erwartet: \"%3\""},
    };
    Msg_Entry::Raise(
        TEXTS[static_cast<int>(eWhat)],
        {Msg_Arg(sName), Msg_Arg(uLine), Msg_Arg(uColumn), Msg_Arg(Shown(sFound).CStr())});
}

void RaiseOutOfRange(const char* sName, u3_t uLine, u3_t uColumn, std::string_view sFound) {
    Msg_Entry::Raise(
        {"number out of range in \"%0\", line %1, column %2: \"%3\"",
         "Zahl außerhalb des Bereichs in \"%0\", Zeile %1, Spalte %2: \"%3\""},
        {Msg_Arg(sName), Msg_Arg(uLine), Msg_Arg(uColumn), Msg_Arg(Shown(sFound).CStr())});
}

void RaiseLongMessage(const char* sName, u3_t uBytes, u3_t uMost) {
    Msg_Entry::Raise(
        {"message of %1 bytes in named pipe '%0', allowed are %2",
         "Nachricht mit %1 Bytes in Named Pipe '%0', erlaubt sind %2", Msg_Kind::Limit},
        {Msg_Arg(sName), Msg_Arg(uBytes), Msg_Arg(uMost)});
}

}  // namespace vok::file

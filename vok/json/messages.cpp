// SPDX-License-Identifier: MIT
#include "vok/json/messages.h"

#include "vok/base/msg_entry.h"
#include "vok/base/str.h"

namespace vok::json {

namespace {

// As much of a text as a message has room for.
[[nodiscard]] Str Shown(std::string_view sText) {
    return Str(sText.substr(0, 64));
}

}  // namespace

void RaiseSyntax(Syntax eSyntax) {
    // In the order of Syntax.
    static constexpr Msg_Text FAULTS[] = {
        {"invalid JSON: a value expected", "ungültiges JSON: ein Wert wird erwartet"},
        {"invalid JSON: the name of a member expected",
         "ungültiges JSON: der Name eines Elements wird erwartet"},
        {"invalid JSON: \":\" expected behind the name of a member",
         "ungültiges JSON: \":\" wird nach dem Namen eines Elements erwartet"},
        {"invalid JSON: \",\" or \"}\" expected behind a member",
         "ungültiges JSON: \",\" oder \"}\" wird nach einem Element erwartet"},
        {"invalid JSON: \",\" or \"]\" expected behind an item",
         "ungültiges JSON: \",\" oder \"]\" wird nach einem Eintrag erwartet"},
        {"invalid JSON: four hexadecimal digits expected behind \"\\u\"",
         "ungültiges JSON: vier hexadezimale Ziffern werden nach \"\\u\" erwartet"},
        {"invalid JSON: half of a surrogate pair",
         "ungültiges JSON: die Hälfte eines Surrogatpaars"},
        {"invalid JSON: an unknown escape or a control character in a text",
         "ungültiges JSON: unbekannte Ersatzdarstellung oder Steuerzeichen in einem Text"},
        {"invalid JSON: a text does not end", "ungültiges JSON: ein Text endet nicht"},
        {"invalid JSON: a text is not UTF-8", "ungültiges JSON: ein Text ist nicht in UTF-8"},
        {"invalid JSON: a number is too large", "ungültiges JSON: eine Zahl ist zu groß"},
        {"invalid JSON: a digit expected behind the decimal point",
         "ungültiges JSON: eine Ziffer wird nach dem Dezimalpunkt erwartet"},
        {"invalid JSON: a digit expected in an exponent",
         "ungültiges JSON: eine Ziffer wird in einem Exponenten erwartet"},
    };
    Msg_Entry::Raise(FAULTS[static_cast<int>(eSyntax)]);
}

void RaiseNoValueOf(const char* sType, std::string_view sValue) {
    Msg_Entry::Raise({"invalid JSON value for type \"%0\": \"%1\"",
                      "ungültiger JSON-Wert für Typ \"%0\": \"%1\""},
                     {Msg_Arg(sType), Msg_Arg(Shown(sValue).CStr())});
}

void RaiseNulInName() {
    Msg_Entry::Raise({"JSON name with a NUL", "JSON-Name mit einer NUL"});
}

void RaiseNoTarget(std::string_view sPath) {
    Msg_Entry::Raise({"JSON link to nothing: \"%0\"", "JSON-Verweis ins Leere: \"%0\""},
                     {Msg_Arg(Shown(sPath).CStr())});
}

}  // namespace vok::json

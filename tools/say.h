// SPDX-License-Identifier: MIT
// What the program says to people, in their language.
#ifndef TOOLS_SAY_H
#define TOOLS_SAY_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace tools {

// Speaks German, as the library then does, where LC_ALL, LC_MESSAGES or LANG, the first of them
// that is set, asks for it; else English. What is printed for other programs is the same in both.
void ChooseLanguage();
// English from now on: for answers to programs.
void SpeakEnglish();

// A text with values in the place of %0, %1, ...; in English as it stands, in German as german.cpp
// has it, which has all that the program says.
[[nodiscard]] std::string Say(std::string_view sEnglish,
                              std::initializer_list<std::string_view> asValue = {});
// The German of a text; empty where there is none.
[[nodiscard]] std::string_view GermanOf(std::string_view sEnglish) noexcept;

}  // namespace tools

#endif  // TOOLS_SAY_H

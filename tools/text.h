// SPDX-License-Identifier: MIT
// Nodes as text for people and shells.
#ifndef TOOLS_TEXT_H
#define TOOLS_TEXT_H

#include <cstdio>
#include <string>
#include <string_view>

#include "vok/data/data.h"
#include "vok/data/value.h"

namespace tools {

// The value of a node: numbers in decimal (reals in the fewest digits that read back), dates as
// "2026-11-24T18:35:56Z", blocks as Base64, links as the path of their target; empty for nodes
// without a value.
std::string ValueText(const vok::Data& oNode);
// The same for a value by itself; a link is the text that it has.
std::string ValueText(const vok::Data_Value& o);

// A message of the library without its line break.
std::string Line(std::string_view sMessage);

// With backslashes and line breaks as \\, \n, \r, \t; bytes that are no UTF-8, and characters that
// could make a terminal do or show something else - control characters, directions of writing, tags
// that nobody sees - as \xHH, \uHHHH, \UHHHHHHHH.
std::string Escaped(std::string_view sText);
// The same between double quotes, in which those are escaped as well, and single ones, so that all
// of it can stand between those.
std::string Quoted(std::string_view sText);
// The same for messages, whose backslashes - in paths, say - stay as they are.
std::string Visible(std::string_view sText);

// Two digits a byte, with blanks between them where asked.
std::string Hex(std::string_view sBytes, bool bBlanks = false);

// A line on standard error about a member of an archive or a file.
void Tell(std::string_view sName, std::string_view sWhat);

// What is said of bytes that stand behind an archive.
std::string BehindText(vok::u3_t uBytes);

// The beginning of a text in at most so many bytes, and whole characters as people see them.
std::string_view Beginning(std::string_view sText, std::size_t uMost);

// The first and the last bytes of a path that is too long to be read: "/a[0]/b[0 ... ]/c[0]". At
// most 400 of them, and no half characters.
std::string Shortened(std::string_view sPath);

// Colours of a terminal, empty where there is none or NO_COLOR is set.
struct Palette {
    explicit Palette(bool bColoured) noexcept;
    const char* sName = "";
    const char* sType = "";
    const char* sAttribute = "";
    const char* sValue = "";
    const char* sFault = "";
    const char* sEnd = "";
};
// By default on a terminal that has them, unless NO_COLOR is set.
[[nodiscard]] bool WantsColour() noexcept;
// "always" and "never" instead, and "auto" for the default.
void SetColours(const std::string& sWhen);

}  // namespace tools

#endif  // TOOLS_TEXT_H

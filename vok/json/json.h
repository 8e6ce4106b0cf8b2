// SPDX-License-Identifier: MIT
// JSON: trees for programs that know nothing of them, and documents of such programs as trees.
#ifndef VOK_JSON_JSON_H
#define VOK_JSON_JSON_H

#include <string_view>

#include "vok/base/limits.h"
#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace vok {

// What stands between the values of a document: line breaks and two blanks a level, 64 at most, or
// nothing.
enum class Json_Layout { Lines, Compact };

// Writes a node and everything below it as a JSON document in UTF-8 with a line break behind it
// (docs/json.md): what it writes, Json_Load reads back into an equal tree, every bit of it. Only a
// link that leads out of what is written then leads to nothing. Removed nodes are left out.
//
// Linear in what is written, with memory for one entry per open level, and where there are links
// one per node. Raises "node is empty", "try to access deleted node" and the errors of the stream,
// which is not flushed and keeps what was written by then.
void Json_Save(const Data& oTop, File_Stream& oOut, Json_Layout eLayout = Json_Layout::Lines);
// The same as a text, in place of what oOut holds.
void Json_SaveString(const Data& oTop, Str& oOut, Json_Layout eLayout = Json_Layout::Lines);

// Replaces oTree by the tree of the JSON document that the stream holds at its position, of this
// library or of anybody else; oTree is then on its root. The document ends with its value and the
// blanks behind it: what follows is not read, and a stream that can seek is left there. A failed
// load leaves oTree on the part that was read. pReport, unless it is null, is filled in either
// case; m_uRounded counts the numbers that are not kept digit by digit.
//
// Linear in the bytes read, but for links, which take a logarithm of siblings for each step. Of a
// stream that is no File_Buf no more is held than the longest text and one piece. Raises "invalid
// JSON: ...", "invalid JSON value for type "%0": "%1"", "JSON name with a NUL", "JSON link to
// nothing: "%0"", "unknown character coding: "%0"", the errors of limits and of the stream.
void Json_Load(Data& oTree, File_Stream& oIn, const Limits& oLimits = {},
               Load_Report* pReport = nullptr);
void Json_LoadString(Data& oTree, std::string_view sText, const Limits& oLimits = {},
                     Load_Report* pReport = nullptr);

// Whether bytes can be the beginning of a JSON object or array: "{" or "[" behind blanks and a
// byte-order mark, in UTF-8 or UTF-16. A document that is one text, number or word is not told.
[[nodiscard]] bool Json_CanLoad(std::string_view sStart) noexcept;

}  // namespace vok

#endif  // VOK_JSON_JSON_H

// SPDX-License-Identifier: MIT
// Writing JSON: tokens as RapidJSON's writer makes them, with line breaks of our own. Internal.
#ifndef VOK_JSON_WRITER_H
#define VOK_JSON_WRITER_H

#include <algorithm>
#include <string_view>

#include <rapidjson/writer.h>

#include "vok/base/number.h"
#include "vok/file/sinks.h"
#include "vok/json/json.h"
#include "vok/json/memory.h"

namespace vok::json {

// Where its bytes go.
class Output {
  public:
    using Ch = char;

    explicit Output(File_Stream& oOut) : m_oSink(oOut) {}

    void Put(char c) {
        char* const p = m_oSink.Space(1);
        *p = c;
        m_oSink.Cut(p + 1);
    }
    void Put(std::string_view s) { m_oSink.Payload(s.data(), s.size()); }
    // Called at the end of the document: by the writer, which does not know of the line break.
    void Flush() noexcept {}
    void Finish() { m_oSink.Finish(); }

  private:
    PieceSink m_oSink;
};

class Tokens : private rapidjson::Writer<Output, rapidjson::UTF8<>, rapidjson::UTF8<>, Memory> {
  public:
    Tokens(Output& oOut, Json_Layout eLayout)
        : Writer(oOut), m_bLines(eLayout == Json_Layout::Lines) {}

    void Null() { Value(rapidjson::kNullType), WriteNull(); }
    void Bool(bool b) { Value(b ? rapidjson::kTrueType : rapidjson::kFalseType), WriteBool(b); }
    void Int(i2_t i) { Value(rapidjson::kNumberType), WriteInt(i); }
    void Uint(u3_t u) { Value(rapidjson::kNumberType), WriteUint64(u); }
    // A finite one: the fewest digits that read back, and a point or an exponent, so that it is not
    // taken for a whole number. RapidJSON's own sometimes has more digits.
    void Real(double d) {
        char s[NUMBER_ROOM + 2];
        std::size_t uSize = FormatReal(d, s);
        if (std::find_if(s, s + uSize, IsOfReal) == s + uSize) {
            s[uSize++] = '.';
            s[uSize++] = '0';
        }
        Value(rapidjson::kNumberType);
        os_->Put(std::string_view(s, uSize));
    }
    void Text(std::string_view s) {
        Value(rapidjson::kStringType);
        if (std::none_of(s.begin(), s.end(), IsEscaped)) [[likely]] {
            os_->Put('"');
            os_->Put(s);
            os_->Put('"');
        } else {
            WriteString(s.data(), static_cast<rapidjson::SizeType>(s.size()));
        }
    }
    // Characters that need no escape, in pieces that end where oMore gives an empty one.
    template <class More>
    void PlainText(const More& oMore) {
        Value(rapidjson::kStringType);
        os_->Put('"');
        for (std::string_view s = oMore(); !s.empty(); s = oMore()) os_->Put(s);
        os_->Put('"');
    }
    // In place of a Text: the next value belongs to it.
    void Key(std::string_view s) { Text(s); }
    void StartObject() { Value(rapidjson::kObjectType), Open(false); }
    void StartArray() { Value(rapidjson::kArrayType), Open(true); }
    void EndObject() { Close(), WriteEndObject(); }
    void EndArray() { Close(), WriteEndArray(); }

  private:
    static constexpr std::size_t MOST_INDENTED = 32;

    [[nodiscard]] static bool IsOfReal(char c) noexcept { return c == '.' || c == 'e'; }
    [[nodiscard]] static bool IsEscaped(char c) noexcept {
        return static_cast<u0_t>(c) < 0x20 || c == '"' || c == '\\';
    }

    // What stands in front of a value or name.
    void Value(rapidjson::Type eType) {
        Level* const p = level_stack_.Empty() ? nullptr : level_stack_.template Top<Level>();
        const bool bBehindName = p != nullptr && !p->inArray && p->valueCount % 2 != 0;
        Prefix(eType);
        if (m_bLines && bBehindName) os_->Put(' ');
        if (m_bLines && p != nullptr && !bBehindName) Break();
    }
    void Open(bool bArray) {
        new (level_stack_.template Push<Level>()) Level(bArray);
        os_->Put(bArray ? '[' : '{');
    }
    void Close() {
        const bool bEmpty = level_stack_.template Top<Level>()->valueCount == 0;
        level_stack_.template Pop<Level>(1);
        if (m_bLines && !bEmpty) Break();
    }
    void Break() {
        constexpr std::string_view BLANKS =
            "\n                                                                ";
        static_assert(BLANKS.size() == 1 + 2 * MOST_INDENTED);
        const std::size_t uDepth = level_stack_.GetSize() / sizeof(Level);
        os_->Put(BLANKS.substr(0, 1 + 2 * std::min(uDepth, MOST_INDENTED)));
    }

    const bool m_bLines;
};

}  // namespace vok::json

#endif  // VOK_JSON_WRITER_H

// The records of a DGraph document as bytes, wherever their nodes come from. Internal.
#ifndef VOK_DGRAPH_RECORD_WRITER_H
#define VOK_DGRAPH_RECORD_WRITER_H

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "vok/base/date.h"
#include "vok/base/hash.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/data/escape.h"
#include "vok/dgraph/format.h"

namespace vok::dgraph {

// A record is its step and its value, one behind the other. Sinks are those of vok/file/sinks.h,
// and others that want every field apart: each is cut off where it ends.
template <class Sink>
class RecordWriter {
  public:
    RecordWriter(Sink& oSink, i2_t iMinor) : m_oSink(oSink), m_iMinor(iMinor) {}

    void Header(const Version& oVersion) {
        char* const p = m_oSink.Space(HEADER_SIZE);
        StoreHeader(p, oVersion);
        m_oSink.Cut(p + HEADER_SIZE);
    }

    // ---- steps ------------------------------------------------------------

    // A name in the form that documents have, without attributes.
    void Step(const Hash_Text& oForm, u2_t uIndex) {
        if (oForm.uLength > LONG_NAME) [[unlikely]]
            return LongStep(oForm, uIndex);
        char* const pStep = m_oSink.Space(oForm.uLength + FIXED_ROOM) + 4;
        char* const pEnd = StoreIndex(CopyName(pStep, oForm), uIndex);
        Store(pStep - 4, static_cast<u2_t>(pEnd - pStep));
        m_oSink.Cut(pStep);
        m_oSink.Cut(pEnd);
    }
    // Any name as it is, with attributes, each of which has a value.
    void BeginStep(std::string_view sName, u2_t uIndex) {
        m_oStep.Truncate(0);
        detail::AppendStep(m_oStep, sName, uIndex);
    }
    void AddAttribute(std::string_view sName, std::string_view sValue) {
        m_oStep.Add("[@", 2);
        detail::AppendEncoded(m_oStep, sName, detail::RESERVED.data());
        m_oStep.Add("=\"", 2);
        detail::AppendEncoded(m_oStep, sValue, detail::RESERVED.data());
        m_oStep.Add("\"]", 2);
    }
    void EndStep() { Block(m_oStep.Beg(), m_oStep.Size()); }

    // ---- values -----------------------------------------------------------

    // So many successors follow.
    void Count(u2_t uSuccs) { Fixed(CODE_NONE, uSuccs); }
    // Of a type that documents do not have: not even a number of successors.
    void Nothing() { Begin(CODE_NONE); }
    void Bool(bool bValue) { Fixed(CODE_BOOLEAN, static_cast<u0_t>(bValue)); }
    void Int(u2_t uValue) { Fixed(CODE_INTEGER, uValue); }
    void Char(u2_t uCode) { Fixed(CODE_CHAR, static_cast<u0_t>(uCode)); }
    void Flt(double dValue) { Fixed(CODE_FLOAT, std::bit_cast<u2_t>(static_cast<float>(dValue))); }
    void Dbl(u3_t uBits) { Fixed(CODE_DOUBLE, uBits); }
    void Date(double dSeconds) {
        if (m_iMinor >= 2) {
            return Fixed(CODE_DATE, std::bit_cast<u3_t>(DaysOfSeconds(dSeconds)));
        }
        char s[128];
        Text(CODE_STRING, s, FormatDate(dSeconds, ' ', s));
    }
    void Lng(u3_t uValue) {
        if (m_iMinor >= 3) return Fixed(CODE_LONG, uValue);
        char s[NUMBER_ROOM];
        Text(CODE_STRING, s, FormatInteger(uValue, s));
    }
    void Quad(const std::array<u2_t, 4>& au) {
        if (m_iMinor < 3) {
            char s[64];
            const int iLength =
                std::snprintf(s, sizeof(s), "%u,%u,%u,%u", au[0], au[1], au[2], au[3]);
            return Text(CODE_QUAD, s, static_cast<std::size_t>(iLength));
        }
        char* p = Begin(CODE_QUAD);
        for (const u2_t u : au) m_oSink.Cut(p = Store(p, u));
    }
    // A text of a tree, of so many bytes with its NUL.
    void HeapText(const char* sText, u2_t uSize) {
        m_oSink.Cut(Store(Begin(CODE_STRING), uSize));
        m_oSink.HeapText(sText, uSize);
    }
    void Str(std::string_view sText) {
        m_oSink.Cut(Store(Begin(CODE_STRING), Msg::ToInt32(sText.size() + 1)));
        m_oSink.Payload(sText.data(), sText.size());
        m_oSink.Payload("", 1);
    }
    void Bin(const char* pData, std::size_t uSize) {
        Begin(CODE_BINARY);
        Block(pData, uSize);
    }
    // The name of the target, and its path without the first slash.
    void Link(std::string_view sName, std::string_view sPath) {
        // An empty name is refused by readers; its escape means the same.
        if (sName.empty()) sName = "\b0;";
        Begin(CODE_LINK);
        Block(sName.data(), sName.size());
        Block(sPath.data(), sPath.size());
    }

  protected:
    // Longer names may need more room than a sink has.
    static constexpr u2_t LONG_NAME = 1024;
    // Room for everything of a record that has no length of its own: lengths, brackets, run
    // index, type code, the largest value.
    static constexpr std::size_t FIXED_ROOM = 128;

    // The table of names has 16 bytes to spare behind each of its blocks.
    static char* CopyName(char* p, const Hash_Text& oName) noexcept {
        std::memcpy(p, oName.sText, Hash::SLACK);
        for (u2_t u = Hash::SLACK; u < oName.uLength; u += Hash::SLACK) [[unlikely]] {
                std::memcpy(p + u, oName.sText + u, Hash::SLACK);
            }
        return p + oName.uLength;
    }
    static char* StoreIndex(char* p, u2_t uIndex) noexcept {
        *p++ = '[';
        if (uIndex < 10) {
            *p++ = static_cast<char>('0' + uIndex);
        } else {
            p += FormatInteger(uIndex, p);
        }
        *p++ = ']';
        return p;
    }

    Sink& m_oSink;

  private:
    // The type code; returns where the value goes, for which there is room.
    [[gnu::always_inline]] char* Begin(Code eCode) {
        char* p = m_oSink.Space(FIXED_ROOM);
        *p++ = static_cast<char>(eCode);
        m_oSink.Cut(p);
        return p;
    }
    void LongStep(const Hash_Text& oForm, u2_t uIndex) {
        char sIndex[NUMBER_ROOM + 2];
        m_oStep.Truncate(0);
        m_oStep.Add(oForm.sText, oForm.uLength);
        m_oStep.Add(sIndex, static_cast<std::size_t>(StoreIndex(sIndex, uIndex) - sIndex));
        EndStep();
    }
    template <class T>
    void Fixed(Code eCode, T tValue) {
        m_oSink.Cut(Store(Begin(eCode), tValue));
    }
    void Block(const char* pData, std::size_t uSize) {
        m_oSink.Cut(Store(m_oSink.Space(4), Msg::ToInt32(uSize)));
        m_oSink.Payload(pData, uSize);
    }
    // The forms of older minor versions: a text, with its NUL, where a number stands today.
    void Text(Code eCode, const char* sText, std::size_t uLength) {
        Begin(eCode);
        Block(sText, uLength + 1);
    }

    const i2_t m_iMinor;
    Arr<char> m_oStep;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_RECORD_WRITER_H

// SPDX-License-Identifier: MIT
// The values of records as bytes, and steps that are ready; the base of what writes records.
// Internal.
#ifndef VOK_DGRAPH_VALUE_WRITER_H
#define VOK_DGRAPH_VALUE_WRITER_H

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "vok/base/copy.h"
#include "vok/base/date.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/dgraph/format.h"

namespace vok::dgraph {

// A record is its step and its value, one behind the other. Sinks are those of vok/file/sinks.h,
// and others that want every field apart: each is cut off where it ends; Sink is one, which is made
// of what the writer gets, or a reference to one. The minor version is that of the document: older
// ones have texts for some types.
template <class Sink>
class ValueWriter {
  public:
    template <class Argument>
    ValueWriter(Argument& oSink, i2_t iMinor) : m_oSink(oSink), m_iMinor(iMinor) {}

    void Header(const Version& oVersion) {
        char* const p = m_oSink.Space(HEADER_SIZE);
        StoreHeader(p, oVersion);
        m_oSink.Cut(p + HEADER_SIZE);
    }

    // ---- steps that are ready -----------------------------------------------

    // A whole step behind its length.
    [[gnu::always_inline]] void ReadyStep(const char* pHead, std::size_t uSize) {
        char* const p = m_oSink.Space(uSize + FIXED_ROOM);
        std::memcpy(p, pHead, uSize);
        m_oSink.Cut(p + uSize);
    }
    // A step of which all is there but its length and its index, which stands between the two
    // parts: the first ends with its "[", the second begins behind its "]". The second, at most
    // SHORT_PART bytes, has attributes.
    static constexpr std::size_t SHORT_PART = 64;
    [[gnu::always_inline]] void ReadyStem(const char* pStem, std::size_t uSize, u2_t uIndex,
                                          std::string_view sBehind = {}) {
        char* const pStep = m_oSink.Space(uSize + FIXED_ROOM) + 4;
        std::memcpy(pStep, pStem, uSize);
        char* pEnd = StoreDigits(pStep + uSize, uIndex);
        pEnd += sBehind.copy(pEnd, SHORT_PART);
        Store(pStep - 4, static_cast<u2_t>(pEnd - pStep));
        m_oSink.Cut(pStep);
        m_oSink.Cut(pEnd);
    }

    // ---- values -----------------------------------------------------------

    // So many successors follow.
    void Count(u2_t uSuccs) { Fixed(CODE_NONE, uSuccs); }
    // Of a type that documents do not have: not even a number of successors.
    void Nothing() { Begin(CODE_NONE); }
    void Bool(bool bValue) { Fixed(CODE_BOOLEAN, static_cast<u0_t>(bValue)); }
    void Int(u2_t uValue) { Fixed(CODE_INTEGER, uValue); }
    void Char(u2_t uCode) { Fixed(CODE_CHAR, static_cast<u0_t>(uCode)); }
    void Flt(float fValue) { Fixed(CODE_FLOAT, std::bit_cast<u2_t>(fValue)); }
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
        if (std::remove_reference_t<Sink>::COLLECTS && sText.size() <= SHORT_PART) {
            return StrOf(sText.size(), [&](char* p) {
                CopyBytes(p, sText.data(), sText.size());
                return p + sText.size();
            });
        }
        m_oSink.Cut(Store(Begin(CODE_STRING), Msg::ToInt32(sText.size() + 1)));
        m_oSink.Payload(sText.data(), sText.size());
        m_oSink.Payload("", 1);
    }
    // A text of at most so many bytes, which oFill puts at a place and returns the end of. For
    // sinks that give any room.
    template <class Fill>
    void StrOf(std::size_t uMost, const Fill& oFill) {
        char* const pText = m_oSink.Space(1 + 4 + uMost + 1) + 1 + 4;
        char* pEnd = oFill(pText);
        *pEnd++ = 0;
        pText[-5] = static_cast<char>(CODE_STRING);
        Store(pText - 4, Msg::ToInt32(static_cast<std::size_t>(pEnd - pText)));
        m_oSink.Cut(pEnd);
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
    // Room for everything of a record that has no length of its own: lengths, brackets, run
    // index, type code, the largest value. Every step asks for it, so that the value behind it
    // need not.
    static constexpr std::size_t FIXED_ROOM = 128;

    // What stands behind the "[" of a step without attributes.
    static char* StoreDigits(char* p, u2_t uIndex) noexcept {
        if (uIndex < 10) {
            *p++ = static_cast<char>('0' + uIndex);
        } else {
            p += FormatInteger(uIndex, p);
        }
        *p++ = ']';
        return p;
    }
    void Block(const char* pData, std::size_t uSize) {
        m_oSink.Cut(Store(m_oSink.Space(4), Msg::ToInt32(uSize)));
        m_oSink.Payload(pData, uSize);
    }

    Sink m_oSink;

  private:
    // The type code; returns where the value goes, for which there is room.
    [[gnu::always_inline]] char* Begin(Code eCode) {
        char* p = m_oSink.Space(std::remove_reference_t<Sink>::COLLECTS ? 0 : FIXED_ROOM);
        *p++ = static_cast<char>(eCode);
        m_oSink.Cut(p);
        return p;
    }
    template <class T>
    void Fixed(Code eCode, T tValue) {
        m_oSink.Cut(Store(Begin(eCode), tValue));
    }
    // The forms of older minor versions: a text, with its NUL, where a number stands today.
    void Text(Code eCode, const char* sText, std::size_t uLength) {
        Begin(eCode);
        Block(sText, uLength + 1);
    }

    const i2_t m_iMinor;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_VALUE_WRITER_H

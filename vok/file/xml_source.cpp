// SPDX-License-Identifier: MIT
#include "vok/file/xml_source.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "vok/base/msg.h"
#include "vok/base/str.h"
#include "vok/base/text_words.h"
#include "vok/base/utf8.h"
#include "vok/file/rest.h"
#include "vok/file/xml_text.h"

namespace vok::xml {

namespace {

constexpr std::size_t PIECE = 256 * 1024;

// windows-1252 where it differs from ISO-8859-1 (WHATWG Encoding, index windows-1252).
constexpr u1_t WINDOWS_1252[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

[[nodiscard]] bool IsUtf16(Coding eCoding) noexcept {
    return eCoding == Coding::Utf16LittleEndian || eCoding == Coding::Utf16BigEndian;
}

void AddCode(Arr<char>& oOut, u2_t uCode) {
    char s[4];
    oOut.Add(s, EncodeUtf8(uCode, s));
}

void ConvertUtf16(std::string_view s, bool bBigEndian, Arr<char>& oOut) {
    const auto oUnit = [&](std::size_t u) {
        const u2_t uFirst = static_cast<u0_t>(s[u]);
        const u2_t uSecond = static_cast<u0_t>(s[u + 1]);
        return bBigEndian ? uFirst << 8 | uSecond : uSecond << 8 | uFirst;
    };
    const std::size_t uSize = s.size() & ~std::size_t{1};
    for (std::size_t u = 0; u < uSize; u += 2) {
        u2_t uCode = oUnit(u);
        const bool bHigh = uCode >= 0xD800 && uCode < 0xDC00;
        if (bHigh && u + 2 < uSize && oUnit(u + 2) >= 0xDC00 && oUnit(u + 2) < 0xE000) {
            u += 2;
            uCode = 0x10000 + ((uCode - 0xD800) << 10) + (oUnit(u) - 0xDC00);
        }
        AddCode(oOut, uCode);
    }
    if (uSize != s.size()) AddCode(oOut, 0xFFFD);
}

// The value of the declaration's encoding, empty when there is none.
[[nodiscard]] std::string_view DeclaredCoding(std::string_view s) noexcept {
    constexpr std::string_view START = "<?xml";
    if (!s.starts_with(START) || s.size() == START.size() || !Is(s[START.size()], BLANK)) return {};
    const std::size_t uLength = InstructionLength(s, true);
    s = s.substr(0, uLength != 0 ? uLength : s.size());
    constexpr std::string_view NAME = "encoding";
    const std::size_t uName = s.find(NAME);
    if (uName == std::string_view::npos) return {};
    s.remove_prefix(uName + NAME.size());
    const std::size_t uQuote = s.find_first_of("\"'");
    if (uQuote == std::string_view::npos) return {};
    const std::size_t uEnd = s.find(s[uQuote], uQuote + 1);
    if (uEnd == std::string_view::npos) return {};
    return s.substr(uQuote + 1, uEnd - uQuote - 1);
}

[[nodiscard]] u3_t Characters(const char* p, const char* pEnd) noexcept {
    return static_cast<u3_t>(std::count_if(p, pEnd, [](char c) { return (c & 0xC0) != 0x80; }));
}

[[nodiscard]] bool IsSame(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto oLower = [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; };
        return oLower(x) == oLower(y);
    });
}

}  // namespace

Source::Source(File_Stream& oIn, Declares eDeclares)
    : m_oIn(oIn), m_pBuffer(dynamic_cast<File_Buf*>(&oIn)) {
    if (m_pBuffer != nullptr) {
        m_pBegin = m_pBuffer->Peek();
        m_pEnd = m_pBegin + m_pBuffer->Remaining();
        m_bAtEnd = true;
    } else {
        const char* p = nullptr;
        const char* pEnd = nullptr;
        Fetch(p, pEnd);
    }
    DetectCoding(eDeclares);
}

Source::~Source() {
    if (m_pBuffer != nullptr) m_pBuffer->Skip(m_pBuffer->Remaining());
}

u3_t Source::Leave(const char* p) {
    const u3_t uOffset = OffsetOf(p);
    if (m_pBuffer != nullptr) {
        File_Buf& oBuffer = *std::exchange(m_pBuffer, nullptr);
        oBuffer.Skip(static_cast<std::size_t>(uOffset));
        return oBuffer.Remaining();
    }
    const u3_t uLeft = m_uRead - uOffset;
    if (uLeft == 0 || !m_oIn.CanSeek(File_Stream::FROM_POSITION)) return uLeft;
    // A pipe does not know where it is.
    if (m_oIn.Tell() >= static_cast<i3_t>(uLeft)) {
        m_oIn.Seek(-static_cast<i3_t>(uLeft), File_Stream::FROM_POSITION);
    }
    return uLeft;
}

void Source::DetectCoding(Declares eDeclares) {
    const auto oStartsWith = [&](std::string_view s) {
        return static_cast<std::size_t>(m_pEnd - m_pBegin) >= s.size() &&
               std::memcmp(m_pBegin, s.data(), s.size()) == 0;
    };
    const auto oSkipMark = [&](std::size_t uSize) {
        m_pBegin += uSize;
        m_oPlace.uOffset += uSize;
    };
    using namespace std::string_view_literals;
    if (oStartsWith("\xFF\xFE\0\0"sv) || oStartsWith("\0\0\xFE\xFF"sv)) {
        Msg::UnknownCharacterCoding("UTF-32");
    }
    if (oStartsWith("\xEF\xBB\xBF"sv)) return oSkipMark(3);
    if (oStartsWith("\xFF\xFE"sv) || oStartsWith("<\0"sv)) {
        m_eCoding = Coding::Utf16LittleEndian;
    } else if (oStartsWith("\xFE\xFF"sv) || oStartsWith("\0<"sv)) {
        m_eCoding = Coding::Utf16BigEndian;
    }
    if (IsUtf16(m_eCoding)) {
        if (*m_pBegin != '<' && *m_pBegin != 0) oSkipMark(2);
        return Convert();
    }
    if (eDeclares == Declares::No) return;
    // As long as no declaration is longer.
    constexpr std::size_t DECLARATION = 4096;
    const std::size_t uSize = std::min(static_cast<std::size_t>(m_pEnd - m_pBegin), DECLARATION);
    const std::string_view sName = DeclaredCoding({m_pBegin, uSize});
    if (sName.empty() || IsSame(sName, "UTF-8") || IsSame(sName, "US-ASCII")) return;
    if (IsSame(sName, "ASCII") || IsSame(sName, "UTF8")) return;
    if (IsSame(sName, "ISO-8859-1") || IsSame(sName, "latin1")) {
        m_eCoding = Coding::Latin1;
    } else if (IsSame(sName, "windows-1252")) {
        m_eCoding = Coding::Windows1252;
    } else {
        Msg::UnknownCharacterCoding(Str(sName).CStr());
    }
    Convert();
}

// Reads all of a document in another coding and converts it.
void Source::Convert() {
    const char* p = m_pBegin;
    while (Fetch(p, m_pEnd)) {
    }
    Arr<char> oText;
    const std::string_view s(m_pBegin, static_cast<std::size_t>(m_pEnd - m_pBegin));
    oText.Reserve(s.size() + s.size() / 2);
    if (IsUtf16(m_eCoding)) {
        ConvertUtf16(s, m_eCoding == Coding::Utf16BigEndian, oText);
    } else {
        for (const char c : s) {
            const u2_t uByte = static_cast<u0_t>(c);
            const bool bTable = m_eCoding == Coding::Windows1252 && uByte >= 0x80 && uByte < 0xA0;
            AddCode(oText, bTable ? WINDOWS_1252[uByte - 0x80] : uByte);
        }
    }
    m_uBytes = m_oPlace.uOffset + s.size();
    m_oBytes.Swap(oText);
    m_pBegin = m_oBytes.Beg();
    m_pEnd = m_oBytes.End();
    m_bAtEnd = true;
}

bool Source::Fetch(const char*& p, const char*& pEnd) {
    if (m_bAtEnd) return false;
    Place oPlace = m_oPlace;
    if (p != nullptr) Pass(m_pBegin, p, oPlace);
    // What is kept moves to the front; the room behind it is at least as large.
    const std::size_t uKept = p != nullptr ? static_cast<std::size_t>(m_pEnd - p) : 0;
    if (uKept != 0) std::memmove(m_oBytes.Beg(), p, uKept);
    m_oBytes.Truncate(uKept);
    m_oPlace = oPlace;
    const std::size_t uWanted = std::max(PIECE, uKept);
    m_oBytes.Reserve(uKept + uWanted);
    const std::size_t uGot = ReadUpTo(m_oIn, m_oBytes.Beg() + uKept, uWanted);
    m_bAtEnd = uGot < uWanted;
    m_uRead += uGot;
    m_oBytes.SetSize(uKept + uGot);
    m_pBegin = p = m_oBytes.Beg();
    m_pEnd = pEnd = m_oBytes.End();
    return true;
}

Source::Place Source::PlaceOf(const char* p) const noexcept {
    Place oPlace = m_oPlace;
    Pass(m_pBegin, p, oPlace);
    oPlace.uOffset = std::min(oPlace.uOffset, m_uBytes);
    return oPlace;
}

u3_t Source::OffsetOf(const char* p) const noexcept {
    if (!IsConverted()) return m_oPlace.uOffset + static_cast<u3_t>(p - m_pBegin);
    // Converted bytes stay where they are. Who reads on asks for one place behind the other.
    if (m_pAsked == nullptr) {
        m_pAsked = m_pBegin;
        m_uAsked = m_oPlace.uOffset;
    }
    m_uAsked = p >= m_pAsked ? m_uAsked + StreamBytes(m_pAsked, p)  //
                             : m_uAsked - StreamBytes(p, m_pAsked);
    m_pAsked = p;
    return std::min(m_uAsked, m_uBytes);
}

// Moves a place over a text.
void Source::Pass(const char* pFrom, const char* pTo, Place& oPlace) const noexcept {
    if (pFrom == pTo) return;
    const std::size_t uLines = words::Count(pFrom, static_cast<std::size_t>(pTo - pFrom), '\n');
    const char* pLine = pTo;  // start of the last line
    while (pLine != pFrom && pLine[-1] != '\n') --pLine;
    if (uLines != 0) oPlace.uColumn = 1;
    oPlace.uLine += static_cast<u2_t>(uLines);
    oPlace.uColumn += static_cast<u2_t>(Characters(pLine, pTo));
    oPlace.uOffset += StreamBytes(pFrom, pTo);
}

// What a text takes in the stream.
u3_t Source::StreamBytes(const char* pFrom, const char* pTo) const noexcept {
    switch (m_eCoding) {
        case Coding::Latin1:
        case Coding::Windows1252: return Characters(pFrom, pTo);
        case Coding::Utf16LittleEndian:
        case Coding::Utf16BigEndian: {
            // Characters above U+FFFF, four bytes in UTF-8, take two units.
            const auto iLong =
                std::count_if(pFrom, pTo, [](char c) { return static_cast<u0_t>(c) >= 0xF0; });
            return 2 * (Characters(pFrom, pTo) + static_cast<u3_t>(iLong));
        }
        default: return static_cast<u3_t>(pTo - pFrom);
    }
}

}  // namespace vok::xml

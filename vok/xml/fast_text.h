// SPDX-License-Identifier: MIT
// Elements told without taking their tags apart. Internal.
#ifndef VOK_XML_FAST_TEXT_H
#define VOK_XML_FAST_TEXT_H

#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "vok/base/hash.h"
#include "vok/base/little_endian.h"
#include "vok/base/text_words.h"
#include "vok/xml/form.h"

namespace vok::xml::fast {

// The bytes after a name in a start tag that gives the most frequent types.
inline constexpr std::size_t SAME = TYPE.size() + 3;  // which all types have in front
inline constexpr std::string_view TYPE_START = TypeTag<Data_Node::Integer>::TEXT.substr(0, SAME);
inline constexpr std::string_view INTEGER_TYPE = TypeTag<Data_Node::Integer>::TEXT.substr(SAME);
inline constexpr std::string_view DOUBLE_TYPE = TypeTag<Data_Node::Double>::TEXT.substr(SAME);
inline constexpr std::string_view BOOLEAN_TYPE = TypeTag<Data_Node::Boolean>::TEXT.substr(SAME);
inline constexpr std::string_view BINARY_TYPE = TypeTag<Data_Node::Binary>::TEXT.substr(SAME);
// So many bytes behind a name can be looked at without asking: a type and a whole number, or the
// start of a CDATA section.
inline constexpr std::ptrdiff_t ROOM = 32;
inline constexpr std::size_t LONGEST_INTEGER = 12;  // with the "<" behind it
static_assert(SAME + INTEGER_TYPE.size() + LONGEST_INTEGER <= ROOM);
static_assert(SAME + BINARY_TYPE.size() + CDATA.size() <= ROOM);
// Bytes that tell an end tag.
inline constexpr std::ptrdiff_t END_TAG = 2;

[[nodiscard]] inline bool StartsWith(const char* p, std::string_view s) noexcept {
    return std::memcmp(p, s.data(), s.size()) == 0;
}

// A whole number as it is written, with "<" behind it; false for any other text.
[[nodiscard]] inline bool TakeInteger(const char*& p, u2_t& uValue) noexcept {
    const bool bNegative = *p == '-';
    p += bNegative;
    // A leading zero means an octal number.
    if (*p == '0' && p[1] != '<') return false;
    const char* pDigits = p;
    u3_t u = 0;
    while (p - pDigits < 10 && static_cast<u2_t>(*p - '0') < 10) {
        u = 10 * u + static_cast<u2_t>(*p++ - '0');
    }
    constexpr u3_t MOST = std::numeric_limits<i2_t>::max();
    if (p == pDigits || *p != '<' || u > MOST + bNegative) return false;
    uValue = static_cast<u2_t>(bNegative ? 0 - u : u);
    return true;
}

// A number of one of the frequent types.
struct Scalar {
    Data_Node::Type eType = Data_Node::Empty;
    u3_t uValue = 0;
    std::size_t uBytes = 0;  // of its text

    // Takes it from behind TYPE_START on, ROOM bytes of which are there; p moves behind it. False
    // for what needs a second look.
    [[nodiscard]] bool Take(const char*& p, const char* pEnd) noexcept {
        const char* pText;
        if (StartsWith(p, INTEGER_TYPE)) {
            pText = p += INTEGER_TYPE.size();
            eType = Data_Node::Integer;
            u2_t u = 0;
            if (!TakeInteger(p, u)) return false;
            uValue = u;
        } else if (StartsWith(p, DOUBLE_TYPE)) {
            pText = p += DOUBLE_TYPE.size();
            eType = Data_Node::Double;
            double dValue;
            const auto oResult = std::from_chars(p, pEnd, dValue);
            if (oResult.ec != std::errc() || oResult.ptr == p) return false;
            p = oResult.ptr;
            uValue = std::bit_cast<u3_t>(dValue);
        } else if (StartsWith(p, BOOLEAN_TYPE)) {
            pText = p += BOOLEAN_TYPE.size();
            eType = Data_Node::Boolean;
            uValue = *p == '1';
            if (*p != '1' && *p != '0') return false;
            ++p;
        } else {
            return false;
        }
        uBytes = static_cast<std::size_t>(p - pText);
        return true;
    }
};

// The text that begins at a place and what ends it.
struct TextRun {
    const char* pEnd;         // "<", or the end of all
    bool bReference = false;  // there is a "&" in it

    TextRun(const char* p, const char* pLimit) noexcept : pEnd(p) {
        for (; pLimit - pEnd >= 8; pEnd += 8) {
            const auto uWord = le::Load<u3_t>(pEnd);
            const u3_t uEnds = words::ZerosIn(uWord ^ '<' * words::EACH);
            const u3_t uReferences = words::ZerosIn(uWord ^ '&' * words::EACH);
            // Those in front of the end, where there is one.
            bReference |= (uReferences & (uEnds - 1) & ~uEnds) != 0;
            if (uEnds == 0) continue;
            pEnd += std::countr_zero(uEnds) / 8;
            return;
        }
        for (; pEnd != pLimit && *pEnd != '<'; ++pEnd) bReference |= *pEnd == '&';
    }
};

// Where the end mark of a CDATA section stands whose text begins at p; null where it does not.
[[nodiscard]] inline const char* EndOfCdata(const char* p, const char* pEnd) noexcept {
    for (;; ++p) {
        p = static_cast<const char*>(std::memchr(p, ']', static_cast<std::size_t>(pEnd - p)));
        if (p == nullptr || static_cast<std::size_t>(pEnd - p) < CDATA_END.size()) return nullptr;
        if (StartsWith(p, CDATA_END)) return p;
    }
}

// Whether the end tag of an element stands at p, and is told without looking at its bytes one by
// one.
[[nodiscard]] inline bool EndsHere(const Hash_Text& oName, const char* p,
                                   const char* pEnd) noexcept {
    const char* pName = p + 2;
    return pEnd - p >= END_TAG && p[1] == '/' && *p == '<' &&
           oName.StandsAt(pName, static_cast<std::size_t>(pEnd - pName)) &&
           pName[oName.uLength] == '>';
}

}  // namespace vok::xml::fast

#endif  // VOK_XML_FAST_TEXT_H

// SPDX-License-Identifier: MIT
// Places in strings, and what is done at them.
#include <cstring>
#include <utility>

#include "vok/base/find.h"
#include "vok/base/msg.h"
#include "vok/base/msg_entry.h"
#include "vok/base/number.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok {

namespace {

using std::size_t;
using BytePos = Str::BytePos;
using CharPos = Str::CharPos;

[[noreturn]] void RaiseWithin(size_t uByte) {
    Msg_Entry::Raise({"byte %0 is within a character", "Byte %0 liegt innerhalb eines Zeichens"},
                     {uByte});
}

[[nodiscard]] bool IsTail(char c) noexcept {
    return (static_cast<u0_t>(c) & 0xC0) == 0x80;
}

// The bytes of the character that ends at the end of a valid text, which is not empty.
[[nodiscard]] size_t LastSize(std::string_view sText) noexcept {
    size_t u = 1;
    while (IsTail(sText[sText.size() - u])) ++u;
    return u;
}

// The text without what is made of some characters at its beginning, at its end. Those are few:
// they are searched byte by byte, which finds no piece of another character where both are valid.
[[nodiscard]] std::string_view TrimmedStart(std::string_view sText, std::string_view sChars) {
    while (!sText.empty()) {
        const size_t uSize = Utf8SequenceLength(sText.data(), sText.size());
        if (sChars.find(sText.substr(0, uSize)) == sText.npos) break;
        sText.remove_prefix(uSize);
    }
    return sText;
}

[[nodiscard]] std::string_view TrimmedEnd(std::string_view sText, std::string_view sChars) {
    while (!sText.empty()) {
        const size_t uSize = LastSize(sText);
        if (sChars.find(sText.substr(sText.size() - uSize)) == sText.npos) break;
        sText.remove_suffix(uSize);
    }
    return sText;
}

}  // namespace

// ---- places ---------------------------------------------------------------

BytePos Str::ToByte(BytePos oAt) const {
    if (oAt.m_uAt > Len()) Msg::IndexOutOfRange(oAt.m_uAt, Len());
    if (oAt.m_uAt < Len() && IsTail(m_sText[oAt.m_uAt])) RaiseWithin(oAt.m_uAt);
    return oAt;
}

BytePos Str::ToByte(CharPos oAt) const {
    if (oAt.m_uAt > Chars()) Msg::IndexOutOfRange(oAt.m_uAt, Chars());
    if (Chars() == Len()) return {oAt.m_uAt};
    // From the nearer end.
    const char* p = CStr();
    if (oAt.m_uAt <= Chars() / 2) {
        for (size_t u = oAt.m_uAt; u != 0; --u) {
            do ++p;
            while (IsTail(*p));
        }
    } else {
        p += Len();
        for (size_t u = Chars() - oAt.m_uAt; u != 0; --u) {
            do --p;
            while (IsTail(*p));
        }
    }
    return {static_cast<size_t>(p - CStr())};
}

CharPos Str::ToChar(BytePos oAt) const {
    (void)ToByte(oAt);
    return {Chars() == Len() ? oAt.m_uAt : CountUtf8(CStr(), oAt.m_uAt)};
}

std::string_view Str::BytesOf(BytePos oFrom, BytePos oTo) const {
    if (oFrom > oTo) Msg::IndexOutOfRange(oFrom.m_uAt, oTo.m_uAt);
    return View().substr(oFrom.m_uAt, oTo.m_uAt - oFrom.m_uAt);
}

u2_t Str::CodeAt(BytePos oAt) const {
    if (oAt == End()) Msg::IndexOutOfRange(oAt.m_uAt, Len());
    const char* p = CStr() + oAt.m_uAt;
    return DecodeUtf8(p, CStr() + Len());
}

// ---- what is in it --------------------------------------------------------

std::optional<BytePos> Str::Find(std::string_view sWhat, BytePos oFrom) const {
    const Utf8_Text oWhat(sWhat);
    const size_t u = FindText(View(), oWhat.View(), ToByte(oFrom).m_uAt);
    if (u == std::string_view::npos) return std::nullopt;
    return BytePos{u};
}

std::optional<BytePos> Str::FindLast(std::string_view sWhat) const {
    const Utf8_Text oWhat(sWhat);
    const size_t u = FindLastText(View(), oWhat.View());
    if (u == std::string_view::npos) return std::nullopt;
    return BytePos{u};
}

bool Str::StartsWith(std::string_view sWhat) const {
    return View().starts_with(Utf8_Text(sWhat).View());
}

bool Str::EndsWith(std::string_view sWhat) const {
    return View().ends_with(Utf8_Text(sWhat).View());
}

// ---- numbers --------------------------------------------------------------

void Str::AddInteger(i3_t iValue) {
    char sNumber[NUMBER_ROOM];
    AddValid(sNumber, FormatInteger(iValue, sNumber));
}

void Str::AddInteger(u3_t uValue) {
    char sNumber[NUMBER_ROOM];
    AddValid(sNumber, FormatInteger(uValue, sNumber));
}

void Str::AddNumber(double dValue) {
    char sNumber[NUMBER_ROOM];
    AddValid(sNumber, FormatReal(dValue, sNumber));
}

// ---- editing --------------------------------------------------------------

void Str::ReplaceBytes(BytePos oFrom, BytePos oTo, std::string_view sText) {
    const Utf8_Text oNew(sText);
    const std::string_view sOld = BytesOf(oFrom, oTo);
    const std::string_view sNew = oNew.View();
    if (sOld.empty() && sNew.empty()) return;
    const std::string_view sTail = View().substr(oTo.m_uAt);
    if (sNew.empty() && IsOwn()) {
        const size_t uChars = CountUtf8(sOld.data(), sOld.size());
        std::memmove(m_sText + oFrom.m_uAt, sTail.data(), sTail.size() + 1);
        m_uSize -= sOld.size();
        m_uChars -= uChars;
        return;
    }
    if (sOld.empty() && sTail.empty()) return AddValid(sNew.data(), sNew.size());
    // Into another block: what comes in may lie in this one.
    Str oResult;
    oResult.Renew(Len() - sOld.size() + sNew.size() + 1);
    oResult.AddValid(CStr(), oFrom.m_uAt);
    oResult.AddValid(sNew.data(), sNew.size());
    oResult.AddValid(sTail.data(), sTail.size());
    *this = std::move(oResult);
}

size_t Str::ReplaceAll(std::string_view sWhat, std::string_view sWith) {
    const Utf8_Text oWhat(sWhat);
    const Utf8_Text oWith(sWith);
    if (oWhat.Len() == 0) return 0;
    Str oResult;
    size_t uCount = 0;
    size_t uDone = 0;
    size_t uFound;
    while ((uFound = FindText(View(), oWhat.View(), uDone)) != std::string_view::npos) {
        oResult.AddValid(m_sText + uDone, uFound - uDone);
        oResult.AddValid(oWith.Data(), oWith.Len());
        uDone = uFound + oWhat.Len();
        ++uCount;
    }
    if (uCount == 0) return 0;
    oResult.AddValid(m_sText + uDone, Len() - uDone);
    *this = std::move(oResult);
    return uCount;
}

void Str::Keep(std::string_view sPart) {
    if (sPart.size() == Len()) return;
    if (!IsOwn()) {
        Str oPart;
        oPart.AddValid(sPart.data(), sPart.size());
        *this = std::move(oPart);
        return;
    }
    m_uChars = CountUtf8(sPart.data(), sPart.size());
    std::memmove(m_sText, sPart.data(), sPart.size());
    m_uSize = sPart.size() + 1;
    m_sText[sPart.size()] = 0;
}

void Str::TrimStart(std::string_view sChars) {
    Keep(TrimmedStart(View(), Utf8_Text(sChars).View()));
}

void Str::TrimEnd(std::string_view sChars) {
    Keep(TrimmedEnd(View(), Utf8_Text(sChars).View()));
}

void Str::Trim(std::string_view sChars) {
    const Utf8_Text oChars(sChars);
    Keep(TrimmedEnd(TrimmedStart(View(), oChars.View()), oChars.View()));
}

// ---- parts ----------------------------------------------------------------

Str_Split Str::Split(std::string_view sSeparator) const {
    return {*this, sSeparator};
}

Str_Split::Str_Split(const Str& oText, std::string_view sSeparator)
    : m_oText(oText), m_oSeparator(sSeparator) {
    if (m_oSeparator.IsEmpty()) Msg::ParameterHasInvalidValue("sSeparator");
}

Str_Split::Iterator::Iterator(std::string_view sText, std::string_view sSeparator) noexcept
    : m_sRest(sText), m_sSeparator(sSeparator) {
    ++*this;
}

Str_Split::Iterator& Str_Split::Iterator::operator++() noexcept {
    m_sPart = m_sRest;
    if (m_sRest.data() == nullptr) return *this;
    const std::size_t u = FindText(m_sRest, m_sSeparator);
    if (u == std::string_view::npos) {
        m_sRest = {};
    } else {
        m_sPart = m_sRest.substr(0, u);
        m_sRest.remove_prefix(u + m_sSeparator.size());
    }
    return *this;
}

}  // namespace vok

// SPDX-License-Identifier: MIT
#include "vok/base/msg_exception.h"

#include <cstring>
#include <new>

#include "vok/base/utf8.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

// Appends whole characters while they and the NUL fit; the first that does not ends it.
void AppendChars(char (&sBuf)[Msg_Exception::CAPACITY], u2_t& uLength, const char* pText,
                 std::size_t uSize) noexcept {
    const char* const pEnd = pText + uSize;
    while (pText != pEnd) {
        char sChar[4];
        const unsigned uChar = EncodeUtf8(DecodeUtf8(pText, pEnd), sChar);
        if (uLength + uChar >= Msg_Exception::CAPACITY) break;
        std::memcpy(sBuf + uLength, sChar, uChar);
        uLength += uChar;
    }
    sBuf[uLength] = 0;
}

void AppendChars(char (&sBuf)[Msg_Exception::CAPACITY], u2_t& uLength, const char* sText) noexcept {
    AppendChars(sBuf, uLength, sText, std::strlen(sText));
}

}  // namespace

Msg_Exception::Msg_Exception() noexcept : m_fTime(static_cast<double>(sys::UnixTime())) {
    std::memset(m_sText, 0, sizeof(m_sText));
    std::memset(m_sWhere, 0, sizeof(m_sWhere));
}

Msg_Exception::Msg_Exception(const Msg_Exception& oOther) noexcept = default;
Msg_Exception& Msg_Exception::operator=(const Msg_Exception& oOther) noexcept = default;
Msg_Exception::~Msg_Exception() = default;

const char* Msg_Exception::what() const noexcept {
    return m_sText;
}

Msg_Kind Msg_Exception::KindOf(const std::exception& oError) noexcept {
    if (const auto* p = dynamic_cast<const Msg_Exception*>(&oError)) return p->Kind();
    const bool bMemory = dynamic_cast<const std::bad_alloc*>(&oError) != nullptr;
    return bMemory ? Msg_Kind::NoMemory : Msg_Kind::Other;
}

void Msg_Exception::Append(const char* sText) noexcept {
    if (sText != nullptr) AppendChars(m_sText, m_uText, sText);
}

void Msg_Exception::Append(const char* pText, std::size_t uSize) noexcept {
    AppendChars(m_sText, m_uText, pText, uSize);
}

void Msg_Exception::AddWhere(const char* sName, const char* sDetail) noexcept {
    if (sName == nullptr || *sName == 0) return;
    AppendChars(m_sWhere, m_uWhere, sName);
    if (sDetail != nullptr) {
        AppendChars(m_sWhere, m_uWhere, "(");
        AppendChars(m_sWhere, m_uWhere, sDetail);
        AppendChars(m_sWhere, m_uWhere, ")");
    }
    AppendChars(m_sWhere, m_uWhere, "\n");
}

}  // namespace vok

#include "serializer/fields/record_out.h"

#include <algorithm>
#include <new>

#include "serializer/document.h"
#include "serializer/fields/convert.h"
#include "serializer/guarded.h"
#include "vok/base/utf8.h"
#include "vok/dgraph/format.h"

namespace Velmar::Q7R::Serializer::fields {

using vok::dgraph::HEADER_SIZE;

namespace {

constexpr std::size_t FIRST_ROOM = 1024;
constexpr std::size_t MOST_AHEAD = std::size_t{1} << 26;
// A large buffer is not cleared for a small message.
constexpr std::size_t MOST_CLEARED = std::size_t{1} << 16;
// Sizes of documents are told in 32 bits.
constexpr std::size_t MOST_DOCUMENT = 0x7FFFFFFF;

}  // namespace

RecordOut::RecordOut(std::vector<Byte>& aoBuffer, bool bNewer)
    : m_aoBuffer(aoBuffer), m_eLong(bNewer ? vok::dgraph::CODE_LONG : vok::dgraph::CODE_STRING) {
    if (m_aoBuffer.size() < FIRST_ROOM) {
        Resize(std::clamp(m_aoBuffer.capacity(), FIRST_ROOM, MOST_CLEARED));
    }
    m_p = Begin() + HEADER_SIZE;
    m_pEnd = Begin() + m_aoBuffer.size();
}

void RecordOut::Resize(std::size_t uSize) {
    Guarded(Document::WRITE_BUFFER_FAILED, [&] { m_aoBuffer.resize(uSize); });
}

bool RecordOut::Finish() {
    const std::size_t uSize = Size();
    if (m_bFailed || uSize > MOST_DOCUMENT) return false;
    vok::dgraph::StoreHeader(Begin(), {1, m_bHasLongs ? 3 : 2, 0});
    m_aoBuffer.resize(uSize);
    return true;
}

void RecordOut::Grow(std::size_t uSize) {
    const std::size_t uUsed = Size();
    // At least half as much again, so that all copies together are linear; no more than is reserved
    // if that is enough.
    std::size_t uNew = uUsed + std::max(uSize, uUsed / 2 + FIRST_ROOM);
    if (uUsed + uSize <= m_aoBuffer.capacity()) uNew = std::min(uNew, m_aoBuffer.capacity());
    Resize(uNew);
    m_p = Begin() + uUsed;
    m_pEnd = Begin() + m_aoBuffer.size();
}

void RecordOut::Expect(std::size_t uSize) {
    const std::size_t uUsed = Size();
    // What there was says little of very much more.
    uSize = std::min(uSize + uSize / 16, std::max(MOST_AHEAD, 8 * uUsed));
    if (uUsed + uSize / 2 <= m_aoBuffer.capacity()) return;
    const std::size_t uRoom = static_cast<std::size_t>(m_pEnd - m_p);
    try {
        m_aoBuffer.reserve(uUsed + uSize);
    } catch (const std::bad_alloc&) {
        return;  // then it grows step by step
    }
    m_p = Begin() + uUsed;
    m_pEnd = m_p + uRoom;
}

void RecordOut::PutNull(char* pRecord) noexcept {
    const auto uStep = vok::le::Load<vok::u2_t>(pRecord);
    char* p = pRecord + 4 + uStep;
    std::memcpy(p, NULL_MARK.data(), NULL_MARK.size());
    p += NULL_MARK.size();
    vok::le::Store(pRecord, static_cast<vok::u2_t>(uStep + NULL_MARK.size()));
    *p++ = static_cast<char>(vok::dgraph::CODE_NONE);
    m_p = vok::le::Store(p, vok::u2_t{0});
}

void RecordOut::PutLong(char* p, vok::u3_t uValue) noexcept {
    if (m_eLong == vok::dgraph::CODE_LONG) {
        m_bHasLongs = true;
        m_p = vok::le::Store(p, uValue);
        return;
    }
    char* const pEnd = std::to_chars(p + 4, p + LONG_TEXT, uValue).ptr;
    *pEnd = 0;
    vok::le::Store(p, static_cast<vok::u2_t>(pEnd + 1 - (p + 4)));
    m_p = pEnd + 1;
}

void RecordOut::PutText(char* p, std::string_view sText) noexcept {
    p = vok::le::Store(p, static_cast<vok::u2_t>(sText.size() + 1));
    if (!IsTreeText(sText)) m_bFailed = true;
    p += sText.copy(p, sText.size());
    *p++ = 0;
    m_p = p;
}

void RecordOut::PutText(char* p, std::u16string_view sText) noexcept {
    char* const pText = p + 4;
    char* pTo = pText;
    if (sText.find(u'\0') != std::u16string_view::npos) m_bFailed = true;
    const char16_t* pFrom = sText.data();
    const char16_t* const pEnd = pFrom + sText.size();
    while (pFrom != pEnd) pTo += vok::EncodeUtf8(vok::DecodeUtf16(pFrom, pEnd), pTo);
    *pTo++ = 0;
    vok::le::Store(p, static_cast<vok::u2_t>(pTo - pText));
    m_p = pTo;
}

}  // namespace Velmar::Q7R::Serializer::fields

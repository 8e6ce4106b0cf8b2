// SPDX-License-Identifier: MIT
#include "serializer/fields/record_out.h"

#include <algorithm>
#include <new>

#include "serializer/document.h"
#include "serializer/fields/convert.h"
#include "serializer/guarded.h"
#include "vok/base/utf8.h"
#include "vok/dgraph/format.h"

namespace Velmar::Q7R::Serializer::fields {

namespace {

constexpr std::size_t FIRST_ROOM = 1024;
constexpr std::size_t MOST_AHEAD = std::size_t{1} << 26;
// A large buffer is not cleared for a small message.
constexpr std::size_t MOST_CLEARED = std::size_t{1} << 16;
// Sizes of documents are told in 32 bits.
constexpr std::size_t MOST_DOCUMENT = 0x7FFFFFFF;

}  // namespace

VectorSink::VectorSink(std::vector<Byte>& aoBuffer) : m_aoBuffer(aoBuffer) {
    std::size_t uSize = m_aoBuffer.size();
    if (uSize < FIRST_ROOM) {
        uSize = std::clamp(m_aoBuffer.capacity(), FIRST_ROOM, MOST_CLEARED);
        Resize(uSize);
    }
    m_p = At(0);
    m_pEnd = m_p + uSize;  // asking the vector for what it has just written would mean waiting
}

void VectorSink::Resize(std::size_t uSize) {
    Guarded(Document::WRITE_BUFFER_FAILED, [&] { m_aoBuffer.resize(uSize); });
}

void VectorSink::Grow(std::size_t uSize) {
    const std::size_t uUsed = Size();
    // At least half as much again, so that all copies together are linear; no more than is reserved
    // if that is enough.
    std::size_t uNew = uUsed + std::max(uSize, uUsed / 2 + FIRST_ROOM);
    if (uUsed + uSize <= m_aoBuffer.capacity()) uNew = std::min(uNew, m_aoBuffer.capacity());
    Resize(uNew);
    m_p = At(uUsed);
    m_pEnd = At(uNew);
}

void VectorSink::Expect(std::size_t uSize) {
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
    m_p = At(uUsed);
    m_pEnd = m_p + uRoom;
}

RecordOut::RecordOut(std::vector<Byte>& aoBuffer, bool bNewer)
    : Record(aoBuffer, bNewer ? 3 : 2), m_bNewer(bNewer) {
    Header({1, 2, 0});
}

bool RecordOut::Finish() {
    if (m_bFailed || Size() > MOST_DOCUMENT) return false;
    if (m_bNewer && m_bHasLongs) vok::dgraph::StoreHeader(m_oSink.At(0), {1, 3, 0});
    m_oSink.Finish();
    return true;
}

char* RecordOut::PutUtf16(char* p, std::u16string_view sText) noexcept {
    if (sText.find(u'\0') != std::u16string_view::npos) m_bFailed = true;
    const char16_t* pFrom = sText.data();
    const char16_t* const pEnd = pFrom + sText.size();
    while (pFrom != pEnd) p += vok::EncodeUtf8(vok::DecodeUtf16(pFrom, pEnd), p);
    return p;
}

}  // namespace Velmar::Q7R::Serializer::fields

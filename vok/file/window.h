// SPDX-License-Identifier: MIT
// What comes next in a stream, in pieces. Internal.
#ifndef VOK_FILE_WINDOW_H
#define VOK_FILE_WINDOW_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/base/little_endian.h"
#include "vok/file/rest.h"

namespace vok {

// Reads ahead, so that who takes small fields from a stream does not ask it for each. A memory
// buffer is read in place. Memory follows the bytes that are there: a piece, or the largest field.
class File_Window {
  public:
    static constexpr std::size_t CHUNK = 64 * 1024;

    explicit File_Window(File_Stream& oIn) : m_oIn(oIn), m_pBuffer(dynamic_cast<File_Buf*>(&oIn)) {
        if (m_pBuffer == nullptr) return;
        m_p = m_pBegin = m_pBuffer->Peek();
        m_pEnd = m_p + m_pBuffer->Remaining();
    }
    File_Window(const File_Window&) = delete;
    File_Window& operator=(const File_Window&) = delete;

    // The next uSize bytes, or those that are left; they count as read, and stay where they are
    // until the next call.
    std::string_view View(std::size_t uSize) {
        if (AtHand() < uSize) [[unlikely]]
            return Rest(uSize);
        const std::string_view sView(m_p, uSize);
        m_p += uSize;
        return sView;
    }
    // The same without reading them.
    std::string_view Look(std::size_t uSize) {
        if (AtHand() < uSize && m_pBuffer == nullptr) Fill(uSize);
        return {m_p, std::min(uSize, AtHand())};
    }
    // A number, of which what is missing is zero.
    template <class T>
    T Get(std::size_t* pGot = nullptr) {
        const std::string_view sView = View(sizeof(T));
        if (pGot != nullptr) *pGot = sView.size();
        if (sView.size() == sizeof(T)) [[likely]]
            return le::Load<T>(sView.data());
        char s[sizeof(T)] = {};
        sView.copy(s, sizeof(T));
        return le::Load<T>(s);
    }

    // The bytes that can be looked at without asking the stream, and going over them.
    [[nodiscard]] const char* Peek() const noexcept { return m_p; }
    [[nodiscard]] std::size_t AtHand() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_p);
    }
    void Skip(std::size_t uSize) noexcept { m_p += uSize; }
    // A byte that was gone over, by what Offset was in front of it; null where it is no longer
    // held.
    [[nodiscard]] const char* At(u3_t uOffset) const noexcept {
        return uOffset >= m_uBefore ? m_pBegin + (uOffset - m_uBefore) : nullptr;
    }
    // Back over what was gone over since the stream was asked for the last time.
    void GoBack(std::size_t uSize) noexcept { m_p -= uSize; }

    // Bytes read so far, and those that were asked for and not there.
    [[nodiscard]] u3_t Offset() const noexcept {
        return m_uBefore + static_cast<std::size_t>(m_p - m_pBegin);
    }
    [[nodiscard]] u3_t Missing() const noexcept { return m_uMissing; }
    // Bytes of memory held.
    [[nodiscard]] std::size_t Held() const noexcept { return m_oRoom.Capacity(); }

    // Leaves the stream behind what was read, where it can seek; returns how many bytes it still
    // has, as far as it knows.
    u3_t GiveBack() {
        if (m_pBuffer != nullptr) {
            m_pBuffer->Skip(static_cast<std::size_t>(m_p - m_pBegin));
            m_uBefore += static_cast<std::size_t>(m_p - m_pBegin);
            m_pBegin = m_p;
            return AtHand();
        }
        const std::size_t uLeft = AtHand();
        if (!m_oIn.CanSeek(File_Stream::FROM_POSITION) || m_oIn.Tell() < 0) return uLeft;
        if (uLeft != 0) m_oIn.Seek(-static_cast<i3_t>(uLeft), File_Stream::FROM_POSITION);
        m_pEnd = m_p;
        return std::max<u3_t>(uLeft, BytesLeft(m_oIn));
    }

  private:
    std::string_view Rest(std::size_t uSize) {
        if (m_pBuffer == nullptr) Fill(uSize);
        const std::string_view sView(m_p, std::min(uSize, AtHand()));
        m_p += sView.size();
        m_uMissing += uSize - sView.size();
        return sView;
    }
    void Fill(std::size_t uSize) {
        std::size_t uHeld = AtHand();
        if (uHeld != 0) std::memmove(m_oRoom.Beg(), m_p, uHeld);
        m_uBefore += static_cast<std::size_t>(m_p - m_pBegin);
        while (uHeld < uSize) {
            // As much again as there is, and not much more than is asked for.
            const std::size_t uMore = std::max(std::min(uHeld, uSize - uHeld), CHUNK);
            if (m_oRoom.Size() < uHeld + uMore) m_oRoom.Resize(uHeld + uMore);
            const std::size_t uRead = ReadUpTo(m_oIn, m_oRoom.Beg() + uHeld, uMore);
            uHeld += uRead;
            if (uRead < uMore) break;
        }
        m_p = m_pBegin = m_oRoom.Beg();
        m_pEnd = m_p + uHeld;
    }

    File_Stream& m_oIn;
    File_Buf* const m_pBuffer;
    Arr<char> m_oRoom;
    const char* m_pBegin = nullptr;
    const char* m_p = nullptr;
    const char* m_pEnd = nullptr;
    u3_t m_uBefore = 0;  // bytes in front of m_pBegin
    u3_t m_uMissing = 0;
};

}  // namespace vok

#endif  // VOK_FILE_WINDOW_H

// SPDX-License-Identifier: MIT
// Where the reader gets its bytes from. Internal.
//
// Both sources deliver what is left and no more: Fetch fills up what is missing with zeros,
// View gives a shorter text; Missing counts what was. One that LOOKS_AHEAD shows what comes next,
// which in one that MOVES may stand elsewhere after each call. Neither asks for memory that the
// bytes of the stream do not justify.
#ifndef VOK_DGRAPH_SOURCES_H
#define VOK_DGRAPH_SOURCES_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/file/buf.h"
#include "vok/file/rest.h"
#include "vok/file/window.h"

namespace vok::dgraph {

// Any stream: one read per field.
class StreamSource {
  public:
    static constexpr bool LOOKS_AHEAD = false;
    static constexpr bool MOVES = false;
    static constexpr std::size_t FIRST_BUFFER = 4096;
    static constexpr std::size_t CHUNK = 64 * 1024;

    explicit StreamSource(File_Stream& oIn) : m_oIn(oIn) { m_oBuffer.Resize(FIRST_BUFFER); }

    // Copies uSize bytes to pTarget and returns how many of them were there.
    std::size_t Fetch(char* pTarget, std::size_t uSize) {
        std::memset(pTarget, 0, uSize);
        const std::size_t uRead = ReadUpTo(m_oIn, pTarget, uSize);
        m_uOffset += uRead;
        m_uMissing += uSize - uRead;
        return uRead;
    }
    // The next uSize bytes, or those that are left; valid until the next call.
    [[nodiscard]] std::string_view View(std::size_t uSize) {
        std::size_t uGot = 0;
        while (uGot < uSize) {
            const std::size_t uWanted = std::min(uSize - uGot, std::max(uGot, CHUNK));
            if (m_oBuffer.Size() < uGot + uWanted) m_oBuffer.Resize(uGot + uWanted);
            const std::size_t uRead = ReadUpTo(m_oIn, m_oBuffer.Beg() + uGot, uWanted);
            uGot += uRead;
            m_uOffset += uRead;
            if (uRead < uWanted) break;
        }
        m_uMissing += uSize - uGot;
        return {m_oBuffer.Beg(), uGot};
    }
    // Bytes consumed so far, and bytes that were asked for and not there.
    [[nodiscard]] u3_t Offset() const noexcept { return m_uOffset; }
    [[nodiscard]] u3_t Missing() const noexcept { return m_uMissing; }
    // Bytes of memory held.
    [[nodiscard]] std::size_t Held() const noexcept { return m_oBuffer.Capacity(); }

    // What can be looked at without consuming it: nothing.
    [[nodiscard]] const char* Peek() const noexcept { return nullptr; }
    [[nodiscard]] std::size_t AtHand() const noexcept { return 0; }
    void Skip(std::size_t) noexcept {}

  private:
    File_Stream& m_oIn;
    Arr<char> m_oBuffer;
    u3_t m_uOffset = 0;
    u3_t m_uMissing = 0;
};

// A memory buffer, read in place. Its position follows when the source ends.
class BufferSource {
  public:
    static constexpr bool LOOKS_AHEAD = true;
    static constexpr bool MOVES = false;

    explicit BufferSource(File_Buf& oIn) noexcept
        : m_oIn(oIn), m_pBegin(oIn.Peek()), m_p(m_pBegin), m_pEnd(m_p + oIn.Remaining()) {}
    BufferSource(const BufferSource&) = delete;
    BufferSource& operator=(const BufferSource&) = delete;
    ~BufferSource() { m_oIn.Skip(static_cast<std::size_t>(m_p - m_pBegin)); }

    std::size_t Fetch(char* pTarget, std::size_t uSize) {
        const std::size_t uGot = std::min(uSize, AtHand());
        if (uGot != 0) std::memcpy(pTarget, m_p, uGot);
        if (uGot != uSize) std::memset(pTarget + uGot, 0, uSize - uGot);
        m_p += uGot;
        m_uMissing += uSize - uGot;
        return uGot;
    }
    [[nodiscard]] std::string_view View(std::size_t uSize) noexcept {
        const std::string_view sView(m_p, std::min(uSize, AtHand()));
        m_p += sView.size();
        m_uMissing += uSize - sView.size();
        return sView;
    }
    [[nodiscard]] u3_t Offset() const noexcept { return static_cast<u3_t>(m_p - m_pBegin); }
    [[nodiscard]] u3_t Missing() const noexcept { return m_uMissing; }
    [[nodiscard]] static std::size_t Held() noexcept { return 0; }

    [[nodiscard]] const char* Peek() const noexcept { return m_p; }
    [[nodiscard]] std::size_t AtHand() const noexcept {
        return static_cast<std::size_t>(m_pEnd - m_p);
    }
    void Skip(std::size_t uSize) noexcept { m_p += uSize; }

  private:
    File_Buf& m_oIn;
    const char* const m_pBegin;
    const char* m_p;
    const char* const m_pEnd;
    u3_t m_uMissing = 0;
};

// A stream that may be read ahead: what comes next is looked at in a window, which outlives this.
class WindowSource {
  public:
    static constexpr bool LOOKS_AHEAD = true;
    static constexpr bool MOVES = true;

    explicit WindowSource(File_Window& oWindow) noexcept : m_oWindow(oWindow) {}

    std::size_t Fetch(char* pTarget, std::size_t uSize) {
        const std::string_view sView = m_oWindow.View(uSize);
        sView.copy(pTarget, sView.size());
        std::memset(pTarget + sView.size(), 0, uSize - sView.size());
        return sView.size();
    }
    [[nodiscard]] std::string_view View(std::size_t uSize) { return m_oWindow.View(uSize); }
    [[nodiscard]] u3_t Offset() const noexcept { return m_oWindow.Offset(); }
    [[nodiscard]] u3_t Missing() const noexcept { return m_oWindow.Missing(); }
    [[nodiscard]] std::size_t Held() const noexcept { return m_oWindow.Held(); }

    [[nodiscard]] const char* Peek() const noexcept { return m_oWindow.Peek(); }
    [[nodiscard]] std::size_t AtHand() const noexcept { return m_oWindow.AtHand(); }
    void Skip(std::size_t uSize) noexcept { m_oWindow.Skip(uSize); }

  private:
    File_Window& m_oWindow;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_SOURCES_H

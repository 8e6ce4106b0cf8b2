// SPDX-License-Identifier: MIT
// Guessing the next name. Internal.
#ifndef VOK_BASE_HASH_GUESS_H
#define VOK_BASE_HASH_GUESS_H

#include "vok/base/hash.h"

namespace vok {

// Names follow each other in patterns: after a name comes what came after it the last time, or
// the same name again. Looking there first saves most names a search in the table.
class Hash_Guess {
  public:
    // The two keys to try, most likely first; 0 when there is nothing to try.
    [[nodiscard]] u2_t First() const noexcept {
        return m_uLast < m_oEntry.Size() ? m_oEntry(m_uLast) & KEY : 0;
    }
    [[nodiscard]] u2_t Second() const noexcept { return m_uLast; }
    // A guess was right.
    void Confirm(u2_t uKey) noexcept { m_uLast = uKey; }
    // Another name came; uKeys is the size of the table.
    void Note(u2_t uKey, std::size_t uKeys) {
        if (uKeys > KEY) return;
        if (m_oEntry.Size() < uKeys) [[unlikely]]
            Grow(uKeys);
        u2_t& uLast = m_oEntry(m_uLast);
        if (uKey != m_uLast) uLast = (uLast & ~KEY) | uKey;
        m_uLast = uKey;
    }

    // Two bits beside each key, for who knows what they mean: whether the second one is known, and
    // what it is.
    [[nodiscard]] bool IsKnown(u2_t uKey) const noexcept {
        return uKey < m_oEntry.Size() && (m_oEntry(uKey) & KNOWN) != 0;
    }
    [[nodiscard]] bool IsVerbatim(u2_t uKey) const noexcept {
        return uKey < m_oEntry.Size() && (m_oEntry(uKey) & VERBATIM) != 0;
    }
    void SetVerbatim(u2_t uKey, bool bVerbatim, std::size_t uKeys) {
        if (m_oEntry.Size() < uKeys) Grow(uKeys);
        m_oEntry(uKey) |= KNOWN | (bVerbatim ? VERBATIM : 0);
    }
    // Knows nothing again.
    void Clear() noexcept {
        m_oEntry.Truncate(0);
        m_uLast = 0;
    }
    [[nodiscard]] std::size_t HeapBytes() const noexcept { return m_oEntry.HeapBytes(); }

  private:
    static constexpr std::size_t FIRST_KEYS = 32;
    static constexpr u2_t KEY = 0x3FFFFFFF;
    static constexpr u2_t KNOWN = 0x40000000;
    static constexpr u2_t VERBATIM = 0x80000000;

    // As far as its memory goes.
    void Grow(std::size_t uKeys) {
        m_oEntry.ReserveMore(uKeys - m_oEntry.Size());
        m_oEntry.Resize(m_oEntry.Capacity());
    }

    // By key: what came behind it, 0 for nothing known, and its two bits.
    Arr_Near<u2_t, FIRST_KEYS> m_oEntry;
    u2_t m_uLast = 0;
};

}  // namespace vok

#endif  // VOK_BASE_HASH_GUESS_H

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
    [[nodiscard]] u2_t First() const noexcept { return Entry() & KEY; }
    [[nodiscard]] u2_t Second() const noexcept { return m_uLast; }
    // A guess was right.
    void Confirm(u2_t uKey) noexcept { m_uLast = uKey; }
    // Whether it was seen that documents, or elements, carry a name as it stands.
    enum As : u2_t { PLAIN = 0, DGRAPH = 0xC0000000, XML = 0x08000000 };
    // Another name came; uKeys is the size of the table.
    void Note(u2_t uKey, std::size_t uKeys, As eAs = PLAIN) {
        if (uKeys > KEY) return;
        if (m_oEntry.Size() < uKeys) [[unlikely]]
            Grow(uKeys);
        u2_t& uLast = m_oEntry(m_uLast);
        if (uKey != m_uLast && uKey != (uLast & KEY)) uLast = (uLast & OF_NAME) | uKey;
        m_oEntry(uKey) |= eAs;
        m_uLast = uKey;
    }

    // The same where that needs no memory, else nothing.
    void TryNote(u2_t uKey, std::size_t uKeys) noexcept {
        if (uKeys <= m_oEntry.Size()) Note(uKey, uKeys);
    }

    // What is to be tried first, if a codec has said what it looks like in its documents: the
    // first, second, third and last eight bytes, of which the codec knows where they stand. They
    // belong to the name; where only other names came in front of it, it is not expected.
    struct Image {
        u3_t uFirst;
        u3_t uSecond;
        u3_t uThird;
        u3_t uLast;
    };
    class Expected {
      public:
        // Whether anything is; else nothing else may be asked.
        explicit operator bool() const noexcept { return (m_uEntry & EXPECTED) != 0; }
        [[nodiscard]] u2_t Key() const noexcept { return m_uEntry & KEY; }
        // Whether it is in byte order behind the name in front of it.
        [[nodiscard]] bool IsAscending() const noexcept { return (m_uEntry & ASCENDING) != 0; }

      private:
        friend class Hash_Guess;
        explicit Expected(u2_t uEntry) noexcept : m_uEntry(uEntry) {}
        u2_t m_uEntry;
    };
    [[nodiscard]] Expected GetExpected() const noexcept { return GetExpected(m_uLast); }
    // The same behind a name, for who confirms what came last later.
    [[nodiscard]] Expected GetExpected(u2_t uLast) const noexcept {
        return Expected(uLast < m_oEntry.Size() ? m_oEntry(uLast) : 0);
    }
    [[nodiscard]] const Image& ImageOf(Expected o) const noexcept { return m_oImage(o.Key()); }
    // Says it of First(), which there must be; uKeys is the size of the table.
    void Expect(const Image& oImage, bool bAscending, std::size_t uKeys) {
        const u2_t uKey = First();
        if (m_oImage.Size() < uKeys) {
            m_oImage.ReserveMore(uKeys - m_oImage.Size());
            m_oImage.Resize(m_oImage.Capacity());
        }
        m_oImage(uKey) = oImage;
        m_oEntry(m_uLast) |= EXPECTED | (bAscending ? ASCENDING : 0);
    }

    // Bits beside each key, for who knows what they mean: whether the second one is known, and what
    // it is; and a third one, which is only set.
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
    [[nodiscard]] bool IsXmlVerbatim(u2_t uKey) const noexcept {
        return uKey < m_oEntry.Size() && (m_oEntry(uKey) & XML_VERBATIM) != 0;
    }
    void SetXmlVerbatim(u2_t uKey, std::size_t uKeys) {
        if (m_oEntry.Size() < uKeys) Grow(uKeys);
        m_oEntry(uKey) |= XML_VERBATIM;
    }
    // Knows nothing again.
    void Clear() noexcept {
        m_oEntry.Truncate(0);
        m_oImage.Clear();
        m_uLast = 0;
    }
    [[nodiscard]] std::size_t HeapBytes() const noexcept {
        return m_oEntry.HeapBytes() + m_oImage.HeapBytes();
    }

  private:
    static constexpr std::size_t FIRST_KEYS = 32;
    static constexpr u2_t KEY = 0x07FFFFFF;
    static constexpr u2_t XML_VERBATIM = XML;
    static constexpr u2_t EXPECTED = 0x10000000;   // the one behind it has an image
    static constexpr u2_t ASCENDING = 0x20000000;  // and is greater
    static constexpr u2_t KNOWN = 0x40000000;
    static constexpr u2_t VERBATIM = 0x80000000;
    static_assert(DGRAPH == (KNOWN | VERBATIM));
    static constexpr u2_t OF_NAME = KNOWN | VERBATIM | XML_VERBATIM;  // whatever comes behind it

    [[nodiscard]] u2_t Entry() const noexcept {
        return m_uLast < m_oEntry.Size() ? m_oEntry(m_uLast) : 0;
    }
    // As far as its memory goes.
    [[gnu::noinline]] void Grow(std::size_t uKeys) {
        m_oEntry.ReserveMore(uKeys - m_oEntry.Size());
        m_oEntry.Resize(m_oEntry.Capacity());
    }

    // By key: what came behind it, 0 for nothing known, and its bits.
    Arr_Near<u2_t, FIRST_KEYS> m_oEntry;
    Arr<Image> m_oImage;  // by key, of those that have one
    u2_t m_uLast = 0;
};

}  // namespace vok

#endif  // VOK_BASE_HASH_GUESS_H

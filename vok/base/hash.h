// SPDX-License-Identifier: MIT
// The table of distinct texts: every text once, numbered in the order of first use. Internal.
#ifndef VOK_BASE_HASH_H
#define VOK_BASE_HASH_H

#include <new>
#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/compare.h"
#include "vok/base/hash_text.h"

namespace vok {

[[gnu::always_inline]] inline u3_t Hash_Text::PrefixOf(const char* p, std::size_t uSize) noexcept {
    if (uSize >= 8) return BigEndianAt<u3_t>(p);
    // Parts that overlap agree where they do.
    if (uSize >= 4) {
        return u3_t{BigEndianAt<u2_t>(p)} << 32 | u3_t{BigEndianAt<u2_t>(p + uSize - 4)}
                                                      << (64 - 8 * uSize);
    }
    const auto oAt = [p](std::size_t u) { return u3_t{static_cast<u0_t>(p[u])} << (56 - 8 * u); };
    return oAt(0) | oAt(uSize / 2) | oAt(uSize - 1);
}

inline bool Hash_Text::IsEqual(const Hash_Text& o) const noexcept {
    // Compilers that see length and suffix side by side read them in one piece.
    return uLength == o.uLength && uPrefix == o.uPrefix && uSuffix == o.uSuffix &&
           (uLength <= 12 || IsTailEqual(sText, o.sText, uLength));
}

// What was just written in two pieces that overlap is waited for when it is read in one: the bytes
// of a text are looked at where its words do not tell.
inline bool Hash_Text::IsText(const char* p) const noexcept {
    if (uLength < 8) return IsEqualText(p, sText, uLength);
    return BigEndianAt<u3_t>(p) == uPrefix &&
           (uLength == 8 || (BigEndianAt<u2_t>(p + uLength - 4) == uSuffix &&
                             (uLength <= 12 || IsTailEqual(p, sText, uLength))));
}

inline bool Hash_Text::StandsAt(const char* p, std::size_t uSize) const noexcept {
    if (uLength + std::size_t{8} > uSize || uLength == 0) return false;
    const unsigned uIgnored = uLength < 8 ? 64 - 8 * uLength : 0;
    if ((BigEndianAt<u3_t>(p) ^ uPrefix) >> uIgnored != 0) return false;
    return uLength <= 8 || IsTailEqual(p, sText, uLength);
}

// Texts of at most 2^32 - 1 bytes without a NUL. Keys are dense and start at 1; key 0 is
// the empty text, which is always there. Lookup and insertion take constant time on average:
// a few texts are found through a small table in place, more through an index.
// Raises the allocation errors of Mem; the table is then unchanged.
class Hash {
  public:
    static constexpr u2_t NONE = 0xFFFFFFFF;
    // So many bytes may be read from any byte of a text on, its NUL included.
    static constexpr std::size_t SLACK = 16;

    // Room for few texts in the object that holds the table; stands in front of it.
    struct Near;

    Hash() noexcept = default;
    explicit Hash(Near& oNear) noexcept;
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;
    ~Hash();

    // Makes room for the texts of most tables. Before that, or the first Insert, nothing is
    // allocated and no Hash_Text may be asked for.
    void Start();

    // The key of a text, NONE when it is not in the table.
    [[nodiscard]] u2_t Find(std::string_view sText) const noexcept;
    // The key of a text, added if need be: a new one is the Size() of before.
    u2_t Insert(std::string_view sText) { return Enter<false>(sText); }
    // The same for a text from outside, which is made UTF-8 and ends at its first NUL: one that is
    // there already needs no look at its bytes.
    u2_t InsertOutside(std::string_view sText) { return Enter<true>(sText); }

    // Exchanges the texts, and their keys.
    void Swap(Hash& oHash) noexcept;

    // Keys given, the empty text's included.
    [[nodiscard]] std::size_t Size() const noexcept {
        return m_oText.Size() != 0 ? m_oText.Size() : 1;
    }
    [[nodiscard]] const Hash_Text& operator()(u2_t uKey) const noexcept { return m_oText(uKey); }
    [[nodiscard]] const Hash_Text* Texts() const noexcept { return m_oText.Beg(); }

    // Whether text a is below text b in byte order.
    [[nodiscard]] bool IsLess(u2_t uA, u2_t uB) const noexcept {
        if (uA == uB) return false;
        const Hash_Text& oA = m_oText(uA);
        const Hash_Text& oB = m_oText(uB);
        if (oA.uPrefix != oB.uPrefix) return oA.uPrefix < oB.uPrefix;
        if (oA.uLength <= 12 && oB.uLength <= 12) return oA.Tail() < oB.Tail();
        return IsTailLess(oA, oB);
    }

    // Whether a text is that of a key, for keys that were guessed.
    [[nodiscard]] bool IsText(u2_t uKey, std::string_view sText) const noexcept {
        const Hash_Text& oText = m_oText(uKey);
        return oText.uLength == sText.size() && oText.IsText(sText.data());
    }

    // Heap bytes held.
    [[nodiscard]] std::size_t HeapBytes() const noexcept;
    // Bytes that uCount more texts take in addition, apart from those of the texts: while an index
    // grows there are two.
    [[nodiscard]] std::size_t GrowthFor(std::size_t uCount) const noexcept;

  private:
    // Where the search for a text in a large table leads to: keys in groups, of each of which the
    // tags are looked at together; a group that is full leads to others. Nothing is ever taken out
    // (after the tables of Abseil, with tags of a word).
    struct Index {
        static constexpr std::size_t GROUP = 8;

        Arr<char> oTag;  // by slot: 0 is free, others have the high bit and seven of the hash
        Arr<u2_t> oKey;  // a power of two of groups, or none

        [[nodiscard]] std::size_t Size() const noexcept { return oKey.Size(); }
        // With all of uSize slots free.
        void Make(std::size_t uSize);
        // The slot in which oIsIt(key) finds what it looks for, or the free one that is for it.
        template <class IsIt>
        [[nodiscard]] std::size_t Find(u2_t uHash, const IsIt& oIsIt) const noexcept;
        // What is in it, 0 for none.
        [[nodiscard]] u2_t KeyIn(std::size_t uSlot) const noexcept {
            return oTag(uSlot) != 0 ? oKey(uSlot) : 0;
        }
        void Put(std::size_t uSlot, u2_t uHash, u2_t uKey) noexcept;
        void Swap(Index& o) noexcept {
            oTag.Swap(o.oTag);
            oKey.Swap(o.oKey);
        }
    };
    // Texts live in blocks, behind this header.
    struct Block {
        Block* pBefore;
        std::size_t uSize;  // bytes for texts
        [[nodiscard]] char* Bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
    };

    [[nodiscard]] static bool IsTailLess(const Hash_Text& oA, const Hash_Text& oB) noexcept;
    [[nodiscard]] std::size_t FewSlotOf(const Hash_Text& oText) const noexcept;
    [[nodiscard]] std::size_t SlotOf(const Hash_Text& oText, u2_t uHash) const noexcept;
    [[nodiscard]] u2_t HashOf(const Hash_Text& oText) const noexcept;
    // Whether it is too full for so many more texts; groups are full at seven eighths.
    [[nodiscard]] bool IsIndexFull(std::size_t uMore) const noexcept {
        return 8 * (m_oText.Size() + uMore) > 7 * m_oIndex.Size();
    }
    [[nodiscard]] std::size_t NextIndex() const noexcept {
        return m_oIndex.Size() != 0 ? 2 * m_oIndex.Size() : FIRST_INDEX;
    }
    void GrowIndex();
    template <bool OUTSIDE>
    u2_t Enter(std::string_view sText);
    template <bool OUTSIDE>
    [[gnu::noinline]] u2_t EnterAny(std::string_view sText);
    [[nodiscard]] u2_t EnterUtf8(std::string_view sText);
    [[nodiscard]] u2_t Append(const Hash_Text& oText) noexcept;
    void AddBlock(std::size_t uSize);

    static constexpr std::size_t SHORT = 16;
    static constexpr std::size_t FEW = 31;  // texts that do without an index
    static constexpr unsigned FEW_BITS = 6;
    static constexpr std::size_t FEW_SLOTS = 1 << FEW_BITS;
    static constexpr std::size_t FIRST_INDEX = 128;
    static constexpr std::size_t FIRST_BLOCK = 256;

    Arr<Hash_Text> m_oText;
    u0_t m_auFew[FEW_SLOTS] = {};  // keys of few texts, open addressing; 0 is free
    u3_t m_uSeed = 0;
    Index m_oIndex;             // of more texts
    Block* m_pBlock = nullptr;  // the last one
    char* m_pFree = nullptr;    // the next text
    std::size_t m_uFree = 0;    // bytes for texts from there on
};

struct Hash::Near {
    Mem::Room<(FEW + 1) * sizeof(Hash_Text)> oTexts;
    Mem::Room<sizeof(Block) + FIRST_BLOCK + SLACK> oBlock;
};

inline Hash::Hash(Near& oNear) noexcept {
    m_oText.Start(oNear.oTexts);
    m_pBlock = new (oNear.oBlock.Block()) Block{nullptr, FIRST_BLOCK};
    m_pFree = m_pBlock->Bytes();
    m_uFree = FIRST_BLOCK;
}

}  // namespace vok

#endif  // VOK_BASE_HASH_H

// SPDX-License-Identifier: MIT
#include "vok/base/hash.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstring>
#include <new>
#include <utility>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "vok/base/copy.h"
#include "vok/base/msg.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok {

namespace {

constexpr std::size_t LARGEST_BLOCK = 64 * 1024;
// 2^64 over the golden ratio: multiplying by it spreads what differs (Knuth, volume 3, 6.4).
constexpr u3_t FACTOR = 0x9E3779B97F4A7C15u;

// Names come from outside: without a seed of its own every table could be made to search
// through all of them by names that collide. Nothing else depends on it.
[[nodiscard]] u3_t MakeSeed(const void* pTable) noexcept {
    const auto uTicks =
        static_cast<u3_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return (reinterpret_cast<std::uintptr_t>(pTable) ^ uTicks) * FACTOR;
}

[[nodiscard, gnu::always_inline]] inline Hash_Text TakeApart(std::string_view sText) noexcept {
    const std::size_t uSize = sText.size();
    const u2_t uSuffix = uSize > 8 ? BigEndianAt<u2_t>(sText.data() + uSize - 4) : 0;
    return {sText.data(), Hash_Text::PrefixOf(sText.data(), uSize), static_cast<u2_t>(uSize),
            uSuffix};
}

// Whether all bytes are from 1 to 127. Up to 16 of them are in two words.
[[nodiscard, gnu::always_inline]] inline bool HasAsciiOnly(const Hash_Text& o) noexcept {
    constexpr detail::NoAsciiText oBad;
    if (o.uLength > 16) return IsAsciiText(o.sText, o.uLength);
    if (o.uLength < 8) {
        return (oBad(o.uPrefix | words::EACH >> 8 * o.uLength) & words::HIGH_BITS) == 0;
    }
    const u3_t uLast = BigEndianAt<u3_t>(o.sText + o.uLength - 8);
    return ((oBad(o.uPrefix) | oBad(uLast)) & words::HIGH_BITS) == 0;
}

constexpr std::size_t LONGEST = 0xFFFFFFFE;

[[nodiscard]] constexpr u3_t TagOf(u2_t uHash) noexcept {
    return 0x80 | uHash >> 25;
}

}  // namespace

void Hash::Start() {
    static constexpr char NOTHING[SLACK] = {};
    if (m_oText.Size() != 0) return;
    m_oText.Reserve(FEW + 1);
    m_oText.Add(Hash_Text{NOTHING, 0, 0, 0});
}

Hash::~Hash() {
    while (m_pBlock != nullptr) Mem::Free(std::exchange(m_pBlock, m_pBlock->pBefore));
}

// ---- searching --------------------------------------------------------------

// The slot of a text among few, or the free one that is for it: at most half of them are taken.
// The length, the first and the last bytes tell most names apart, and all of them reach the top
// bits of the product.
inline std::size_t Hash::FewSlotOf(const Hash_Text& oText) const noexcept {
    const u3_t uMixed = (oText.uPrefix ^ u3_t{oText.uSuffix} << 29 ^ oText.uLength) * FACTOR;
    for (std::size_t uSlot = uMixed >> (64 - FEW_BITS);; ++uSlot) {
        const u2_t uKey = m_auFew[uSlot % FEW_SLOTS];
        if (uKey == 0 || m_oText(uKey).IsEqual(oText)) return uSlot % FEW_SLOTS;
    }
}

// Groups are tried in steps of 1, 2, 3, which leads to all of them: there are a power of two.
template <class IsIt>
inline std::size_t Hash::Index::Find(u2_t uHash, const IsIt& oIsIt) const noexcept {
    const u3_t uWanted = TagOf(uHash) * words::EACH;
    const std::size_t uMask = oKey.Size() / GROUP - 1;
    std::size_t uGroup = uHash & uMask;
    for (std::size_t uStep = 1;; uGroup = (uGroup + uStep++) & uMask) {
        const auto uTags = le::Load<u3_t>(oTag.Beg() + GROUP * uGroup);
        const auto oSlotAt = [uGroup](u3_t uBits) {
            return GROUP * uGroup + static_cast<std::size_t>(std::countr_zero(uBits)) / 8;
        };
        for (u3_t uSame = words::ZerosIn(uTags ^ uWanted); uSame != 0; uSame &= uSame - 1) {
            if (oIsIt(oKey(oSlotAt(uSame)))) return oSlotAt(uSame);
        }
        const u3_t uFree = ~uTags & words::HIGH_BITS;
        if (uFree != 0) return oSlotAt(uFree);
    }
}

void Hash::Index::Make(std::size_t uSize) {
    oTag.Resize(uSize);
    (void)oKey.AddSpace(uSize);
}

inline void Hash::Index::Put(std::size_t uSlot, u2_t uHash, u2_t uKey) noexcept {
    oTag(uSlot) = static_cast<char>(TagOf(uHash));
    oKey(uSlot) = uKey;
}

// The same as FewSlotOf in the index.
inline std::size_t Hash::SlotOf(const Hash_Text& oText, u2_t uHash) const noexcept {
    return m_oIndex.Find(uHash, [&](u2_t uKey) { return m_oText(uKey).IsEqual(oText); });
}

u2_t Hash::HashOf(const Hash_Text& oText) const noexcept {
    return static_cast<u2_t>(XXH3_64bits_withSeed(oText.sText, oText.uLength, m_uSeed));
}

u2_t Hash::Find(std::string_view sText) const noexcept {
    if (sText.empty()) return 0;
    if (sText.size() > LONGEST) return NONE;
    const Hash_Text oText = TakeApart(sText);
    const u2_t uKey = m_oIndex.Size() == 0 ? m_auFew[FewSlotOf(oText)]
                                           : m_oIndex.KeyIn(SlotOf(oText, HashOf(oText)));
    return uKey != 0 ? uKey : NONE;
}

// ---- adding -----------------------------------------------------------------

// A text for which there is room. One of up to eight bytes is put together again from its prefix.
[[gnu::always_inline]] inline u2_t Hash::Append(const Hash_Text& oText) noexcept {
    const std::size_t uSize = oText.uLength + std::size_t{1};
    char* const pText = m_pFree;
    if (oText.uLength <= 8) {
        le::Store(pText, __builtin_bswap64(oText.uPrefix));
    } else {
        CopyBytes(pText, oText.sText, oText.uLength);
    }
    std::memset(pText + oText.uLength, 0, SLACK);
    m_pFree += uSize;
    m_uFree -= uSize;
    const std::size_t uKey = m_oText.Size();
    *m_oText.AddSpacePrivate() = {pText, oText.uPrefix, oText.uLength, oText.uSuffix};
    return static_cast<u2_t>(uKey);
}

// Short texts, while there are few and memory for them, call nothing: nothing has to be put aside.
template <bool OUTSIDE>
u2_t Hash::Enter(std::string_view sText) {
    const bool bShort = sText.size() - 1 < SHORT;
    const bool bFew = m_oText.Size() - 1 < FEW;  // Start has reserved them
    if (!bShort || !bFew || m_uFree <= SHORT) [[unlikely]]
        return EnterAny<OUTSIDE>(sText);
    const Hash_Text oText = TakeApart(sText);
    u0_t& uKey = m_auFew[FewSlotOf(oText)];
    if (uKey != 0) return uKey;
    if (OUTSIDE && !HasAsciiOnly(oText)) [[unlikely]]
        return EnterUtf8(sText);
    return uKey = static_cast<u0_t>(Append(oText));
}

template <bool OUTSIDE>
u2_t Hash::EnterAny(std::string_view sText) {
    if (sText.empty()) return 0;
    if (sText.size() > LONGEST) Msg::UnexpectedIntegerValue();
    if (m_oText.Size() == 0) Start();
    const Hash_Text oText = TakeApart(sText);
    const bool bFew = m_oText.Size() <= FEW;
    u2_t uHash = 0;
    std::size_t uSlot;
    u2_t uKey;
    if (bFew) {
        uSlot = FewSlotOf(oText);
        uKey = m_auFew[uSlot];
    } else {
        if (IsIndexFull(0)) GrowIndex();
        uHash = HashOf(oText);
        uSlot = SlotOf(oText, uHash);
        uKey = m_oIndex.KeyIn(uSlot);
    }
    if (uKey != 0) return uKey;
    if (OUTSIDE && !HasAsciiOnly(oText)) return EnterUtf8(sText);
    if (m_oText.Size() == m_oText.Capacity()) m_oText.ReserveMore(1);
    if (m_uFree <= sText.size()) AddBlock(sText.size() + 1);
    uKey = Append(oText);
    if (bFew) {
        m_auFew[uSlot] = static_cast<u0_t>(uKey);
    } else {
        m_oIndex.Put(uSlot, uHash, uKey);
    }
    return uKey;
}

template u2_t Hash::Enter<false>(std::string_view);
template u2_t Hash::Enter<true>(std::string_view);

u2_t Hash::EnterUtf8(std::string_view sText) {
    return Enter<false>(Utf8_Text(sText).View());
}

// Makes a larger one, or the first one, of all texts: their hashes are not kept, and texts that are
// hashed one behind the other lie one behind the other. How much of a group is used is counted
// apart: tags that are read together where one of them was just written are waited for.
void Hash::GrowIndex() {
    Index oIndex;
    oIndex.Make(NextIndex());
    Arr<u0_t> oUsed;
    oUsed.Resize(oIndex.Size() / Index::GROUP);
    if (m_oIndex.Size() == 0) m_uSeed = MakeSeed(this);
    const std::size_t uMask = oUsed.Size() - 1;
    for (u2_t uKey = 1; uKey < m_oText.Size(); ++uKey) {
        const u2_t uHash = HashOf(m_oText(uKey));
        std::size_t uGroup = uHash & uMask;
        for (std::size_t uStep = 1; oUsed(uGroup) == Index::GROUP;) {
            uGroup = (uGroup + uStep++) & uMask;
        }
        oIndex.Put(Index::GROUP * uGroup + oUsed(uGroup)++, uHash, uKey);
    }
    m_oIndex.Swap(oIndex);
}

void Hash::AddBlock(std::size_t uSize) {
    const std::size_t uHas = m_pBlock != nullptr ? m_pBlock->uSize : 0;
    const std::size_t uNext = std::max(uSize, std::clamp(2 * uHas, FIRST_BLOCK, LARGEST_BLOCK));
    m_pBlock = new (Mem::Create(sizeof(Block) + uNext + SLACK)) Block{m_pBlock, uNext};
    m_pFree = m_pBlock->Bytes();
    m_uFree = uNext;
}

void Hash::Swap(Hash& oHash) noexcept {
    m_oText.Swap(oHash.m_oText);
    std::swap(m_auFew, oHash.m_auFew);
    std::swap(m_uSeed, oHash.m_uSeed);
    m_oIndex.Swap(oHash.m_oIndex);
    std::swap(m_pBlock, oHash.m_pBlock);
    std::swap(m_pFree, oHash.m_pFree);
    std::swap(m_uFree, oHash.m_uFree);
}

std::size_t Hash::HeapBytes() const noexcept {
    std::size_t uBytes =
        m_oText.HeapBytes() + m_oIndex.oTag.HeapBytes() + m_oIndex.oKey.HeapBytes();
    for (const Block* p = m_pBlock; p != nullptr; p = p->pBefore) uBytes += Mem::HeapBytes(p);
    return uBytes;
}

std::size_t Hash::GrowthFor(std::size_t uCount) const noexcept {
    const std::size_t uIndex = IsIndexFull(uCount) ? NextIndex() * (1 + sizeof(u2_t)) : 0;
    return m_oText.GrowthFor(uCount) + uIndex;
}

bool Hash::IsTailLess(const Hash_Text& oA, const Hash_Text& oB) noexcept {
    // Texts that differ do so at the end of the shorter one at the latest.
    for (std::size_t u = 8;; u += 8) {
        const u3_t uA = BigEndianAt<u3_t>(oA.sText + u);
        const u3_t uB = BigEndianAt<u3_t>(oB.sText + u);
        if (uA != uB) return uA < uB;
    }
}

}  // namespace vok

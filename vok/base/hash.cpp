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

namespace vok {

namespace {

constexpr std::size_t FIRST_BLOCK = 256;
constexpr std::size_t LARGEST_BLOCK = 64 * 1024;
// 2^64 over the golden ratio: multiplying by it spreads what differs (Knuth, volume 3, 6.4).
constexpr u3_t FACTOR = 0x9E3779B97F4A7C15u;

[[nodiscard]] u2_t HashOf(std::string_view sText, u3_t uSeed) noexcept {
    return static_cast<u2_t>(XXH3_64bits_withSeed(sText.data(), sText.size(), uSeed));
}

// Names come from outside: without a seed of its own every table could be made to search
// through all of them by names that collide. Nothing else depends on it.
[[nodiscard]] u3_t MakeSeed(const void* pTable) noexcept {
    const auto uTicks =
        static_cast<u3_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return (reinterpret_cast<std::uintptr_t>(pTable) ^ uTicks) * FACTOR;
}

// Parts that overlap agree where they do.
[[nodiscard]] u3_t PrefixOf(std::string_view sText) noexcept {
    const std::size_t uSize = sText.size();
    const char* p = sText.data();
    if (uSize >= 8) return BigEndianAt<u3_t>(p);
    if (uSize >= 4) {
        return u3_t{BigEndianAt<u2_t>(p)} << 32 | u3_t{BigEndianAt<u2_t>(p + uSize - 4)}
                                                      << (64 - 8 * uSize);
    }
    u3_t uPrefix = 0;
    for (std::size_t u = 0; u < uSize; ++u) {
        uPrefix |= u3_t{static_cast<u0_t>(p[u])} << (56 - 8 * u);
    }
    return uPrefix;
}

// Of the index: a key, its hash, and how far it is from its place.
constexpr std::size_t BUCKET = 12;

}  // namespace

Hash::Hash() noexcept : m_oIndex(0, Hasher{this}, Equal{this}) {}

void Hash::Start() {
    static constexpr char NOTHING[SLACK] = {};
    if (m_oText.Size() != 0) return;
    m_oText.Reserve(FEW + 1);
    m_oText.Add(Hash_Text{NOTHING, 0, 0, 0});
}

Hash::~Hash() {
    while (m_pBlock != nullptr) Mem::Free(std::exchange(m_pBlock, m_pBlock->pBefore));
}

// Where the search among few texts begins: the length, the first and the last eight bytes tell
// most names apart. All of them reach the top bits of the product.
u2_t Hash::SlotOf(std::string_view sText, u3_t uPrefix) noexcept {
    const std::size_t uSize = sText.size();
    u3_t uMixed = uPrefix ^ uSize;
    if (uSize > 8) uMixed ^= std::rotl(BigEndianAt<u3_t>(sText.data() + uSize - 8), 29);
    return static_cast<u2_t>(uMixed * FACTOR >> (64 - SLOT_BITS));
}

// At most half of the slots are taken: every search ends.
u2_t Hash::FindFew(const Probe& oProbe) const noexcept {
    for (u2_t uSlot = oProbe.uHash;; ++uSlot) {
        const u2_t uKey = m_auSlot[uSlot % SLOTS];
        if (uKey == 0) return NONE;
        if (IsText(uKey, oProbe)) return uKey;
    }
}

u2_t Hash::Find(const Probe& oProbe) const noexcept {
    if (m_oIndex.empty()) return FindFew(oProbe);
    const auto oFound = m_oIndex.find(oProbe, oProbe.uHash);
    return oFound != m_oIndex.end() ? *oFound : NONE;
}

Hash::Probe Hash::MakeProbe(std::string_view sText) const noexcept {
    const u3_t uPrefix = PrefixOf(sText);
    return {sText, uPrefix, m_oIndex.empty() ? SlotOf(sText, uPrefix) : HashOf(sText, m_uSeed)};
}

u2_t Hash::Find(std::string_view sText) const noexcept {
    return sText.empty() ? 0 : Find(MakeProbe(sText));
}

u2_t Hash::Insert(std::string_view sText) {
    if (sText.empty()) return 0;
    Start();
    if (m_oText.Size() > FEW && m_oIndex.empty()) MakeIndex();
    const Probe oProbe = MakeProbe(sText);
    const u2_t uFound = Find(oProbe);
    if (uFound != NONE) return uFound;
    if (sText.size() >= 0xFFFFFFFFu) Msg::UnexpectedIntegerValue();
    const u2_t uKey = static_cast<u2_t>(m_oText.Size());
    const u2_t uLength = static_cast<u2_t>(sText.size());
    m_oText.Add(Hash_Text{StoreText(sText), oProbe.uPrefix, uLength, oProbe.uHash});
    if (m_oIndex.empty()) {
        AddFew(uKey, oProbe.uHash);
    } else {
        try {
            m_oIndex.insert(uKey);
        } catch (...) {
            m_oText.Truncate(uKey);
            throw;
        }
    }
    return uKey;
}

void Hash::AddFew(u2_t uKey, u2_t uSlot) noexcept {
    while (m_auSlot[uSlot % SLOTS] != 0) ++uSlot;
    m_auSlot[uSlot % SLOTS] = static_cast<u0_t>(uKey);
}

// Either all texts are in the index or none.
void Hash::MakeIndex() {
    m_uSeed = MakeSeed(this);
    m_oIndex.reserve(2 * m_oText.Size());
    for (u2_t uKey = 1; uKey < m_oText.Size(); ++uKey) {
        Hash_Text& oText = m_oText(uKey);
        oText.uHash = HashOf(oText.View(), m_uSeed);
        m_oIndex.insert(uKey);
    }
}

void Hash::SwapTexts(Hash& oHash) noexcept {
    m_oText.Swap(oHash.m_oText);
    std::swap(m_auSlot, oHash.m_auSlot);
    std::swap(m_uSeed, oHash.m_uSeed);
    std::swap(m_pBlock, oHash.m_pBlock);
    std::swap(m_uBlockUsed, oHash.m_uBlockUsed);
}

void Hash::Replace(Hash& oNew) {
    SwapTexts(oNew);
    // An index finds its texts through its table: it cannot be handed over, only made here.
    Index oIndex(0, Hasher{this}, Equal{this});
    try {
        if (!oNew.m_oIndex.empty()) {
            oIndex.reserve(m_oText.Size());
            for (u2_t uKey = 1; uKey < m_oText.Size(); ++uKey) oIndex.insert(uKey);
        }
    } catch (...) {
        SwapTexts(oNew);
        throw;
    }
    m_oIndex.swap(oIndex);
}

std::size_t Hash::HeapBytes() const noexcept {
    // The index is one block.
    std::size_t uBytes = m_oText.HeapBytes();
    if (m_oIndex.bucket_count() != 0) uBytes += m_oIndex.bucket_count() * BUCKET + Mem::HEADER_SIZE;
    for (const Block* p = m_pBlock; p != nullptr; p = p->pBefore) uBytes += Mem::HeapBytes(p);
    return uBytes;
}

bool Hash::IsTailLess(const Hash_Text& oA, const Hash_Text& oB) noexcept {
    // Texts that differ do so at the end of the shorter one at the latest.
    for (std::size_t u = 8;; u += 8) {
        const u3_t uA = BigEndianAt<u3_t>(oA.sText + u);
        const u3_t uB = BigEndianAt<u3_t>(oB.sText + u);
        if (uA != uB) return uA < uB;
    }
}

char* Hash::StoreText(std::string_view sText) {
    const std::size_t uSize = sText.size() + 1;
    const std::size_t uHas = m_pBlock != nullptr ? m_pBlock->uSize : 0;
    if (uHas - m_uBlockUsed < uSize) {
        const std::size_t uNext = std::max(uSize, std::clamp(2 * uHas, FIRST_BLOCK, LARGEST_BLOCK));
        const std::size_t uBytes = sizeof(Block) + uNext + SLACK;
        void* pBlock = Mem::Create(uBytes);
        std::memset(pBlock, 0, uBytes);
        m_pBlock = new (pBlock) Block{m_pBlock, uNext};
        m_uBlockUsed = 0;
    }
    char* pText = m_pBlock->Bytes() + m_uBlockUsed;
    CopyBytes(pText, sText.data(), sText.size());
    pText[sText.size()] = 0;
    m_uBlockUsed += uSize;
    return pText;
}

}  // namespace vok

#include "vok/base/hash.h"

#include <algorithm>
#include <chrono>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "vok/base/msg.h"

namespace vok {

namespace {

constexpr std::size_t FIRST_NAMES = 28;
constexpr std::size_t FIRST_BLOCK = 256;
constexpr std::size_t LARGEST_BLOCK = 64 * 1024;

[[nodiscard]] u2_t HashOf(std::string_view sText, u3_t uSeed) noexcept {
    return static_cast<u2_t>(XXH3_64bits_withSeed(sText.data(), sText.size(), uSeed));
}

// Names come from outside: without a seed of its own every table could be made to search
// through all of them by names that collide. Nothing else depends on it.
[[nodiscard]] u3_t MakeSeed(const void* pTable) noexcept {
    const auto uTicks =
        static_cast<u3_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return (reinterpret_cast<std::uintptr_t>(pTable) ^ uTicks) * 0x9E3779B97F4A7C15u;
}

[[nodiscard]] u3_t PrefixOf(std::string_view sText) noexcept {
    u3_t uPrefix = 0;
    for (std::size_t u = 0; u < 8; ++u) {
        uPrefix = uPrefix << 8 | (u < sText.size() ? static_cast<u0_t>(sText[u]) : 0u);
    }
    return uPrefix;
}

}  // namespace

Hash::Hash() : m_uSeed(MakeSeed(this)), m_oIndex(0, Hasher{this}, Equal{this}) {
    static constexpr char NOTHING[SLACK] = {};
    m_oText.Add(Hash_Text{NOTHING, 0, 0, 0});
}

Hash::~Hash() {
    for (std::size_t u = 0; u < m_oBlock.Size(); ++u) Mem::Free(m_oBlock(u));
}

u2_t Hash::Find(std::string_view sText) const noexcept {
    if (sText.empty()) return 0;
    const Probe oProbe{sText, HashOf(sText, m_uSeed)};
    const auto oFound = m_oIndex.find(oProbe, oProbe.uHash);
    return oFound != m_oIndex.end() ? *oFound : NONE;
}

u2_t Hash::Insert(std::string_view sText, bool& bNew) {
    bNew = false;
    if (sText.empty()) return 0;
    const Probe oProbe{sText, HashOf(sText, m_uSeed)};
    const auto oFound = m_oIndex.find(oProbe, oProbe.uHash);
    if (oFound != m_oIndex.end()) return *oFound;
    if (sText.size() >= 0xFFFFFFFFu) Msg::UnexpectedIntegerValue();
    // Most trees have a few dozen names: one step up to there.
    if (m_oIndex.empty()) {
        m_oIndex.reserve(FIRST_NAMES);
        m_oText.Reserve(FIRST_NAMES);
    }
    const u2_t uKey = static_cast<u2_t>(m_oText.Size());
    const u2_t uLength = static_cast<u2_t>(sText.size());
    m_oText.Add(Hash_Text{StoreText(sText), PrefixOf(sText), uLength, oProbe.uHash});
    try {
        m_oIndex.insert(uKey);
    } catch (...) {
        m_oText.Truncate(uKey);
        throw;
    }
    bNew = true;
    return uKey;
}

std::size_t Hash::HeapBytes() const noexcept {
    std::size_t uBytes = m_oText.Capacity() * sizeof(Hash_Text) + m_oIndex.bucket_count() * 8;
    for (std::size_t u = 0; u < m_oBlock.Size(); ++u) uBytes += Mem::SizeOf(m_oBlock(u));
    return uBytes;
}

bool Hash::IsTailLess(const Hash_Text& oA, const Hash_Text& oB) noexcept {
    // Equal prefixes of different texts: both have eight bytes at least.
    return std::strcmp(oA.sText + 8, oB.sText + 8) < 0;
}

char* Hash::StoreText(std::string_view sText) {
    const std::size_t uSize = sText.size() + 1;
    if (m_uBlockSize - m_uBlockUsed < uSize) {
        const std::size_t uNext = std::clamp(2 * m_uBlockSize, FIRST_BLOCK, LARGEST_BLOCK);
        const std::size_t uBlockSize = std::max(uSize, uNext);
        m_oBlock.Reserve(m_oBlock.Size() + 1);
        char* pBlock = static_cast<char*>(Mem::Create(uBlockSize + SLACK));
        std::memset(pBlock, 0, uBlockSize + SLACK);
        m_oBlock.Add(pBlock);
        m_uBlockSize = uBlockSize;
        m_uBlockUsed = 0;
    }
    char* pText = m_oBlock(m_oBlock.Size() - 1) + m_uBlockUsed;
    std::memcpy(pText, sText.data(), sText.size());
    pText[sText.size()] = 0;
    m_uBlockUsed += uSize;
    return pText;
}

}  // namespace vok

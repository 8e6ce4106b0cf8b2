// SPDX-License-Identifier: MIT
#include "vok/char/cluster.h"

#include "vok/char/tables.h"
#include "vok/char/text.h"

namespace vok::Char {

using namespace detail;

namespace {

constexpr u2_t EMOJI_SELECTOR = 0xFE0F;

// Whether two characters stay together whatever is before them: rules GB3 to GB9b.
[[nodiscard]] bool StayTogether(Break eBefore, Break eNext) noexcept {
    const auto oIsControl = [](Break e) {
        return e == Break::CR || e == Break::LF || e == Break::Control;
    };
    if (oIsControl(eBefore)) return eBefore == Break::CR && eNext == Break::LF;
    if (oIsControl(eNext)) return false;
    if (eBefore == Break::Prepend) return true;
    switch (eNext) {
        case Break::Extend:
        case Break::ZWJ:
        case Break::SpacingMark: return true;
        case Break::L:
        case Break::LV:
        case Break::LVT: return eBefore == Break::L;
        case Break::V: return eBefore == Break::L || eBefore == Break::V || eBefore == Break::LV;
        case Break::T:
            return eBefore == Break::V || eBefore == Break::LV || eBefore == Break::LVT ||
                   eBefore == Break::T;
        default: return false;
    }
}

// What has been seen of a cluster.
class State {
  public:
    explicit State(u2_t uFirst) noexcept { Enter(PropertiesOf(uFirst)); }

    // Takes one more character in; false if it begins the next cluster.
    bool Take(u2_t uCode) noexcept {
        const Properties& o = PropertiesOf(uCode);
        const auto eNext = static_cast<Break>(o.m_uBreak);
        const bool bEmoji = m_eJoin == Join::Joined && eNext == Break::Pictographic;  // GB11
        const bool bFlag = m_bHalfFlag && eNext == Break::Regional_Indicator;         // GB12, GB13
        if (!bEmoji && !bFlag && !StayTogether(m_eLast, eNext)) return false;
        if (bFlag || (uCode == EMOJI_SELECTOR && m_bMayBeEmoji)) m_uColumns = 2;
        const bool bWasHalf = m_bHalfFlag;
        Enter(o);
        m_bHalfFlag = m_bHalfFlag && !bWasHalf;
        return true;
    }

    [[nodiscard]] unsigned Columns() const noexcept { return m_uColumns; }

  private:
    enum class Join { None, Picture, Joined };

    void Enter(const Properties& o) noexcept {
        m_eLast = static_cast<Break>(o.m_uBreak);
        if (m_eLast == Break::Pictographic) {
            m_eJoin = Join::Picture;
        } else if (m_eLast == Break::ZWJ && m_eJoin == Join::Picture) {
            m_eJoin = Join::Joined;
        } else if (m_eLast != Break::Extend || m_eJoin != Join::Picture) {
            m_eJoin = Join::None;
        }
        m_bHalfFlag = m_eLast == Break::Regional_Indicator;
        m_bMayBeEmoji = (o.m_uFlags & EMOJI) != 0;
        const unsigned uColumns = o.m_uFlags & COLUMNS;
        m_uColumns = uColumns > m_uColumns ? uColumns : m_uColumns;
    }

    Break m_eLast = Break::Other;
    Join m_eJoin = Join::None;
    bool m_bHalfFlag = false;
    bool m_bMayBeEmoji = false;
    unsigned m_uColumns = 0;
};

struct Cluster {
    const char* m_pEnd;
    unsigned m_uColumns;
};

// The cluster at p, which is below pEnd.
[[nodiscard]] Cluster ClusterAt(const char* p, const char* pEnd) noexcept {
    const auto u0 = static_cast<u0_t>(*p);
    const bool bAlone = pEnd - p == 1 || static_cast<u0_t>(p[1]) < 0x80;
    if (u0 < 0x80 && u0 != '\r' && bAlone) return {p + 1, u0 >= 0x20 && u0 != 0x7F ? 1u : 0u};
    State oState(Decode(p, pEnd).m_uCode);
    while (p != pEnd) {
        const char* const pThis = p;
        if (!oState.Take(Decode(p, pEnd).m_uCode)) return {pThis, oState.Columns()};
    }
    return {pEnd, oState.Columns()};
}

// Whether the eight bytes at p are printable ASCII, each a cluster: with none behind them that
// could join the last one.
[[nodiscard]] bool AreEightColumns(const char* p, const char* pEnd) noexcept {
    constexpr u3_t uOnes = 0x0101010101010101u;
    constexpr u3_t uHigh = 0x80 * uOnes;
    if (pEnd - p < 8 || (pEnd - p > 8 && static_cast<u0_t>(p[8]) >= 0x80)) return false;
    u3_t uWord;
    std::memcpy(&uWord, p, 8);
    // High bits: no ASCII; at least a space; a delete.
    if ((uWord & uHigh) != 0) return false;
    return ((uWord + 0x60 * uOnes) & ~(uWord + uOnes) & uHigh) == uHigh;
}

}  // namespace

std::size_t NextCluster(std::string_view sText, std::size_t uFrom) noexcept {
    if (uFrom >= sText.size()) return sText.size();
    const char* const pEnd = sText.data() + sText.size();
    return static_cast<std::size_t>(ClusterAt(sText.data() + uFrom, pEnd).m_pEnd - sText.data());
}

std::size_t CountClusters(std::string_view sText) noexcept {
    std::size_t uCount = 0;
    for (std::size_t u = 0; u < sText.size(); u = NextCluster(sText, u)) ++uCount;
    return uCount;
}

std::size_t Width(std::string_view sText) noexcept {
    std::size_t uColumns = 0;
    const char* const pEnd = sText.data() + sText.size();
    for (const char* p = sText.data(); p != pEnd;) {
        if (AreEightColumns(p, pEnd)) {
            uColumns += 8;
            p += 8;
            continue;
        }
        const Cluster o = ClusterAt(p, pEnd);
        uColumns += o.m_uColumns;
        p = o.m_pEnd;
    }
    return uColumns;
}

std::size_t FitColumns(std::string_view sText, std::size_t uColumns) noexcept {
    const char* const pEnd = sText.data() + sText.size();
    const char* p = sText.data();
    while (p != pEnd) {
        const Cluster o = ClusterAt(p, pEnd);
        if (o.m_uColumns > uColumns) break;
        uColumns -= o.m_uColumns;
        p = o.m_pEnd;
    }
    return static_cast<std::size_t>(p - sText.data());
}

}  // namespace vok::Char

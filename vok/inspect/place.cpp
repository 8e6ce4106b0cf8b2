// SPDX-License-Identifier: MIT
#include "vok/inspect/place.h"

#include <algorithm>

#include "vok/base/number.h"
#include "vok/base/str.h"
#include "vok/data/escape.h"

namespace vok::inspect {

namespace {

// How many levels up a record may belong to another one than the last: in a deep tree looking at
// all of them for every record would take too long.
constexpr std::size_t LEVELS_UP = 64;

}  // namespace

bool Place::CloseLevels() noexcept {
    while (m_oLevel.Size() != 0 && m_oLevel.Last().uPending == 0) m_oLevel.Pop();
    return m_oLevel.Size() != 0;
}

u3_t Place::Pending() const noexcept {
    u3_t uPending = 0;
    for (const Level& o : m_oLevel) uPending += o.uPending;
    return uPending;
}

void Place::Open(u2_t uPending) {
    m_oLevel.Add(Level{m_oPath.Size(), 0, 0, uPending});
}

void Place::Reopen() {
    m_oPath.Truncate(0);
    m_oLevel.Truncate(0);
    m_oLevel.Add(Level{0, 0, 0, 0});
    Open(~u2_t{0});
    m_bLost = true;
}

bool Place::Next(std::string_view sName, i2_t iIndex) {
    const Utf8_Text oName(sName);
    m_oName.Truncate(0);
    detail::AppendEncoded(m_oName, oName.View(), detail::RESERVED.data());
    const std::string_view sEncoded(m_oName.Beg(), m_oName.Size());
    const auto uIndex = static_cast<u2_t>(iIndex);
    if (m_bLost) m_oLevel.Truncate(LevelFor(sEncoded, uIndex) + 1);
    const bool bSameRun = m_oLevel.Last().uName != 0 && NameAt(Depth()) == sEncoded;
    const bool bGood = !bSameRun || iIndex >= static_cast<i2_t>(m_oLevel.Last().uRun);
    Enter(uIndex);
    return bGood || Depth() == 0;
}

void Place::NextUnnamed() {
    m_oName.Truncate(0);
    m_oName.Add('?');
    const bool bAgain = m_oLevel.Last().uName == 1 && NameAt(Depth()) == "?";
    Enter(bAgain ? m_oLevel.Last().uRun : 0);
}

// The path goes on from what is in front of the level's last record.
void Place::Enter(u2_t uIndex) {
    Level& o = m_oLevel.Last();
    m_oPath.Truncate(o.uPath);
    if (o.uPending != 0) --o.uPending;
    o.uName = static_cast<u2_t>(m_oName.Size());
    o.uRun = uIndex + 1;
    if (Depth() == 0) {
        o.uName = 0;
        return;
    }
    char sIndex[NUMBER_ROOM];
    m_oPath.Add('/');
    m_oPath.Add(m_oName.Beg(), m_oName.Size());
    m_oPath.Add('[');
    m_oPath.Add(sIndex, FormatInteger(uIndex, sIndex));
    m_oPath.Add(']');
}

// One whose run goes on with it, else one where it comes behind the last one in order, else the
// last one.
std::size_t Place::LevelFor(std::string_view sName, u2_t uIndex) const noexcept {
    const std::size_t uLast = m_oLevel.Size() - 1;
    const std::size_t uTop = std::max<std::size_t>(uLast, LEVELS_UP) - LEVELS_UP;
    for (std::size_t u = uLast; u > uTop; --u) {
        if (m_oLevel(u).uName != 0 && NameAt(u) == sName && m_oLevel(u).uRun == uIndex) return u;
    }
    for (std::size_t u = uLast; u > uTop; --u) {
        const bool bFirst = m_oLevel(u).uName == 0;
        const std::string_view sLast = bFirst ? std::string_view() : NameAt(u);
        if (sLast == sName ? uIndex > m_oLevel(u).uRun : sName > sLast && uIndex == 0) return u;
    }
    return uLast;
}

}  // namespace vok::inspect

// SPDX-License-Identifier: MIT
#include "vok/data/names.h"

#include <algorithm>
#include <numeric>

namespace vok {

u2_t Data_Names::InternSlow(std::string_view sName) {
    if (IsText(m_oGuess.Second(), sName)) return m_oGuess.Second();
    const u2_t uKey = InsertOutside(sName);
    m_oGuess.Note(uKey, Size());
    return uKey;
}

Arr<u2_t> Data_Names::Ranks() const {
    Arr<u2_t> oKey;
    oKey.Resize(Size());
    std::iota(oKey.Beg(), oKey.End(), u2_t{0});
    std::sort(oKey.Beg(), oKey.End(), [this](u2_t uA, u2_t uB) { return IsLess(uA, uB); });
    Arr<u2_t> oRank;
    oRank.Resize(Size());
    for (u2_t u = 0; u < oKey.Size(); ++u) oRank(oKey(u)) = u;
    return oRank;
}

bool Data_Names::LookAt(u2_t uKey) {
    if (m_oGuess.IsKnown(uKey)) return m_oGuess.IsVerbatim(uKey);
    const bool bVerbatim = uKey != 0 && !detail::HasReserved((*this)(uKey).View());
    m_oGuess.SetVerbatim(uKey, bVerbatim, Size());
    return bVerbatim;
}

// What is there is valid UTF-8: only a text that is not there may be one that is to be made so.
u2_t Data_Names::LookIn(const Hash& oNames, std::string_view sName) {
    const u2_t uKey = oNames.Find(sName);
    if (uKey != NONE || IsAsciiText(sName.data(), sName.size())) [[likely]]
        return uKey;
    return oNames.Find(Utf8_Text(sName).View());
}

}  // namespace vok

#include "vok/data/names.h"

namespace vok {

u2_t Data_Names::InternSlow(std::string_view sName) {
    const u2_t uKey =
        IsAsciiText(sName.data(), sName.size()) ? Insert(sName) : Insert(Utf8_Text(sName).View());
    m_oGuess.Note(uKey, Size());
    return uKey;
}

bool Data_Names::LookAt(u2_t uKey) {
    if (m_oGuess.IsKnown(uKey)) return m_oGuess.IsVerbatim(uKey);
    const bool bVerbatim = uKey != 0 && !detail::HasReserved((*this)(uKey).View());
    m_oGuess.SetVerbatim(uKey, bVerbatim, Size());
    return bVerbatim;
}

u2_t Data_Names::LookIn(const Hash& oNames, std::string_view sName) {
    if (IsAsciiText(sName.data(), sName.size())) [[likely]]
        return oNames.Find(sName);
    return oNames.Find(Utf8_Text(sName).View());
}

}  // namespace vok

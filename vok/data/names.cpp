#include "vok/data/names.h"

namespace vok {

u2_t Data_Names::InternSlow(std::string_view sName) {
    const u2_t uKey =
        IsPlainText(sName.data(), sName.size()) ? Insert(sName) : Insert(Utf8_Text(sName).View());
    m_oGuess.Note(uKey, uKey != 0, Size());
    return uKey;
}

}  // namespace vok

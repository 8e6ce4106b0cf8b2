// SPDX-License-Identifier: MIT
// What single characters become in another case. Internal.
#ifndef VOK_CHAR_MAPPING_H
#define VOK_CHAR_MAPPING_H

#include <string_view>

#include "vok/base/utf8.h"
#include "vok/char/casing.h"
#include "vok/char/tables.h"

namespace vok::Char::detail {

enum class Kind { Lower, Upper, Title, Fold };

// The simple mapping of each.
[[nodiscard]] constexpr i2_t Case::*StepOf(Kind eKind) noexcept {
    constexpr i2_t Case::*STEPS[] = {&Case::m_iLower, &Case::m_iUpper, &Case::m_iTitle,
                                     &Case::m_iFold};
    return STEPS[static_cast<int>(eKind)];
}

// The text that a character becomes, UTF-8: up to three characters. Held in place unless it lies
// in the tables.
class Mapped {
  public:
    Mapped(u2_t uCode, Kind eKind) noexcept { Set(uCode, eKind, PropertiesOf(uCode)); }
    // The same with the dots of Turkish, as far as they are a matter of the character alone.
    Mapped(u2_t uCode, Kind eKind, Casing eCasing) noexcept {
        if (eCasing == Casing::Turkish && (uCode == 'I' || uCode == 'i' || uCode == I_WITH_DOT)) {
            SetTurkish(uCode, eKind);
        } else {
            Set(uCode, eKind, PropertiesOf(uCode));
        }
    }
    Mapped(const Mapped&) = delete;

    [[nodiscard]] std::string_view View() const noexcept { return {m_pText, m_uSize}; }

    static constexpr u2_t I_WITH_DOT = 0x130;
    static constexpr u2_t I_WITHOUT_DOT = 0x131;

  private:
    void Set(u2_t uCode, Kind eKind, const Properties& o) noexcept;
    void SetTurkish(u2_t uCode, Kind eKind) noexcept;
    void SetOne(u2_t uCode) noexcept { m_uSize = EncodeUtf8(uCode, m_sOne); }

    char m_sOne[4];
    const char* m_pText = m_sOne;
    std::size_t m_uSize = 0;
};

}  // namespace vok::Char::detail

#endif  // VOK_CHAR_MAPPING_H

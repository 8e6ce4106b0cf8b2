// SPDX-License-Identifier: MIT
// What type the fields of a column have, and what values they are. Internal.
#ifndef VOK_CSV_TYPES_H
#define VOK_CSV_TYPES_H

#include <optional>
#include <string_view>

#include "vok/data/value.h"

namespace vok::csv {

// Whether a column may be told to have a type.
[[nodiscard]] bool IsColumnType(Data_Node::Type eType) noexcept;

// The value that a field is of a type that was told or guessed; nothing where it is none. A String
// refers to the field.
[[nodiscard]] std::optional<Data_Value> ValueOf(std::string_view sField,
                                                Data_Node::Type eType) noexcept;

// Narrows down what a column can be. Nothing that a number would not give back makes one: no zeros
// in front, no plus, at most 17 digits; a Long is not negative.
class Guess {
  public:
    void Look(std::string_view sField) noexcept;
    [[nodiscard]] Data_Node::Type Result() const noexcept;

  private:
    enum Kind : unsigned { BOOLEAN = 1, WHOLE = 2, REAL = 4, DATE = 8 };
    void LookAtNumber(std::string_view sField) noexcept;

    unsigned m_uMay = BOOLEAN | WHOLE | REAL | DATE;
    bool m_bSeen = false;
    bool m_bNegative = false;  // a whole number below 0
    bool m_bLarge = false;     // one beyond 32 bits
    bool m_bInexact = false;   // one that no Double is
};

}  // namespace vok::csv

#endif  // VOK_CSV_TYPES_H

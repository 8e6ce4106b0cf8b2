// SPDX-License-Identifier: MIT
// Where records may begin again behind a fault. Internal.
#ifndef VOK_INSPECT_PLAUSIBLE_H
#define VOK_INSPECT_PLAUSIBLE_H

#include <string_view>

#include "vok/dgraph/format.h"
#include "vok/dgraph/step.h"

namespace vok::inspect {

// Tells records by what they look like: a step of name and index, a type code, a value of its type,
// and behind it the same again.
class Plausible {
  public:
    // So many bytes should be seen.
    static constexpr std::size_t AHEAD = 32 * 1024;

    explicit Plausible(bool bTextQuads) noexcept : m_bTextQuads(bTextQuads) {}

    // Whether s begins with records: a few of them, or as many as there are up to its end, which is
    // as far as can be seen.
    [[nodiscard]] bool IsRecords(std::string_view s) { return Follow(s, 0); }
    // Whether it begins with what stands behind the step of a record, and then more of them.
    [[nodiscard]] bool IsValueAndRecords(std::string_view s) {
        const std::size_t uValue = ValueSize(s);
        return uValue != 0 && uValue <= s.size() && Follow(s.substr(uValue), 1);
    }

  private:
    // In documents of the library. Longer ones are not looked for: it would cost too much where
    // somebody has laid out bytes to that end.
    static constexpr std::size_t LONGEST_STEP = 1024;
    static constexpr unsigned ENOUGH = 3;

    [[nodiscard]] bool Follow(std::string_view s, unsigned uRecords);
    [[nodiscard]] bool IsStep(std::string_view s);
    // Bytes of a type code and its value, which may be more than there are; 0 where they are none.
    [[nodiscard]] std::size_t ValueSize(std::string_view s) const noexcept;

    const bool m_bTextQuads;
    dgraph::Step m_oStep;
};

// The text that stood for a Quad before minor version 3, behind its length: "1,2,3,4" and a NUL.
// The length is 0 where there is none.
inline constexpr std::size_t LONGEST_TEXT_QUAD = 4 * 10 + 3 + 1;
[[nodiscard]] std::size_t TextQuadLength(std::string_view s) noexcept;

}  // namespace vok::inspect

#endif  // VOK_INSPECT_PLAUSIBLE_H

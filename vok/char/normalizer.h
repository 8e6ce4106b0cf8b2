// SPDX-License-Identifier: MIT
// A text in a normalization form, piece by piece. Internal.
//
// Most of a text is in its form and is handed out as it lies there. What is not is changed in
// segments, which reach from one border to the next: the characters between two borders become
// what they become whatever stands around them.
#ifndef VOK_CHAR_NORMALIZER_H
#define VOK_CHAR_NORMALIZER_H

#include <string_view>

#include "vok/base/arr.h"
#include "vok/char/normalize.h"
#include "vok/char/tables.h"
#include "vok/char/text.h"

namespace vok::Char::detail {

class Normalizer {
  public:
    Normalizer(std::string_view sText, Form eForm) noexcept
        : m_pAt(sText.data()), m_pEnd(m_pAt + sText.size()), m_uForm(static_cast<unsigned>(eForm)) {
        m_oSegment.Start(m_oSegmentRoom);
        m_oOut.Start(m_oOutRoom);
    }

    // Goes on: first what stays, then what becomes something else; either may be empty. False at
    // the end of the text. Raises the allocation errors of Mem.
    bool Next();
    [[nodiscard]] std::string_view Same() const noexcept { return m_sSame; }
    [[nodiscard]] std::string_view Source() const noexcept { return m_sSource; }
    [[nodiscard]] std::string_view Changed() const noexcept {
        return {m_oOut.Beg(), m_oOut.Size()};
    }

  private:
    // A character with its combining class in the upper byte, by which marks are ordered.
    using Item = u2_t;
    static constexpr unsigned CLASS = 24;
    static constexpr Item CODE = (Item{1} << CLASS) - 1;
    static constexpr u2_t NONE = CODE;

    [[nodiscard]] bool Composes() const noexcept { return (m_uForm & 1) == 0; }
    [[nodiscard]] bool Is(const Normal& o, unsigned uFlag) const noexcept {
        return (o.m_uFlags >> m_uForm & uFlag) != 0;
    }
    [[nodiscard]] u2_t PlaceOf(const Normal& o) const noexcept {
        return m_uForm < 2 ? o.m_uCanonical : o.m_uCompatible;
    }

    // Where the first segment begins that may be changed; m_pEnd if there is none.
    [[nodiscard]] const char* SkipSame() const noexcept;
    void Change();
    // The characters that one becomes: appended to the segment, or as text if they are all of it.
    void Push(u2_t uCode);
    void AddDecomposed(u2_t uCode);
    void Add(Item uItem) {
        if (m_oSegment.Size() == m_oSegment.Capacity()) m_oSegment.ReserveMore(1);
        *m_oSegment.AddSpacePrivate() = uItem;
    }
    void AddSegment();
    void Order();
    void OrderRun(Item* pBegin, Item* pEnd);
    void Compose() noexcept;
    [[nodiscard]] static u2_t Pair(u2_t uFirst, u2_t uSecond) noexcept;

    const char* m_pAt;
    const char* const m_pEnd;
    const unsigned m_uForm;
    std::string_view m_sSame;
    std::string_view m_sSource;

    Mem::Room<256> m_oSegmentRoom;
    Mem::Room<256> m_oOutRoom;
    Arr<Item> m_oSegment;
    Arr<Item> m_oOrdered;
    Arr<char> m_oOut;
};

}  // namespace vok::Char::detail

#endif  // VOK_CHAR_NORMALIZER_H

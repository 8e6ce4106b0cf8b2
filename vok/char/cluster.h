// SPDX-License-Identifier: MIT
// Grapheme clusters - what people take for one character - and the columns that text takes in a
// terminal: extended clusters of Unicode Standard Annex 29, Unicode 15.0.0.
//
// Texts need not be valid: a byte that is in no well-formed sequence stands for the Latin-1
// character of its value, and a NUL is a character. Nothing is allocated, nothing raised; all is
// linear in the bytes, whatever the length of a cluster, and any number of threads may use it.
#ifndef VOK_CHAR_CLUSTER_H
#define VOK_CHAR_CLUSTER_H

#include <iterator>
#include <string_view>

#include "vok/base/types.h"

namespace vok::Char {

// Where the cluster ends that begins at byte uFrom, which must be a border: 0, or a result of this.
// At the end of the text, and beyond it, that is where it ends.
[[nodiscard]] std::size_t NextCluster(std::string_view sText, std::size_t uFrom) noexcept;

[[nodiscard]] std::size_t CountClusters(std::string_view sText) noexcept;

// The columns that a text takes: the sum over its clusters, each of which takes those of its widest
// character (Columns in char.h). Two of regional indicators, which are a flag, take 2 columns, and
// so does what a variation selector (U+FE0F) makes an emoji. What a terminal does for line breaks,
// tabs and other control characters is not known here: they take none.
[[nodiscard]] std::size_t Width(std::string_view sText) noexcept;

// The bytes of the longest beginning in whole clusters that takes at most uColumns.
[[nodiscard]] std::size_t FitColumns(std::string_view sText, std::size_t uColumns) noexcept;

// The clusters of a text, which must outlive it:
//
//     for (const std::string_view sCluster : Char::Clusters(sText)) { ... }
class Clusters {
  public:
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = std::string_view;

        std::string_view operator*() const noexcept {
            return m_sText.substr(m_uFrom, m_uTo - m_uFrom);
        }
        Iterator& operator++() noexcept {
            m_uFrom = m_uTo;
            m_uTo = NextCluster(m_sText, m_uFrom);
            return *this;
        }
        void operator++(int) noexcept { ++*this; }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
            return a.m_uFrom == b.m_uFrom;
        }

      private:
        friend class Clusters;
        Iterator(std::string_view sText, std::size_t uFrom) noexcept
            : m_sText(sText), m_uFrom(uFrom), m_uTo(NextCluster(sText, uFrom)) {}

        std::string_view m_sText;
        std::size_t m_uFrom;
        std::size_t m_uTo;
    };

    explicit Clusters(std::string_view sText) noexcept : m_sText(sText) {}
    [[nodiscard]] Iterator begin() const noexcept { return {m_sText, 0}; }
    [[nodiscard]] Iterator end() const noexcept { return {m_sText, m_sText.size()}; }

  private:
    std::string_view m_sText;
};

}  // namespace vok::Char

#endif  // VOK_CHAR_CLUSTER_H

// SPDX-License-Identifier: MIT
// Hashes of trees.
#ifndef VOK_DATA_HASH_H
#define VOK_DATA_HASH_H

#include <array>
#include <functional>
#include <memory>
#include <string_view>

#include "vok/base/str.h"
#include "vok/base/types.h"

namespace vok {

// XXH3 with 128 bits, as Data::Hash gives it: the bytes in their canonical order, high byte first.
// Good for telling trees apart, not against those who want two of them to have the same one: for
// signatures feed Data::Canonical to a cryptographic hash.
struct Data_Hash {
    std::array<u0_t, 16> m_auByte{};

    // 32 digits.
    [[nodiscard]] Str ToHex() const;
    friend bool operator==(const Data_Hash&, const Data_Hash&) = default;
};

// Makes the hash of a canonical form that comes in pieces, however they are cut.
class Data_Hasher {
  public:
    Data_Hasher();
    Data_Hasher(Data_Hasher&&) noexcept;
    Data_Hasher& operator=(Data_Hasher&&) noexcept;
    ~Data_Hasher();

    void Add(std::string_view sPiece) noexcept;
    // Of what was added so far.
    [[nodiscard]] Data_Hash Get() const noexcept;

  private:
    class State;
    std::unique_ptr<State> m_pState;
};

}  // namespace vok

#endif  // VOK_DATA_HASH_H

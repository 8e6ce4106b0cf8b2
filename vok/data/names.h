// SPDX-License-Identifier: MIT
// The names that the nodes of a tree bear. Internal.
#ifndef VOK_DATA_NAMES_H
#define VOK_DATA_NAMES_H

#include <string_view>

#include "vok/base/hash.h"
#include "vok/base/hash_guess.h"
#include "vok/base/keyed_sort.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"
#include "vok/data/escape.h"

namespace vok {

// A table of names that looks first where the next one is likely to be: names of trees follow
// each other in patterns. Names ever borne stay until Renew.
class Data_Names : private Hash::Near, public Hash {
  public:
    Data_Names() : Hash(static_cast<Hash::Near&>(*this)) { Start(); }

    // Key of a name, which ends at its first NUL; "" is key 0, which is also what is expected where
    // nothing is known.
    u2_t Intern(std::string_view sName) {
        const u2_t uKey = TryGuesses(sName);
        return uKey != NONE ? uKey : InternSlow(sName);
    }
    // The same without adding it: NONE for a name that no node ever bore.
    [[nodiscard]] u2_t Look(std::string_view sName) const { return LookIn(*this, sName); }
    [[nodiscard]] static u2_t LookIn(const Hash& oNames, std::string_view sName);
    // The same for who asks for one name behind the other and has the names for himself: looks
    // first at what is expected, as Intern does.
    [[nodiscard]] u2_t LookNext(std::string_view sName) {
        const u2_t uKey = TryGuesses(sName);
        return uKey != NONE ? uKey : LookNextSlow(sName);
    }
    // Null for key 0.
    [[nodiscard]] const char* TextOrNull(u2_t uKey) const noexcept {
        return uKey != 0 ? (*this)(uKey).sText : nullptr;
    }

    // By key: how many names are below it in byte order.
    [[nodiscard]] Arr<u2_t> Ranks() const;
    // Memory that this takes for a name.
    static constexpr std::size_t BYTES_TO_RANK = 2 * sizeof(Keyed) + sizeof(u2_t);
    // What Intern looks at first, for codecs that look at names where they stand in a document.
    [[nodiscard]] Hash_Guess& Guess() noexcept { return m_oGuess; }
    [[nodiscard]] const Hash_Guess& Guess() const noexcept { return m_oGuess; }
    // Whether documents carry a name as it stands. Remembered.
    [[nodiscard]] bool IsVerbatim(u2_t uKey) { return m_oGuess.IsVerbatim(uKey) || LookAt(uKey); }

    // Interns a name that is not among those to be tried, for one who has seen what it stands for
    // as it is, and that it is valid UTF-8 without a NUL.
    u2_t InternAs(std::string_view sName, Hash_Guess::As eAs) {
        const u2_t uKey = Insert(sName);
        m_oGuess.Note(uKey, Size(), eAs);
        return uKey;
    }
    // Whether it is known that elements may have the name as it stands, which is another question.
    [[nodiscard]] bool IsXmlVerbatim(u2_t uKey) const noexcept {
        return m_oGuess.IsXmlVerbatim(uKey);
    }
    void SetXmlVerbatim(u2_t uKey) { m_oGuess.SetXmlVerbatim(uKey, Size()); }

    // Takes the names of oNew in place of its own.
    void Renew(Hash& oNew) noexcept {
        Swap(oNew);
        m_oGuess.Clear();
    }
    // Drops all names.
    void Restart() {
        Hash oNew;
        oNew.Start();
        Renew(oNew);
    }

    // So many names are kept whether they are borne or not.
    static constexpr std::size_t MANY = 1024;
    // Whether so many of uNames are no longer borne that it is worth dropping them.
    [[nodiscard]] static bool IsWorthDropping(std::size_t uNames, std::size_t uUsed) noexcept {
        return uNames > MANY && 2 * uUsed < uNames;
    }

    [[nodiscard]] std::size_t HeapBytes() const noexcept {
        return Hash::HeapBytes() + m_oGuess.HeapBytes();
    }

  private:
    // Key of a name that is one of those to be tried, else NONE.
    [[nodiscard]] u2_t TryGuesses(std::string_view sName) noexcept {
        const u2_t uKey = m_oGuess.First();
        if (!IsText(uKey, sName)) [[unlikely]]
            return IsText(m_oGuess.Second(), sName) ? m_oGuess.Second() : NONE;
        m_oGuess.Confirm(uKey);
        return uKey;
    }
    u2_t InternSlow(std::string_view sName);
    [[nodiscard]] u2_t LookNextSlow(std::string_view sName);
    bool LookAt(u2_t uKey);

    Hash_Guess m_oGuess;
};

}  // namespace vok

#endif  // VOK_DATA_NAMES_H

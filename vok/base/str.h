// SPDX-License-Identifier: MIT
// The string of the library: UTF-8 text with shared storage, and its UTF-16 companion.
#ifndef VOK_BASE_STR_H
#define VOK_BASE_STR_H

#include <string_view>

#include "vok/base/arr.h"

namespace vok {

// Texts that come in are brought to valid UTF-8: valid text is kept; in any other text
// well-formed sequences are kept and every other byte is read as Latin-1. The text ends
// at its first NUL. Copying shares the block; every modifying operation first makes the
// block its own. Raises the allocation errors of Mem and is then unchanged.
//
// Different strings may be used by different threads, even when they share a block.
class Str {
  public:
    class Utf16;

    Str() noexcept = default;
    // Null gives the empty string.
    Str(const char* sText);  // NOLINT(google-explicit-constructor): texts are strings
    explicit Str(std::string_view sText);
    Str(const Str& oStr) noexcept;
    Str(Str&& oStr) noexcept;
    Str& operator=(const Str& oStr) noexcept;
    Str& operator=(Str&& oStr) noexcept;
    ~Str() { Clear(); }

    // Appends a text. Null or an empty text changes nothing; appending a Str to an empty
    // one shares its block. Linear in the text appended, amortised.
    void Add(const char* sText);
    void Add(std::string_view sText);
    void Add(const Str& oStr);
    // Appends UTF-16 text; pEnd null means up to its NUL. A surrogate without its
    // partner becomes U+FFFD. Null adds nothing.
    void Add(const char16_t* pText, const char16_t* pEnd = nullptr);

    void Clear() noexcept;

    // The text, NUL-terminated; null when the string has no block.
    [[nodiscard]] const char* Data() const noexcept { return m_sText; }
    // The text, NUL-terminated; "" when the string has no block.
    [[nodiscard]] const char* CStr() const noexcept { return m_sText != nullptr ? m_sText : ""; }
    // Bytes without the NUL.
    [[nodiscard]] std::size_t Len() const noexcept { return m_uSize != 0 ? m_uSize - 1 : 0; }
    // Bytes with the NUL; 0 when the string has no block.
    [[nodiscard]] std::size_t Size() const noexcept { return m_uSize; }
    // What its block, which others may share, takes of the heap.
    [[nodiscard]] std::size_t HeapBytes() const noexcept { return Mem::HeapBytes(m_sText); }
    // Code points.
    [[nodiscard]] std::size_t Chars() const noexcept { return m_uChars; }
    [[nodiscard]] bool IsEmpty() const noexcept { return m_uSize <= 1; }
    [[nodiscard]] std::string_view View() const noexcept { return {CStr(), Len()}; }

    friend bool operator==(const Str& a, const Str& b) noexcept { return a.View() == b.View(); }

  private:
    // Appends valid UTF-8 without a NUL in it.
    void AddValid(const char* pText, std::size_t uSize);

    char* m_sText = nullptr;      // inside a Mem block
    std::size_t m_uSize = 0;      // bytes including the NUL; 0 without a block
    std::size_t m_uCapacity = 0;  // bytes of the block
    std::size_t m_uChars = 0;     // code points
};

// NUL-terminated UTF-16 text for the border to hosts and to Windows.
class Str::Utf16 {
  public:
    Utf16() noexcept = default;
    explicit Utf16(const Str& oStr) { Init(oStr); }

    // Replaces the text by that of oStr.
    void Init(const Str& oStr);

    // NUL-terminated; u"" when nothing was set.
    [[nodiscard]] const char16_t* CStr() const noexcept {
        return m_oText.Size() != 0 ? m_oText.Beg() : u"";
    }
    // Units without the NUL.
    [[nodiscard]] std::size_t Len() const noexcept {
        return m_oText.Size() != 0 ? m_oText.Size() - 1 : 0;
    }

  private:
    Arr<char16_t> m_oText;
};

// A text as valid UTF-8 for the duration of a call: the given bytes themselves when they
// are valid, a re-encoded copy otherwise. Must not outlive the text it was made from.
class Utf8_Text {
  public:
    // Null counts as empty.
    explicit Utf8_Text(const char* sText)
        : Utf8_Text(std::string_view(sText != nullptr ? sText : "")) {}
    // The text ends at its first NUL, if it has one.
    explicit Utf8_Text(std::string_view sText);

    // NUL-terminated exactly when what it was made from was.
    [[nodiscard]] const char* Data() const noexcept { return m_sView.data(); }
    [[nodiscard]] std::size_t Len() const noexcept { return m_sView.size(); }
    [[nodiscard]] std::string_view View() const noexcept { return m_sView; }

  private:
    std::string_view m_sView;
    Arr<char> m_oCopy;
};

}  // namespace vok

#endif  // VOK_BASE_STR_H

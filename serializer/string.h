// SPDX-License-Identifier: MIT
// Texts at the border between a host and the library: nullable UTF-16.
#ifndef SERIALIZER_STRING_H
#define SERIALIZER_STRING_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace Velmar::Q7R::Serializer {

// A host string: UTF-16 text or null, which is not the same as empty.
class String {
  public:
    String() noexcept = default;  // null
    String(std::nullptr_t) noexcept {}
    String(std::u16string sText) noexcept : m_sText(std::move(sText)), m_bNull(false) {}
    String(const char16_t* sText) {
        if (sText != nullptr) *this = String(std::u16string(sText));
    }

    // The empty string.
    [[nodiscard]] static String Empty() { return String(std::u16string()); }

    [[nodiscard]] bool IsNull() const noexcept { return m_bNull; }
    // The text; empty for null.
    [[nodiscard]] const std::u16string& Text() const noexcept { return m_sText; }
    // The text as UTF-8; a surrogate without its partner becomes U+FFFD.
    [[nodiscard]] std::string ToUtf8() const;

    friend bool operator==(const String& a, const String& b) noexcept = default;

  private:
    std::u16string m_sText;
    bool m_bNull = true;
};

// A string handed to an operation, not copied: it must outlive the call. Made from a host
// string, from UTF-16 text or, for C++ hosts, from UTF-8 text. Ends at its first NUL.
//
// Two words, so that it is passed in registers: one that is passed in memory costs more than what
// most operations do with it.
class StringRef {
  public:
    StringRef(std::nullptr_t) noexcept {}
    StringRef(const String& oText) noexcept {
        if (!oText.IsNull()) *this = oText.Text();
    }
    StringRef(const char16_t* sText) noexcept {
        if (sText != nullptr) *this = std::u16string_view(sText);
    }
    StringRef(std::u16string_view sText) noexcept
        : m_pText(sText.data()), m_uSize(sText.size() | UTF16) {}
    StringRef(const std::u16string& sText) noexcept : StringRef(std::u16string_view(sText)) {}
    StringRef(const char* sText) noexcept {
        if (sText != nullptr) *this = std::string_view(sText);
    }
    StringRef(const char8_t* sText) noexcept : StringRef(reinterpret_cast<const char*>(sText)) {}
    StringRef(std::u8string_view sText) noexcept : m_pText(sText.data()), m_uSize(sText.size()) {}
    StringRef(std::string_view sText) noexcept : m_pText(sText.data()), m_uSize(sText.size()) {}
    StringRef(const std::string& sText) noexcept : StringRef(std::string_view(sText)) {}

    // One of the two is set, neither for null; data() tells.
    [[nodiscard]] std::u16string_view Utf16() const noexcept {
        if ((m_uSize & UTF16) == 0) return {};
        return {static_cast<const char16_t*>(m_pText), m_uSize & ~UTF16};
    }
    [[nodiscard]] std::string_view Utf8() const noexcept {
        if ((m_uSize & UTF16) != 0) return {};
        return {static_cast<const char*>(m_pText), m_uSize};
    }

  private:
    // Beside a size, which is less than half of all addresses.
    static constexpr std::size_t UTF16 = ~(~std::size_t{0} >> 1);

    const void* m_pText = nullptr;
    std::size_t m_uSize = 0;
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_STRING_H

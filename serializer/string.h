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
class StringRef {
  public:
    StringRef(std::nullptr_t) noexcept {}
    StringRef(const String& oText) noexcept {
        if (!oText.IsNull()) m_sUtf16 = oText.Text();
    }
    StringRef(const char16_t* sText) noexcept {
        if (sText != nullptr) m_sUtf16 = sText;
    }
    StringRef(std::u16string_view sText) noexcept : m_sUtf16(sText) {}
    StringRef(const std::u16string& sText) noexcept : m_sUtf16(sText) {}
    StringRef(const char* sText) noexcept {
        if (sText != nullptr) m_sUtf8 = sText;
    }
    StringRef(const char8_t* sText) noexcept : StringRef(reinterpret_cast<const char*>(sText)) {}
    StringRef(std::u8string_view sText) noexcept
        : m_sUtf8(reinterpret_cast<const char*>(sText.data()), sText.size()) {}
    StringRef(std::string_view sText) noexcept : m_sUtf8(sText) {}
    StringRef(const std::string& sText) noexcept : m_sUtf8(sText) {}

    // One of the two is set, neither for null; data() tells.
    [[nodiscard]] std::u16string_view Utf16() const noexcept { return m_sUtf16; }
    [[nodiscard]] std::string_view Utf8() const noexcept { return m_sUtf8; }

  private:
    std::u16string_view m_sUtf16;
    std::string_view m_sUtf8;
};

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_STRING_H

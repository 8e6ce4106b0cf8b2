// SPDX-License-Identifier: MIT
// The string of the library: UTF-8 text with shared storage, how it is edited, and its UTF-16
// companion.
#ifndef VOK_BASE_STR_H
#define VOK_BASE_STR_H

#include <compare>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>

#include "vok/base/arr.h"

namespace vok {

class Str_Split;

// Texts that come in are brought to valid UTF-8: valid text is kept; in any other text
// well-formed sequences are kept and every other byte is read as Latin-1. The text ends
// at its first NUL. Copying shares the block; every modifying operation first makes the
// block its own. Raises the allocation errors of Mem and is then unchanged.
//
// Different strings may be used by different threads, even when they share a block.
//
// Places in a text are told in bytes or in characters, which are code points; the two differ beyond
// ASCII, so each is a type:
//
//     Str oText("größe");
//     oText.Remove(Str::CharPos{1}, Str::CharPos{3});           "gße"
//     oText.Insert(oText.End(), ".txt");                        "gße.txt"
//     if (const auto oAt = oText.Find("ß")) oText.Replace(*oAt, oText.End(), "as");   "gas"
//
// A place behind the end raises "index %0 out of range %1", and so does a range that ends in front
// of where it begins; a byte within a character raises "byte %0 is within a character". The text is
// then as it was. All operations are linear in the texts; a place in characters costs a walk over
// what is in front of it, unless all is ASCII. Upper and lower case, and texts compared without it:
// vok/char.
class Str {
  public:
    class Utf16;

    struct BytePos {
        std::size_t m_uAt;
        friend auto operator<=>(const BytePos&, const BytePos&) = default;
    };
    struct CharPos {
        std::size_t m_uAt;
        friend auto operator<=>(const CharPos&, const CharPos&) = default;
    };
    template <class P>
    static constexpr bool IS_POS = std::same_as<P, BytePos> || std::same_as<P, CharPos>;

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

    // Appends a number in decimal, whatever the locale: a real as the shortest text that reads back
    // to the same value, "INF", "-INF" or "NaN".
    void AddNumber(std::signed_integral auto iValue) { AddInteger(i3_t{iValue}); }
    void AddNumber(std::unsigned_integral auto uValue) { AddInteger(u3_t{uValue}); }
    void AddNumber(double dValue);

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
    // The order of code points, which is that of the bytes.
    friend std::strong_ordering operator<=>(const Str& a, const Str& b) noexcept {
        return a.View() <=> b.View();
    }

    // ---- places ------------------------------------------------------------

    // Behind the last character.
    [[nodiscard]] BytePos End() const noexcept { return {Len()}; }
    // One as the other.
    [[nodiscard]] BytePos ToByte(CharPos oAt) const;
    [[nodiscard]] BytePos ToByte(BytePos oAt) const;  // itself, when it is one
    [[nodiscard]] CharPos ToChar(BytePos oAt) const;

    // The text between two places, or from one on. The view is into the block: it lives until the
    // string is changed.
    template <class P>
    requires IS_POS<P>
    [[nodiscard]] std::string_view ViewOf(P oFrom, P oTo) const {
        return BytesOf(ToByte(oFrom), ToByte(oTo));
    }
    template <class P>
    requires IS_POS<P>
    [[nodiscard]] std::string_view ViewOf(P oFrom) const { return BytesOf(ToByte(oFrom), End()); }
    // The character at a place. Raises at the end as well.
    template <class P>
    requires IS_POS<P>
    [[nodiscard]] u2_t CharAt(P oAt) const { return CodeAt(ToByte(oAt)); }

    // ---- what is in it -----------------------------------------------------
    // Texts that are looked for are brought to valid UTF-8 first, as those that come in. The empty
    // text is everywhere.

    // The first place at or behind oFrom where sWhat stands.
    [[nodiscard]] std::optional<BytePos> Find(std::string_view sWhat, BytePos oFrom = {}) const;
    // The last place where it stands.
    [[nodiscard]] std::optional<BytePos> FindLast(std::string_view sWhat) const;
    [[nodiscard]] bool Contains(std::string_view sWhat) const { return Find(sWhat).has_value(); }
    [[nodiscard]] bool StartsWith(std::string_view sWhat) const;
    [[nodiscard]] bool EndsWith(std::string_view sWhat) const;

    // ---- editing -----------------------------------------------------------
    // A text that comes in may lie in the string itself.

    template <class P>
    requires IS_POS<P>
    void Insert(P oAt, std::string_view sText) {
        const BytePos oByte = ToByte(oAt);
        ReplaceBytes(oByte, oByte, sText);
    }
    template <class P>
    requires IS_POS<P>
    void Replace(P oFrom, P oTo, std::string_view sText) {
        ReplaceBytes(ToByte(oFrom), ToByte(oTo), sText);
    }
    template <class P>
    requires IS_POS<P>
    void Remove(P oFrom, P oTo) { ReplaceBytes(ToByte(oFrom), ToByte(oTo), {}); }
    // Drops what is from a place on.
    template <class P>
    requires IS_POS<P>
    void Truncate(P oAt) { ReplaceBytes(ToByte(oAt), End(), {}); }
    // Puts sWith in place of every sWhat, from the left on; what comes in is not looked at again.
    // Returns how many there were. The empty text is none.
    std::size_t ReplaceAll(std::string_view sWhat, std::string_view sWith);

    // Blanks, tabs, line and page breaks of ASCII.
    static constexpr std::string_view BLANKS = " \t\n\v\f\r";
    // Drops what is made of the characters of sChars at the beginning, at the end, or at both.
    void TrimStart(std::string_view sChars = BLANKS);
    void TrimEnd(std::string_view sChars = BLANKS);
    void Trim(std::string_view sChars = BLANKS);

    // The parts between separators, one more than there are of these: see Str_Split. An empty
    // separator raises "parameter "%0" has invalid value".
    [[nodiscard]] Str_Split Split(std::string_view sSeparator) const;
    // The texts of a range, anything that a string can be made of, with a separator between them.
    template <class Range>
    [[nodiscard]] static Str Join(const Range& oTexts, std::string_view sSeparator) {
        Str oJoined;
        bool bFirst = true;
        for (const auto& oText : oTexts) {
            if (!bFirst) oJoined.Add(sSeparator);
            bFirst = false;
            oJoined.Add(oText);
        }
        return oJoined;
    }

  private:
    void AddInteger(i3_t iValue);
    void AddInteger(u3_t uValue);
    // Appends valid UTF-8 without a NUL in it.
    void AddValid(const char* pText, std::size_t uSize);
    // Puts the text into a block of its own of uCapacity bytes, which it has room in.
    void Renew(std::size_t uCapacity);
    // Whether the block is this string's alone.
    [[nodiscard]] bool IsOwn() const noexcept {
        return m_sText != nullptr && Mem::GetRefCnt(m_sText) == 0;
    }

    // Both are places in the text; the order is checked.
    [[nodiscard]] std::string_view BytesOf(BytePos oFrom, BytePos oTo) const;
    [[nodiscard]] u2_t CodeAt(BytePos oAt) const;
    void ReplaceBytes(BytePos oFrom, BytePos oTo, std::string_view sText);
    // Keeps those bytes, whole characters of the text, alone.
    void Keep(std::string_view sPart);

    char* m_sText = nullptr;      // inside a Mem block
    std::size_t m_uSize = 0;      // bytes including the NUL; 0 without a block
    std::size_t m_uCapacity = 0;  // bytes of the block
    std::size_t m_uChars = 0;     // code points
};

// The parts of a text between separators, as views into it: nothing is copied.
//
//     for (std::string_view sPart : Str("a,b,,c").Split(",")) ...   "a", "b", "", "c"
//
// The empty text has one part, the empty one. Shares the block of the string, which may be changed
// or go meanwhile: views live as long as this does.
class Str_Split {
  public:
    class Iterator {
      public:
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;

        Iterator() noexcept = default;
        [[nodiscard]] std::string_view operator*() const noexcept { return m_sPart; }
        Iterator& operator++() noexcept;
        Iterator operator++(int) noexcept {
            Iterator oBefore = *this;
            ++*this;
            return oBefore;
        }
        friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
            return a.m_sPart.data() == b.m_sPart.data();
        }

      private:
        friend class Str_Split;
        Iterator(std::string_view sText, std::string_view sSeparator) noexcept;

        std::string_view m_sPart;  // of no place behind the last one
        std::string_view m_sRest;  // behind the separator behind it, of no place if there is none
        std::string_view m_sSeparator;
    };

    // What Str::Split gives.
    Str_Split(const Str& oText, std::string_view sSeparator);

    [[nodiscard]] Iterator begin() const noexcept { return {m_oText.View(), m_oSeparator.View()}; }
    [[nodiscard]] Iterator end() const noexcept { return {}; }

  private:
    Str m_oText;
    Str m_oSeparator;
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

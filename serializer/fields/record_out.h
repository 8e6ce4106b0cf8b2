// Records of a DGraph document, straight from objects. Internal.
#ifndef SERIALIZER_FIELDS_RECORD_OUT_H
#define SERIALIZER_FIELDS_RECORD_OUT_H

#include <bit>
#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

#include "serializer/fields/steps.h"
#include "serializer/node.h"
#include "vok/base/date.h"
#include "vok/dgraph/format.h"

namespace Velmar::Q7R::Serializer::fields {

// Puts records behind each other in a buffer. It raises nothing of its own: what a document cannot
// hold, and what only a tree can be asked for, it fails at, and what it wrote is of no use.
class RecordOut {
  public:
    // Uses what the buffer has for room. A document of minor version 2 has 64-bit numbers as
    // texts; where bNewer, one becomes version 3 by its first.
    RecordOut(std::vector<Byte>& aoBuffer, bool bNewer);

    // The buffer is the document. False when it failed.
    [[nodiscard]] bool Finish();

    void Fail(const char*) noexcept { m_bFailed = true; }
    template <class S>
    void FailAt(const char*) noexcept {
        m_bFailed = true;
    }
    [[nodiscard]] bool HasFailed() const noexcept { return m_bFailed; }

    // Bytes so far, and how many more are to be expected: a place is reserved where there is room
    // for them, which takes no memory until they come.
    [[nodiscard]] std::size_t Size() const noexcept {
        return static_cast<std::size_t>(m_p - Begin());
    }
    void Expect(std::size_t uSize);

    // ---- values -----------------------------------------------------------

    template <class S, class At>
    void Bool(At at, bool b) {
        m_p = vok::le::Store(Head<S>(at, vok::dgraph::CODE_BOOLEAN, 1), static_cast<vok::u0_t>(b));
    }
    template <class S, class At>
    void Int(At at, vok::i2_t i) {
        m_p = vok::le::Store(Head<S>(at, vok::dgraph::CODE_INTEGER, 4), i);
    }
    template <class S, class At>
    void Long(At at, vok::u3_t u) {
        PutLong(Head<S>(at, m_eLong, LONG_TEXT), u);
    }
    template <class S, class At>
    void Float(At at, float f) {
        m_p = vok::le::Store(Head<S>(at, vok::dgraph::CODE_FLOAT, 4), std::bit_cast<vok::u2_t>(f));
    }
    template <class S, class At>
    void Double(At at, double d) {
        m_p = vok::le::Store(Head<S>(at, vok::dgraph::CODE_DOUBLE, 8), std::bit_cast<vok::u3_t>(d));
    }
    template <class S, class At>
    void Date(At at, double dSeconds) {
        m_p = vok::le::Store(Head<S>(at, vok::dgraph::CODE_DATE, 8),
                             std::bit_cast<vok::u3_t>(vok::DaysOfSeconds(dSeconds)));
    }
    template <class S, class At>
    void Utf8(At at, std::string_view sText) {
        if (sText.size() > MOST_BYTES) return Fail(nullptr);
        PutText(Head<S>(at, vok::dgraph::CODE_STRING, sText.size() + TEXT_ROOM), sText);
    }
    template <class S, class At>
    void Utf16(At at, std::u16string_view sText) {
        if (sText.size() > MOST_BYTES / 3) return Fail(nullptr);
        PutText(Head<S>(at, vok::dgraph::CODE_STRING, 3 * sText.size() + TEXT_ROOM), sText);
    }
    template <class S, class At>
    void Binary(At at, const void* pData, std::size_t uSize) {
        if (uSize > MOST_BYTES) return Fail(nullptr);
        char* p = Head<S>(at, vok::dgraph::CODE_BINARY, 4 + uSize);
        p = vok::le::Store(p, static_cast<vok::u2_t>(uSize));
        if (uSize != 0) std::memcpy(p, pData, uSize);
        m_p = p + uSize;
    }
    // What is not there, among others that are.
    template <class S, class At>
    void Null(At at) {
        const std::size_t uBegin = Size();
        (void)Head<S>(at, vok::dgraph::CODE_NONE, NULL_MARK.size() + 4);
        PutNull(Begin() + uBegin);
    }

    // What only a tree does.
    template <class S, class At, class T>
    void Pointer(At, const T&) {
        Fail(nullptr);
    }
    template <class S, class At, class T>
    void Host(At, const T&) {
        Fail(nullptr);
    }
    template <class S, class T>
    void Attribute(const T&) {
        Fail(nullptr);
    }

    // ---- nodes in nodes ---------------------------------------------------

    // An open node: where its count stands, and the count of the one around it.
    struct Mark {
        std::size_t uCountAt;
        vok::u2_t uOuterCount;
        explicit operator bool() const noexcept { return uCountAt != 0; }
    };
    // False where it would be too deep.
    template <class S, class At>
    [[nodiscard]] Mark Open(At at) {
        char* const p = Head<S>(at, vok::dgraph::CODE_NONE, 4);
        m_p = p + 4;
        if (++m_uDepth > MOST_DEPTH) {
            m_bFailed = true;
            return {0, 0};
        }
        return {static_cast<std::size_t>(p - Begin()), std::exchange(m_uCount, 0)};
    }
    void Close(const Mark& oMark) noexcept {
        --m_uDepth;
        vok::le::Store(Begin() + oMark.uCountAt, m_uCount);
        m_uCount = oMark.uOuterCount;
    }

  private:
    // Length and NUL.
    static constexpr std::size_t TEXT_ROOM = 4 + 1;
    static constexpr std::size_t LONG_TEXT = TEXT_ROOM + 20;
    // Digits of an index, brackets, code, length.
    static constexpr std::size_t INDEX_ROOM = 20;
    static constexpr std::string_view NULL_MARK = "[@null=\"true\"]";

    [[nodiscard]] char* Begin() const noexcept {
        return reinterpret_cast<char*>(m_aoBuffer.data());
    }

    // Room for so many bytes at m_p.
    char* Room(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            Grow(uSize);
        return m_p;
    }
    void Grow(std::size_t uSize);
    void Resize(std::size_t uSize);

    // Begins a record, up to its type code, and returns where the value goes, for which there is
    // room.
    template <class S>
    char* Head(First, vok::dgraph::Code eCode, std::size_t uValue) {
        char* p = Room(Step<S>::HEAD_SIZE + 1 + uValue);
        std::memcpy(p, Step<S>::HEAD.data(), Step<S>::HEAD_SIZE);
        p += Step<S>::HEAD_SIZE;
        *p++ = static_cast<char>(eCode);
        ++m_uCount;
        return p;
    }
    template <class S>
    char* Head(vok::u2_t uIndex, vok::dgraph::Code eCode, std::size_t uValue) {
        char* const pLength = Room(Step<S>::STEM_SIZE + INDEX_ROOM + uValue);
        std::memcpy(pLength + 4, Step<S>::STEM.data(), Step<S>::STEM_SIZE);
        char* p = pLength + 4 + Step<S>::STEM_SIZE;
        if (uIndex < 10) {
            *p++ = static_cast<char>('0' + uIndex);
        } else {
            p = std::to_chars(p, p + 10, uIndex).ptr;
        }
        *p++ = ']';
        vok::le::Store(pLength, static_cast<vok::u2_t>(p - pLength - 4));
        *p++ = static_cast<char>(eCode);
        ++m_uCount;
        return p;
    }
    // Makes the record that begins there one of what is not there.
    void PutNull(char* pRecord) noexcept;

    void PutLong(char* p, vok::u3_t uValue) noexcept;
    void PutText(char* p, std::string_view sText) noexcept;
    void PutText(char* p, std::u16string_view sText) noexcept;

    std::vector<Byte>& m_aoBuffer;
    char* m_p = nullptr;
    char* m_pEnd = nullptr;
    vok::u2_t m_uCount = 0;  // nodes in the one that is open
    vok::u2_t m_uDepth = 0;
    const vok::dgraph::Code m_eLong;  // how a Long is written
    bool m_bHasLongs = false;
    bool m_bFailed = false;
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_RECORD_OUT_H

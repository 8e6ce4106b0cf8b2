// SPDX-License-Identifier: MIT
// Records of a DGraph document, straight from objects. Internal.
#ifndef SERIALIZER_FIELDS_RECORD_OUT_H
#define SERIALIZER_FIELDS_RECORD_OUT_H

#include <bit>
#include <cstring>
#include <string_view>
#include <vector>

#include "serializer/fields/convert.h"
#include "serializer/fields/steps.h"
#include "serializer/node.h"
#include "vok/dgraph/value_writer.h"

namespace Velmar::Q7R::Serializer::fields {

// Where the records go: the vector of the caller, which is of its final size in the end only.
class VectorSink {
  public:
    static constexpr bool COLLECTS = true;

    // Uses what the vector has for room.
    explicit VectorSink(std::vector<Byte>& aoBuffer);

    [[nodiscard]] char* Space(std::size_t uSize) {
        if (static_cast<std::size_t>(m_pEnd - m_p) < uSize) [[unlikely]]
            Grow(uSize);
        return m_p;
    }
    void Cut(char* pEnd) noexcept { m_p = pEnd; }
    void Payload(const char* pData, std::size_t uSize) {
        char* const p = Space(uSize);
        if (uSize != 0) std::memcpy(p, pData, uSize);
        m_p = p + uSize;
    }

    // Bytes so far, and the place of one of them, until more are written.
    [[nodiscard]] std::size_t Size() const noexcept {
        return static_cast<std::size_t>(m_p - At(0));
    }
    [[nodiscard]] char* At(std::size_t uPlace) const noexcept {
        return reinterpret_cast<char*>(m_aoBuffer.data()) + uPlace;
    }
    void Expect(std::size_t uSize);
    void Finish() { m_aoBuffer.resize(Size()); }

  private:
    void Grow(std::size_t uSize);
    void Resize(std::size_t uSize);

    std::vector<Byte>& m_aoBuffer;
    char* m_p = nullptr;
    char* m_pEnd = nullptr;
};

// Puts records behind each other in a buffer. It raises nothing of its own: what a document cannot
// hold, and what only a tree can be asked for, it fails at, and what it wrote is of no use.
class RecordOut : private vok::dgraph::ValueWriter<VectorSink> {
    using Record = vok::dgraph::ValueWriter<VectorSink>;

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
    [[nodiscard]] std::size_t Size() const noexcept { return m_oSink.Size(); }
    void Expect(std::size_t uSize) { m_oSink.Expect(uSize); }

    // ---- values -----------------------------------------------------------

    template <class S, class At>
    void Bool(At at, bool b) {
        Begin<S>(at);
        Record::Bool(b);
    }
    template <class S, class At>
    void Int(At at, vok::i2_t i) {
        Begin<S>(at);
        Record::Int(static_cast<vok::u2_t>(i));
    }
    template <class S, class At>
    void Long(At at, vok::u3_t u) {
        Begin<S>(at);
        Record::Lng(u);
        m_bHasLongs = true;
    }
    template <class S, class At>
    void Float(At at, float f) {
        Begin<S>(at);
        Record::Flt(f);
    }
    template <class S, class At>
    void Double(At at, double d) {
        Begin<S>(at);
        Record::Dbl(std::bit_cast<vok::u3_t>(d));
    }
    template <class S, class At>
    void Date(At at, double dSeconds) {
        Begin<S>(at);
        Record::Date(dSeconds);
    }
    template <class S, class At>
    void Utf8(At at, std::string_view sText) {
        if (sText.size() > MOST_BYTES || !IsTreeText(sText)) return Fail(nullptr);
        Begin<S>(at);
        Record::StrOf(sText.size(), [&](char* p) { return p + sText.copy(p, sText.size()); });
    }
    template <class S, class At>
    void Utf16(At at, std::u16string_view sText) {
        if (sText.size() > MOST_BYTES / 3) return Fail(nullptr);
        Begin<S>(at);
        Record::StrOf(3 * sText.size(), [&](char* p) { return PutUtf16(p, sText); });
    }
    template <class S, class At>
    void Binary(At at, const void* pData, std::size_t uSize) {
        if (uSize > MOST_BYTES) return Fail(nullptr);
        Begin<S>(at);
        Record::Bin(static_cast<const char*>(pData), uSize);
    }
    // What is not there, among others that are.
    template <class S, class At>
    void Null(At at) {
        const vok::u2_t uIndex = IndexOf(at);
        Record::ReadyStem(Step<S>::STEM.data(), Step<S>::STEM_SIZE, uIndex, "[@null=\"true\"]");
        ++m_uCount;
        Record::Count(0);
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
        Begin<S>(at);
        Record::Count(0);
        if (++m_uDepth > MOST_DEPTH) {
            m_bFailed = true;
            return {0, 0};
        }
        return {Size() - sizeof(vok::u2_t), std::exchange(m_uCount, 0)};
    }
    void Close(const Mark& oMark) noexcept {
        --m_uDepth;
        vok::le::Store(m_oSink.At(oMark.uCountAt), m_uCount);
        m_uCount = oMark.uOuterCount;
    }

  private:
    // Begins a record: its step.
    template <class S>
    void Begin(First) {
        Record::ReadyStep(Step<S>::HEAD.data(), Step<S>::HEAD_SIZE);
        ++m_uCount;
    }
    template <class S>
    void Begin(vok::u2_t uIndex) {
        Record::ReadyStem(Step<S>::STEM.data(), Step<S>::STEM_SIZE, uIndex);
        ++m_uCount;
    }
    [[nodiscard]] static vok::u2_t IndexOf(First) noexcept { return 0; }
    [[nodiscard]] static vok::u2_t IndexOf(vok::u2_t uIndex) noexcept { return uIndex; }

    // A text as UTF-8; returns the end. One with a NUL in it fails.
    char* PutUtf16(char* p, std::u16string_view sText) noexcept;

    vok::u2_t m_uCount = 0;  // nodes in the one that is open
    vok::u2_t m_uDepth = 0;
    const bool m_bNewer;
    bool m_bHasLongs = false;
    bool m_bFailed = false;
};

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_RECORD_OUT_H

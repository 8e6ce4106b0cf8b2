// SPDX-License-Identifier: MIT
// The bytes that the values and attributes of a tree refer to. Internal.
#ifndef VOK_DATA_TEXT_HEAP_H
#define VOK_DATA_TEXT_HEAP_H

#include <array>
#include <cstring>
#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/copy.h"
#include "vok/base/utf8.h"
#include "vok/data/node.h"

namespace vok {

// One array of texts with their NUL, blocks and words of quads; references are offsets. It only
// grows: what is no longer referred to is garbage until the tree is compacted. Byte 0 is the
// empty text, and is there once anything is.
//
// How much is garbage is told by the bytes that references name: their sum, each reference
// counted, is what is not garbage, or more where references share bytes. So Unused() is never more
// than what a compaction can win, and exact where nothing is shared.
class Data_Heap {
  public:
    // So many bytes may be read behind the end.
    static constexpr std::size_t SLACK = 16;
    // Offsets are signed 32-bit numbers elsewhere.
    static constexpr std::size_t MOST = 0x7FFFFFFF;
    // Bytes of the heap that a quad refers to: the words that its record has no room for.
    static constexpr std::size_t QUAD_REST = 12;

    [[nodiscard]] std::size_t Size() const noexcept { return m_oBytes.Size(); }
    [[nodiscard]] std::size_t HeapBytes() const noexcept { return m_oBytes.HeapBytes(); }
    // Bytes that room for so many more takes in addition.
    [[nodiscard]] std::size_t GrowthFor(std::size_t uSize) const noexcept {
        return m_oBytes.GrowthFor(uSize);
    }
    // Bytes that there is room for.
    [[nodiscard]] std::size_t Capacity() const noexcept { return m_oBytes.Capacity(); }
    [[nodiscard]] const char* Begin() const noexcept { return m_oBytes.Beg(); }
    [[nodiscard]] const char* At(u2_t uOffset) const noexcept { return m_oBytes.Beg() + uOffset; }
    // For who has just added them.
    [[nodiscard]] char* WritableAt(u2_t uOffset) noexcept { return m_oBytes.Beg() + uOffset; }

    // Raises unless so many more bytes fit. Whoever adds several texts, or changes anything before
    // the last of them, asks first; all others are refused by what they call, which then has not
    // changed anything.
    void CheckRoom(u3_t uSize) {
        Start();
        if (uSize > m_uMost || m_oBytes.Size() > m_uMost - uSize) [[unlikely]]
            RaiseFull();
    }

    // Makes the empty text be there.
    void Start() {
        if (m_oBytes.Size() != 0) return;
        m_oBytes.Add('\0');
        Measure();
    }
    // Appends bytes and returns their offset; they may lie in the heap.
    u2_t Add(const void* pData, std::size_t uSize) {
        return Append(static_cast<const char*>(pData), uSize, 0);
    }
    // Appends a text and its NUL. The text is valid UTF-8 without a NUL.
    u2_t AddText(std::string_view sText) {
        Start();
        return sText.empty() ? 0 : Append(sText.data(), sText.size(), 1);
    }
    // The same for a text that needs no second look, where there is room; 0 for all others.
    u2_t TryAddText(std::string_view sText) noexcept {
        const u2_t uOffset = TryAddNext(sText);
        return uOffset != 0 || m_oBytes.Size() != 0 ? uOffset : TryAddFirst(sText);
    }
    // The same, but that a first one is among the others: there is no call in it.
    u2_t TryAddNext(std::string_view sText) noexcept {
        const std::size_t uOffset = m_oBytes.Size();
        const std::size_t uEnd = uOffset + sText.size();
        char* const pText = m_oBytes.End();
        if (uEnd >= m_uQuickEnd || sText.empty() ||
            !CopyAsciiText(pText, sText.data(), sText.size())) {
            return 0;
        }
        pText[sText.size()] = 0;
        m_oBytes.SetSize(uEnd + 1);
        return static_cast<u2_t>(uOffset);
    }
    // The words of a quad: the first one stands in the record, the others in the heap.
    using Quad = std::array<u2_t, 4>;
    [[nodiscard]] Quad QuadOf(const Data_Node& oNode) const noexcept {
        Quad auWord{oNode.uWord3};
        std::memcpy(auWord.data() + 1, At(oNode.uWord2), QUAD_REST);
        return auWord;
    }
    // Appends those that do not stand in the record, and puts others in their place.
    u2_t AddQuad(const Quad& auWord) { return Add(auWord.data() + 1, QUAD_REST); }
    void SetQuad(u2_t uOffset, const Quad& auWord) noexcept {
        std::memcpy(m_oBytes.Beg() + uOffset, auWord.data() + 1, QUAD_REST);
    }
    // Whether a text lies in the heap with its NUL behind it.
    [[nodiscard]] bool Owns(std::string_view sText) const noexcept {
        return sText.data() >= m_oBytes.Beg() && sText.data() + sText.size() < m_oBytes.End() &&
               sText.data()[sText.size()] == 0;
    }

    // ---- references -------------------------------------------------------

    // Bytes that the value of a node refers to.
    [[nodiscard]] static std::size_t BytesOf(const Data_Node& oNode) noexcept {
        switch (oNode.GetType()) {
            case Data_Node::String: return oNode.uWord2 != 0 ? oNode.uWord3 : 0;
            case Data_Node::Binary: return oNode.uWord3;
            case Data_Node::Quad: return QUAD_REST;
            default: return 0;
        }
    }
    // Those of an attribute value at uOffset.
    [[nodiscard]] std::size_t BytesOf(u2_t uOffset) const noexcept {
        return uOffset != 0 ? std::strlen(At(uOffset)) + 1 : 0;
    }
    // A reference is given up; one more is made to what has some already.
    void Drop(std::size_t uBytes) noexcept { m_iUnused += static_cast<i3_t>(uBytes); }
    void Share(std::size_t uBytes) noexcept { m_iUnused -= static_cast<i3_t>(uBytes); }
    // Bytes that a compaction wins at least.
    [[nodiscard]] u3_t Unused() const noexcept {
        return m_iUnused > 0 ? static_cast<u3_t>(m_iUnused) : 0;
    }
    // Whether no more is taken for unused than is, where all references name uBytes.
    [[nodiscard]] bool IsWithin(u3_t uBytes) const noexcept {
        return m_iUnused + static_cast<i3_t>(uBytes) <= static_cast<i3_t>(m_oBytes.Size());
    }
    // The bytes that all references name, once for each; and setting it from them.
    [[nodiscard]] u3_t Referred() const noexcept {
        return static_cast<u3_t>(static_cast<i3_t>(m_oBytes.Size()) - m_iUnused -
                                 (m_oBytes.Size() != 0));
    }
    void SetReferred(u3_t uBytes) noexcept {
        m_iUnused =
            static_cast<i3_t>(m_oBytes.Size()) - static_cast<i3_t>(uBytes) - (m_oBytes.Size() != 0);
    }

    // ---- as a whole -------------------------------------------------------

    // How far it has got, to be taken back to.
    struct Mark {
        std::size_t uSize;
        i3_t iUnused;
    };
    [[nodiscard]] Mark GetMark() const noexcept { return {m_oBytes.Size(), m_iUnused}; }
    void TakeBack(const Mark& o) noexcept {
        m_oBytes.Truncate(o.uSize > 1 ? o.uSize : 1);
        m_iUnused = o.iUnused;
    }
    void Reset() noexcept {
        m_oBytes.Truncate(0);
        m_iUnused = 0;
        Measure();
    }
    // Gives back memory beyond what is used and SLACK, where that is most of it.
    void Trim() {
        m_oBytes.TrimMost(SLACK);
        Measure();
    }
    // Exchanges the bytes. Who brings others says what is referred to, and has left SLACK.
    void Swap(Arr<char>& oBytes) noexcept {
        m_oBytes.Swap(oBytes);
        Measure();
    }

    // For tests: a border before that of offsets.
    void SetMost(std::size_t uMost) noexcept {
        m_uMost = uMost;
        Measure();
    }

  private:
    // What small trees need.
    static constexpr std::size_t FIRST = 256 - Mem::HEADER_SIZE;

    // To be called when there is another block, or the first byte in it.
    void Measure() noexcept {
        const std::size_t uRoom = m_oBytes.Capacity();
        const bool bAny = m_oBytes.Size() != 0 && uRoom > SLACK && uRoom <= m_uMost;
        m_uQuickEnd = bAny ? uRoom - SLACK : 0;
    }
    u2_t Append(const char* pSrc, std::size_t uSize, std::size_t uNul);
    char* Space(std::size_t uSize);
    [[nodiscard]] u2_t TryAddFirst(std::string_view sText) noexcept;
    [[noreturn]] static void RaiseFull();

    Arr_Near<char, FIRST> m_oBytes;
    std::size_t m_uMost = MOST;
    // Texts that end in front of it have room, whatever else there is to ask: 0 in a heap without
    // its first byte, or near its border.
    std::size_t m_uQuickEnd = 0;
    i3_t m_iUnused = 0;  // bytes less those that references name; negative where they share
};

}  // namespace vok

#endif  // VOK_DATA_TEXT_HEAP_H

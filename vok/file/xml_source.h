// SPDX-License-Identifier: MIT
// The text of an XML document, or of another one, as UTF-8, piece by piece. Internal.
#ifndef VOK_FILE_XML_SOURCE_H
#define VOK_FILE_XML_SOURCE_H

#include "vok/file/buf.h"

namespace vok::xml {

// Whether a document may say its coding in an XML declaration; in others such a beginning is text.
enum class Declares { No, Xml };

enum class Coding { Utf8, Utf16LittleEndian, Utf16BigEndian, Latin1, Windows1252 };

// Reads a memory buffer in place; any other stream in pieces, so that no more is held than
// the longest token and one piece. Documents in another coding than UTF-8 are read whole and
// converted first.
class Source {
  public:
    // Raises "unknown character coding: "%0"" for a declared coding other than UTF-8,
    // US-ASCII, ISO-8859-1, windows-1252, and UTF-16 with or without byte-order mark.
    Source(File_Stream& oIn, Declares eDeclares);
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    // Unless Leave was called a memory buffer is left behind its last byte, others where reading
    // has got to.
    ~Source();

    // Ends reading: leaves the stream right behind p, if it can seek, so that others may read on.
    // Returns how many of the bytes that were read already stand behind p.
    u3_t Leave(const char* p);

    // The bytes at hand.
    [[nodiscard]] const char* Begin() const noexcept { return m_pBegin; }
    [[nodiscard]] const char* End() const noexcept { return m_pEnd; }

    // Reads more, and drops what lies before p; both pointers move along with the bytes that are
    // kept. False, and nothing is changed, at the end of the stream. Reads at least as much again
    // as it has to keep, so that who looks at a token anew after each call does so in linear time.
    bool Fetch(const char*& p, const char*& pEnd);
    // Whether they are others than those of the stream.
    [[nodiscard]] bool IsConverted() const noexcept { return m_eCoding != Coding::Utf8; }
    // Whether it is known that no more than the bytes at hand will come. Then Fetch returns false.
    [[nodiscard]] bool IsAtEnd() const noexcept { return m_bAtEnd; }

    // Where a byte at hand stands in the stream: bytes from where reading began, lines and
    // characters from 1.
    struct Place {
        u3_t uOffset;
        u2_t uLine;
        u2_t uColumn;
    };
    [[nodiscard]] Place PlaceOf(const char* p) const noexcept;
    // The offset alone: constant time for UTF-8, else linear in the distance to the place that was
    // asked for last.
    [[nodiscard]] u3_t OffsetOf(const char* p) const noexcept;
    // Bytes of memory held.
    [[nodiscard]] std::size_t Held() const noexcept { return m_oBytes.Capacity(); }

  private:
    void DetectCoding(Declares eDeclares);
    void Convert();
    void Pass(const char* pFrom, const char* pTo, Place& oPlace) const noexcept;
    [[nodiscard]] u3_t StreamBytes(const char* pFrom, const char* pTo) const noexcept;

    File_Stream& m_oIn;
    File_Buf* m_pBuffer;  // the stream, if it is one in memory
    Coding m_eCoding = Coding::Utf8;
    bool m_bAtEnd = false;
    const char* m_pBegin = nullptr;
    const char* m_pEnd = nullptr;
    Place m_oPlace{0, 1, 1};  // of m_pBegin
    u3_t m_uRead = 0;         // bytes read of a stream that is no memory buffer
    // Of the stream, once all were converted: half a unit at the end of UTF-16 was converted like a
    // whole one.
    u3_t m_uBytes = ~u3_t{0};
    // The place that OffsetOf was asked for last, of what was converted.
    mutable const char* m_pAsked = nullptr;
    mutable u3_t m_uAsked = 0;
    Arr<char> m_oBytes;  // what was read of another stream, or converted
};

}  // namespace vok::xml

#endif  // VOK_FILE_XML_SOURCE_H

// SPDX-License-Identifier: MIT
// Texts of lines, words, numbers and fields.
#ifndef VOK_FILE_SCAN_H
#define VOK_FILE_SCAN_H

#include <limits>
#include <memory>
#include <string_view>

#include "vok/base/limits.h"
#include "vok/file/stream.h"

namespace vok {

// Reads a text from front to end, from any stream, as UTF-8: one in UTF-16 that begins with its
// byte-order mark is converted, that of UTF-8 is skipped. Lines end with LF, CR LF or CR, the last
// one also with the text. Bytes that are no UTF-8 come as they are.
//
//     File_Scan oScan(oIn);
//     std::string_view sLine;
//     while (oScan.ReadLine(sLine)) Use(sLine);
//
// Texts that are given are valid up to the next operation that reads. Nothing that is longer than
// Limits::m_uTextBytes is given: "limit "%0" of %1 exceeded (raise %2)" is raised. Of a stream that
// is no memory buffer no more is held than the longest of them, and what is held back, twice, and
// 256 KiB; of UTF-16 all. Every operation is linear in what it passes. Errors are those of the
// stream as well. A scanner is used by one thread at a time; its stream must outlive it, and is
// left where reading has got to, or behind what was read by Leave().
class File_Scan {
  public:
    // Raises "unknown character coding: "%0"" for UTF-32.
    explicit File_Scan(File_Stream& oIn, const Limits& oLimits = {});
    File_Scan(File_Scan&&) noexcept;
    File_Scan& operator=(File_Scan&&) noexcept;
    ~File_Scan();

    // ---- where it stands --------------------------------------------------

    [[nodiscard]] bool AtEnd();
    // From 1; columns are characters. A line break belongs to the line that it ends.
    [[nodiscard]] u3_t Line() const;
    [[nodiscard]] u3_t Column() const;
    // Bytes of the stream from where reading began.
    [[nodiscard]] u3_t Offset() const;
    // What messages call the stream; "" where it has no name.
    [[nodiscard]] const char* Name() const;

    // ---- characters -------------------------------------------------------

    // The next byte, -1 at the end.
    [[nodiscard]] int Peek();
    // Passes a byte, if it is the next one. Whether it was.
    bool Skip(char c);
    // Up to so many of the next bytes, which stay where they are; less only at the end.
    [[nodiscard]] std::string_view Ahead(std::size_t uMost);
    // Passes blanks and tabs, and with bLines line breaks as well.
    void SkipBlanks(bool bLines = true);

    // ---- lines ------------------------------------------------------------

    // The rest of the line, without its break, which is passed. False at the end of the text.
    bool ReadLine(std::string_view& sLine);

    // ---- words and numbers ------------------------------------------------
    // Each passes blanks and line breaks first, and ends in front of a blank, a line break, or one
    // of the bytes in sEnds. Where something else is there it stays in front of that.

    // Raises "a word expected in "%0", line %1, column %2: "%3"" where there is none.
    [[nodiscard]] std::string_view ReadWord(std::string_view sEnds = {});
    // Decimal, with a sign or without. Raises "an integer expected ...", also for digits with
    // something else behind them, and "number out of range ...".
    [[nodiscard]] i3_t ReadInteger(i3_t iLeast = std::numeric_limits<i3_t>::min(),
                                   i3_t iMost = std::numeric_limits<i3_t>::max(),
                                   std::string_view sEnds = {});
    // With a point and an exponent or without. Raises "a number expected ..." and "number out of
    // range ...": no infinity is made of a number, nor is one read; what is too small is 0.
    [[nodiscard]] double ReadReal(std::string_view sEnds = {});
    // A text in quotes, two of which stand for one in it; it may have line breaks. Raises "a text
    // in quotes expected ..." where there is no quote, and "missing char '%0' in string".
    [[nodiscard]] std::string_view ReadString(char cQuote = '"');

    // ---- fields -----------------------------------------------------------

    struct Field {
        enum class End : u0_t { Separator, Line, Text };  // of what it is the last
        std::string_view m_sText;
        End m_eEnd = End::Text;
        bool m_bQuoted = false;
        bool m_bUnclosed = false;  // its quote does not end: all the rest of the text is in it
        bool m_bBehind = false;    // something stood behind the second quote, and is part of it
    };
    // What stands in front of the next separator or line break, which is passed. One that begins
    // with the quote goes to the next single one, and may have both in it; two stand for one.
    // Within others quotes mean nothing. With 0 for a quote there are none.
    Field ReadField(char cSeparator, char cQuote = '"');

    // ---- holding what was read --------------------------------------------

    // Keeps the text from here on at hand, up to the next Hold or Release.
    void Hold();
    // The text from there up to here. Valid like other texts.
    [[nodiscard]] std::string_view Held() const;
    // Goes back there. Lines count again.
    void Rewind();
    void Release();

    // Ends reading, and leaves a stream that can seek right behind what was passed. Returns how
    // many of the bytes that were read already stand behind it. The scanner is at its end then.
    u3_t Leave();

  private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace vok

#endif  // VOK_FILE_SCAN_H

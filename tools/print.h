// SPDX-License-Identifier: MIT
// What the program says: standard output that is whole or an error, and complaints.
#ifndef TOOLS_PRINT_H
#define TOOLS_PRINT_H

#include <string>
#include <string_view>
#include <vector>

#include "vok/file/stream.h"

namespace tools {

// Writes to standard output. Raises "file write error" once something did not get there, and
// std::length_error for more than AllowPrinting() has allowed.
void Print(std::string_view s);
// What is printed about input that was made to be small and to give much - links with long paths,
// the parts of parts of a deep tree - stays in proportion to its bytes: 200 for each, and 64 MiB.
// Nothing is bounded before the first call; each one allows more.
void AllowPrinting(vok::u3_t uInputBytes) noexcept;
// The same for bytes of an input that was allowed for, without the free ones.
void AllowMorePrinting(vok::u3_t uInputBytes) noexcept;
// What is written to it is printed, however much it is.
[[nodiscard]] vok::File_Stream& StandardOutput();
// For the end of the program: the same for what is still on its way.
void FinishPrinting();

// A line on standard error: "vok: ", and the text as it is: nothing may be in it that a terminal
// takes for a command.
void Complain(const std::string& sText);
// The same of a file, or what is like one: "vok: orders.xml: ...". Both are made visible.
void Complain(const std::string& sFile, const std::string& sText);

// What was printed and complained of, piece by piece.
struct Spoken {
    struct Piece {
        bool bComplaint;
        std::string sText;
    };
    std::vector<Piece> aoPiece;
};
// As long as this lives, what the calling thread prints and complains of is kept for Speak().
class SpeakLater {
  public:
    explicit SpeakLater(Spoken& oSpoken) noexcept;
    ~SpeakLater();
    SpeakLater(const SpeakLater&) = delete;
    SpeakLater& operator=(const SpeakLater&) = delete;
};
void Speak(const Spoken& oSpoken);

}  // namespace tools

#endif  // TOOLS_PRINT_H

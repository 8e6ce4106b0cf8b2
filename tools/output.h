// SPDX-License-Identifier: MIT
// Files that are there whole or not at all, and standard output that is whole or an error.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include <optional>
#include <string>
#include <string_view>

#include "vok/file/buf.h"
#include "vok/file/replacement.h"

namespace tools {

// Ctrl-C, termination, a closed terminal or pipe and a crossed time limit remove what is
// half-written and end the program with 128 and the number of the signal. Files beyond the limit of
// the process are errors like a full disk.
void HandleSignals();

// A file to be written, a vok::File_Replacement; "-" is standard output, which gets everything with
// Commit().
//
// Raises std::invalid_argument for a folder that does not exist and a file that may not be written,
// and what a File_Replacement raises.
class Output {
  public:
    explicit Output(const std::string& sPath);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    [[nodiscard]] vok::File_Stream& Stream() noexcept;
    // Null for standard output.
    [[nodiscard]] vok::File* GetFile() noexcept;
    void Commit(bool bDurable = true);

  private:
    std::optional<vok::File_Replacement> m_oFile;
    vok::File_Buf m_oBuffer{"w"};  // for standard output
};

// For the time that a file is appended to: a signal cuts it back to the size that it has now.
class Appending {
  public:
    explicit Appending(const std::string& sPath);
    ~Appending();
    Appending(const Appending&) = delete;
    Appending& operator=(const Appending&) = delete;

  private:
    std::string m_sPath;
};

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

}  // namespace tools

#endif  // TOOLS_OUTPUT_H

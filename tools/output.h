// SPDX-License-Identifier: MIT
// Files that are there whole or not at all, and standard output that is whole or an error.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include <string>
#include <string_view>

#include "vok/file/file.h"

namespace tools {

// Ctrl-C, termination, a closed terminal or pipe and a crossed time limit remove what is
// half-written and end the program with 128 and the number of the signal. Files beyond the limit of
// the process are errors like a full disk.
void HandleSignals();

// A file to be written. It is made under a name of its own in the same folder and takes its place
// with Commit(); without that it goes away, and what was there stays. What cannot be replaced -
// devices, pipes - is written directly; a link stays, and what it leads to is replaced. The new
// file has the mode of the old one and, where the process may give files away, its owner. "-" is
// standard output, which gets everything with Commit().
//
// Raises std::invalid_argument for a folder that does not exist and a file that may not be written,
// the errors of File and of the file system.
class Output {
  public:
    // bOpen false: the caller makes the file at Beside().
    explicit Output(const std::string& sPath, bool bOpen = true);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    [[nodiscard]] vok::File_Stream& Stream() noexcept;
    [[nodiscard]] const std::string& Beside() const noexcept { return m_sBeside; }
    // bDurable: only once the bytes are on the disk. Many small files are slow that way.
    void Commit(bool bDurable = true);

  private:
    void MakeBeside();
    void RemoveBeside() noexcept;

    std::string m_sPath;    // with links followed
    std::string m_sBeside;  // empty where the file itself is written
    vok::File m_oFile;
    vok::File_Buf m_oBuffer{"w"};  // for standard output
};

// A message about the file that was made last for an Output, with the name of its place in place of
// the one that it is made under.
std::string WithPlace(std::string sMessage);

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

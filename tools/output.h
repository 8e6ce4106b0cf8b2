// Files that are there whole or not at all, and standard output that is whole or an error.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include <string>

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
    void Commit();

  private:
    void MakeBeside();

    std::string m_sPath;    // with links followed
    std::string m_sBeside;  // empty where the file itself is written
    vok::File m_oFile;
    vok::File_Buf m_oBuffer{"w"};  // for standard output
};

// A file that grows in its place, and that is cut back to its old size when the program is
// interrupted meanwhile. One at a time.
class Appended {
  public:
    explicit Appended(const std::string& sPath);
    ~Appended();
    Appended(const Appended&) = delete;
    Appended& operator=(const Appended&) = delete;

  private:
    std::string m_sPath;
};

// Writes to standard output. Raises "file write error" once something did not get there.
void Print(std::string_view s);
// For the end of the program: the same for what is still on its way.
void FinishPrinting();

}  // namespace tools

#endif  // TOOLS_OUTPUT_H

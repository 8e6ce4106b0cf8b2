// Files that are there whole or not at all.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include <string>

#include "vok/file/file.h"

namespace tools {

// Ctrl-C and termination remove what is half-written and end the program with status 130.
void HandleInterrupts();

// A file under a name of its own beside its place, which it takes with Commit(); without that
// it goes away. "-" is standard output, which gets everything with Commit().
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
    std::string m_sPath;
    std::string m_sBeside;
    vok::File m_oFile;
    vok::File_Buf m_oBuffer{"w"};  // for standard output
};

}  // namespace tools

#endif  // TOOLS_OUTPUT_H

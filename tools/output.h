// SPDX-License-Identifier: MIT
// Files that are there whole or not at all.
#ifndef TOOLS_OUTPUT_H
#define TOOLS_OUTPUT_H

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "vok/file/buf.h"
#include "vok/file/replacement.h"

namespace tools {

// Ctrl-C, termination, a closed terminal or pipe and a crossed time limit remove what is
// half-written and end the program with 128 and the number of the signal. Files beyond the limit of
// the process are errors like a full disk.
void HandleSignals();

// So many files are written at a time at most.
inline constexpr unsigned MOST_AT_ONCE = 256;

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
    struct GiveBack {
        void operator()(std::atomic<bool>* pTaken) const noexcept { *pTaken = false; }
    };

    std::unique_ptr<std::atomic<bool>, GiveBack> m_pTaken;  // the place where a signal finds it
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

}  // namespace tools

#endif  // TOOLS_OUTPUT_H

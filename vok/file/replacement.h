// SPDX-License-Identifier: MIT
// A file that is there whole or not at all.
#ifndef VOK_FILE_REPLACEMENT_H
#define VOK_FILE_REPLACEMENT_H

#include <atomic>

#include "vok/file/file.h"

namespace vok {

// A file to be written that takes its place with Commit(); without that it goes away, and what was
// there stays, byte for byte.
//
//     File_Replacement oOut("orders.dgraph");
//     Dgraph_SaveDGraph(oTree, oOut.GetFile());
//     oOut.Commit();
//
// It is made in the same folder, under a name of its own that begins with ".vok-". What cannot be
// replaced - devices, pipes - is written directly. A link stays, and what it leads to is replaced.
// The new file has the mode of the old one and, where the process may give files away, its owner.
// Whoever has the old one open keeps it. Messages have the name of the place.
class File_Replacement {
  public:
    // Where a signal handler finds the path of what is half-written; null while there is none.
    using Watch = std::atomic<const char*>;

    // Makes the folders above that are missing. Raises "could not open file" also for a file that
    // is there and may not be written.
    explicit File_Replacement(const Str& oPath, Watch* pWatch = nullptr);
    File_Replacement(const File_Replacement&) = delete;
    File_Replacement& operator=(const File_Replacement&) = delete;
    ~File_Replacement();

    // Open for writing until Commit().
    [[nodiscard]] File& GetFile() noexcept { return m_oFile; }
    // Whether the place itself is written, as it is no regular file.
    [[nodiscard]] bool IsDirect() const noexcept { return m_oBeside.IsEmpty(); }

    // Closes the file and puts it into its place: the old one or the new one is there at any time,
    // with bDurable also after a power failure, for which the bytes are on the disk first. Many
    // small files are slow that way. Raises "file write error".
    void Commit(bool bDurable = true);

  private:
    void MakeBeside();
    void Remove() noexcept;
    void SetWatch(const char* sPath) noexcept {
        if (m_pWatch != nullptr) m_pWatch->store(sPath);
    }

    Watch* const m_pWatch;
    Str m_oPath;    // with links followed
    Str m_oBeside;  // empty where the file itself is written
    File m_oFile;
};

}  // namespace vok

#endif  // VOK_FILE_REPLACEMENT_H

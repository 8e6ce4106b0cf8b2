// SPDX-License-Identifier: MIT
// Walking through a folder and all that is in it.
#ifndef VOK_FILE_TREE_H
#define VOK_FILE_TREE_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "vok/file/file.h"

namespace vok {

// Comes to everything in a folder, to the entries of each folder in the byte order of their names
// and to a folder before what is in it; the folder at the top is not among them.
//
//     File_Tree oTree("/data");
//     while (oTree.Next()) {
//         if (oTree.Info().IsFile()) Use(oTree.Path());
//     }
//
// What others remove while it walks, what may not be read, names that are no UTF-8, and folders
// that a link leads back into are told and left out. Memory is that of the names in the folders
// that are open, 100 bytes each and more; no folder stays open between two calls. A walk is used by
// one thread at a time.
class File_Tree {
  public:
    // What becomes of an entry.
    enum class Verdict : u0_t {
        Take,   // it is come to, and what is in it
        Below,  // not itself, but what is in it
        Leave   // neither
    };
    using Filter = std::function<Verdict(const File_Tree&)>;
    // Is told of what is left out: its path, as UTF-8 where it is none, and the system's error, a
    // value of errno; of a folder that is one of those above it 40 (ELOOP of Linux).
    using Told = std::function<void(const Str& oPath, u2_t uSystemError)>;
    static constexpr u2_t LEADS_BACK = 40;

    struct Options {
        // Folders that links lead to are walked as well, and links to files are files. Else they
        // are Kind::Link.
        bool m_bFollowLinks = false;
        // Asked for every entry, which Path(), Info() and the others then tell. Null takes all. May
        // throw, as m_oTold may; the walk can then go on behind the entry.
        Filter m_oFilter;
        Told m_oTold;
    };

    // Stands in front of the first entry. Raises "source directory "%0" not found", with the
    // system's reason.
    explicit File_Tree(const Str& oFolder) : File_Tree(oFolder, Options()) {}
    File_Tree(const Str& oFolder, Options oOptions);

    // Goes to the next entry. False behind the last one.
    bool Next();
    // The entries of the folder that it has come to are not gone through. Nothing for others.
    void Leave() noexcept { m_bEnter = false; }

    // Of the entry that it has come to. Folder and name with "/" between them.
    [[nodiscard]] const Str& Path() const noexcept { return m_oPath; }
    // The same from the folder at the top on.
    [[nodiscard]] std::string_view Below() const noexcept { return Behind(m_uTop); }
    [[nodiscard]] std::string_view Name() const noexcept { return Behind(m_uName); }
    [[nodiscard]] const File_Info& Info() const noexcept { return m_oInfo; }
    // 1 for the entries of the folder at the top.
    [[nodiscard]] std::size_t Depth() const noexcept { return m_aoLevel.size(); }
    // Entries that were left out so far and told of.
    [[nodiscard]] u3_t LeftOut() const noexcept { return m_uLeftOut; }

  private:
    struct Level {
        std::vector<std::string> asName;  // the last one comes next
        std::size_t uPath;                // bytes of the path in front of its names
        u3_t uDevice;
        u3_t uNumber;
    };

    [[nodiscard]] std::string_view Behind(std::size_t u) const noexcept {
        return u < m_oPath.Len() ? m_oPath.View().substr(u) : std::string_view();
    }
    [[nodiscard]] bool Enter(u3_t uDevice, u3_t uNumber);
    [[nodiscard]] bool Look(const std::string& sName);
    void Tell(const Str& oPath, u2_t uError);

    Options m_oOptions;
    std::vector<Level> m_aoLevel;
    Str m_oPath;
    std::size_t m_uTop = 0;
    std::size_t m_uName = 0;
    File_Info m_oInfo;
    u3_t m_uDevice = 0;
    u3_t m_uNumber = 0;
    bool m_bEnter = false;  // whether the entry is a folder that is to be gone through
    u3_t m_uLeftOut = 0;
};

}  // namespace vok

#endif  // VOK_FILE_TREE_H

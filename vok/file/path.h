// SPDX-License-Identifier: MIT
// Paths as texts: their parts, and how they are put together. The file system is not asked.
#ifndef VOK_FILE_PATH_H
#define VOK_FILE_PATH_H

#include <string_view>

#include "vok/base/str.h"

namespace vok {

// All operations take UTF-8, and with style Windows both separators, "C:" and "\\server\share";
// they give "/" between names. They do not know what is there: "a/../b" is "b" for them, also where
// a is a link that leads elsewhere. Linear in the texts; errors are those of Mem, and what is said
// at Join.
//
//     File_Path::Dir("/a/b.tar.gz")            "/a"
//     File_Path::Name("/a/b.tar.gz")           "b.tar.gz"
//     File_Path::Stem("/a/b.tar.gz")           "b.tar"
//     File_Path::Ext("/a/b.tar.gz")            ".gz"
//     File_Path::Normal("a//b/./../c/")        "a/c"
//     File_Path::Join("/data", "in/x.csv")     "/data/in/x.csv"
//     File_Path::Join("/data", "../x")         raises
//     File_Path::Relative("/data/x", "/data/in")   "../x"
class File_Path {
  public:
    enum class Style : u0_t { Posix, Windows };
#if defined(_WIN32)
    static constexpr Style NATIVE = Style::Windows;
#else
    static constexpr Style NATIVE = Style::Posix;
#endif

    // What is in front of the last name, without separators at its end but those of a root; empty
    // where there is nothing. Separators behind the last name do not count.
    [[nodiscard]] static Str Dir(std::string_view sPath, Style eStyle = NATIVE);
    // The last name; empty for a root. The view is into sPath.
    [[nodiscard]] static std::string_view Name(std::string_view sPath, Style eStyle = NATIVE);
    // The last name up to its extension.
    [[nodiscard]] static std::string_view Stem(std::string_view sPath, Style eStyle = NATIVE);
    // From the last "." of the last name on; empty where that begins it (".profile") or is missing,
    // or for "." and "..".
    [[nodiscard]] static std::string_view Ext(std::string_view sPath, Style eStyle = NATIVE);

    // Whether a path begins at a root: "/", "C:/" or "//server/share". "C:x" and, on Windows, "/x"
    // do not: they depend on where the process is.
    [[nodiscard]] static bool IsAbsolute(std::string_view sPath, Style eStyle = NATIVE) noexcept;

    // The shortest path that means the same: without ".", without names in front of "..", without
    // separators twice or at the end. A ".." at a root is dropped, at the beginning of a relative
    // path it stays. What is empty then is ".".
    [[nodiscard]] static Str Normal(std::string_view sPath, Style eStyle = NATIVE);

    // A path below a folder, normalised. Raises "path "%1" leads out of "%0"" for one that is
    // absolute, names a drive, or goes above the folder; on Windows also for one with ":" in a
    // name, which is a stream of a file, or with a name that is ".." but for the blanks and dots
    // behind it that Windows drops. With bOutside all of them are let pass; an absolute one, or one
    // of a drive, is then taken as it is, and "/x" on Windows goes to the drive of the folder.
    [[nodiscard]] static Str Join(std::string_view sFolder, std::string_view sPath,
                                  bool bOutside = false, Style eStyle = NATIVE);

    // A path of this system from a root on, normalised: a relative one begins at the folder where
    // the process is. Raises "path or file "%0" does not exist" where that cannot be told.
    [[nodiscard]] static Str Absolute(std::string_view sPath);
    // How to get to a path from a folder: both absolute, or both from the same place on. "." where
    // they are the same, the normalised path where they have not the same root, or where the folder
    // begins with ".." that the path does not have. Case counts, but in the letters of drives.
    [[nodiscard]] static Str Relative(std::string_view sPath, std::string_view sFolder,
                                      Style eStyle = NATIVE);
};

}  // namespace vok

#endif  // VOK_FILE_PATH_H

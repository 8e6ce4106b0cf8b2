// SPDX-License-Identifier: MIT
#include "vok/file/path.h"
#include "tests/file/file_support.h"

namespace vok {
namespace {

constexpr auto P = File_Path::Style::Posix;
constexpr auto W = File_Path::Style::Windows;

std::string Text(const Str& o) {
    return std::string(o.View());
}

TEST(File_Path, TakesPathsApart) {
    struct Case {
        const char* sPath;
        File_Path::Style eStyle;
        const char* sDir;
        const char* sName;
        const char* sStem;
        const char* sExt;
        bool bAbsolute;
    };
    const Case CASES[] = {
        {"/a/b.tar.gz", P, "/a", "b.tar.gz", "b.tar", ".gz", true},
        {"b", P, "", "b", "b", "", false},
        {"a//b//", P, "a", "b", "b", "", false},
        {"/a", P, "/", "a", "a", "", true},
        {"//", P, "//", "", "", "", true},
        {"", P, "", "", "", "", false},
        {"a/.profile", P, "a", ".profile", ".profile", "", false},
        {"a.d/b", P, "a.d", "b", "b", "", false},
        {"a/..", P, "a", "..", "..", "", false},
        {"a/b.", P, "a", "b.", "b", ".", false},
        {"a\\b", P, "", "a\\b", "a\\b", "", false},
        {"größe/日本.txt", P, "größe", "日本.txt", "日本", ".txt", false},
        {"C:\\a\\b.txt", W, "C:/a", "b.txt", "b", ".txt", true},
        {"C:/", W, "C:/", "", "", "", true},
        {"C:b", W, "C:", "b", "b", "", false},
        {"\\a", W, "/", "a", "a", "", false},
        {"\\\\server\\share\\a\\b", W, "//server/share/a", "b", "b", "", true},
        {"\\\\server\\share", W, "//server/share", "", "", "", true},
        {"a/b\\c", W, "a/b", "c", "c", "", false},
        {"C:\\a", P, "", "C:\\a", "C:\\a", "", false},
    };
    for (const Case& o : CASES) {
        EXPECT_EQ(Text(File_Path::Dir(o.sPath, o.eStyle)), o.sDir) << o.sPath;
        EXPECT_EQ(File_Path::Name(o.sPath, o.eStyle), o.sName) << o.sPath;
        EXPECT_EQ(File_Path::Stem(o.sPath, o.eStyle), o.sStem) << o.sPath;
        EXPECT_EQ(File_Path::Ext(o.sPath, o.eStyle), o.sExt) << o.sPath;
        EXPECT_EQ(File_Path::IsAbsolute(o.sPath, o.eStyle), o.bAbsolute) << o.sPath;
    }
}

TEST(File_Path, Normalises) {
    struct Case {
        const char* sPath;
        File_Path::Style eStyle;
        const char* sNormal;
    };
    const Case CASES[] = {
        {"a//b/./../c/", P, "a/c"},
        {"", P, "."},
        {"./", P, "."},
        {"a/..", P, "."},
        {"../a/..", P, ".."},
        {"../../a", P, "../../a"},
        {"/../a", P, "/a"},
        {"/", P, "/"},
        {"///a/b/..", P, "/a"},
        {"a/../..", P, ".."},
        {"C:\\a\\.\\..\\b", W, "C:/b"},
        {"C:\\..\\a", W, "C:/a"},
        {"C:..\\a", W, "C:../a"},
        {"C:a\\..", W, "C:"},
        {"\\\\s\\t\\..\\a", W, "//s/t/a"},
        {"\\\\s\\t", W, "//s/t/"},
        {"a\\..\\..\\b", W, "../b"},
        {"a\\b", P, "a\\b"},
    };
    for (const Case& o : CASES) {
        const Str oNormal = File_Path::Normal(o.sPath, o.eStyle);
        EXPECT_EQ(Text(oNormal), o.sNormal) << o.sPath;
        EXPECT_EQ(Text(File_Path::Normal(oNormal.View(), o.eStyle)), o.sNormal) << "again";
    }
}

TEST(File_Path, JoinsBelowAFolder) {
    constexpr const char* OUT = nullptr;
    struct Case {
        const char* sFolder;
        const char* sPath;
        File_Path::Style eStyle;
        const char* sInside;  // OUT where it is refused
        const char* sAnywhere;
    };
    const Case CASES[] = {
        {"/data", "in/x.csv", P, "/data/in/x.csv", "/data/in/x.csv"},
        {"/data", "a/../b", P, "/data/b", "/data/b"},
        {"", "a", P, "a", "a"},
        {"/data", "", P, "/data", "/data"},
        {"/data", "../x", P, OUT, "/x"},
        {"/data", "a/../../x", P, OUT, "/x"},
        {"/data", "/x", P, OUT, "/x"},
        {"/data", "...", P, "/data/...", "/data/..."},
        {"/data", "c:x", P, "/data/c:x", "/data/c:x"},
        {"d", "C:\\x", W, OUT, "C:/x"},
        {"d", "C:x", W, OUT, "C:x"},
        {"d", "\\x", W, OUT, "/x"},
        {"C:\\d", "\\x", W, OUT, "C:/x"},
        {"d", "\\\\s\\t\\x", W, OUT, "//s/t/x"},
        {"d", "a\\..\\..\\x", W, OUT, "x"},
        {"d", ".. \\x", W, OUT, "d/.. /x"},
        {"d", "...", W, OUT, "d/..."},
        {"d", "aa:b", W, OUT, "d/aa:b"},
        {"C:", "a", W, "C:a", "C:a"},
        {"C:\\", "a\\b", W, "C:/a/b", "C:/a/b"},
    };
    for (const Case& o : CASES) {
        std::string sInside;
        const std::string sRaised =
            Failing([&] { sInside = Text(File_Path::Join(o.sFolder, o.sPath, false, o.eStyle)); });
        if (o.sInside != OUT) {
            EXPECT_EQ(sInside, o.sInside) << sRaised;
        } else {
            EXPECT_EQ(sRaised,
                      std::string("path \"") + o.sPath + "\" leads out of \"" + o.sFolder + '"');
        }
        EXPECT_EQ(Text(File_Path::Join(o.sFolder, o.sPath, true, o.eStyle)), o.sAnywhere);
    }
}

TEST(File_Path, GoesFromAFolderToAPath) {
    struct Case {
        const char* sPath;
        const char* sFolder;
        File_Path::Style eStyle;
        const char* sRelative;
    };
    const Case CASES[] = {
        {"/data/x", "/data/in", P, "../x"},
        {"/data", "/data/", P, "."},
        {"/a/b", "/", P, "a/b"},
        {"/", "/a/b", P, "../.."},
        {"a/b", "a", P, "b"},
        {"a", "b/c", P, "../../a"},
        {"a", "/b", P, "a"},
        {"a", "..", P, "a"},
        {"../a", "..", P, "a"},
        {"a/b", ".", P, "a/b"},
        {"C:\\a", "c:/b", W, "../a"},
        {"C:\\a", "D:\\a", W, "C:/a"},
        {"\\\\s\\t\\a", "//s/t/b", W, "../a"},
    };
    for (const Case& o : CASES) {
        EXPECT_EQ(Text(File_Path::Relative(o.sPath, o.sFolder, o.eStyle)), o.sRelative)
            << o.sPath << " from " << o.sFolder;
    }
    const Str oHere = File_Path::Absolute("");
    EXPECT_TRUE(File_Path::IsAbsolute(oHere.View()));
    EXPECT_EQ(Text(File_Path::Relative(File_Path::Absolute("a/../b").View(), oHere.View())), "b");
}

}  // namespace
}  // namespace vok

// SPDX-License-Identifier: MIT
// The program as a shell sees it: output, messages, exit status, files.
#ifndef TESTS_TOOLS_PROGRAM_SUPPORT_H
#define TESTS_TOOLS_PROGRAM_SUPPORT_H

#include <algorithm>
#include <span>
#include <sstream>

#include "tests/support.h"

namespace vok {

using namespace std::string_literals;
namespace fs = std::filesystem;

struct Outcome {
    int iExit;
    std::string sOut;
    std::string sErr;
};

class Program : public testing::Test {
  protected:
    static Outcome Run(const std::string& sArguments, const std::string& sIn = {},
                       const std::string& sBefore = {}) {
        ToDisk("in", sIn);
        const std::string sLine = sBefore + s_sProgram + ' ' + sArguments + " <in >out 2>err";
        int iStatus = std::system(sLine.c_str());
#ifdef _WIN32
        // On a busy machine Wine does not get every shell to start, nor every program of one, and
        // says so with a status of the shell's own or with none. Then nothing has run.
        constexpr int NO_SUCH_PROGRAM = 9009;
        const bool bSilent = OnDisk("out").empty() && OnDisk("err").empty();
        if (iStatus == -1 || iStatus == NO_SUCH_PROGRAM || (iStatus != 0 && bSilent)) {
            iStatus = std::system(sLine.c_str());
        }
#endif
#ifdef WEXITSTATUS
        return {WEXITSTATUS(iStatus), OnDisk("out"), OnDisk("err")};
#else
        return {iStatus, OnDisk("out"), OnDisk("err")};
#endif
    }
    // What "hash" says of a file.
    static std::string HashOf(const std::string& sName) {
        const Outcome o = Run("hash " + sName);
        EXPECT_EQ(o.iExit, 0) << o.sErr;
        return o.sOut.substr(0, o.sOut.find(' '));
    }
    static std::string Sample(const char* sName) {
        return Native(VOK_SAMPLES "/"s + sName);
    }

    // Whether a shell line ends well; "vok" in it is the program.
    static int Shell(const std::string& sLine) {
        return std::system(("vok() { " + s_sProgram + " \"$@\"; }; " + sLine).c_str());
    }
    // What the program leaves beside its files when it should not.
    static std::string LeftBehind() {
        std::string sNames;
        for (const auto& oEntry : fs::recursive_directory_iterator(".")) {
            const std::string sName = oEntry.path().filename().string();
            if (sName.starts_with(".vok-")) sNames += sName + ' ';
        }
        return sNames;
    }

    // Of cases that take a program each: where that is slow, the first few.
    template <class Cases>
    static auto Affordable(const Cases& o, std::size_t uFew) {
        return std::span(std::data(o),
                         VOK_SLOW_PROGRAM ? std::min(std::size(o), uFew) : std::size(o));
    }

  protected:
    // A path as the shell takes it, from whatever drive and folder it is called.
    static std::string Native(const std::string& sPath) {
        return fs::absolute(sPath).make_preferred().string();
    }
    static inline const std::string s_sProgram = Native(VOK_PROGRAM_PATH);
    Scratch_Dir m_oDir;
};

inline const std::string g_sTree =
    "<R xmlns:dt='urn:schemas-microsoft-com:datatypes' v='1'><list><n dt:dt='i4'>1</n>"
    "<n dt:dt='r8'>0.1</n><n dt:dt='boolean'>1</n></list><t>one\ntwo</t>"
    "<d dt:dt='dateTime'>2026-11-24T18:35:56.5</d><b dt:dt='bin.base64'><![CDATA[AAE=]]></b>"
    "<to CDNodeIDREF='ID1'/><from CDNodeID='ID1'/></R>";

// The first words of the lines that "hash" prints.
inline Texts HashesIn(const std::string& sOut) {
    Texts asHash;
    std::istringstream oLines(sOut);
    for (std::string sLine; std::getline(oLines, sLine);) {
        asHash.push_back(sLine.substr(0, sLine.find(' ')));
    }
    return asHash;
}

}  // namespace vok

#endif  // TESTS_TOOLS_PROGRAM_SUPPORT_H

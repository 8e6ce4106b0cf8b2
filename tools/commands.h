// The commands of the program. Each returns the exit status and may throw what the library
// throws; main() turns that into a message.
#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tools {

enum Exit : int {
    EXIT_GOOD = 0,
    EXIT_NEGATIVE = 1,  // nothing found, a difference, a faulty file
    EXIT_TROUBLE = 2,   // the question could not be answered
};

struct ConvertOptions {
    std::string sIn;
    std::string sOut;
    std::string sFrom;  // empty: by content
    std::string sTo;    // empty: by extension
    std::string sVersion = "1.3.0";
    bool bCompress = false;
    bool bZip = false;
    bool bLossless = false;
    bool bCompact = false;  // JSON on one line
    std::string sRecords;   // each node at this path by itself; empty: the document as a whole
};
int Convert(const ConvertOptions& o);

struct ShowOptions {
    std::string sFile;
    std::string sPath = "/";
    std::optional<unsigned> uDepth;  // levels shown below the nodes at the path
    bool bPlain = false;
    bool bJson = false;
};
int Show(const ShowOptions& o);
int ShowJson(const ShowOptions& o);

struct GetOptions {
    std::string sFile;
    std::string sPath;  // as a shell has it
    bool bNull = false;
    bool bCount = false;
    bool bPaths = false;
    bool bJson = false;
    std::optional<std::string> sDefault;
};
int Get(const GetOptions& o);

int Info(const std::string& sFile);
// uAtOnce: how many at a time.
int Check(const std::vector<std::string>& asFile, unsigned uAtOnce);

struct DiffOptions {
    std::string sA;
    std::string sB;
    bool bQuiet = false;
};
int Diff(const DiffOptions& o);

struct HashOptions {
    std::vector<std::string> asFile;
    std::string sPath = "/";
    bool bSha256 = false;
};
int Hash(const HashOptions& o);

struct InspectOptions {
    std::string sFile;
    std::string sPath;  // empty: everything
    std::optional<std::uint64_t> uOffset;
    std::uint64_t uFields = 0;  // shown at most; 0: all
    bool bPlain = false;
    bool bJson = false;
};
int Inspect(const InspectOptions& o);

int Salvage(const std::string& sIn, const std::string& sOut);

int ZipList(const std::string& sArchive);
int ZipTest(const std::string& sArchive);
int ZipExtract(const std::string& sArchive, const std::string& sFolder,
               const std::vector<std::string>& asMember);
int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore);

}  // namespace tools

#endif  // TOOLS_COMMANDS_H

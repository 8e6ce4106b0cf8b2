// SPDX-License-Identifier: MIT
// The commands of the program. Each returns the exit status and may throw what the library
// throws; main() turns that into a message.
#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/edit.h"
#include "vok/compare/diff.h"

namespace tools {

enum Exit : int {
    EXIT_GOOD = 0,
    EXIT_NEGATIVE = 1,  // nothing found, a difference, a faulty file
    EXIT_TROUBLE = 2,   // the question could not be answered
};

struct ConvertOptions {
    std::string sIn;
    std::string sOut;
    std::vector<std::string> asIn;  // in place of both: these, each to a file in sInto
    std::string sInto;
    unsigned uAtOnce = 1;  // how many of them at a time
    std::string sFrom;     // empty: by content
    std::string sTo;       // empty: by extension
    std::string sVersion = "1.3.0";
    bool bCompress = false;
    bool bZip = false;
    bool bLossless = false;
    bool bCompact = false;     // JSON on one line
    bool bAttachable = false;  // a dump that can be used where it lies
    std::string sRecords;      // each node at this path by itself; empty: the document as a whole
};
int Convert(const ConvertOptions& o);

struct ShowOptions {
    std::string sFile;
    std::string sPath = "/";
    std::optional<unsigned> uDepth;  // levels shown below the nodes at the path
    bool bPlain = false;
    bool bJson = false;
    bool bHtml = false;
    bool bBytes = false;     // in the page
    std::string sOut = "-";  // of a page
};
int Show(const ShowOptions& o);
int ShowJson(const ShowOptions& o);
int ShowHtml(const ShowOptions& o);

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

int Info(const std::string& sFile, bool bJson);

struct CheckOptions {
    std::vector<std::string> asFile;
    unsigned uAtOnce = 1;  // how many at a time
    bool bJson = false;
};
int Check(const CheckOptions& o);

struct DiffOptions {
    std::string sA;
    std::string sB;
    bool bQuiet = false;
    bool bByPosition = false;
    bool bJson = false;
    bool bHtml = false;
    vok::Data_DiffOptions oCompare;
    std::string sOut;  // where the patch or the page goes; empty: differences are listed
    std::string sTo;   // its form; empty: by extension
};
int Diff(const DiffOptions& o);

struct EditOptions {
    std::string sFile;
    std::string sOut;
    std::string sTo;  // empty: by extension, else that of the file
    bool bInPlace = false;
    bool bLossless = false;
    std::vector<Edit> aoEdit;
};
int EditFile(const EditOptions& o);

struct HashOptions {
    std::vector<std::string> asFile;
    unsigned uAtOnce = 1;  // how many at a time
    std::string sPath = "/";
    bool bSha256 = false;
    bool bJson = false;
};
int Hash(const HashOptions& o);

struct PatchOptions {
    std::string sIn;
    std::string sPatch;
    std::string sOut;
    std::string sTo;  // empty: by extension
};
int Patch(const PatchOptions& o);

struct MergeOptions {
    std::string sBase;
    std::string sA;
    std::string sB;
    std::string sOut;
    std::string sTo;  // empty: by extension
    vok::Data_DiffOptions oCompare;
    bool bOurs = false;    // A counts where both have changed the same
    bool bTheirs = false;  // B does
};
int Merge(const MergeOptions& o);

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

int ZipList(const std::string& sArchive, bool bJson);
int ZipTest(const std::string& sArchive);
int ZipExtract(const std::string& sArchive, const std::string& sFolder,
               const std::vector<std::string>& asMember);
int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore);

}  // namespace tools

#endif  // TOOLS_COMMANDS_H

// SPDX-License-Identifier: MIT
// vok zip add: files become members.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/commands.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/progress.h"
#include "tools/say.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/base/utf8.h"
#include "vok/file/tree.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

constexpr vok::u2_t UNIX_FILE = 0x8000;
constexpr vok::u2_t UNIX_FOLDER = 0x4000;
constexpr vok::u2_t DOS_FOLDER = 0x10;

// A file or folder and its name as a member.
struct Addition {
    fs::path oPath;
    std::string sName;
    bool bFolder;
};

// Adds one to the list unless it is nothing that an archive holds. Returns whether that is well.
bool Collect(const fs::path& oPath, std::vector<Addition>& aoAddition) {
    const bool bFolder = fs::is_directory(oPath);
    std::string sName = ToText(oPath.lexically_normal().relative_path());
    while (sName.starts_with("../")) sName.erase(0, 3);
    if (sName.empty() || sName == "." || sName == "./" || sName == "..") return true;
    if (bFolder && !sName.ends_with('/')) sName += '/';
    if (!bFolder && !fs::is_regular_file(oPath)) {
        Tell(ToText(oPath), Say("is neither a file nor a folder: not added"));
        return false;
    }
    // Bytes that are no UTF-8 would be stored as other ones, and so be another name.
    if (!vok::Zip_IsSafeName(sName) || !vok::IsUtf8(sName.data(), sName.size())) {
        Tell(sName, Say("is no name for a member: not added"));
        return false;
    }
    aoAddition.push_back({oPath, std::move(sName), bFolder});
    return true;
}

// Files, and folders with all that is in them, by name and each once; never the archive itself.
std::vector<Addition> Collect(const std::string& sArchive, const std::vector<std::string>& asFile,
                              int& iExit) {
    std::vector<Addition> aoAddition;
    const auto oCollect = [&](const fs::path& oPath) {
        if (!Collect(oPath, aoAddition)) iExit = EXIT_NEGATIVE;
    };
    for (const std::string& sFile : asFile) {
        const fs::path oFile = ToPath(sFile);
        if (!fs::exists(oFile)) throw std::invalid_argument(Say("\"%0\" does not exist", {sFile}));
        oCollect(oFile);
        if (!fs::is_directory(oFile)) continue;
        vok::File_Tree::Options oOptions;
        oOptions.m_oTold = [](const vok::Str& oPath, vok::u2_t uError) {
            vok::Msg::PathOrFileDoesNotExist(oPath.CStr(), uError);
        };
        vok::File_Tree oTree(vok::Str(sFile), oOptions);
        while (oTree.Next()) oCollect(ToPath(oTree.Path().View()));
    }
    const fs::path oArchive = ToPath(sArchive);
    if (fs::exists(oArchive)) {
        std::erase_if(aoAddition,
                      [&](const Addition& o) { return fs::equivalent(o.oPath, oArchive); });
    }
    const auto oByName = [](const Addition& a, const Addition& b) { return a.sName < b.sName; };
    std::stable_sort(aoAddition.begin(), aoAddition.end(), oByName);
    const auto oSame = [](const Addition& a, const Addition& b) {
        if (a.sName != b.sName) return false;
        if (!fs::equivalent(a.oPath, b.oPath)) {
            throw std::invalid_argument(Say("two files would be the member \"%0\"", {a.sName}));
        }
        return true;
    };
    aoAddition.erase(std::unique(aoAddition.begin(), aoAddition.end(), oSame), aoAddition.end());
    return aoAddition;
}

void Add(vok::Zip_Archive& oArchive, const Addition& o, bool bStore) {
    vok::Zip_NewInfo oInfo;
    const auto oTime = std::chrono::file_clock::to_sys(fs::last_write_time(o.oPath));
    const double dSeconds = std::chrono::duration<double>(oTime.time_since_epoch()).count();
    oInfo.m_uDosDate = vok::Zip_DosDate(dSeconds);
    if (o.bFolder) oInfo.m_uExternalAttributes = DOS_FOLDER;
    if (!vok::sys::IS_WINDOWS) {
        const auto uMode = static_cast<vok::u2_t>(fs::status(o.oPath).permissions()) & 0777;
        oInfo.m_uExternalAttributes |= ((o.bFolder ? UNIX_FOLDER : UNIX_FILE) | uMode) << 16;
    }
    const std::string sTime = vok::Zip_TimeField(dSeconds);
    oArchive.OpenNewFile(vok::Str(o.sName), oInfo, sTime, sTime, {},
                         bStore || o.bFolder ? vok::ZIP_STORED : vok::ZIP_DEFLATED);
    if (!o.bFolder) {
        vok::File oFile(vok::Str(ToText(o.oPath)), "Tr");
        vok::Arr<char> oPiece;
        oPiece.Resize(256 * 1024);
        while (const std::size_t uRead = oFile.Read(oPiece.Beg(), oPiece.Size(), true)) {
            oArchive.Write(oPiece.Beg(), uRead);
        }
    }
    oArchive.CloseCurrentFile();
}

// Says what is in the archive already of what is to be added to it, and behind it.
void TellWhatIsThere(const std::string& sArchive, const std::vector<Addition>& aoAddition) {
    vok::Zip_Archive oOld;
    try {
        oOld.Open(vok::Str(sArchive));
    } catch (const vok::Msg_Exception&) {
        return;  // whatever it is, appending will tell
    }
    if (const vok::u3_t uBehind = oOld.GetGlobalInfo().m_uBehind; uBehind != 0) {
        Tell(sArchive, Say("has %0", {BehindText(uBehind)}));
    }
    for (const Addition& o : aoAddition) {
        if (o.bFolder || !oOld.LocateFile(vok::Str(o.sName))) continue;
        Tell(o.sName, Say("was in the archive already: the new one counts from now on"));
    }
}

}  // namespace

int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore) {
    if (sArchive == "-") {
        throw std::invalid_argument(Say("a zip archive needs a file, not \"-\""));
    }
    int iExit = EXIT_GOOD;
    const std::vector<Addition> aoAddition = Collect(sArchive, asFile, iExit);
    const fs::file_status oThere = fs::status(ToPath(sArchive));
    if (fs::exists(oThere) && !fs::is_regular_file(oThere)) {
        throw std::invalid_argument(Say("\"%0\" is no regular file", {sArchive}));
    }
    const bool bNew = !fs::exists(oThere) || fs::file_size(ToPath(sArchive)) == 0;
    if (!bNew) TellWhatIsThere(sArchive, aoAddition);
    Progress oProgress("adding");
    // A new archive is made beside its place; one that is appended to can be read as it was until
    // it is complete.
    std::optional<Output> oNew;
    std::optional<Appending> oOld;
    vok::Zip_Archive oArchive;
    if (bNew) {
        oArchive.Open(*oNew.emplace(sArchive).GetFile());
    } else {
        oArchive.Open(vok::Str(sArchive), "a");
    }
    // Its size is that of the old archive as long as nobody else may write to it: from now on.
    if (!bNew) oOld.emplace(sArchive);
    for (const Addition& o : aoAddition) Add(oArchive, o, bStore);
    oArchive.Close();
    if (bNew) {
        oNew->Commit();
    } else if (!vok::sys::SyncFile(sArchive.c_str())) {
        vok::Msg::FileWriteError(sArchive.c_str(), 0, 0, vok::sys::RuntimeError());
    }
    return iExit;
}

}  // namespace tools

// vok zip: archives.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>

#include "tools/commands.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

// Members go to the disk piece by piece and may be large, and repeat themselves as logs do.
vok::Limits MemberLimits() {
    vok::Limits oLimits;
    oLimits.m_uInflatedBytes = vok::u3_t{1} << 34;
    oLimits.m_uInflationRatio = vok::Limits::Trusted().m_uInflationRatio;
    return oLimits;
}

// Visits the members in the order of the directory.
void ForEach(vok::Zip_Archive& oArchive,
             const std::function<void(const vok::Zip_FileInfo&)>& oVisit) {
    for (bool bMember = oArchive.GoToFirstFile(); bMember; bMember = oArchive.GoToNextFile()) {
        oVisit(oArchive.GetCurrentFileInfo());
    }
}

// Reads a stream to its end.
template <class Take>
void ForEachPiece(vok::File_Stream& oIn, const Take& oTake) {
    vok::Arr<char> oPiece;
    oPiece.Resize(256 * 1024);
    while (const std::size_t uRead = oIn.Read(oPiece.Beg(), oPiece.Size(), true)) {
        oTake(oPiece.Beg(), uRead);
    }
}

// Reads the current member.
template <class Take>
void ReadMember(vok::Zip_Archive& oArchive, const Take& oTake) {
    oArchive.OpenCurrentFile();
    ForEachPiece(oArchive, oTake);
    oArchive.CloseCurrentFile();
}

// Files, and folders with all that is in them; never the archive itself.
std::vector<fs::path> FilesToAdd(const std::string& sArchive,
                                 const std::vector<std::string>& asFile) {
    std::vector<fs::path> aoPath;
    for (const std::string& sFile : asFile) {
        const fs::path oFile = ToPath(sFile);
        if (!fs::exists(oFile)) throw std::invalid_argument("\"" + sFile + "\" does not exist");
        aoPath.push_back(oFile);
        if (!fs::is_directory(oFile)) continue;
        for (const auto& oEntry : fs::recursive_directory_iterator(oFile)) {
            aoPath.push_back(oEntry.path());
        }
    }
    const fs::path oArchive = ToPath(sArchive);
    std::erase_if(aoPath, [&](const fs::path& oPath) {
        return fs::exists(oArchive) && fs::exists(oPath) && fs::equivalent(oPath, oArchive);
    });
    return aoPath;
}

void AddFile(vok::Zip_Archive& oArchive, const fs::path& oPath, bool bStore) {
    const bool bFolder = fs::is_directory(oPath);
    if (!bFolder && !fs::is_regular_file(oPath)) return;
    std::string sName = ToText(oPath.lexically_normal().relative_path());
    while (sName.starts_with("../")) sName.erase(0, 3);
    if (bFolder && !sName.ends_with('/')) sName += '/';
    if (!vok::Zip_IsSafeName(sName)) return;  // "." and the like
    vok::Zip_NewInfo oInfo;
    const auto oTime = std::chrono::file_clock::to_sys(fs::last_write_time(oPath));
    oInfo.m_uDosDate =
        vok::Zip_DosDate(std::chrono::duration<double>(oTime.time_since_epoch()).count());
    oArchive.OpenNewFile(vok::Str(sName), oInfo, {}, {}, {},
                         bStore || bFolder ? vok::ZIP_STORED : vok::ZIP_DEFLATED);
    if (!bFolder) {
        vok::File oFile(vok::Str(ToText(oPath)), "Tr");
        ForEachPiece(oFile, [&](const char* p, std::size_t u) { oArchive.Write(p, u); });
    }
    oArchive.CloseCurrentFile();
}

}  // namespace

int ZipList(const std::string& sArchive) {
    vok::Zip_Archive oArchive((vok::Str(sArchive)));
    std::printf("      size     packed  date                crc       name\n");
    unsigned long long uPlain = 0;
    unsigned long long uPacked = 0;
    ForEach(oArchive, [&](const vok::Zip_FileInfo& o) {
        const vok::Zip_Date oDate = vok::Zip_DateFields(o.m_uDosDate);
        std::printf("%10u %10u  %04u-%02u-%02u %02u:%02u:%02u %08x  %s\n", o.m_uUncompressedSize,
                    o.m_uCompressedSize, oDate.m_uYear, oDate.m_uMonth, oDate.m_uDay, oDate.m_uHour,
                    oDate.m_uMinute, oDate.m_uSecond, o.m_uCrc, Escaped(o.m_oName.View()).c_str());
        uPlain += o.m_uUncompressedSize;
        uPacked += o.m_uCompressedSize;
    });
    std::printf("%10llu %10llu  %u members\n", uPlain, uPacked,
                oArchive.GetGlobalInfo().m_uEntries);
    return EXIT_GOOD;
}

int ZipTest(const std::string& sArchive) {
    vok::Zip_Archive oArchive(vok::Str(sArchive), "r", MemberLimits());
    Progress oProgress("testing");
    int iExit = EXIT_GOOD;
    ForEach(oArchive, [&](const vok::Zip_FileInfo& o) {
        std::string sOutcome = "good";
        try {
            ReadMember(oArchive, [](const char*, std::size_t) {});
        } catch (const vok::Msg_Exception& oError) {
            sOutcome = Line(oError.what());
            iExit = EXIT_NEGATIVE;
        }
        std::printf("%s: %s\n", Escaped(o.m_oName.View()).c_str(), sOutcome.c_str());
    });
    return iExit;
}

int ZipExtract(const std::string& sArchive, const std::string& sFolder,
               const std::vector<std::string>& asMember) {
    vok::Zip_Archive oArchive(vok::Str(sArchive), "r", MemberLimits());
    Progress oProgress("extracting");
    int iExit = EXIT_GOOD;
    std::vector<std::string> asMissing = asMember;
    ForEach(oArchive, [&](const vok::Zip_FileInfo& o) {
        const std::string sName = o.m_oName.CStr();
        const bool bAsked = std::find(asMember.begin(), asMember.end(), sName) != asMember.end();
        if (!asMember.empty() && !bAsked) return;
        std::erase(asMissing, sName);
        // Links that are already there must not lead out of the folder either.
        const fs::path oPath = ToPath(sFolder) / ToPath(sName);
        bool bSafe = vok::Zip_IsSafeMember(o);
        fs::path oAbove = ToPath(sFolder);
        for (const fs::path& oPart : ToPath(sName)) {
            oAbove /= oPart;
            bSafe = bSafe && !vok::sys::IsLink(ToText(oAbove).c_str());
        }
        if (!bSafe) {
            std::fprintf(stderr, "vok: \"%s\" would leave the folder: not extracted\n",
                         Escaped(sName).c_str());
            iExit = EXIT_NEGATIVE;
            return;
        }
        if (o.IsFolder()) {
            fs::create_directories(oPath);
            return;
        }
        Output oFile(ToText(oPath));
        ReadMember(oArchive, [&](const char* p, std::size_t u) { oFile.Stream().Write(p, u); });
        oFile.Commit();
    });
    for (const std::string& sName : asMissing) {
        std::fprintf(stderr, "vok: \"%s\" is not in the archive\n", sName.c_str());
        iExit = EXIT_NEGATIVE;
    }
    return iExit;
}

int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore) {
    const bool bNew = !fs::exists(ToPath(sArchive));
    const std::vector<fs::path> aoPath = FilesToAdd(sArchive, asFile);
    Progress oProgress("adding");
    // A new archive is made beside its place; one that is appended to can be read as it was until
    // it is complete.
    std::optional<Output> oNew;
    if (bNew) oNew.emplace(sArchive, false);
    vok::Zip_Archive oArchive(vok::Str(bNew ? oNew->Beside() : sArchive), bNew ? "w" : "a");
    for (const fs::path& oPath : aoPath) AddFile(oArchive, oPath, bStore);
    oArchive.Close();
    if (bNew) oNew->Commit();
    return EXIT_GOOD;
}

}  // namespace tools

// vok zip list, test, extract: what is in archives.
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <string_view>

#include "tools/commands.h"
#include "tools/limits.h"
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

// Reads the current member to its end.
template <class Take>
void ReadMember(vok::Zip_Archive& oArchive, const Take& oTake) {
    oArchive.OpenCurrentFile();
    vok::Arr<char> oPiece;
    oPiece.Resize(256 * 1024);
    while (const std::size_t uRead = oArchive.Read(oPiece.Beg(), oPiece.Size(), true)) {
        oTake(oPiece.Beg(), uRead);
    }
    oArchive.CloseCurrentFile();
}

// Says on standard error what is wrong with a member.
void Complain(std::string_view sName, const std::string& sWhat) {
    std::fprintf(stderr, "vok: \"%s\" %s\n", Escaped(sName).c_str(), sWhat.c_str());
}

// Why a member must not become a file of that folder, with links that are there already; empty when
// it may.
std::string WhyOutside(const vok::Zip_FileInfo& oInfo, const fs::path& oFolder) {
    if (!vok::Zip_IsSafeMember(oInfo)) return "would leave the folder: not extracted";
    fs::path oAbove = oFolder;
    for (const fs::path& oPart : ToPath(oInfo.m_oName.CStr())) {
        oAbove /= oPart;
        if (vok::sys::IsLink(ToText(oAbove).c_str())) {
            return "would follow a link out of the folder: not extracted";
        }
    }
    return {};
}

// Gives a file the time that its member has, and whether it can be run.
void SetTimeAndMode(const fs::path& oPath, const vok::Zip_FileInfo& oInfo) {
    using namespace std::chrono;
    const vok::Zip_Date o = vok::Zip_DateFields(oInfo.m_uDosDate);
    const year_month_day oDay{year(static_cast<int>(o.m_uYear)), month(o.m_uMonth), day(o.m_uDay)};
    std::error_code oIgnored;  // the bytes are there
    if (oDay.ok()) {
        const auto oTime =
            sys_days(oDay) + hours(o.m_uHour) + minutes(o.m_uMinute) + seconds(o.m_uSecond);
        fs::last_write_time(oPath, file_clock::from_sys(oTime), oIgnored);
    }
    // Who may read it may run it.
    const unsigned uMode = oInfo.m_uExternalAttributes >> 16;
    if ((uMode & 0111) == 0) return;
    const auto uRead = static_cast<unsigned>(fs::status(oPath, oIgnored).permissions()) & 0444;
    fs::permissions(oPath, static_cast<fs::perms>(uRead >> 2), fs::perm_options::add, oIgnored);
}

// The members that could not be read are told and left out; what cannot be written ends it all.
bool ExtractMember(vok::Zip_Archive& oArchive, const vok::Zip_FileInfo& oInfo,
                   const fs::path& oFolder) {
    const std::string sName = oInfo.m_oName.CStr();
    if (const std::string sWhy = WhyOutside(oInfo, oFolder); !sWhy.empty()) {
        Complain(sName, sWhy);
        return false;
    }
    const fs::path oPath = oFolder / ToPath(sName);
    if (oInfo.IsFolder()) {
        fs::create_directories(oPath);
        return true;
    }
    fs::create_directories(oPath.parent_path());
    Output oFile(ToText(oPath));
    bool bWriting = false;
    try {
        ReadMember(oArchive, [&](const char* p, std::size_t u) {
            bWriting = true;
            oFile.Stream().Write(p, u);
            bWriting = false;
        });
    } catch (const vok::Msg_Exception& oError) {
        if (bWriting) throw;
        Complain(sName, "is damaged and not extracted: " + InOptions(Line(oError.what())));
        return false;
    }
    oFile.Commit();
    SetTimeAndMode(oPath, oInfo);
    return true;
}

}  // namespace

int ZipList(const std::string& sArchive) {
    vok::Zip_Archive oArchive(vok::Str(sArchive), "r", MemberLimits());
    Print("      size     packed  date                crc       name\n");
    char sLine[100];
    unsigned long long uPlain = 0;
    unsigned long long uPacked = 0;
    ForEach(oArchive, [&](const vok::Zip_FileInfo& o) {
        const vok::Zip_Date oDate = vok::Zip_DateFields(o.m_uDosDate);
        std::snprintf(sLine, sizeof(sLine), "%10u %10u  %04u-%02u-%02u %02u:%02u:%02u %08x  ",
                      o.m_uUncompressedSize, o.m_uCompressedSize, oDate.m_uYear, oDate.m_uMonth,
                      oDate.m_uDay, oDate.m_uHour, oDate.m_uMinute, oDate.m_uSecond, o.m_uCrc);
        Print(sLine + Escaped(o.m_oName.View()) + '\n');
        uPlain += o.m_uUncompressedSize;
        uPacked += o.m_uCompressedSize;
    });
    std::snprintf(sLine, sizeof(sLine), "%10llu %10llu  %u members\n", uPlain, uPacked,
                  oArchive.GetGlobalInfo().m_uEntries);
    Print(sLine);
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
            sOutcome = InOptions(Line(oError.what()));
            iExit = EXIT_NEGATIVE;
        }
        Print(Escaped(o.m_oName.View()) + ": " + sOutcome + '\n');
    });
    if (const vok::u3_t uBehind = oArchive.GetGlobalInfo().m_uBehind; uBehind != 0) {
        Print(BehindText(uBehind) + '\n');
        iExit = EXIT_NEGATIVE;
    }
    return iExit;
}

int ZipExtract(const std::string& sArchive, const std::string& sFolder,
               const std::vector<std::string>& asMember) {
    vok::Zip_Archive oArchive(vok::Str(sArchive), "r", MemberLimits());
    Progress oProgress("extracting");
    bool bAll = true;
    std::set<std::string> asMissing(asMember.begin(), asMember.end());
    const std::set<std::string> asAsked = asMissing;
    const fs::path oFolder = ToPath(sFolder);
    fs::create_directories(oFolder);
    ForEach(oArchive, [&](const vok::Zip_FileInfo& o) {
        const std::string sName = o.m_oName.CStr();
        if (!asAsked.empty() && asAsked.count(sName) == 0) return;
        asMissing.erase(sName);
        bAll = ExtractMember(oArchive, o, oFolder) && bAll;
    });
    for (const std::string& sName : asMissing) Complain(sName, "is not in the archive");
    return bAll && asMissing.empty() ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools

// vok zip list, test, extract: what is in archives.
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <string_view>

#include "tools/commands.h"
#include "tools/input.h"
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

// A line on standard error about a member or a file.
void Tell(std::string_view sName, std::string_view sWhat) {
    std::fprintf(stderr, "vok: \"%s\" %s\n", Escaped(sName).c_str(), Visible(sWhat).c_str());
}

// Members go to the disk piece by piece and may be large, and repeat themselves as logs do.
vok::Limits MemberLimits() {
    vok::Limits oLimits = TheLimits();
    const vok::Limits oDefault;
    if (oLimits.m_uInflatedBytes == oDefault.m_uInflatedBytes) {
        oLimits.m_uInflatedBytes = vok::u3_t{1} << 34;
    }
    if (oLimits.m_uInflationRatio == oDefault.m_uInflationRatio) {
        oLimits.m_uInflationRatio = vok::Limits::Trusted().m_uInflationRatio;
    }
    return oLimits;
}

// Raised for what all members of an archive inflate to together.
struct TooMuch : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// An archive that is read, and what may come out of it.
class Reading {
  public:
    explicit Reading(const std::string& sPath)
        : m_oLimits(MemberLimits()), m_uLeft(m_oLimits.m_uInflatedBytes) {
        {
            const vok::File oFile(vok::Str(sPath), "Tr");  // whether it is there
        }
        m_oArchive.Open(vok::Str(sPath), "r", m_oLimits);
    }

    [[nodiscard]] vok::Zip_GlobalInfo Info() const { return m_oArchive.GetGlobalInfo(); }

    // Visits the members in the order of the directory.
    void ForEach(const std::function<void(const vok::Zip_FileInfo&)>& oVisit) {
        for (bool b = m_oArchive.GoToFirstFile(); b; b = m_oArchive.GoToNextFile()) {
            oVisit(m_oArchive.GetCurrentFileInfo());
        }
    }

    // Reads the current member.
    template <class Take>
    void ReadMember(const Take& oTake) {
        m_oArchive.OpenCurrentFile();
        vok::Arr<char> oPiece;
        oPiece.Resize(PIECE);
        while (const std::size_t uRead = m_oArchive.Read(oPiece.Beg(), PIECE, true)) {
            if (uRead > m_uLeft) {
                throw TooMuch("the members are more than " +
                              std::to_string(m_oLimits.m_uInflatedBytes) +
                              " bytes together (raise it with --limit inflated=...)");
            }
            m_uLeft -= uRead;
            oTake(oPiece.Beg(), uRead);
        }
        m_oArchive.CloseCurrentFile();
    }

  private:
    static constexpr std::size_t PIECE = 256 * 1024;
    const vok::Limits m_oLimits;
    vok::u3_t m_uLeft;
    vok::Zip_Archive m_oArchive;
};

std::string BehindText(vok::u3_t uBytes) {
    return std::to_string(uBytes) +
           " bytes behind the archive: maybe of an append that was interrupted";
}

// ---- adding -----------------------------------------------------------------

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
        Tell(ToText(oPath), "is neither a file nor a folder: not added");
        return false;
    }
    if (!vok::Zip_IsSafeName(sName)) {
        Tell(sName, "is no name for a member: not added");
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
        if (!fs::exists(oFile)) throw std::invalid_argument("\"" + sFile + "\" does not exist");
        oCollect(oFile);
        if (!fs::is_directory(oFile)) continue;
        for (const auto& oEntry : fs::recursive_directory_iterator(oFile)) oCollect(oEntry.path());
    }
    const fs::path oArchive = ToPath(sArchive);
    std::erase_if(aoAddition, [&](const Addition& o) {
        return fs::exists(oArchive) && fs::equivalent(o.oPath, oArchive);
    });
    const auto oByName = [](const Addition& a, const Addition& b) { return a.sName < b.sName; };
    std::stable_sort(aoAddition.begin(), aoAddition.end(), oByName);
    const auto oSame = [](const Addition& a, const Addition& b) {
        if (a.sName != b.sName) return false;
        if (!fs::equivalent(a.oPath, b.oPath)) {
            throw std::invalid_argument("two files would be the member \"" + a.sName + '"');
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

// Says what is in the archive already of what is to be added to it, and behind it.
void TellWhatIsThere(const std::string& sArchive, const std::vector<Addition>& aoAddition) {
    vok::Zip_Archive oOld;
    try {
        oOld.Open(vok::Str(sArchive));
    } catch (const vok::Msg_Exception&) {
        return;  // whatever it is, appending will tell
    }
    if (const vok::u3_t uBehind = oOld.GetGlobalInfo().m_uBehind; uBehind != 0) {
        Tell(sArchive, "has " + BehindText(uBehind));
    }
    for (const Addition& o : aoAddition) {
        if (o.bFolder || !oOld.LocateFile(vok::Str(o.sName))) continue;
        Tell(o.sName, "was in the archive already: the new one counts from now on");
    }
}

// ---- extracting ---------------------------------------------------------------

// Links that are already there must not lead out of the folder either.
bool IsSafe(const std::string& sFolder, const vok::Zip_FileInfo& o) {
    if (!vok::Zip_IsSafeMember(o)) return false;
    fs::path oAbove = ToPath(sFolder);
    for (const fs::path& oPart : ToPath(o.m_oName.CStr())) {
        oAbove /= oPart;
        if (vok::sys::IsLink(ToText(oAbove).c_str())) return false;
    }
    return true;
}

// Gives a file the time of its member, and the right to be run where that has it.
void Dress(const fs::path& oPath, const vok::Zip_FileInfo& o) {
    std::error_code oIgnored;  // file systems may know neither
    const vok::u2_t uMode = o.m_uExternalAttributes >> 16;
    constexpr vok::u2_t ANY_EXECUTE = 0111;
    if (!vok::sys::IS_WINDOWS && (uMode & ANY_EXECUTE) != 0) {
        // Whoever may read it may run it.
        const auto uReaders = static_cast<unsigned>(fs::status(oPath).permissions()) & 0444;
        fs::permissions(oPath, static_cast<fs::perms>(uReaders >> 2 & uMode), fs::perm_options::add,
                        oIgnored);
    }
    const auto oSince = std::chrono::duration<double>(vok::Zip_Seconds(o));
    const std::chrono::sys_time<std::chrono::seconds> oTime(
        std::chrono::floor<std::chrono::seconds>(oSince));
    fs::last_write_time(oPath,
                        std::chrono::time_point_cast<fs::file_time_type::duration>(
                            std::chrono::file_clock::from_sys(oTime)),
                        oIgnored);
}

// Extracts the current member. What is wrong with the member is told; with the disk, raised.
bool Extract(Reading& oArchive, const fs::path& oPath, const vok::Zip_FileInfo& o) {
    if (o.IsFolder()) {
        fs::create_directories(oPath);
        return true;
    }
    fs::create_directories(oPath.parent_path());
    Output oFile(ToText(oPath));
    bool bDisk = false;
    try {
        oArchive.ReadMember([&](const char* p, std::size_t u) {
            bDisk = true;
            oFile.Stream().Write(p, u);
            bDisk = false;
        });
    } catch (const vok::Msg_Exception& oError) {
        if (bDisk || IsNoMemory(oError)) throw;
        Tell(o.m_oName.View(), "is not extracted: " + Line(oError.what()));
        return false;
    }
    oFile.Commit(false);
    Dress(oPath, o);
    return true;
}

}  // namespace

int ZipList(const std::string& sArchive) {
    Reading oArchive(sArchive);
    Print("      size     packed  date                crc       name\n");
    vok::u3_t uPlain = 0;
    vok::u3_t uPacked = 0;
    char s[128];
    oArchive.ForEach([&](const vok::Zip_FileInfo& o) {
        const vok::Zip_Date oDate = vok::Zip_DateFields(o.m_uDosDate);
        std::snprintf(s, sizeof(s), "%10u %10u  %04u-%02u-%02u %02u:%02u:%02u %08x  ",
                      o.m_uUncompressedSize, o.m_uCompressedSize, oDate.m_uYear, oDate.m_uMonth,
                      oDate.m_uDay, oDate.m_uHour, oDate.m_uMinute, oDate.m_uSecond, o.m_uCrc);
        Print(s + Escaped(o.m_oName.View()) + '\n');
        uPlain += o.m_uUncompressedSize;
        uPacked += o.m_uCompressedSize;
    });
    std::snprintf(s, sizeof(s), "%10llu %10llu  %u members\n",
                  static_cast<unsigned long long>(uPlain), static_cast<unsigned long long>(uPacked),
                  oArchive.Info().m_uEntries);
    Print(s);
    return EXIT_GOOD;
}

int ZipTest(const std::string& sArchive) {
    std::optional<Reading> oArchive;
    const vok::File oFile(vok::Str(sArchive), "Tr");  // what cannot be read is not faulty
    try {
        oArchive.emplace(sArchive);
    } catch (const vok::Msg_Exception& oError) {
        if (IsNoMemory(oError)) throw;
        Print(Visible(Line(oError.what())) + '\n');
        return EXIT_NEGATIVE;
    }
    Progress oProgress("testing");
    int iExit = EXIT_GOOD;
    oArchive->ForEach([&](const vok::Zip_FileInfo& o) {
        std::string sOutcome = "good";
        try {
            oArchive->ReadMember([](const char*, std::size_t) {});
        } catch (const vok::Msg_Exception& oError) {
            if (IsNoMemory(oError)) throw;
            sOutcome = InOptions(Line(oError.what()));
            iExit = EXIT_NEGATIVE;
        }
        Print(Escaped(o.m_oName.View()) + ": " + Visible(sOutcome) + '\n');
    });
    if (const vok::u3_t uBehind = oArchive->Info().m_uBehind; uBehind != 0) {
        Print(BehindText(uBehind) + '\n');
        iExit = EXIT_NEGATIVE;
    }
    return iExit;
}

int ZipExtract(const std::string& sArchive, const std::string& sFolder,
               const std::vector<std::string>& asMember) {
    Reading oArchive(sArchive);
    Progress oProgress("extracting");
    int iExit = EXIT_GOOD;
    std::vector<std::string> asMissing = asMember;
    oArchive.ForEach([&](const vok::Zip_FileInfo& o) {
        const std::string sName = o.m_oName.CStr();
        const bool bAsked = std::find(asMember.begin(), asMember.end(), sName) != asMember.end();
        if (!asMember.empty() && !bAsked) return;
        std::erase(asMissing, sName);
        try {
            if (!IsSafe(sFolder, o)) {
                Tell(sName, "would leave the folder: not extracted");
                iExit = std::max<int>(iExit, EXIT_NEGATIVE);
            } else if (!Extract(oArchive, ToPath(sFolder) / ToPath(sName), o)) {
                iExit = std::max<int>(iExit, EXIT_NEGATIVE);
            }
        } catch (const TooMuch&) {
            throw;
        } catch (const std::exception& oError) {
            Tell(sName, "is not extracted: " + Line(oError.what()));
            iExit = EXIT_TROUBLE;
        }
    });
    for (const std::string& sName : asMissing) {
        Tell(sName, "is not in the archive");
        iExit = std::max<int>(iExit, EXIT_NEGATIVE);
    }
    return iExit;
}

int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore) {
    int iExit = EXIT_GOOD;
    const std::vector<Addition> aoAddition = Collect(sArchive, asFile, iExit);
    const fs::file_status oThere = fs::status(ToPath(sArchive));
    if (fs::exists(oThere) && !fs::is_regular_file(oThere)) {
        throw std::invalid_argument("\"" + sArchive + "\" is no regular file");
    }
    const bool bNew = !fs::exists(oThere) || fs::file_size(ToPath(sArchive)) == 0;
    if (!bNew) TellWhatIsThere(sArchive, aoAddition);
    Progress oProgress("adding");
    // A new archive is made beside its place; one that is appended to can be read as it was until
    // it is complete.
    std::optional<Output> oNew;
    std::optional<Appending> oOld;
    if (bNew) {
        oNew.emplace(sArchive, false);
    } else {
        oOld.emplace(sArchive);
    }
    vok::Zip_Archive oArchive(vok::Str(bNew ? oNew->Beside() : sArchive), bNew ? "w" : "a");
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

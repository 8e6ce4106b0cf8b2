// SPDX-License-Identifier: MIT
// vok zip list, test, extract: what is in archives.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/limits.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/print.h"
#include "tools/progress.h"
#include "tools/say.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

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

// ---- extracting ---------------------------------------------------------------

// Why a member must not become a file below a folder, with the links that are there already; empty
// when it may.
std::string WhyOutside(const std::string& sFolder, const vok::Zip_FileInfo& o) {
    if (!vok::Zip_IsSafeMember(o)) return Say("would leave the folder: not extracted");
    fs::path oAbove = ToPath(sFolder);
    for (const fs::path& oPart : ToPath(o.m_oName.CStr())) {
        oAbove /= oPart;
        if (vok::sys::IsLink(ToText(oAbove).c_str())) {
            return Say("would follow a link out of the folder: not extracted");
        }
    }
    return {};
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
    try {
        vok::File::Touch(vok::Str(ToText(oPath)), vok::Zip_Seconds(o));
    } catch (const vok::Msg_Exception&) {
        // The bytes are there.
    }
}

// Extracts the current member. What is wrong with the member is told; with the disk, raised.
bool Extract(Reading& oArchive, const fs::path& oPath, const vok::Zip_FileInfo& o) {
    if (o.IsFolder()) {
        vok::File::MkDir(vok::Str(ToText(oPath)));
        return true;
    }
    vok::File::MkDir(vok::Str(ToText(oPath.parent_path())));
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
        Tell(o.m_oName.View(), Say("is not extracted: %0", {Line(oError.what())}));
        return false;
    }
    oFile.Commit(false);
    Dress(oPath, o);
    return true;
}

}  // namespace

namespace {

std::string DateText(const vok::Zip_FileInfo& o, char cBetween) {
    const vok::Zip_Date oDate = vok::Zip_DateFields(o.m_uDosDate);
    char s[64];
    std::snprintf(s, sizeof(s), "%04u-%02u-%02u%c%02u:%02u:%02u", oDate.m_uYear, oDate.m_uMonth,
                  oDate.m_uDay, cBetween, oDate.m_uHour, oDate.m_uMinute, oDate.m_uSecond);
    return s;
}

void ListJson(Reading& oArchive) {
    JsonPrinter oStream;
    rapidjson::Writer<JsonPrinter> oOut;
    oArchive.ForEach([&](const vok::Zip_FileInfo& o) {
        oOut.Reset(oStream);
        oOut.StartObject();
        oOut.Key("name");
        WriteText(oOut, o.m_oName.View());
        oOut.Key("size");
        oOut.Uint(o.m_uUncompressedSize);
        oOut.Key("packed");
        oOut.Uint(o.m_uCompressedSize);
        oOut.Key("date");
        WriteText(oOut, DateText(o, 'T'));
        oOut.Key("crc");
        oOut.Uint(o.m_uCrc);
        oOut.EndObject();
        oStream.Put('\n');
    });
    oStream.Flush();
}

}  // namespace

int ZipList(const std::string& sArchive, bool bJson) {
    Reading oArchive(sArchive);
    if (bJson) {
        ListJson(oArchive);
        return EXIT_GOOD;
    }
    Print("      size     packed  date                crc       name\n");
    vok::u3_t uPlain = 0;
    vok::u3_t uPacked = 0;
    char s[128];
    oArchive.ForEach([&](const vok::Zip_FileInfo& o) {
        std::snprintf(s, sizeof(s), "%10u %10u  %s %08x  ", o.m_uUncompressedSize,
                      o.m_uCompressedSize, DateText(o, ' ').c_str(), o.m_uCrc);
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
            if (const std::string sWhy = WhyOutside(sFolder, o); !sWhy.empty()) {
                Tell(sName, sWhy);
                iExit = std::max<int>(iExit, EXIT_NEGATIVE);
            } else if (!Extract(oArchive, ToPath(sFolder) / ToPath(sName), o)) {
                iExit = std::max<int>(iExit, EXIT_NEGATIVE);
            }
        } catch (const TooMuch&) {
            throw;
        } catch (const std::exception& oError) {
            Tell(sName, Say("is not extracted: %0", {Line(oError.what())}));
            iExit = EXIT_TROUBLE;
        }
    });
    for (const std::string& sName : asMissing) {
        Tell(sName, Say("is not in the archive"));
        iExit = std::max<int>(iExit, EXIT_NEGATIVE);
    }
    return iExit;
}

}  // namespace tools

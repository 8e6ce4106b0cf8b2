// SPDX-License-Identifier: MIT
// Untrusted archives and compressed streams: in memory and in a file they must be the same, an
// archive that can be read can be appended to without touching what it holds, and what was
// compressed comes back.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace {

using namespace vok;

Limits ZipLimits() {
    Limits oLimits;
    oLimits.m_uZipEntries = 200;
    oLimits.m_uInflatedBytes = 1u << 20;
    return oLimits;
}

// Where an input lies for those who want a file.
const std::string& Path() {
    static const std::string s_sPath = std::filesystem::temp_directory_path().string() +
                                       "/vok_zip_fuzz_" + std::to_string(sys::ProcessId());
    return s_sPath;
}

// Name and bytes of a member, or whether there was an error in place of them.
struct Member {
    std::string sName;
    std::string sBytes;
    bool bError = false;

    bool operator==(const Member&) const = default;
};
using Members = std::vector<Member>;

Members ReadAll(Zip_Archive& oZip) {
    Members oMembers;
    Arr<char> oBytes;
    for (bool b = oZip.GoToFirstFile(); b; b = oZip.GoToNextFile()) {
        Member o;
        const Zip_FileInfo oInfo = oZip.GetCurrentFileInfo();
        o.sName = oInfo.m_oName.CStr();
        o.bError = !Raised([&] { oZip.Uncompress(oBytes); }).empty();
        if (!o.bError) {
            Check(oBytes.Size() == oInfo.m_uUncompressedSize);
            if (oBytes.Size() != 0) o.sBytes.assign(oBytes.Beg(), oBytes.Size());
            (void)Raised([&] { oZip.GetCurrentFileExtrafield(oBytes); });
        }
        (void)Zip_IsSafeMember(oInfo);
        oMembers.push_back(std::move(o));
    }
    for (const Member& o : oMembers) {
        Check(oZip.LocateFile(o.sName.c_str()));
        Check(o.sName == oZip.GetCurrentFileInfo().m_oName.CStr());
    }
    return oMembers;
}

// One member in small pieces, forth and back.
void ReadInPieces(Zip_Archive& oZip, const Member& oMember) {
    if (oMember.bError) return;
    Check(oZip.LocateFile(oMember.sName.c_str()));
    if (!Raised([&] { oZip.OpenCurrentFile(); }).empty()) return;
    char sPiece[7];
    std::string sAll;
    while (!oZip.Eof()) sAll.append(sPiece, oZip.Read(sPiece, sizeof(sPiece), true));
    oZip.Seek(static_cast<i3_t>(sAll.size() / 2));
    Check(oZip.Read(sPiece, 1, true) == (sAll.empty() ? 0 : 1));
    if (!sAll.empty()) Check(sPiece[0] == sAll[sAll.size() / 2]);
    oZip.CloseCurrentFile();
}

// Whether it is one.
bool FuzzArchive(std::string_view sBytes) {
    Zip_Archive oZip;
    const std::string sError =
        Raised([&] { oZip.Open(sBytes.data(), sBytes.size(), ZipLimits()); });
    // Files take their time: not for everything that is no archive.
    if (!sError.empty() && sBytes.size() % 8 != 0) return false;
    std::ofstream(Path(), std::ios::binary) << sBytes;
    Zip_Archive oOnDisk;
    const std::string sOnDisk = Raised([&] { oOnDisk.Open(Path().c_str(), "r", ZipLimits()); });
    Check(sError.empty() == sOnDisk.empty());
    if (!sError.empty()) return false;
    const Members oMembers = ReadAll(oZip);
    Check(ReadAll(oOnDisk) == oMembers);
    oOnDisk.Close();
    if (!oMembers.empty()) ReadInPieces(oZip, oMembers[0]);

    const std::string sRefused = Raised([&] {
        Zip_Archive oAppend(Path().c_str(), "a");
        oAppend.OpenNewFile("appended");
        oAppend.Write(sBytes.data(), sBytes.size());
        oAppend.Close();
    });
    if (!sRefused.empty()) {
        // Only where members lie outside the archive, or its comment holds an end record.
        Check(sRefused.find("an end record in it") != std::string::npos ||
              std::any_of(oMembers.begin(), oMembers.end(),
                          [](const Member& o) { return o.bError; }));
        return true;
    }
    Limits oLimits = ZipLimits();
    ++oLimits.m_uZipEntries;
    oOnDisk.Open(Path().c_str(), "r", oLimits);
    const Members oAll = ReadAll(oOnDisk);
    Check(oAll.size() == oMembers.size() + 1);
    Check(!oAll.back().bError && oAll.back().sBytes == sBytes);
    // A member that reached into the old directory is not kept from it any more.
    for (std::size_t u = 0; u < oMembers.size(); ++u) {
        Check(oAll[u].sName == oMembers[u].sName && (oMembers[u].bError || oAll[u] == oMembers[u]));
    }
    return true;
}

void FuzzStream(std::string_view sBytes) {
    const auto oRead = [](File_Stream& oBelow, std::string& sPlain) {
        return Raised([&] {
            Zip_Stream oZip(oBelow, "r", ZipLimits());
            char sPiece[1000];
            while (!oZip.Eof()) sPlain.append(sPiece, oZip.Read(sPiece, sizeof(sPiece), true));
        });
    };
    std::string sMemory, sForeign;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Foreign_Stream oForeign(sBytes);
    const std::string sError = oRead(oBuf, sMemory);
    Check(sError.empty() == oRead(oForeign, sForeign).empty());
    if (sError.empty()) Check(sMemory == sForeign);

    Zip_Buf oPacker;
    oPacker.Open("w");
    for (const char& c : sBytes.substr(0, 100)) oPacker.Write(&c, 1);
    oPacker.Write(sBytes.data(), sBytes.size());
    oPacker.Flush();
    Arr<char> oPlain;
    Zip_Buf oUnpacker;
    oUnpacker.Open(oPacker.GetBuffer().Beg(), oPacker.GetBuffer().Size());
    oUnpacker.Read(oPlain, File_Stream::ALL);
    const std::string sExpected = std::string(sBytes.substr(0, 100)) + std::string(sBytes);
    Check(std::string_view(oPlain.Beg(), oPlain.Size()) == sExpected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    if (uSize == 0) return 0;
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    if (!FuzzArchive(sBytes)) FuzzStream(sBytes);
    return 0;
}

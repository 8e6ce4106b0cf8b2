// SPDX-License-Identifier: MIT
// What the tests of zip archives share.
#ifndef TESTS_ZIP_ZIP_SUPPORT_H
#define TESTS_ZIP_ZIP_SUPPORT_H

#include <map>

#include "tests/file/file_support.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"
#include "vok/zip/file.h"

namespace vok {

using namespace std::string_literals;

using Members = std::vector<std::pair<std::string, std::string>>;  // names and bytes, in order

inline void AddMember(Zip_Archive& oZip, const std::string& sName, const std::string& sBytes,
                      u2_t uMethod = ZIP_DEFLATED) {
    oZip.OpenNewFile(sName.c_str(), {}, {}, {}, {}, uMethod);
    oZip.Write(sBytes.data(), sBytes.size());
    oZip.CloseCurrentFile();
}
inline void WriteZip(const char* sPath, const Members& oMembers, const char* sMode = "w",
                     const char* sComment = nullptr, u2_t uMethod = ZIP_DEFLATED) {
    Zip_Archive oZip(sPath, sMode);
    for (const auto& [sName, sBytes] : oMembers) AddMember(oZip, sName, sBytes, uMethod);
    oZip.Close(sComment);
}
inline std::string ZipBytes(const Members& oMembers, const char* sComment = nullptr,
                            u2_t uMethod = ZIP_DEFLATED) {
    WriteZip("made.zip", oMembers, "w", sComment, uMethod);
    return OnDisk("made.zip");
}

// Writes in pieces of any size, most of them small.
inline void WriteInPieces(File_Stream& oOut, std::string_view sBytes, std::mt19937& oRandom) {
    while (!sBytes.empty()) {
        const std::size_t uPart = 1 + RandomBelow(oRandom, 1u << RandomBelow(oRandom, 20));
        oOut.Write(sBytes.data(), std::min(uPart, sBytes.size()));
        sBytes.remove_prefix(std::min(uPart, sBytes.size()));
    }
}

inline std::string CurrentBytes(Zip_Archive& oZip) {
    Arr<char> oBytes;
    oZip.Uncompress(oBytes);
    return Content(oBytes);
}
inline Members ReadAll(Zip_Archive& oZip) {
    Members oMembers;
    for (bool b = oZip.GoToFirstFile(); b; b = oZip.GoToNextFile()) {
        const std::string sName = oZip.GetCurrentFileInfo().m_oName.CStr();
        oMembers.emplace_back(sName, CurrentBytes(oZip));
    }
    return oMembers;
}
inline Members ReadZip(const char* sPath) {
    Zip_Archive oZip(sPath);
    return ReadAll(oZip);
}

// What reading everything in an archive in memory ends with.
inline std::string ReadError(std::string_view sBytes, const Limits& oLimits = {}) {
    return Raised([&] {
        // A block of its own size: reading past its end is noticed.
        const std::vector<char> oBlock(sBytes.begin(), sBytes.end());
        Zip_Archive oZip;
        oZip.Open(oBlock.data(), oBlock.size(), oLimits);
        (void)ReadAll(oZip);
    });
}

class Zip_Test : public File_Test {};

}  // namespace vok

#endif  // TESTS_ZIP_ZIP_SUPPORT_H

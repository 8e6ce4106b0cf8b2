// vok zip add: files become members.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

#include "tools/commands.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/progress.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/zip/archive.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

// The name of the member that a file becomes: relative, and with a slash at the end of folders.
// Empty for what becomes none, such as ".".
std::string MemberName(const fs::path& oPath) {
    std::string sName = ToText(oPath.lexically_normal().relative_path());
    while (sName.starts_with("../")) sName.erase(0, 3);
    if (fs::is_directory(oPath) && !sName.ends_with('/')) sName += '/';
    return vok::Zip_IsSafeName(sName) ? sName : std::string();
}

// What an archive is to get: files by the names of their members.
class Collection {
  public:
    explicit Collection(const std::string& sArchive) : m_oArchive(ToPath(sArchive)) {}

    // A file, or a folder with all that is in it.
    void Add(const std::string& sFile) {
        const fs::path oFile = ToPath(sFile);
        if (!fs::exists(oFile)) throw std::invalid_argument("\"" + sFile + "\" does not exist");
        AddOne(oFile);
        if (!fs::is_directory(oFile)) return;
        for (const auto& oEntry : fs::recursive_directory_iterator(oFile)) AddOne(oEntry.path());
    }

    // Sorted, so that the same files make the same archive.
    [[nodiscard]] const std::map<std::string, fs::path>& Files() const noexcept { return m_oFiles; }
    // Whether something was left out, which was told.
    [[nodiscard]] bool LeftOut() const noexcept { return m_bLeftOut; }

  private:
    void AddOne(const fs::path& oPath) {
        const fs::file_status oStatus = fs::status(oPath);
        if (!fs::is_directory(oStatus) && !fs::is_regular_file(oStatus)) {
            std::fprintf(stderr, "vok: \"%s\" is neither file nor folder: not added\n",
                         Escaped(ToText(oPath)).c_str());
            m_bLeftOut = true;
            return;
        }
        if (fs::exists(m_oArchive) && fs::equivalent(oPath, m_oArchive)) return;
        const std::string sName = MemberName(oPath);
        if (sName.empty()) return;
        const auto [oThere, bNew] = m_oFiles.emplace(sName, oPath);
        if (!bNew && !fs::equivalent(oThere->second, oPath)) {
            throw std::invalid_argument("\"" + ToText(oThere->second) + "\" and \"" +
                                        ToText(oPath) + "\" would both be \"" + sName + '"');
        }
    }

    fs::path m_oArchive;
    std::map<std::string, fs::path> m_oFiles;
    bool m_bLeftOut = false;
};

// Type and permissions as Unix has them in the upper half, below them the bits of DOS: a folder,
// and what may not be written.
vok::u2_t Attributes(const fs::path& oPath) {
    const fs::file_status oStatus = fs::status(oPath);
    const bool bFolder = fs::is_directory(oStatus);
    const auto uMode = static_cast<unsigned>(oStatus.permissions()) & 07777;
    return ((bFolder ? 0040000u : 0100000u) | uMode) << 16 | (bFolder ? 0x10u : 0u) |
           ((uMode & 0200) == 0 ? 0x01u : 0u);
}

void AddFile(vok::Zip_Archive& oArchive, const std::string& sName, const fs::path& oPath,
             bool bStore) {
    vok::Zip_NewInfo oInfo;
    const auto oTime = std::chrono::file_clock::to_sys(fs::last_write_time(oPath));
    oInfo.m_uDosDate =
        vok::Zip_DosDate(std::chrono::duration<double>(oTime.time_since_epoch()).count());
    oInfo.m_uExternalAttributes = Attributes(oPath);
    const bool bFolder = sName.ends_with('/');
    oArchive.OpenNewFile(vok::Str(sName), oInfo, {}, {}, {},
                         bStore || bFolder ? vok::ZIP_STORED : vok::ZIP_DEFLATED);
    if (!bFolder) {
        vok::File oFile(vok::Str(ToText(oPath)), "Tr");
        vok::Arr<char> oPiece;
        oPiece.Resize(256 * 1024);
        while (const std::size_t uRead = oFile.Read(oPiece.Beg(), oPiece.Size(), true)) {
            oArchive.Write(oPiece.Beg(), uRead);
        }
    }
    oArchive.CloseCurrentFile();
}

// Says what stands in an archive that a reader of the new one would stumble over.
void TellWhatIsThere(const std::string& sArchive, const Collection& oNew) {
    vok::Zip_Archive oOld((vok::Str(sArchive)));
    if (const vok::u3_t uBehind = oOld.GetGlobalInfo().m_uBehind; uBehind != 0) {
        std::fprintf(stderr, "vok: %s\n", BehindText(uBehind).c_str());
    }
    for (const auto& [sName, oPath] : oNew.Files()) {
        if (sName.ends_with('/') || !oOld.LocateFile(sName.c_str())) continue;
        std::fprintf(stderr, "vok: \"%s\" was in the archive already: the new one counts\n",
                     Escaped(sName).c_str());
    }
}

}  // namespace

int ZipAdd(const std::string& sArchive, const std::vector<std::string>& asFile, bool bStore) {
    Collection oFiles(sArchive);
    for (const std::string& sFile : asFile) oFiles.Add(sFile);
    const fs::path oPlace = ToPath(sArchive);
    const bool bNew = !fs::exists(oPlace);
    if (!bNew && fs::is_regular_file(oPlace) && fs::file_size(oPlace) != 0) {
        TellWhatIsThere(sArchive, oFiles);
    }
    Progress oProgress("adding");
    // A new archive is made beside its place; one that is appended to can be read as it was until
    // it is complete, and is cut back to that when something fails.
    std::optional<Output> oBeside;
    std::optional<Appended> oAppended;
    if (bNew) {
        oBeside.emplace(sArchive, false);
    } else {
        oAppended.emplace(sArchive);
    }
    vok::Zip_Archive oArchive(vok::Str(bNew ? oBeside->Beside() : sArchive), bNew ? "w" : "a");
    for (const auto& [sName, oPath] : oFiles.Files()) AddFile(oArchive, sName, oPath, bStore);
    oArchive.Close();
    if (bNew) oBeside->Commit();
    return oFiles.LeftOut() ? EXIT_NEGATIVE : EXIT_GOOD;
}

}  // namespace tools

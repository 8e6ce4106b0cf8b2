// SPDX-License-Identifier: MIT
#include "vok/file/replacement.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "vok/base/where.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

namespace fs = std::filesystem;

constexpr int MOST_LINKS = 40;
constexpr u2_t NO_SUCH_FILE = 2;
constexpr u2_t IS_FOLDER = 21;
constexpr u2_t NOT_PERMITTED = 13;

fs::path ToPath(std::string_view sUtf8) {
    return {std::u8string(sUtf8.begin(), sUtf8.end())};
}

// With "/" between the names.
std::string ToText(const fs::path& oPath) {
    const std::u8string s = oPath.generic_u8string();
    return {s.begin(), s.end()};
}

// Where links lead to, also to a file that is not there yet.
fs::path Followed(const fs::path& oPath) {
    std::error_code oNone;
    fs::path oHere = oPath;
    for (int i = 0; i < MOST_LINKS && fs::is_symlink(fs::symlink_status(oHere, oNone)); ++i) {
        const fs::path oTarget = fs::read_symlink(oHere, oNone);
        oHere = oTarget.is_absolute() ? oTarget : oHere.parent_path() / oTarget;
    }
    return oHere;
}

}  // namespace

File_Replacement::File_Replacement(const Str& oPath, Watch* pWatch) : m_pWatch(pWatch) {
    Where("vok::File_Replacement", [&] {
        const auto Refuse = [&](u2_t uError) {
            Msg::CouldNotOpenFile(oPath.CStr(), "w", File::OpenFiles(), uError);
        };
        if (oPath.IsEmpty()) Refuse(NO_SUCH_FILE);
        std::error_code oNone;
        const fs::path oTold = ToPath(oPath.View());
        const fs::path oFollowed = Followed(oTold);
        // Some links lead to what has no path, such as the pipe that is the standard output.
        const bool bStrange = fs::exists(oTold, oNone) && !fs::equivalent(oTold, oFollowed, oNone);
        const fs::path& oPlace = bStrange ? oTold : oFollowed;
        m_sPath = ToText(oPlace);
        const fs::file_status oThere = fs::status(oPlace, oNone);
        if (fs::is_directory(oThere)) Refuse(IS_FOLDER);
        if (fs::exists(oThere) && !sys::MayWrite(m_sPath.c_str())) Refuse(NOT_PERMITTED);
        if (bStrange || (fs::exists(oThere) && !fs::is_regular_file(oThere))) {
            m_oFile.Open(Str(m_sPath), "Tws");
            return;
        }
        // Where they cannot be made, the file cannot either, and that says why.
        const std::string sFolder = ToText(oPlace.parent_path());
        if (!sFolder.empty()) sys::MakeDirectories(sFolder.c_str());
        MakeBeside();
        try {
            m_oFile.Open(Str(m_sBeside), "Tw");
            m_oFile.SetName(oPath);
        } catch (...) {
            Remove();
            throw;
        }
    });
}

// A new file under a short name that nobody else has.
void File_Replacement::MakeBeside() {
    static std::atomic<unsigned> s_uNames{0};
    for (;;) {
        const fs::path oName =
            ToPath(".vok-" + std::to_string(sys::ProcessId()) + '-' + std::to_string(s_uNames++));
        m_sBeside = ToText(ToPath(m_sPath).parent_path() / oName);
        SetWatch(m_sBeside.c_str());  // in front: a signal may come at any time
        if (sys::CreateNew(m_sBeside.c_str())) return;
        const u2_t uError = Msg::SystemError();
        SetWatch(nullptr);
        std::error_code oNone;
        if (fs::exists(fs::symlink_status(ToPath(m_sBeside), oNone))) continue;
        m_sBeside.clear();
        Msg::CouldNotOpenFile(m_sPath.c_str(), "w", File::OpenFiles(), uError);
    }
}

void File_Replacement::Remove() noexcept {
    try {
        std::error_code oNone;
        fs::remove(ToPath(m_sBeside), oNone);
    } catch (const std::exception&) {
        (void)std::remove(m_sBeside.c_str());  // no memory for a path
    }
    SetWatch(nullptr);
    m_sBeside.clear();
}

File_Replacement::~File_Replacement() {
    if (m_sBeside.empty()) return;
    try {
        m_oFile.Close();
    } catch (const std::exception&) {
        // The file goes away anyhow.
    }
    Remove();
}

void File_Replacement::Commit(bool bDurable) {
    return Where("vok::File_Replacement::Commit", [&] {
        m_oFile.Close();
        if (m_sBeside.empty()) return;
        // On the disk before it takes the place of what was there, and its new name after that. Its
        // mode comes last: it may not let its owner read.
        if (bDurable && !sys::SyncFile(m_sBeside.c_str())) {
            Msg::FileWriteError(m_sPath.c_str(), 0, 0, Msg::SystemError());
        }
        sys::CopyMode(m_sPath.c_str(), m_sBeside.c_str());
        std::error_code oError;
        fs::rename(ToPath(m_sBeside), ToPath(m_sPath), oError);
        if (oError) {
            const int iError = oError.default_error_condition().value();
            Msg::FileWriteError(m_sPath.c_str(), 0, 0, static_cast<u2_t>(iError));
        }
        SetWatch(nullptr);
        m_sBeside.clear();
        if (!bDurable) return;
        const std::string sFolder = ToText(ToPath(m_sPath).parent_path());
        (void)sys::SyncFile(sFolder.c_str());
    });
}

}  // namespace vok

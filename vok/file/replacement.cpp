// SPDX-License-Identifier: MIT
#include "vok/file/replacement.h"

#include <exception>
#include <string>
#include <string_view>

#include "vok/base/where.h"
#include "vok/file/make_new.h"
#include "vok/file/path.h"
#include "vok/sys/disk.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr int MOST_LINKS = 40;
constexpr u2_t NOT_PERMITTED = 13;

// Where links lead to, also to a file that is not there yet.
Str Followed(const Str& oPath) {
    Str oHere = oPath;
    std::string sTarget;
    for (int i = 0; i < MOST_LINKS && sys::ReadLink(oHere.CStr(), sTarget); ++i) {
        // As it stands: "a/.." may be something else than nothing where a is a link.
        Str oNext(File_Path::IsAbsolute(sTarget) ? Str() : File_Path::Dir(oHere.View()));
        const bool bBetween = !oNext.IsEmpty() && !oNext.View().ends_with('/');
        if (bBetween) oNext.Add("/");
        oNext.Add(std::string_view(sTarget));
        oHere = oNext;
    }
    return oHere;
}

// Whether two paths lead to the same file, or the second one nowhere while the first one does not
// either.
bool IsSame(const Str& oFirst, const Str& oSecond) {
    sys::Entry a, b;
    const bool bFirst = sys::LookAt(oFirst.CStr(), true, a);
    const bool bSecond = sys::LookAt(oSecond.CStr(), true, b);
    return bFirst == bSecond && (!bFirst || (a.uDevice == b.uDevice && a.uNumber == b.uNumber));
}

}  // namespace

File_Replacement::File_Replacement(const Str& oPath, Watch* pWatch) : m_pWatch(pWatch) {
    Where("vok::File_Replacement::File_Replacement", [&] {
        const auto Refuse = [&](u2_t uError) {
            Msg::CouldNotOpenFile(oPath.CStr(), "w", File::OpenFiles(), uError);
        };
        if (oPath.IsEmpty()) Refuse(sys::NOT_THERE);
        m_oPath = Followed(oPath);
        // Some links lead to what has no path, such as the pipe that is the standard output.
        const bool bStrange = !IsSame(oPath, m_oPath);
        if (bStrange) m_oPath = oPath;
        sys::Entry oThere;
        if (sys::LookAt(m_oPath.CStr(), true, oThere)) {
            if (oThere.eKind == sys::EntryKind::Folder) Refuse(sys::IS_FOLDER);
            if (!sys::MayWrite(m_oPath.CStr())) Refuse(NOT_PERMITTED);
        } else if (sys::RuntimeError() != sys::NOT_THERE) {
            Refuse(sys::RuntimeError());  // links in a circle, a file in place of a folder
        }
        if (bStrange || oThere.eKind == sys::EntryKind::Other) {
            m_oFile.Open(m_oPath, "Tws");
            return;
        }
        MakeBeside();
        if (m_oBeside.IsEmpty()) Refuse(sys::RuntimeError());
        try {
            m_oFile.Open(m_oBeside, "Tw");
            m_oFile.SetName(oPath);
        } catch (...) {
            Remove();
            throw;
        }
    });
}

// A new file, or none.
void File_Replacement::MakeBeside() {
    const Str oFolder = File_Path::Dir(m_oPath.View());
    // Where they cannot be made, the file cannot either, and that says why.
    if (!oFolder.IsEmpty()) sys::MakeDirectories(oFolder.CStr());
    (void)file::MakeNew(oFolder.View(), file::BESIDE, [this](const char* sPath) {
        m_oBeside = Str(sPath);
        SetWatch(m_oBeside.CStr());  // in front: a signal may come at any time
        if (sys::CreateNew(sPath)) return true;
        SetWatch(nullptr);
        m_oBeside.Clear();
        return false;
    });
}

void File_Replacement::Remove() noexcept {
    (void)sys::RemoveFile(m_oBeside.CStr());
    SetWatch(nullptr);
    m_oBeside.Clear();
}

File_Replacement::~File_Replacement() {
    if (m_oBeside.IsEmpty()) return;
    try {
        m_oFile.Close();
    } catch (const std::exception&) {
        // The file goes away anyhow.
    }
    Remove();
}

void File_Replacement::Commit(bool bDurable) {
    Where("vok::File_Replacement::Commit", [&] {
        const auto Fail = [&] { Msg::FileWriteError(m_oPath.CStr(), 0, 0, Msg::SystemError()); };
        m_oFile.Close();
        if (m_oBeside.IsEmpty()) return;
        // On the disk before it takes the place of what was there, and its new name after that. Its
        // mode comes last: it may not let its owner read.
        if (bDurable && !sys::SyncFile(m_oBeside.CStr())) Fail();
        sys::CopyMode(m_oPath.CStr(), m_oBeside.CStr());
        if (!sys::Rename(m_oBeside.CStr(), m_oPath.CStr(), true)) Fail();
        SetWatch(nullptr);
        m_oBeside.Clear();
        if (bDurable) (void)sys::SyncFile(File_Path::Dir(m_oPath.View()).CStr());
    });
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// What is done with files and folders by their paths.
#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/file/make_new.h"
#include "vok/file/path.h"
#include "vok/sys/disk.h"
#include "vok/sys/sys.h"

namespace vok {

namespace file {

namespace {

// Others may leave files behind under such names, but hardly so many.
constexpr unsigned MOST_NAMES = 1u << 16;

}  // namespace

Str MakeNew(std::string_view sFolder, std::string_view sStart,
            const std::function<bool(const char*)>& oMake) {
    static std::atomic<u2_t> s_uNames{0};
    for (unsigned u = 0; u < MOST_NAMES; ++u) {
        Str oPath(sFolder);
        const bool bBehind =
            !sFolder.empty() &&
            std::string_view(sys::PATH_SEPARATORS).find(sFolder.back()) == sFolder.npos;
        if (bBehind) oPath.Add("/");
        oPath.Add(sStart);
        char sNumber[NUMBER_ROOM];
        FormatInteger(sys::ProcessId(), sNumber);
        oPath.Add(sNumber);
        oPath.Add("-");
        FormatInteger(s_uNames.fetch_add(1), sNumber);
        oPath.Add(sNumber);
        if (oMake(oPath.CStr())) return oPath;
        if (sys::RuntimeError() != sys::ALREADY_THERE) break;
    }
    return {};
}

}  // namespace file

namespace {

// The part of a path in front of the last name, as far as folders have to be made there.
void MakeAbove(const Str& oPath) {
    const Str oFolder = File_Path::Dir(oPath.View());
    // When it cannot be made, what is to be done in it will say why.
    if (!oFolder.IsEmpty()) (void)sys::MakeDirectories(oFolder.CStr());
}

// Where new files and folders go, unless it is told.
Str TempFolder() {
    std::string sFolder;
    if (!sys::TempFolder(sFolder)) Msg::PathOrFileDoesNotExist("", sys::RuntimeError());
    return Str(std::string_view(sFolder));
}

// A file that goes away again unless it is kept.
class Beside {
  public:
    explicit Beside(const Str& oFinal)
        : m_oPath(
              file::MakeNew(File_Path::Dir(oFinal.View()).View(), file::BESIDE, sys::CreateNew)) {}
    Beside(const Beside&) = delete;
    Beside& operator=(const Beside&) = delete;
    ~Beside() {
        if (!m_oPath.IsEmpty()) (void)sys::RemoveFile(m_oPath.CStr());
    }
    [[nodiscard]] const Str& Path() const noexcept { return m_oPath; }
    void Keep() noexcept { m_oPath.Clear(); }

  private:
    Str m_oPath;
};

// Whether an error means that there is nothing at a path.
bool IsNothing(u2_t uError) noexcept {
    return uError == sys::NOT_THERE || uError == sys::NO_FOLDER;
}

bool CopyFile(const Str& oFrom, const Str& oTo, const File::CopyProgress& oProgress) {
    const auto oFail = [&](u2_t uError) {
        Msg::CouldNotCopyFile(oFrom.CStr(), oTo.CStr(), uError);
    };
    sys::Entry oSource;
    if (!sys::LookAt(oFrom.CStr(), true, oSource)) oFail(sys::RuntimeError());
    if (oSource.eKind == sys::EntryKind::Folder) oFail(sys::IS_FOLDER);
    if (oSource.eKind != sys::EntryKind::File || oTo.IsEmpty()) oFail(sys::INVALID_ARGUMENT);
    sys::Entry oTarget;
    if (sys::LookAt(oTo.CStr(), true, oTarget)) {
        if (oTarget.eKind == sys::EntryKind::Folder) oFail(sys::IS_FOLDER);
        // A file is no copy of itself.
        const bool bSame = oSource.uDevice == oTarget.uDevice && oSource.uNumber == oTarget.uNumber;
        if (bSame) oFail(sys::INVALID_ARGUMENT);
    }
    MakeAbove(oTo);
    Beside oBeside(oTo);
    if (oBeside.Path().IsEmpty()) oFail(sys::RuntimeError());
    sys::CopyStep pStep = nullptr;
    if (oProgress) {
        pStep = [](void* pContext, u3_t uDone, u3_t uTotal) {
            return (*static_cast<const File::CopyProgress*>(pContext))(uDone, uTotal);
        };
    }
    void* const pContext = const_cast<File::CopyProgress*>(&oProgress);
    switch (sys::CopyInto(oFrom.CStr(), oBeside.Path().CStr(), pStep, pContext)) {
        case sys::CopyEnd::Stopped: return false;
        case sys::CopyEnd::Failed: oFail(sys::RuntimeError()); break;
        case sys::CopyEnd::Done: break;
    }
    if (!sys::Rename(oBeside.Path().CStr(), oTo.CStr(), true)) oFail(sys::RuntimeError());
    oBeside.Keep();
    return true;
}

}  // namespace

bool File::Copy(const Str& oFrom, const Str& oTo, const CopyProgress& oProgress) {
    return Where("vok::File::Copy", [&] { return CopyFile(oFrom, oTo, oProgress); });
}

void File::Rename(const Str& oFrom, const Str& oTo, bool bReplace) {
    return Where("vok::File::Rename", [&] {
        if (sys::Rename(oFrom.CStr(), oTo.CStr(), bReplace)) return;
        u2_t uError = sys::RuntimeError();
        sys::Entry oEntry;
        const bool bFile = uError == sys::ANOTHER_DEVICE &&
                           sys::LookAt(oFrom.CStr(), false, oEntry) &&
                           oEntry.eKind == sys::EntryKind::File;
        if (bFile && !bReplace && sys::LookAt(oTo.CStr(), false, oEntry)) {
            uError = sys::ALREADY_THERE;
        } else if (bFile) {
            (void)CopyFile(oFrom, oTo, {});
            if (sys::RemoveFile(oFrom.CStr())) return;
            uError = sys::RuntimeError();
        }
        Msg::CouldNotRenameFile(oFrom.CStr(), oTo.CStr(), uError);
    });
}

bool File::Remove(const Str& oPath) {
    return Where("vok::File::Remove", [&] {
        if (sys::RemoveFile(oPath.CStr())) return true;
        const u2_t uError = sys::RuntimeError();
        if (!IsNothing(uError)) Msg::CouldNotRemoveFile(oPath.CStr(), uError);
        return false;
    });
}

bool File::MkDir(const Str& oPath) {
    return Where("vok::File::MkDir", [&] {
        sys::Entry oEntry;
        const auto oIsThere = [&] {
            return sys::LookAt(oPath.CStr(), true, oEntry) &&
                   oEntry.eKind == sys::EntryKind::Folder;
        };
        if (oIsThere()) return false;
        MakeAbove(oPath);
        if (sys::CreateFolder(oPath.CStr(), false)) return true;
        const u2_t uError = sys::RuntimeError();
        if (!oIsThere()) Msg::CouldNotCreateDirectory(oPath.CStr(), uError);
        return false;  // somebody else was faster
    });
}

bool File::RmDir(const Str& oPath) {
    return Where("vok::File::RmDir", [&] {
        if (sys::RemoveFolder(oPath.CStr())) return true;
        const u2_t uError = sys::RuntimeError();
        if (uError == sys::NOT_THERE) return false;
        std::vector<std::string> asName;
        if (uError != sys::NO_FOLDER && sys::ListFolder(oPath.CStr(), asName) && !asName.empty()) {
            const auto oFirst = std::min_element(asName.begin(), asName.end());
            Msg::DirectoryIsNotEmpty(oPath.CStr(), Str(std::string_view(*oFirst)).CStr());
        }
        Msg::CouldNotRemoveFile(oPath.CStr(), uError);
    });
}

bool File::Exists(const Str& oPath) {
    sys::Entry oEntry;
    return sys::LookAt(oPath.CStr(), true, oEntry);
}

File_Info File::Info(const Str& oPath, bool bFollow) {
    return Where("vok::File::Info", [&] {
        sys::Entry o;
        if (!sys::LookAt(oPath.CStr(), bFollow, o)) {
            const u2_t uError = sys::RuntimeError();
            if (!IsNothing(uError)) Msg::PathOrFileDoesNotExist(oPath.CStr(), uError);
            return File_Info{};
        }
        return File_Info{static_cast<File_Info::Kind>(o.eKind),
                         o.bMayWrite,
                         o.uMode,
                         o.uSize,
                         o.dModified,
                         o.dRead};
    });
}

void File::Touch(const Str& oPath, double dSeconds) {
    return Where("vok::File::Touch", [&] {
        if (sys::SetModified(oPath.CStr(), dSeconds)) return;
        const u2_t uError = sys::RuntimeError();
        char sTime[128];
        FormatDate(dSeconds, ' ', sTime);
        Msg::CouldNotTouchFile(oPath.CStr(), sTime, uError);
    });
}

Str File::Temp(std::string_view sStart, const Str& oFolder) {
    return Where("vok::File::Temp", [&] {
        const Str oWhere = oFolder.IsEmpty() ? TempFolder() : oFolder;
        Str oPath = file::MakeNew(oWhere.View(), sStart, sys::CreateNew);
        if (oPath.IsEmpty()) {
            const u2_t uError = sys::RuntimeError();
            Msg::CouldNotOpenFile(File_Path::Join(oWhere.View(), sStart, true).CStr(), "w",
                                  OpenFiles(), uError);
        }
        return oPath;
    });
}

Str File::TempDir(std::string_view sStart, const Str& oFolder) {
    return Where("vok::File::TempDir", [&] {
        const Str oWhere = oFolder.IsEmpty() ? TempFolder() : oFolder;
        Str oPath = file::MakeNew(oWhere.View(), sStart,
                                  [](const char* s) { return sys::CreateFolder(s, true); });
        if (oPath.IsEmpty()) {
            const u2_t uError = sys::RuntimeError();
            Msg::CouldNotCreateDirectory(File_Path::Join(oWhere.View(), sStart, true).CStr(),
                                         uError);
        }
        return oPath;
    });
}

}  // namespace vok

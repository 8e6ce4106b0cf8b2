// SPDX-License-Identifier: MIT
#include "vok/file/tree.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/sys/disk.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

constexpr u2_t NO_UTF8 = 84;  // EILSEQ of Linux: systems whose names are UTF-16 have none of these

}  // namespace

File_Tree::File_Tree(const Str& oFolder, Options oOptions)
    : m_oOptions(std::move(oOptions)), m_oPath(oFolder) {
    Where("vok::File_Tree::File_Tree", [&] {
        sys::Entry oTop;
        const bool bThere = sys::LookAt(oFolder.CStr(), true, oTop);
        if (!bThere || oTop.eKind != sys::EntryKind::Folder) {
            const u2_t uError = bThere ? sys::NO_FOLDER : sys::RuntimeError();
            Msg::SourceDirectoryNotFound(oFolder.CStr(), uError);
        }
        const std::string_view sFolder = oFolder.View();
        const bool bEnded =
            std::string_view(sys::PATH_SEPARATORS).find(sFolder.back()) != std::string_view::npos;
        m_uTop = sFolder.size() + !bEnded;
        std::vector<std::string> asName;
        if (!sys::ListFolder(oFolder.CStr(), asName)) {
            Msg::SourceDirectoryNotFound(oFolder.CStr(), sys::RuntimeError());
        }
        std::sort(asName.begin(), asName.end(), std::greater<>());
        m_aoLevel.push_back({std::move(asName), sFolder.size(), oTop.uDevice, oTop.uNumber});
    });
}

bool File_Tree::Next() {
    return Where("vok::File_Tree::Next", [&] {
        if (std::exchange(m_bEnter, false)) (void)Enter(m_uDevice, m_uNumber);
        while (!m_aoLevel.empty()) {
            if (m_aoLevel.back().asName.empty()) {
                m_aoLevel.pop_back();
                continue;
            }
            const std::string sName = std::move(m_aoLevel.back().asName.back());
            m_aoLevel.back().asName.pop_back();
            if (!Look(sName)) continue;
            m_bEnter = false;
            const bool bFolder = m_oInfo.IsFolder();
            const Verdict eVerdict =
                m_oOptions.m_oFilter ? m_oOptions.m_oFilter(*this) : Verdict::Take;
            if (eVerdict == Verdict::Take) {
                m_bEnter = bFolder;
                return true;
            }
            if (eVerdict == Verdict::Below && bFolder) (void)Enter(m_uDevice, m_uNumber);
        }
        return false;
    });
}

// Opens the folder that m_oPath leads to.
bool File_Tree::Enter(u3_t uDevice, u3_t uNumber) {
    if (m_oOptions.m_bFollowLinks) {
        const bool bBack = std::any_of(m_aoLevel.begin(), m_aoLevel.end(), [&](const Level& o) {
            return o.uDevice == uDevice && o.uNumber == uNumber;
        });
        if (bBack) {
            Tell(m_oPath, LEADS_BACK);
            return false;
        }
    }
    std::vector<std::string> asName;
    if (!sys::ListFolder(m_oPath.CStr(), asName)) {
        const u2_t uError = sys::RuntimeError();
        Tell(m_oPath, uError);
        if (asName.empty()) return false;  // else goes through what it got
    }
    std::sort(asName.begin(), asName.end(), std::greater<>());
    m_aoLevel.push_back({std::move(asName), m_oPath.Len(), uDevice, uNumber});
    return true;
}

// Makes an entry of the innermost folder the one that is come to. False where it is left out.
bool File_Tree::Look(const std::string& sName) {
    const std::size_t uFolder = m_aoLevel.back().uPath;
    Str oPath(m_oPath.View().substr(0, uFolder));
    const bool bTop = m_aoLevel.size() == 1;
    if (!bTop || m_uTop != uFolder) oPath.Add("/");
    m_uName = oPath.Len();
    oPath.Add(std::string_view(sName));
    m_oPath = std::move(oPath);
    // Nothing can be opened by a path that was made UTF-8.
    if (!IsUtf8(sName.data(), sName.size())) {
        Tell(m_oPath, NO_UTF8);
        return false;
    }
    sys::Entry o;
    bool bThere = sys::LookAt(m_oPath.CStr(), m_oOptions.m_bFollowLinks, o);
    // A link that leads nowhere is still one.
    if (!bThere && m_oOptions.m_bFollowLinks) bThere = sys::LookAt(m_oPath.CStr(), false, o);
    if (!bThere) {
        Tell(m_oPath, sys::RuntimeError());
        return false;
    }
    m_oInfo = {
        static_cast<File_Info::Kind>(o.eKind), o.bMayWrite, o.uMode, o.uSize, o.dModified, o.dRead};
    m_uDevice = o.uDevice;
    m_uNumber = o.uNumber;
    return true;
}

void File_Tree::Tell(const Str& oPath, u2_t uError) {
    ++m_uLeftOut;
    if (m_oOptions.m_oTold) m_oOptions.m_oTold(oPath, uError);
}

}  // namespace vok

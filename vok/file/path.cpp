// SPDX-License-Identifier: MIT
#include "vok/file/path.h"

#include <algorithm>
#include <string>
#include <vector>

#include "vok/base/where.h"
#include "vok/file/messages.h"
#include "vok/sys/disk.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

using Style = File_Path::Style;

bool IsSeparator(char c, Style eStyle) noexcept {
    return c == '/' || (eStyle == Style::Windows && c == '\\');
}

bool IsLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::size_t EndOfName(std::string_view s, std::size_t u, Style eStyle) noexcept {
    while (u < s.size() && !IsSeparator(s[u], eStyle)) ++u;
    return u;
}

std::size_t EndOfSeparators(std::string_view s, std::size_t u, Style eStyle) noexcept {
    while (u < s.size() && IsSeparator(s[u], eStyle)) ++u;
    return u;
}

// What a path begins with.
struct Root {
    std::size_t uDrive = 0;   // bytes of "C:" or "//server/share"
    bool bSeparator = false;  // whether a separator stands behind it
    std::size_t uNames = 0;   // where the names begin
    [[nodiscard]] bool IsServer() const noexcept { return uDrive > 2; }
};

Root RootOf(std::string_view s, Style eStyle) noexcept {
    Root o;
    if (eStyle == Style::Windows) {
        if (s.size() >= 2 && IsLetter(s[0]) && s[1] == ':') {
            o.uDrive = 2;
        } else if (s.size() > 2 && IsSeparator(s[0], eStyle) && IsSeparator(s[1], eStyle) &&
                   !IsSeparator(s[2], eStyle)) {
            const std::size_t uServer = EndOfName(s, 2, eStyle);
            const std::size_t uShare = EndOfSeparators(s, uServer, eStyle);
            o.uDrive = EndOfName(s, uShare, eStyle);
        }
    }
    o.uNames = EndOfSeparators(s, o.uDrive, eStyle);
    o.bSeparator = o.uNames != o.uDrive;
    return o;
}

bool IsAbsoluteRoot(const Root& o, Style eStyle) noexcept {
    return eStyle == Style::Windows ? o.IsServer() || (o.uDrive != 0 && o.bSeparator)
                                    : o.bSeparator;
}

// Where the last name is: [first, second).
std::pair<std::size_t, std::size_t> LastName(std::string_view s, Style eStyle) noexcept {
    const std::size_t uNames = RootOf(s, eStyle).uNames;
    std::size_t uEnd = s.size();
    while (uEnd > uNames && IsSeparator(s[uEnd - 1], eStyle)) --uEnd;
    std::size_t uBegin = uEnd;
    while (uBegin > uNames && !IsSeparator(s[uBegin - 1], eStyle)) --uBegin;
    return {uBegin, uEnd};
}

std::string WithSlashes(std::string_view s, Style eStyle) {
    std::string sText(s);
    if (eStyle == Style::Windows) std::replace(sText.begin(), sText.end(), '\\', '/');
    return sText;
}

// A path in its parts, without names that lead nowhere.
struct Parts {
    std::string sRoot;  // "", "/", "C:", "C:/", "//server/share/"
    bool bFixed;        // nothing is above its first name
    std::vector<std::string_view> asName;
};

Parts Split(std::string_view s, Style eStyle) {
    const Root oRoot = RootOf(s, eStyle);
    Parts o;
    o.bFixed = oRoot.bSeparator || oRoot.IsServer();
    o.sRoot = WithSlashes(s.substr(0, oRoot.uDrive), eStyle) + (o.bFixed ? "/" : "");
    for (std::size_t u = oRoot.uNames; u < s.size(); u = EndOfSeparators(s, u, eStyle)) {
        const std::size_t uEnd = EndOfName(s, u, eStyle);
        const std::string_view sName = s.substr(u, uEnd - u);
        u = uEnd;
        if (sName == ".") continue;
        if (sName != "..") {
            o.asName.push_back(sName);
        } else if (!o.asName.empty() && o.asName.back() != "..") {
            o.asName.pop_back();
        } else if (!o.bFixed) {
            o.asName.push_back(sName);
        }
    }
    return o;
}

Str Put(const Parts& o, std::size_t uUp = 0, std::size_t uFrom = 0) {
    std::string s = uUp == 0 && uFrom == 0 ? o.sRoot : "";
    const auto oAdd = [&](std::string_view sName) {
        if (!s.empty() && s.back() != '/' && s != o.sRoot) s += '/';
        s += sName;
    };
    for (std::size_t u = 0; u < uUp; ++u) oAdd("..");
    for (std::size_t u = uFrom; u < o.asName.size(); ++u) oAdd(o.asName[u]);
    return Str(std::string_view(s.empty() ? "." : s));
}

// Whether Windows takes a name as "..", or as something in a file.
bool IsStrange(std::string_view sName) noexcept {
    if (sName.find(':') != sName.npos) return true;
    const std::size_t uLast = sName.find_last_not_of(". ");
    return uLast == sName.npos && sName != "." && sName != "..";
}

bool LeadsOut(std::string_view sPath, Style eStyle) {
    const Root oRoot = RootOf(sPath, eStyle);
    if (oRoot.uDrive != 0 || oRoot.bSeparator) return true;
    const Parts o = Split(sPath, eStyle);
    if (!o.asName.empty() && o.asName.front() == "..") return true;
    return eStyle == Style::Windows && std::any_of(o.asName.begin(), o.asName.end(), IsStrange);
}

// Drives are the same in both cases.
bool IsSameRoot(std::string_view a, std::string_view b) noexcept {
    if (a.size() < 2 || a[1] != ':' || b.size() != a.size()) return a == b;
    return (a[0] | 0x20) == (b[0] | 0x20) && a.substr(1) == b.substr(1);
}

}  // namespace

Str File_Path::Dir(std::string_view sPath, Style eStyle) {
    const std::size_t uNames = RootOf(sPath, eStyle).uNames;
    std::size_t uEnd = LastName(sPath, eStyle).first;
    while (uEnd > uNames && IsSeparator(sPath[uEnd - 1], eStyle)) --uEnd;
    return Str(std::string_view(WithSlashes(sPath.substr(0, uEnd), eStyle)));
}

std::string_view File_Path::Name(std::string_view sPath, Style eStyle) {
    const auto [uBegin, uEnd] = LastName(sPath, eStyle);
    return sPath.substr(uBegin, uEnd - uBegin);
}

std::string_view File_Path::Stem(std::string_view sPath, Style eStyle) {
    const std::string_view sName = Name(sPath, eStyle);
    return sName.substr(0, sName.size() - Ext(sPath, eStyle).size());
}

std::string_view File_Path::Ext(std::string_view sPath, Style eStyle) {
    const std::string_view sName = Name(sPath, eStyle);
    const std::size_t uDot = sName.rfind('.');
    if (uDot == sName.npos || uDot == 0 || sName == "..") return {};
    return sName.substr(uDot);
}

bool File_Path::IsAbsolute(std::string_view sPath, Style eStyle) noexcept {
    return IsAbsoluteRoot(RootOf(sPath, eStyle), eStyle);
}

Str File_Path::Normal(std::string_view sPath, Style eStyle) {
    return Put(Split(sPath, eStyle));
}

Str File_Path::Join(std::string_view sFolder, std::string_view sPath, bool bOutside, Style eStyle) {
    return Where("vok::File_Path::Join", [&] {
        if (!bOutside && LeadsOut(sPath, eStyle)) file::RaiseLeadsOut(sFolder, sPath);
        const Root oRoot = RootOf(sPath, eStyle);
        if (oRoot.uDrive != 0 || IsAbsoluteRoot(oRoot, eStyle)) return Normal(sPath, eStyle);
        const Root oBase = RootOf(sFolder, eStyle);
        // "/x" is below the root of the drive that the folder is on.
        std::string s(oRoot.bSeparator ? sFolder.substr(0, oBase.uDrive) : sFolder);
        // Behind "C:" a separator would mean another folder.
        const bool bDrive = oBase.uDrive == 2 && s.size() == 2;
        if (!s.empty() && !bDrive && !oRoot.bSeparator) s += '/';
        s += sPath;
        return Normal(s, eStyle);
    });
}

Str File_Path::Absolute(std::string_view sPath) {
    return Where("vok::File_Path::Absolute", [&] {
        const Str oPath(sPath);
        std::string sFull;
        if (!sys::FullPath(oPath.IsEmpty() ? "." : oPath.CStr(), sFull)) {
            Msg::PathOrFileDoesNotExist(oPath.CStr(), sys::RuntimeError());
        }
        return Normal(sFull);
    });
}

Str File_Path::Relative(std::string_view sPath, std::string_view sFolder, Style eStyle) {
    const Parts oTo = Split(sPath, eStyle);
    const Parts oFrom = Split(sFolder, eStyle);
    if (!IsSameRoot(oTo.sRoot, oFrom.sRoot)) return Put(oTo);
    const auto [pFrom, pTo] = std::mismatch(oFrom.asName.begin(), oFrom.asName.end(),
                                            oTo.asName.begin(), oTo.asName.end());
    // Nobody knows the name of a folder above.
    if (pFrom != oFrom.asName.end() && *pFrom == "..") return Put(oTo);
    const auto uUp = static_cast<std::size_t>(oFrom.asName.end() - pFrom);
    const auto uShared = static_cast<std::size_t>(pTo - oTo.asName.begin());
    if (uUp == 0 && uShared == 0) {
        Parts oRest = oTo;
        oRest.sRoot.clear();
        return Put(oRest);
    }
    return Put(oTo, uUp, uShared);
}

}  // namespace vok

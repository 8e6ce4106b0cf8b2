// SPDX-License-Identifier: MIT
// The version of a tree and of a stream.
#include <charconv>
#include <cstring>
#include <iterator>
#include <utility>

#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/file/rest.h"

namespace vok {

namespace dgraph {

VersionTag::VersionTag(const Version& oVersion) noexcept {
    std::memcpy(m_sText, MAGIC, MAGIC_SIZE);
    char* p = m_sText + MAGIC_SIZE;
    char cBefore = ' ';
    for (const i3_t iNumber : {oVersion.iMajor, i3_t{oVersion.iMinor}, i3_t{oVersion.iPatch}}) {
        *p++ = std::exchange(cBefore, '.');
        p = std::to_chars(p, std::end(m_sText), iNumber).ptr;
    }
    *p = 0;
    m_uSize = static_cast<std::size_t>(p - m_sText);
}

bool ParseVersion(const char* sTag, Version& oVersion) noexcept {
    if (std::strncmp(sTag, MAGIC, MAGIC_SIZE) != 0) return false;
    const char* p = sTag + MAGIC_SIZE;
    oVersion.iMajor = ParseLong(p, &p);
    if (*p++ != '.') return false;
    oVersion.iMinor = ParseLong(p, &p);
    if (*p++ != '.') return false;
    oVersion.iPatch = ParseLong(p, &p);
    return *p == 0;
}

void StoreHeader(char* p, const Version& oVersion) noexcept {
    std::memset(p, 0, HEADER_SIZE);
    std::memcpy(p, MAGIC, MAGIC_SIZE);
    p[MAGIC_SIZE] = static_cast<char>(oVersion.iMajor);
    p[MAGIC_SIZE + 1] = static_cast<char>(oVersion.iMinor);
    p[MAGIC_SIZE + 2] = static_cast<char>(oVersion.iPatch);
}

bool LoadHeader(const char* p, std::size_t uSize, Version& oVersion) noexcept {
    if (uSize < MAGIC_SIZE || std::memcmp(p, MAGIC, MAGIC_SIZE) != 0) return false;
    const auto oByte = [&](std::size_t u) {
        return MAGIC_SIZE + u < uSize ? static_cast<u0_t>(p[MAGIC_SIZE + u]) : u0_t{0};
    };
    oVersion = {oByte(0), oByte(1), oByte(2)};
    return true;
}

}  // namespace dgraph

void Dgraph_SetVersion(Data& data, int iMajor, int iMinor, int iPatch) {
    return Where("vok::Dgraph_SetVersion", [&] {
        data.SetUserTag(dgraph::VersionTag({iMajor, iMinor, iPatch}).CStr());
    });
}

bool Dgraph_CanLoadDGraph(File_Stream& in) {
    return Where("vok::Dgraph_CanLoadDGraph", [&] {
        char sHeader[dgraph::HEADER_SIZE];
        const i3_t iPosition = in.Tell();
        const std::size_t uRead = ReadUpTo(in, sHeader, sizeof(sHeader));
        in.Seek(iPosition, File_Stream::FROM_START);
        dgraph::Version oVersion;
        return dgraph::LoadHeader(sHeader, uRead, oVersion);
    });
}

}  // namespace vok

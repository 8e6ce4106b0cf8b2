// SPDX-License-Identifier: MIT
#include "tools/standard_input.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "tools/progress.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace tools {

StandardInput& StandardInput::The() {
    static StandardInput s_oInput;
    return s_oInput;
}

StandardInput::StandardInput() {
    vok::sys::SetBinary(stdin);
    Progress oProgress("reading");
    char sPiece[65536];
    while (m_oBytes.Size() < MOST_KEPT) {
        const std::size_t uRead = ReadBehind(sPiece, sizeof(sPiece));
        m_oBytes.Add(sPiece, uRead);
        oProgress.Add(uRead);
        if (uRead == 0) break;
    }
    m_bGone = false;
}

std::size_t StandardInput::ReadBehind(char* pTarget, std::size_t uCount) {
    if (m_bWhole) return 0;
    const std::size_t uRead = std::fread(pTarget, 1, uCount, stdin);
    if (uRead < uCount) {
        if (std::ferror(stdin) != 0) vok::Msg::UnexpectedEndOfFile("-", vok::sys::RuntimeError());
        m_bWhole = uRead == 0;
    }
    m_bGone = m_bGone || uRead != 0;
    return uRead;
}

void StandardInput::KeepAll() {
    Progress oProgress("reading");
    char sPiece[65536];
    const bool bGone = m_bGone;
    while (const std::size_t uRead = ReadBehind(sPiece, sizeof(sPiece))) {
        m_oBytes.Add(sPiece, uRead);
        oProgress.Add(uRead);
    }
    m_bGone = bGone;
}

std::size_t StandardInputStream::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    StandardInput& o = StandardInput::The();
    char* p = static_cast<char*>(pTarget);
    std::size_t uDone = std::min(uCount, o.Bytes().Size() - m_uKept);
    if (uDone != 0) std::memcpy(p, o.Bytes().Beg() + m_uKept, uDone);
    m_uKept += uDone;
    if (uDone < uCount) uDone += o.ReadBehind(p + uDone, uCount - uDone);
    if (uDone < uCount && !bAllowShort) vok::Msg::UnexpectedEndOfFile(Name(), 0);
    return uDone;
}

std::size_t StandardInputStream::Write(const void*, std::size_t) {
    vok::Msg::FileIsNotOpenForWrite(Name());
}

void StandardInputStream::Seek(vok::i3_t iOffset, int iWhence) {
    vok::Msg::FileSeekFailed(iOffset, iWhence, 0);
}

}  // namespace tools

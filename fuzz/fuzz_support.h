// SPDX-License-Identifier: MIT
// What the fuzz targets share.
#ifndef FUZZ_FUZZ_SUPPORT_H
#define FUZZ_FUZZ_SUPPORT_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/data/store_check.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"

namespace vok {

inline void Check(bool bGood) {
    if (!bGood) std::abort();
}

// Small enough for quick runs, large enough to get everywhere.
inline Limits SmallLimits() {
    Limits oLimits;
    oLimits.m_uNodes = 5000;
    oLimits.m_uDepth = 500;
    oLimits.m_uSkippedSlots = 1000;
    oLimits.m_uTextBytes = 100000;
    oLimits.m_uAttributes = 20;
    oLimits.m_uPathSteps = 100000;
    return oLimits;
}

// Holds a load with default limits to what so many bytes may cost. Twice the free work: the limit
// is looked at between pieces of work.
inline void CheckCost(const Load_Report& oReport, std::size_t uBytes) {
    Check(oReport.m_uWork <= 2 * Limits::FREE_WORK + uBytes * Limits().m_uWorkPerByte);
}

// The same bytes without names, seeking, or more than one byte at a time; what is written
// goes field by field.
class Foreign_Stream : public File_Stream {
  public:
    explicit Foreign_Stream(std::string_view sBytes = {}) : m_sBytes(sBytes) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        const std::size_t uMost = bAllowShort && uCount > 1 ? 1 : uCount;
        const std::size_t uRead = m_sBytes.copy(static_cast<char*>(pTarget), uMost);
        m_sBytes.remove_prefix(uRead);
        if (uRead < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(nullptr, 0);
        return uRead;
    }
    std::size_t Write(const void* pSource, std::size_t uCount) override {
        m_sWritten.append(static_cast<const char*>(pSource), uCount);
        return uCount;
    }
    void Seek(i3_t iOffset, int iWhence) override { Msg::FileSeekFailed(iOffset, iWhence, 0); }
    i3_t Tell() override { return -1; }
    int Flush() override { return 0; }

    std::string_view m_sBytes;  // still to be read
    std::string m_sWritten;
};

// The message that oBody raises; empty if none.
template <class F>
std::string Raised(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        Check(*oError.what() != 0);
        return oError.what();
    }
    return {};
}

// Instructions for those who build something: bytes, numbers and texts from the input.
class Script {
  public:
    explicit Script(std::string_view sBytes) noexcept : m_sBytes(sBytes) {}

    [[nodiscard]] bool IsAtEnd() const noexcept { return m_sBytes.empty(); }
    unsigned Byte() noexcept {
        if (m_sBytes.empty()) return 0;
        const u0_t uByte = static_cast<u0_t>(m_sBytes.front());
        m_sBytes.remove_prefix(1);
        return uByte;
    }
    u3_t Number() noexcept {
        u3_t uNumber = 0;
        for (unsigned u = Byte() % 9; u > 0; --u) uNumber = uNumber << 8 | Byte();
        return uNumber;
    }
    std::string_view Text() noexcept {
        const std::string_view sText = m_sBytes.substr(0, Byte() % 80);
        m_sBytes.remove_prefix(sText.size());
        return sText;
    }

  private:
    std::string_view m_sBytes;
};

// The tree is what the rest of the code takes it for.
inline void CheckTree(const Data& oTree) {
    const Data_Base* pBase = dgraph::Access::BaseOf(oTree);
    if (pBase == nullptr) return;
    const char* sFault = CheckStore(*pBase);
    if (sFault != nullptr) std::fprintf(stderr, "%s\n", sFault);
    Check(sFault == nullptr);
}

inline std::string Save(const Data& oTree) {
    CheckTree(oTree);
    File_Buf oBuf("w");
    Dgraph_SaveDGraph(oTree, oBuf);
    return {oBuf.Data(), oBuf.Size()};
}

}  // namespace vok

#endif  // FUZZ_FUZZ_SUPPORT_H

// SPDX-License-Identifier: MIT
// The bytes of an archive that is read, in a file or in memory. Internal.
#ifndef VOK_ZIP_SOURCE_H
#define VOK_ZIP_SOURCE_H

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/file/file.h"
#include "vok/zip/codec.h"

namespace vok::zip {

// Reads at any position. A file is seen through a window, so that small members which lie side by
// side cost one transfer together.
class Source {
  public:
    // A file open for reading that can seek; it must stay alive and unchanged.
    explicit Source(File& oFile) : m_pFile(&oFile), m_uSize(SizeOf(oFile)) {}
    // A block of the caller's, which must stay alive and unchanged.
    Source(const void* pBlock, std::size_t uSize)
        : m_pBlock(static_cast<const char*>(pBlock)), m_uSize(uSize) {}

    [[nodiscard]] u3_t Size() const noexcept { return m_uSize; }

    // Bytes from uPosition on: uLeast of them if they are there, at most CHUNK, and more where
    // they are at hand. Valid until the next call.
    [[nodiscard]] std::string_view View(u3_t uPosition, std::size_t uLeast) {
        if (uPosition >= m_uSize) return {};
        const u3_t uLeft = m_uSize - uPosition;
        if (m_pFile == nullptr) {
            return {m_pBlock + uPosition, static_cast<std::size_t>(std::min<u3_t>(uLeft, MOST))};
        }
        const bool bInside = uPosition >= m_uStart && uPosition <= m_uStart + m_uWindow;
        const u3_t uHere = bInside ? m_uStart + m_uWindow - uPosition : 0;
        if (uHere < std::min<u3_t>(uLeast, uLeft)) {
            if (m_oWindow.Size() == 0) (void)m_oWindow.AddSpace(CHUNK);
            m_uWindow = 0;
            m_uWindow = Read(uPosition, m_oWindow.Beg(), CHUNK);
            m_uStart = uPosition;
        }
        const auto uSkip = static_cast<std::size_t>(uPosition - m_uStart);
        return {m_oWindow.Beg() + uSkip, m_uWindow - uSkip};
    }

    // Copies up to uCount bytes from uPosition on, past the window; returns their number.
    std::size_t Read(u3_t uPosition, char* pTarget, std::size_t uCount) {
        if (uPosition >= m_uSize) return 0;
        uCount = static_cast<std::size_t>(std::min<u3_t>(uCount, m_uSize - uPosition));
        if (m_pFile == nullptr) {
            std::memcpy(pTarget, m_pBlock + uPosition, uCount);
            return uCount;
        }
        m_pFile->Seek(static_cast<i3_t>(uPosition));
        return m_pFile->Read(pTarget, uCount, true);
    }

    // All bytes of a range that lies inside; valid as long as the source when in memory, as
    // oCopy otherwise.
    [[nodiscard]] std::string_view All(u3_t uPosition, std::size_t uSize, Arr<char>& oCopy) {
        if (m_pFile == nullptr) return {m_pBlock + uPosition, uSize};
        m_pFile->Seek(static_cast<i3_t>(uPosition));
        if (m_pFile->Read(oCopy, uSize) < uSize) Msg::UnexpectedEndOfFile(m_pFile->Name(), 0);
        return {oCopy.Beg(), oCopy.Size()};
    }

  private:
    static constexpr u3_t MOST = u3_t{1} << 30;

    [[nodiscard]] static u3_t SizeOf(File& oFile) {
        const i3_t iSize = oFile.Size();
        return iSize > 0 ? static_cast<u3_t>(iSize) : 0;
    }

    File* m_pFile = nullptr;  // null: the bytes are in memory
    const char* m_pBlock = nullptr;
    u3_t m_uSize;

    Arr<char> m_oWindow;
    u3_t m_uStart = 0;
    std::size_t m_uWindow = 0;
};

}  // namespace vok::zip

#endif  // VOK_ZIP_SOURCE_H

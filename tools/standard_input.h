// SPDX-License-Identifier: MIT
// Standard input, which can be read once.
#ifndef TOOLS_STANDARD_INPUT_H
#define TOOLS_STANDARD_INPUT_H

#include "vok/base/arr.h"
#include "vok/file/stream.h"

namespace tools {

// The beginning of it is kept, so that what is no longer than MOST_KEPT can be read again.
class StandardInput {
  public:
    static constexpr std::size_t MOST_KEPT = std::size_t{64} << 20;

    // The one there is. Its beginning is read with the first call.
    [[nodiscard]] static StandardInput& The();

    // Whether Bytes are all of it.
    [[nodiscard]] bool IsWhole() const noexcept { return m_bWhole && !m_bGone; }
    [[nodiscard]] const vok::Arr<char>& Bytes() const noexcept { return m_oBytes; }
    // Reads up to uCount bytes behind those that are kept.
    std::size_t ReadBehind(char* pTarget, std::size_t uCount);
    // Whether some of them are gone.
    [[nodiscard]] bool IsGone() const noexcept { return m_bGone; }
    // Reads all that is left to the bytes that are kept.
    void KeepAll();

  private:
    StandardInput();

    vok::Arr<char> m_oBytes;
    bool m_bWhole = false;
    bool m_bGone = false;
};

// All of it, for one who goes through it once.
class StandardInputStream final : public vok::File_Stream {
  public:
    std::size_t Read(vok::Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override;
    std::size_t Write(const void*, std::size_t) override;
    void Seek(vok::i3_t iOffset, int iWhence) override;
    [[nodiscard]] vok::i3_t Tell() override { return -1; }
    int Flush() override { return 0; }
    [[nodiscard]] const char* Name() const override { return "-"; }

  private:
    std::size_t m_uKept = 0;  // bytes read of those that are kept
};

}  // namespace tools

#endif  // TOOLS_STANDARD_INPUT_H

// SPDX-License-Identifier: MIT
// Compressed bytes to plain ones, in pieces of any size. Internal.
#ifndef VOK_ZIP_UNPACKER_H
#define VOK_ZIP_UNPACKER_H

#include <cstring>
#include <string_view>

#include <zlib.h>

#include "vok/base/arr.h"
#include "vok/base/limits.h"
#include "vok/zip/codec.h"

namespace vok::zip {

// Where an Unpacker gets compressed bytes from, and who says what is wrong with them.
class Feed {
  public:
    // The next bytes, any number of them but less than 4 GiB; none at the end. They stay valid
    // until the next call.
    virtual std::string_view Next() = 0;
    // The same for stored bytes: copies up to uCount of them, returns their number.
    virtual std::size_t Copy(char* pTarget, std::size_t uCount) = 0;
    // The stream is complete; the last uUnused bytes handed out lie behind it.
    virtual Fault Done(std::size_t uUnused) = 0;
    [[noreturn]] virtual void Fail(Fault eFault) = 0;

  protected:
    Feed() = default;
    Feed(const Feed&) = default;
    Feed& operator=(const Feed&) = default;
    ~Feed() = default;
};

// Inflates, or copies, what a feed delivers. Counts what comes out, checks it against size,
// CRC-32 and limits. A fault is raised by the read that needs the bad bytes, and again by
// every one after it.
class Unpacker {
  public:
    static constexpr u3_t ANY_SIZE = ~u3_t{0};

    Unpacker() noexcept = default;
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;
    ~Unpacker();

    // Starts at the first byte of oFeed, which must stay alive. With a size other than ANY_SIZE
    // exactly so many bytes with that CRC-32 are expected. Memory of an earlier use is used again.
    void Open(Feed& oFeed, Format eFormat, const Limits& oLimits, u3_t uSize = ANY_SIZE,
              u2_t uCrc = 0);

    // Copies the next uCount bytes, or those that are left, and returns their number.
    std::size_t Read(void* pTarget, std::size_t uCount) {
        // A count of 0 wraps around and goes the other way.
        if (uCount - 1 < m_uEnd - m_uNext) [[likely]] {
            std::memcpy(pTarget, m_oBuffer.Beg() + m_uNext, uCount);
            m_uNext += uCount;
            return uCount;
        }
        return ReadMore(static_cast<char*>(pTarget), uCount);
    }
    // Moves to uPosition, or to the end, if that can be done by going forward, or back inside the
    // buffer; false without any change if not.
    [[nodiscard]] bool MoveTo(u3_t uPosition);

    // Plain bytes in front of the position.
    [[nodiscard]] u3_t Position() const noexcept { return m_uOut - (m_uEnd - m_uNext); }
    // Whether there are no more. Decompresses what it takes to know.
    [[nodiscard]] bool AtEnd();
    // Compressed bytes used so far.
    [[nodiscard]] u3_t BytesIn() const noexcept { return m_uIn - m_oZ.avail_in; }

  private:
    void Start(Format eFormat);
    std::size_t ReadMore(char* pTarget, std::size_t uCount);
    void Fill();
    std::size_t Produce(char* pTarget, std::size_t uCount);
    std::size_t Inflate(char* pTarget, std::size_t uCount);
    [[nodiscard]] bool HasAnotherMember();
    void Refill();
    void CheckAtSize();
    void CheckLimits();
    [[noreturn]] void Fail(Fault eFault);

    Feed* m_pFeed = nullptr;
    z_stream m_oZ{};
    bool m_bInit = false;  // m_oZ has memory
    Format m_eFormat = Format::Stored;
    Limits m_oLimits;
    u3_t m_uSize = ANY_SIZE;
    u2_t m_uCrcExpected = 0;
    u2_t m_uCrc = 0;
    u3_t m_uOut = 0;          // plain bytes produced
    u3_t m_uIn = 0;           // compressed bytes taken from the feed
    bool m_bDry = false;      // the feed has no more
    bool m_bEnd = false;      // the stream is complete
    bool m_bGzip = false;     // what the header said
    std::size_t m_uHeld = 0;  // bytes behind the stream that are in no piece any more
    Fault m_eFault = Fault::None;

    Arr<char> m_oBuffer;  // the last bytes produced, if they went through it: [0, m_uEnd)
    std::size_t m_uNext = 0;
    std::size_t m_uEnd = 0;
};

}  // namespace vok::zip

#endif  // VOK_ZIP_UNPACKER_H

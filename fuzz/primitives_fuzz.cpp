// SPDX-License-Identifier: MIT
// The binary primitives on arbitrary streams: the first byte chooses one, the rest is the
// stream. Nothing but a Msg_Exception may come out, no length may cost more memory than
// the input has bytes, and what was read must survive being written again.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vok/base/msg.h"
#include "vok/file/file.h"

namespace {

using namespace vok;

void Check(bool bGood) {
    if (!bGood) std::abort();
}

// The same bytes without names, seeking, or more than one byte at a time.
class Forward_Stream : public File_Stream {
  public:
    Forward_Stream(const char* pBytes, std::size_t uSize) : m_oBuf(pBytes, uSize) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        return m_oBuf.Read(pTarget, bAllowShort && uCount > 1 ? 1 : uCount, bAllowShort);
    }
    std::size_t Write(const void*, std::size_t) override { Msg::FileIsNotOpenForWrite(nullptr); }
    void Seek(i3_t iOffset, int iWhence) override { Msg::FileSeekFailed(iOffset, iWhence, 0); }
    i3_t Tell() override { return m_oBuf.Tell(); }
    int Flush() override { return 0; }

  private:
    File_Buf m_oBuf;
};

// Code and size differ where a number was stored longer than need be, or lost bits; what
// is written from the value must not.
void Cint(File_Stream& oStream) {
    i2_t iValue = 0;
    const unsigned uSize = File::LoadCint(oStream, iValue);
    Check(File::DumpSizeCint(iValue) <= uSize);
    File_Buf oCopy("w");
    Check(File::DumpCint(oCopy, iValue) == oCopy.Size());
    oCopy.Seek(0);
    i2_t iAgain = 0;
    File::LoadCint(oCopy, iAgain);
    Check(iAgain == iValue);
}

template <class Load, class Dump>
void Block(File_Stream& oStream, std::size_t uSize, Load pLoad, Dump pDump) {
    File_Buf oBlock("w");
    const u3_t uDone = pLoad(oBlock, oStream);
    Check(uDone <= uSize && oBlock.Size() <= uSize);
    File_Buf oCopy("w");
    Check(uDone == 0 || pDump(oBlock, oCopy) == uDone);
}

void Magic(File_Stream& oStream, bool bRaise) {
    u2_t uLibraryVersion = 0;
    u2_t uVersion = 0;
    const i3_t iStart = oStream.Tell();
    const bool bGood =
        File::CheckMagic(oStream, "Data", uLibraryVersion, uVersion, bRaise, 0, 0, 9);
    if (!bGood) Check(!oStream.CanSeek(File_Stream::FROM_START) || oStream.Tell() == iStart);
    if (bGood) Check(oStream.Tell() - iStart == 30 || oStream.Tell() - iStart == 32);
}

// A name that a header gives is one that a header can be written with.
void ClassName(const File_Buf& oBuf) {
    const Str oName = File::GetBufStreamClass(oBuf);
    if (oName.IsEmpty()) return;
    File_Buf oCopy("w");
    File::WriteMagic(oCopy, oName.CStr(), 1);
    Check(File::GetBufStreamClass(oCopy) == oName);
}

void Run(unsigned uChoice, File_Stream& oStream, const File_Buf& oBuf) {
    const std::size_t uSize = oBuf.Size();
    switch (uChoice) {
        case 0:
            for (;;) Cint(oStream);
        case 1: Block(oStream, uSize, File::LoadBufStream32, File::DumpBufStream32); break;
        case 2: Block(oStream, uSize, File::LoadBufStream64, File::DumpBufStream64); break;
        case 3: File::SkipBufStream32(oStream); break;
        case 4: File::SkipBufStream64(oStream); break;
        case 5: File::LoadEndMarker(oStream); break;
        case 6: Magic(oStream, false); break;
        case 7: Magic(oStream, true); break;
        default: ClassName(oBuf); break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    if (uSize == 0) return 0;
    const char* pBytes = reinterpret_cast<const char*>(pData) + 1;
    File_Buf oBuf(pBytes, uSize - 1);
    Forward_Stream oForward(pBytes, uSize - 1);
    for (File_Stream* pStream :
         {static_cast<File_Stream*>(&oBuf), static_cast<File_Stream*>(&oForward)}) {
        try {
            Run(pData[0] % 9, *pStream, oBuf);
        } catch (const Msg_Exception&) {
        }
    }
    return 0;
}

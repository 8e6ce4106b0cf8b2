// SPDX-License-Identifier: MIT
#include <algorithm>
#include <limits>

#include "vok/base/little_endian.h"
#include "vok/base/where.h"
#include "vok/file/file.h"

namespace vok {

// ---- Cint -------------------------------------------------------------------

namespace {

[[nodiscard]] u3_t CintCode(i2_t iValue) noexcept {
    const u3_t uTwice = 2 * static_cast<u3_t>(static_cast<i3_t>(iValue));
    return iValue < 0 ? 1 - uTwice : uTwice;
}

// A code of 7 bits goes into 1 byte, of 14 into 2, of 21 into 3, of 28 into 4.
[[nodiscard]] unsigned CintSize(u3_t uCode) noexcept {
    unsigned uSize = 1;
    while (uSize < 5 && uCode >> (7 * uSize) != 0) ++uSize;
    return uSize;
}

// The mark of the length in the first byte: 0x80 for 1 byte, 0x08 for 5.
[[nodiscard]] u2_t CintMark(unsigned uSize) noexcept {
    return u2_t{0x100} >> uSize;
}

}  // namespace

unsigned File::DumpCint(File_Stream& oStream, i2_t iValue) {
    return Where("vok::File::DumpCint", [&] {
        const u3_t uCode = CintCode(iValue);
        const unsigned uSize = CintSize(uCode);
        u2_t uMark = CintMark(uSize);
        for (unsigned uNth = uSize; uNth-- > 0; uMark = 0) {
            const auto uByte = static_cast<u0_t>(uMark | uCode >> (8 * uNth));
            oStream.Write(&uByte, 1);
        }
        return uSize;
    });
}

unsigned File::LoadCint(File_Stream& oStream, i2_t& iValue) {
    return Where("vok::File::LoadCint", [&] {
        u0_t uBytes[5];
        oStream.Read(&uBytes[0], 1);
        unsigned uSize = 1;
        while (uSize < 5 && (uBytes[0] & CintMark(uSize)) == 0) ++uSize;
        if (uSize > 1) oStream.Read(&uBytes[1], uSize - 1);

        u2_t uCode = uBytes[0] & (CintMark(uSize) - 1);
        for (unsigned u = 1; u < uSize; ++u) uCode = uCode << 8 | uBytes[u];
        // What the first two of five bytes hold has never been read.
        if (uSize == 5) uCode &= 0xFFFFFF;
        const auto iHalf = static_cast<i2_t>(uCode >> 1);
        iValue = (uCode & 1) != 0 ? -iHalf : iHalf;
        return uSize;
    });
}

unsigned File::DumpSizeCint(i2_t iValue) noexcept {
    return CintSize(CintCode(iValue));
}

// ---- blocks -----------------------------------------------------------------

namespace {

constexpr std::size_t NARROW = 4;  // bytes of the length in front of a block
constexpr std::size_t WIDE = 8;

u3_t DumpLength(File_Stream& oStream, u3_t uLength, std::size_t uWidth) {
    char sBytes[WIDE];
    le::Store<u3_t>(sBytes, uLength);
    return oStream.Write(sBytes, uWidth);
}

[[nodiscard]] u3_t LoadLength(File_Stream& oStream, std::size_t uWidth) {
    char sBytes[WIDE] = {};
    oStream.Read(sBytes, uWidth);
    return le::Load<u3_t>(sBytes);
}

u3_t DumpBlock(const File_Buf& oBuffer, File_Stream& oStream, std::size_t uWidth) {
    const u3_t uSize = DumpLength(oStream, oBuffer.Size(), uWidth);
    if (oBuffer.Size() == 0) return uSize;
    return uSize + oStream.Write(oBuffer.Data(), oBuffer.Size());
}

u3_t LoadBlock(File_Buf& oBuffer, File_Stream& oStream, std::size_t uWidth) {
    Msg::Assert(&oBuffer != &oStream, "&oBuffer != &oStream");
    const u3_t uLength = LoadLength(oStream, uWidth);
    if (uLength == 0) return 0;
    if (oBuffer.IsExternal()) Msg::FileIsNotOpenForWrite(oBuffer.Name());
    // A count of "all that remains" is no length that a block can have.
    if (uLength >= File_Stream::ALL) Msg::UnexpectedEndOfFile(oStream.Name(), 0);
    Arr<char>& oTarget = oBuffer.GetBuffer();
    const std::size_t uBefore = oTarget.Size();
    if (oStream.Read(oTarget, static_cast<std::size_t>(uLength), true) < uLength) {
        oTarget.Truncate(uBefore);
        Msg::UnexpectedEndOfFile(oStream.Name(), 0);
    }
    return uWidth + uLength;
}

// Forward only: as a signed number a length could turn the stream back, for ever.
void SeekOver(File_Stream& oStream, u3_t uLength) {
    if (uLength > static_cast<u3_t>(std::numeric_limits<i3_t>::max())) {
        Msg::UnexpectedEndOfFile(oStream.Name(), 0);
    }
    oStream.Seek(static_cast<i3_t>(uLength), File_Stream::FROM_POSITION);
}

u3_t SkipBlock(File_Stream& oStream, std::size_t uWidth) {
    const u3_t uLength = LoadLength(oStream, uWidth);
    if (uLength == 0) return 0;
    SeekOver(oStream, uLength);
    return uWidth + uLength;
}

void ReadOver(File_Stream& oStream, u3_t uLength) {
    Arr<char> oChunk;
    constexpr u3_t uChunk = 0x10000;
    char* pChunk = oChunk.AddSpace(static_cast<std::size_t>(std::min(uLength, uChunk)));
    while (uLength > 0) {
        uLength -= oStream.Read(pChunk, static_cast<std::size_t>(std::min(uLength, uChunk)));
    }
}

}  // namespace

u3_t File::DumpBufStream32(const File_Buf& oBuffer, File_Stream& oStream) {
    return Where("vok::File::DumpBufStream32", [&] {
        (void)Msg::ToInt32(oBuffer.Size());
        return DumpBlock(oBuffer, oStream, NARROW);
    });
}

u3_t File::DumpBufStream64(const File_Buf& oBuffer, File_Stream& oStream) {
    return Where("vok::File::DumpBufStream64", [&] { return DumpBlock(oBuffer, oStream, WIDE); });
}

u3_t File::LoadBufStream32(File_Buf& oBuffer, File_Stream& oStream) {
    return Where("vok::File::LoadBufStream32", [&] { return LoadBlock(oBuffer, oStream, NARROW); });
}

u3_t File::LoadBufStream64(File_Buf& oBuffer, File_Stream& oStream) {
    return Where("vok::File::LoadBufStream64", [&] { return LoadBlock(oBuffer, oStream, WIDE); });
}

u3_t File::SkipBufStream32(File_Stream& oStream) {
    return Where("vok::File::SkipBufStream32", [&] { return SkipBlock(oStream, NARROW); });
}

u3_t File::SkipBufStream64(File_Stream& oStream) {
    return Where("vok::File::SkipBufStream64", [&] { return SkipBlock(oStream, WIDE); });
}

u3_t File::DumpEndMarker(File_Stream& oStream) {
    return Where("vok::File::DumpEndMarker", [&] { return DumpLength(oStream, 0, NARROW); });
}

u3_t File::LoadEndMarker(File_Stream& oStream) {
    return Where("vok::File::LoadEndMarker", [&] {
        const bool bCanSeek = oStream.CanSeek(FROM_POSITION);
        u3_t uDone = NARROW;
        while (const u3_t uLength = LoadLength(oStream, NARROW)) {
            if (bCanSeek) {
                SeekOver(oStream, uLength);
            } else {
                ReadOver(oStream, uLength);
            }
            uDone += uLength + NARROW;
        }
        return uDone;
    });
}

}  // namespace vok

#include "vok/dgraph/container.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "vok/base/where.h"
#include "vok/dgraph/wrapping.h"
#include "vok/file/file.h"
#include "vok/file/rest.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace vok {

using dgraph::SNIFFED;
using dgraph::Wrapping;
using dgraph::WrappingOf;

namespace {

// A member of an archive that is no larger is inflated at once; larger ones are read piece by
// piece, so that no more memory is held than the tree takes.
constexpr u3_t SMALL_MEMBER = u3_t{16} << 20;

// An inflating stream, read from front to end in pieces. Loaders may look at its beginning and go
// back there, but not once they are past the first piece: that would inflate everything again.
class Forward_Stream : public File_Stream {
  public:
    explicit Forward_Stream(File_Stream& oIn) : m_oIn(oIn) {
        m_oPiece.Resize(PIECE);
        Fill();
    }

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        char* p = static_cast<char*>(pTarget);
        std::size_t uDone = 0;
        while (uDone < uCount && (m_uNext != m_uEnd || Fill())) {
            const std::size_t uPart = std::min(uCount - uDone, m_uEnd - m_uNext);
            std::memcpy(p + uDone, m_oPiece.Beg() + m_uNext, uPart);
            m_uNext += uPart;
            uDone += uPart;
        }
        if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    }
    std::size_t Write(const void*, std::size_t) override { Msg::FileIsNotOpenForWrite(Name()); }
    void Seek(i3_t iOffset, int iWhence) override {
        const bool bHere = CanSeek(iWhence) && iOffset >= 0 && iOffset <= static_cast<i3_t>(m_uEnd);
        if (!bHere) Msg::FileSeekFailed(iOffset, iWhence, 0);
        m_uNext = static_cast<std::size_t>(iOffset);
    }
    i3_t Tell() override { return static_cast<i3_t>(m_uBefore + m_uNext); }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int iWhence) const override {
        return iWhence == FROM_START && m_uBefore == 0;
    }
    [[nodiscard]] const char* Name() const override { return m_oIn.Name(); }

    // Goes to the end and returns how many bytes there were. Whether what was compressed is sound
    // shows there only; limits hold on the way.
    u3_t SkipRest() {
        u3_t uRest = m_uEnd - m_uNext;
        while (Fill()) uRest += m_uEnd;
        return uRest;
    }

  private:
    static constexpr std::size_t PIECE = std::size_t{64} << 10;

    bool Fill() {
        const std::size_t uRead = m_oIn.Read(m_oPiece.Beg(), PIECE, true);
        if (uRead == 0) return false;
        m_uBefore += m_uEnd;
        m_uNext = 0;
        m_uEnd = uRead;
        return true;
    }

    File_Stream& m_oIn;
    Arr<char> m_oPiece;
    std::size_t m_uNext = 0;
    std::size_t m_uEnd = 0;
    u3_t m_uBefore = 0;  // bytes of the pieces before
};

struct Loader {
    Data& m_oData;
    Limits m_oLimits;
    Load_Report* m_pReport;

    void From(File_Stream& oIn) const { Dgraph_Load(m_oData, oIn, m_oLimits, m_pReport); }

    void FromInflating(File_Stream& oIn) const {
        Forward_Stream oForward(oIn);
        From(oForward);
        const u3_t uRest = oForward.SkipRest();
        if (m_pReport != nullptr) m_pReport->m_uBytesLeft += uRest;
    }

    void FromCompressed(const void* pBytes, std::size_t uSize) {
        m_oLimits.m_uInputBytes = uSize;
        Zip_Buf oBuf;
        oBuf.Open(pBytes, uSize, m_oLimits);
        FromInflating(oBuf);
        oBuf.Close();
    }

    void FromArchive(Zip_Archive& oArchive, u3_t uSize) {
        m_oLimits.m_uInputBytes = uSize;
        const Zip_GlobalInfo oGlobalInfo = oArchive.GetGlobalInfo();
        Msg::Assert(oGlobalInfo.m_uEntries == 1, "oGlobalInfo.number_entry == 1");
        oArchive.GoToFirstFile();
        if (oArchive.GetCurrentFileInfo().m_uUncompressedSize > SMALL_MEMBER) {
            oArchive.OpenCurrentFile();
            FromInflating(oArchive);
        } else {
            Arr<char> oBytes;
            oArchive.Uncompress(oBytes);
            File_Buf oBuf(oBytes.Beg(), oBytes.Size());
            From(oBuf);
        }
        oArchive.Close();
    }
};

}  // namespace

void Dgraph_LoadFromFile(Data& data, const char* sPath, const Limits& oLimits,
                         Load_Report* pReport) {
    return Where("vok::Dgraph_LoadFromFile", [&] {
        data = Data();
        if (pReport != nullptr) *pReport = Load_Report();
        if (sPath == nullptr || *sPath == 0) return;
        Loader oLoader{data, oLimits, pReport};
        File oFile(sPath, "rb");
        char sStart[SNIFFED];
        const std::size_t uStart = ReadUpTo(oFile, sStart, SNIFFED);
        oFile.Seek(0);
        switch (WrappingOf({sStart, uStart})) {
            case Wrapping::Gzip:  // which no document of this library is in: refused as XML
            case Wrapping::None: oLoader.From(oFile); break;
            case Wrapping::Zlib: {
                Arr<char> oBytes;
                oFile.Read(oBytes, File_Stream::ALL);
                oFile.Close();
                oLoader.FromCompressed(oBytes.Beg(), oBytes.Size());
                break;
            }
            case Wrapping::Zip: {
                const i3_t iSize = oFile.Size();
                oFile.Close();
                Zip_Archive oArchive(sPath, "r", oLimits);
                oLoader.FromArchive(oArchive, static_cast<u3_t>(iSize));
                break;
            }
        }
        oFile.Close();
    });
}

void Dgraph_LoadFromBuffer(Data& data, const void* pBytes, std::size_t uSize, const Limits& oLimits,
                           Load_Report* pReport) {
    return Where("vok::Dgraph_LoadFromBuffer", [&] {
        data = Data();
        if (pReport != nullptr) *pReport = Load_Report();
        Loader oLoader{data, oLimits, pReport};
        File_Buf oBuf(pBytes, uSize);
        switch (WrappingOf({oBuf.Data(), uSize})) {
            case Wrapping::Gzip:
            case Wrapping::None: oLoader.From(oBuf); break;
            case Wrapping::Zlib: oLoader.FromCompressed(pBytes, uSize); break;
            case Wrapping::Zip: {
                Zip_Archive oArchive;
                oArchive.Open(pBytes, uSize, oLimits);
                oLoader.FromArchive(oArchive, uSize);
                break;
            }
        }
    });
}

void DGraph_Compress(Arr<char>& buffer, const void* pBytes, u2_t uCount) {
    return Where("vok::DGraph_Compress", [&] {
        Zip_Buf oBuf;
        oBuf.Open("w");
        oBuf.Write(pBytes, uCount);
        oBuf.Flush();
        buffer.Swap(oBuf.GetBuffer());
        oBuf.Close();
    });
}

}  // namespace vok

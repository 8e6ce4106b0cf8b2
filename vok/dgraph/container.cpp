#include "vok/dgraph/container.h"

#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace vok {

namespace {

// So many bytes are looked at; a document's header has as many.
constexpr std::size_t SNIFFED = 30;
// Bytes behind a document are passed over in pieces of this size.
constexpr std::size_t SKIPPED = 4096;

enum class Wrapping { None, Zlib, Zip };

// The first byte of a zlib stream with a window of 32 KiB comes first: it is enough.
[[nodiscard]] Wrapping WrappingOf(std::string_view sStart) noexcept {
    if (sStart.starts_with('x')) return Wrapping::Zlib;
    if (sStart.starts_with("PK")) return Wrapping::Zip;
    return Wrapping::None;
}

struct Loader {
    Data& m_oData;
    const Limits& m_oLimits;
    Load_Report* m_pReport;

    void From(File_Stream& oIn) const { Dgraph_Load(m_oData, oIn, m_oLimits, m_pReport); }

    void FromCompressed(const void* pBytes, std::size_t uSize) const {
        Zip_Buf oBuf;
        oBuf.Open(pBytes, uSize, m_oLimits);
        From(oBuf);
        // A document may end before the stream does: whether that is sound shows at its end only.
        // Limits bound the bytes there as well.
        Arr<char> oRest;
        oRest.Resize(SKIPPED);
        while (oBuf.Read(oRest.Beg(), SKIPPED, true) != 0) {
        }
        oBuf.Close();
    }

    void FromArchive(Zip_Archive& oArchive) const {
        const Zip_GlobalInfo oGlobalInfo = oArchive.GetGlobalInfo();
        Msg::Assert(oGlobalInfo.m_uEntries == 1, "oGlobalInfo.number_entry == 1");
        oArchive.GoToFirstFile();
        Arr<char> oBytes;
        oArchive.Uncompress(oBytes);
        File_Buf oBuf(oBytes.Beg(), oBytes.Size());
        From(oBuf);
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
        const Loader oLoader{data, oLimits, pReport};
        File oFile(sPath, "rb");
        char sStart[SNIFFED];
        const std::size_t uStart = oFile.Read(sStart, SNIFFED, true);
        oFile.Seek(0);
        switch (WrappingOf({sStart, uStart})) {
            case Wrapping::None: oLoader.From(oFile); break;
            case Wrapping::Zlib: {
                Arr<char> oBytes;
                oFile.Read(oBytes, File_Stream::ALL);
                oFile.Close();
                oLoader.FromCompressed(oBytes.Beg(), oBytes.Size());
                break;
            }
            case Wrapping::Zip: {
                oFile.Close();
                Zip_Archive oArchive(sPath, "r", oLimits);
                oLoader.FromArchive(oArchive);
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
        const Loader oLoader{data, oLimits, pReport};
        File_Buf oBuf(pBytes, uSize);
        switch (WrappingOf({oBuf.Data(), uSize})) {
            case Wrapping::None: oLoader.From(oBuf); break;
            case Wrapping::Zlib: oLoader.FromCompressed(pBytes, uSize); break;
            case Wrapping::Zip: {
                Zip_Archive oArchive;
                oArchive.Open(pBytes, uSize, oLimits);
                oLoader.FromArchive(oArchive);
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

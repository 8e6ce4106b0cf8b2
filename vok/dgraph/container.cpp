// SPDX-License-Identifier: MIT
#include "vok/dgraph/container.h"

#include <string_view>

#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/file/forward.h"
#include "vok/file/rest.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"
#include "vok/zip/wrapping.h"

namespace vok {

namespace {

// A member of an archive that is no larger is inflated at once; larger ones are read piece by
// piece, so that no more memory is held than the tree takes.
constexpr u3_t SMALL_MEMBER = u3_t{16} << 20;

struct Loader {
    Data& m_oData;
    Limits m_oLimits;
    Load_Report* m_pReport;

    void From(File_Stream& oIn) const { Dgraph_Load(m_oData, oIn, m_oLimits, m_pReport); }

    void FromInflating(File_Stream& oIn) const {
        File_Forward oForward(oIn);
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
        char sStart[ZIP_SNIFFED];
        const std::size_t uStart = ReadUpTo(oFile, sStart, ZIP_SNIFFED);
        oFile.Seek(0);
        switch (Zip_WrappingOf({sStart, uStart})) {
            case Zip_Wrapping::Gzip:  // which no document of this library is in: refused as XML
            case Zip_Wrapping::None: oLoader.From(oFile); break;
            case Zip_Wrapping::Zlib: {
                Arr<char> oBytes;
                oFile.Read(oBytes, File_Stream::ALL);
                oFile.Close();
                oLoader.FromCompressed(oBytes.Beg(), oBytes.Size());
                break;
            }
            case Zip_Wrapping::Zip: {
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
        switch (Zip_WrappingOf({oBuf.Data(), uSize})) {
            case Zip_Wrapping::Gzip:
            case Zip_Wrapping::None: oLoader.From(oBuf); break;
            case Zip_Wrapping::Zlib: oLoader.FromCompressed(pBytes, uSize); break;
            case Zip_Wrapping::Zip: {
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

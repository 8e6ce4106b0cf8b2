// SPDX-License-Identifier: MIT
#include "vok/zip/archive.h"

#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "vok/base/where.h"
#include "vok/sys/sys.h"
#include "vok/zip/cp437.h"
#include "vok/zip/reader.h"
#include "vok/zip/writer.h"

namespace vok {

// An archive in use: one of the two is there.
struct Zip_Archive::State {
    File m_oFile;  // closed when the archive is in memory, or in a file of the caller's
    std::optional<zip::Reader> m_oReader;
    std::optional<zip::Writer> m_oWriter;
    Str m_oOldPath;       // of an archive that is appended to
    u3_t m_uOldSize = 0;  // of the same

    // Nothing but the old archive remains of an append that failed.
    void CutBack() noexcept {
        if (m_uOldSize == 0) return;
        try {
            m_oFile.Close();
        } catch (const std::exception&) {
            // What could not be written is not wanted any more.
        }
        (void)sys::TruncateFile(m_oOldPath.CStr(), static_cast<i3_t>(m_uOldSize));
    }
};

Zip_Archive::Zip_Archive() noexcept = default;

Zip_Archive::Zip_Archive(const Str& oPath, const char* sMode, const Limits& oLimits) {
    Open(oPath, sMode, oLimits);
}

Zip_Archive::~Zip_Archive() {
    if (m_pState == nullptr || !m_pState->m_oWriter.has_value()) return;
    if (m_pState->m_oWriter->IsBroken() || m_pState->m_oWriter->IsUnwinding()) {
        m_pState->CutBack();
        return;
    }
    try {
        CloseState(nullptr);
    } catch (const std::exception&) {
        // Who wants to know calls Close().
    }
}

bool Zip_Archive::IsOpen() const noexcept {
    return m_pState != nullptr;
}

const char* Zip_Archive::Name() const {
    if (m_pState == nullptr) return nullptr;
    return m_pState->m_oReader.has_value() ? m_pState->m_oReader->Who().Archive()
                                           : m_pState->m_oWriter->Who().Archive();
}

Zip_Archive::State& Zip_Archive::Reading() const {
    if (m_pState == nullptr || !m_pState->m_oReader.has_value()) [[unlikely]]
        Msg::ZipFileIsNotOpenForRead(Name());
    return *m_pState;
}

Zip_Archive::State& Zip_Archive::Writing() const {
    if (m_pState == nullptr || !m_pState->m_oWriter.has_value()) [[unlikely]]
        Msg::ZipFileIsNotOpenForWrite(Name());
    return *m_pState;
}

// ---- opening and closing --------------------------------------------------------

void Zip_Archive::Open(const Str& oPath, const char* sMode, const Limits& oLimits) {
    return Where("vok::Zip_Archive::Open", [&] {
        CloseState(nullptr);
        if (oPath.IsEmpty()) return;
        switch (sMode != nullptr ? *sMode : 'r') {
            case 'a': return OpenForAppending(oPath, oLimits);
            case 'w': return OpenForWriting(oPath);
            default: return OpenForReading(oPath, oLimits);
        }
    });
}

void Zip_Archive::OpenForWriting(const Str& oPath) {
    auto pState = std::make_unique<State>();
    pState->m_oFile.Open(oPath, "wb");
    // A pipe cannot be patched.
    const bool bPatch = pState->m_oFile.Tell() == 0;
    pState->m_oWriter.emplace(pState->m_oFile, zip::Archive_Errors(oPath), zip::Writer::Base(),
                              bPatch);
    m_pState = std::move(pState);
}

void Zip_Archive::Open(File& oFile) {
    return Where("vok::Zip_Archive::Open", [&] {
        CloseState(nullptr);
        auto pState = std::make_unique<State>();
        pState->m_oWriter.emplace(oFile, zip::Archive_Errors(Str(oFile.Name())),
                                  zip::Writer::Base(), oFile.Tell() == 0);
        m_pState = std::move(pState);
    });
}

void Zip_Archive::OpenForReading(const Str& oPath, const Limits& oLimits) {
    auto pState = std::make_unique<State>();
    pState->m_oFile.Open(oPath, "rb");
    pState->m_oReader.emplace(zip::Source(pState->m_oFile), oLimits, zip::Archive_Errors(oPath));
    m_pState = std::move(pState);
}

void Zip_Archive::Open(const void* pBlock, std::size_t uSize, const Limits& oLimits) {
    return Where("vok::Zip_Archive::Open", [&] {
        CloseState(nullptr);
        if (pBlock == nullptr && uSize != 0) Msg::ObjectPointsToNothing();
        auto pState = std::make_unique<State>();
        pState->m_oReader.emplace(zip::Source(pBlock, uSize), oLimits, zip::Archive_Errors());
        m_pState = std::move(pState);
    });
}

void Zip_Archive::OpenForAppending(const Str& oPath, const Limits& oLimits) {
    if (File::Size(oPath) <= 0) return OpenForWriting(oPath);
    zip::Archive_Errors oErrors(oPath);
    zip::Writer::Base oBase;
    {
        File oFile(oPath, "rb");
        zip::Source oSource(oFile);
        zip::Directory oDirectory;
        oBase.m_uSize = oSource.Size();
        if (oDirectory.Load(oSource, oLimits, oErrors)) {
            // New members would lie where a wrong one claims to be.
            if (!oDirectory.IsInside()) oErrors.Invalid();
            oBase.m_uPrefix = oDirectory.Prefix();
            oBase.m_uEntries = oDirectory.Count();
            oBase.m_oDirectory.Add(oDirectory.Bytes().data(), oDirectory.Bytes().size());
            oBase.m_oComment.Add(oDirectory.Comment().data(), oDirectory.Comment().size());
            zip::CheckComment(oDirectory.Comment());
        } else {
            char sMagic[4] = {};
            (void)oSource.Read(0, sMagic, sizeof(sMagic));
            if (le::Load<u2_t>(sMagic) == zip::LOCAL_SIGNATURE) oErrors.Invalid();
        }
    }
    auto pState = std::make_unique<State>();
    pState->m_oFile.Open(oPath, "ab");
    if (static_cast<u3_t>(pState->m_oFile.Size()) != oBase.m_uSize) oErrors.Changed();
    pState->m_oOldPath = oPath;
    pState->m_uOldSize = oBase.m_uSize;
    pState->m_oWriter.emplace(pState->m_oFile, std::move(oErrors), std::move(oBase), false);
    m_pState = std::move(pState);
}

void Zip_Archive::Close(const char* sComment) {
    return Where("vok::Zip_Archive::Close", [&] { CloseState(sComment); });
}

void Zip_Archive::CloseState(const char* sComment) {
    const std::unique_ptr<State> pState = std::move(m_pState);
    if (pState == nullptr) return;
    try {
        if (pState->m_oWriter.has_value()) {
            const Str oComment(sComment);
            pState->m_oWriter->Finish(sComment != nullptr ? &oComment : nullptr);
        }
        pState->m_oFile.Close();
    } catch (...) {
        pState->CutBack();
        throw;
    }
}

// ---- reading --------------------------------------------------------------------

Zip_GlobalInfo Zip_Archive::GetGlobalInfo() const {
    return Where("vok::Zip_Archive::GetGlobalInfo", [&]() -> Zip_GlobalInfo {
        const zip::Directory& oDirectory = Reading().m_oReader->Dir();
        return {oDirectory.Count(), static_cast<u2_t>(oDirectory.Comment().size()),
                oDirectory.Behind()};
    });
}

Str Zip_Archive::GetGlobalComment() const {
    return Where("vok::Zip_Archive::GetGlobalComment",
                 [&] { return zip::FromCp437(Reading().m_oReader->Dir().Comment()); });
}

bool Zip_Archive::GoToFirstFile() {
    return Where("vok::Zip_Archive::GoToFirstFile", [&] { return Reading().m_oReader->GoTo(0); });
}

bool Zip_Archive::GoToNextFile() {
    return Where("vok::Zip_Archive::GoToNextFile", [&] { return Reading().m_oReader->GoToNext(); });
}

bool Zip_Archive::LocateFile(const Str& oName) {
    return Where("vok::Zip_Archive::LocateFile", [&] {
        zip::Reader& oReader = *Reading().m_oReader;
        return oReader.GoTo(oReader.Dir().Locate(oName.View()));
    });
}

Zip_FileInfo Zip_Archive::GetCurrentFileInfo() const {
    return Where("vok::Zip_Archive::GetCurrentFileInfo", [&] {
        zip::Reader& oReader = *Reading().m_oReader;
        return oReader.Dir().Info(oReader.Current());
    });
}

void Zip_Archive::GetCurrentFileExtrafield(Arr<char>& oExtra) {
    return Where("vok::Zip_Archive::GetCurrentFileExtrafield",
                 [&] { Reading().m_oReader->Extrafield(oExtra); });
}

void Zip_Archive::OpenCurrentFile() {
    return Where("vok::Zip_Archive::OpenCurrentFile", [&] { Reading().m_oReader->OpenMember(); });
}

bool Zip_Archive::Eof() {
    return Where("vok::Zip_Archive::Eof", [&] { return Reading().m_oReader->Member().AtEnd(); });
}

void Zip_Archive::CloseCurrentFile() {
    return Where("vok::Zip_Archive::CloseCurrentFile", [&] {
        if (m_pState != nullptr && m_pState->m_oWriter.has_value()) {
            m_pState->m_oWriter->CloseMember();
        } else {
            Reading().m_oReader->CloseMember();
        }
    });
}

void Zip_Archive::Uncompress(Arr<char>& oBuffer) {
    return Where("vok::Zip_Archive::Uncompress", [&] {
        oBuffer.Truncate(0);
        OpenCurrentFile();
        Read(oBuffer, ALL);
        CloseCurrentFile();
    });
}

std::size_t Zip_Archive::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return Where("vok::Zip_Archive::Read", [&]() -> std::size_t {
        zip::Reader& oReader = *Reading().m_oReader;
        // The size is only what the archive says: memory follows the bytes that come.
        const u3_t uLeft = oReader.Left();
        if (uCount == ALL) uCount = static_cast<std::size_t>(uLeft);
        return ReadInChunks(oBuffer, uCount, bAppend);
    });
}

std::size_t Zip_Archive::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    return Where("vok::Zip_Archive::Read", [&]() -> std::size_t {
        zip::Unpacker& oMember = Reading().m_oReader->Member();
        if (uCount != ALL) (void)Msg::ToInt32(uCount);
        if (uCount == 0) return 0;
        if (pTarget == nullptr) Msg::NullPointerAssignment();
        const std::size_t uDone = oMember.Read(pTarget, uCount);
        if (uDone < uCount && uCount != ALL && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    });
}

void Zip_Archive::Seek(i3_t iOffset, int iWhence) {
    return Where("vok::Zip_Archive::Seek", [&] {
        Msg::Assert(iWhence == FROM_START || iWhence == FROM_POSITION || iWhence == FROM_END,
                    "seekmode == SEEK_SET || seekmode == SEEK_CUR || seekmode == SEEK_END");
        zip::Reader& oReader = *Reading().m_oReader;
        if (iWhence == FROM_END) {
            Msg::FeatureNotYetImplemented("Zip_Archive::Seek(i3_t pos, SEEK_END)");
        }
        oReader.Seek(iOffset, iWhence);
    });
}

i3_t Zip_Archive::Tell() {
    return Where("vok::Zip_Archive::Tell", [&] {
        if (m_pState != nullptr && m_pState->m_oWriter.has_value()) {
            return static_cast<i3_t>(m_pState->m_oWriter->Position());
        }
        return static_cast<i3_t>(Reading().m_oReader->Member().Position());
    });
}

// ---- writing --------------------------------------------------------------------

void Zip_Archive::OpenNewFile(const Str& oName, const Zip_NewInfo& oInfo,
                              std::string_view sLocalExtra, std::string_view sCentralExtra,
                              const Str& oComment, u2_t uMethod, int iLevel) {
    return Where("vok::Zip_Archive::OpenNewFile", [&] {
        Writing().m_oWriter->OpenMember(oName, oInfo, sLocalExtra, sCentralExtra, oComment, uMethod,
                                        iLevel);
    });
}

std::size_t Zip_Archive::Write(const void* pSource, std::size_t uCount) {
    return Where("vok::Zip_Archive::Write", [&]() -> std::size_t {
        zip::Writer& oWriter = *Writing().m_oWriter;
        if (pSource == nullptr && uCount != 0) Msg::ObjectPointsToNothing();
        const char* pBytes = static_cast<const char*>(pSource);
        if (uCount == ALL) uCount = std::strlen(pBytes);
        oWriter.Write(pBytes, uCount);
        return uCount;
    });
}

}  // namespace vok

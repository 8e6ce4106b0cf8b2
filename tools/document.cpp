// SPDX-License-Identifier: MIT
#include "tools/document.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>

#include "tools/csv.h"
#include "tools/input.h"
#include "tools/limits.h"
#include "tools/path.h"
#include "tools/print.h"
#include "tools/progress.h"
#include "tools/say.h"
#include "tools/standard_input.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/file.h"
#include "vok/json/json.h"
#include "vok/records/unwrapped.h"

namespace tools {

namespace {

using vok::Arr;

[[nodiscard]] bool IsPipe(const std::string& sPath) {
    std::error_code oError;
    const auto oStatus = std::filesystem::status(ToPath(sPath), oError);
    return std::filesystem::exists(oStatus) && std::filesystem::is_other(oStatus);
}

// Plain bytes on their way to a reader, which may give back what it has read ahead.
class Passing final : public vok::File_Stream {
  public:
    Passing(vok::File_Stream& oBelow, Progress& oProgress)
        : m_oBelow(oBelow), m_oProgress(oProgress) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        char* const p = static_cast<char*>(pTarget);
        std::size_t uDone = std::min(uCount, m_oLast.Size() - m_uAt);
        if (uDone != 0) std::memcpy(p, m_oLast.Beg() + m_uAt, uDone);
        m_uAt += uDone;
        if (uDone < uCount) {
            const std::size_t uRead = m_oBelow.Read(p + uDone, uCount - uDone, true);
            Keep(p + uDone, uRead);
            uDone += uRead;
            m_oProgress.Add(uRead);
            AllowMorePrinting(uRead);
        }
        if (uDone < uCount && !bAllowShort) vok::Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    }
    std::size_t Write(const void*, std::size_t) override {
        vok::Msg::FileIsNotOpenForWrite(Name());
    }
    void Seek(vok::i3_t iOffset, int iWhence) override {
        const vok::i3_t iBack = iWhence == FROM_POSITION ? -iOffset : Tell() - iOffset;
        if (iWhence == FROM_END || iBack < 0 || iBack > static_cast<vok::i3_t>(m_uAt)) {
            vok::Msg::FileSeekFailed(iOffset, iWhence, 0);
        }
        m_uAt -= static_cast<std::size_t>(iBack);
    }
    [[nodiscard]] vok::i3_t Tell() override { return static_cast<vok::i3_t>(m_uBefore + m_uAt); }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int iWhence) const override { return iWhence != FROM_END; }
    [[nodiscard]] const char* Name() const override { return m_oBelow.Name(); }

  private:
    // Readers read ahead no more than they asked for the last time.
    static constexpr std::size_t KEPT = std::size_t{1} << 20;

    void Keep(const char* p, std::size_t uSize) {
        if (m_oLast.Size() + uSize > 2 * KEPT) {
            const std::size_t uStay = uSize >= KEPT ? 0 : std::min(KEPT, m_oLast.Size());
            m_uBefore += m_oLast.Size() - uStay;
            if (uStay != 0) std::memmove(m_oLast.Beg(), m_oLast.End() - uStay, uStay);
            m_oLast.Truncate(uStay);
        }
        m_oLast.Add(p, uSize);
        m_uAt = m_oLast.Size();
    }

    vok::File_Stream& m_oBelow;
    Progress& m_oProgress;
    Arr<char> m_oLast;        // what was read last,
    std::size_t m_uAt = 0;    // of which so much is read now
    vok::u3_t m_uBefore = 0;  // bytes in front of it
};

}  // namespace

class Document::Impl {
  public:
    Impl(const std::string& sPath, const std::string& sFormat) : m_sPath(sPath) {
        vok::Limits oLimits = TheLimits();
        // What is compressed goes by: there is no need to have room for it.
        if (oLimits.m_uInflatedBytes == vok::Limits().m_uInflatedBytes) {
            oLimits.m_uInflatedBytes = vok::Limits::Trusted().m_uInflatedBytes;
        }
        AllowPrinting(0);
        Open(oLimits);
        Guard([&] { Start(sFormat); });
    }

    void Guard(const std::function<void()>& oStep) {
        try {
            oStep();
        } catch (const NeedsTree&) {
            throw;
        } catch (const InputError&) {
            throw;
        } catch (const std::exception& oError) {
            throw FaultIn(m_sPath, m_oReader ? m_oReader->GetReport() : vok::Load_Report(), oError);
        }
    }

    void LookBehind() {
        m_oReport = m_oReader->GetReport();
        // Longer ones are told by their length alone.
        constexpr std::size_t MOST_LOOKED_AT = std::size_t{1} << 20;
        Arr<char> oBehind;
        oBehind.Resize(MOST_LOOKED_AT);
        const std::size_t uBehind = vok::ReadUpTo(*m_oBytes, oBehind.Beg(), MOST_LOOKED_AT);
        vok::u3_t uBytes = uBehind;
        char sPiece[65536];
        while (uBehind == MOST_LOOKED_AT) {
            const std::size_t uRead = m_oBytes->Read(sPiece, sizeof(sPiece), true);
            if (uRead == 0) break;
            uBytes += uRead;
        }
        m_oReport.m_uBytesLeft = m_oDocument->Finish(uBytes);
        m_sBehind = WhatIsBehind({oBehind.Beg(), uBehind}, m_oReport.m_uBytesLeft,
                                 {m_sStart, m_uStart}, m_bXml);
    }

    const std::string m_sPath;
    std::optional<Progress> m_oProgress;
    std::optional<vok::File_Buf> m_oKept;  // standard input that is whole
    std::optional<StandardInputStream> m_oInput;
    std::optional<vok::Unwrapped> m_oDocument;
    std::optional<Passing> m_oBytes;
    std::optional<vok::Data_Reader> m_oReader;
    std::uint64_t m_uBytes = 0;
    std::string m_sWrapping;
    bool m_bXml = false;
    vok::Load_Report m_oReport;
    std::string m_sBehind;
    bool m_bDone = false;

  private:
    static constexpr std::size_t START = 1024;

    void Open(const vok::Limits& oLimits) {
        try {
            if (m_sPath == "-") {
                const StandardInput& o = StandardInput::The();
                if (o.IsGone()) throw std::runtime_error(Say("standard input can be read once"));
                m_uBytes = o.IsWhole() ? o.Bytes().Size() : 0;
                if (o.IsWhole()) {
                    m_oKept.emplace(o.Bytes().Beg(), o.Bytes().Size());
                } else {
                    m_oInput.emplace();
                }
            } else {
                // Whether it is there.
                m_uBytes = static_cast<std::uint64_t>(vok::File(vok::Str(m_sPath), "Tr").Size());
            }
        } catch (const std::exception& oError) {
            throw InputError(m_sPath + ": " + Line(oError.what()), true);
        }
        Guard([&] {
            if (m_oKept) {
                m_oDocument.emplace(*m_oKept, oLimits);
            } else if (m_oInput) {
                m_oDocument.emplace(*m_oInput, oLimits);
            } else {
                m_oDocument.emplace(vok::Str(m_sPath), oLimits);
            }
        });
    }

    void Start(const std::string& sFormat) {
        if (IsCsv(m_sPath, sFormat)) throw NeedsTree();
        m_sWrapping = vok::Zip_WrappingName(m_oDocument->GetWrapping());
        // A share can be told of what is as it lies on the disk.
        m_oProgress.emplace("reading", m_sWrapping.empty() ? m_uBytes : 0);
        m_oBytes.emplace(m_oDocument->In(), *m_oProgress);
        m_uStart = vok::ReadUpTo(*m_oBytes, m_sStart, START);
        m_oBytes->Seek(0, vok::File_Stream::FROM_START);
        const std::string_view sStart(m_sStart, m_uStart);
        const bool bDGraph = vok::Dgraph_CanLoadDGraph(*m_oBytes);
        if (vok::Data::CanLoad(*m_oBytes)) throw NeedsTree();
        // A document that holds a dump, or of a version that loading refuses at its place.
        constexpr std::size_t MAJOR = 9;
        if (bDGraph && sStart.size() > MAJOR && sStart[MAJOR] != 1) throw NeedsTree();
        if (!bDGraph && vok::Json_CanLoad(sStart)) throw NeedsTree();
        m_bXml = !bDGraph;
        if (!sFormat.empty() && sFormat != (m_bXml ? "xml" : "dgraph")) throw NeedsTree();
        if (m_bXml && sFormat.empty()) CheckMayBeXml(sStart);
        m_oReader.emplace(*m_oBytes, m_oDocument->GetLimits());
    }

    char m_sStart[START] = {};
    std::size_t m_uStart = 0;
};

Document::Document(const std::string& sPath, const std::string& sFormat)
    : m_pImpl(std::make_unique<Impl>(sPath, sFormat)) {}

Document::~Document() = default;

bool Document::Next() {
    Impl& o = *m_pImpl;
    bool bMore = false;
    if (o.m_bDone) return false;
    o.Guard([&] {
        bMore = o.m_oReader->Next();
        if (!bMore) o.LookBehind();
    });
    o.m_bDone = !bMore;
    return bMore;
}

const vok::Data_Record* Document::operator->() const noexcept {
    return m_pImpl->m_oReader->operator->();
}

vok::Data_Reader& Document::Reader() noexcept {
    return *m_pImpl->m_oReader;
}

void Document::Guard(const std::function<void()>& oStep) {
    m_pImpl->Guard(oStep);
}

bool Document::IsXml() const noexcept {
    return m_pImpl->m_bXml;
}

const std::string& Document::Wrapping() const noexcept {
    return m_pImpl->m_sWrapping;
}

std::uint64_t Document::Bytes() const noexcept {
    return m_pImpl->m_uBytes;
}

vok::Load_Report Document::Report() const {
    return m_pImpl->m_bDone ? m_pImpl->m_oReport : m_pImpl->m_oReader->GetReport();
}

const std::string& Document::Behind() const noexcept {
    return m_pImpl->m_sBehind;
}

std::vector<vok::Data_Record::Attribute> AttributesOf(const vok::Data_Record& oRecord) {
    const auto& oAll = oRecord.GetAttributes();
    std::vector<vok::Data_Record::Attribute> ao(oAll.begin(), oAll.end());
    std::stable_sort(ao.begin(), ao.end(),
                     [](const auto& a, const auto& b) { return a.sName < b.sName; });
    // Seen from the end the last one of a name comes first.
    const auto oSame = [](const auto& a, const auto& b) { return a.sName == b.sName; };
    ao.erase(ao.begin(), std::unique(ao.rbegin(), ao.rend(), oSame).base());
    return ao;
}

int Answer(const std::string& sPath, const std::function<int()>& oByRecords,
           const std::function<int()>& oByTree) {
    if (sPath != "-" && IsPipe(sPath)) return oByTree();
    try {
        return oByRecords();
    } catch (const NeedsTree&) {
        if (sPath == "-" && StandardInput::The().IsGone()) {
            throw InputError(
                "-: " + Say("this takes the whole tree, and standard input is too long to be kept: "
                            "give a file"),
                true);
        }
    }
    return oByTree();
}

}  // namespace tools

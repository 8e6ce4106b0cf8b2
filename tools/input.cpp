// SPDX-License-Identifier: MIT
#include "tools/input.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <string_view>

#include "tools/commands.h"
#include "tools/csv.h"
#include "tools/limits.h"
#include "tools/print.h"
#include "tools/progress.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/standard_input.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/data/succ_it.h"
#include "vok/document/document.h"
#include "vok/file/file.h"
#include "vok/zip/archive.h"
#include "vok/zip/buf.h"

namespace tools {

namespace {

using vok::Arr;

// Programs that read a file do not wait for one that is not there.
constexpr char READ_AT_ONCE[] = "Tr";

void ReadFile(const std::string& sPath, Arr<char>& oBytes) {
    vok::File oFile(vok::Str(sPath), READ_AT_ONCE);
    const auto uTotal = static_cast<std::size_t>(oFile.Size());
    Progress oProgress("reading", uTotal);
    constexpr std::size_t PIECE = 4 * 1024 * 1024;
    oBytes.Reserve(uTotal + PIECE);
    for (std::size_t uSize = 0, uRead = PIECE; uRead == PIECE;) {
        uRead = oFile.Read(oBytes.AddSpace(PIECE), PIECE, true);
        oBytes.Truncate(uSize += uRead);
        oProgress.Add(uRead);
    }
}

// Inflates what the first bytes say is compressed.
vok::Zip_Wrapping Unwrap(const Arr<char>& oStored, Arr<char>& oPlain, const vok::Limits& oLimits) {
    const std::string_view sBytes(oStored.Beg(), oStored.Size());
    const vok::Zip_Wrapping eWrapping = vok::Zip_WrappingOf(sBytes);
    if (eWrapping == vok::Zip_Wrapping::Zip) {
        vok::Zip_Archive oArchive;
        oArchive.Open(sBytes.data(), sBytes.size(), oLimits);
        const vok::u2_t uMembers = oArchive.GetGlobalInfo().m_uEntries;
        if (uMembers != 1) {
            throw std::invalid_argument(
                Say("an archive of %0 members: a document is the only one of its archive",
                    {std::to_string(uMembers)}));
        }
        oArchive.GoToFirstFile();
        oArchive.Uncompress(oPlain);
    } else if (eWrapping != vok::Zip_Wrapping::None) {
        vok::Zip_Buf oBuf;
        oBuf.Open(sBytes.data(), sBytes.size(), oLimits);
        oBuf.Read(oPlain, vok::File_Stream::ALL);
        oBuf.Close();
    }
    return eWrapping;
}

// "byte 17, line 2, column 5, at /a[0]: " as far as it is known.
std::string PlaceText(const vok::Load_Report& oReport) {
    std::string s;
    if (oReport.m_uOffset != 0) s += Say("byte %0", {std::to_string(oReport.m_uOffset)});
    if (oReport.m_uLine != 0) {
        s += (s.empty() ? "" : ", ") +
             Say("line %0, column %1",
                 {std::to_string(oReport.m_uLine), std::to_string(oReport.m_uColumn)});
    }
    if (!oReport.m_oPath.IsEmpty()) {
        s += (s.empty() ? "" : ", ") + Say("at %0", {ShownPlace(oReport.m_oPath.View())});
    }
    return s.empty() ? s : s + ": ";
}

// Whether bytes can be the beginning of XML: a "<" behind blanks and a byte-order mark, in any of
// its codings.
bool MayBeXml(std::string_view s) {
    const std::size_t u =
        s.find_first_not_of(std::string_view("\xEF\xBB\xBF\xFF\xFE \t\r\n\0", 10));
    return u != std::string_view::npos && s[u] == '<';
}

// Whether XML is in UTF-16, of either order: by its byte-order mark, or the NUL beside its "<".
bool IsUtf16(std::string_view sDocument) {
    const std::string_view sStart = sDocument.substr(0, 2);
    return sStart == "\xFF\xFE" || sStart == "\xFE\xFF" || sStart.find('\0') != sStart.npos;
}

void Parse(Input& o, const std::string& sPath, const Arr<char>& oBytes, const std::string& sFormat,
           const vok::Limits& oLimits) {
    if (IsCsv(sPath, sFormat)) {
        o.sFormat = "csv";
        return LoadCsv(sPath, oBytes, oLimits, o.oTree, o.oReport, o.asColumn);
    }
    vok::File_Buf oIn(oBytes.Beg(), oBytes.Size());
    vok::Document_LoadOptions oOptions;
    oOptions.oLimits = oLimits;
    oOptions.eForm = sFormat.empty() ? vok::Document_FormOf(oIn) : vok::Document_FormNamed(sFormat);
    o.sFormat = vok::Document_FormName(oOptions.eForm);
    if (sFormat.empty() && oOptions.eForm == vok::Document_Form::Xml) {
        CheckMayBeXml({oBytes.Beg(), oBytes.Size()});
    }
    vok::Document_LoadPlain(o.oTree, oIn, oOptions, &o.oReport);
    o.sBehind = WhatIsBehind({oIn.Peek(), oIn.Remaining()}, oIn.Remaining(),
                             {oBytes.Beg(), oBytes.Size()}, o.sFormat == "xml");
}

}  // namespace

// Behind the top element of XML there may be blanks, comments and instructions.
std::string WhatIsBehind(std::string_view s, vok::u3_t uBytes, std::string_view sDocument,
                         bool bXml) {
    if (uBytes != s.size()) bXml = false;  // nobody writes so much behind it that means nothing
    std::string sNarrow;
    if (bXml && IsUtf16(sDocument)) {
        // All of them can be told without the upper half of their characters.
        std::remove_copy(s.begin(), s.end(), std::back_inserter(sNarrow), '\0');
        s = sNarrow;
    }
    while (bXml && !s.empty()) {
        const std::size_t uSkip = s.find_first_not_of(" \t\r\n");
        if (uSkip == std::string_view::npos) return {};
        s.remove_prefix(uSkip);
        const bool bComment = s.starts_with("<!--");
        if (!bComment && !s.starts_with("<?")) break;
        const std::size_t uEnd = s.find(bComment ? "-->" : "?>", 2);
        if (uEnd == std::string_view::npos) break;
        s.remove_prefix(uEnd + (bComment ? 3 : 2));
    }
    if (s.empty()) return {};
    const std::string sBytes = std::to_string(uBytes);
    return uBytes == 1 ? Say("%0 byte behind the document", {sBytes})
                       : Say("%0 bytes behind the document", {sBytes});
}

void CheckMayBeXml(std::string_view sStart) {
    if (!MayBeXml(sStart)) throw std::invalid_argument(Say("not a document this program knows"));
}

int TellFault(const InputError& oError) {
    Complain(Visible(Line(oError.what())));
    return oError.m_bTrouble ? EXIT_TROUBLE : EXIT_NEGATIVE;
}

InputError FaultIn(const std::string& sPath, const vok::Load_Report& oReport,
                   const std::exception& oError) {
    const std::string sReason = InOptions(Line(oError.what()));
    InputError oFault(sPath + ": " + PlaceText(oReport) + sReason, IsNoMemory(oError));
    oFault.m_sReason = sReason;
    oFault.m_oPlace = oReport;
    return oFault;
}

void TellNothingAt(const std::string& sPath, const std::string& sAttribute, std::string_view sTop) {
    const std::string sShown = ShownPath(sPath);
    const std::string sWhere = sAttribute.empty() ? sShown : ShownAttribute(sShown, sAttribute);
    const std::string sPlace = Shortened(sWhere);
    const std::string sName = Escaped(Shortened(sTop));
    const std::string sSaid =
        sAttribute.empty() ? Say("no node at %0; \"/\" is the node \"%1\"", {sPlace, sName})
                           : Say("no attribute at %0; \"/\" is the node \"%1\"", {sPlace, sName});
    Complain(sSaid);
}

vok::Data_NodeSet Input::Find(const std::string& sPath) const {
    vok::Data_NodeSet oFound = oTree.GetNodeSet(sPath.c_str());
    if (oFound.Size() == 0) {
        const char* sTop = oTree.GetName();
        TellNothingAt(sPath, {}, sTop != nullptr ? sTop : "");
    }
    return oFound;
}

Input Load(const std::string& sPath, const std::string& sFormat, bool bKeepBytes) {
    Input o;
    Arr<char> oStored;
    try {
        if (sPath == "-") {
            StandardInput& oInput = StandardInput::The();
            oInput.KeepAll();
            oStored.Share(oInput.Bytes());
        } else {
            ReadFile(sPath, oStored);
        }
    } catch (const std::exception& oError) {
        throw InputError(sPath + ": " + Line(oError.what()), true);
    }
    try {
        o.uBytes = oStored.Size();
        Progress oProgress("loading");
        vok::Limits oLimits = TheLimits();
        Arr<char> oPlain;
        o.eWrapping = Unwrap(oStored, oPlain, oLimits);
        const bool bWrapped = o.eWrapping != vok::Zip_Wrapping::None;
        if (bWrapped) oLimits.m_uInputBytes = oStored.Size();
        Arr<char>& oBytes = bWrapped ? oPlain : oStored;
        AllowPrinting(oBytes.Size());
        Parse(o, sPath, oBytes, sFormat, oLimits);
        if (bKeepBytes) o.oBytes.Swap(oBytes);
    } catch (const std::exception& oError) {
        throw FaultIn(sPath, o.oReport, oError);
    }
    return o;
}

}  // namespace tools

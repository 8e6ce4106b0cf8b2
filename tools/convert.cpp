// SPDX-License-Identifier: MIT
// vok convert: from one form to another.
#include <array>
#include <charconv>
#include <cstdio>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/commands.h"
#include "tools/csv.h"
#include "tools/document.h"
#include "tools/each_file.h"
#include "tools/input.h"
#include "tools/json_lines.h"
#include "tools/limits.h"
#include "tools/loss.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/print.h"
#include "tools/progress.h"
#include "tools/say.h"
#include "tools/standard_input.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "tools/tree_file.h"
#include "vok/base/msg.h"
#include "vok/char/casing.h"
#include "vok/data/succ_it.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/path.h"
#include "vok/json/json.h"
#include "vok/records/path.h"
#include "vok/records/writer.h"
#include "vok/sys/sys.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace tools {

namespace {

// "1.2.0" as three numbers, each a byte of the header.
std::array<int, 3> ParseVersion(const std::string& sVersion) {
    std::array<int, 3> ai{};
    const char* p = sVersion.data();
    const char* const pEnd = p + sVersion.size();
    bool bGood = true;
    for (std::size_t u = 0; u < ai.size(); ++u) {
        if (u != 0) bGood = bGood && p != pEnd && *p++ == '.';
        const auto oResult = std::from_chars(p, pEnd, ai[u]);
        bGood = bGood && oResult.ec == std::errc() && ai[u] >= 0 && ai[u] <= 255;
        p = oResult.ptr;
    }
    if (!bGood || p != pEnd) {
        throw std::invalid_argument(Say("\"%0\" is no version such as 1.2.0", {sVersion}));
    }
    if (ai[0] != 1 && ai[0] != 2) {
        throw std::invalid_argument(Say("there is no version %0 of DGraph documents", {sVersion}));
    }
    return ai;
}

// What is to be made of a document.
struct Task {
    const ConvertOptions& oOptions;
    FileForm oForm;

    [[nodiscard]] bool IsByRecords() const { return !oOptions.sRecords.empty(); }
    // Of JSON Lines every successor of the top is a record.
    [[nodiscard]] std::string Records() const { return IsByRecords() ? oOptions.sRecords : "/*"; }
};

// ---- where it goes --------------------------------------------------------------

// Trees that become a file each, in a folder that is made where it is missing.
class Files {
  public:
    explicit Files(const Task& o) : m_oTask(o) {
        if (o.oOptions.sOut == "-")
            throw std::invalid_argument(Say("records need a folder, not \"-\""));
        vok::File::MkDir(vok::Str(o.oOptions.sOut));
    }
    void Add(vok::Data oTree) {
        char sName[32];
        std::snprintf(sName, sizeof(sName), "%08llu.", static_cast<unsigned long long>(++m_uFiles));
        Output oFile(ToText(ToPath(m_oTask.oOptions.sOut) / (sName + m_oTask.oForm.sFormat)));
        WriteTree(oTree, m_oTask.oForm, oFile.Stream());
        oFile.Commit(false);
    }

  private:
    const Task& m_oTask;
    std::uint64_t m_uFiles = 0;
};

// ---- record by record -------------------------------------------------------------

// Calls oUse with the tree of every record.
template <class Use>
void ForEachRecord(const Task& o, const Use& oUse) {
    Document oDocument(o.oOptions.sIn, o.oOptions.sFrom);
    vok::records::Path oPath(o.Records());
    vok::Data oTree;
    while (oDocument.Next()) {
        const auto oVerdict = oPath.Look(*oDocument);
        if (oVerdict.bSelected) {
            oDocument.Guard([&] { oDocument.Reader().Take(oTree); });
            oUse(oTree);
        } else if (!oVerdict.bBelow) {
            oDocument.Reader().SkipSuccessors();
        }
    }
}

void WriteJsonLines(const Task& o, vok::File_Stream& oOut) {
    Shape oTop;
    ForEachRecord(o, [&](const vok::Data& oTree) { NoteShape(oTop, oTree); });
    JsonLines oLines(oOut, oTop);
    ForEachRecord(o, [&](const vok::Data& oTree) { oLines.Add(oTree); });
    oLines.Finish();
}

void WriteDocument(const Task& o, bool bCounted, vok::File_Stream& oOut) {
    using Writer = vok::Data_Writer;
    Document oDocument(o.oOptions.sIn, o.oOptions.sFrom);
    Writer oWriter(oOut, o.oForm.sFormat == "xml" ? Writer::Form::Xml : Writer::Form::DGraph,
                   o.oForm.auVersion[1], o.oForm.auVersion[2]);
    std::size_t uOpen = 0;
    while (oDocument.Next()) {
        const vok::Data_Record& r = *oDocument;
        for (; uOpen > r.GetDepth(); --uOpen) oWriter.Close();
        if (r.GetType() != vok::Data_Node::Tree || bCounted) {
            oWriter.Add(r);
        } else {
            oWriter.Open(r.GetName());
            for (const auto& a : r.GetAttributes()) oWriter.SetAttVal(a.sName, a.sValue);
        }
        uOpen += r.GetType() == vok::Data_Node::Tree;
    }
    for (; uOpen != 0; --uOpen) oWriter.Close();
    oWriter.Finish();
}

int ByRecords(const Task& o) {
    const ConvertOptions& r = o.oOptions;
    const bool bJson = o.oForm.sFormat == "jsonl";
    const bool bOfTrees =
        o.oForm.Keeps() == "dump" || o.oForm.sFormat == "json" || o.oForm.sFormat == "csv";
    if (bOfTrees && !o.IsByRecords()) throw NeedsTree();
    if (bJson || o.IsByRecords()) {
        if (vok::records::Path::NeedsTree(o.Records())) throw NeedsTree();
        if (vok::records::Path(o.Records()).MayNest()) throw NeedsTree();
    }
    // It is gone through more than once.
    if (r.sIn == "-" && !StandardInput::The().IsWhole()) throw NeedsTree();
    LossCount oLosses(o.oForm.Keeps(), o.oForm.auVersion[1]);
    const Survey oSurvey = LookThrough(r.sIn, r.sFrom, nullptr, &oLosses);
    const vok::Load_Report& oReport = oSurvey.oReport;
    const bool bCounted = !oSurvey.bXml && oReport.m_uMissingBytes + oReport.m_uMissingNodes == 0;
    // Only a tree knows where links lead to, and puts names in order.
    if (oSurvey.bLinks) throw NeedsTree();
    if (!oSurvey.bInOrder && !bJson && !o.IsByRecords()) throw NeedsTree();
    // A stream that compresses cannot go back to a count.
    const bool bPacks = o.oForm.eWrapping != vok::Zip_Wrapping::None;
    if (o.oForm.sFormat == "dgraph" && !o.IsByRecords() && !bCounted && bPacks) throw NeedsTree();
    TellLosses(r.sIn, oReport, oSurvey.sBehind, oLosses, r.bLossless);
    if (bJson) {
        WriteFile(o.oOptions.sOut, o.oForm, false,
                  [&](vok::File_Stream& oOut) { WriteJsonLines(o, oOut); });
    } else if (o.IsByRecords()) {
        Files oFiles(o);
        ForEachRecord(o, [&](const vok::Data& oTree) { oFiles.Add(oTree); });
    } else {
        const bool bWhole = o.oForm.sFormat == "dgraph" && !bCounted;
        WriteFile(o.oOptions.sOut, o.oForm, bWhole,
                  [&](vok::File_Stream& oOut) { WriteDocument(o, bCounted, oOut); });
    }
    return EXIT_GOOD;
}

// ---- with the whole tree ------------------------------------------------------------

// What fits into rows is known once they are made.
void WriteCsv(const Task& o, const Input& oIn) {
    vok::File_Buf oRows("w");
    LossCount oLosses("csv", 0);
    oLosses.AddUnfit(SaveCsv(oIn.oTree, oIn.asColumn, o.oOptions.sOut, oRows));
    TellLosses(o.oOptions.sIn, oIn.oReport, oIn.sBehind, oLosses, o.oOptions.bLossless);
    WriteFile(o.oOptions.sOut, o.oForm, true,
              [&](vok::File_Stream& oOut) { oOut.Write(oRows.Data(), oRows.Size()); });
}

int ByTree(const Task& o) {
    Input oIn = Load(o.oOptions.sIn, o.oOptions.sFrom);
    oIn.oTree.SetToRoot();
    if (o.oForm.sFormat == "csv") {
        WriteCsv(o, oIn);
        return EXIT_GOOD;
    }
    LossCount oLosses(o.oForm.Keeps(), o.oForm.auVersion[1]);
    if (o.oForm.Keeps() != "dump") CountTree(oIn.oTree, oLosses);
    TellLosses(o.oOptions.sIn, oIn.oReport, oIn.sBehind, oLosses, o.oOptions.bLossless);
    Progress oProgress("writing");
    if (o.oForm.sFormat == "jsonl") {
        const vok::Data_NodeSet oFound = oIn.oTree.GetNodeSet(o.Records().c_str());
        Shape oTop;
        for (std::size_t u = 0; u < oFound.Size(); ++u) NoteShape(oTop, oFound.GetNth(u));
        WriteFile(o.oOptions.sOut, o.oForm, false, [&](vok::File_Stream& oOut) {
            JsonLines oLines(oOut, oTop);
            for (std::size_t u = 0; u < oFound.Size(); ++u) oLines.Add(oFound.GetNth(u));
            oLines.Finish();
        });
    } else if (o.IsByRecords()) {
        const vok::Data_NodeSet oFound = oIn.oTree.GetNodeSet(o.Records().c_str());
        Files oFiles(o);
        for (std::size_t u = 0; u < oFound.Size(); ++u) oFiles.Add(oFound.GetNth(u).MkClone());
    } else {
        WriteFile(o.oOptions.sOut, o.oForm, true,
                  [&](vok::File_Stream& oOut) { WriteTree(oIn.oTree, o.oForm, oOut); });
    }
    return EXIT_GOOD;
}

// Raises std::invalid_argument for options that do not go together.
FileForm FormFor(const ConvertOptions& o) {
    const Endings oEndings = EndingsOf(o.sOut);
    const bool bByRecords = !o.sRecords.empty();
    FileForm oForm;
    oForm.sFormat = o.sTo.empty() ? oEndings.sFormat : o.sTo;
    oForm.auVersion = ParseVersion(o.sVersion);
    oForm.bCompact = o.bCompact;
    oForm.bAttachable = o.bAttachable;
    oForm.bDurable = o.sInto.empty();  // of many files each would wait for the disk
    oForm.eWrapping = oEndings.eWrapping;
    if (o.bZip) {
        oForm.eWrapping = vok::Zip_Wrapping::Zip;
    } else if (o.bCompress && oForm.eWrapping == vok::Zip_Wrapping::None) {
        oForm.eWrapping = vok::Zip_Wrapping::Zlib;
    }
    if (oForm.sFormat.empty()) {
        throw std::invalid_argument(
            NoFormatText(o.sOut, ".xml, .dgraph, .dump, .json, .jsonl, .csv"));
    }
    if (bByRecords && oForm.sFormat != "jsonl" && (o.bZip || o.bCompress)) {
        throw std::invalid_argument(Say("files of records are not compressed"));
    }
    if (bByRecords && oForm.sFormat == "csv") {
        throw std::invalid_argument(
            Say("--records is not for csv files: each node below the top is a row"));
    }
    if (o.bCompact && oForm.sFormat != "json") {
        throw std::invalid_argument(Say("--compact is for JSON"));
    }
    if (o.bAttachable && (oForm.sFormat != "dump" || oForm.eWrapping != vok::Zip_Wrapping::None)) {
        throw std::invalid_argument(Say("--attachable is for dumps that are not compressed"));
    }
    return oForm;
}

int ConvertOne(const ConvertOptions& o) {
    const Task oTask{o, FormFor(o)};
    return Answer(
        o.sIn, [&] { return ByRecords(oTask); }, [&] { return ByTree(oTask); });
}

// ---- many files -----------------------------------------------------------------------

// "orders" for "data/orders.xml.gz", "a.conf" for "a.conf": without the endings that tell a form.
std::string BareName(const std::string& sPath) {
    std::string sName = ToText(ToPath(sPath).filename());
    const auto oDrop = [&] { sName = ToText(ToPath(sName).stem()); };
    if (EndingsOf(sName).eWrapping != vok::Zip_Wrapping::None) oDrop();
    if (!EndingsOf(sName).sFormat.empty()) oDrop();
    return sName;
}

// Two texts of which lead to the same place, as far as names can tell.
vok::Str Place(const std::string& sPath) {
    const vok::Str oPath = vok::File_Path::Absolute(sPath);
    return vok::sys::IS_WINDOWS ? vok::Char::Fold(oPath) : oPath;
}

// By file that is read the one that is written. Raises std::invalid_argument where two are the
// same, or where one would replace what is still to be read.
std::map<std::string, std::string> Places(const ConvertOptions& o) {
    std::map<vok::Str, const std::string*> asPlace;
    for (const std::string& sIn : o.asIn) {
        if (sIn == "-") throw std::invalid_argument(Say("--into needs files, not \"-\""));
        asPlace.emplace(Place(sIn), nullptr);
    }
    std::map<std::string, std::string> asOut;
    for (const std::string& sIn : o.asIn) {
        // Files of records have a folder.
        const bool bFolder = !o.sRecords.empty() && o.sTo != "jsonl";
        const std::string sEnding = bFolder ? "" : '.' + o.sTo + (o.bZip ? ".zip" : "");
        const std::string sName = BareName(sIn) + sEnding;
        const std::string sOut = ToText(ToPath(o.sInto) / ToPath(sName));
        const auto [it, bNew] = asPlace.emplace(Place(sOut), &sIn);
        if (!bNew && it->second == nullptr) {
            throw std::invalid_argument(Say("\"%0\" is read, and would be replaced", {sOut}));
        }
        if (!bNew && Place(*it->second) != Place(sIn)) {
            throw std::invalid_argument(
                Say("\"%0\" and \"%1\" would both become \"%2\"", {*it->second, sIn, sOut}));
        }
        asOut.emplace(sIn, sOut);
    }
    return asOut;
}

// A file that cannot be converted does not keep others from it.
int ConvertAll(const ConvertOptions& o) {
    if (o.sTo.empty()) throw std::invalid_argument(Say("--into needs --to: the form of the files"));
    (void)FormFor(o);
    const std::map<std::string, std::string> asOut = Places(o);
    vok::File::MkDir(vok::Str(o.sInto));
    return ForEachFile(o.asIn, o.uAtOnce, [&](const std::string& sIn) {
        ConvertOptions oOne = o;
        oOne.sIn = sIn;
        oOne.sOut = asOut.at(sIn);
        try {
            return ConvertOne(oOne);
        } catch (const InputError& oError) {
            return TellFault(oError);
        } catch (const std::bad_alloc&) {
            Complain(sIn, Say("not enough memory"));
        } catch (const std::exception& oError) {
            Complain(sIn, InOptions(Line(oError.what())));
        }
        return static_cast<int>(EXIT_TROUBLE);
    });
}

}  // namespace

int Convert(const ConvertOptions& o) {
    return o.sInto.empty() ? ConvertOne(o) : ConvertAll(o);
}

}  // namespace tools

// SPDX-License-Identifier: MIT
// The fast loops of the readers against the careful ones. The bytes drive a writer of documents
// that are almost well formed; each is written in two ways, of which the fast loop takes one only.
#include "fuzz/fuzz_support.h"
#include "vok/dgraph/format.h"

namespace {

using namespace vok;

// Names that recur, so that guesses are right, wrong and taken back; a few that no loop takes.
std::string Name(Script& oScript) {
    static constexpr const char* NAMES[] = {"a",   "b",        "ab", "abc", "id",
                                            "x.y", "\xC3\xA4", "_",  "0"};
    const unsigned uByte = oScript.Byte();
    if (uByte < 180) return NAMES[uByte % std::size(NAMES)];
    if (uByte < 250) return "n" + std::to_string(oScript.Byte());
    return std::string(1 + oScript.Byte() % 100, 'q');
}

// ---- XML ------------------------------------------------------------------

// The same elements with and without a blank in every tag.
struct XmlPair {
    std::string sPlain;
    std::string sCareful;

    void Add(std::string_view s) {
        sPlain += s;
        sCareful += s;
    }
    void CloseTag() {
        sPlain += '>';
        sCareful += " >";
    }
};

void AddXmlValue(XmlPair& oOut, Script& oScript) {
    static constexpr const char* TYPES[] = {"i4",         "r8", "boolean", "i8",
                                            "bin.base64", "r4", "string",  "x"};
    const unsigned uWhat = oScript.Byte();
    if (uWhat < 128) oOut.Add(" dt:dt=\"" + std::string(TYPES[uWhat % std::size(TYPES)]) + "\"");
    oOut.CloseTag();
    switch (uWhat / 4 % 8) {
        case 0: break;
        case 1: oOut.Add(std::to_string(static_cast<i3_t>(oScript.Number()))); break;
        case 2: oOut.Add(std::to_string(static_cast<int>(oScript.Byte()) - 50)); break;
        case 3: oOut.Add(uWhat % 2 == 0 ? "1" : "0"); break;
        case 4: oOut.Add("1.25e" + std::to_string(oScript.Byte())); break;
        case 5: oOut.Add("<![CDATA[" + std::string(oScript.Text()) + "]]>"); break;
        case 6: oOut.Add(std::string(oScript.Byte() % 4, uWhat % 2 == 0 ? ' ' : '\n')); break;
        default: oOut.Add(oScript.Text()); break;
    }
}

XmlPair WriteXml(Script& oScript) {
    XmlPair o;
    std::string sOpen[20];
    unsigned uOpen = 0;
    do {
        const unsigned uWhat = oScript.Byte();
        if (uOpen != 0 && uWhat < 80) {
            o.Add("</" + sOpen[--uOpen]);
            o.CloseTag();
        } else if (uWhat < 240) {
            const std::string sName = Name(oScript);
            o.Add("<" + sName);
            if (uWhat % 2 == 0 && uOpen < std::size(sOpen)) {
                o.CloseTag();
                sOpen[uOpen++] = sName;
            } else {
                AddXmlValue(o, oScript);
                o.Add("</" + sName);
                o.CloseTag();
            }
        } else if (uWhat < 250) {
            o.Add("\n  ");
        } else {
            o.Add(oScript.Text());
        }
    } while (uOpen != 0 && !oScript.IsAtEnd());
    if (oScript.Byte() == 0) {
        while (uOpen != 0) {
            o.Add("</" + sOpen[--uOpen]);
            o.CloseTag();
        }
    }
    o.sPlain += std::string(64, ' ');
    return o;
}

void CompareXml(Script& oScript) {
    const u2_t uFlags = oScript.Byte() & 15;
    const XmlPair oPair = WriteXml(oScript);
    const auto oLoad = [&](const std::string& sText, Data& oTree, Load_Report& oReport) {
        File_Buf oBuf(sText.data(), sText.size());
        return Raised([&] { oTree.LoadFromXML(oBuf, uFlags, {}, &oReport); });
    };
    Data oFast, oCareful;
    Load_Report oFastReport, oCarefulReport;
    const std::string sError = oLoad(oPair.sPlain, oFast, oFastReport);
    // An error may quote the text around it: then it is enough that both fail.
    Check(sError.empty() == oLoad(oPair.sCareful, oCareful, oCarefulReport).empty());
    Check(oFastReport.m_uNodes == oCarefulReport.m_uNodes);
    CheckCost(oFastReport, oPair.sPlain.size());
    Check(oFastReport.m_uDroppedTexts == oCarefulReport.m_uDroppedTexts);
    Check(oFastReport.m_uReordered == oCarefulReport.m_uReordered);
    if (sError.empty()) Check(Data::Equal(oFast, oCareful));
}

// ---- DGraph ---------------------------------------------------------------

void Add(std::string& sOut, u3_t uNumber, std::size_t uBytes) {
    for (std::size_t u = 0; u < uBytes; ++u) sOut += static_cast<char>(uNumber >> 8 * u);
}

void AddText(std::string& sOut, std::string_view sText) {
    Add(sOut, sText.size(), 4);
    sOut += sText;
}

// A record of a node below another; whether it opens a level.
bool AddRecord(std::string& sOut, Script& oScript, const std::string& sName, unsigned uIndex) {
    using namespace dgraph;
    const unsigned uWhat = oScript.Byte();
    std::string sStep =
        sName + "[" + std::to_string(uWhat == 255 ? oScript.Number() : uIndex) + "]";
    if (uWhat > 250) sStep += "[@" + Name(oScript) + "=\"" + std::string(oScript.Text()) + "\"]";
    AddText(sOut, sStep);
    const unsigned uCode = uWhat % 13;
    sOut += static_cast<char>(uCode);
    switch (uCode) {
        case CODE_NONE: Add(sOut, oScript.Byte() % 8, 4); return true;
        case CODE_INTEGER:
        case CODE_FLOAT: Add(sOut, oScript.Number(), 4); break;
        case CODE_DOUBLE:
        case CODE_DATE:
        case CODE_LONG: Add(sOut, oScript.Number(), 8); break;
        case CODE_CHAR:
        case CODE_BOOLEAN: Add(sOut, oScript.Byte(), 1); break;
        case CODE_STRING: AddText(sOut, std::string(oScript.Text()) + '\0'); break;
        case CODE_BINARY: AddText(sOut, oScript.Text()); break;
        case CODE_LINK:
            AddText(sOut, Name(oScript));
            AddText(sOut, Name(oScript));
            break;
        case CODE_QUAD:
            Add(sOut, oScript.Number(), 8);
            Add(sOut, oScript.Number(), 8);
            break;
        default: break;
    }
    return false;
}

void CompareDGraph(Script& oScript) {
    std::string sBytes = "DGraphBin";
    sBytes += {1, 3, 0};
    sBytes.resize(dgraph::HEADER_SIZE, '\0');
    AddText(sBytes, "Root[0]");
    sBytes += '\0';
    Add(sBytes, oScript.Byte(), 4);
    std::string sName;
    unsigned uIndex = 0;
    while (!oScript.IsAtEnd()) {
        // Mostly the next of its run, or the first of another one.
        const unsigned uWhat = oScript.Byte();
        if (uWhat < 100 || sName.empty()) {
            sName = Name(oScript);
            uIndex = 0;
        } else if (uWhat > 250) {
            uIndex = oScript.Byte();
        }
        if (AddRecord(sBytes, oScript, sName, uIndex++)) sName.clear();
    }

    Data oFast, oCareful;
    Load_Report oFastReport, oCarefulReport;
    File_Buf oBuf(sBytes.data(), sBytes.size());
    Foreign_Stream oStream(sBytes);
    const std::string sError = Raised([&] { Dgraph_LoadDGraph(oFast, oBuf, {}, &oFastReport); });
    Check(sError == Raised([&] { Dgraph_LoadDGraph(oCareful, oStream, {}, &oCarefulReport); }));
    CheckCost(oFastReport, sBytes.size());
    CheckCost(oCarefulReport, sBytes.size());
    Check(oFastReport.m_uOffset == oCarefulReport.m_uOffset);
    Check(oFastReport.m_uNodes == oCarefulReport.m_uNodes);
    Check(oFastReport.m_uMissingBytes == oCarefulReport.m_uMissingBytes);
    Check(oFastReport.m_uMissingNodes == oCarefulReport.m_uMissingNodes);
    if (sError.empty()) Check(Save(oFast) == Save(oCareful));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    if (uSize == 0) return 0;
    Script oScript({reinterpret_cast<const char*>(pData) + 1, uSize - 1});
    pData[0] % 2 == 0 ? CompareXml(oScript) : CompareDGraph(oScript);
    return 0;
}

// SPDX-License-Identifier: MIT
// Any bytes as csv, with options of the first of them: from memory and from a foreign stream the
// same tree or the same error, the same document in constant memory, and what fits into a csv file
// comes back equal. The scanner's other operations on the same bytes.
#include <string>

#include "fuzz/fuzz_support.h"
#include "vok/csv/csv.h"
#include "vok/file/scan.h"

namespace {

using namespace vok;

Csv_Options OptionsOf(unsigned uByte) {
    Csv_Options o;
    o.m_bTell = false;
    o.m_bHeader = (uByte & 1) != 0;
    o.m_bGuess = (uByte & 2) != 0;
    o.m_bLeaveOutEmpty = (uByte & 4) != 0;
    o.m_bStrict = (uByte & 8) != 0;
    if ((uByte & 16) != 0) o.m_cSeparator = ';';
    if ((uByte & 32) != 0) o.m_cQuote = '\'';
    return o;
}

// What the name of a memory stream is in messages.
std::string WithoutName(std::string s) {
    constexpr std::string_view NAME = "*** File_Buf ***";
    if (const std::size_t u = s.find(NAME); u != std::string::npos) s.erase(u, NAME.size());
    return s;
}

// Words and numbers as they come, up to an error.
void Scan(File_Stream& oIn, std::string& sMade) {
    File_Scan o(oIn, SmallLimits());
    sMade += Raised([&] {
        for (unsigned u = 0; !o.AtEnd(); ++u) {
            o.Hold();
            switch (u % 5) {
                case 0: sMade += o.ReadWord(); break;
                case 1: sMade += std::to_string(o.ReadInteger()); break;
                case 2: sMade += std::to_string(o.ReadReal()); break;
                case 3: sMade += o.ReadString(); break;
                default: {
                    std::string_view s;
                    o.ReadLine(s);
                    sMade += s;
                }
            }
            sMade += std::to_string(o.Line()) + ':' + std::to_string(o.Column()) + ' ' +
                     std::to_string(o.Held().size());
            o.SkipBlanks(u % 2 == 0);
        }
    });
    sMade += std::to_string(o.Offset());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    if (uSize == 0) return 0;
    const std::string_view sBytes(reinterpret_cast<const char*>(pData) + 1, uSize - 1);
    const Csv_Options o = OptionsOf(pData[0]);
    Data oTree;
    Data oOther;
    Csv_Report oReport;
    Csv_Report oOtherReport;
    File_Buf oIn(sBytes.data(), sBytes.size());
    Foreign_Stream oStream(sBytes);
    const std::string sError = Raised([&] { Csv_Load(oTree, oIn, o, SmallLimits(), &oReport); });
    const std::string sOther =
        Raised([&] { Csv_Load(oOther, oStream, o, SmallLimits(), &oOtherReport); });
    Check(WithoutName(sError) == sOther);
    Check(oReport.m_uOffset <= sBytes.size() && oReport.m_uOffset == oOtherReport.m_uOffset);
    Check(oReport.m_uLine == oOtherReport.m_uLine && oReport.m_uColumn == oOtherReport.m_uColumn);
    CheckTree(oTree);
    Check(Data::Equal(oTree, oOther));
    if (sError.empty()) {
        // The same in two passes. Extra columns of lenient rows have no told names.
        Csv_Options oTold = o;
        File_Buf oFirst(sBytes.data(), sBytes.size());
        oTold.m_aoColumn = Csv_Columns(oFirst, o, SmallLimits());
        Check(oTold.m_aoColumn.size() == oReport.m_aoColumn.size());
        for (std::size_t u = 0; u < oTold.m_aoColumn.size(); ++u) {
            Check(oTold.m_aoColumn[u].m_oName == oReport.m_aoColumn[u].m_oName);
            Check(oTold.m_aoColumn[u].m_eType == oReport.m_aoColumn[u].m_eType);
        }
        File_Buf oOut("w");
        (void)Csv_Save(oTree, oOut);
        File_Buf oBackIn(oOut.Data(), oOut.Size());
        Csv_Options oBackOptions = o;
        oBackOptions.m_bHeader = oBackOptions.m_bStrict = true;
        oBackOptions.m_cSeparator = ',';
        oBackOptions.m_cQuote = '"';
        Data oBack;
        Csv_Report oBackReport;
        Csv_Load(oBack, oBackIn, oBackOptions, {}, &oBackReport);
        Check(oBackReport.m_uRows == oReport.m_uRows);
    }
    std::string asMade[2];
    File_Buf oScan(sBytes.data(), sBytes.size());
    Foreign_Stream oScanStream(sBytes);
    Scan(oScan, asMade[0]);
    Scan(oScanStream, asMade[1]);
    Check(WithoutName(asMade[0]) == asMade[1]);
    return 0;
}

// SPDX-License-Identifier: MIT
#include "tools/csv.h"

#include <stdexcept>
#include <string>

#include "tools/limits.h"
#include "tools/say.h"
#include "tools/text.h"
#include "tools/tree_file.h"
#include "vok/base/msg.h"
#include "vok/csv/csv.h"
#include "vok/file/buf.h"

namespace tools {

namespace {

// Bytes in memory under the name of their file.
class Named final : public vok::File_Stream {
  public:
    Named(const std::string& sName, const vok::Arr<char>& oBytes)
        : m_sName(sName), m_oBytes(oBytes.Beg(), oBytes.Size()) {}

    std::size_t Read(vok::Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return m_oBytes.Read(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        return m_oBytes.Read(pTarget, uCount, bAllowShort);
    }
    std::size_t Write(const void*, std::size_t) override {
        vok::Msg::FileIsNotOpenForWrite(Name());
    }
    void Seek(vok::i3_t iOffset, int iWhence) override { m_oBytes.Seek(iOffset, iWhence); }
    [[nodiscard]] vok::i3_t Tell() override { return m_oBytes.Tell(); }
    int Flush() override { return 0; }
    [[nodiscard]] const char* Name() const override { return m_sName.c_str(); }

  private:
    const std::string m_sName;
    vok::File_Buf m_oBytes;
};

}  // namespace

CsvForm& TheCsvForm() noexcept {
    static CsvForm s_oForm;
    return s_oForm;
}

void SetSeparator(const std::string& sText) {
    const bool bTab = sText == "tab" || sText == "\\t";
    if (!bTab && (sText.size() != 1 || sText == "\n" || sText == "\r" || sText == "\"")) {
        throw std::invalid_argument(
            Say("\"%0\" is no separator: it is one character of ASCII, or tab", {sText}));
    }
    TheCsvForm().cSeparator = bTab ? '\t' : sText[0];
}

bool IsCsv(const std::string& sPath, const std::string& sFormat) {
    if (!sFormat.empty()) return sFormat == "csv";
    return EndingsOf(sPath).sFormat == "csv";
}

void LoadCsv(const std::string& sPath, const vok::Arr<char>& oBytes, const vok::Limits& oLimits,
             vok::Data& oTree, vok::Load_Report& oReport, CsvColumns& oColumns) {
    vok::Csv_Options o;
    o.m_cSeparator = TheCsvForm().cSeparator;
    if (o.m_cSeparator == 0 && EndingsOf(sPath).bTab) o.m_cSeparator = '\t';
    o.m_bHeader = TheCsvForm().bHeader;
    o.m_bTell = false;
    o.m_bStrict = !TheCsvForm().bRagged;
    Named oIn(sPath, oBytes);
    vok::Csv_Report oCsv;
    try {
        vok::Csv_Load(oTree, oIn, o, oLimits, &oCsv);
    } catch (...) {
        oReport = oCsv;
        throw;
    }
    oReport = oCsv;
    if (oCsv.m_uFaults != 0) {
        const std::string sFaults = std::to_string(oCsv.m_uFaults);
        Tell(sPath, oCsv.m_uFaults == 1
                        ? Say("has %0 fault in its rows, which was passed over", {sFaults})
                        : Say("has %0 faults in its rows, which were passed over", {sFaults}));
    }
    for (const vok::Csv_Column& oColumn : oCsv.m_aoColumn) oColumns.push_back(oColumn.m_oName);
}

vok::u3_t SaveCsv(const vok::Data& oTop, const CsvColumns& oColumns, const std::string& sPath,
                  vok::File_Stream& oOut) {
    const CsvForm& oTold = TheCsvForm();
    vok::Csv_Form o;
    o.m_bStrict = false;
    if (EndingsOf(sPath).bTab) o.m_cSeparator = '\t';
    if (oColumns.empty()) {
        if (oTold.cSeparator != 0) o.m_cSeparator = oTold.cSeparator;
        o.m_bHeader = oTold.bHeader;
    }
    for (const vok::Str& oColumn : oColumns) o.m_aoColumn.push_back({oColumn, {}});
    return vok::Csv_Save(oTop, oOut, o, TheLimits()).m_uLeftOut;
}

}  // namespace tools

// SPDX-License-Identifier: MIT
#include "tools/csv.h"

#include <stdexcept>

#include "tools/path.h"
#include "tools/say.h"
#include "vok/base/msg.h"
#include "vok/csv/csv.h"
#include "vok/file/buf.h"
#include "vok/file/path.h"

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

// The ending of a name in small letters, without ".gz".
std::string EndingOf(std::string_view sPath) {
    const auto oLower = [](std::string_view s) {
        std::string sText(s);
        for (char& c : sText) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
        return sText;
    };
    const std::string sEnding = oLower(vok::File_Path::Ext(sPath));
    return sEnding == ".gz" ? oLower(vok::File_Path::Ext(vok::File_Path::Stem(sPath))) : sEnding;
}

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
    const std::string sEnding = EndingOf(sPath);
    return sEnding == ".csv" || sEnding == ".tsv";
}

void LoadCsv(const std::string& sPath, const vok::Arr<char>& oBytes, const vok::Limits& oLimits,
             vok::Data& oTree, vok::Load_Report& oReport) {
    vok::Csv_Options o;
    o.m_cSeparator = TheCsvForm().cSeparator;
    if (o.m_cSeparator == 0 && EndingOf(sPath) == ".tsv") o.m_cSeparator = '\t';
    o.m_bHeader = TheCsvForm().bHeader;
    o.m_bTell = false;
    Named oIn(sPath, oBytes);
    vok::Csv_Report oCsv;
    try {
        vok::Csv_Load(oTree, oIn, o, oLimits, &oCsv);
    } catch (...) {
        oReport = oCsv;
        throw;
    }
    oReport = oCsv;
}

}  // namespace tools

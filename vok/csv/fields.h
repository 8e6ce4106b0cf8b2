// SPDX-License-Identifier: MIT
// The rows of a csv file, one after the other. Internal.
#ifndef VOK_CSV_FIELDS_H
#define VOK_CSV_FIELDS_H

#include <string_view>
#include <vector>

#include "vok/base/arr.h"
#include "vok/csv/csv.h"
#include "vok/file/scan.h"

namespace vok::csv {

// The separator that the beginning of a file looks like. bWhole: there is no more of it.
[[nodiscard]] char GuessSeparator(std::string_view sStart, char cQuote, bool bWhole) noexcept;

class Rows {
  public:
    // The options, the limits and the report must outlive it.
    Rows(File_Stream& oIn, const Csv_Options& oOptions, const Limits& oLimits, Csv_Report& oReport);
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    // Reads the header, if there is one.
    void Start();
    // Goes to the next row with something in it; its fields are those of the columns, or fewer, or
    // more, as it was told to take. False at the end.
    bool Next();
    [[nodiscard]] std::size_t Size() const noexcept { return m_oEnd.Size(); }
    [[nodiscard]] std::string_view Field(std::size_t uNth) const noexcept {
        const std::size_t uBegin = uNth != 0 ? m_oEnd(uNth - 1) : 0;
        return {m_oText.Beg() + uBegin, m_oEnd(uNth) - uBegin};
    }
    // The columns so far, more than those of the header where rows have more.
    [[nodiscard]] const std::vector<Csv_Column>& Columns() const noexcept {
        return m_oReport.m_aoColumn;
    }
    // A field of the row is not of its type: raises or reports.
    void TellNoValue(std::size_t uNth);
    // Fills the report with where reading stands.
    void Report() const;
    // Bytes of the row that is at hand.
    [[nodiscard]] std::size_t RowBytes() const noexcept { return m_oText.Size(); }

  private:
    [[nodiscard]] bool ReadRow();
    void ReadHeader();
    void NameColumns(std::size_t uFrom, std::size_t uTo);
    void CheckCount();
    // Goes to where a field of the row begins, for who raises an error about it.
    void GoTo(std::size_t uNth);
    [[nodiscard]] Str RowText() const;
    [[nodiscard]] bool MayTell() noexcept;

    const Csv_Options& m_oOptions;
    const Limits& m_oLimits;
    Csv_Report& m_oReport;
    File_Scan m_oScan;
    char m_cSeparator;
    Arr<char> m_oText;  // of all fields of the row
    Arr<std::size_t> m_oEnd;
    u3_t m_uLine = 1;      // where the row begins
    unsigned m_uTold = 0;  // reports so far
};

}  // namespace vok::csv

#endif  // VOK_CSV_FIELDS_H

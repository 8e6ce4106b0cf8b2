// SPDX-License-Identifier: MIT
#include "vok/csv/fields.h"

#include <algorithm>
#include <array>
#include <string>

#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/csv/messages.h"
#include "vok/csv/types.h"

namespace vok::csv {

namespace {

// So much of the beginning tells the separator.
constexpr std::size_t SAMPLE = std::size_t{64} << 10;
constexpr unsigned SAMPLE_LINES = 100;
constexpr std::string_view SEPARATORS = ",;\t|";

// Who has a file full of faults does not want to read of each.
constexpr unsigned MOST_REPORTS = 20;
// As much of a row as messages show.
constexpr std::size_t SHOWN = 200;

bool IsBreak(char c) noexcept {
    return c == '\n' || c == '\r';
}

void CheckOptions(const Csv_Options& o) {
    if (IsBreak(o.m_cSeparator)) Msg::ParameterHasInvalidValue("m_cSeparator");
    const bool bQuote = o.m_cQuote != 0 && (IsBreak(o.m_cQuote) || o.m_cQuote == o.m_cSeparator);
    if (bQuote) Msg::ParameterHasInvalidValue("m_cQuote");
    for (const Csv_Column& oColumn : o.m_aoColumn) {
        if (oColumn.m_eType != Data_Node::Empty && !IsColumnType(oColumn.m_eType)) {
            Msg::ParameterHasInvalidValue("m_eType");
        }
    }
}

}  // namespace

char GuessSeparator(std::string_view sStart, char cQuote, bool bWhole) noexcept {
    using Counts = std::array<unsigned, SEPARATORS.size()>;
    Counts auFirst{};
    Counts auSame{};  // lines that have as many as the first one
    Counts auHere{};
    unsigned uLines = 0;
    bool bQuoted = false;
    bool bAny = false;
    const auto oEndLine = [&] {
        if (!bAny) return;
        for (std::size_t u = 0; u < auHere.size(); ++u) {
            if (uLines == 0) auFirst[u] = auHere[u];
            auSame[u] += auFirst[u] != 0 && auHere[u] == auFirst[u];
        }
        ++uLines;
        auHere = {};
        bAny = false;
    };
    for (const char c : sStart) {
        if (uLines == SAMPLE_LINES) break;
        if (IsBreak(c) && !bQuoted) {
            oEndLine();
            continue;
        }
        bAny = true;
        if (c == cQuote && cQuote != 0) {
            bQuoted = !bQuoted;
        } else if (const std::size_t u = SEPARATORS.find(c); u != SEPARATORS.npos && !bQuoted) {
            ++auHere[u];
        }
    }
    // What is cut off in the middle counts where there is nothing else.
    if (bWhole || uLines == 0) oEndLine();
    std::size_t uBest = 0;
    for (std::size_t u = 1; u < SEPARATORS.size(); ++u) {
        const bool bMore =
            auSame[u] != auSame[uBest] ? auSame[u] > auSame[uBest] : auFirst[u] > auFirst[uBest];
        if (bMore) uBest = u;
    }
    return SEPARATORS[uBest];
}

Rows::Rows(File_Stream& oIn, const Csv_Options& oOptions, const Limits& oLimits,
           Csv_Report& oReport)
    : m_oOptions(oOptions),
      m_oLimits(oLimits),
      m_oReport(oReport),
      m_oScan(oIn, oLimits),
      m_cSeparator(oOptions.m_cSeparator) {}

void Rows::Start() {
    CheckOptions(m_oOptions);
    if (m_cSeparator == 0) {
        const std::size_t uSample =
            static_cast<std::size_t>(std::min<u3_t>(SAMPLE, m_oLimits.m_uTextBytes));
        const std::string_view sStart = m_oScan.Ahead(uSample);
        m_cSeparator = GuessSeparator(sStart, m_oOptions.m_cQuote, sStart.size() < uSample);
    }
    m_oReport.m_cSeparator = m_cSeparator;
    if (m_oOptions.m_bHeader) {
        ReadHeader();
    } else {
        m_oReport.m_aoColumn = m_oOptions.m_aoColumn;
    }
}

void Rows::ReadHeader() {
    if (ReadRow()) NameColumns(0, Size());
    for (const Csv_Column& oTold : m_oOptions.m_aoColumn) {
        bool bFound = false;
        for (Csv_Column& oColumn : m_oReport.m_aoColumn) {
            if (!(oColumn.m_oName == oTold.m_oName)) continue;
            oColumn.m_eType = oTold.m_eType;
            bFound = true;
        }
        if (!bFound) {
            if (m_oEnd.Size() != 0) GoTo(0);
            Msg::MissingColumn(m_oScan.Name(), oTold.m_oName.CStr());
        }
    }
}

// Gives columns the names that stand in the row at hand, if it is the header.
void Rows::NameColumns(std::size_t uFrom, std::size_t uTo) {
    for (std::size_t u = uFrom; u < uTo; ++u) {
        Csv_Column oColumn;
        if (uFrom == 0 && m_oOptions.m_bHeader) oColumn.m_oName = Str(Field(u));
        if (oColumn.m_oName.IsEmpty()) {
            char sNumber[NUMBER_ROOM];
            FormatInteger(u3_t{u} + 1, sNumber);
            oColumn.m_oName = Str("column");
            oColumn.m_oName.Add(sNumber);
        }
        m_oReport.m_aoColumn.push_back(std::move(oColumn));
    }
}

bool Rows::Next() {
    if (!ReadRow()) return false;
    CheckCount();
    ++m_oReport.m_uRows;
    return true;
}

bool Rows::ReadRow() {
    using End = File_Scan::Field::End;
    for (;;) {
        m_oText.Truncate(0);
        m_oEnd.Truncate(0);
        m_oScan.Hold();
        if (m_oScan.AtEnd()) return false;
        m_uLine = m_oScan.Line();
        for (End eEnd = End::Separator; eEnd == End::Separator;) {
            const File_Scan::Field o = m_oScan.ReadField(m_cSeparator, m_oOptions.m_cQuote);
            eEnd = o.m_eEnd;
            if (o.m_sText.find('\0') != o.m_sText.npos) {
                GoTo(m_oEnd.Size());
                RaiseNul(m_oScan.Name(), m_oScan.Line(), m_oScan.Column());
            }
            m_oText.Add(o.m_sText.data(), o.m_sText.size());
            m_oEnd.Add(m_oText.Size());
            if (m_oEnd.Size() > m_oLimits.m_uNodes) m_oLimits.RaiseExceeded(&Limits::m_uNodes);
            const bool bEmptyLine =
                m_oEnd.Size() == 1 && eEnd != End::Separator && o.m_sText.empty() && !o.m_bQuoted;
            if (bEmptyLine) m_oEnd.Truncate(0);
            if (!o.m_bUnclosed && !o.m_bBehind) continue;
            ++m_oReport.m_uFaults;
            const Str oRow = RowText();
            if (m_oOptions.m_bStrict) GoTo(m_oEnd.Size() - 1);
            if (m_oOptions.m_bStrict || MayTell()) {
                const char cMissing = o.m_bUnclosed ? m_oOptions.m_cQuote : m_cSeparator;
                Msg::MissingCharInCsvFile(m_oOptions.m_bStrict, m_oScan.Name(), m_uLine,
                                          oRow.CStr(), static_cast<u0_t>(cMissing));
            }
        }
        if (m_oEnd.Size() != 0) return true;
        ++m_oReport.m_uEmptyLines;
        if (MayTell()) Msg::EmptyLineInCsvFileIgnored(m_oScan.Name(), m_uLine);
    }
}

// Holds the row to the columns that there are. Without a header its first row tells how many.
void Rows::CheckCount() {
    const std::size_t uColumns = m_oReport.m_aoColumn.size();
    const std::size_t uFields = Size();
    if (uFields == uColumns) [[likely]]
        return;
    const bool bUntold = !m_oOptions.m_bHeader && m_oOptions.m_aoColumn.empty();
    if (bUntold && m_oReport.m_uRows == 0) return NameColumns(0, uFields);
    ++m_oReport.m_uFaults;
    const Str oRow = RowText();
    const bool bRaise = m_oOptions.m_bStrict;
    if (bRaise) GoTo(uFields > uColumns ? uColumns : uFields - 1);
    const bool bTell = bRaise || MayTell();
    if (bTell && uFields < uColumns) {
        Msg::TooFewColumnsInCsvFile(bRaise, m_oScan.Name(), m_uLine, oRow.CStr(), u3_t{uFields},
                                    u3_t{uColumns});
    } else if (bTell) {
        Msg::TooManyColumnsInCsvFile(bRaise, m_oScan.Name(), m_uLine, oRow.CStr(), u3_t{uFields},
                                     u3_t{uColumns});
    }
    if (uFields > uColumns) NameColumns(uColumns, uFields);
}

void Rows::TellNoValue(std::size_t uNth) {
    ++m_oReport.m_uFaults;
    if (m_oOptions.m_bStrict) GoTo(uNth);
    if (!m_oOptions.m_bStrict && !MayTell()) return;
    const Csv_Column& o = Columns()[uNth];
    NoValueOf(m_oOptions.m_bStrict, m_oScan.Name(), m_uLine, o.m_oName.View(), Field(uNth),
              Data_Node::TypeName(o.m_eType));
}

void Rows::GoTo(std::size_t uNth) {
    m_oScan.Rewind();
    while (uNth-- != 0) (void)m_oScan.ReadField(m_cSeparator, m_oOptions.m_cQuote);
}

Str Rows::RowText() const {
    std::string_view s = m_oScan.Held();
    while (!s.empty() && IsBreak(s.back())) s.remove_suffix(1);
    return Str(s.substr(0, SHOWN));
}

bool Rows::MayTell() noexcept {
    return m_oOptions.m_bTell && m_uTold++ < MOST_REPORTS;
}

void Rows::Report() const {
    m_oReport.m_uOffset = m_oScan.Offset();
    m_oReport.m_uLine = static_cast<u2_t>(m_oScan.Line());
    m_oReport.m_uColumn = static_cast<u2_t>(m_oScan.Column());
}

}  // namespace vok::csv

// SPDX-License-Identifier: MIT
// Csv files into trees and documents.
#include <algorithm>
#include <numeric>
#include <optional>
#include <vector>

#include "vok/base/where.h"
#include "vok/base/work.h"
#include "vok/csv/csv.h"
#include "vok/csv/fields.h"
#include "vok/csv/types.h"
#include "vok/data/builder.h"
#include "vok/data/report.h"

namespace vok {

namespace csv {

namespace {

using Columns = std::vector<Csv_Column>;

// The columns in the order of their names, in which a tree keeps them.
class Order {
  public:
    // Of the first so many columns, as rows with fewer fields have them: in time that goes by
    // those.
    const std::vector<std::size_t>& Of(std::size_t uFields, const Columns& aoColumn) {
        if (m_auRank.size() != aoColumn.size()) Sort(aoColumn);
        if (uFields >= m_auOrder.size()) return m_auOrder;
        m_auSome.resize(uFields);
        std::iota(m_auSome.begin(), m_auSome.end(), std::size_t{0});
        std::sort(m_auSome.begin(), m_auSome.end(),
                  [this](std::size_t a, std::size_t b) { return m_auRank[a] < m_auRank[b]; });
        return m_auSome;
    }

  private:
    void Sort(const Columns& aoColumn) {
        m_auOrder = ByName(aoColumn);
        m_auRank.resize(aoColumn.size());
        for (std::size_t u = 0; u < m_auOrder.size(); ++u) m_auRank[m_auOrder[u]] = u;
    }

    std::vector<std::size_t> m_auOrder;
    std::vector<std::size_t> m_auRank;  // where in the order each column is
    std::vector<std::size_t> m_auSome;
};

// Holds what is made to the limits.
class Meter {
  public:
    explicit Meter(const Limits& o) : m_oLimits(o), m_oWork(o) {}
    // A row of so many fields, and what is held by now.
    void Row(std::size_t uFields, u3_t uHeld) {
        m_uNodes += uFields + 1;
        if (m_uNodes > m_oLimits.m_uNodes) m_oLimits.RaiseExceeded(&Limits::m_uNodes);
        if (m_oWork.IsMetered()) (void)m_oWork.CheckMemory(uHeld + m_uNodes * BYTES_PER_NODE);
    }

  private:
    // With its place among its siblings.
    static constexpr u3_t BYTES_PER_NODE = 24;
    const Limits& m_oLimits;
    Work m_oWork;
    u3_t m_uNodes = 1;
};

// The fields of all rows, until it is known of what types they are.
class Table {
  public:
    void Add(const Rows& oRows) {
        for (std::size_t u = 0; u < oRows.Size(); ++u) {
            const std::string_view s = oRows.Field(u);
            m_oText.Add(s.data(), s.size());
            m_oEnd.Add(m_oText.Size());
        }
        m_oRow.Add(m_oEnd.Size());
    }
    [[nodiscard]] std::size_t Bytes() const noexcept {
        return m_oText.Capacity() + m_oEnd.Capacity() * sizeof(u3_t) +
               m_oRow.Capacity() * sizeof(u3_t);
    }
    // Goes through its rows as they were.
    bool Next() noexcept {
        m_uFirst = m_uRow != 0 ? m_oRow(m_uRow - 1) : 0;
        return m_uRow++ != m_oRow.Size();
    }
    [[nodiscard]] std::size_t Size() const noexcept { return m_oRow(m_uRow - 1) - m_uFirst; }
    [[nodiscard]] std::string_view Field(std::size_t uNth) const noexcept {
        const std::size_t u = m_uFirst + uNth;
        const std::size_t uBegin = u != 0 ? m_oEnd(u - 1) : 0;
        return {m_oText.Beg() + uBegin, m_oEnd(u) - uBegin};
    }

  private:
    Arr<char> m_oText;
    Arr<std::size_t> m_oEnd;  // of each field
    Arr<std::size_t> m_oRow;  // fields up to the end of each row
    std::size_t m_uRow = 0;
    std::size_t m_uFirst = 0;
};

// Whether a column is still to be guessed.
bool IsOpen(const Csv_Options& o, const Csv_Column& oColumn) noexcept {
    return o.m_bGuess && oColumn.m_eType == Data_Node::Empty;
}

// Looks at the fields of a row that a type is to be guessed of.
void Look(const Rows& oRows, const Csv_Options& oOptions, std::vector<Guess>& aoGuess) {
    const Columns& aoColumn = oRows.Columns();
    if (aoGuess.size() < aoColumn.size()) aoGuess.resize(aoColumn.size());
    for (std::size_t u = 0; u < oRows.Size(); ++u) {
        if (IsOpen(oOptions, aoColumn[u])) aoGuess[u].Look(oRows.Field(u));
    }
}

void Settle(Columns& aoColumn, const Csv_Options& oOptions, const std::vector<Guess>& aoGuess) {
    for (std::size_t u = 0; u < aoColumn.size(); ++u) {
        if (aoColumn[u].m_eType != Data_Node::Empty) continue;
        const bool bGuessed = oOptions.m_bGuess && u < aoGuess.size();
        aoColumn[u].m_eType = bGuessed ? aoGuess[u].Result() : Data_Node::String;
    }
}

// Gives the fields of a row to oAdd in the order of their columns' names. oNone is asked for a
// field that is not of its type.
template <class Row, class Add, class None>
void ForEachValue(const Row& oRow, const Columns& aoColumn, Order& oOrder, bool bLeaveOutEmpty,
                  Add oAdd, None oNone) {
    for (const std::size_t u : oOrder.Of(oRow.Size(), aoColumn)) {
        const std::string_view sField = oRow.Field(u);
        if (sField.empty()) {
            if (!bLeaveOutEmpty) oAdd(u, Data_Value(sField));
            continue;
        }
        const Data_Node::Type eType = aoColumn[u].m_eType;
        std::optional<Data_Value> oValue =
            ValueOf(sField, eType != Data_Node::Empty ? eType : Data_Node::String);
        if (!oValue) {
            oNone(u);
            oValue = Data_Value(sField);
        }
        oAdd(u, *oValue);
    }
}

// Makes rows in a tree. Columns may be added while it does.
class Builder {
  public:
    Builder(Data& oTree, const Csv_Options& oOptions) : m_oOptions(oOptions), m_oBuilder(oTree) {}

    template <class Row, class None>
    void Add(const Row& oRow, const Columns& aoColumn, None oNone) {
        m_oBuilder.Open(m_oOptions.m_oRow.View());
        ForEachValue(
            oRow, aoColumn, m_oOrder, m_oOptions.m_bLeaveOutEmpty,
            [&](std::size_t u, const Data_Value& oValue) {
                m_oBuilder.Add(aoColumn[u].m_oName.View(), oValue);
            },
            oNone);
        m_oBuilder.Close();
    }

  private:
    const Csv_Options& m_oOptions;
    Data_Builder m_oBuilder;
    Order m_oOrder;
};

// Reads all rows, with what oUse does with each.
template <class Use>
void ForEachRow(Rows& oRows, const Csv_Options& oOptions, std::vector<Guess>& aoGuess, Use oUse) {
    while (oRows.Next()) {
        if (oOptions.m_bGuess) Look(oRows, oOptions, aoGuess);
        oUse();
    }
}

// Has a report filled, the caller's or one of our own.
template <class F>
void WithReport(Csv_Report* pReport, F&& oBody) {
    Csv_Report oOwn;
    Csv_Report& oReport = pReport != nullptr ? *pReport : oOwn;
    oReport = Csv_Report();
    oBody(oReport);
}

void Load(Data& oTree, File_Stream& oIn, const Csv_Options& oOptions, const Limits& oLimits,
          Csv_Report& oReport) {
    oTree.Clear();
    oTree.SetToRoot();
    Rows oRows(oIn, oOptions, oLimits, oReport);
    const detail::OnExit oOnExit([&] {
        oRows.Report();
        oReport.m_uNodes = oTree.GetNodes();
    });
    oRows.Start();
    Meter oMeter(oLimits);
    std::vector<Guess> aoGuess;
    const bool bOpen = oOptions.m_bGuess &&
                       (oReport.m_aoColumn.empty() || !oOptions.m_bStrict ||
                        std::any_of(oReport.m_aoColumn.begin(), oReport.m_aoColumn.end(),
                                    [&](const Csv_Column& o) { return IsOpen(oOptions, o); }));
    if (!bOpen) {
        u3_t uTexts = 0;
        Builder oBuilder(oTree, oOptions);
        ForEachRow(oRows, oOptions, aoGuess, [&] {
            oMeter.Row(oRows.Size(), uTexts += oRows.RowBytes());
            oBuilder.Add(oRows, oRows.Columns(), [&](std::size_t u) { oRows.TellNoValue(u); });
        });
    } else {
        Table oTable;
        ForEachRow(oRows, oOptions, aoGuess, [&] {
            // Told types are held to while the place of the row is known.
            for (std::size_t u = 0; u < oRows.Size(); ++u) {
                const Data_Node::Type eType = oRows.Columns()[u].m_eType;
                const bool bTold = eType != Data_Node::Empty && !oRows.Field(u).empty();
                if (bTold && !ValueOf(oRows.Field(u), eType)) oRows.TellNoValue(u);
            }
            oTable.Add(oRows);
            oMeter.Row(oRows.Size(), 2 * u3_t{oTable.Bytes()});
        });
        Settle(oReport.m_aoColumn, oOptions, aoGuess);
        Builder oBuilder(oTree, oOptions);
        while (oTable.Next()) oBuilder.Add(oTable, oReport.m_aoColumn, [](std::size_t) {});
    }
    Settle(oReport.m_aoColumn, oOptions, aoGuess);
    oTree.SetAccessMode();
    oTree.Shrink();
}

}  // namespace

}  // namespace csv

void Csv_Load(Data& oTree, File_Stream& oIn, const Csv_Options& oOptions, const Limits& oLimits,
              Csv_Report* pReport) {
    return Where("vok::Csv_Load", [&] {
        csv::WithReport(pReport, [&](Csv_Report& oReport) {
            csv::Load(oTree, oIn, oOptions, oLimits, oReport);
        });
    });
}

void Csv_Copy(Data_Writer& oOut, File_Stream& oIn, const Csv_Options& oOptions,
              const Limits& oLimits, Csv_Report* pReport) {
    return Where("vok::Csv_Copy", [&] {
        csv::WithReport(pReport, [&](Csv_Report& oReport) {
            csv::Rows oRows(oIn, oOptions, oLimits, oReport);
            const detail::OnExit oOnExit([&] { oRows.Report(); });
            oRows.Start();
            csv::Order oOrder;
            while (oRows.Next()) {
                const std::vector<Csv_Column>& aoColumn = oRows.Columns();
                u2_t uSuccs = 0;
                for (std::size_t u = 0; u < oRows.Size(); ++u) {
                    uSuccs += !oOptions.m_bLeaveOutEmpty || !oRows.Field(u).empty();
                }
                oOut.Open(oOptions.m_oRow.View(), uSuccs);
                csv::ForEachValue(
                    oRows, aoColumn, oOrder, oOptions.m_bLeaveOutEmpty,
                    [&](std::size_t u, const Data_Value& oValue) {
                        oOut.Add(aoColumn[u].m_oName.View(), oValue);
                    },
                    [&](std::size_t u) { oRows.TellNoValue(u); });
                oOut.Close();
                oReport.m_uNodes += uSuccs + u3_t{1};
            }
            csv::Settle(oReport.m_aoColumn, oOptions, {});
        });
    });
}

std::vector<Csv_Column> Csv_Columns(File_Stream& oIn, const Csv_Options& oOptions,
                                    const Limits& oLimits, Csv_Report* pReport) {
    return Where("vok::Csv_Columns", [&] {
        std::vector<Csv_Column> aoColumn;
        csv::WithReport(pReport, [&](Csv_Report& oReport) {
            csv::Rows oRows(oIn, oOptions, oLimits, oReport);
            const detail::OnExit oOnExit([&] { oRows.Report(); });
            oRows.Start();
            std::vector<csv::Guess> aoGuess;
            csv::ForEachRow(oRows, oOptions, aoGuess, [] {});
            csv::Settle(oReport.m_aoColumn, oOptions, aoGuess);
            aoColumn = oReport.m_aoColumn;
        });
        return aoColumn;
    });
}

}  // namespace vok

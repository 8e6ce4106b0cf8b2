// SPDX-License-Identifier: MIT
// Rows of scalars as csv files.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/csv/csv.h"
#include "vok/csv/messages.h"
#include "vok/csv/types.h"
#include "vok/data/view.h"

namespace vok {

namespace csv {

namespace {

// A number that reads back as a real one.
std::string_view WithPoint(char* sBuf, std::size_t uSize) noexcept {
    const std::string_view s(sBuf, uSize);
    if (s.find_first_of(".eEN") == s.npos) {
        sBuf[uSize++] = '.';
        sBuf[uSize++] = '0';
    }
    return {sBuf, uSize};
}

// Whole seconds, and behind them micro-seconds where there are some; of a midnight the day alone.
std::string_view DateText(double dSeconds, char* sBuf) noexcept {
    constexpr double MICRO = 1e6;
    double dWhole = std::floor(dSeconds);
    auto uMicro = static_cast<u2_t>(std::lround((dSeconds - dWhole) * MICRO));
    if (uMicro == static_cast<u2_t>(MICRO)) {
        uMicro = 0;
        ++dWhole;
    }
    std::size_t uSize = FormatDate(dWhole, 'T', sBuf);
    if (uMicro != 0) {
        sBuf[uSize++] = '.';
        for (u2_t uUnit = static_cast<u2_t>(MICRO) / 10; uMicro != 0; uUnit /= 10) {
            sBuf[uSize++] = static_cast<char>('0' + uMicro / uUnit);
            uMicro %= uUnit;
        }
    }
    const std::string_view s(sBuf, uSize);
    constexpr std::string_view MIDNIGHT = "T00:00:00";
    return s.substr(0, uSize - (s.ends_with(MIDNIGHT) ? MIDNIGHT.size() : 0));
}

constexpr std::size_t ROOM = 160;

// A value as a field; what has no text there does not get here.
std::string_view TextOf(const Data_View& o, char* sBuf) noexcept {
    switch (o.GetType()) {
        case Data_Node::Boolean: return o.Int() != 0 ? "true" : "false";
        case Data_Node::Integer: return {sBuf, FormatInteger(o.Int(), sBuf)};
        case Data_Node::Long: return {sBuf, FormatInteger(o.Lng(), sBuf)};
        case Data_Node::Double: return WithPoint(sBuf, FormatReal(o.Dbl(), sBuf));
        case Data_Node::Float: {
            // As many digits as a narrow one needs, if it is one.
            const auto fValue = static_cast<float>(o.Dbl());
            const bool bNarrow = static_cast<double>(fValue) == o.Dbl() && std::isfinite(fValue);
            if (!bNarrow) return WithPoint(sBuf, FormatReal(o.Dbl(), sBuf));
            const char* const pEnd = std::to_chars(sBuf, sBuf + NUMBER_ROOM, fValue).ptr;
            return WithPoint(sBuf, static_cast<std::size_t>(pEnd - sBuf));
        }
        case Data_Node::Date: return DateText(o.Dbl(), sBuf);
        case Data_Node::Char:
            if (o.Int() == 0) return {};  // no file has a NUL
            return {sBuf, EncodeUtf8(static_cast<u2_t>(o.Int()), sBuf)};
        case Data_Node::String: return o.Text();
        default: return {};
    }
}

bool IsField(const Data_View& o) noexcept {
    return o.GetType() == Data_Node::Empty || IsColumnType(o.GetType());
}

class Saver {
  public:
    Saver(const Data& oTop, File_Stream& oOut, const Csv_Form& oForm, const Limits& oLimits)
        : m_oTop(oTop), m_oOut(oOut), m_oForm(oForm), m_oLimits(oLimits) {}

    Csv_Saved Run() {
        const Data_View oTop(m_oTop);
        if (oTop.HasAttributes()) LeaveOut(oTop);
        // First what there is, so that nothing is written of what does not fit.
        u3_t uRows = 0;
        ForEachRow(oTop, [&](const Data_View& oRow) {
            ++uRows;
            Note(oRow);
        });
        NameColumns();
        CheckSize(uRows);
        CheckTold(oTop);
        if (m_asName.empty()) {
            // Lines of nothing are no rows.
            ForEachRow(oTop, [this](const Data_View& oRow) { LeaveOut(oRow); });
            return std::move(m_oSaved);
        }
        if (m_oForm.m_bHeader) {
            for (std::size_t u = 0; u < m_asName.size(); ++u) Put(m_asName[u], u);
            EndRow();
        }
        m_bWriting = true;
        ForEachRow(oTop, [this](const Data_View& oRow) { Write(oRow); });
        Flush();
        return std::move(m_oSaved);
    }

  private:
    static constexpr std::size_t PIECE = std::size_t{64} << 10;

    template <class Use>
    void ForEachRow(const Data_View& oTop, Use oUse) {
        u2_t uName = 0;
        bool bFirst = true;
        for (u2_t u = 0; u < oTop.GetSuccs(); ++u) {
            const Data_View o = oTop.GetSucc(u);
            if (o.GetType() == Data_Node::Zombi) continue;
            const bool bRow = o.GetType() == Data_Node::Tree || o.GetType() == Data_Node::Empty;
            if (bRow && bFirst) uName = o.GetKey().uKey;
            if (!bRow || (!bFirst && o.GetKey().uKey != uName)) {
                LeaveOut(o);
                continue;
            }
            bFirst = false;
            if (o.HasAttributes()) LeaveOut(o);
            oUse(o);
        }
    }
    // Calls oUse with each field of a row, and the how manieth of its name it is.
    template <class Use>
    void ForEachField(const Data_View& oRow, Use oUse) {
        u2_t uLast = 0;
        u2_t uNth = 0;
        for (u2_t u = 0; u < oRow.GetSuccs(); ++u) {
            const Data_View o = oRow.GetSucc(u);
            if (o.GetType() == Data_Node::Zombi) continue;
            const u2_t uKey = o.GetKey().uKey;
            if (uKey == 0 || !IsField(o)) {
                LeaveOut(o);
                continue;
            }
            if (o.HasAttributes()) LeaveOut(o);
            uNth = uKey == uLast ? uNth + 1 : 0;
            uLast = uKey;
            oUse(o, uKey, uNth);
        }
    }
    void Note(const Data_View& oRow) {
        ForEachField(oRow, [this](const Data_View& o, u2_t uKey, u2_t uNth) {
            ++m_uFields;
            Name& oName = m_oName[uKey];
            oName.sText = o.GetName();
            oName.uMost = std::max(oName.uMost, uNth + 1);
            const bool bUnquoted = m_oForm.m_cQuote == 0 && NeedsQuote(TextOf(o, m_sBuf), false);
            if (bUnquoted) LeaveOut(o);
        });
    }
    // Gives names their columns.
    void NameColumns() {
        std::vector<std::pair<std::string_view, u2_t>> aoSorted;
        for (const auto& [uKey, oName] : m_oName) aoSorted.emplace_back(oName.sText, uKey);
        std::sort(aoSorted.begin(), aoSorted.end());
        if (m_oForm.m_aoColumn.empty()) {
            for (const auto& [sName, uKey] : aoSorted) {
                Name& o = m_oName[uKey];
                for (u2_t u = 0; u < o.uMost; ++u) {
                    o.auColumn.push_back(m_asName.size());
                    m_asName.emplace_back(sName);
                }
            }
        } else {
            for (const Csv_Column& oColumn : m_oForm.m_aoColumn) {
                const std::string_view sName = oColumn.m_oName.View();
                const auto oFound =
                    std::lower_bound(aoSorted.begin(), aoSorted.end(), std::pair(sName, u2_t{0}));
                if (oFound != aoSorted.end() && oFound->first == sName) {
                    m_oName[oFound->second].auColumn.push_back(m_asName.size());
                }
                m_asName.emplace_back(sName);
            }
        }
        m_asField.resize(m_asName.size());
    }
    // A few nodes with names of their own, and many without, would fill a disk with separators.
    void CheckSize(u3_t uRows) const {
        constexpr u3_t FREE = u3_t{1} << 22;
        const u3_t uRatio = m_oLimits.m_uMemoryPerByte;
        const u3_t uMost = m_uFields != 0 && uRatio > (~u3_t{0} - FREE) / m_uFields
                               ? ~u3_t{0}
                               : uRatio * m_uFields + FREE;
        const u3_t uColumns = m_asName.size();
        if (uRows != 0 && uColumns > uMost / uRows) {
            m_oLimits.RaiseExceeded(&Limits::m_uMemoryPerByte);
        }
    }
    // Leaves out the fields that no column that was told has.
    void CheckTold(const Data_View& oTop) {
        if (m_oForm.m_aoColumn.empty()) return;
        const bool bAll = std::all_of(m_oName.begin(), m_oName.end(), [](const auto& o) {
            return o.second.auColumn.size() >= o.second.uMost;
        });
        if (bAll) return;
        const u3_t uSoFar = m_oSaved.m_uLeftOut;
        const Str oFirst = m_oSaved.m_oFirst;
        ForEachRow(oTop, [this](const Data_View& oRow) {
            ForEachField(oRow, [this](const Data_View& o, u2_t uKey, u2_t uNth) {
                if (uNth >= m_oName[uKey].auColumn.size()) LeaveOut(o, true);
            });
        });
        // The others were counted already.
        m_oSaved.m_uLeftOut = uSoFar + m_uUntold;
        if (!oFirst.IsEmpty()) m_oSaved.m_oFirst = oFirst;
    }
    void Write(const Data_View& oRow) {
        for (std::string& s : m_asField) s.clear();
        ForEachField(oRow, [this](const Data_View& o, u2_t uKey, u2_t uNth) {
            const Name& oName = m_oName[uKey];
            if (uNth >= oName.auColumn.size()) return;
            const std::string_view sText = TextOf(o, m_sBuf);
            if (m_oForm.m_cQuote == 0 && NeedsQuote(sText, false)) return;
            m_asField[oName.auColumn[uNth]] = sText;
        });
        for (std::size_t u = 0; u < m_asField.size(); ++u) Put(m_asField[u], u);
        EndRow();
        ++m_oSaved.m_uRows;
    }

    void LeaveOut(const Data_View& o, bool bUntold = false) {
        if (m_bWriting) return;  // counted when it was looked at first
        if (m_oForm.m_bStrict || m_oSaved.m_uLeftOut == 0) {
            const Str oPath = m_oTop.GetNodeFromID(o.GetId()).GetPath();
            if (m_oForm.m_bStrict) RaiseDoesNotFit(oPath.CStr());
            m_oSaved.m_oFirst = oPath;
        }
        ++m_oSaved.m_uLeftOut;
        m_uUntold += bUntold;
    }

    // ---- bytes --------------------------------------------------------------

    [[nodiscard]] bool NeedsQuote(std::string_view s, bool bAlone) const noexcept {
        const char ac[] = {m_oForm.m_cSeparator, '\n', '\r', m_oForm.m_cQuote};
        const std::string_view sSpecial(ac, m_oForm.m_cQuote != 0 ? 4 : 3);
        // An empty line would be none, and a byte-order mark at the beginning of the file no text.
        return s.find_first_of(sSpecial) != s.npos || (s.empty() && bAlone) ||
               s.starts_with("\xEF\xBB\xBF");
    }
    void Put(std::string_view s, std::size_t uColumn) {
        if (uColumn != 0) m_sOut += m_oForm.m_cSeparator;
        if (m_oForm.m_cQuote == 0 || !NeedsQuote(s, m_asName.size() == 1)) {
            m_sOut += s;
        } else {
            m_sOut += m_oForm.m_cQuote;
            for (const char c : s) {
                if (c == m_oForm.m_cQuote) m_sOut += c;
                m_sOut += c;
            }
            m_sOut += m_oForm.m_cQuote;
        }
        if (m_sOut.size() >= PIECE) Flush();
    }
    void EndRow() { m_sOut += m_oForm.m_bCrLf ? "\r\n" : "\n"; }
    void Flush() {
        if (!m_sOut.empty()) m_oOut.Write(m_sOut.data(), m_sOut.size());
        m_sOut.clear();
    }

    struct Name {
        std::string_view sText;
        u2_t uMost = 0;                     // times it comes in one row
        std::vector<std::size_t> auColumn;  // where it goes
    };

    const Data& m_oTop;
    File_Stream& m_oOut;
    const Csv_Form& m_oForm;
    const Limits& m_oLimits;
    u3_t m_uFields = 0;
    Csv_Saved m_oSaved;
    u3_t m_uUntold = 0;
    bool m_bWriting = false;
    std::map<u2_t, Name> m_oName;  // by key
    std::vector<std::string> m_asName;
    std::vector<std::string> m_asField;
    std::string m_sOut;
    char m_sBuf[ROOM];
};

}  // namespace

}  // namespace csv

Csv_Saved Csv_Save(const Data& oTop, File_Stream& oOut, const Csv_Form& oForm,
                   const Limits& oLimits) {
    return Where("vok::Csv_Save", [&] {
        const char c = oForm.m_cSeparator;
        if (c == 0 || c == '\n' || c == '\r') Msg::ParameterHasInvalidValue("m_cSeparator");
        const char q = oForm.m_cQuote;
        if (q == c || q == '\n' || q == '\r') Msg::ParameterHasInvalidValue("m_cQuote");
        return csv::Saver(oTop, oOut, oForm, oLimits).Run();
    });
}

}  // namespace vok

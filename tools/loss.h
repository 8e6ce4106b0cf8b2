// SPDX-License-Identifier: MIT
// What a conversion does not keep.
#ifndef TOOLS_LOSS_H
#define TOOLS_LOSS_H

#include <string>
#include <string_view>
#include <vector>

#include "vok/base/limits.h"
#include "vok/data/data.h"
#include "vok/data/value.h"

namespace tools {

// How dates are written: as days, or as texts, which in XML may be no date.
enum class Dates { Days, Texts, XmlTexts };

// What nodes have that some form drops, counted as they go by.
class LossCount {
  public:
    // iMinor: of DGraph documents.
    LossCount(std::string sFormat, int iMinor);

    void Add(const vok::Data_Value& oValue);
    void AddAttribute(std::string_view sValue) noexcept { m_uEmptyAttributes += sValue.empty(); }
    // That leads to nothing, or to what was removed; or to the top.
    void AddDeadLink() noexcept { ++m_uDeadLinks; }
    void AddTopLink() noexcept { ++m_uTopLinks; }
    // Nodes and attributes that no row of scalars has.
    void AddUnfit(vok::u3_t uCount) noexcept { m_uUnfit += uCount; }

    // Lines such as "3 characters beyond one byte".
    [[nodiscard]] std::vector<std::string> Lines() const;
    // What the form cannot be read back with at all; empty when it can.
    [[nodiscard]] std::string WhyNot() const;
    // Whether attributes count.
    [[nodiscard]] bool WantsAttributes() const noexcept { return m_sFormat == "dgraph"; }

  private:
    void AddDate(double dSeconds);

    const std::string m_sFormat;
    const int m_iMinor;
    const Dates m_eDates;
    vok::u3_t m_uEmptyAttributes = 0;
    vok::u3_t m_uFloats = 0;     // with more digits than 32 bits hold
    vok::u3_t m_uFractions = 0;  // dates with parts of a second
    vok::u3_t m_uChars = 0;      // beyond one byte
    vok::u3_t m_uNoChars = 0;    // that are no character of Unicode
    vok::u3_t m_uDates = 0;
    vok::u3_t m_uOtherDates = 0;  // that become others, not for their fractions
    vok::u3_t m_uLongs = 0;
    vok::u3_t m_uQuads = 0;
    vok::u3_t m_uNoNumbers = 0;  // infinities, and what is not a number
    vok::u3_t m_uDeadLinks = 0;
    vok::u3_t m_uTopLinks = 0;
    vok::u3_t m_uUnfit = 0;
};

// Of a whole tree. Linear.
void CountTree(const vok::Data& oTree, LossCount& oCount);

// Says on standard error what of a document is lost, and that nothing may be lost where bLossless:
// raises std::invalid_argument then, and where the form that is written cannot be read back.
void TellLosses(const std::string& sFile, const vok::Load_Report& oReport,
                const std::string& sBehind, const LossCount& oLosses, bool bLossless);

// The same of what reading alone has lost.
void TellReadingLosses(const std::string& sFile, const vok::Load_Report& oReport,
                       const std::string& sBehind);

// Lines such as "3 comments". Of the document that was read: what its tree does not hold.
std::vector<std::string> LostByReading(const vok::Load_Report& oReport);

}  // namespace tools

#endif  // TOOLS_LOSS_H

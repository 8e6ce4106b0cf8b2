// SPDX-License-Identifier: MIT
#include "tools/loss.h"
#include "tools/print.h"

#include <stdexcept>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "tools/say.h"
#include "tools/text.h"
#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Node;

class Losses {
  public:
    void Add(vok::u3_t uCount, const char* sOne, const char* sMany) {
        if (uCount == 0) return;
        m_asLine.push_back(std::to_string(uCount) + ' ' + Say(uCount == 1 ? sOne : sMany));
    }
    [[nodiscard]] std::vector<std::string> Lines() && { return std::move(m_asLine); }

  private:
    std::vector<std::string> m_asLine;
};

// The date that is read back.
double ReadBack(double dSeconds, Dates eDates) {
    if (eDates == Dates::Days) return vok::SecondsOfDays(vok::DaysOfSeconds(dSeconds));
    char s[128];
    if (eDates == Dates::XmlTexts && !std::isfinite(dSeconds)) {
        return vok::ParseReal({s, vok::FormatReal(dSeconds, s)});
    }
    double dRead = 0;
    (void)vok::ParseDate({s, vok::FormatDate(dSeconds, ' ', s)}, dRead);
    return dRead;
}

}  // namespace

LossCount::LossCount(std::string sFormat, int iMinor)
    : m_sFormat(std::move(sFormat)),
      m_iMinor(iMinor),
      m_eDates(m_sFormat == "xml" ? Dates::XmlTexts
               : iMinor < 2       ? Dates::Texts
                                  : Dates::Days) {}

void LossCount::AddDate(double dSeconds) {
    const bool bFraction = std::isfinite(dSeconds) && std::floor(dSeconds) != dSeconds;
    ++m_uDates;
    m_uFractions += bFraction;
    // By their bits: 0 is not -0.
    m_uOtherDates += !bFraction && std::bit_cast<vok::u3_t>(ReadBack(dSeconds, m_eDates)) !=
                                       std::bit_cast<vok::u3_t>(dSeconds);
}

void LossCount::Add(const vok::Data_Value& o) {
    switch (o.GetType()) {
        case Data_Node::Float:
        case Data_Node::Double: {
            const double d = o.Dbl();
            m_uNoNumbers += !std::isfinite(d);
            m_uFloats += o.GetType() == Data_Node::Float && std::isfinite(d) &&
                         static_cast<double>(static_cast<float>(d)) != d;
            break;
        }
        case Data_Node::Date: AddDate(o.Dbl()); break;
        case Data_Node::Char: {
            const auto uCode = static_cast<vok::u2_t>(o.Int());
            m_uChars += uCode > 0xFF;
            m_uNoChars += uCode > 0x10FFFF || (uCode >= 0xD800 && uCode < 0xE000);
            break;
        }
        case Data_Node::Long: ++m_uLongs; break;
        case Data_Node::Quad: ++m_uQuads; break;
        default: break;
    }
}

std::vector<std::string> LossCount::Lines() const {
    Losses o;
    if (m_sFormat == "dump" || m_sFormat == "json") return {};
    if (m_sFormat == "csv") {
        o.Add(m_uUnfit, "node or attribute that does not fit into rows",
              "nodes and attributes that do not fit into rows");
        return std::move(o).Lines();
    }
    if (m_sFormat == "jsonl") {
        o.Add(m_uNoNumbers, "number that JSON does not have", "numbers that JSON does not have");
        o.Add(m_uNoChars, "number that is no character", "numbers that are no characters");
        o.Add(m_uDeadLinks, "link to nothing", "links to nothing");
        return std::move(o).Lines();
    }
    if (m_sFormat == "xml") {
        o.Add(m_uFractions, "fraction of a second", "fractions of a second");
        o.Add(m_uOtherDates, "date that becomes another", "dates that become others");
        o.Add(m_uDeadLinks, "link to nothing", "links to nothing");
        o.Add(m_uNoChars, "number that is no character", "numbers that are no characters");
        return std::move(o).Lines();
    }
    o.Add(m_uEmptyAttributes, "empty attribute", "empty attributes");
    o.Add(m_uFloats, "real cut to 32 bits", "reals cut to 32 bits");
    o.Add(m_uFractions, "fraction of a second", "fractions of a second");
    o.Add(m_uOtherDates, "date that becomes another", "dates that become others");
    o.Add(m_uChars, "character beyond one byte", "characters beyond one byte");
    o.Add(m_uDeadLinks, "link to nothing", "links to nothing");
    o.Add(m_uTopLinks, "link to the top", "links to the top");
    if (m_iMinor < 2) o.Add(m_uDates, "date, kept as text", "dates, kept as texts");
    if (m_iMinor < 3) {
        o.Add(m_uLongs, "64-bit number, kept as text", "64-bit numbers, kept as texts");
    }
    return std::move(o).Lines();
}

std::string LossCount::WhyNot() const {
    if (m_sFormat != "dgraph" || m_iMinor >= 3 || m_uQuads == 0) return {};
    return Say("quadruples cannot be read back from a document before version 1.3");
}

void CountTree(const Data& oTree, LossCount& oCount) {
    vok::Arr<const char*> oNames;
    vok::Arr<const char*> oValues;
    Data oNode = oTree;
    for (vok::Data_Walk o(oTree); o.Next();) {
        oNode.SetToNode(o.GetId());
        // Without attributes it takes half the time.
        if (oCount.WantsAttributes()) {
            oNode.GetAttributes(oNames, oValues);
            for (const char* sValue : oValues) oCount.AddAttribute(sValue);
        }
        if (o.GetType() != Data_Node::Link) {
            oCount.Add(o.GetValue());
            continue;
        }
        const Data oTarget = oNode.GetValLink();
        const bool bDead = !oTarget.IsNode() || oTarget.GetType() == Data_Node::Zombi;
        if (bDead) oCount.AddDeadLink();
        if (!bDead && oTarget.GetId() == 0) oCount.AddTopLink();
    }
}

std::vector<std::string> LostByReading(const vok::Load_Report& r) {
    Losses o;
    o.Add(r.m_uReordered, "element stands elsewhere: successors are ordered by name",
          "elements stand elsewhere: successors are ordered by name");
    o.Add(r.m_uDroppedTexts, "text beside elements", "texts beside elements");
    o.Add(r.m_uKeptReferences, "unknown reference, kept as text",
          "unknown references, kept as text");
    o.Add(r.m_uComments, "comment", "comments");
    o.Add(r.m_uInstructions, "processing instruction or document type",
          "processing instructions and document types");
    o.Add(r.m_uRounded, "number rounded to 64 bits", "numbers rounded to 64 bits");
    return std::move(o).Lines();
}

void TellLosses(const std::string& sFile, const vok::Load_Report& oReport,
                const std::string& sBehind, const LossCount& oLosses, bool bLossless) {
    const std::string sWhyNot = oLosses.WhyNot();
    if (!sWhyNot.empty()) throw std::invalid_argument(sWhyNot);
    std::vector<std::string> asLost = LostByReading(oReport);
    for (std::string& s : oLosses.Lines()) asLost.push_back(std::move(s));
    if (oReport.m_uMissingBytes + oReport.m_uMissingNodes != 0) {
        asLost.push_back(Say("the end: it was cut short"));
    }
    if (!sBehind.empty()) asLost.push_back(sBehind);
    for (const std::string& s : asLost) {
        Complain(sFile, Say("not kept: %0", {s}));
    }
    if (bLossless && !asLost.empty()) throw std::invalid_argument(Say("nothing was written"));
}

void TellReadingLosses(const std::string& sFile, const vok::Load_Report& oReport,
                       const std::string& sBehind) {
    TellLosses(sFile, oReport, sBehind, LossCount("dump", 0), false);
}

}  // namespace tools

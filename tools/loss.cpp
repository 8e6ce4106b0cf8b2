#include "tools/loss.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

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
        m_asLine.push_back(std::to_string(uCount) + ' ' + (uCount == 1 ? sOne : sMany));
    }
    [[nodiscard]] std::vector<std::string> Lines() && { return std::move(m_asLine); }

  private:
    std::vector<std::string> m_asLine;
};

// How dates are written: as days, or as texts, which in XML may be no date.
enum class Dates { Days, Texts, XmlTexts };

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

// Everything that some form drops, counted.
struct Counts {
    vok::u3_t uEmptyAttributes = 0;
    vok::u3_t uFloats = 0;     // with more digits than 32 bits hold
    vok::u3_t uFractions = 0;  // dates with parts of a second
    vok::u3_t uChars = 0;      // beyond one byte
    vok::u3_t uNoChars = 0;    // that are no character of Unicode
    vok::u3_t uDates = 0;
    vok::u3_t uOtherDates = 0;  // that become others, not for their fractions
    vok::u3_t uLongs = 0;
    vok::u3_t uQuads = 0;
    vok::u3_t uDeadLinks = 0;  // that lead to nothing, or to what was removed
    vok::u3_t uTopLinks = 0;   // that lead to the top

    // Without attributes it takes half the time.
    Counts(const Data& oTree, bool bAttributes, Dates eDates) : m_eDates(eDates) {
        Data oNode = oTree;
        for (vok::Data_Walk o(oTree); o.Next();) {
            oNode.SetToNode(o.GetId());
            if (bAttributes) CountAttributes(oNode);
            Count(o, oNode);
        }
    }

  private:
    void CountAttributes(const Data& oNode) {
        oNode.GetAttributes(m_oNames, m_oValues);
        for (const char* sValue : m_oValues) uEmptyAttributes += *sValue == 0;
    }

    void Count(const vok::Data_Walk& o, const Data& oNode) {
        switch (o.GetType()) {
            case Data_Node::Float: {
                const double d = o.Dbl();
                uFloats += std::isfinite(d) && static_cast<double>(static_cast<float>(d)) != d;
                break;
            }
            case Data_Node::Date: {
                const double d = o.Dbl();
                const bool bFraction = std::isfinite(d) && std::floor(d) != d;
                ++uDates;
                uFractions += bFraction;
                // By their bits: 0 is not -0.
                uOtherDates += !bFraction && std::bit_cast<vok::u3_t>(ReadBack(d, m_eDates)) !=
                                                 std::bit_cast<vok::u3_t>(d);
                break;
            }
            case Data_Node::Char: {
                const auto uCode = static_cast<vok::u2_t>(o.Int());
                uChars += uCode > 0xFF;
                uNoChars += uCode > 0x10FFFF || (uCode >= 0xD800 && uCode < 0xE000);
                break;
            }
            case Data_Node::Long: ++uLongs; break;
            case Data_Node::Quad: ++uQuads; break;
            case Data_Node::Link: {
                const Data oTarget = oNode.GetValLink();
                const bool bDead = !oTarget.IsNode() || oTarget.GetType() == Data_Node::Zombi;
                uDeadLinks += bDead;
                uTopLinks += !bDead && oTarget.GetId() == 0;
                break;
            }
            default: break;
        }
    }

    const Dates m_eDates;
    vok::Arr<const char*> m_oNames;
    vok::Arr<const char*> m_oValues;
};

}  // namespace

std::vector<std::string> LostByReading(const Input& oIn) {
    const vok::Load_Report& r = oIn.oReport;
    Losses o;
    o.Add(r.m_uReordered, "element stands elsewhere: successors are ordered by name",
          "elements stand elsewhere: successors are ordered by name");
    o.Add(r.m_uDroppedTexts, "text beside elements", "texts beside elements");
    o.Add(r.m_uKeptReferences, "unknown reference, kept as text",
          "unknown references, kept as text");
    o.Add(r.m_uComments, "comment", "comments");
    o.Add(r.m_uInstructions, "processing instruction or document type",
          "processing instructions and document types");
    return std::move(o).Lines();
}

std::vector<std::string> LostByWriting(const Data& oTree, const std::string& sFormat, int iMinor) {
    Losses o;
    if (sFormat == "dump") return {};
    const bool bXml = sFormat == "xml";
    const Dates eDates = bXml ? Dates::XmlTexts : iMinor < 2 ? Dates::Texts : Dates::Days;
    const Counts n(oTree, !bXml, eDates);
    if (bXml) {
        o.Add(n.uFractions, "fraction of a second", "fractions of a second");
        o.Add(n.uOtherDates, "date that becomes another", "dates that become others");
        o.Add(n.uDeadLinks, "link to nothing", "links to nothing");
        o.Add(n.uNoChars, "number that is no character", "numbers that are no characters");
        return std::move(o).Lines();
    }
    o.Add(n.uEmptyAttributes, "empty attribute", "empty attributes");
    o.Add(n.uFloats, "real cut to 32 bits", "reals cut to 32 bits");
    o.Add(n.uFractions, "fraction of a second", "fractions of a second");
    o.Add(n.uOtherDates, "date that becomes another", "dates that become others");
    o.Add(n.uChars, "character beyond one byte", "characters beyond one byte");
    o.Add(n.uDeadLinks, "link to nothing", "links to nothing");
    o.Add(n.uTopLinks, "link to the top", "links to the top");
    if (iMinor < 2) o.Add(n.uDates, "date, kept as text", "dates, kept as texts");
    if (iMinor < 3) o.Add(n.uLongs, "64-bit number, kept as text", "64-bit numbers, kept as texts");
    return std::move(o).Lines();
}

std::string WhyNot(const Data& oTree, const std::string& sFormat, int iMinor) {
    if (sFormat != "dgraph" || iMinor >= 3) return {};
    if (Counts(oTree, false, Dates::Days).uQuads == 0) return {};
    return "quadruples cannot be read back from a document before version 1.3";
}

}  // namespace tools

// SPDX-License-Identifier: MIT
#include "serializer/fields/tree_in.h"

#include <charconv>
#include <cmath>

#include "serializer/fields/convert.h"
#include "serializer/fields/failure.h"
#include "serializer/utilities.h"
#include "vok/base/number.h"

namespace Velmar::Q7R::Serializer::fields {

using vok::Data_Node;
using vok::Data_View;

namespace {

std::string RangeText(std::int64_t iLowest, std::uint64_t uHighest) {
    return "a number from " + std::to_string(iLowest) + " to " + std::to_string(uHighest);
}

// Whether a Float holds all that a Double has: what it lacks would be lost.
bool IsFloat(double d) {
    constexpr double MOST = std::numeric_limits<float>::max();
    return !std::isfinite(d) ||
           (std::fabs(d) <= MOST && static_cast<double>(static_cast<float>(d)) == d);
}

}  // namespace

TreeIn::TreeIn(const vok::Data& oNode, bool bRefuseUnknown)
    : m_oTree(oNode),
      m_oView(oNode),
      m_uParent(oNode.GetId()),
      m_uNode(m_uParent),
      m_bRefuseUnknown(bRefuseUnknown) {}

bool TreeIn::Find(const Place& oPlace, vok::u2_t uIndex) {
    const Data_View oParent = m_oView.Of(m_uParent);
    Data_View oNode = oParent.Find(oPlace.sName, uIndex);
    if (!oNode.IsNode() && !oPlace.sWas.empty() &&
        (uIndex == 0 || !oParent.Find(oPlace.sName).IsNode())) {
        oNode = oParent.Find(oPlace.sWas, uIndex);
    }
    if (!oNode.IsNode() || oNode.GetType() == Data_Node::Zombi) return false;
    m_uNode = oNode.GetId();
    if (m_bRefuseUnknown) m_oTaken.insert(m_uNode);
    return true;
}

bool TreeIn::SkipNull() const {
    return NodeView().GetType() == Data_Node::Empty && AttributeOf(m_uNode, "null") != nullptr;
}

TreeIn::Mark TreeIn::Enter() {
    const Data_Node::Type eType = NodeView().GetType();
    if (eType != Data_Node::Tree && eType != Data_Node::Empty) FailFound("Tree");
    if (++m_uDepth > MOST_DEPTH) Fail("nested too deeply");
    return std::exchange(m_uParent, m_uNode);
}

void TreeIn::Leave(const Mark& oMark) {
    CheckTaken();
    --m_uDepth;
    m_uNode = m_uParent;
    m_uParent = *oMark;
}

void TreeIn::CheckTaken() const {
    if (!m_bRefuseUnknown) return;
    const Data_View oParent = m_oView.Of(m_uParent);
    for (vok::u2_t u = 0; u < oParent.GetSuccs(); ++u) {
        const vok::u2_t uId = oParent.GetSucc(u).GetId();
        if (m_oTaken.contains(uId)) continue;
        throw Fault{PathOf(m_oTree.GetNodeFromID(uId)), "unknown field", uId};
    }
}

// ---- values ---------------------------------------------------------------------

void TreeIn::Get(bool& b) const {
    const Data_View o = NodeView();
    if (o.GetType() != Data_Node::Boolean) FailFound("Boolean");
    b = o.Int() != 0;
}

double TreeIn::RealOf(const char* sExpected) const {
    const Data_View o = NodeView();
    switch (o.GetType()) {
        case Data_Node::Float:
        case Data_Node::Double: return o.Dbl();
        case Data_Node::Integer: return o.Int();
        case Data_Node::Long: {
            // With a sign, as a tree converts it; beyond 53 bits a Double has gaps.
            const auto i = std::bit_cast<std::int64_t>(o.Lng());
            constexpr std::int64_t MOST = std::int64_t{1} << 53;
            if (i < -MOST || i > MOST) FailFound("a number that a Double holds");
            return static_cast<double>(i);
        }
        default: FailFound(sExpected);
    }
}

void TreeIn::Get(double& d) const {
    d = RealOf("Double");
}

void TreeIn::Get(float& f) const {
    const double d = RealOf("Float");
    if (!IsFloat(d)) FailFound("a number that a Float holds");
    f = static_cast<float>(d);
}

vok::u3_t TreeIn::WholeOf(std::int64_t iLowest, std::uint64_t uHighest) const {
    const Data_View o = NodeView();
    // An Integer holds no more.
    const bool bLong = uHighest > 0x7FFFFFFF;
    Number oNumber;
    switch (o.GetType()) {
        case Data_Node::Integer: oNumber = Number::Of(o.Int()); break;
        case Data_Node::Long: oNumber = Number::OfLong(o.Lng(), iLowest < 0); break;
        case Data_Node::String:
            if (bLong && ParseNumber(o.Text(), iLowest < 0, oNumber)) break;
            [[fallthrough]];
        default: FailFound(bLong ? "Long" : "Integer");
    }
    if (!oNumber.IsWithin(iLowest, uHighest)) FailFound(RangeText(iLowest, uHighest));
    return oNumber.uBits;
}

void TreeIn::Get(std::string_view& sText) const {
    const Data_View o = NodeView();
    if (o.GetType() == Data_Node::Empty) {
        sText = "";
    } else if (o.GetType() == Data_Node::String) {
        sText = o.Text();
    } else {
        FailFound("String");
    }
}

void TreeIn::Get(std::string& sText) const {
    std::string_view s;
    Get(s);
    sText.assign(s);
}

void TreeIn::Get(std::u16string& sText) const {
    std::string_view s;
    Get(s);
    sText = Utilities::Utf8ToString(s).Text();
}

void TreeIn::FetchAt(const Place& oPlace, bool& b) {
    if (Find(oPlace, 0)) Get(b);
}

void TreeIn::FetchAt(const Place& oPlace, std::int32_t& i) {
    if (Find(oPlace, 0)) Get(i);
}

void TreeIn::FetchAt(const Place& oPlace, std::int64_t& i) {
    if (Find(oPlace, 0)) Get(i);
}

void TreeIn::FetchAt(const Place& oPlace, double& d) {
    if (Find(oPlace, 0)) Get(d);
}

void TreeIn::FetchAt(const Place& oPlace, std::string& sText) {
    if (Find(oPlace, 0)) Get(sText);
}

bool TreeIn::GetDate(std::int64_t& iTicks, std::int64_t iPeriod, std::int64_t iLowest,
                     std::uint64_t uHighest) const {
    const Data_View o = NodeView();
    if (o.GetType() != Data_Node::Date) FailFound("Date");
    if (!TicksOf(o.Dbl(), iPeriod, iTicks)) {
        FailFound("a Date of whole " + (iPeriod == 1 ? "" : std::to_string(iPeriod) + " ") +
                  "seconds");
    }
    if (!Number::Of(iTicks).IsWithin(iLowest, uHighest)) FailFound("a Date in reach");
    return true;
}

bool TreeIn::GetBytes(std::span<const Byte>& oBytes) const {
    const Data_View o = NodeView();
    if (o.GetType() != Data_Node::Binary) FailFound("Binary");
    const std::string_view sBlock = o.Block();
    oBytes = {reinterpret_cast<const Byte*>(sBlock.data()), sBlock.size()};
    return true;
}

void TreeIn::GetHost(ISerialisable& oHost) {
    Node node(m_oTree.GetNodeFromID(m_uNode));
    oHost.ReadValues(node);
    // It may have added nodes; what it asked for is its own business.
    m_oView = View(m_oTree);
}

// ---- attributes -----------------------------------------------------------------

const char* TreeIn::AttributeOf(vok::u2_t uId, std::string_view sName) const {
    return m_oTree.GetNodeFromID(uId).GetAttVal(sName);
}

bool TreeIn::ParseFlag(std::string_view sText, bool& b) {
    b = sText == "true" || sText == "1";
    return b || sText == "false" || sText == "0";
}

bool TreeIn::ParseWhole(std::string_view sText, std::int64_t iLowest, std::uint64_t uHighest,
                        vok::u3_t& uBits) {
    Number oNumber;
    const bool bGood =
        ParseNumber(sText, iLowest < 0, oNumber) && oNumber.IsWithin(iLowest, uHighest);
    uBits = oNumber.uBits;
    return bGood;
}

bool TreeIn::ParseReal(std::string_view sText, double& d) {
    return fields::ParseReal(sText, d);
}

bool TreeIn::ParseReal(std::string_view sText, float& f) {
    double d = 0;
    if (!fields::ParseReal(sText, d) || !IsFloat(d)) return false;
    f = static_cast<float>(d);
    return true;
}

// ---- pointers -------------------------------------------------------------------

vok::u2_t TreeIn::TargetId() const {
    const Data_View o = NodeView();
    if (o.GetType() != Data_Node::Link) return m_uNode;
    if (o.LinkId() == Data_Node::NONE) FailFound("a Link to an object");
    return o.LinkId();
}

// ---- failures -------------------------------------------------------------------

void TreeIn::Fail(std::string sReason) const {
    throw Fault{PathOf(m_oTree.GetNodeFromID(m_uNode)), std::move(sReason), m_uNode};
}

void TreeIn::FailFound(std::string_view sExpected) const {
    Fail(NotFound(sExpected, NodeView()));
}

void TreeIn::FailAttribute(std::string_view sName, std::string_view sText) const {
    throw Fault{PathOf(m_oTree.GetNodeFromID(m_uParent)),
                "attribute \"" + std::string(sName) + "\" has the value \"" + std::string(sText) +
                    "\", which does not fit",
                m_uParent};
}

void TreeIn::FailCount(std::size_t uExpected, std::size_t uFound) const {
    Fail(std::to_string(uExpected) + " elements expected, " + std::to_string(uFound) + " found");
}

void TreeIn::FailKind() const {
    Fail("none of the kinds that are known here");
}

void TreeIn::FailDouble() const {
    Fail("the same as one before");
}

void TreeIn::FailPointer() const {
    Fail("an object of another type is linked to");
}

}  // namespace Velmar::Q7R::Serializer::fields

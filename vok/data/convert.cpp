// SPDX-License-Identifier: MIT
// Conversions of values: to text, to numbers, from node to node.
#include <bit>
#include <cstdio>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

namespace {

[[noreturn]] void RaiseWrongType(const Data_Base& b, u2_t uId) {
    Msg::NodeWithWrongDataType(b.ShownName(uId), Data_Node::TypeName(b.m_oNode(uId).GetType()));
}

// A point in time.
struct Seconds {
    double d;
};

template <class... Fs>
struct Overloaded : Fs... {
    using Fs::operator()...;
};
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

// Hands the value of a node to the overload of oTake that is for it, oTake() where there is none.
// Raises for inner and removed nodes, links and blocks, which have no other form.
template <class Take>
auto Visit(const Data_Base& b, u2_t uId, const Take& oTake) {
    const Data_Node& oNode = b.m_oNode(uId);
    switch (oNode.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char: return oTake(static_cast<i2_t>(oNode.uWord2));
        case Data_Node::Float:
        case Data_Node::Double: return oTake(std::bit_cast<double>(oNode.Value64()));
        case Data_Node::Date: return oTake(Seconds{std::bit_cast<double>(oNode.Value64())});
        case Data_Node::String: return oTake(b.m_oHeap.At(oNode.uWord2));
        case Data_Node::Long: return oTake(oNode.Value64());
        case Data_Node::Quad: return oTake(b.m_oHeap.QuadOf(oNode));
        case Data_Node::Binary:
        case Data_Node::Link:
        case Data_Node::Tree:
        case Data_Node::Zombi: RaiseWrongType(b, uId);
        case Data_Node::Empty:
        default: return oTake();
    }
}

}  // namespace

void Data::CvtStr(Str& oOut, const char* sDefault) const {
    return Where("vok::Data::CvtStr", [&] {
        char sBuf[128];
        const auto oInBuf = [&](auto&&...) -> const char* { return sBuf; };
        const Overloaded oToText{
            [&] { return sDefault; },
            [&](i2_t i) { return oInBuf(FormatInteger(i, sBuf)); },
            [&](u3_t u) { return oInBuf(FormatInteger(u, sBuf)); },
            [&](double d) { return oInBuf(FormatReal16(d, sBuf)); },
            [&](Seconds o) { return oInBuf(FormatDate(o.d, ' ', sBuf)); },
            [](const char* s) { return s; },
            [&](const Data_Heap::Quad& au) {
                return oInBuf(std::snprintf(sBuf, sizeof(sBuf), "0x%08X%08X%08X%08X", au[0], au[1],
                                            au[2], au[3]));
            },
        };
        // The default may be a text of oOut itself.
        oOut = Str(m_oBase ? Visit(detail::NodeOf(m_oBase, m_uId), m_uId, oToText) : sDefault);
    });
}

i2_t Data::StrToInt(const char* sText) noexcept {
    return sText != nullptr ? ParseLong(sText) : 0;
}

i3_t Data::CvtInt(i2_t iDefault) const {
    return Where("vok::Data::CvtInt", [&]() -> i3_t {
        if (!m_oBase) return iDefault;
        const Overloaded oToInt{
            [&]() -> i3_t { return iDefault; },
            [](i2_t i) -> i3_t { return i; },
            [](u3_t u) { return static_cast<i3_t>(u); },
            [](double) -> i3_t { return 0; },
            [](Seconds) -> i3_t { return 0; },
            [](const char* s) -> i3_t { return ParseLong(s); },
            [](const Data_Heap::Quad& au) {
                return static_cast<i3_t>((u3_t{au[1]} << 32) + au[0]);
            },
        };
        return Visit(detail::NodeOf(m_oBase, m_uId), m_uId, oToInt);
    });
}

double Data::CvtDbl(double dDefault) const {
    return Where("vok::Data::CvtDbl", [&]() -> double {
        if (!m_oBase) return dDefault;
        const Overloaded oToDbl{
            [&] { return dDefault; },
            [](i2_t i) -> double { return i; },
            [](u3_t u) { return static_cast<double>(static_cast<i3_t>(u)); },
            [](double d) { return d; },
            [](Seconds o) { return o.d; },
            [](const char* s) -> double { return ParseLong(s); },
            [](const Data_Heap::Quad& au) -> double { return au[0]; },
        };
        return Visit(detail::NodeOf(m_oBase, m_uId), m_uId, oToDbl);
    });
}

void Data::CopyVal(const Data& oSrc, Data& oDst) {
    return Where("vok::Data::CopyVal", [&] {
        if (!oDst.m_oBase) oDst.SetToRoot();
        Base& oDstBase = detail::NodeOf(oDst.m_oBase, oDst.m_uId);
        // The fixed name is what this error always said.
        if (oDstBase.m_oNode(oDst.m_uId).GetType() == Node::Tree) Msg::WithWrongDataType("Root");
        if (oDstBase.m_oNode(oDst.m_uId).GetType() == Node::Zombi) Msg::TryToAccessDeletedNode();
        if (!oSrc.m_oBase) return;
        const Base& oSrcBase = detail::NodeOf(oSrc.m_oBase, oSrc.m_uId);
        const Node oValue = oSrcBase.m_oNode(oSrc.m_uId);
        if (oValue.GetType() == Node::Tree) RaiseWrongType(oSrcBase, oSrc.m_uId);
        if (oSrc == oDst) return;
        const bool bOtherTree = oSrc.m_oBase != oDst.m_oBase;
        constexpr u2_t IN_HEAP = 1u << Node::String | 1u << Node::Binary | 1u << Node::Quad;
        if (bOtherTree && (IN_HEAP >> oValue.GetType() & 1u) != 0) {
            return oDst.SetValue(oSrc.GetValue());
        }
        Node& oNode = oDstBase.m_oNode(oDst.m_uId);
        oDstBase.DropValue(oNode);
        oNode.SetType(oValue.GetType());
        oNode.SetValue64(oValue.Value64());
        if (bOtherTree && oValue.GetType() == Node::Link) oNode.uWord2 = Node::NONE;
        oDstBase.m_oHeap.Share(Data_Heap::BytesOf(oValue));
        oDstBase.m_uDead += oValue.GetType() == Node::Zombi;
    });
}

}  // namespace vok

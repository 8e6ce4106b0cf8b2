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

}  // namespace

void Data::CvtStr(Str& oOut, const char* sDefault) const {
    return Where("vok::Data::CvtStr", [&] {
        if (!m_oBase) {
            oOut = Str(sDefault);  // which may be a text of oOut itself
            return;
        }
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        const Node& oNode = b.m_oNode(m_uId);
        char sBuf[128];
        switch (oNode.GetType()) {
            case Node::Boolean:
            case Node::Integer:
            case Node::Char: FormatInteger(static_cast<i2_t>(oNode.uWord2), sBuf); break;
            case Node::Float:
            case Node::Double: FormatReal16(std::bit_cast<double>(oNode.Value64()), sBuf); break;
            case Node::Date: FormatDate(std::bit_cast<double>(oNode.Value64()), ' ', sBuf); break;
            case Node::String: oOut = Str(b.m_oHeap.At(oNode.uWord2)); return;
            case Node::Long: FormatInteger(oNode.Value64(), sBuf); break;
            case Node::Quad: {
                u2_t u0, u1, u2, u3;
                GetValQuad(u0, u1, u2, u3);
                std::snprintf(sBuf, sizeof(sBuf), "0x%08X%08X%08X%08X", u0, u1, u2, u3);
                break;
            }
            case Node::Binary:
            case Node::Link:
            case Node::Tree:
            case Node::Zombi: RaiseWrongType(b, m_uId);
            case Node::Empty:
            default: oOut = Str(sDefault); return;
        }
        oOut = Str(sBuf);
    });
}

i2_t Data::StrToInt(const char* sText) noexcept {
    return sText != nullptr ? ParseLong(sText) : 0;
}

i3_t Data::CvtInt(i2_t iDefault) const {
    return Where("vok::Data::CvtInt", [&]() -> i3_t {
        if (!m_oBase) return iDefault;
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        const Node& oNode = b.m_oNode(m_uId);
        switch (oNode.GetType()) {
            case Node::Boolean:
            case Node::Integer:
            case Node::Char: return static_cast<i2_t>(oNode.uWord2);
            case Node::Float:
            case Node::Double:
            case Node::Date: return 0;
            case Node::String: return ParseLong(b.m_oHeap.At(oNode.uWord2));
            case Node::Long: return static_cast<i3_t>(oNode.Value64());
            case Node::Quad: {
                u2_t u0, u1, u2, u3;
                GetValQuad(u0, u1, u2, u3);
                return static_cast<i3_t>((u3_t{u1} << 32) + u0);
            }
            case Node::Binary:
            case Node::Link:
            case Node::Tree:
            case Node::Zombi: RaiseWrongType(b, m_uId);
            case Node::Empty:
            default: return iDefault;
        }
    });
}

double Data::CvtDbl(double dDefault) const {
    return Where("vok::Data::CvtDbl", [&]() -> double {
        if (!m_oBase) return dDefault;
        const Base& b = detail::NodeOf(m_oBase, m_uId);
        const Node& oNode = b.m_oNode(m_uId);
        switch (oNode.GetType()) {
            case Node::Boolean:
            case Node::Integer:
            case Node::Char: return static_cast<i2_t>(oNode.uWord2);
            case Node::Float:
            case Node::Double:
            case Node::Date: return std::bit_cast<double>(oNode.Value64());
            case Node::String: return ParseLong(b.m_oHeap.At(oNode.uWord2));
            case Node::Long: return static_cast<double>(static_cast<i3_t>(oNode.Value64()));
            case Node::Quad: return oNode.uWord3;
            case Node::Binary:
            case Node::Link:
            case Node::Tree:
            case Node::Zombi: RaiseWrongType(b, m_uId);
            case Node::Empty:
            default: return dDefault;
        }
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
        if (bOtherTree && oValue.GetType() == Node::String) return oDst.SetValStr(oSrc.GetValStr());
        if (bOtherTree && oValue.GetType() == Node::Binary) {
            return oDst.SetValBin(oSrcBase.m_oHeap.At(oValue.uWord2), oValue.uWord3);
        }
        if (bOtherTree && oValue.GetType() == Node::Quad) {
            u2_t u0, u1, u2, u3;
            oSrc.GetValQuad(u0, u1, u2, u3);
            return oDst.SetValQuad(u0, u1, u2, u3);
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

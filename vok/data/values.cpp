// SPDX-License-Identifier: MIT
// Values of nodes: setters, getters, links.
#include <bit>
#include <cstring>
#include <string_view>

#include "vok/base/where.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"

namespace vok {

namespace {

// The node to set a value on, with its old value accounted for. eType is its new type.
Data_Node& StartValue(Data_Base& b, u2_t uId, Data_Node::Type eType) {
    Data_Node& oNode = b.m_oNode(uId);
    b.DropValue(oNode);
    oNode.SetType(eType);
    return oNode;
}

[[noreturn]] void RaiseTree(const Data_Base& b, u2_t uId) {
    Msg::NodeWithWrongDataType(b.ShownName(uId), Data_Node::TypeName(Data_Node::Tree));
}

// The tree of a cursor, which is empty no more, with its node one that takes a value.
Data_Base& SettableOf(Data& oData, const Mem::Ref<Data_Base>& oBase) {
    if (!oBase) oData.SetToRoot();
    Data_Base& b = detail::NodeOf(oBase, oData.GetId());
    const Data_Node::Type eType = b.m_oNode(oData.GetId()).GetType();
    if (eType == Data_Node::Tree) [[unlikely]]
        RaiseTree(b, oData.GetId());
    if (eType == Data_Node::Zombi) [[unlikely]]
        Msg::TryToAccessDeletedNode();
    return b;
}

// The node to read a value of type eType from.
const Data_Node& ReadValue(const Mem::Ref<Data_Base>& oBase, u2_t uId, Data_Node::Type eType) {
    const Data_Base& b = detail::ValueOf(oBase, uId);
    const Data_Node& oNode = b.m_oNode(uId);
    if (oNode.GetType() != eType) [[unlikely]] {
        Msg::NodeWithWrongDataTypeExpected(b.ShownName(uId), Data_Node::TypeName(oNode.GetType()),
                                           Data_Node::TypeName(eType));
    }
    return oNode;
}

}  // namespace

// ---- setters ----------------------------------------------------------------

void Data::SetValInt(i2_t iValue, Node::Type eType) {
    return Where("vok::Data::SetValInt", [&] {
        detail::CheckIntType(eType);
        Base& b = SettableOf(*this, m_oBase);
        StartValue(b, m_uId, eType).uWord2 = static_cast<u2_t>(iValue);
    });
}

void Data::SetValBool(bool bValue) {
    return Where("vok::Data::SetValBool", [&] { SetValInt(bValue ? 1 : 0, Node::Boolean); });
}

void Data::SetValDbl(double dValue, Node::Type eType) {
    return Where("vok::Data::SetValDbl", [&] {
        detail::CheckDblType(eType);
        Base& b = SettableOf(*this, m_oBase);
        StartValue(b, m_uId, eType).SetValue64(std::bit_cast<u3_t>(dValue));
    });
}

void Data::SetValLng(u3_t uValue) {
    return Where("vok::Data::SetValLng", [&] {
        Base& b = SettableOf(*this, m_oBase);
        StartValue(b, m_uId, Node::Long).SetValue64(uValue);
    });
}

void Data::SetValStr(const char* sText) {
    return SetValStr(std::string_view(sText != nullptr ? sText : ""));
}

void Data::SetValStr(std::string_view sText) {
    return Where("vok::Data::SetValStr", [&] {
        Base& b = SettableOf(*this, m_oBase);
        const Utf8_Text oText(sText);
        const u2_t uOffset = b.m_oHeap.AddText(oText.View());
        Node& oNode = StartValue(b, m_uId, Node::String);
        oNode.uWord2 = uOffset;
        oNode.uWord3 = static_cast<u2_t>(oText.Len() + 1);
    });
}

void Data::SetValBin(const void* pData, u2_t uSize) {
    return Where("vok::Data::SetValBin", [&] {
        if (pData == nullptr && uSize != 0) Msg::ObjectPointsToNothing();
        Base& b = SettableOf(*this, m_oBase);
        const u2_t uOffset = b.m_oHeap.Add(pData, uSize);
        Node& oNode = StartValue(b, m_uId, Node::Binary);
        oNode.uWord2 = uOffset;
        oNode.uWord3 = uSize;
    });
}

void Data::SetValQuad(u2_t uW0, u2_t uW1, u2_t uW2, u2_t uW3) {
    return Where("vok::Data::SetValQuad", [&] {
        Base& b = SettableOf(*this, m_oBase);
        const u2_t uOffset = b.m_oHeap.AddQuad({uW0, uW1, uW2, uW3});
        Node& oNode = StartValue(b, m_uId, Node::Quad);
        oNode.uWord2 = uOffset;
        oNode.uWord3 = uW0;
    });
}

void Data::SetValLink(const Data& oTarget) {
    return Where("vok::Data::SetValLink", [&] {
        detail::ValueOf(m_oBase, m_uId);
        if (oTarget.m_oBase && oTarget.m_oBase != m_oBase) Msg::WithWrongDataType("Root");
        Base& b = SettableOf(*this, m_oBase);
        if (oTarget.m_oBase) detail::NodeOf(m_oBase, oTarget.m_uId);
        const u2_t uTarget = oTarget.m_oBase ? oTarget.m_uId : Node::NONE;
        StartValue(b, m_uId, Node::Link).SetValue64(uTarget);
    });
}

void Data::SetValue(const Data_Value& o) {
    return Where("vok::Data::SetValue", [&] {
        switch (o.GetType()) {
            case Node::Empty: return ClearVal();
            case Node::Boolean: return SetValBool(o.Int() != 0);
            case Node::Integer:
            case Node::Char: return SetValInt(o.Int(), o.GetType());
            case Node::Float:
            case Node::Double:
            case Node::Date: return SetValDbl(o.Dbl(), o.GetType());
            case Node::String: return SetValStr(o.Text());
            case Node::Binary:
                return SetValBin(o.Text().data(), static_cast<u2_t>(Msg::ToInt32(o.Text().size())));
            case Node::Long: return SetValLng(o.Lng());
            case Node::Quad: {
                const auto& au = o.QuadWords();
                return SetValQuad(au[0], au[1], au[2], au[3]);
            }
            default: Msg::WithWrongDataType(Node::TypeName(o.GetType()));
        }
    });
}

void Data::ClearVal() {
    return Where("vok::Data::ClearVal", [&] {
        if (!m_oBase) return;
        Base& b = detail::NodeOf(m_oBase, m_uId);
        const Node& oNode = b.m_oNode(m_uId);
        if (oNode.GetType() == Node::Tree) RaiseTree(b, m_uId);
        // A placeholder has a place to come back to, a node cut loose has none.
        if (oNode.PredField() == Node::CUT_LOOSE) Msg::TryToAccessDeletedNode();
        StartValue(b, m_uId, Node::Empty).SetValue64(0);
    });
}

// ---- getters ----------------------------------------------------------------

i2_t Data::GetValInt(Node::Type eType) const {
    return Where("vok::Data::GetValInt", [&] {
        detail::CheckIntType(eType);
        return static_cast<i2_t>(ReadValue(m_oBase, m_uId, eType).uWord2);
    });
}

bool Data::GetValBool() const {
    return Where("vok::Data::GetValBool", [&] { return GetValInt(Node::Boolean) != 0; });
}

double Data::GetValDbl(Node::Type eType) const {
    return Where("vok::Data::GetValDbl", [&] {
        detail::CheckDblType(eType);
        return std::bit_cast<double>(ReadValue(m_oBase, m_uId, eType).Value64());
    });
}

u3_t Data::GetValLng() const {
    return Where("vok::Data::GetValLng",
                 [&] { return ReadValue(m_oBase, m_uId, Node::Long).Value64(); });
}

const char* Data::GetValStr() const {
    return Where("vok::Data::GetValStr", [&]() -> const char* {
        const Node& oNode = ReadValue(m_oBase, m_uId, Node::String);
        return m_oBase->m_oHeap.At(oNode.uWord2);
    });
}

std::string_view Data::GetValText() const {
    return Where("vok::Data::GetValText", [&] {
        const Node& oNode = ReadValue(m_oBase, m_uId, Node::String);
        return std::string_view(m_oBase->m_oHeap.At(oNode.uWord2), oNode.uWord3 - 1);
    });
}

const void* Data::GetValBin(u2_t& uSize) const {
    return Where("vok::Data::GetValBin", [&]() -> const void* {
        const Node& oNode = ReadValue(m_oBase, m_uId, Node::Binary);
        uSize = oNode.uWord3;
        return m_oBase->m_oHeap.At(oNode.uWord2);
    });
}

void Data::GetValQuad(u2_t& uW0, u2_t& uW1, u2_t& uW2, u2_t& uW3) const {
    return Where("vok::Data::GetValQuad", [&] {
        const Node& oNode = ReadValue(m_oBase, m_uId, Node::Quad);
        const Data_Heap::Quad auWord = m_oBase->m_oHeap.QuadOf(oNode);
        uW0 = auWord[0];
        uW1 = auWord[1];
        uW2 = auWord[2];
        uW3 = auWord[3];
    });
}

Data_Value Data::GetValue() const {
    return Where("vok::Data::GetValue", [&] {
        const Base& b = detail::ValueOf(m_oBase, m_uId);
        return Data_Value::In(b.m_oNode(m_uId), b.m_oHeap.At(0));
    });
}

Data Data::GetValLink() const {
    return Where("vok::Data::GetValLink",
                 [&] { return GetNodeFromID(ReadValue(m_oBase, m_uId, Node::Link).uWord2); });
}

const char* Data::GetStr(const char* sDefault) const {
    return Where("vok::Data::GetStr", [&] {
        return m_oBase && GetNode().GetType() != Node::Empty ? GetValStr() : sDefault;
    });
}

}  // namespace vok

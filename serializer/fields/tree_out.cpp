// SPDX-License-Identifier: MIT
#include "serializer/fields/tree_out.h"

#include "serializer/exception.h"
#include "serializer/fields/failure.h"
#include "serializer/utilities.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"

namespace Velmar::Q7R::Serializer::fields {

namespace {

constexpr char TEXT_WITH_NUL[] = "a text ends at its first NUL: use bytes";

}  // namespace

TreeOut::TreeOut(vok::Data& oParent)
    : m_oTree(oParent), m_oBuilder(oParent), m_uOpen(oParent.GetId()), m_uLast(m_uOpen) {
    m_oTree = oParent;  // which has a tree by now
}

void TreeOut::Finish() {
    m_oBuilder.Finish();
    const auto oNode = [&](vok::u2_t uId) { return m_oTree.GetNodeFromID(uId); };
    for (const LaterAttribute& o : m_oLater) oNode(o.uId).SetAttVal(o.sName, o.sValue);
    for (const auto& [uId, oKey] : m_oLink) {
        const auto pStored = m_oStored.find(oKey);
        if (pStored == m_oStored.end())
            FailAtNode(uId, "nothing that is written owns what this points to");
        oNode(uId).SetValLink(oNode(pStored->second));
    }
    for (const auto& [uId, pHost] : m_oHost) {
        Node node(oNode(uId));
        // Writing is not const in hosts.
        const_cast<ISerialisable*>(pHost)->WriteValues(node);
    }
}

void TreeOut::Fail(const char* sReason) {
    FailAtNode(m_uLast, sReason);
}

void TreeOut::FailAtNode(vok::u2_t uId, const char* sReason) {
    m_oBuilder.Finish();
    RaiseAt(PathOf(m_oTree.GetNodeFromID(uId)), sReason);
}

// ---- values ---------------------------------------------------------------------

void TreeOut::Put(vok::u2_t uId) {
    m_uLast = uId;
    if (m_oNextIs) m_oStored.emplace(*std::exchange(m_oNextIs, std::nullopt), uId);
}

void TreeOut::AddBool(const Place& oPlace, bool b) {
    Put(m_oBuilder.AddBool(oPlace.sName, b));
}

void TreeOut::AddInt(const Place& oPlace, vok::i2_t i) {
    Put(m_oBuilder.AddInt(oPlace.sName, i));
}

void TreeOut::AddLong(const Place& oPlace, vok::u3_t u) {
    Put(m_oBuilder.AddLng(oPlace.sName, u));
}

void TreeOut::AddFloat(const Place& oPlace, float f) {
    Put(m_oBuilder.AddFlt(oPlace.sName, f));
}

void TreeOut::AddDouble(const Place& oPlace, double d) {
    Put(m_oBuilder.AddDbl(oPlace.sName, d));
}

void TreeOut::AddDate(const Place& oPlace, double dSeconds) {
    Put(m_oBuilder.AddDate(oPlace.sName, dSeconds));
}

void TreeOut::AddText(const Place& oPlace, std::string_view sText) {
    Put(m_oBuilder.AddStr(oPlace.sName, sText));
    if (sText.find('\0') != std::string_view::npos) Fail(TEXT_WITH_NUL);
}

void TreeOut::AddText(const Place& oPlace, std::u16string_view sText) {
    Put(m_oBuilder.AddStr(oPlace.sName, Utilities::String2Str(sText).View()));
    if (sText.find(u'\0') != std::u16string_view::npos) Fail(TEXT_WITH_NUL);
}

void TreeOut::AddBinary(const Place& oPlace, const void* pData, std::size_t uSize) {
    Put(m_oBuilder.AddBin(oPlace.sName, pData, static_cast<vok::u2_t>(vok::Msg::ToInt32(uSize))));
}

void TreeOut::AddNull(const Place& oPlace) {
    Put(m_oBuilder.AddEmpty(oPlace.sName));
    m_oLater.push_back({m_uLast, "null", "true"});
}

// ---- nodes in nodes -------------------------------------------------------------

vok::u2_t TreeOut::OpenNode(const Place& oPlace) {
    Put(m_oBuilder.Open(oPlace.sName));
    if (++m_uDepth > MOST_DEPTH) Fail("nested too deeply");
    return std::exchange(m_uOpen, m_uLast);
}

void TreeOut::Close(const Mark& oMark) {
    --m_uDepth;
    m_oBuilder.Close();
    m_uOpen = *oMark;
}

void TreeOut::AddHost(const Place& oPlace, const ISerialisable& oHost) {
    Put(m_oBuilder.AddEmpty(oPlace.sName));
    m_oHost.emplace_back(m_uLast, &oHost);
}

void TreeOut::SetAttribute(std::string_view sName, std::string sValue) {
    if (sValue.find('\0') != std::string::npos) FailAtNode(m_uOpen, TEXT_WITH_NUL);
    m_oLater.push_back({m_uOpen, sName, std::move(sValue)});
}

std::string TreeOut::TextOf(double dValue) {
    char sText[vok::NUMBER_ROOM];
    return {sText, vok::FormatReal(dValue, sText)};
}

bool TreeOut::IsStored(const Key& oKey) const {
    return m_oStored.contains(oKey);
}

void TreeOut::PutLink(const Place& oPlace, const Key& oKey) {
    Put(m_oBuilder.AddEmpty(oPlace.sName));
    m_oLink.emplace_back(m_uLast, oKey);
}

}  // namespace Velmar::Q7R::Serializer::fields

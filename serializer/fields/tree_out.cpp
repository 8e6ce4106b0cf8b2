#include "serializer/fields/tree_out.h"

#include "serializer/exception.h"
#include "serializer/fields/failure.h"
#include "serializer/utilities.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"

namespace Velmar::Q7R::Serializer::fields {

TreeOut::TreeOut(vok::Data& oParent)
    : m_oTree(oParent), m_oBuilder(oParent), m_uOpen(oParent.GetId()), m_uLast(m_uOpen) {
    m_oTree = oParent;  // which has a tree by now
}

void TreeOut::Finish() {
    m_oBuilder.Finish();
    const auto oNode = [&](vok::u2_t uId) { return m_oTree.GetNodeFromID(uId); };
    for (const LaterAttribute& o : m_oLater)
        oNode(o.uId).SetAttVal(o.sName.c_str(), o.sValue.c_str());
    for (const auto& [uId, oKey] : m_oLink) {
        const auto pStored = m_oStored.find(oKey);
        if (pStored == m_oStored.end())
            FailAt(uId, "nothing that is written owns what this points to");
        oNode(uId).SetValLink(oNode(pStored->second));
    }
    for (const auto& [uId, pHost] : m_oHost) {
        Node node(oNode(uId));
        // Writing is not const in hosts.
        const_cast<ISerialisable*>(pHost)->WriteValues(node);
    }
}

void TreeOut::Fail(const char* sReason) {
    m_oBuilder.Finish();
    FailAt(m_uLast, sReason);
}

void TreeOut::FailAt(vok::u2_t uId, const char* sReason) {
    m_oBuilder.Finish();
    RaiseAt(PathOf(m_oTree.GetNodeFromID(uId)), sReason);
}

void TreeOut::AddText(std::string_view sName, std::string_view sText) {
    Put(m_oBuilder.AddStr(sName, sText));
    if (sText.find('\0') != std::string_view::npos) Fail("a text ends at its first NUL: use bytes");
}

void TreeOut::AddText(std::string_view sName, std::u16string_view sText) {
    if (sText.find(u'\0') != std::u16string_view::npos) {
        Put(m_oBuilder.AddEmpty(sName));
        Fail("a text ends at its first NUL: use bytes");
    }
    Put(m_oBuilder.AddStr(sName, Utilities::String2Str(sText).View()));
}

void TreeOut::AddBinary(std::string_view sName, const void* pData, std::size_t uSize) {
    Put(m_oBuilder.AddBin(sName, pData, static_cast<vok::u2_t>(vok::Msg::ToInt32(uSize))));
}

void TreeOut::SetAttribute(std::string_view sName, std::string sValue) {
    if (sValue.find('\0') != std::string::npos) Fail("a text ends at its first NUL: use bytes");
    m_oLater.push_back({m_uOpen, std::string(sName), std::move(sValue)});
}

std::string TreeOut::TextOf(double dValue) {
    char sText[vok::NUMBER_ROOM];
    return {sText, vok::FormatReal(dValue, sText)};
}

void TreeOut::PutLink(std::string_view sName, const Key& oKey) {
    Put(m_oBuilder.AddEmpty(sName));
    m_oLink.emplace_back(m_uLast, oKey);
}

}  // namespace Velmar::Q7R::Serializer::fields

// SPDX-License-Identifier: MIT
#include "vok/dgraph/names.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/base/where.h"
#include "vok/data/succ_it.h"
#include "vok/data/xpath.h"
#include "vok/dgraph/messages.h"

namespace vok {

namespace {

constexpr std::string_view NOT_IN_ATTRIBUTES = "[]'\"=&<>\\";
constexpr std::string_view NOT_IN_NAMES = "/[]'\"";
constexpr std::string_view RESERVED_NAMES[] = {".", "..", "CDNodeReference"};

// Null gives the empty text.
[[nodiscard]] std::string_view TextOf(const char* pBegin, const char* pEnd) noexcept {
    if (pBegin == nullptr) return {};
    if (pEnd == nullptr) return pBegin;
    return {pBegin, static_cast<std::size_t>(std::max(pBegin, pEnd) - pBegin)};
}

// Raises for the first character of sForbidden that occurs.
void CheckCharacters(std::string_view sText, std::string_view sForbidden, void (*pRaise)(char)) {
    for (const char c : sForbidden) {
        if (sText.find(c) != std::string_view::npos) pRaise(c);
    }
}

}  // namespace

void Dgraph_CheckAttNam(const char* pBegin, const char* pEnd) {
    return Where("vok::Dgraph_CheckAttNam", [&] {
        const std::string_view sName = TextOf(pBegin, pEnd);
        if (sName.empty()) dgraph::RaiseEmptyAttributeName();
        CheckCharacters(sName, NOT_IN_ATTRIBUTES, dgraph::RaiseInvalidAttributeCharacter);
    });
}

void Dgraph_CheckAttVal(const char*, const char*) noexcept {}

void Dgraph_CheckName(const char* pBegin, const char* pEnd) {
    return Where("vok::Dgraph_CheckName", [&] {
        const std::string_view sName = TextOf(pBegin, pEnd);
        if (sName.empty()) dgraph::RaiseEmptyNodeType();
        for (const std::string_view sReserved : RESERVED_NAMES) {
            if (sName == sReserved) dgraph::RaiseReservedNodeType(sReserved.data());
        }
        CheckCharacters(sName, NOT_IN_NAMES, dgraph::RaiseInvalidNodeTypeCharacter);
    });
}

void Dgraph_CheckPath(const char* pBegin, const char* pEnd) {
    return Where("vok::Dgraph_CheckPath", [&] {
        const std::string sPath(TextOf(pBegin, pEnd));
        Data_Xpath oPath;
        oPath.Parse(sPath.c_str());
        (void)Msg::ToInt32(oPath.Size());
        for (std::size_t uStep = 0; uStep < oPath.Size(); ++uStep) {
            const Data_Xpath::Step& oStep = oPath(uStep);
            Dgraph_CheckName(oStep.m_sName);
            // The number of the step picks the attribute, as callers have come to expect.
            if (uStep >= oStep.m_oAttName.Size()) continue;
            const char* sName = oStep.m_oAttName(uStep);
            const char* sValue = oStep.AttVal(uStep);
            if (sName == nullptr || *sName == 0 || sValue == nullptr) continue;
            Dgraph_CheckAttNam(sName);
            Dgraph_CheckAttVal(sValue);
        }
    });
}

void Dgraph_InsertChild(Data& oResult, Data& oParent, const char* sName, i2_t iIndex) {
    return Where("vok::Dgraph_InsertChild", [&] {
        if (iIndex < 0) oParent.Append(sName);
        const u2_t uIndex = static_cast<u2_t>(iIndex);
        Data oSlot = oParent.GetNthSucc(sName, uIndex);
        if (oSlot.IsNode() && oSlot.GetType() == Data_Node::Zombi) {
            oSlot.ClearVal();
        } else {
            oSlot = oParent.Insert(sName, uIndex);
        }
        oResult = oSlot;
    });
}

}  // namespace vok

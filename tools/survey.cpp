// SPDX-License-Identifier: MIT
#include "tools/survey.h"

#include <algorithm>
#include <cstdio>

#include "tools/document.h"
#include "tools/print.h"
#include "tools/say.h"

namespace tools {

using vok::Data_Node;

std::array<std::pair<const char*, std::uint64_t>, 5> Census::Counts() const {
    // Nobody counts as a name by being there at first.
    const std::uint64_t uNames = m_oNames.Size() - 1 + m_bUnnamed;
    return {{{"nodes", m_uNodes},
             {"names", uNames},
             {"depth", m_uDepth},
             {"attributes", m_uAttributes},
             {"text bytes", m_uTextBytes}}};
}

void Census::Print() const {
    const auto oLine = [](const char* sWhat, std::uint64_t u) {
        char s[64];
        std::snprintf(s, sizeof(s), "%-11s %llu\n", sWhat, static_cast<unsigned long long>(u));
        tools::Print(s);
    };
    for (const auto& [sWhat, u] : Counts()) oLine(sWhat, u);
    tools::Print("types\n");
    for (vok::u2_t u = 0; u < m_auType.size(); ++u) {
        if (m_auType[u] == 0) continue;
        char s[64];
        std::snprintf(s, sizeof(s), "  %-9s %llu\n", Data_Node::TypeName(u),
                      static_cast<unsigned long long>(m_auType[u]));
        tools::Print(s);
    }
}

Survey LookThrough(const std::string& sPath, const std::string& sFormat, Census* pCensus,
                   LossCount* pLosses) {
    Document oDocument(sPath, sFormat);
    Survey o;
    o.bXml = oDocument.IsXml();
    while (oDocument.Next()) {
        const vok::Data_Record& r = *oDocument;
        ++o.uNodes;
        if (r.HasTarget()) {
            o.bLinks = true;
            o.bTreeLinks = o.bTreeLinks || r.GetType() == Data_Node::Tree;
        }
        if (pCensus != nullptr) {
            pCensus->Add(r.GetName(), r.GetDepth(), r);
            if (r.GetAttributes().Size() != 0) pCensus->AddAttributes(AttributesOf(r).size());
        }
        if (pLosses == nullptr) continue;
        pLosses->Add(r);
        for (const vok::Data_Record::Attribute& a : r.GetAttributes()) {
            pLosses->AddAttribute(a.sValue);
        }
    }
    o.sWrapping = oDocument.Wrapping();
    o.sVersion = oDocument.Reader().GetVersion().CStr();
    o.uBytes = oDocument.Bytes();
    o.bInOrder = oDocument.Reader().IsInOrder();
    o.oReport = oDocument.Report();
    o.sBehind = oDocument.Behind();
    return o;
}

std::string FaultOf(const vok::Load_Report& r, const std::string& sBehind) {
    if (r.m_uMissingBytes + r.m_uMissingNodes != 0) {
        return Say("cut short: %0 bytes of its last field and %1 nodes are missing",
                   {std::to_string(r.m_uMissingBytes), std::to_string(r.m_uMissingNodes)});
    }
    return sBehind;
}

}  // namespace tools

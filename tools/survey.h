// SPDX-License-Identifier: MIT
// What is in a document, found out in one go.
#ifndef TOOLS_SURVEY_H
#define TOOLS_SURVEY_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "tools/loss.h"
#include "vok/base/limits.h"
#include "vok/data/names.h"
#include "vok/data/value.h"

namespace tools {

// Nodes as they are, removed ones left out.
class Census {
  public:
    // A node at a depth, the root being at 0.
    void Add(std::string_view sName, std::size_t uDepth, const vok::Data_Value& oValue) {
        ++m_uNodes;
        ++m_auType[oValue.GetType()];
        if (oValue.GetType() != vok::Data_Node::Link) m_uTextBytes += oValue.Text().size();
        if (uDepth >= m_uDepth) m_uDepth = uDepth + 1;
        (void)m_oNames.Intern(sName);
        m_bUnnamed = m_bUnnamed || sName.empty();
    }
    void AddAttributes(std::size_t u) noexcept { m_uAttributes += u; }
    [[nodiscard]] std::uint64_t Nodes() const noexcept { return m_uNodes; }
    // Lines of how many there are.
    void Print() const;
    // The same as members of an object of JSON, to a writer of RapidJSON.
    template <class Writer>
    void PrintTo(Writer& oOut) const {
        for (const auto& [sWhat, u] : Counts()) {
            oOut.Key(sWhat);
            oOut.Uint64(u);
        }
        oOut.Key("types");
        oOut.StartObject();
        for (vok::u2_t u = 0; u < m_auType.size(); ++u) {
            if (m_auType[u] == 0) continue;
            oOut.Key(vok::Data_Node::TypeName(u));
            oOut.Uint64(m_auType[u]);
        }
        oOut.EndObject();
    }

  private:
    [[nodiscard]] std::array<std::pair<const char*, std::uint64_t>, 5> Counts() const;

    std::array<std::uint64_t, 16> m_auType{};
    vok::Data_Names m_oNames;
    bool m_bUnnamed = false;
    std::uint64_t m_uNodes = 0;
    std::uint64_t m_uDepth = 0;
    std::uint64_t m_uAttributes = 0;
    std::uint64_t m_uTextBytes = 0;  // and those of blocks
};

// What one pass through a document finds out, memory for which does not grow with it, but for the
// names that are in it.
struct Survey {
    bool bXml = false;
    std::string sWrapping;  // "", "zlib", "gzip", "zip"
    std::string sVersion;
    std::uint64_t uBytes = 0;  // as stored
    std::uint64_t uNodes = 0;
    bool bInOrder = true;  // successors come as a tree has them
    bool bLinks = false;
    bool bTreeLinks = false;  // of nodes with successors, which is an error if they lead anywhere
    vok::Load_Report oReport;
    std::string sBehind;  // why what stands behind the document does not belong to it
};

// Goes through a document. Counts what is in it, and what another form drops of it, where asked.
// Raises InputError and NeedsTree as Document does.
Survey LookThrough(const std::string& sPath, const std::string& sFormat = {},
                   Census* pCensus = nullptr, LossCount* pLosses = nullptr);

// What a document that could be read lacks, or has too much of; empty when nothing.
std::string FaultOf(const vok::Load_Report& oReport, const std::string& sBehind);

}  // namespace tools

#endif  // TOOLS_SURVEY_H

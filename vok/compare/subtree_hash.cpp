// SPDX-License-Identifier: MIT
#include "vok/compare/subtree_hash.h"

#include <bit>
#include <cmath>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace vok {

namespace {

[[nodiscard]] u3_t HashOf(std::string_view s) noexcept {
    return XXH3_64bits(s.data(), s.size());
}

}  // namespace

Data_SubtreeHash::Data_SubtreeHash(Data_Side& oSide, double dDelta)
    : m_oSide(oSide),
      m_dDelta(dDelta),
      m_oName(oSide.m_oBase.m_oName.Size()),
      m_oHash(oSide.m_oBase.m_oNode.Size()) {
    // Each behind its parent; so from the end on the successors of a node are done before it.
    Arr<u2_t> oNodes;
    oNodes.Add(oSide.m_uTop);
    for (std::size_t u = 0; u < oNodes.Size(); ++u) {
        const Data_Base::Group oGroup = oSide.m_oBase.SuccOf(oNodes(u));
        for (u2_t uNth = 0; uNth < oGroup.uSize; ++uNth) {
            if (oSide.IsSeen(oGroup.pId[uNth])) oNodes.Add(oGroup.pId[uNth]);
        }
    }
    if (oNodes.Size() > oSide.m_oBase.m_oNode.Size() / 4) m_oHash.Spread();
    for (std::size_t u = oNodes.Size(); u-- > 0;) {
        const u2_t uId = oNodes(u);
        u3_t uHash = Own(uId);
        const Data_Base::Group oGroup = oSide.m_oBase.SuccOf(uId);
        for (u2_t uNth = 0; uNth < oGroup.uSize; ++uNth) {
            if (oSide.IsSeen(oGroup.pId[uNth])) uHash = MixHash(uHash, m_oHash(oGroup.pId[uNth]));
        }
        m_oHash(uId) = uHash;
    }
}

void Data_SubtreeHash::AppendParts(u2_t uId, std::size_t uMost, Arr<u3_t>& oParts) {
    if (m_oSide.m_oBase.m_oAtt.Has(uId)) {
        m_oSide.m_oBase.m_oAtt.List(uId, m_oKeys);
        for (const u2_t uKey : m_oKeys) {
            if (uMost == 0) return;
            if (m_oSide.IsIgnored(uId, m_oSide.m_oBase.m_oAtt.Names()(uKey).View())) continue;
            oParts.Add(Attribute(uId, uKey));
            --uMost;
        }
    }
    const Data_Base::Group oGroup = m_oSide.m_oBase.SuccOf(uId);
    for (u2_t u = 0; u < oGroup.uSize && uMost != 0; ++u) {
        if (!m_oSide.IsSeen(oGroup.pId[u])) continue;
        oParts.Add(m_oHash(oGroup.pId[u]));
        --uMost;
    }
}

// Of a node without its successors.
u3_t Data_SubtreeHash::Own(u2_t uId) {
    const Data_Node& oNode = m_oSide.Node(uId);
    u3_t& uName = m_oName(oNode.uKey);
    if (uName == 0) uName = HashOf(m_oSide.Name(oNode.uKey)) | 1;
    u3_t uHash = MixHash(uName, m_oSide.Type(uId));
    uHash = MixHash(uHash, Value(oNode));
    if (!m_oSide.m_oBase.m_oAtt.Has(uId)) return uHash;
    m_oSide.m_oBase.m_oAtt.List(uId, m_oKeys);
    u3_t uSum = 0;  // whatever their order
    for (const u2_t uKey : m_oKeys) {
        if (m_oSide.IsIgnored(uId, m_oSide.m_oBase.m_oAtt.Names()(uKey).View())) continue;
        uSum += Attribute(uId, uKey);
    }
    return MixHash(uHash, uSum);
}

u3_t Data_SubtreeHash::Value(const Data_Node& oNode) const noexcept {
    switch (oNode.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char: return oNode.uWord2;
        case Data_Node::Float:
        case Data_Node::Double:
            if (m_dDelta > 0) {
                const double dReal = std::bit_cast<double>(oNode.Value64());
                return std::bit_cast<u3_t>(std::floor(dReal / m_dDelta) + 0.0);
            }
            return oNode.Value64();
        case Data_Node::Date:
        case Data_Node::Long: return oNode.Value64();
        case Data_Node::String:
        case Data_Node::Binary: return HashOf(m_oSide.Block(oNode));
        case Data_Node::Quad: {
            const auto oQuad = m_oSide.m_oBase.m_oHeap.QuadOf(oNode);
            return HashOf({reinterpret_cast<const char*>(&oQuad), sizeof(oQuad)});
        }
        default: return 0;
    }
}

u3_t Data_SubtreeHash::Attribute(u2_t uId, u2_t uKey) const noexcept {
    const u3_t uName = HashOf(m_oSide.m_oBase.m_oAtt.Names()(uKey).View());
    return MixHash(uName, HashOf(m_oSide.m_oBase.AttributeOf(uId, uKey)));
}

}  // namespace vok

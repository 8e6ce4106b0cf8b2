// SPDX-License-Identifier: MIT
#include "tools/node_bytes.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/limits.h"
#include "vok/data/succ_it.h"
#include "vok/file/buf.h"
#include "vok/records/reader.h"

namespace tools {

namespace {

using vok::Data;
using vok::u2_t;

// Follows a document through the tree that was made of it. Elements of XML need not come in the
// order of names: those of one name are counted here.
class Follower {
  public:
    Follower(const Data& oTop, bool bCount) : m_oTop(oTop), m_bCount(bCount) {}

    // The node of the next record; NONE where the tree has none.
    u2_t Next(const vok::Data_Record& o) {
        m_oOpen.resize(o.GetDepth());
        Level oNew;
        if (m_oOpen.empty()) {
            oNew.uId = m_oTop.GetId();
        } else if (Level& oAbove = m_oOpen.back(); oAbove.uId != vok::Data_Node::NONE) {
            const std::string sName(o.GetName());
            const auto iAt = m_bCount ? oAbove.oSeen[sName]++ : o.GetIndex();
            Data oNode = m_oTop;
            oNode.SetToNode(oAbove.uId);
            oNode = oNode.GetNthSucc(sName.c_str(), static_cast<u2_t>(iAt));
            if (oNode.IsNode()) oNew.uId = oNode.GetId();
        }
        m_oOpen.push_back(std::move(oNew));
        return m_oOpen.back().uId;
    }

  private:
    struct Level {
        u2_t uId = vok::Data_Node::NONE;
        std::map<std::string, vok::i2_t> oSeen;  // how many of each name, below it
    };

    const Data m_oTop;
    const bool m_bCount;
    std::vector<Level> m_oOpen;
};

}  // namespace

NodeBytes::NodeBytes(const Input& oIn)
    : m_sDocument(oIn.oBytes.Beg(), oIn.oBytes.Size()), m_oPlace(oIn.oTree.GetNodes()) {
    const bool bXml = oIn.sFormat == "xml";
    if (!bXml && oIn.sFormat != "dgraph") {
        throw std::invalid_argument("nodes have bytes of their own in DGraph documents and XML");
    }
    m_oPlace.Spread();
    vok::File_Buf oBuf(oIn.oBytes.Beg(), oIn.oBytes.Size());
    vok::Data_Reader oReader(oBuf, TheLimits());
    Follower oFollower(oIn.oTree, bXml);
    u2_t uLast = vok::Data_Node::NONE;
    vok::u3_t uFrom = 0;
    const auto oEnd = [&](vok::u3_t uTo) {
        const bool bHere = uFrom < uTo && uTo <= m_sDocument.size();
        if (uLast != vok::Data_Node::NONE && bHere) m_oPlace(uLast) = {uFrom, uTo - uFrom};
    };
    while (oReader.Next()) {
        oEnd(oReader->GetOffset());
        uLast = oFollower.Next(*oReader);
        uFrom = oReader->GetOffset();
    }
    oEnd(oReader.GetReport().m_uOffset);
}

}  // namespace tools

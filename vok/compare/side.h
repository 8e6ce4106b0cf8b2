// SPDX-License-Identifier: MIT
// One of two subtrees that are compared. Internal.
#ifndef VOK_COMPARE_SIDE_H
#define VOK_COMPARE_SIDE_H

#include <string_view>
#include <vector>

#include "vok/compare/diff.h"
#include "vok/data/id_map.h"
#include "vok/data/store.h"

namespace vok {

// What there is to be seen of a subtree: removed nodes are not, nor what is to be ignored.
class Data_Side {
  public:
    // oTop is a live node of oBase.
    Data_Side(const Data& oTop, Data_Base& oBase)
        : m_oBase(oBase),
          m_uTop(oTop.GetId()),
          m_oTop(oTop),
          m_oPlace(oBase.m_oNode.Size()),
          m_oIgnored(oBase.m_oNode.Size()),
          m_oPosition(oBase.m_oNode.Size()) {
        m_oBase.UpdateSucc();
        m_oPlace(0) = OUTSIDE;
        m_oPlace(m_uTop) = INSIDE;
    }
    Data_Side(const Data_Side&) = delete;
    Data_Side& operator=(const Data_Side&) = delete;

    // What these are to ignore is not looked at any more. Errors are those of Data::GetNodeSet.
    void Ignore(const Data_DiffOptions& oOptions) {
        for (const std::string& sPath : oOptions.m_asIgnore) Ignore(sPath);
    }

    [[nodiscard]] Data Cursor(u2_t uId) const noexcept { return m_oTop.GetNodeFromID(uId); }
    [[nodiscard]] const Data_Node& Node(u2_t uId) const noexcept { return m_oBase.m_oNode(uId); }
    [[nodiscard]] bool IsLive(u2_t uId) const noexcept {
        return m_oBase.m_oNode(uId).GetType() != Data_Node::Zombi;
    }
    [[nodiscard]] bool IsIgnored(u2_t uId) const noexcept {
        return m_bIgnores && m_oIgnored.Find(uId);
    }
    [[nodiscard]] bool IsSeen(u2_t uId) const noexcept { return IsLive(uId) && !IsIgnored(uId); }
    [[nodiscard]] bool IsIgnored(u2_t uId, std::string_view sAttribute) const noexcept;
    [[nodiscard]] std::string_view Name(u2_t uKey) const noexcept {
        return m_oBase.m_oName(uKey).View();
    }
    [[nodiscard]] std::string_view NameOf(u2_t uId) const noexcept { return Name(Node(uId).uKey); }
    // A node without successors is an empty one, whatever it had.
    [[nodiscard]] Data_Node::Type Type(u2_t uId) const noexcept {
        const Data_Node::Type eType = m_oBase.m_oNode(uId).GetType();
        return eType == Data_Node::Tree ? Data_Node::Empty : eType;
    }
    [[nodiscard]] std::string_view Block(const Data_Node& oNode) const noexcept {
        return {m_oBase.m_oHeap.At(oNode.uWord2), oNode.uWord3};
    }
    // Whether values of one type, which is no Link, are the same on two sides, bit for bit.
    [[nodiscard]] bool IsSameValue(const Data_Node& oNode, const Data_Side& oOther,
                                   const Data_Node& oNodeThere) const noexcept {
        switch (oNode.GetType()) {
            case Data_Node::Boolean:
            case Data_Node::Integer:
            case Data_Node::Char: return oNode.uWord2 == oNodeThere.uWord2;
            case Data_Node::Float:
            case Data_Node::Double:
            case Data_Node::Date:
            case Data_Node::Long: return oNode.Value64() == oNodeThere.Value64();
            case Data_Node::String:
            case Data_Node::Binary: return Block(oNode) == oOther.Block(oNodeThere);
            case Data_Node::Quad:
                return m_oBase.m_oHeap.QuadOf(oNode) == oOther.m_oBase.m_oHeap.QuadOf(oNodeThere);
            default: return true;
        }
    }

    [[nodiscard]] bool HasSameAttributes(u2_t uId, const Data_Side& oOther, u2_t uIdThere) const;

    // Where a node hangs; HIDDEN: inside, and ignored, or below what is.
    enum Place : u0_t { UNKNOWN = 0, INSIDE, HIDDEN, OUTSIDE, DETACHED };

    // The target of a link, NONE where it is gone.
    [[nodiscard]] u2_t Target(u2_t uLink) {
        const u2_t uTarget = m_oBase.m_oNode(uLink).uWord2;
        if (uTarget >= m_oBase.m_oNode.Size() || !IsLive(uTarget)) return Data_Node::NONE;
        return PlaceOf(uTarget) != DETACHED ? uTarget : Data_Node::NONE;
    }
    // The same, with NONE also for one outside.
    [[nodiscard]] u2_t InnerTarget(u2_t uLink) {
        const u2_t uTarget = Target(uLink);
        if (uTarget == Data_Node::NONE) return uTarget;
        return PlaceOf(uTarget) != OUTSIDE ? uTarget : Data_Node::NONE;
    }
    [[nodiscard]] bool IsHidden(u2_t uId) {
        return m_bIgnores && uId != Data_Node::NONE && PlaceOf(uId) == HIDDEN;
    }
    // Every node on the way up is looked at once for all targets.
    [[nodiscard]] Place PlaceOf(u2_t uId);

    // Position among the live successors of its name. Linear in these for the first of them.
    [[nodiscard]] u2_t Position(u2_t uId);
    // Appends the path from the top, "/a[0]/b[2]" or "/", removed nodes not counted. sSlash is what
    // it begins with.
    void AppendPath(Arr<char>& oPath, u2_t uId, std::string_view sSlash = "/");

    Data_Base& m_oBase;
    const u2_t m_uTop;

  private:
    void Ignore(std::string_view sPath);

    struct Attribute {
        std::string sName;
        Data_IdMap<bool> oNodes;
    };

    const Data m_oTop;
    Data_IdMap<Place> m_oPlace;
    bool m_bIgnores = false;
    Data_IdMap<bool> m_oIgnored;
    std::vector<Attribute> m_oAttribute;
    Data_IdMap<u2_t> m_oPosition;  // plus 1
    Arr<u2_t> m_oChain;
};

}  // namespace vok

#endif  // VOK_COMPARE_SIDE_H

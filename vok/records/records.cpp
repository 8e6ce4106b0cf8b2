// SPDX-License-Identifier: MIT
#include "vok/records/records.h"

#include "vok/base/where.h"
#include "vok/data/walk.h"
#include "vok/records/path.h"

namespace vok {

namespace {

// A node of a tree as a path looks at it.
class Tree_Record final : public Data_Record {
  public:
    void Stand(const Data& oNode, u2_t uDepth) {
        m_uDepth = uDepth;
        const char* sName = oNode.GetName();
        m_sName = sName != nullptr ? sName : "";
        m_oAttribute.Truncate(0);
        oNode.GetAttributes(m_oNames, m_oValues);
        for (std::size_t u = 0; u < m_oNames.Size(); ++u) {
            m_oAttribute.Add(Attribute{m_oNames(u), m_oValues(u)});
        }
    }

  private:
    Arr<const char*> m_oNames;
    Arr<const char*> m_oValues;
};

}  // namespace

// The path, and what it selects within a subtree that it has selected.
class Records::Inner {
  public:
    explicit Inner(std::string_view sPath) : m_oPath(sPath) {}

    [[nodiscard]] records::Path& GetPath() noexcept { return m_oPath; }
    // Has the path look at all that is below a tree whose root stood at uDepth.
    void Find(const Data& oTree, u2_t uDepth) {
        m_oFound.Truncate(0);
        m_uNext = 0;
        m_oWhole.Clear();
        Tree_Record oRecord;
        for (Data_Walk o(oTree); o.Next();) {
            if (o.GetDepth() == 0) continue;
            oRecord.Stand(o.GetData(), uDepth + static_cast<u2_t>(o.GetDepth()));
            const records::Path::Verdict oVerdict = m_oPath.Look(oRecord);
            if (oVerdict.bSelected) m_oFound.Add(o.GetId());
            if (!oVerdict.bBelow) o.SkipSuccessors();
        }
        if (m_oFound.Size() != 0) m_oWhole = oTree;
    }
    // Whether the tree found last is still needed.
    [[nodiscard]] bool Holds(const Data& oTree) const noexcept {
        return HasMore() && oTree == m_oWhole;
    }
    [[nodiscard]] bool HasMore() const noexcept { return m_uNext < m_oFound.Size(); }
    [[nodiscard]] Data Take() { return m_oWhole.GetNodeFromID(m_oFound(m_uNext++)).MkClone(); }
    // The path of the one taken last within the whole; "" where it is the whole.
    [[nodiscard]] Str Below() const {
        if (m_oFound.Size() == 0 || m_uNext == 0) return {};
        return m_oWhole.GetNodeFromID(m_oFound(m_uNext - 1)).GetPath();
    }

  private:
    records::Path m_oPath;
    Data m_oWhole;
    Arr<u2_t> m_oFound;
    std::size_t m_uNext = 0;
};

Records::Records(File_Stream& oIn, std::string_view sPath, const Limits& oLimits)
    : m_oReader(oIn, oLimits), m_pInner(std::make_unique<Inner>(sPath)) {}

Records::Records(const Str& oFile, std::string_view sPath, const Limits& oLimits)
    : m_oReader(oFile, oLimits), m_pInner(std::make_unique<Inner>(sPath)) {}

Records::~Records() = default;

bool Records::Next() {
    return Where("vok::Records::Next", [&] {
        if (m_pInner->HasMore()) {
            m_oTree = m_pInner->Take();
            return true;
        }
        while (m_oReader.Next()) {
            const records::Path::Verdict oVerdict = m_pInner->GetPath().Look(*m_oReader);
            if (oVerdict.bSelected) {
                const u2_t uDepth = m_oReader->GetDepth();
                m_oReader.Take(m_oTree);
                if (oVerdict.bBelow) m_pInner->Find(m_oTree, uDepth);
                return true;
            }
            if (!oVerdict.bBelow) m_oReader.SkipSuccessors();
        }
        return false;
    });
}

Data Records::Release() {
    return Where("vok::Records::Release",
                 [&] { return m_pInner->Holds(m_oTree) ? m_oTree.MkClone() : std::move(m_oTree); });
}

Str Records::GetPath() const {
    Str oPath = m_oReader.GetPath();
    const Str oBelow = m_pInner->Below();
    if (oBelow.IsEmpty()) return oPath;
    if (oPath.Len() == 1) return oBelow;  // the root's
    oPath.Add(oBelow);
    return oPath;
}

}  // namespace vok

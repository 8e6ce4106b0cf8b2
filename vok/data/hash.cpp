// SPDX-License-Identifier: MIT
#include "vok/data/hash.h"

#include <cstring>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "vok/base/where.h"
#include "vok/data/canonical.h"
#include "vok/data/checks.h"
#include "vok/data/data.h"
#include "vok/data/id_map.h"
#include "vok/data/walk.h"

namespace vok {

Str Data_Hash::ToHex() const {
    static constexpr char DIGITS[] = "0123456789abcdef";
    char s[2 * sizeof(m_auByte)];
    char* p = s;
    for (const u0_t u : m_auByte) {
        *p++ = DIGITS[u >> 4];
        *p++ = DIGITS[u & 15u];
    }
    return Str(std::string_view(s, sizeof(s)));
}

class Data_Hasher::State {
  public:
    State() { XXH3_128bits_reset(&m_oState); }
    void Add(std::string_view s) noexcept { XXH3_128bits_update(&m_oState, s.data(), s.size()); }
    [[nodiscard]] Data_Hash Get() const noexcept {
        XXH128_canonical_t oBytes;
        XXH128_canonicalFromHash(&oBytes, XXH3_128bits_digest(&m_oState));
        Data_Hash o;
        static_assert(sizeof(oBytes.digest) == sizeof(o.m_auByte));
        std::memcpy(o.m_auByte.data(), oBytes.digest, sizeof(oBytes.digest));
        return o;
    }

  private:
    XXH3_state_t m_oState;
};

Data_Hasher::Data_Hasher() : m_pState(std::make_unique<State>()) {}
Data_Hasher::Data_Hasher(Data_Hasher&&) noexcept = default;
Data_Hasher& Data_Hasher::operator=(Data_Hasher&&) noexcept = default;
Data_Hasher::~Data_Hasher() = default;

void Data_Hasher::Add(std::string_view sPiece) noexcept {
    m_pState->Add(sPiece);
}

Data_Hash Data_Hasher::Get() const noexcept {
    return m_pState->Get();
}

namespace {

// A subtree on its way to its canonical form.
class Teller {
  public:
    Teller(const Data& oTop, Data_Base& b, const detail::Canonical::Take& oTake)
        : m_oTop(oTop), m_oBase(b), m_oOut(oTake) {}

    void Run() {
        for (Data_Walk o(m_oTop); o.Next();) {
            while (m_oOut.Depth() > o.GetDepth()) m_oOut.End();
            Tell(o);
        }
        while (m_oOut.Depth() != 0) m_oOut.End();
        if (m_oLink.Size() != 0) TellTargets();
        m_oOut.Finish();
    }

  private:
    void Tell(const Data_Walk& o) {
        m_oOut.Begin(m_oBase.m_oName(o.GetKey().uKey).View());
        if (m_oBase.m_oAtt.Has(o.GetId())) TellAttributes(o.GetId());
        m_oOut.Value(o.GetValue());
        if (o.GetType() == Data_Node::Link) m_oLink.Add(o.LinkId());
    }
    void TellAttributes(u2_t uId) {
        m_oBase.m_oAtt.ListByName(uId, m_oAttKey);
        for (const u2_t uKey : m_oAttKey) {
            m_oOut.Attribute(m_oBase.m_oAtt.Names()(uKey).View(), m_oBase.AttributeOf(uId, uKey));
        }
    }
    // Where the links lead is known when all nodes have their numbers.
    void TellTargets() {
        Data_IdMap<u2_t> oNumber(m_oBase.m_oNode.Size());  // by id, plus 1
        for (const u2_t u : m_oLink) {
            if (u < m_oBase.m_oNode.Size()) oNumber(u) = WANTED;
        }
        u2_t uNumber = 0;
        for (Data_Walk o(m_oTop); o.Next(); ++uNumber) {
            if (oNumber.Find(o.GetId()) != 0) oNumber(o.GetId()) = uNumber + 1;
        }
        for (const u2_t u : m_oLink) {
            const u2_t uFound = u < m_oBase.m_oNode.Size() ? oNumber.Find(u) : 0;
            if (uFound != 0 && uFound != WANTED) {
                m_oOut.TargetInside(uFound - 1);
            } else if (uFound == WANTED && IsInTree(u)) {
                m_oOut.TargetOutside(m_oTop.GetNodeFromID(u).GetPath().View());
            } else {
                m_oOut.NoTarget();
            }
        }
    }
    // Whether a node is one of the tree still, and not removed or below a removed one.
    [[nodiscard]] bool IsInTree(u2_t uId) const noexcept {
        if (m_oBase.m_oNode(uId).GetType() == Data_Node::Zombi) return false;
        while (uId != 0 && uId < m_oBase.m_oNode.Size()) uId = m_oBase.m_oNode(uId).Pred();
        return uId == 0;
    }

    static constexpr u2_t WANTED = 0xFFFFFFFF;

    const Data& m_oTop;
    Data_Base& m_oBase;
    detail::Canonical m_oOut;
    Arr<u2_t> m_oLink;  // targets of links, in the order of those
    Arr<u2_t> m_oAttKey;
};

}  // namespace

void Data::Canonical(const std::function<void(std::string_view)>& oTake) const {
    return Where("vok::Data::Canonical",
                 [&] { Teller(*this, detail::LiveNodeOf(m_oBase, m_uId), oTake).Run(); });
}

Data_Hash Data::Hash() const {
    return Where("vok::Data::Hash", [&] {
        Data_Hasher oHasher;
        Canonical([&](std::string_view sPiece) { oHasher.Add(sPiece); });
        return oHasher.Get();
    });
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// The canonical form of a tree: the bytes that its hash is made of. Internal; docs/hash.md.
#ifndef VOK_DATA_CANONICAL_H
#define VOK_DATA_CANONICAL_H

#include <cstring>
#include <functional>
#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/copy.h"
#include "vok/base/little_endian.h"
#include "vok/data/value.h"

namespace vok::detail {

// Puts the canonical form together of what is told in pre-order, and hands it on in pieces. The
// bytes are a contract: equal trees have the same on every system, today and later.
class Canonical {
  public:
    using Take = std::function<void(std::string_view)>;

    explicit Canonical(const Take& oTake) : m_oTake(oTake) {
        m_oPiece.Resize(PIECE);
        Put("vok\x01", 4);
    }
    Canonical(const Canonical&) = delete;
    Canonical& operator=(const Canonical&) = delete;

    // A node: its name, its attributes in the byte order of their names, its value, its successors,
    // its end. The topmost one may bear the name that stands for none.
    void Begin(std::string_view sName) {
        if (m_uDepth++ == 0 && sName == "Root") sName = {};
        Tag(BEGIN);
        Text(sName);
    }
    void Attribute(std::string_view sName, std::string_view sValue) {
        Tag(ATTRIBUTE);
        Text(sName);
        Text(sValue);
    }
    void Value(const Data_Value& oValue) {
        const Data_Node::Type eType = oValue.GetType();
        Tag(static_cast<u0_t>(TYPE + (eType == Data_Node::Tree ? Data_Node::Empty : eType)));
        switch (eType) {
            case Data_Node::Boolean:
            case Data_Node::Integer:
            case Data_Node::Char: return Fixed(static_cast<u2_t>(oValue.Int()));
            case Data_Node::Float:
            case Data_Node::Double:
            case Data_Node::Date:
            case Data_Node::Long: return Fixed(oValue.Lng());
            case Data_Node::String:
            case Data_Node::Binary: return Text(oValue.Text());
            case Data_Node::Quad:
                for (const u2_t u : oValue.QuadWords()) Fixed(u);
                return;
            default: return;
        }
    }
    void End() {
        --m_uDepth;
        Tag(END);
    }
    [[nodiscard]] std::size_t Depth() const noexcept { return m_uDepth; }

    // Behind all nodes the target of each link, in the order of those: the number of a node, the
    // topmost being 0 and the others counted in pre-order; the path of one that is not among them;
    // nothing.
    void TargetInside(u2_t uNumber) {
        Tag(INSIDE);
        Fixed(uNumber);
    }
    void TargetOutside(std::string_view sPath) {
        Tag(OUTSIDE);
        Text(sPath);
    }
    void NoTarget() { Tag(NOWHERE); }

    // Hands on what is left.
    void Finish() {
        if (m_uUsed != 0) m_oTake({m_oPiece.Beg(), m_uUsed});
        m_uUsed = 0;
    }

  private:
    static constexpr std::size_t PIECE = 16384;
    static constexpr u0_t END = 0;
    static constexpr u0_t BEGIN = 1;
    static constexpr u0_t ATTRIBUTE = 2;
    static constexpr u0_t INSIDE = 3;
    static constexpr u0_t OUTSIDE = 4;
    static constexpr u0_t NOWHERE = 5;
    static constexpr u0_t TYPE = 16;  // and its code

    void Put(const char* p, std::size_t uSize) {
        if (PIECE - m_uUsed < uSize) [[unlikely]] {
            Finish();
            if (uSize > PIECE) return m_oTake({p, uSize});
        }
        CopyBytes(m_oPiece.Beg() + m_uUsed, p, uSize);
        m_uUsed += uSize;
    }
    template <class T>
    void Fixed(T tValue) {
        char s[sizeof(T)];
        le::Store(s, tValue);
        Put(s, sizeof(T));
    }
    void Tag(u0_t uTag) { Fixed(uTag); }
    void Text(std::string_view s) {
        Fixed(static_cast<u2_t>(s.size()));
        Put(s.data(), s.size());
    }

    const Take& m_oTake;
    Arr<char> m_oPiece;
    std::size_t m_uUsed = 0;
    std::size_t m_uDepth = 0;
};

}  // namespace vok::detail

#endif  // VOK_DATA_CANONICAL_H

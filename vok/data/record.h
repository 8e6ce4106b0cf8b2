// SPDX-License-Identifier: MIT
// One node of a document that is read node by node.
#ifndef VOK_DATA_RECORD_H
#define VOK_DATA_RECORD_H

#include <string_view>

#include "vok/base/arr.h"
#include "vok/data/value.h"

namespace vok {

// What a document says of a node: its name, its attributes, and its value, which is a Tree where
// successors follow, or are announced. Texts are UTF-8, not NUL-terminated, and belong to the
// reader: they are valid until it goes on. The text of a Link is what the document says of its
// target: its path without the first slash, or in XML the number that it bears, as "ID17".
class Data_Record : public Data_Value {
  public:
    struct Attribute {
        std::string_view sName;
        std::string_view sValue;
    };
    // What GetSuccs gives where the document does not tell.
    static constexpr u2_t UNKNOWN = 0xFFFFFFFF;

    // 0 for the root.
    [[nodiscard]] u2_t GetDepth() const noexcept { return m_uDepth; }
    // Without escapes; empty for an unnamed node.
    [[nodiscard]] std::string_view GetName() const noexcept { return m_sName; }
    // Its position in its run of equal names, one behind the other, as the document has it.
    [[nodiscard]] i2_t GetIndex() const noexcept { return m_iIndex; }
    // Of a Tree: how many are announced.
    [[nodiscard]] u2_t GetSuccs() const noexcept { return static_cast<u2_t>(m_uValue); }

    // Whether the document says that it leads to another node. In XML it may have a value of its
    // own besides, which is what it has if there is no such node.
    [[nodiscard]] bool HasTarget() const noexcept {
        return m_bTarget || m_eType == Data_Node::Link;
    }

    // In the order of the document, which may name one twice: the last one counts.
    [[nodiscard]] const Arr<Attribute>& GetAttributes() const noexcept { return m_oAttribute; }
    // Null where there is none of that name. Linear in the attributes.
    [[nodiscard]] const Attribute* FindAttribute(std::string_view sName) const noexcept {
        for (std::size_t u = m_oAttribute.Size(); u-- > 0;) {
            if (m_oAttribute(u).sName == sName) return &m_oAttribute(u);
        }
        return nullptr;
    }

    // Bytes from the start of the document to the record.
    [[nodiscard]] u3_t GetOffset() const noexcept { return m_uOffset; }

  protected:
    friend class Data_Reader;

    Data_Record() = default;
    ~Data_Record() = default;

    // What Data_Reader goes on to, where that was read already.
    const Data_Record* m_pNext = nullptr;
    u2_t m_uDepth = 0;
    i2_t m_iIndex = 0;
    bool m_bTarget = false;
    std::string_view m_sName;
    u3_t m_uOffset = 0;
    Arr<Attribute> m_oAttribute;
};

}  // namespace vok

#endif  // VOK_DATA_RECORD_H

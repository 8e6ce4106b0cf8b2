// SPDX-License-Identifier: MIT
// Many nodes in one call: bytes to nodes and back.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "serializer/c/internal.h"
#include "serializer/exception.h"
#include "serializer/fields/convert.h"
#include "serializer/fields/failure.h"
#include "serializer/node.h"
#include "vok/base/arr.h"
#include "vok/base/little_endian.h"
#include "vok/base/mem.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/base/types.h"
#include "vok/data/builder.h"
#include "vok/data/view.h"

using namespace Velmar::Q7R::Serializer;
using C::Call;
using C::Do;
using C::Use;
using vok::Data_Node;
using vok::Data_View;

namespace {

constexpr char ADD_FAILED[] = "Failed to add Node items";
constexpr char TEXT_WITH_NUL[] = "a text ends at its first NUL: use bytes";

// What is left of the items. Every length is checked against it.
class Items {
  public:
    explicit Items(std::string_view sItems) : m_sLeft(sItems) {}

    [[nodiscard]] bool IsEmpty() const noexcept { return m_sLeft.empty(); }
    template <class T>
    T Number() {
        return vok::le::Load<T>(Bytes(sizeof(T)).data());
    }
    double Real() { return std::bit_cast<double>(Number<vok::u3_t>()); }
    std::string_view Text() { return Bytes(Number<vok::u2_t>()); }

  private:
    std::string_view Bytes(std::size_t uSize) {
        if (uSize > m_sLeft.size()) throw System::ApplicationException(ADD_FAILED);
        const std::string_view s = m_sLeft.substr(0, uSize);
        m_sLeft.remove_prefix(uSize);
        return s;
    }

    std::string_view m_sLeft;
};

// Adds them. What cannot be set while nodes are appended is set at the end, in order.
class Adder {
  public:
    explicit Adder(vok::Data& oParent)
        : m_oBuilder(oParent), m_oTree(oParent), m_auOpen{oParent.GetId()}, m_uLast(m_auOpen[0]) {}

    void Add(Items& oItems) {
        while (!oItems.IsEmpty()) AddOne(oItems);
        m_oBuilder.Finish();
        for (const Attribute& o : m_aoAttribute) Node(o.uId).SetAttVal(o.sName, o.sValue);
    }
    [[nodiscard]] const std::vector<vok::u2_t>& Hosts() const noexcept { return m_auHost; }
    [[nodiscard]] vok::Data Node(vok::u2_t uId) const { return m_oTree.GetNodeFromID(uId); }

  private:
    struct Attribute {
        vok::u2_t uId;
        std::string_view sName;
        std::string sValue;
    };

    void AddOne(Items& oItems) {
        const auto uCode = oItems.Number<vok::u0_t>();
        if (uCode == VOK_ITEM_END) return Close();
        const std::string_view sName = oItems.Text();
        if (uCode == VOK_ITEM_FAIL) Fail(m_uLast, sName);
        if (uCode == VOK_ITEM_ATTRIBUTE) return SetAttribute(sName, std::string(oItems.Text()));
        if (uCode == VOK_ITEM_REAL) {
            char sText[vok::NUMBER_ROOM];
            const std::size_t uSize = vok::FormatReal(oItems.Real(), sText);
            return SetAttribute(sName, std::string(sText, uSize));
        }
        m_uLast = AddNode(uCode, sName, oItems);
        if (uCode == VOK_ITEM_TREE) m_auOpen.push_back(m_uLast);
        if (uCode == VOK_ITEM_HOST) m_auHost.push_back(m_uLast);
        if (uCode == VOK_ITEM_NULL) m_aoAttribute.push_back({m_uLast, "null", "true"});
    }

    vok::u2_t AddNode(vok::u0_t uCode, std::string_view sName, Items& oItems) {
        switch (uCode) {
            case VOK_ITEM_EMPTY:
            case VOK_ITEM_NULL:
            case VOK_ITEM_HOST: return m_oBuilder.AddEmpty(sName);
            case VOK_ITEM_BOOLEAN:
                return m_oBuilder.AddBool(sName, oItems.Number<vok::u0_t>() != 0);
            case VOK_ITEM_INTEGER: return m_oBuilder.AddInt(sName, oItems.Number<vok::i2_t>());
            case VOK_ITEM_FLOAT: return m_oBuilder.AddFlt(sName, oItems.Real());
            case VOK_ITEM_DOUBLE: return m_oBuilder.AddDbl(sName, oItems.Real());
            case VOK_ITEM_DATE: return m_oBuilder.AddDate(sName, oItems.Real());
            case VOK_ITEM_LONG: return m_oBuilder.AddLng(sName, oItems.Number<vok::u3_t>());
            case VOK_ITEM_TREE: return m_oBuilder.Open(sName);
            case VOK_ITEM_BINARY: {
                const std::string_view s = oItems.Text();
                return m_oBuilder.AddBin(sName, s.data(), static_cast<vok::u2_t>(s.size()));
            }
            case VOK_ITEM_STRING: {
                const std::string_view s = oItems.Text();
                const vok::u2_t uId = m_oBuilder.AddStr(sName, s);
                if (s.find('\0') != std::string_view::npos) Fail(uId, TEXT_WITH_NUL);
                return uId;
            }
            default: throw System::ApplicationException(ADD_FAILED);
        }
    }

    void Close() {
        m_oBuilder.Close();
        m_auOpen.pop_back();
    }

    void SetAttribute(std::string_view sName, std::string sValue) {
        if (sValue.find('\0') != std::string::npos) Fail(m_auOpen.back(), TEXT_WITH_NUL);
        m_aoAttribute.push_back({m_auOpen.back(), sName, std::move(sValue)});
    }

    [[noreturn]] void Fail(vok::u2_t uId, std::string_view sReason) {
        m_oBuilder.Finish();
        fields::RaiseAt(fields::PathOf(Node(uId)), sReason);
    }

    vok::Data_Builder m_oBuilder;
    vok::Data m_oTree;  // which there is once the builder was made
    std::vector<vok::u2_t> m_auOpen;
    vok::u2_t m_uLast;
    std::vector<Attribute> m_aoAttribute;
    std::vector<vok::u2_t> m_auHost;
};

// Texts that say themselves what is wrong pass; all else is nested in that of the operation.
template <class F>
void Telling(const char* sFailure, F&& oBody) {
    try {
        oBody();
    } catch (const System::ApplicationException&) {
        throw;
    } catch (...) {
        std::throw_with_nested(System::ApplicationException(sFailure));
    }
}

// ---- the way back -----------------------------------------------------------

class Teller {
  public:
    explicit Teller(const vok::Data& oNode) : m_oTree(oNode) {
        m_oBytes.Reserve(2048);
        m_asName.reserve(32);
        m_auNumber.reserve(64);
        Number<vok::u2_t>(0);
        // Trees are deeper than stacks: the nodes that are open, innermost last.
        std::vector<Level> aoLevel;
        aoLevel.reserve(16);
        Open(aoLevel, Data_View(oNode));
        while (!aoLevel.empty()) {
            Level& o = aoLevel.back();
            if (o.uNext == o.oNode.GetSuccs()) {
                const auto uSize = m_oBytes.Size() - o.uPlace - 4;
                Put<vok::u2_t>(o.uPlace, static_cast<vok::u2_t>(uSize));
                aoLevel.pop_back();
                continue;
            }
            const Data_View oSucc = o.oNode.GetSucc(o.uNext++);
            if (oSucc.GetType() != Data_Node::Zombi) Open(aoLevel, oSucc);
        }
        Put<vok::u2_t>(0, static_cast<vok::u2_t>(m_oBytes.Size()));
        Number(static_cast<vok::u2_t>(m_asName.size()));
        for (const char* const s : m_asName) Text(s);
        (void)vok::Msg::ToInt32(m_oBytes.Size());
    }

    [[nodiscard]] vok::Arr<char>& Bytes() noexcept { return m_oBytes; }

  private:
    struct Level {
        Data_View oNode;
        vok::u2_t uNext;
        std::size_t uPlace;  // of its size
    };

    template <class T>
    void Number(T t) {
        vok::le::Store(m_oBytes.AddSpace(sizeof(T)), t);
    }
    template <class T>
    void Put(std::size_t uPlace, T t) noexcept {
        vok::le::Store(m_oBytes.Beg() + uPlace, t);
    }
    void Text(std::string_view s) {
        Number(static_cast<vok::u2_t>(s.size()));
        m_oBytes.Add(s.data(), s.size());
    }

    void Open(std::vector<Level>& aoLevel, const Data_View& oNode) {
        const std::size_t uPlace = m_oBytes.Size();
        (void)vok::Msg::ToInt32(uPlace);  // before there is too much of it
        Number<vok::u2_t>(0);
        Number(oNode.GetId());
        Number(NameOf(oNode));
        Number(static_cast<vok::u0_t>(oNode.GetType()));
        if (oNode.HasAttributes()) {
            TellAttributes(m_oTree.GetNodeFromID(oNode.GetId()));
        } else {
            Number<vok::u2_t>(0);
        }
        TellValue(oNode);
        aoLevel.push_back({oNode, 0, uPlace});
    }

    void TellAttributes(const vok::Data& oNode) {
        const auto aoAttribute = oNode.GetAttributes();
        Number(static_cast<vok::u2_t>(aoAttribute.size()));
        for (const auto& [sName, sValue] : aoAttribute) {
            Text(sName);
            double d = 0;
            Number<vok::u0_t>(fields::ParseReal(sValue, d));
            Number(std::bit_cast<vok::u3_t>(d));
            Text(sValue);
        }
    }

    void TellValue(const Data_View& oNode) {
        switch (oNode.GetType()) {
            case Data_Node::Boolean: return Number(static_cast<vok::u0_t>(oNode.Int() != 0));
            case Data_Node::Integer: return Number(oNode.Int());
            case Data_Node::Float:
            case Data_Node::Double:
            case Data_Node::Date: return Number(std::bit_cast<vok::u3_t>(oNode.Dbl()));
            case Data_Node::Long: return Number(oNode.Lng());
            case Data_Node::String: return Text(oNode.Text());
            case Data_Node::Binary: return Text(oNode.Block());
            default: return;
        }
    }

    vok::u2_t NameOf(const Data_View& oNode) {
        const vok::u2_t uKey = oNode.GetKey().uKey;
        if (uKey >= m_auNumber.size()) m_auNumber.resize(std::size_t{uKey} + 1, Data_Node::NONE);
        if (m_auNumber[uKey] == Data_Node::NONE) {
            const char* const sName = oNode.GetName();
            m_auNumber[uKey] = static_cast<vok::u2_t>(m_asName.size());
            m_asName.push_back(sName != nullptr ? sName : "");
        }
        return m_auNumber[uKey];
    }

    vok::Data m_oTree;
    vok::Arr<char> m_oBytes;
    std::vector<vok::u2_t> m_auNumber;  // of a name, by its key
    std::vector<const char*> m_asName;
};

}  // namespace

vok_status vok_node_add_items(vok_node* node, const uint8_t* items, int32_t size, vok_node** hosts,
                              int32_t count) {
    return Do([&] {
        Telling(ADD_FAILED, [&] {
            const std::size_t uSize =
                items != nullptr && size > 0 ? static_cast<std::size_t>(size) : 0;
            Items oItems({reinterpret_cast<const char*>(items), uSize});
            Adder oAdder(Use(node).Data());
            oAdder.Add(oItems);
            if (oAdder.Hosts().size() > static_cast<std::size_t>(count < 0 ? 0 : count))
                throw System::ApplicationException(ADD_FAILED);
            std::vector<std::unique_ptr<vok_node>> apHost;
            for (const vok::u2_t uId : oAdder.Hosts())
                apHost.push_back(std::make_unique<vok_node>(Node(oAdder.Node(uId))));
            for (std::unique_ptr<vok_node>& p : apHost) *hosts++ = p.release();
        });
    });
}

vok_status vok_node_get_items(const vok_node* node, uint8_t** items, int32_t* size) {
    return Call([&] {
        return Guarded("Failed to get Node items", [&] {
            const vok::Data& oNode = Use(node).Data();
            if (!oNode.IsNode()) return false;
            Teller oTeller(oNode);
            // The block stays when the array goes.
            vok::Mem::AddRef(oTeller.Bytes().Beg());
            *items = reinterpret_cast<uint8_t*>(oTeller.Bytes().Beg());
            *size = static_cast<int32_t>(oTeller.Bytes().Size());
            return true;
        });
    });
}

vok_status vok_node_from_id(const vok_node* node, int32_t id, vok_node** found) {
    return Call([&] {
        const vok::Data oNode = Guarded("Failed to get subnode", [&] {
            return Use(node).Data().GetNodeFromID(static_cast<vok::u2_t>(id));
        });
        if (!oNode.IsNode()) return false;
        C::Give(found, Node(oNode), "Failed to get subnode");
        return true;
    });
}

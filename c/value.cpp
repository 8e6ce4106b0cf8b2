// SPDX-License-Identifier: MIT
// Values of nodes.
#include "c/vok_tree_value.h"

#include "c/convert.h"

using namespace vok;
using c::Ask;
using c::BlockSize;
using c::Call;
using c::Find;
using c::Found;
using c::Out;
using c::Text;
using c::Use;

namespace {

// Whether a node has a type that is not among those of a set, one bit each.
bool HasOtherType(const Data& oNode, u2_t uTypes) noexcept {
    try {
        return oNode.IsNode() && (uTypes >> oNode.GetType() & 1u) == 0;
    } catch (const std::exception&) {
        return false;
    }
}

constexpr u2_t NO_TEXT = 1u << Data_Node::Binary | 1u << Data_Node::Link | 1u << Data_Node::Tree;

// Runs a getter; where it fails for the type of the node the code says so.
template <class F>
decltype(auto) OfTypes(const Data& oNode, u2_t uTypes, F&& oBody) {
    try {
        return oBody();
    } catch (const Msg_Exception& e) {
        if (HasOtherType(oNode, uTypes)) throw c::Failure(VOK_TREE_TYPE, e);
        throw;
    }
}

// The shell of a getter: oGet gives the value of a node of the type.
template <class T, class F>
vok_tree_status Get(const char* sName, const vok_tree_node* pNode, Data_Node::Type eType, T* pValue,
                    F&& oGet) noexcept {
    return Call(sName, [&] {
        const Data& oNode = Use(pNode);
        T& tValue = Out(pValue, "value");
        tValue = OfTypes(oNode, 1u << eType, [&] { return static_cast<T>(oGet(oNode)); });
    });
}

// The shell of a setter.
template <class F>
vok_tree_status Set(const char* sName, vok_tree_node* pNode, F&& oSet) noexcept {
    return Call(sName, [&] { oSet(Use(pNode)); });
}

// That of what appends a successor: oAdd gives its id.
template <class F>
vok_tree_status Add(const char* sName, vok_tree_node* pNode, vok_tree_node* pFound,
                    F&& oAdd) noexcept {
    return Call(sName, [&] {
        Data& oNode = Use(pNode);
        const auto oGo = Found(pFound);
        const u2_t uId = oAdd(oNode);
        if (pFound != nullptr) oGo(oNode.GetNodeFromID(uId));
    });
}

// A value of a type that no Add has.
template <class F>
u2_t AddThenSet(Data& oNode, const char* sName, F&& oSet) {
    Data oSucc = oNode.CreateNewSucc(sName);
    oSet(oSucc);
    return oSucc.GetId();
}

// A value that a node can have without its tree.
Data_Value ForTree(const vok_tree_value* pValue) {
    const vok_tree_value& o = Out(pValue, "value");
    if (o.type == VOK_TREE_TYPE_LINK) c::RaiseArgument("value");
    return c::FromC(o);
}

}  // namespace

// ---- any type ---------------------------------------------------------------

vok_tree_status vok_tree_type(const vok_tree_node* node, int32_t* type) {
    return Ask(__func__, type, "type", [&] { return static_cast<int32_t>(Use(node).GetType()); });
}

const char* vok_tree_type_name(int32_t type) {
    // 11 is the number of none; only four bits of a greater one would count.
    return Data_Node::TypeName(type >= 0 && type < 16 ? static_cast<u2_t>(type) : 11);
}

vok_tree_status vok_tree_get_value(const vok_tree_node* node, vok_tree_value* value) {
    return Ask(__func__, value, "value", [&] { return c::ToC(Use(node).GetValue()); });
}

vok_tree_status vok_tree_set_value(vok_tree_node* node, const vok_tree_value* value) {
    return Set(__func__, node, [&](Data& o) { o.SetValue(ForTree(value)); });
}

vok_tree_status vok_tree_add_value(vok_tree_node* node, const char* name,
                                   const vok_tree_value* value, vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) {
        const Data_Value oValue = ForTree(value);
        return AddThenSet(o, name, [&](Data& oSucc) { oSucc.SetValue(oValue); });
    });
}

// ---- getting ----------------------------------------------------------------

vok_tree_status vok_tree_get_bool(const vok_tree_node* node, int32_t* value) {
    return Get(__func__, node, Data_Node::Boolean, value,
               [](const Data& o) { return o.GetValBool() ? 1 : 0; });
}

vok_tree_status vok_tree_get_int(const vok_tree_node* node, int32_t* value) {
    return Get(__func__, node, Data_Node::Integer, value,
               [](const Data& o) { return o.GetValInt(); });
}

vok_tree_status vok_tree_get_char(const vok_tree_node* node, uint32_t* value) {
    return Get(__func__, node, Data_Node::Char, value,
               [](const Data& o) { return o.GetValInt(Data_Node::Char); });
}

vok_tree_status vok_tree_get_float(const vok_tree_node* node, double* value) {
    return Get(__func__, node, Data_Node::Float, value,
               [](const Data& o) { return o.GetValDbl(Data_Node::Float); });
}

vok_tree_status vok_tree_get_double(const vok_tree_node* node, double* value) {
    return Get(__func__, node, Data_Node::Double, value,
               [](const Data& o) { return o.GetValDbl(); });
}

vok_tree_status vok_tree_get_date(const vok_tree_node* node, double* value) {
    return Get(__func__, node, Data_Node::Date, value,
               [](const Data& o) { return o.GetValDbl(Data_Node::Date); });
}

vok_tree_status vok_tree_get_long(const vok_tree_node* node, uint64_t* value) {
    return Get(__func__, node, Data_Node::Long, value, [](const Data& o) { return o.GetValLng(); });
}

vok_tree_status vok_tree_get_text(const vok_tree_node* node, const char** text, size_t* length) {
    return Get(__func__, node, Data_Node::String, text, [&](const Data& o) {
        const std::string_view s = o.GetValText();
        c::SetIfWanted(length, s.size());
        return s.data();
    });
}

vok_tree_status vok_tree_get_bytes(const vok_tree_node* node, const void** bytes, size_t* size) {
    return Get(__func__, node, Data_Node::Binary, bytes, [&](const Data& o) {
        u2_t uSize = 0;
        const void* const pBytes = o.GetValBin(uSize);
        c::SetIfWanted(size, std::size_t{uSize});
        return uSize != 0 ? pBytes : nullptr;
    });
}

vok_tree_status vok_tree_get_quad(const vok_tree_node* node, uint32_t quad[4]) {
    return Call(__func__, [&] {
        const Data& oNode = Use(node);
        (void)Out(quad, "quad");
        OfTypes(oNode, 1u << Data_Node::Quad,
                [&] { oNode.GetValQuad(quad[0], quad[1], quad[2], quad[3]); });
    });
}

vok_tree_status vok_tree_get_link(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] {
        const Data& oNode = Use(node);
        return OfTypes(oNode, 1u << Data_Node::Link, [&] { return oNode.GetValLink(); });
    });
}

vok_tree_status vok_tree_as_int(const vok_tree_node* node, int32_t other, int64_t* value) {
    return Ask(__func__, value, "value", [&] { return Use(node).CvtInt(other); });
}

vok_tree_status vok_tree_as_double(const vok_tree_node* node, double other, double* value) {
    return Ask(__func__, value, "value", [&] { return Use(node).CvtDbl(other); });
}

vok_tree_status vok_tree_as_text(const vok_tree_node* node, const char* other, char* buffer,
                                 size_t room, size_t* length) {
    return Call(__func__, [&] {
        const Data& oNode = Use(node);
        Str oText;
        OfTypes(oNode, ~NO_TEXT, [&] { oNode.CvtStr(oText, other); });
        return c::CopyOut(oText.View(), buffer, room, length);
    });
}

// ---- setting ----------------------------------------------------------------

vok_tree_status vok_tree_set_bool(vok_tree_node* node, int32_t value) {
    return Set(__func__, node, [&](Data& o) { o.SetValBool(value != 0); });
}

vok_tree_status vok_tree_set_int(vok_tree_node* node, int32_t value) {
    return Set(__func__, node, [&](Data& o) { o.SetValInt(value); });
}

vok_tree_status vok_tree_set_char(vok_tree_node* node, uint32_t value) {
    return Set(__func__, node,
               [&](Data& o) { o.SetValInt(static_cast<i2_t>(value), Data_Node::Char); });
}

vok_tree_status vok_tree_set_float(vok_tree_node* node, double value) {
    return Set(__func__, node, [&](Data& o) { o.SetValDbl(value, Data_Node::Float); });
}

vok_tree_status vok_tree_set_double(vok_tree_node* node, double value) {
    return Set(__func__, node, [&](Data& o) { o.SetValDbl(value); });
}

vok_tree_status vok_tree_set_date(vok_tree_node* node, double value) {
    return Set(__func__, node, [&](Data& o) { o.SetValDbl(value, Data_Node::Date); });
}

vok_tree_status vok_tree_set_long(vok_tree_node* node, uint64_t value) {
    return Set(__func__, node, [&](Data& o) { o.SetValLng(value); });
}

vok_tree_status vok_tree_set_text(vok_tree_node* node, const char* text, size_t size) {
    return Set(__func__, node, [&](Data& o) { o.SetValStr(Text(text, size, "text")); });
}

vok_tree_status vok_tree_set_bytes(vok_tree_node* node, const void* bytes, size_t size) {
    return Set(__func__, node, [&](Data& o) { o.SetValBin(bytes, BlockSize(bytes, size)); });
}

vok_tree_status vok_tree_set_quad(vok_tree_node* node, const uint32_t quad[4]) {
    return Set(__func__, node, [&](Data& o) {
        (void)Out(quad, "quad");
        o.SetValQuad(quad[0], quad[1], quad[2], quad[3]);
    });
}

vok_tree_status vok_tree_set_link(vok_tree_node* node, const vok_tree_node* target) {
    return Set(__func__, node, [&](Data& o) { o.SetValLink(Use(target, "target").m_oData); });
}

vok_tree_status vok_tree_clear_value(vok_tree_node* node) {
    return Set(__func__, node, [](Data& o) { o.ClearVal(); });
}

vok_tree_status vok_tree_copy_value(const vok_tree_node* node, vok_tree_node* to) {
    return Call(__func__, [&] { Data::CopyVal(Use(node), Use(to, "to").m_oData); });
}

// ---- adding -----------------------------------------------------------------

vok_tree_status vok_tree_add_bool(vok_tree_node* node, const char* name, int32_t value,
                                  vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) { return o.AddBool(name, value != 0); });
}

vok_tree_status vok_tree_add_int(vok_tree_node* node, const char* name, int32_t value,
                                 vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) { return o.AddInt(name, value); });
}

vok_tree_status vok_tree_add_char(vok_tree_node* node, const char* name, uint32_t value,
                                  vok_tree_node* found) {
    return Add(__func__, node, found,
               [&](Data& o) { return o.AddInt(name, static_cast<i2_t>(value), Data_Node::Char); });
}

vok_tree_status vok_tree_add_float(vok_tree_node* node, const char* name, double value,
                                   vok_tree_node* found) {
    return Add(__func__, node, found,
               [&](Data& o) { return o.AddDbl(name, value, Data_Node::Float); });
}

vok_tree_status vok_tree_add_double(vok_tree_node* node, const char* name, double value,
                                    vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) { return o.AddDbl(name, value); });
}

vok_tree_status vok_tree_add_date(vok_tree_node* node, const char* name, double value,
                                  vok_tree_node* found) {
    return Add(__func__, node, found,
               [&](Data& o) { return o.AddDbl(name, value, Data_Node::Date); });
}

vok_tree_status vok_tree_add_long(vok_tree_node* node, const char* name, uint64_t value,
                                  vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) { return o.AddLng(name, value); });
}

vok_tree_status vok_tree_add_text(vok_tree_node* node, const char* name, const char* text,
                                  size_t size, vok_tree_node* found) {
    return Add(__func__, node, found,
               [&](Data& o) { return o.AddStr(name, Text(text, size, "text")); });
}

vok_tree_status vok_tree_add_bytes(vok_tree_node* node, const char* name, const void* bytes,
                                   size_t size, vok_tree_node* found) {
    return Add(__func__, node, found,
               [&](Data& o) { return o.AddBin(name, bytes, BlockSize(bytes, size)); });
}

vok_tree_status vok_tree_add_quad(vok_tree_node* node, const char* name, const uint32_t quad[4],
                                  vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) {
        (void)Out(quad, "quad");
        return AddThenSet(
            o, name, [&](Data& oSucc) { oSucc.SetValQuad(quad[0], quad[1], quad[2], quad[3]); });
    });
}

vok_tree_status vok_tree_add_link(vok_tree_node* node, const char* name,
                                  const vok_tree_node* target, vok_tree_node* found) {
    return Add(__func__, node, found, [&](Data& o) {
        const Data oTarget = Use(target, "target").m_oData;
        return AddThenSet(o, name, [&](Data& oSucc) { oSucc.SetValLink(oTarget); });
    });
}

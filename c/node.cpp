// SPDX-License-Identifier: MIT
// Cursors, names, successors.
#include "c/vok_tree_node.h"

#include "c/internal.h"
#include "vok/data/succ_it.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::CopyOut;
using c::Find;
using c::Found;
using c::Give;
using c::Out;
using c::Use;

struct vok_tree_iterator : c::Handle<'i'> {
    explicit vok_tree_iterator(Data_SuccIt oIt) noexcept : m_oIt(std::move(oIt)) {}
    Data_SuccIt m_oIt;
};

namespace {

// Null stands for all names.
Data_SuccIt Succs(const Data& oNode, const char* sName) {
    return sName != nullptr ? oNode.GetSuccIt(sName) : oNode.GetSuccIt();
}

}  // namespace

// ---- cursors ----------------------------------------------------------------

vok_tree_status vok_tree_new(vok_tree_node** node) {
    return Call(__func__, [&] { Give(node, "node", [] { return new vok_tree_node(); }); });
}

vok_tree_status vok_tree_duplicate(const vok_tree_node* node, vok_tree_node** copy) {
    return Call(__func__, [&] {
        const Data& oNode = Use(node);
        Give(copy, "copy", [&] { return new vok_tree_node(oNode); });
    });
}

vok_tree_status vok_tree_assign(vok_tree_node* node, const vok_tree_node* other) {
    return Call(__func__, [&] { Use(node) = Use(other, "other").m_oData; });
}

void vok_tree_free(vok_tree_node* node) {
    c::Free(node);
}

int32_t vok_tree_is_node(const vok_tree_node* node) {
    return c::IfHandle(node) != nullptr && node->m_oData.IsNode() ? 1 : 0;
}

int32_t vok_tree_is_same(const vok_tree_node* a, const vok_tree_node* b) {
    const bool bHandles = c::IfHandle(a) != nullptr && c::IfHandle(b) != nullptr;
    return bHandles && a->m_oData == b->m_oData ? 1 : 0;
}

uint32_t vok_tree_id(const vok_tree_node* node) {
    return c::IfHandle(node) != nullptr ? node->m_oData.GetId() : 0;
}

uint32_t vok_tree_node_count(const vok_tree_node* node) {
    return c::IfHandle(node) != nullptr ? node->m_oData.GetNodes() : 0;
}

vok_tree_status vok_tree_to_root(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).SetToRoot(); });
}

vok_tree_status vok_tree_root(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).GetRoot(); });
}

vok_tree_status vok_tree_by_id(const vok_tree_node* node, uint32_t id, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).GetNodeFromID(id); });
}

vok_tree_status vok_tree_parent(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).GetPred(); });
}

vok_tree_status vok_tree_next_sibling(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).GetNext(); });
}

vok_tree_status vok_tree_previous_sibling(const vok_tree_node* node, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).GetPrev(); });
}

vok_tree_status vok_tree_depth(const vok_tree_node* node, int32_t* depth) {
    return Ask(__func__, depth, "depth", [&] { return Use(node).NodeDepth(); });
}

// ---- names ------------------------------------------------------------------

vok_tree_status vok_tree_name(const vok_tree_node* node, const char** name, size_t* length) {
    return Call(__func__, [&] {
        const char*& sName = Out(name, "name");
        const std::string_view s = c::Text(Use(node).GetName());
        sName = s.data();
        c::SetIfWanted(length, s.size());
    });
}

vok_tree_status vok_tree_set_root_name(vok_tree_node* node, const char* name) {
    return Call(__func__, [&] { Use(node).SetRootName(name); });
}

vok_tree_status vok_tree_user_tag(const vok_tree_node* node, char* buffer, size_t room,
                                  size_t* length) {
    return Call(__func__, [&] {
        const auto oTag = Use(node).GetUserTag();
        return CopyOut(c::Text(oTag.Data()), buffer, room, length);
    });
}

vok_tree_status vok_tree_set_user_tag(vok_tree_node* node, const char* tag) {
    return Call(__func__, [&] { Use(node).SetUserTag(c::Text(tag)); });
}

// ---- successors -------------------------------------------------------------

vok_tree_status vok_tree_add(vok_tree_node* node, const char* name, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(node).CreateNewSucc(name); });
}

vok_tree_status vok_tree_succ(const vok_tree_node* node, const char* name, uint32_t nth,
                              vok_tree_node* found) {
    return Find(__func__, found, [&] {
        const Data& oNode = Use(node);
        return name != nullptr ? oNode.GetNthSucc(name, nth) : oNode.GetNthSucc(nth);
    });
}

vok_tree_status vok_tree_succ_count(const vok_tree_node* node, const char* name, uint32_t* count) {
    return Ask(__func__, count, "count", [&] {
        const Data& oNode = Use(node);
        return name != nullptr ? oNode.GetSuccCount(name) : oNode.GetSuccIt().Size();
    });
}

vok_tree_status vok_tree_live_succs(const vok_tree_node* node, uint32_t* count) {
    return Ask(__func__, count, "count", [&] { return Use(node).GetLiveSuccs(); });
}

vok_tree_status vok_tree_iterate(const vok_tree_node* node, const char* name,
                                 vok_tree_iterator** iterator) {
    return Call(__func__, [&] {
        Data_SuccIt oIt = Succs(Use(node), name);
        Give(iterator, "iterator", [&] { return new vok_tree_iterator(std::move(oIt)); });
    });
}

vok_tree_status vok_tree_iterator_next(vok_tree_iterator* iterator, vok_tree_node* found) {
    return Find(__func__, found, [&] {
        Data_SuccIt& oIt = Use(iterator, "iterator").m_oIt;
        if (!oIt.SkipZombies()) return Data();
        Data oNode = oIt.GetData();
        oIt.Advance();
        return oNode;
    });
}

void vok_tree_iterator_free(vok_tree_iterator* iterator) {
    c::Free(iterator);
}

vok_tree_status vok_tree_prepare(const vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).SetAccessMode(); });
}

// SPDX-License-Identifier: MIT
// Nodes by paths.
#include "c/vok_tree_path.h"

#include "c/internal.h"
#include "vok/data/succ_it.h"
#include "vok/data/xpath.h"

using namespace vok;
using c::Call;
using c::Find;
using c::Give;
using c::Text;
using c::ToLimits;
using c::Use;

struct vok_tree_nodes : c::Handle<'s'> {
    explicit vok_tree_nodes(Data_NodeSet oSet) noexcept : m_oSet(std::move(oSet)) {}
    Data_NodeSet m_oSet;
};

struct vok_tree_query : c::Handle<'q'> {
    Data_Xpath m_oPath;
};

vok_tree_status vok_tree_create(vok_tree_node* node, const char* path,
                                const vok_tree_limits* limits, vok_tree_node* found,
                                uint32_t* created) {
    return Find(__func__, found, [&] {
        u2_t uCreated = 0;
        Data oNode = Use(node).CreateNode(Text(path), &uCreated, ToLimits(limits));
        c::SetIfWanted(created, uCreated);
        return oNode;
    });
}

vok_tree_status vok_tree_first(const vok_tree_node* node, const char* path,
                               const vok_tree_limits* limits, vok_tree_node* found) {
    return Find(__func__, found, [&] {
        const Data& oNode = Use(node);
        Data_Xpath oPath;
        oPath.Parse(Text(path));
        return oPath.EvaluateFirst(oNode, ToLimits(limits));
    });
}

vok_tree_status vok_tree_select(const vok_tree_node* node, const char* path,
                                const vok_tree_limits* limits, vok_tree_nodes** nodes) {
    return Call(__func__, [&] {
        Data_NodeSet oSet = Use(node).GetNodeSet(Text(path), ToLimits(limits));
        Give(nodes, "nodes", [&] { return new vok_tree_nodes(std::move(oSet)); });
    });
}

size_t vok_tree_nodes_count(const vok_tree_nodes* nodes) {
    return c::IfHandle(nodes) != nullptr ? nodes->m_oSet.Size() : 0;
}

vok_tree_status vok_tree_nodes_at(const vok_tree_nodes* nodes, size_t nth, vok_tree_node* found) {
    return Find(__func__, found, [&] { return Use(nodes, "nodes").m_oSet.GetNth(nth); });
}

void vok_tree_nodes_free(vok_tree_nodes* nodes) {
    c::Free(nodes);
}

vok_tree_status vok_tree_query_new(const char* path, vok_tree_query** query) {
    return Call(__func__, [&] {
        Give(query, "query", [&] {
            auto pQuery = std::make_unique<vok_tree_query>();
            pQuery->m_oPath.Parse(Text(path));
            return pQuery.release();
        });
    });
}

vok_tree_status vok_tree_query_first(const vok_tree_query* query, const vok_tree_node* node,
                                     const vok_tree_limits* limits, vok_tree_node* found) {
    return Find(__func__, found, [&] {
        return Use(query, "query").m_oPath.EvaluateFirst(Use(node), ToLimits(limits));
    });
}

vok_tree_status vok_tree_query_select(const vok_tree_query* query, const vok_tree_node* node,
                                      const vok_tree_limits* limits, vok_tree_nodes** nodes) {
    return Call(__func__, [&] {
        Data_NodeSet oSet = Use(query, "query").m_oPath.Evaluate(Use(node), ToLimits(limits));
        Give(nodes, "nodes", [&] { return new vok_tree_nodes(std::move(oSet)); });
    });
}

void vok_tree_query_free(vok_tree_query* query) {
    c::Free(query);
}

vok_tree_status vok_tree_path(const vok_tree_node* node, char* buffer, size_t room,
                              size_t* length) {
    return Call(__func__,
                [&] { return c::CopyOut(Use(node).GetPath().View(), buffer, room, length); });
}

vok_tree_status vok_tree_escape(const char* text, char* buffer, size_t room, size_t* length) {
    return Call(__func__, [&] {
        Str oText;
        Data::EncodeXpath(oText, Text(text));
        return c::CopyOut(oText.View(), buffer, room, length);
    });
}

// SPDX-License-Identifier: MIT
// Attributes.
#include "c/internal.h"
#include "c/vok_tree_node.h"

using namespace vok;
using c::Call;
using c::Out;
using c::Use;

vok_tree_status vok_tree_set_attribute(vok_tree_node* node, const char* name, const char* value) {
    return Call(__func__, [&] { Use(node).SetAttVal(c::Text(name), value); });
}

vok_tree_status vok_tree_attribute(const vok_tree_node* node, const char* name, const char** value,
                                   size_t* length) {
    return Call(__func__, [&] {
        const char*& sValue = Out(value, "value");
        const char* const s = Use(node).GetAttVal(name);
        if (s == nullptr) return false;
        sValue = s;
        c::SetIfWanted(length, std::string_view(s).size());
        return true;
    });
}

vok_tree_status vok_tree_attributes(const vok_tree_node* node, const char** names,
                                    const char** values, size_t room, size_t* count) {
    return Call(__func__, [&] {
        Arr<const char*> oNames;
        Arr<const char*> oValues;
        Use(node).GetAttributes(oNames, oValues, true);
        const std::size_t uCount = oNames.Size();
        c::SetIfWanted(count, uCount);
        const bool bAsk = names == nullptr && values == nullptr;
        if (!bAsk && uCount > room) return VOK_TREE_TOO_SMALL;
        for (std::size_t u = 0; u < uCount && !bAsk; ++u) {
            if (names != nullptr) names[u] = oNames(u);
            if (values != nullptr) values[u] = oValues(u);
        }
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_remove_attributes(vok_tree_node* node) {
    return Call(__func__, [&] { Use(node).RemoveAttributes(); });
}

vok_tree_status vok_tree_copy_attributes(const vok_tree_node* node, vok_tree_node* to) {
    return Call(__func__, [&] { Use(node).CopyAtt(Use(to, "to").m_oData); });
}

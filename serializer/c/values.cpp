// SPDX-License-Identifier: MIT
// Values of every type, attributes, and what is wrong with either.
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "serializer/c/internal.h"
#include "serializer/exception.h"
#include "serializer/fields/failure.h"
#include "serializer/fields/tree_in.h"
#include "serializer/node.h"
#include "serializer/utilities.h"
#include "vok/data/view.h"

using namespace Velmar::Q7R::Serializer;
using C::Call;
using C::Do;
using C::Text;
using C::Use;

namespace {

// What a field of that type reads from a successor, with its errors.
template <class Read>
vok_status ReadSuccessor(const vok_node* node, const vok_char* name, int32_t index,
                         const Read& oRead) {
    return Call([&] {
        Node oFound;
        if (!Use(node).TryGetSubnode(Text(name), index, oFound)) return false;
        try {
            oRead(fields::TreeIn(oFound.Data(), false));
        } catch (const fields::Fault& e) {
            fields::RaiseAt(e.sPath, e.sReason);
        }
        return true;
    });
}

fields::Fault FaultAt(const vok_node* root, int32_t id, const vok_char* reason, int32_t found) {
    const auto uId = static_cast<vok::u2_t>(id);
    const vok::Data oNode = Use(root).Data().GetNodeFromID(uId);
    std::string sReason = Utilities::NativeText(Text(reason)).CStr();
    if (!oNode.IsNode()) throw System::ApplicationException(sReason.c_str());
    if (found != 0) sReason = fields::NotFound(sReason, vok::Data_View(oNode));
    return {fields::PathOf(oNode), sReason, uId};
}

}  // namespace

// ---- writing ----------------------------------------------------------------

vok_status vok_node_add_long(vok_node* node, const vok_char* name, int64_t value) {
    return Do([&] { Use(node).AddValue(Text(name), value); });
}

vok_status vok_node_add_float(vok_node* node, const vok_char* name, float value) {
    return Do([&] {
        Guarded("Failed to add Node double value", [&] {
            Use(node).Data().AddDbl(Utilities::NativeText(Text(name)).CStr(),
                                    static_cast<double>(value), vok::Data_Node::Float);
        });
    });
}

vok_status vok_node_add_date(vok_node* node, const vok_char* name, double seconds) {
    return Do([&] {
        Guarded("Failed to add Node int value", [&] {
            Use(node).Data().AddDbl(Utilities::NativeText(Text(name)).CStr(), seconds,
                                    vok::Data_Node::Date);
        });
    });
}

vok_status vok_node_set_attribute(vok_node* node, const vok_char* name, const vok_char* value) {
    return Do([&] {
        Guarded("Failed to set Node attribute", [&] {
            Use(node).Data().SetAttVal(Utilities::NativeText(Text(name)).CStr(),
                                       Utilities::NativeText(Text(value)).CStr());
        });
    });
}

// ---- reading ----------------------------------------------------------------

vok_status vok_node_get_whole(const vok_node* node, const vok_char* name, int32_t index,
                              int64_t lowest, uint64_t highest, int64_t* value) {
    return ReadSuccessor(node, name, index, [&](const fields::TreeIn& in) {
        *value = static_cast<int64_t>(in.WholeOf(lowest, highest));
    });
}

vok_status vok_node_get_real(const vok_node* node, const vok_char* name, int32_t index,
                             double* value) {
    return ReadSuccessor(node, name, index, [&](const fields::TreeIn& in) { in.Get(*value); });
}

vok_status vok_node_get_float(const vok_node* node, const vok_char* name, int32_t index,
                              float* value) {
    return ReadSuccessor(node, name, index, [&](const fields::TreeIn& in) { in.Get(*value); });
}

vok_status vok_node_get_date(const vok_node* node, const vok_char* name, int32_t index,
                             int64_t* seconds) {
    return ReadSuccessor(node, name, index, [&](const fields::TreeIn& in) {
        using Limits = std::numeric_limits<int64_t>;
        (void)in.GetDate(*seconds, 1, Limits::min(), Limits::max());
    });
}

vok_status vok_node_get_attribute(const vok_node* node, const vok_char* name,
                                  const vok_char** value, int32_t* length) {
    return Call([&] {
        return Guarded("Failed to get Node attribute", [&] {
            const char* const sText =
                Use(node).Data().GetAttVal(Utilities::NativeText(Text(name)).CStr());
            if (sText == nullptr) return false;
            C::GiveText(sText, "Failed to get Node attribute", value, length);
            return true;
        });
    });
}

// ---- failures ---------------------------------------------------------------

vok_status vok_fail_in_buffer(const vok_node* root, int32_t id, const vok_char* reason,
                              int32_t found, const uint8_t* bytes, int32_t size) {
    return Do([&] {
        const fields::Fault oFault = FaultAt(root, id, reason, found);
        if (bytes == nullptr || size < 0) fields::RaiseAt(oFault.sPath, oFault.sReason);
        fields::RaiseInDGraph(oFault, {bytes, static_cast<std::size_t>(size)});
    });
}

vok_status vok_fail_in_file(const vok_node* root, int32_t id, const vok_char* reason, int32_t found,
                            const vok_char* path) {
    return Do([&] { fields::RaiseInFile(FaultAt(root, id, reason, found), Text(path)); });
}

// SPDX-License-Identifier: MIT
// Conflicts of three trees, as Data::Merge hands them out.
#ifndef VOK_COMPARE_MERGE_H
#define VOK_COMPARE_MERGE_H

#include "vok/compare/diff.h"
#include "vok/data/data.h"

namespace vok {

// Whose changes count where both sides have changed the same.
enum class Data_MergePick : u0_t { None, A, B };

//     const auto ePick = Data_MergePick::None;
//     Data oMerged = Data::Merge(oBase, oA, oB, {}, ePick, [](const Data_Conflict& o) {
//         std::printf("%s %s\n", o.m_sPath, Data_Conflict::DidName(o.m_oA.eDid));
//         return true;
//     });
struct Data_Conflict {
    // What one side did to a node of the base.
    enum Did : u0_t {
        Changed,  // its value, an attribute, its name
        Below,    // changed what is below it
        Removed,
        Moved,
        Inserted,  // put it there
    };
    // "changed", "changed below", "removed", "moved", "inserted".
    [[nodiscard]] static const char* DidName(Did eDid) noexcept;

    struct Side {
        Did eDid;
        // What there is then, where it is changed or inserted: a node with its value and what is
        // below it, valid during the call.
        Data oNode;
        // The value of the attribute, or the name; null where there is none.
        const char* sText = nullptr;
    };

    // Of the node in the base; of one that was inserted, the place that it would have in A. Valid
    // during the call, as the other texts.
    const char* m_sPath;
    // Null unless it is an attribute.
    const char* m_sAttribute;
    // The node in the base; empty where it is inserted.
    Data m_oBase;
    // The value of the attribute in the base, or the name; null where there is none.
    const char* m_sBase;
    Side m_oA;
    Side m_oB;
};

}  // namespace vok

#endif  // VOK_COMPARE_MERGE_H

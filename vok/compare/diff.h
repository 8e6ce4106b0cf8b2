// SPDX-License-Identifier: MIT
// Differences of two trees, as Data::Diff hands them out.
#ifndef VOK_COMPARE_DIFF_H
#define VOK_COMPARE_DIFF_H

#include <string>
#include <vector>

#include "vok/data/data.h"

namespace vok {

//     Data::Diff(oOld, oNew, [](const Data_Difference& o) {
//         std::printf("%s %s\n", Data_Difference::WhatName(o.m_eWhat), o.m_sPath);
//         return true;
//     });
struct Data_Difference {
    enum What : u0_t {
        OnlyInA,  // with everything below, which is not visited
        OnlyInB,
        Name,  // of the compared nodes themselves
        Type,  // what is below is not visited
        Value,
        Attribute,  // value, or there on one side only
        Moved,  // stands elsewhere among the successors of its name; only where these are aligned
    };

    // "only in A", "only in B", "name", "type", "value", "attribute", "moved".
    [[nodiscard]] static const char* WhatName(What eWhat) noexcept;

    What m_eWhat;
    // Where, seen from the compared nodes: "/" or "/a[0]/b[2]", removed nodes not counted. In A, or
    // in B where it is only there. Valid during the call, as the attribute's name.
    const char* m_sPath;
    // Null unless it is an attribute.
    const char* m_sAttribute;
    // The two sides; the one where there is nothing is empty.
    Data m_oA;
    Data m_oB;
    // Where it is in B; null where it is only in A.
    const char* m_sPathB = nullptr;
};

// How two trees are compared where successors of one name are not just taken by their position:
// runs of them are aligned, so that what was put in, taken out or moved is one difference.
struct Data_DiffOptions {
    // What tells the successors of one name apart: "@id" (an attribute), "id" (the value of a
    // successor), "head/@id", "head[1]/id". Of several the first that a node has counts. Those with
    // the same text belong together wherever they stand, of several the first with the first; those
    // that have a text and no partner are only in A, or only in B. All other nodes are aligned by
    // what they hold.
    std::vector<std::string> m_asKey;
    // What is not looked at: paths as Data::GetNodeSet takes them, seen from the compared nodes,
    // with all that is below the nodes that they select, and links that lead there; "//order/@time"
    // are attributes.
    std::vector<std::string> m_asIgnore;
    // Floats and Doubles that are no further apart are the same, and so are any two that are no
    // numbers. 0: bit for bit.
    double m_dDelta = 0;
};

}  // namespace vok

#endif  // VOK_COMPARE_DIFF_H

// Differences of two trees, as Data::Diff hands them out.
#ifndef VOK_DATA_DIFF_H
#define VOK_DATA_DIFF_H

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
    };

    // "only in A", "only in B", "name", "type", "value", "attribute".
    [[nodiscard]] static const char* WhatName(What eWhat) noexcept;

    What m_eWhat;
    // Where, seen from the compared nodes: "/" or "/a[0]/b[2]", removed nodes not counted.
    // Valid during the call, as the attribute's name.
    const char* m_sPath;
    // Null unless it is an attribute.
    const char* m_sAttribute;
    // The two sides; the one where there is nothing is empty.
    Data m_oA;
    Data m_oB;
};

}  // namespace vok

#endif  // VOK_DATA_DIFF_H

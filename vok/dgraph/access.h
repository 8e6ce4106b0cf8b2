// The codec's door to the store behind a cursor. Internal.
#ifndef VOK_DGRAPH_ACCESS_H
#define VOK_DGRAPH_ACCESS_H

#include "vok/data/store.h"

namespace vok::dgraph {

struct Access {
    [[nodiscard]] static Data_Base* BaseOf(const Data& oData) noexcept {
        return oData.m_oBase.Get();
    }
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_ACCESS_H

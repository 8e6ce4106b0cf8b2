// SPDX-License-Identifier: MIT
// The codec's door to the store behind a cursor. Internal.
#ifndef VOK_DGRAPH_ACCESS_H
#define VOK_DGRAPH_ACCESS_H

#include "vok/data/store.h"

namespace vok::dgraph {

struct Access {
    [[nodiscard]] static Data_Base* BaseOf(const Data& oData) noexcept {
        return oData.m_oBase.Get();
    }
    // Makes a cursor the root of its tree, of a new one where it has none.
    static void ToRoot(Data& oData) {
        if (!oData.m_oBase) oData.SetToRoot();
        oData.m_uId = 0;
    }
    // Makes a cursor the root of a tree without nodes, of the one it is on, whoever else is.
    static void ResetNodes(Data& oData) {
        if (oData.m_oBase) oData.m_oBase->ResetNodes();
        ToRoot(oData);
    }
    // Makes a cursor the root of a tree as new: of the one it is on, where no other cursor is.
    static void Restart(Data& oData) {
        if (!oData.m_oBase || Mem::GetRefCnt(oData.m_oBase.Get()) != 0) oData.Clear();
        if (oData.m_oBase) oData.m_oBase->Restart();
        oData.SetToRoot();
    }
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_ACCESS_H

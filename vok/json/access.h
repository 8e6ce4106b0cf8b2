// SPDX-License-Identifier: MIT
// The codec's door to the store behind a cursor. Internal.
#ifndef VOK_JSON_ACCESS_H
#define VOK_JSON_ACCESS_H

#include "vok/data/checks.h"

namespace vok::json {

struct Access {
    // The tree of a cursor whose node is there.
    [[nodiscard]] static Data_Base& NodeOf(const Data& oData) {
        return detail::LiveNodeOf(oData.m_oBase, oData.m_uId);
    }
    // Makes a cursor the root of a tree as new: of the one it is on, where no other cursor is.
    static Data_Base& Restart(Data& oData) {
        if (!oData.m_oBase || Mem::GetRefCnt(oData.m_oBase.Get()) != 0) oData.Clear();
        if (oData.m_oBase) oData.m_oBase->Restart();
        oData.SetToRoot();
        return *oData.m_oBase;
    }
};

}  // namespace vok::json

#endif  // VOK_JSON_ACCESS_H

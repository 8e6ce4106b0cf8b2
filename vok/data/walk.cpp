// SPDX-License-Identifier: MIT
#include "vok/data/walk.h"

#include "vok/base/where.h"

namespace vok {

Data_View Data_Walk::ViewOf(const Data& oFrom) {
    return Where("vok::Data_Walk::Data_Walk", [&] { return Data_View(oFrom); });
}

void Data_Walk::End(const Data_Base* pBase, Open* pFar) noexcept {
    auto* const pTree = const_cast<Data_Base*>(pBase);
    if (Mem::DropRef(pTree)) Dispose(pTree);
    Mem::Free(pFar);
}

Data_Walk::Open* Data_Walk::Deepen(Open* pFar, std::size_t uRoom) {
    return Where("vok::Data_Walk::Next", [&] {
        return static_cast<Open*>(Mem::Resize(pFar, (2 * uRoom - NEAR) * sizeof(Open)));
    });
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// The where-trail: how a public operation adds its name to an error that leaves it.
//
//     void File::Open(const char* sPath) {
//         return Where("vok::File::Open", [&] { ... });
//     }
#ifndef VOK_BASE_WHERE_H
#define VOK_BASE_WHERE_H

#include <utility>

#include "vok/base/msg.h"

namespace vok {

// Runs oBody and gives its result. A Msg_Exception on its way out gets sName added to
// its trail; any other std::exception is logged under sName; either goes on. Costs
// nothing while nothing is thrown: Rethrow() is out of line.
template <class F>
inline decltype(auto) Where(const char* sName, F&& oBody) {
    try {
        return std::forward<F>(oBody)();
    } catch (...) {
        Msg::Rethrow(sName);
    }
}

// The same with a detail, which appears as "name(detail)". sDetail must stay valid
// until oBody is left.
template <class F>
inline decltype(auto) Where(const char* sName, const char* sDetail, F&& oBody) {
    try {
        return std::forward<F>(oBody)();
    } catch (...) {
        Msg::Rethrow(sName, sDetail);
    }
}

}  // namespace vok

#endif  // VOK_BASE_WHERE_H

// SPDX-License-Identifier: MIT
// How failures leave the facade. Internal.
#ifndef SERIALIZER_GUARDED_H
#define SERIALIZER_GUARDED_H

#include <exception>

#include "serializer/exception.h"
#include "vok/base/limits.h"
#include "vok/base/str.h"

namespace Velmar::Q7R::Serializer {

// Runs the native part of an operation; whatever it throws is nested in the operation's own text.
template <class F>
decltype(auto) Guarded(const char* sMessage, F&& oBody) {
    try {
        return oBody();
    } catch (...) {
        std::throw_with_nested(System::ApplicationException(sMessage));
    }
}

// The same for reading a document: oReport tells the place.
template <class F>
decltype(auto) Guarded(const char* sMessage, const vok::Load_Report& oReport, F&& oBody) {
    try {
        return oBody();
    } catch (...) {
        System::ApplicationException::Place oPlace{oReport.m_uOffset, oReport.m_uLine,
                                                   oReport.m_uColumn};
        oReport.m_oPath.View().copy(oPlace.sPath, sizeof(oPlace.sPath) - 1);
        std::throw_with_nested(System::ApplicationException(sMessage, oPlace));
    }
}

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_GUARDED_H

// How failures leave the facade. Internal.
#ifndef SERIALIZER_GUARDED_H
#define SERIALIZER_GUARDED_H

#include "serializer/exception.h"

namespace Velmar::Q7R::Serializer {

// Runs the native part of an operation; whatever it throws becomes the operation's own text.
template <class F>
decltype(auto) Guarded(const char* sMessage, F&& oBody) {
    try {
        return oBody();
    } catch (...) {
        throw System::ApplicationException(sMessage);
    }
}

}  // namespace Velmar::Q7R::Serializer

#endif  // SERIALIZER_GUARDED_H

// SPDX-License-Identifier: MIT
// What the tests of the facade share.
#ifndef TESTS_SERIALIZER_SERIALIZER_SUPPORT_H
#define TESTS_SERIALIZER_SERIALIZER_SUPPORT_H

#include <functional>
#include <string>
#include <vector>

#include "serializer/serializer.h"
#include "tests/support.h"

namespace Velmar::Q7R::Serializer {

using Bytes = std::vector<Byte>;

// A host object made of two functions.
struct Host : ISerialisable {
    std::function<void(Node&)> oWrite = [](Node&) {};
    std::function<void(Node&)> oRead = [](Node&) {};
    void WriteValues(Node& node) override { oWrite(node); }
    void ReadValues(Node& node) override { oRead(node); }
};

inline Bytes Write(const std::function<void(Node&)>& oWrite) {
    Host oHost;
    oHost.oWrite = oWrite;
    return Serializer().WriteToBinaryBuffer(oHost);
}
inline void Read(const Bytes& oBytes, const std::function<void(Node&)>& oRead) {
    Host oHost;
    oHost.oRead = oRead;
    Serializer().ReadFromBinaryBuffer(oHost, oBytes);
}

// The text of the facade's exception that oBody raises; empty if none.
template <class F>
std::string Failure(F&& oBody) {
    try {
        oBody();
    } catch (const System::ApplicationException& oError) {
        return oError.what();
    }
    return "";
}

}  // namespace Velmar::Q7R::Serializer

#endif  // TESTS_SERIALIZER_SERIALIZER_SUPPORT_H

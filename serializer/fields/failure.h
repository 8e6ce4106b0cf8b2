// SPDX-License-Identifier: MIT
// What goes wrong with the fields of an object, and where. Internal.
#ifndef SERIALIZER_FIELDS_FAILURE_H
#define SERIALIZER_FIELDS_FAILURE_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "serializer/node.h"
#include "vok/data/data.h"
#include "vok/data/view.h"

namespace Velmar::Q7R::Serializer::fields {

// Raised by what reads a tree, for those who know its bytes to say where in them it is.
struct Fault {
    std::string sPath;
    std::string sReason;
    vok::u2_t uNode;  // id in the tree: documents have their nodes in the order of ids
};

// The path of a node, an index of 0 at its end left out: "/legs[3]/strike".
[[nodiscard]] std::string PathOf(const vok::Data& oNode);

// "EXPECTED expected, TYPE found", with the value where it is a number.
[[nodiscard]] std::string NotFound(std::string_view sExpected, const vok::Data_View& oNode);

// Raises System::ApplicationException "PATH: REASON", or "PATH: REASON, WHERE".
[[noreturn]] void RaiseAt(const std::string& sPath, std::string_view sReason,
                          std::string_view sWhere = {}, vok::u3_t uOffset = 0, vok::u2_t uLine = 0);

// Raises it with the byte at which record uNode of a DGraph document begins.
[[noreturn]] void RaiseInDGraph(const Fault& oFault, std::span<const Byte> oDocument);
// Raises it with the line on which element uNode of an XML document begins, where that is UTF-8.
[[noreturn]] void RaiseInXml(const Fault& oFault, std::string_view sDocument);
// The same for a document that is read from its file once more.
[[noreturn]] void RaiseInFile(const Fault& oFault, StringRef oFile);

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_FAILURE_H

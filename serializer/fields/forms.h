// SPDX-License-Identifier: MIT
// Objects to documents and back: straight, or through a tree. Internal.
#ifndef SERIALIZER_FIELDS_FORMS_H
#define SERIALIZER_FIELDS_FORMS_H

#include <span>
#include <vector>

#include "serializer/fields/read.h"
#include "serializer/fields/record_in.h"
#include "serializer/fields/record_out.h"
#include "serializer/fields/tree_in.h"
#include "serializer/fields/tree_out.h"
#include "serializer/fields/write.h"
#include "vok/file/stream.h"

namespace Velmar::Q7R::Serializer::fields {

// An object whose type is known to the two functions only, so that all else is compiled once.
struct Source {
    const void* pObject;
    void (*pWrite)(TreeOut& out, const void* pObject);
};
struct Target {
    void* pObject;
    void (*pRead)(TreeIn& in, void* pObject);
};

template <class T>
[[nodiscard]] Source SourceOf(const T& object) {
    return {&object, [](TreeOut& out, const void* p) {
                WriteContent<RootName>(out, *static_cast<const T*>(p));
            }};
}
template <class T>
[[nodiscard]] Target TargetOf(T& object) {
    return {&object, [](TreeIn& in, void* p) { in.ReadObject(*static_cast<T*>(p)); }};
}

// Below a node of a tree.
void WriteBelow(Node& node, const Source& oSource);
void ReadBelow(Node& node, const Target& oTarget, bool bRefuseUnknown);

[[nodiscard]] std::vector<Byte> WriteThroughTree(const Source& oSource, bool bNewer);
void ReadThroughTree(std::span<const Byte> oDocument, const Target& oTarget, bool bRefuseUnknown);
void WriteXml(StringRef oFile, const Source& oSource);
void WriteStream(vok::File_Stream& oStream, const Source& oSource, bool bXml);
void ReadStream(vok::File_Stream& oStream, const Target& oTarget, bool bRefuseUnknown);
void ReadXml(StringRef oFile, const Target& oTarget, bool bRefuseUnknown);

template <class T>
void WriteDocument(std::vector<Byte>& aoBuffer, const T& object, bool bNewer) {
    RecordOut out(aoBuffer, bNewer);
    if (const auto oOpen = out.Open<RootName>(First())) {
        WriteContent<RootName>(out, object);
        out.Close(oOpen);
    }
    if (!out.Finish()) [[unlikely]]
        aoBuffer = WriteThroughTree(SourceOf(object), bNewer);
}
template <class T>
void ReadDocument(std::span<const Byte> oDocument, T& object, bool bRefuseUnknown) {
    if (!RecordIn(oDocument, bRefuseUnknown).ReadObject(object)) [[unlikely]]
        ReadThroughTree(oDocument, TargetOf(object), bRefuseUnknown);
}

}  // namespace Velmar::Q7R::Serializer::fields

#endif  // SERIALIZER_FIELDS_FORMS_H

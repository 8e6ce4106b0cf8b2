// SPDX-License-Identifier: MIT
#include "serializer/fields/forms.h"

#include <new>

#include "serializer/document.h"
#include "serializer/fields/failure.h"
#include "serializer/guarded.h"
#include "vok/base/msg_exception.h"

namespace Velmar::Q7R::Serializer::fields {

namespace {

// What the tree refuses is nested in the text of the operation; what objects raise passes.
void WriteInto(Node& node, const Source& oSource, const char* sFailure) {
    try {
        TreeOut out(node.Data());
        oSource.pWrite(out, oSource.pObject);
        out.Finish();
    } catch (const vok::Msg_Exception&) {
        std::throw_with_nested(System::ApplicationException(sFailure));
    } catch (const std::bad_alloc&) {
        std::throw_with_nested(System::ApplicationException(sFailure));
    }
}

void ReadFrom(const Node& node, const Target& oTarget, bool bRefuseUnknown) {
    TreeIn in = Guarded(Document::READ_FAILED, [&] { return TreeIn(node.Data(), bRefuseUnknown); });
    oTarget.pRead(in, oTarget.pObject);
}

}  // namespace

void WriteBelow(Node& node, const Source& oSource) {
    WriteInto(node, oSource, "Failed to add subnode");
}

void ReadBelow(Node& node, const Target& oTarget, bool bRefuseUnknown) {
    try {
        // A node of no tree has no fields.
        const auto oHasTree = [&] { return node.Data().IsNode(); };
        if (Guarded(Document::READ_FAILED, oHasTree)) ReadFrom(node, oTarget, bRefuseUnknown);
    } catch (const Fault& e) {
        RaiseAt(e.sPath, e.sReason);
    }
}

std::vector<Byte> WriteThroughTree(const Source& oSource, bool bNewer) {
    Node root = Document::NewRoot(Document::WRITE_BUFFER_FAILED);
    WriteInto(root, oSource, Document::WRITE_BUFFER_FAILED);
    return Document::SaveToBuffer(root, bNewer);
}

void ReadThroughTree(std::span<const Byte> oDocument, const Target& oTarget, bool bRefuseUnknown) {
    Node root = Document::LoadFromBuffer(oDocument);
    try {
        ReadFrom(root, oTarget, bRefuseUnknown);
    } catch (const Fault& e) {
        RaiseInDGraph(e, oDocument);
    }
}

void WriteXml(StringRef oFile, const Source& oSource) {
    Node root = Document::NewRoot(Document::WRITE_FILE_FAILED);
    WriteInto(root, oSource, Document::WRITE_FILE_FAILED);
    Document::SaveToFile(root, oFile);
}

void WriteStream(vok::File_Stream& oStream, const Source& oSource, bool bXml) {
    Node root = Document::NewRoot(Document::WRITE_STREAM_FAILED);
    WriteInto(root, oSource, Document::WRITE_STREAM_FAILED);
    Document::SaveToStream(root, oStream, bXml, true);
}

void ReadStream(vok::File_Stream& oStream, const Target& oTarget, bool bRefuseUnknown) {
    Node root = Document::LoadFromStream(oStream);
    try {
        ReadFrom(root, oTarget, bRefuseUnknown);
    } catch (const Fault& e) {
        RaiseAt(e.sPath, e.sReason);  // where it stood is gone
    }
}

void ReadXml(StringRef oFile, const Target& oTarget, bool bRefuseUnknown) {
    Node root = Document::LoadFromFile(oFile);
    try {
        ReadFrom(root, oTarget, bRefuseUnknown);
    } catch (const Fault& e) {
        RaiseInFile(e, oFile);
    }
}

}  // namespace Velmar::Q7R::Serializer::fields

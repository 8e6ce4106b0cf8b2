// SPDX-License-Identifier: MIT
// Documents saved and loaded.
#include "c/vok_tree_document.h"

#include <algorithm>

#include "c/convert.h"
#include "c/output.h"
#include "c/stream.h"
#include "vok/base/mem.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/document.h"
#include "vok/file/buf.h"

using namespace vok;
using c::Call;
using c::Out;
using c::Text;
using c::Use;

namespace {

// ---- loading ----------------------------------------------------------------

// The flags of Data::LoadFromXML; unknown references stay in the text, as wherever the form of a
// document is found out.
u2_t XmlFlags(int32_t iForm) {
    u2_t uFlags = Data::XML_KEEP_UNKNOWN;
    if ((iForm & VOK_TREE_SKIP_BLANKS) != 0) uFlags |= Data::XML_SKIP_BLANKS;
    if ((iForm & VOK_TREE_SKIP_HTML) != 0) uFlags |= Data::XML_SKIP_HTML;
    if ((iForm & VOK_TREE_LOOSE_TAGS) != 0) uFlags |= Data::XML_LOOSE_TAGS;
    return uFlags;
}

// Sets the cursor to a tree that oLoad makes, and the report in either case.
template <class Loader>
void Replace(Data& oNode, vok_tree_report* pReport, const Loader& oLoad) {
    Load_Report oReport;
    Data oTree;
    try {
        oLoad(oTree, oReport);
    } catch (...) {
        c::SetIfWanted(pReport, c::ToC(oReport));
        c::KeepPlace(oReport);
        throw;
    }
    c::SetIfWanted(pReport, c::ToC(oReport));
    oNode = std::move(oTree);
}

// From a stream or from the file of a path.
template <class From>
void Load(Data& oNode, From& oFrom, int32_t iForm, const vok_tree_limits* pLimits,
          vok_tree_report* pReport) {
    Replace(oNode, pReport, [&](Data& oTree, Load_Report& oReport) {
        const Document_Format oFormat = Document_Load(
            oTree, oFrom, {c::FormatOf(iForm).eForm, XmlFlags(iForm), c::ToLimits(pLimits)},
            &oReport);
        if constexpr (std::is_same_v<From, c::HostStream>) {
            if (oFormat.eWrapping == Zip_Wrapping::None) {
                oReport.m_uBytesLeft = std::max(oReport.m_uBytesLeft, oFrom.Left());
            }
            oFrom.GiveBack();
        }
    });
}

void CheckLoadForm(int32_t iForm) {
    if ((iForm & ~(c::FORM | c::LOAD_FLAGS)) != 0 || (iForm & c::FORM) > VOK_TREE_DUMP) {
        c::RaiseArgument("form");
    }
}

// ---- saving -----------------------------------------------------------------

void CheckSaveForm(int32_t iForm) {
    const int32_t iKind = iForm & c::FORM;
    if ((iForm & ~(c::FORM | c::WRAPPING | c::SAVE_FLAGS)) != 0 || iKind < VOK_TREE_XML ||
        iKind > VOK_TREE_DUMP) {
        c::RaiseArgument("form");
    }
}

// An archive is written to a file only.
void CheckStreamForm(int32_t iForm) {
    CheckSaveForm(iForm);
    if ((iForm & c::WRAPPING) == VOK_TREE_ZIP) c::RaiseArgument("form");
}

Document_SaveOptions SaveOptions(int32_t iForm) {
    return {c::FormatOf(iForm),
            (iForm & VOK_TREE_NO_DECLARATION) == 0,
            (iForm & VOK_TREE_COMPACT) != 0,
            {},
            true,
            (iForm & VOK_TREE_ATTACHABLE) != 0};
}

// What can be saved: a tree.
Data& Tree(vok_tree_node* pNode) {
    Data& oNode = Use(pNode);
    if (!oNode.IsNode()) Msg::NodeIsEmpty();
    return oNode;
}

}  // namespace

vok_tree_status vok_tree_set_version(vok_tree_node* node, int32_t major, int32_t minor,
                                     int32_t patch) {
    return Call(__func__, [&] { Dgraph_SetVersion(Use(node), major, minor, patch); });
}

vok_tree_status vok_tree_load_file(vok_tree_node* node, const char* path, int32_t form,
                                   const vok_tree_limits* limits, vok_tree_report* report) {
    return Call(__func__, [&] {
        Data& oNode = Use(node);
        const Str oPath(c::Path(path));
        CheckLoadForm(form);
        Load(oNode, oPath, form, limits, report);
    });
}

vok_tree_status vok_tree_load_memory(vok_tree_node* node, const void* bytes, size_t size,
                                     int32_t form, const vok_tree_limits* limits,
                                     vok_tree_report* report) {
    return Call(__func__, [&] {
        Data& oNode = Use(node);
        if (bytes == nullptr && size != 0) c::RaiseArgument("bytes");
        CheckLoadForm(form);
        File_Buf oBuf(bytes, size);
        Load(oNode, oBuf, form, limits, report);
    });
}

vok_tree_status vok_tree_load_stream(vok_tree_node* node, const vok_tree_stream* stream,
                                     int32_t form, const vok_tree_limits* limits,
                                     vok_tree_report* report) {
    return Call(__func__, [&] {
        Data& oNode = Use(node);
        const vok_tree_stream& oFunctions = Out(stream, "stream");
        CheckLoadForm(form);
        c::HostStream oStream(oFunctions);
        Load(oNode, oStream, form, limits, report);
    });
}

vok_tree_status vok_tree_attach_file(vok_tree_node* node, const char* path, int32_t checked,
                                     const vok_tree_limits* limits, vok_tree_report* report) {
    return Call(__func__, [&] {
        Data& oNode = Use(node);
        const Str oPath(c::Path(path));
        const Data_Trust eTrust = checked != 0 ? Data_Trust::Checked : Data_Trust::None;
        Replace(oNode, report, [&](Data& oTree, Load_Report& oReport) {
            oTree.Attach(oPath, eTrust, c::ToLimits(limits), &oReport);
        });
    });
}

vok_tree_status vok_tree_save_file(vok_tree_node* node, const char* path, int32_t form) {
    return Call(__func__, [&] {
        Data& oNode = Tree(node);
        const char* const sPath = c::Path(path);
        CheckSaveForm(form);
        Document_Save(oNode, Str(sPath), SaveOptions(form));
    });
}

vok_tree_status vok_tree_save_memory(vok_tree_node* node, int32_t form, uint8_t** bytes,
                                     size_t* size) {
    return Call(__func__, [&] {
        Data& oNode = Tree(node);
        uint8_t*& pBytes = Out(bytes, "bytes");
        std::size_t& uSize = Out(size, "size");
        CheckStreamForm(form);
        File_Buf oBuf("w");
        Document_Save(oNode, oBuf, SaveOptions(form));
        // The block stays when the buffer goes: there is no second copy.
        Mem::AddRef(oBuf.GetBuffer().Beg());
        pBytes = reinterpret_cast<uint8_t*>(oBuf.GetBuffer().Beg());
        uSize = oBuf.Size();
    });
}

void vok_tree_bytes_free(uint8_t* bytes) {
    if (bytes != nullptr && Mem::DropRef(bytes)) Mem::Free(bytes);
}

vok_tree_status vok_tree_save_stream(vok_tree_node* node, const vok_tree_stream* stream,
                                     int32_t form) {
    return Call(__func__, [&] {
        Data& oNode = Tree(node);
        const vok_tree_stream& oFunctions = Out(stream, "stream");
        CheckStreamForm(form);
        c::HostStream oStream(oFunctions);
        Document_Save(oNode, oStream, SaveOptions(form));
    });
}

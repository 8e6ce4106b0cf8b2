// SPDX-License-Identifier: MIT
// Documents saved and loaded.
#include "c/vok_tree_document.h"

#include <string>

#include "c/convert.h"
#include "c/output.h"
#include "c/stream.h"
#include "vok/base/mem.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/file/buf.h"
#include "vok/file/rest.h"
#include "vok/json/json.h"
#include "vok/records/unwrapped.h"
#include "vok/zip/archive.h"

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

bool LooksLikeJson(File_Stream& oIn) {
    char s[64];
    const i3_t iStart = oIn.Tell();
    const std::size_t uSize = ReadUpTo(oIn, s, sizeof(s));
    oIn.Seek(iStart);
    return Json_CanLoad({s, uSize});
}

int32_t FormOf(File_Stream& oIn) {
    if (Data::CanLoad(oIn)) return VOK_TREE_DUMP;
    if (Dgraph_CanLoadDGraph(oIn)) return VOK_TREE_DGRAPH;
    return LooksLikeJson(oIn) ? VOK_TREE_JSON : VOK_TREE_XML;
}

void Read(Data& oTree, File_Stream& oIn, int32_t iForm, const Limits& oLimits,
          Load_Report& oReport) {
    int32_t iKind = iForm & c::FORM;
    if (iKind == VOK_TREE_ANY) iKind = FormOf(oIn);
    switch (iKind) {
        case VOK_TREE_DUMP: return oTree.Load(oIn, oLimits, &oReport);
        case VOK_TREE_DGRAPH: return Dgraph_LoadDGraph(oTree, oIn, oLimits, &oReport);
        case VOK_TREE_JSON: return Json_Load(oTree, oIn, oLimits, &oReport);
        default: (void)oTree.LoadFromXML(oIn, XmlFlags(iForm), oLimits, &oReport);
    }
}

// From a stream or from the file of a path.
template <class From>
void Load(Data& oNode, From& oFrom, int32_t iForm, const vok_tree_limits* pLimits,
          vok_tree_report* pReport) {
    Load_Report oReport;
    Data oTree;
    try {
        Unwrapped oDocument(oFrom, c::ToLimits(pLimits));
        Read(oTree, oDocument.In(), iForm, oDocument.GetLimits(), oReport);
        oReport.m_uBytesLeft = oDocument.Finish(oReport.m_uBytesLeft);
        if constexpr (std::is_same_v<From, c::HostStream>) {
            if (oDocument.GetWrapping() == dgraph::Wrapping::None) {
                oReport.m_uBytesLeft = std::max(oReport.m_uBytesLeft, oFrom.Left());
            }
            oFrom.GiveBack();
        }
    } catch (...) {
        c::SetIfWanted(pReport, c::ToC(oReport));
        c::KeepPlace(oReport);
        throw;
    }
    c::SetIfWanted(pReport, c::ToC(oReport));
    oTree.SetToRoot();
    oNode = std::move(oTree);
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

void Write(Data& oNode, File_Stream& oOut, int32_t iForm) {
    switch (iForm & c::FORM) {
        case VOK_TREE_XML:
            oNode.SaveToXML(oOut, (iForm & VOK_TREE_NO_DECLARATION) == 0 ? 1 : 0);
            break;
        case VOK_TREE_JSON:
            Json_Save(oNode, oOut,
                      (iForm & VOK_TREE_COMPACT) != 0 ? Json_Layout::Compact : Json_Layout::Lines);
            break;
        case VOK_TREE_DUMP: oNode.Dump(oOut); break;
        default: {
            dgraph::Version oVersion;
            if (!dgraph::ParseVersion(Text(oNode.GetUserTag().Data()), oVersion)) {
                Dgraph_SetVersion(oNode, 1, 3, 0);
            }
            Dgraph_SaveDGraph(oNode, oOut);
        }
    }
    oOut.Flush();
}

void Save(Data& oNode, c::Output& oOutput, int32_t iForm) {
    Write(oNode, oOutput.Stream(), iForm);
    oOutput.Close();
}

// "orders" for "data/orders.zip", with the ending of the form where there is none.
std::string MemberName(std::string_view sPath, int32_t iForm) {
    constexpr const char* ENDINGS[] = {"", ".xml", ".dgraph", ".json", ".dump"};
    sPath = sPath.substr(sPath.find_last_of(sys::PATH_SEPARATORS) + 1);
    if (sPath.ends_with(".zip")) sPath.remove_suffix(4);
    std::string sName(sPath.empty() ? "tree" : sPath);
    if (sName.find('.') == sName.npos) sName += ENDINGS[iForm & c::FORM];
    return sName;
}

void SaveArchive(Data& oNode, const char* sPath, int32_t iForm) {
    Zip_Archive oArchive(sPath, "w");
    oArchive.OpenNewFile(Str(std::string_view(MemberName(sPath, iForm))));
    Write(oNode, oArchive, iForm);
    oArchive.Close();
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

vok_tree_status vok_tree_save_file(vok_tree_node* node, const char* path, int32_t form) {
    return Call(__func__, [&] {
        Data& oNode = Tree(node);
        const char* const sPath = c::Path(path);
        CheckSaveForm(form);
        if ((form & c::WRAPPING) == VOK_TREE_ZIP) return SaveArchive(oNode, sPath, form);
        c::Output oOutput(sPath, form);
        Save(oNode, oOutput, form);
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
        c::Output oOutput(oBuf, form);
        Save(oNode, oOutput, form);
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
        c::Output oOutput(oStream, form);
        Save(oNode, oOutput, form);
    });
}

// SPDX-License-Identifier: MIT
#include <string>

#include "vok/base/where.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/document/document.h"
#include "vok/document/messages.h"
#include "vok/document/sink.h"
#include "vok/file/replacement.h"
#include "vok/json/json.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

void WriteForm(Data& oTree, File_Stream& oOut, const Document_SaveOptions& o) {
    switch (o.oFormat.eForm) {
        case Document_Form::Any: document::RaiseNoForm(nullptr);
        case Document_Form::Xml: return oTree.SaveToXML(oOut, o.bDeclaration ? 1 : 0);
        case Document_Form::Json:
            return Json_Save(oTree, oOut, o.bCompact ? Json_Layout::Compact : Json_Layout::Lines);
        case Document_Form::Dump:
            return oTree.Dump(
                oOut, o.bAttachable ? Data_DumpLayout::Attachable : Data_DumpLayout::Compact);
        case Document_Form::Dgraph: break;
    }
    dgraph::Version oVersion;
    const Str oTag = oTree.GetUserTag();
    if (!dgraph::ParseVersion(oTag.CStr(), oVersion)) {
        Dgraph_SetVersion(oTree, 1, 3, 0);
    }
    Dgraph_SaveDGraph(oTree, oOut);
}

// "orders.xml" for "data/orders.zip" and for "data/orders.xml.zip".
Str MemberName(std::string_view sPath, Document_Form eForm) {
    sPath = sPath.substr(sPath.find_last_of(sys::PATH_SEPARATORS) + 1);
    if (Document_FormatNamed(sPath).eWrapping == Zip_Wrapping::Zip) sPath.remove_suffix(4);
    std::string sName(sPath.empty() ? "tree" : sPath);
    if (Document_FormatNamed(sName).eForm == Document_Form::Any) {
        sName += '.';
        sName += Document_FormName(eForm);
    }
    return Str(std::string_view(sName));
}

}  // namespace

void Document_Save(Data oTree, File_Stream& oOut, const Document_SaveOptions& o) {
    return Where("vok::Document_Save", [&] {
        if (o.oFormat.eForm == Document_Form::Any) document::RaiseNoForm(nullptr);
        Document_Sink oSink(oOut, o.oFormat.eWrapping);
        WriteForm(oTree, oSink.Stream(), o);
        oSink.Close();
    });
}

void Document_Save(Data oTree, const Str& oPath, const Document_SaveOptions& oOptions) {
    return Where("vok::Document_Save", [&] {
        Document_SaveOptions o = oOptions;
        if (o.oFormat.eForm == Document_Form::Any) o.oFormat = Document_FormatNamed(oPath.View());
        if (o.oFormat.eForm == Document_Form::Any) document::RaiseNoForm(oPath.CStr());
        const Str oMember =
            o.oMember.IsEmpty() ? MemberName(oPath.View(), o.oFormat.eForm) : o.oMember;
        File_Replacement oFile(oPath);
        Document_Sink oSink(oFile.GetFile(), o.oFormat.eWrapping, oMember);
        WriteForm(oTree, oSink.Stream(), o);
        oSink.Close();
        oFile.Commit(o.bDurable);
    });
}

}  // namespace vok

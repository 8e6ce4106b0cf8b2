// SPDX-License-Identifier: MIT
#include <utility>

#include "vok/base/where.h"
#include "vok/dgraph/dgraph.h"
#include "vok/document/document.h"
#include "vok/json/json.h"
#include "vok/records/unwrapped.h"

namespace vok {

namespace {

void LoadForm(Data& oTree, File_Stream& oIn, Document_Form eForm, u2_t uXmlFlags,
              const Limits& oLimits, Load_Report& oReport) {
    switch (eForm) {
        case Document_Form::Dump: return oTree.Load(oIn, oLimits, &oReport);
        case Document_Form::Dgraph: return Dgraph_LoadDGraph(oTree, oIn, oLimits, &oReport);
        case Document_Form::Json: return Json_Load(oTree, oIn, oLimits, &oReport);
        default: (void)oTree.LoadFromXML(oIn, uXmlFlags, oLimits, &oReport);
    }
}

// From the plain bytes into a tree of its own.
Document_Form LoadAside(Data& oTree, File_Stream& oIn, const Document_LoadOptions& o,
                        const Limits& oLimits, Load_Report& oReport) {
    const Document_Form eForm = o.eForm == Document_Form::Any ? Document_FormOf(oIn) : o.eForm;
    LoadForm(oTree, oIn, eForm, o.uXmlFlags, oLimits, oReport);
    oTree.SetToRoot();
    return eForm;
}

// Hands oBody a report, whether the caller has one or not, and an empty tree, which becomes the
// caller's where that succeeds.
template <class F>
auto Replacing(Data& oTree, Load_Report* pReport, F&& oBody) {
    Load_Report oOwn;
    Load_Report& oReport = pReport != nullptr ? *pReport : oOwn;
    oReport = {};
    Data oNew;
    const auto oResult = oBody(oNew, oReport);
    oTree = std::move(oNew);
    return oResult;
}

// A stream or a path.
template <class From>
Document_Format LoadWrapped(Data& oTree, From& oFrom, const Document_LoadOptions& o,
                            Load_Report* pReport) {
    return Replacing(oTree, pReport, [&](Data& oNew, Load_Report& oReport) -> Document_Format {
        Unwrapped oDocument(oFrom, o.oLimits);
        const Document_Form eForm =
            LoadAside(oNew, oDocument.In(), o, oDocument.GetLimits(), oReport);
        oReport.m_uBytesLeft = oDocument.Finish(oReport.m_uBytesLeft);
        return {eForm, oDocument.GetWrapping()};
    });
}

}  // namespace

Document_Form Document_LoadPlain(Data& oTree, File_Stream& oIn, const Document_LoadOptions& o,
                                 Load_Report* pReport) {
    return Where("vok::Document_LoadPlain", [&] {
        return Replacing(oTree, pReport, [&](Data& oNew, Load_Report& oReport) {
            return LoadAside(oNew, oIn, o, o.oLimits, oReport);
        });
    });
}

Document_Format Document_Load(Data& oTree, File_Stream& oIn, const Document_LoadOptions& o,
                              Load_Report* pReport) {
    return Where("vok::Document_Load", [&] { return LoadWrapped(oTree, oIn, o, pReport); });
}

Document_Format Document_Load(Data& oTree, const Str& oPath, const Document_LoadOptions& o,
                              Load_Report* pReport) {
    return Where("vok::Document_Load", [&] { return LoadWrapped(oTree, oPath, o, pReport); });
}

}  // namespace vok

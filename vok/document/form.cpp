// SPDX-License-Identifier: MIT
// Telling forms apart: by names, and by the first bytes.
#include <algorithm>
#include <string>

#include "vok/base/where.h"
#include "vok/dgraph/container.h"
#include "vok/document/document.h"
#include "vok/file/rest.h"
#include "vok/json/json.h"
#include "vok/sys/sys.h"

namespace vok {

namespace {

struct Ending {
    std::string_view sEnding;
    Document_Form eForm;
};
constexpr Ending ENDINGS[] = {{".xml", Document_Form::Xml},
                              {".dgraph", Document_Form::Dgraph},
                              {".dg", Document_Form::Dgraph},
                              {".json", Document_Form::Json},
                              {".dump", Document_Form::Dump}};
constexpr const char* NAMES[] = {"", "xml", "dgraph", "json", "dump"};

// Removes an ending that is there, in lower case.
bool TakeEnding(std::string& sName, std::string_view sEnding) {
    if (!sName.ends_with(sEnding)) return false;
    sName.resize(sName.size() - sEnding.size());
    return true;
}

}  // namespace

const char* Document_FormName(Document_Form eForm) noexcept {
    return NAMES[static_cast<std::size_t>(eForm)];
}

Document_Form Document_FormNamed(std::string_view sName) noexcept {
    const auto* p = std::find(std::begin(NAMES), std::end(NAMES), sName);
    return p != std::end(NAMES) ? static_cast<Document_Form>(p - NAMES) : Document_Form::Any;
}

Document_Format Document_FormatNamed(std::string_view sPath) {
    std::string sName(sPath.substr(sPath.find_last_of(sys::PATH_SEPARATORS) + 1));
    for (char& c : sName) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    Document_Format o;
    if (TakeEnding(sName, ".gz")) {
        o.eWrapping = Zip_Wrapping::Gzip;
    } else if (TakeEnding(sName, ".zip")) {
        o.eWrapping = Zip_Wrapping::Zip;
    }
    for (const Ending& oEnding : ENDINGS) {
        if (TakeEnding(sName, oEnding.sEnding)) o.eForm = oEnding.eForm;
    }
    return o;
}

Document_Form Document_FormOf(File_Stream& oIn) {
    return Where("vok::Document_FormOf", [&] {
        if (Data::CanLoad(oIn)) return Document_Form::Dump;
        if (Dgraph_CanLoadDGraph(oIn)) return Document_Form::Dgraph;
        // Blanks may come first, of which nobody writes more.
        char s[4096];
        const i3_t iStart = oIn.Tell();
        const std::size_t uSize = ReadUpTo(oIn, s, sizeof(s));
        oIn.Seek(iStart);
        return Json_CanLoad({s, uSize}) ? Document_Form::Json : Document_Form::Xml;
    });
}

}  // namespace vok

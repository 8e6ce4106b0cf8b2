// vok convert: from one form to another.
#include <array>
#include <stdexcept>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/path.h"
#include "tools/progress.h"
#include "vok/base/msg.h"
#include "vok/dgraph/dgraph.h"
#include "vok/zip/archive.h"
#include "vok/zip/stream.h"

namespace tools {

namespace {

// The form that a name asks for by its ending; empty when none does.
std::string FormatOfName(const std::string& sName) {
    const std::string sEnding = ToText(ToPath(sName).extension());
    if (sEnding == ".xml") return "xml";
    if (sEnding == ".dgraph" || sEnding == ".dg") return "dgraph";
    if (sEnding == ".dump") return "dump";
    return {};
}

// "1.2.0" as three numbers.
std::array<int, 3> ParseVersion(const std::string& sVersion) {
    std::array<int, 3> ai{};
    if (std::sscanf(sVersion.c_str(), "%d.%d.%d", &ai[0], &ai[1], &ai[2]) != 3) {
        throw std::invalid_argument("\"" + sVersion + "\" is no version such as 1.2.0");
    }
    return ai;
}

void Save(vok::Data& oTree, const std::string& sFormat, const std::string& sVersion,
          vok::File_Stream& oOut) {
    if (sFormat == "xml") return oTree.SaveToXML(oOut);
    if (sFormat == "dump") return oTree.Dump(oOut);
    const auto [iMajor, iMinor, iPatch] = ParseVersion(sVersion);
    vok::Dgraph_SetVersion(oTree, iMajor, iMinor, iPatch);
    vok::Dgraph_SaveDGraph(oTree, oOut);
}

// Writes an archive of one member, named like the archive but for its ending.
void SaveZipped(vok::Data& oTree, const std::string& sFormat, const ConvertOptions& o) {
    if (o.sOut == "-") throw std::invalid_argument("a zip archive needs a file, not \"-\"");
    const std::string sStem = ToText(ToPath(o.sOut).stem());
    const std::string sMember = FormatOfName(sStem).empty() ? sStem + '.' + sFormat : sStem;
    Output oFile(o.sOut, false);
    vok::Zip_Archive oArchive(vok::Str(oFile.Beside()), "w");
    oArchive.OpenNewFile(vok::Str(sMember));
    Save(oTree, sFormat, o.sVersion, oArchive);
    oArchive.Close();
    oFile.Commit();
}

}  // namespace

int Convert(const ConvertOptions& o) {
    const std::string sFormat = o.sTo.empty() ? FormatOfName(o.sOut) : o.sTo;
    if (sFormat.empty()) {
        throw std::invalid_argument("\"" + o.sOut +
                                    "\" does not tell a format by its ending (.xml, .dgraph, "
                                    ".dump): name one with --to");
    }
    Input oIn = Load(o.sIn, o.sFrom);
    oIn.oTree.SetToRoot();
    Progress oProgress("writing");
    if (o.bZip) {
        SaveZipped(oIn.oTree, sFormat, o);
        return EXIT_GOOD;
    }
    Output oFile(o.sOut);
    if (o.bCompress) {
        vok::Zip_Stream oPacked(oFile.Stream(), "w");
        Save(oIn.oTree, sFormat, o.sVersion, oPacked);
        oPacked.Close();
    } else {
        Save(oIn.oTree, sFormat, o.sVersion, oFile.Stream());
    }
    oFile.Commit();
    return EXIT_GOOD;
}

}  // namespace tools

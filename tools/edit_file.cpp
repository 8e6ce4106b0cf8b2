// SPDX-License-Identifier: MIT
// vok set, add, delete, move, rename, edit: documents changed.
#include <stdexcept>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/say.h"
#include "tools/tree_file.h"
#include "vok/dgraph/format.h"

namespace tools {

namespace {

// How the changed tree is written: as the file was, unless another form is asked for.
FileForm FormFor(const EditOptions& o, const Input& oIn) {
    const Endings oEndings = EndingsOf(o.sOut);
    if (!o.sTo.empty() || !oEndings.sFormat.empty()) return FormOf(o.sOut, o.sTo);
    FileForm oForm;
    oForm.sFormat = oIn.sFormat;
    oForm.eWrapping = o.bInPlace ? oIn.eWrapping : oEndings.eWrapping;
    vok::dgraph::Version oVersion;
    if (vok::dgraph::ParseVersion(oIn.oTree.GetUserTag().CStr(), oVersion)) {
        oForm.auVersion = {static_cast<int>(oVersion.iMajor), oVersion.iMinor, oVersion.iPatch};
    }
    return oForm;
}

}  // namespace

int EditFile(const EditOptions& o) {
    if (!o.bInPlace && o.sOut.empty()) {
        throw std::invalid_argument(Say("say where it goes: -o FILE, or -i for the file itself"));
    }
    if (o.bInPlace && o.sFile == "-") {
        throw std::invalid_argument(
            Say("standard input cannot be written: say -o - instead of -i"));
    }
    Input oIn = Load(o.sFile);
    oIn.oTree.SetToRoot();
    const FileForm oForm = FormFor(o, oIn);
    if (oForm.sFormat == "csv") {
        throw std::invalid_argument(
            Say("a csv file is not written: name another form with --to, or a file of one"));
    }
    try {
        for (const Edit& oEdit : o.aoEdit) Apply(oEdit, oIn.oTree);
    } catch (const NothingThere&) {
        return EXIT_NEGATIVE;
    }
    oIn.oTree.Shrink();
    LossCount oLosses(oForm.Keeps(), oForm.auVersion[1]);
    if (oForm.Keeps() != "dump") CountTree(oIn.oTree, oLosses);
    TellLosses(o.sFile, oIn.oReport, oIn.sBehind, oLosses, o.bLossless);
    WriteFile(o.bInPlace ? o.sFile : o.sOut, oForm, true,
              [&](vok::File_Stream& oOut) { WriteTree(oIn.oTree, oForm, oOut); });
    return EXIT_GOOD;
}

}  // namespace tools

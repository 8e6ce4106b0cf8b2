// SPDX-License-Identifier: MIT
#include "vok/document/messages.h"

#include "vok/base/msg_entry.h"

namespace vok::document {

void RaiseArchiveNeedsFile() {
    Msg_Entry::Raise({"a zip archive needs a file", "Ein Zip-Archiv braucht eine Datei"});
}

void RaiseNoForm(const char* sName) {
    if (sName == nullptr) {
        Msg_Entry::Raise(
            {"the form of a document is not told", "Die Form eines Dokuments ist nicht angegeben"});
    }
    Msg_Entry::Raise({"\"%0\" does not tell the form of a document by its ending",
                      "\"%0\" sagt mit seiner Endung nicht die Form eines Dokuments"},
                     {Msg_Arg(sName)});
}

}  // namespace vok::document

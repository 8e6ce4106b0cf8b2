// SPDX-License-Identifier: MIT
#include "vok/inspect/messages.h"

#include "vok/base/msg_entry.h"

namespace vok::inspect {

namespace {

// In the order of Fault.
constexpr Msg_Text FAULTS[] = {
    {"", ""},
    {"the bytes end here", "die Bytes enden hier"},
    {"neither a DGraph document nor a native dump",
     "weder ein DGraph-Dokument noch ein natives Abbild"},
    {"not the magic of a DGraph document", "nicht die Kennung eines DGraph-Dokuments"},
    {"a version that is not known", "eine unbekannte Version"},
    {"a negative length", "eine negative Länge"},
    {"longer than the limit on text bytes", "länger als die Grenze für Textbytes"},
    {"more than the bytes that are left", "mehr als die Bytes, die noch da sind"},
    {"a step without a text", "ein Schritt ohne Text"},
    {"a step with a NUL in it", "ein Schritt mit einem NUL darin"},
    {"a node with this index was there before", "ein Knoten mit diesem Index war schon da"},
    {"deeper than the limit on depth", "tiefer als die Grenze für die Tiefe"},
    {"more successors than the bytes that are left can be",
     "mehr Nachfolger, als die übrigen Bytes sein können"},
    {"a link without a target", "ein Verweis ohne Ziel"},
    {"readers take it for four words and lose their place",
     "Leser halten es für vier Wörter und finden nicht weiter"},
    {"records are missing", "Datensätze fehlen"},
    {"bytes behind the document", "Bytes hinter dem Dokument"},
    {"the compressed bytes are damaged", "die komprimierten Bytes sind beschädigt"},
    {"another checksum than that of the bytes", "eine andere Prüfsumme als die der Bytes"},
    {"another size than that of the bytes", "eine andere Größe als die der Bytes"},
    {"not a header of this kind", "kein Kopf dieser Art"},
    {"a method that is not known", "ein unbekanntes Verfahren"},
    {"the text has no end", "der Text hat kein Ende"},
    {"not a whole number of records", "keine ganze Zahl von Datensätzen"},
};

}  // namespace

const char* TextOf(Fault eFault) noexcept {
    return Msg_Entry::Text(FAULTS[static_cast<int>(eFault)]);
}

}  // namespace vok::inspect

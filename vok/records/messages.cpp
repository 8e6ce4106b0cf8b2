// SPDX-License-Identifier: MIT
#include "vok/records/messages.h"

#include "vok/base/msg_entry.h"
#include "vok/base/str.h"

namespace vok::records {

void RaisePathNeedsTree(const char* sPath) {
    Msg_Entry::Raise({"path \"%0\" needs the whole tree", "Pfad \"%0\" braucht den ganzen Baum"},
                     {Msg_Arg(sPath)});
}

void RaiseDump() {
    Msg_Entry::Raise({"a native dump cannot be read record by record",
                      "Ein natives Abbild kann nicht Satz für Satz gelesen werden"});
}

void RaiseArchiveInStream() {
    Msg_Entry::Raise({"a zip archive is read from a file or from memory only",
                      "Ein Zip-Archiv wird nur aus einer Datei oder dem Speicher gelesen"});
}

void RaiseOutOfOrder(std::string_view sBefore, std::string_view sName) {
    Msg_Entry::Raise({"names out of order: \"%1\" behind \"%0\"",
                      "Namen nicht in Reihenfolge: \"%1\" nach \"%0\""},
                     {Msg_Arg(Str(sBefore).CStr()), Msg_Arg(Str(sName).CStr())});
}

void RaiseNoNode() {
    Msg_Entry::Raise({"no node is open", "Kein Knoten ist offen"});
}

void RaiseHasValue(std::string_view sName) {
    Msg_Entry::Raise({"node \"%0\" has its value or successors already",
                      "Knoten \"%0\" hat schon seinen Wert oder Nachfolger"},
                     {Msg_Arg(Str(sName).CStr())});
}

void RaiseLateAttribute(std::string_view sName) {
    Msg_Entry::Raise({"attributes of node \"%0\" come before its value and its successors",
                      "Attribute von Knoten \"%0\" kommen vor seinem Wert und seinen Nachfolgern"},
                     {Msg_Arg(Str(sName).CStr())});
}

void RaiseComplete() {
    Msg_Entry::Raise({"the document is complete", "Das Dokument ist vollständig"});
}

void RaiseStillOpen(std::string_view sName) {
    Msg_Entry::Raise({"node \"%0\" is still open", "Knoten \"%0\" ist noch offen"},
                     {Msg_Arg(Str(sName).CStr())});
}

void RaiseWrongCount(std::string_view sName, u2_t uHas, u2_t uTold) {
    Msg_Entry::Raise({"node \"%0\" has %1 successors, not %2 as was told",
                      "Knoten \"%0\" hat %1 Nachfolger, nicht %2 wie angegeben"},
                     {Msg_Arg(Str(sName).CStr()), Msg_Arg(uHas), Msg_Arg(uTold)});
}

void RaiseCountNeeded() {
    Msg_Entry::Raise(
        {"the number of successors has to be told when a node is opened: the stream "
         "cannot seek",
         "Die Zahl der Nachfolger muss beim Öffnen eines Knotens angegeben werden: der "
         "Datenstrom kann nicht positioniert werden"});
}

void RaiseUnknownTarget(std::string_view sPath) {
    Msg_Entry::Raise({"link to \"%0\", which was not announced",
                      "Verweis auf \"%0\", der nicht angekündigt war"},
                     {Msg_Arg(Str(sPath).CStr())});
}

}  // namespace vok::records

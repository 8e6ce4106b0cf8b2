// SPDX-License-Identifier: MIT
#include "vok/compare/messages.h"

#include "vok/base/msg_entry.h"

namespace vok::detail {

void RaiseKeyIsNoPath(const char* sKey) {
    Msg_Entry::Raise({"key \"%0\" is no path of names", "Schlüssel \"%0\" ist kein Pfad aus Namen"},
                     {Msg_Arg(sKey)});
}

void RaiseNoPatch(const char* sPath) {
    Msg_Entry::Raise(
        {"no patch: \"%0\" does not belong there", "kein Flicken: \"%0\" gehört nicht dorthin"},
        {Msg_Arg(sPath)});
}

void RaiseOtherName(const char* sExpected, const char* sActual) {
    Msg_Entry::Raise({"patch does not fit at \"/\": name \"%0\" expected, but it is \"%1\"",
                      "Flicken passt nicht bei \"/\": Name \"%0\" erwartet, es ist aber \"%1\""},
                     {Msg_Arg(sExpected), Msg_Arg(sActual)});
}

void RaiseNoNode(const char* sPath) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": there is no such node",
                      "Flicken passt nicht bei \"%0\": dort ist kein Knoten"},
                     {Msg_Arg(sPath)});
}

void RaiseOtherType(const char* sPath, const char* sExpected, const char* sActual) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": type '%1' expected, but it is '%2'",
                      "Flicken passt nicht bei \"%0\": Typ '%1' erwartet, es ist aber '%2'"},
                     {Msg_Arg(sPath), Msg_Arg(sExpected), Msg_Arg(sActual)});
}

void RaiseOtherValue(const char* sPath) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": the value is another",
                      "Flicken passt nicht bei \"%0\": der Wert ist ein anderer"},
                     {Msg_Arg(sPath)});
}

void RaiseOtherAttribute(const char* sPath, const char* sName) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": attribute \"%1\" is another",
                      "Flicken passt nicht bei \"%0\": Attribut \"%1\" ist ein anderes"},
                     {Msg_Arg(sPath), Msg_Arg(sName)});
}

void RaiseOtherSubtree(const char* sPath) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": what it removes is another",
                      "Flicken passt nicht bei \"%0\": was er entfernt, ist ein anderes"},
                     {Msg_Arg(sPath)});
}

void RaiseOtherCount(const char* sPath) {
    Msg_Entry::Raise({"patch does not fit at \"%0\": there are fewer or more nodes in front of it",
                      "Flicken passt nicht bei \"%0\": davor sind weniger oder mehr Knoten"},
                     {Msg_Arg(sPath)});
}

}  // namespace vok::detail

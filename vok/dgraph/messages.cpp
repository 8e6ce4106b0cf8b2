// SPDX-License-Identifier: MIT
#include "vok/dgraph/messages.h"

#include <cstdio>

#include "vok/base/msg_entry.h"

namespace vok::dgraph {

namespace {

// In the order of StepFault.
constexpr Msg_Text STEP_FAULTS[] = {
    {"", ""},
    {"Empty Path not allowed", "Leerer Pfad ist nicht erlaubt"},
    {"Path begins with '/'", "Pfad beginnt mit '/'"},
    {"Path begins with '.'", "Pfad beginnt mit '.'"},
    {"No index specified", "Kein Index angegeben"},
    {"Missing ']' after index", "']' fehlt nach dem Index"},
    {"Attribute name must begin with '@'", "Attributname muss mit '@' beginnen"},
    {"Empty attribute name not allowed", "Leerer Attributname ist nicht erlaubt"},
    {"No value for attribute specified", "Kein Wert für das Attribut angegeben"},
    {"Missing beginning quote for attribue value",
     "Öffnendes Anführungszeichen für Attributwert fehlt"},
    {"Missing end quote for attribue value",
     "Schließendes Anführungszeichen für Attributwert fehlt"},
    {"Missing ']' after attribute", "']' fehlt nach dem Attribut"},
};

}  // namespace

void RaiseNoDGraph() {
    Msg_Entry::Raise({"No DGraph!", "Kein DGraph!"});
}

void RaiseWrongVersion() {
    Msg_Entry::Raise({"Binary DGraph buffer has the wrong version!",
                      "Binärer DGraph-Puffer hat die falsche Version!"});
}

void RaiseNoBinaryDGraph() {
    Msg_Entry::Raise({"No binary DGraph buffer!", "Kein binärer DGraph-Puffer!"});
}

void RaiseEmptyNodePath() {
    Msg_Entry::Raise(
        {"Dgraph_LoadDGraph: Input stream is corrupted! Empty path for node read.",
         "Dgraph_LoadDGraph: Eingabedatenstrom ist beschädigt! Leerer Pfad für Knoten gelesen."});
}

void RaiseNegativeLength() {
    Msg_Entry::Raise(
        {"Dgraph_LoadDGraph: Input stream is corrupted! Negative length read.",
         "Dgraph_LoadDGraph: Eingabedatenstrom ist beschädigt! Negative Länge gelesen."});
}

void RaiseEmptyTargetName() {
    Msg_Entry::Raise(
        {"Dgraph_LoadDGraph: Input stream is corrupted! Empty type for refferred node read.",
         "Dgraph_LoadDGraph: Eingabedatenstrom ist beschädigt! Leerer Typ für den Zielknoten eines "
         "Verweises gelesen."});
}

void RaiseEmptyTargetPath() {
    Msg_Entry::Raise(
        {"Dgraph_LoadDGraph: Input stream is corrupted! Empty path for refferred node read.",
         "Dgraph_LoadDGraph: Eingabedatenstrom ist beschädigt! Leerer Pfad für den Zielknoten "
         "eines Verweises gelesen."});
}

void RaiseElementExists() {
    Msg_Entry::Raise({"CreateChild failed, element already exists",
                      "CreateChild fehlgeschlagen, Element existiert bereits"});
}

void RaiseTargetMissing() {
    Msg_Entry::Raise({"Dgraph_LoadDGraph: referenced node points to nothing.",
                      "Dgraph_LoadDGraph: Verweis zeigt auf keinen Knoten."});
}

void RaiseTargetNotUnique() {
    Msg_Entry::Raise({"Dgraph_LoadDGraph: referenced node is not unique.",
                      "Dgraph_LoadDGraph: Ziel des Verweises ist nicht eindeutig."});
}

void RaiseEmptyAttributeName() {
    Msg_Entry::Raise(
        {"Empty attribute name not allowed", "Leerer Attribut-Nname ist nicht erlaubt"});
}

void RaiseInvalidAttributeCharacter(char c) {
    Msg_Entry::Raise({"The attribute name contains the invalid character '%0'",
                      "Der Buchstabe '%0' ist im Attribut-Namen nicht erlaubt"},
                     {Msg_Arg::Char(static_cast<u0_t>(c))});
}

void RaiseEmptyNodeType() {
    Msg_Entry::Raise({"Empty node type is not allowed", "Leerer Knoten-Typ ist nicht erlaubt"});
}

void RaiseReservedNodeType(const char* sName) {
    Msg_Entry::Raise({"invalid type specification \"%0\"", "Unerlaubter Knoten-Typ \"%0\""},
                     {sName});
}

void RaiseInvalidNodeTypeCharacter(char c) {
    Msg_Entry::Raise({"The node type contains the invalid character '%0'",
                      "Der Buchstabe '%0' ist im Knoten-Typ nicht erlaubt"},
                     {Msg_Arg::Char(static_cast<u0_t>(c))});
}

void RaiseInvalidStep(StepFault eFault) {
    const Msg_Text& oFault = STEP_FAULTS[static_cast<int>(eFault)];
    // The argument stands in the language of the text around it.
    struct Pair {
        char sEnglish[160];
        char sGerman[160];
    } oPair;
    std::snprintf(oPair.sEnglish, sizeof(oPair.sEnglish),
                  "Dgraph_LoadDGraph: Invalid path specification! %s", oFault.m_sEnglish);
    std::snprintf(oPair.sGerman, sizeof(oPair.sGerman),
                  "Dgraph_LoadDGraph: Ungültige Pfadangabe! %s", oFault.m_sGerman);
    Msg_Entry::Raise({oPair.sEnglish, oPair.sGerman});
}

const char* TextOf(StepFault eFault) noexcept {
    return Msg_Entry::Text(STEP_FAULTS[static_cast<int>(eFault)]);
}

}  // namespace vok::dgraph

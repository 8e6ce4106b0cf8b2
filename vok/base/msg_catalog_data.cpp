// SPDX-License-Identifier: MIT
// The catalog entries about nodes, paths, characters and XML.
#include "vok/base/msg_catalog.h"
#include "vok/base/msg_entry.h"

namespace vok {

// ---- nodes -----------------------------------------------------------------

void Msg_Catalog::NodeIsEmpty() {
    Msg_Entry::Raise({"node is empty", "Knoten ist leer"});
}

void Msg_Catalog::NodeIsNotUnique() {
    Msg_Entry::Raise({"node is not unique", "Knoten ist nicht eindeutig"});
}

void Msg_Catalog::NodeAlreadyExists() {
    Msg_Entry::Raise({"node already exists", "Knoten ist schon vorhanden"});
}

void Msg_Catalog::NodeHasNoPredecessor() {
    Msg_Entry::Raise({"node has no predecessor", "Knoten hat keinen Vorgänger"});
}

void Msg_Catalog::NodeHasNotSuccessors(u3_t uNth) {
    Msg_Entry::Raise({"node has not %1 successors", "Knoten hat keine %1 Nachfolger"},
                     {nullptr, uNth});
}

void Msg_Catalog::NodeHasNoSuccessorNamed(const char* sName) {
    Msg_Entry::Raise(
        {"node has no successor named \"%0\"", "Knoten hat keinen Nachfolger namens \"%0\""},
        {sName});
}

void Msg_Catalog::NodeHasNotSuccessorsNamed(const char* sName, u3_t uNth) {
    Msg_Entry::Raise(
        {"node has not %1 successors named \"%0\"", "Knoten hat keine %1 Nachfolger namens \"%0\""},
        {sName, uNth});
}

void Msg_Catalog::NodeNotFoundInConfiguration(const char* sNode, const char* sPrefix) {
    Msg_Entry::Raise({"%1Node \"%0\" not found in configuration",
                      "%1Knoten \"%0\" nicht in der Konfiguration gefunden"},
                     {sNode, sPrefix});
}

void Msg_Catalog::TryToAccessDeletedNode() {
    Msg_Entry::Raise(
        {"try to access deleted node", "Versuch, auf einen gelöschten Knoten zuzugreifen"});
}

void Msg_Catalog::CannotLinkWithOuterStructure() {
    Msg_Entry::Raise(
        {"cannot link with outer structure", "Verknüpfung mit äußerer Struktur nicht möglich"});
}

void Msg_Catalog::DataStructureNotInAccessMode() {
    Msg_Entry::Raise(
        {"data structure not in access mode", "Datenstruktur ist nicht im Zugriffsmodus"});
}

// ---- types of values -------------------------------------------------------

void Msg_Catalog::NodeWithWrongDataTypeExpected(const char* sName, const char* sActual,
                                                const char* sExpected) {
    Msg_Entry::Raise({"node \"%0\" with wrong data type: '%2' expected but got '%1'",
                      "Knoten \"%0\" mit falschem Datentyp: '%2' erwartet, aber '%1' erhalten"},
                     {sName, sActual, sExpected});
}

void Msg_Catalog::NodeWithWrongDataType(const char* sName, const char* sType) {
    Msg_Entry::Raise(
        {"node \"%0\" with wrong data type: '%1'", "Knoten \"%0\" mit falschem Datentyp: '%1'"},
        {sName, sType});
}

void Msg_Catalog::WithWrongDataType(const char* sName) {
    Msg_Entry::Raise({"\"%0\" with wrong data type", "\"%0\" mit falschem Datentyp"}, {sName});
}

// ---- paths -----------------------------------------------------------------

void Msg_Catalog::EmptyPathNotAllowed() {
    Msg_Entry::Raise({"empty path not allowed", "leerer Pfad ist nicht erlaubt"});
}

void Msg_Catalog::EmptyXpathNotAllowed() {
    Msg_Entry::Raise({"empty xpath not allowed", "leerer XPath ist nicht erlaubt"});
}

void Msg_Catalog::EmptyAttributeNameInXpath() {
    Msg_Entry::Raise({"empty attribute name in xpath not allowed",
                      "leerer Attributname in XPath ist nicht erlaubt"});
}

void Msg_Catalog::UnallowedAttribute(const char* sName) {
    Msg_Entry::Raise({"unallowed attribute \"%0\"", "unerlaubtes Attribut \"%0\""}, {sName});
}

// ---- dumps -----------------------------------------------------------------

void Msg_Catalog::BinaryDataIsNotADump(const char* sObject) {
    Msg_Entry::Raise({"binary data is not a dump of object \"%0\"",
                      "Binärdaten sind kein Abzug des Objekts \"%0\""},
                     {sObject});
}

void Msg_Catalog::BinaryDataIsADumpOfAnInvalidObject(const char* sObject) {
    Msg_Entry::Raise({"binary data is a dump of an invalid object \"%0\"",
                      "Binärdaten sind der Abzug eines ungültigen Objekts \"%0\""},
                     {sObject});
}

void Msg_Catalog::BinaryDataWrongVersion(const char* sObject, u2_t uVersion, u2_t uExpected) {
    Msg_Entry::Raise(
        {"binary data of object \"%0\" have wrong version %2, expected %1",
         "Binärdaten des Objekts \"%0\" haben die falsche Version %2, erwartet wird %1"},
        {sObject, uExpected, uVersion});
}

void Msg_Catalog::BinaryDataWrongVersions(const char* sObject, u2_t uLibraryVersion, u2_t uVersion,
                                          u2_t uExpectedLibraryVersion, u2_t uExpectedVersion) {
    Msg_Entry::Raise(
        {"binary data of object \"%0\" have wrong version %1-%2, expected %3-%4",
         "Binärdaten des Objekts \"%0\" haben die falsche Version %1-%2, erwartet wird %3-%4"},
        {sObject, uLibraryVersion, uVersion, uExpectedLibraryVersion, uExpectedVersion});
}

// ---- XML -------------------------------------------------------------------

void Msg_Catalog::NoXmlStream() {
    Msg_Entry::Raise({"no XML stream or stream is corrupted",
                      "kein XML-Datenstrom, oder der Datenstrom ist beschädigt"});
}

void Msg_Catalog::UnknownXmlSequence(const char* sSequence) {
    Msg_Entry::Raise({"unknown xml sequene \"%0\"", "unbekannte XML-Folge \"%0\""}, {sSequence});
}

void Msg_Catalog::MissingCharInXmlStream(u2_t uChar) {
    Msg_Entry::Raise(
        {"missing char '%0' in XML stream", "fehlendes Zeichen '%0' in XML-Datenstrom"},
        {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::MissingHeaderForBinaryData() {
    Msg_Entry::Raise({"missing header for binary data in XML string",
                      "fehlender Vorspann der Binärdaten in XML-Text"});
}

void Msg_Catalog::InvalidXtoken(const char* sToken) {
    Msg_Entry::Raise({"invalid xtoken %0", "ungültiges Xtoken %0"}, {sToken});
}

// ---- characters ------------------------------------------------------------

void Msg_Catalog::InvalidCharacter(u2_t uChar) {
    Msg_Entry::Raise({"invalid character '%0'", "ungültiges Zeichen '%0'"}, {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::InvalidCharacterAfter(u2_t uChar, u2_t uAfter) {
    Msg_Entry::Raise({"invalid character '%0' after '%1'", "ungültiges Zeichen '%0' nach '%1'"},
                     {Msg_Arg::Char(uChar), Msg_Arg::Char(uAfter)});
}

void Msg_Catalog::UnexpectedCharacter(u2_t uChar) {
    Msg_Entry::Raise({"unexpected character '%0'", "unerwartetes Zeichen '%0'"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::CharacterExpectedAfter(u2_t uChar, u2_t uAfter) {
    Msg_Entry::Raise({"character '%0' expected after '%1'", "Zeichen '%0' nach '%1' erwartet"},
                     {Msg_Arg::Char(uChar), Msg_Arg::Char(uAfter)});
}

void Msg_Catalog::MissingCharInString(u2_t uChar) {
    Msg_Entry::Raise({"missing char '%0' in string", "fehlendes Zeichen '%0' in Zeichenkette"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::OpeningBracketWithoutClosing(u2_t uChar) {
    Msg_Entry::Raise({"opening bracket '%0' used without corresponding closing bracket",
                      "öffnende Klammer '%0' ohne zugehörige schließende Klammer"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::ClosingBracketWithoutOpening(u2_t uChar) {
    Msg_Entry::Raise({"closing bracket '%0' used without corresponding opening bracket",
                      "schließende Klammer '%0' ohne zugehörige öffnende Klammer"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::UnknownConversionLetter(u2_t uChar) {
    Msg_Entry::Raise({"unknown conversion letter '%0'", "unbekannter Umwandlungsbuchstabe '%0'"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::UnknownEscapeSequence(const char* sSequence) {
    Msg_Entry::Raise({"unknown escape sequence '%0'", "unbekannte Escape-Folge '%0'"}, {sSequence});
}

void Msg_Catalog::UnknownStringModeDescriptor(u3_t uDescriptor) {
    Msg_Entry::Raise(
        {"unknown string mode descriptor %0", "unbekannter Deskriptor des Zeichenkettenmodus %0"},
        {uDescriptor});
}

// ---- Unicode ---------------------------------------------------------------

void Msg_Catalog::InvalidUnicode(const char* sText) {
    Msg_Entry::Raise({"invalid unicode: \"%0\"", "ungültiger Unicode-Text: \"%0\""}, {sText});
}

void Msg_Catalog::UnexpectedNonUtfSequenceFound() {
    Msg_Entry::Report({"unexpected non utf sequence found!",
                       "unerwartete Bytefolge gefunden, die kein UTF ist!"});
}

void Msg_Catalog::UnknownCharacterCoding(const char* sCoding) {
    Msg_Entry::Raise({"unknown character coding: \"%0\"", "unbekannte Zeichenkodierung: \"%0\""},
                     {sCoding});
}

void Msg_Catalog::UnknownNormalizationForm(u3_t uForm) {
    Msg_Entry::Report({"unknown normalization form %0", "unbekannte Normalisierungsform %0"},
                      {uForm});
}

void Msg_Catalog::UnknownUnicodeGeneralCategory(const char* sCategory) {
    Msg_Entry::Raise(
        {"unknown unicode general category '%0'", "unbekannte allgemeine Unicode-Kategorie '%0'"},
        {sCategory});
}

void Msg_Catalog::UnknownUnicodeScriptName(const char* sName) {
    Msg_Entry::Raise(
        {"unknown unicode script name '%0", "unbekannter Name einer Unicode-Schrift '%0'"},
        {sName});
}

// ---- expressions -----------------------------------------------------------

void Msg_Catalog::InvalidBooleanStructure() {
    Msg_Entry::Raise({"invalid boolean structure", "ungültige boolesche Struktur"});
}

void Msg_Catalog::BadGroupNameInRegularExpression(const char* sName) {
    Msg_Entry::Raise({"bad group name '%0' in regular expression",
                      "ungültiger Gruppenname '%0' in regulärem Ausdruck"},
                     {sName});
}

void Msg_Catalog::UnknownFunctionInRegularExpression(const char* sName) {
    Msg_Entry::Raise({"unknown function '%0' in regular expression",
                      "unbekannte Funktion '%0' in regulärem Ausdruck"},
                     {sName});
}

}  // namespace vok

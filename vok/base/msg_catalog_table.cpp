// SPDX-License-Identifier: MIT
// The catalog entries about tables, csv files, formats and master data.
#include "vok/base/msg_catalog.h"
#include "vok/base/msg_entry.h"

namespace vok {

// ---- tables ----------------------------------------------------------------

void Msg_Catalog::EmptyTableName() {
    Msg_Entry::Raise({"empty table name", "leerer Tabellenname"});
}

void Msg_Catalog::InvalidTableName(const char* sName) {
    Msg_Entry::Raise({"invalid table name \"%0\"", "ungültiger Tabellenname \"%0\""}, {sName});
}

void Msg_Catalog::DuplicateTableName(const char* sName) {
    Msg_Entry::Raise({"duplicate table name: \"%0\"", "doppelter Tabellenname: \"%0\""}, {sName});
}

void Msg_Catalog::DuplicateTableId(const char* sId) {
    Msg_Entry::Raise({"duplicate table id: \"%0\"", "doppelte Tabellenkennung: \"%0\""}, {sId});
}

void Msg_Catalog::MissingTable(const char* sTable) {
    Msg_Entry::Raise({"missing table \"%0\"", "fehlende Tabelle \"%0\""}, {sTable});
}

void Msg_Catalog::NoSourceFileForTable(const char* sTable) {
    Msg_Entry::Raise(
        {"no source file for table \"%0\" found", "keine Quelldatei für Tabelle \"%0\" gefunden"},
        {sTable});
}

void Msg_Catalog::AmbiguousSourceForTable(const char* sTable, const char* sFirst,
                                          const char* sSecond) {
    Msg_Entry::Raise({"ambigous source for table \"%0\": \"%1\" \"%2\"",
                      "mehrdeutige Quelle für Tabelle \"%0\": \"%1\" \"%2\""},
                     {sTable, sFirst, sSecond});
}

void Msg_Catalog::DuplicateMatchColumnsInTableLookup() {
    Msg_Entry::Raise({"duplicate match columns in table lookup",
                      "doppelte Vergleichsspalten bei der Tabellensuche"});
}

void Msg_Catalog::MatchTruncated() {
    Msg_Entry::Report({"WARNING: Match truncated due to too many posibilities",
                       "WARNUNG: Vergleich wegen zu vieler Möglichkeiten gekürzt"});
}

// ---- columns ---------------------------------------------------------------

void Msg_Catalog::EmptyColumnName(const char* sTable) {
    Msg_Entry::Raise({"empty column name in table \"%0\"", "leerer Spaltenname in Tabelle \"%0\""},
                     {sTable});
}

void Msg_Catalog::InvalidColumnName(const char* sTable, const char* sColumn) {
    Msg_Entry::Raise({"invalid column name \"%1\" in table \"%0\"",
                      "ungültiger Spaltenname \"%1\" in Tabelle \"%0\""},
                     {sTable, sColumn});
}

void Msg_Catalog::BlanksNotAllowedInColumnName(const char* sTable, const char* sColumn) {
    Msg_Entry::Raise({"blanks not allowed in column name \"%1\" of table \"%0\"",
                      "Leerzeichen im Spaltennamen \"%1\" der Tabelle \"%0\" sind nicht erlaubt"},
                     {sTable, sColumn});
}

void Msg_Catalog::DuplicateColumnName(const char* sTable, const char* sColumn) {
    Msg_Entry::Raise({"duplicate column name \"%1\" in table \"%0\"",
                      "doppelter Spaltenname \"%1\" in Tabelle \"%0\""},
                     {sTable, sColumn});
}

void Msg_Catalog::MissingColumn(const char* sTable, const char* sColumn) {
    Msg_Entry::Raise(
        {"missing column \"%1\" in table \"%0\"", "fehlende Spalte \"%1\" in Tabelle \"%0\""},
        {sTable, sColumn});
}

void Msg_Catalog::NoFreetextForColumn(const char* sTable, const char* sColumn,
                                      const char* sFreetext) {
    Msg_Entry::Raise({"no freetext \"%2\" for column \"%1\" of table \"%0\"",
                      "kein Freitext \"%2\" zu Spalte \"%1\" der Tabelle \"%0\""},
                     {sTable, sColumn, sFreetext});
}

// ---- formats ---------------------------------------------------------------

void Msg_Catalog::InvalidFormatString(const char* sFormat) {
    Msg_Entry::Raise({"invalid format string \"%0\"", "ungültige Formatangabe \"%0\""}, {sFormat});
}

void Msg_Catalog::IncompleteFormatString(const char* sFormat) {
    Msg_Entry::Raise({"incomplete format string \"%0\"", "unvollständige Formatangabe \"%0\""},
                     {sFormat});
}

void Msg_Catalog::InvalidFormatName(const char* sTable, const char* sFormat) {
    Msg_Entry::Raise({"invaöid format name \"%1\" in table \"%0\"",
                      "ungültiger Formatname \"%1\" in Tabelle \"%0\""},
                     {sTable, sFormat});
}

void Msg_Catalog::DuplicateFormatName(const char* sTable, const char* sFormat) {
    Msg_Entry::Raise({"duplicate format name \"%1\" in table \"%0\"",
                      "doppelter Formatname \"%1\" in Tabelle \"%0\""},
                     {sTable, sFormat});
}

void Msg_Catalog::InvalidFormatColumn(const char* sTable, const char* sColumn) {
    Msg_Entry::Raise({"invalid format column \"%1\" in table \"%0\"",
                      "ungültige Formatspalte \"%1\" in Tabelle \"%0\""},
                     {sTable, sColumn});
}

void Msg_Catalog::DuplicateFormatColumn(const char* sTable, const char* sColumn,
                                        const char* sFormat) {
    Msg_Entry::Raise({"duplicate format column \"%1\" in table \"%0\" for format \"%2\"",
                      "doppelte Formatspalte \"%1\" in Tabelle \"%0\" für Format \"%2\""},
                     {sTable, sColumn, sFormat});
}

// ---- csv files -------------------------------------------------------------

void Msg_Catalog::EmptyLineInCsvFileIgnored(const char* sName, u3_t uLine) {
    Msg_Entry::Report({"empty line %1 in csv file \"%0\" was ignored",
                       "leere Zeile %1 in CSV-Datei \"%0\" wurde übergangen"},
                      {sName, uLine});
}

void Msg_Catalog::MissingCharInCsvFile(bool bRaise, const char* sName, u3_t uLine,
                                       const char* sText, u2_t uChar) {
    Msg_Entry::RaiseOrReport(
        bRaise,
        {"error in csv file \"%0\": missing char '%3' in line %1: \n%2",
         "Fehler in CSV-Datei \"%0\": fehlendes Zeichen '%3' in Zeile %1: \n%2"},
        {sName, uLine, sText, Msg_Arg::Char(uChar)});
}

void Msg_Catalog::TooFewColumnsInCsvFile(bool bRaise, const char* sName, u3_t uLine,
                                         const char* sText, u3_t uColumns, u3_t uExpected) {
    Msg_Entry::RaiseOrReport(
        bRaise,
        {"error in csv file \"%0\": too few (%3 insted of %4) columns in line %1: \n%2",
         "Fehler in CSV-Datei \"%0\": zu wenige Spalten (%3 statt %4) in Zeile %1: \n%2"},
        {sName, uLine, sText, uColumns, uExpected});
}

void Msg_Catalog::TooManyColumnsInCsvFile(bool bRaise, const char* sName, u3_t uLine,
                                          const char* sText, u3_t uColumns, u3_t uExpected) {
    Msg_Entry::RaiseOrReport(
        bRaise,
        {"error in csv file \"%0\": too many (%3 insted of %4) columns in line %1: \n%2",
         "Fehler in CSV-Datei \"%0\": zu viele Spalten (%3 statt %4) in Zeile %1: \n%2"},
        {sName, uLine, sText, uColumns, uExpected});
}

// ---- keys and identifiers --------------------------------------------------

void Msg_Catalog::IdNotFound(const char* sId) {
    Msg_Entry::Raise({"id \"%0\" not found", "Kennung \"%0\" nicht gefunden"}, {sId});
}

void Msg_Catalog::KeyAlreadyExists(const char* sKey) {
    Msg_Entry::Raise({"key already \"%0\" exists", "Schlüssel \"%0\" ist schon vorhanden"}, {sKey});
}

void Msg_Catalog::UnknownKeyBoundDescriptor(u3_t uDescriptor) {
    Msg_Entry::Raise(
        {"unknown key bound descriptor %0", "unbekannte Schlüsselgrenze: Deskriptor %0"},
        {uDescriptor});
}

void Msg_Catalog::UnknownKeyBoundEnumerator(u3_t uEnumerator) {
    Msg_Entry::Raise(
        {"unknown key bound enumerator %0", "unbekannte Schlüsselgrenze: Aufzählungswert %0"},
        {uEnumerator});
}

void Msg_Catalog::DuplicateRecoIdentifier(const char* sId) {
    Msg_Entry::Raise({"duplicate reco identifyer: \"%0\"", "doppelter Reco-Bezeichner: \"%0\""},
                     {sId});
}

void Msg_Catalog::UnknownRecoIdentifier(const char* sId) {
    Msg_Entry::Raise({"unknown reco identifyer: \"%0\"", "unbekannter Reco-Bezeichner: \"%0\""},
                     {sId});
}

// ---- replacements and texts ------------------------------------------------

void Msg_Catalog::DuplicateReplacement() {
    Msg_Entry::Raise({"duplicate replacement", "doppelte Ersetzung"});
}

void Msg_Catalog::DuplicateExpansionCharacter(u2_t uChar) {
    Msg_Entry::Raise({"duplicate expansion character %0", "doppeltes Erweiterungszeichen %0"},
                     {Msg_Arg::Char(uChar)});
}

void Msg_Catalog::DuplicateTextStructure(const char* sType, const char* sFirstItemType,
                                         const char* sSecondItemType) {
    Msg_Entry::Raise({"duplicate text structure with type \"%0\": item types \"%1\" and \"%2\"",
                      "doppelte Textstruktur vom Typ \"%0\": Elementtypen \"%1\" und \"%2\""},
                     {sType, sFirstItemType, sSecondItemType});
}

// ---- configuration and master data -----------------------------------------

void Msg_Catalog::OnlySomeEntriesConfigured(u3_t uConfigured, u3_t uEntries) {
    Msg_Entry::Raise({"Only %0 of %1 entries configured", "Nur %0 von %1 Einträgen konfiguriert"},
                     {uConfigured, uEntries});
}

void Msg_Catalog::DuplicateInputForOutput(const char* sInput, const char* sOutput) {
    Msg_Entry::Raise({"Duplicate input %0 for output %1", "doppelte Eingabe %0 für Ausgabe %1"},
                     {sInput, sOutput});
}

void Msg_Catalog::NoValidMasterDataFound(const char* sPlace) {
    Msg_Entry::Raise(
        {"no valid master data found at %0 or access is denied",
         "keine gültigen Stammdaten unter %0 gefunden, oder der Zugriff wurde verweigert"},
        {sPlace});
}

void Msg_Catalog::UnavailableMasterDataVersion(const char* sVersion, const char* sPlace) {
    Msg_Entry::Raise({"unavailable master data version %0 at %1",
                      "Stammdatenversion %0 ist unter %1 nicht verfügbar"},
                     {sVersion, sPlace});
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// The catalog entries about files, streams, zip archives, pipes, shared memory and images.
#include "vok/base/msg_catalog.h"
#include "vok/base/msg_entry.h"

namespace vok {

// ---- files -----------------------------------------------------------------

void Msg_Catalog::CouldNotOpenFile(const char* sPath, const char* sAttributes, u3_t uOpenFiles,
                                   u2_t uSystemError) {
    Msg_Entry::Raise(
        {"could not open file \"%0\" with attributes \"%1\", %2 files open",
         "Datei \"%0\" konnte nicht mit den Attributen \"%1\" geöffnet werden, %2 Dateien offen"},
        {sPath, sAttributes, uOpenFiles}, uSystemError);
}

void Msg_Catalog::FileIsNotOpen(const char* sName) {
    Msg_Entry::Raise({"file \"%0\" is not open", "Datei \"%0\" ist nicht geöffnet"}, {sName});
}

void Msg_Catalog::FileIsNotOpenForWrite(const char* sName) {
    Msg_Entry::Raise(
        {"file \"%0\" is not open for write", "Datei \"%0\" ist nicht zum Schreiben geöffnet"},
        {sName});
}

void Msg_Catalog::UnexpectedEndOfFile(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise({"unexpected end of file in \"%0\"", "unerwartetes Dateiende in \"%0\""},
                     {sName}, uSystemError);
}

void Msg_Catalog::FileSeekFailed(i3_t iPosition, int iMode, u2_t uSystemError) {
    Msg_Entry::Raise({"file seek to position %0 in mode %1 failed",
                      "Positionieren der Datei auf %0 im Modus %1 fehlgeschlagen"},
                     {iPosition, iMode}, uSystemError);
}

void Msg_Catalog::FileWriteError(const char* sName, u3_t uNotWritten, i3_t iPosition,
                                 u2_t uSystemError) {
    Msg_Entry::Raise(
        {"file write error after position %2, %1 bytes not written: \"%0\"",
         "Fehler beim Schreiben nach Dateiposition %2, %1 Bytes nicht geschrieben: \"%0\""},
        {sName, uNotWritten, iPosition}, uSystemError);
}

void Msg_Catalog::CouldNotChangeFileMode(const char* sName, const char* sMode) {
    Msg_Entry::Raise({"could not change file \"%0\" to mode %1",
                      "Datei \"%0\" konnte nicht auf Modus %1 geändert werden"},
                     {sName, sMode});
}

void Msg_Catalog::CouldNotCopyFile(const char* sFrom, const char* sTo, u2_t uSystemError) {
    Msg_Entry::Raise({"could not copy file \"%0\" to \"%1\"",
                      "Datei \"%0\" konnte nicht nach \"%1\" kopiert werden"},
                     {sFrom, sTo}, uSystemError);
}

void Msg_Catalog::CouldNotRenameFile(const char* sFrom, const char* sTo, u2_t uSystemError) {
    Msg_Entry::Raise({"could not rename file \"%0\" into \"%1\"",
                      "Datei \"%0\" konnte nicht in \"%1\" umbenannt werden"},
                     {sFrom, sTo}, uSystemError);
}

void Msg_Catalog::CouldNotRemoveFile(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise({"could not remove file \"%0\"", "Datei \"%0\" konnte nicht gelöscht werden"},
                     {sName}, uSystemError);
}

void Msg_Catalog::CouldNotTouchFile(const char* sName, const char* sTime, u2_t uSystemError) {
    Msg_Entry::Raise({"could not touch file \"%0\" to time %1",
                      "Zeitstempel der Datei \"%0\" konnte nicht auf %1 gesetzt werden"},
                     {sName, sTime}, uSystemError);
}

void Msg_Catalog::CouldNotCreateSymbolicLink(const char* sLink, const char* sTarget,
                                             u2_t uSystemError) {
    Msg_Entry::Raise({"could not create symbolic link \"%0\" -> \"%1\"",
                      "symbolische Verknüpfung \"%0\" -> \"%1\" konnte nicht angelegt werden"},
                     {sLink, sTarget}, uSystemError);
}

void Msg_Catalog::CodingOfFileCouldNotBeDetermined(const char* sName) {
    Msg_Entry::Raise({"coding of file \"%0\" could not be determined",
                      "Kodierung der Datei \"%0\" konnte nicht bestimmt werden"},
                     {sName});
}

void Msg_Catalog::FileHasTimeStampInFuture(const char* sName, const char* sTime) {
    Msg_Entry::Raise({"file \"%0\" has time stamp in future: %1",
                      "Datei \"%0\" hat einen Zeitstempel in der Zukunft: %1"},
                     {sName, sTime});
}

void Msg_Catalog::OpenFiles(u3_t uOpen, u3_t uPeak) {
    Msg_Entry::Report({"%0 open files (peak %1)", "%0 offene Dateien (Peak %1)"}, {uOpen, uPeak});
}

void Msg_Catalog::StillFilesOpen(u3_t uOpen) {
    Msg_Entry::Raise({"still %0 files open", "Es sind noch %0 Dateien offen"}, {uOpen});
}

// ---- directories -----------------------------------------------------------

void Msg_Catalog::CouldNotCreateDirectory(const char* sPath, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"could not create directory \"%0\"", "Verzeichnis \"%0\" konnte nicht angelegt werden"},
        {sPath}, uSystemError);
}

void Msg_Catalog::DirectoryIsNotEmpty(const char* sDirectory, const char* sFile) {
    Msg_Entry::Raise({"directory \"%0\" is not empty, file \"%1\" found",
                      "Verzeichnis \"%0\" ist nicht leer, Datei \"%1\" gefunden"},
                     {sDirectory, sFile});
}

void Msg_Catalog::PathOrFileDoesNotExist(const char* sPath, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"path or file \"%0\" does not exist", "Pfad oder Datei \"%0\" existiert nicht"}, {sPath},
        uSystemError);
}

void Msg_Catalog::SourceDirectoryNotFound(const char* sDirectory, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"source directory \"%0\" not found", "Quellverzeichnis \"%0\" nicht gefunden"},
        {sDirectory}, uSystemError);
}

void Msg_Catalog::SourceAndDestinationDirectoriesAreEqual(const char* sDirectory) {
    Msg_Entry::Raise({"source and destination directories are equal \"%0\"",
                      "Quell- und Zielverzeichnis sind gleich: \"%0\""},
                     {sDirectory});
}

void Msg_Catalog::AnotherServerIsControllingTheBaseDir(const char* sDirectory, u2_t uSystemError) {
    Msg_Entry::Raise({"An other server is controlling the base dir '%0'",
                      "Ein anderer Server verwaltet das Basisverzeichnis '%0'"},
                     {sDirectory}, uSystemError);
}

// ---- streams ---------------------------------------------------------------

void Msg_Catalog::StreamNotOpenForRead() {
    Msg_Entry::Raise({"stream not open for read", "Datenstrom ist nicht zum Lesen geöffnet"});
}

void Msg_Catalog::StreamNotOpenForWrite() {
    Msg_Entry::Raise({"stream not open for write", "Datenstrom ist nicht zum Schreiben geöffnet"});
}

void Msg_Catalog::UnexpectedSizeOfStreamPart(u3_t uExpected, u3_t uActual) {
    Msg_Entry::Raise(
        {"unexpected size of stream part: expected %0 but got %1",
         "unerwartete Größe eines Datenstromabschnitts: %0 erwartet, aber %1 erhalten"},
        {uExpected, uActual});
}

void Msg_Catalog::UnexpectedEndOfStreamWhileReading(const char* sName) {
    Msg_Entry::Raise({"Unexpected end of stream while reading from %0",
                      "Unerwartetes Datenstromende beim Lesen von %0"},
                     {sName});
}

void Msg_Catalog::UnexpectedEndOfStreamRemainingToRead(const char* sName, u3_t uBytes) {
    Msg_Entry::Raise({"Unexpected end of stream %0: %1 bytes remaining to read",
                      "Unerwartetes Datenstromende in %0: noch %1 Bytes zu lesen"},
                     {sName, uBytes});
}

void Msg_Catalog::UnexpectedEndOfStreamAfter(u3_t uExpected, u3_t uActual) {
    Msg_Entry::Raise({"unexpected end of stream after %1 of %0 bytes",
                      "unerwartetes Datenstromende nach %1 von %0 Bytes"},
                     {uExpected, uActual});
}

void Msg_Catalog::UnexpectedEndOfStreamWhileWriting(const char* sName) {
    Msg_Entry::Raise({"Unexpected end of stream while writing to %0",
                      "Unerwartetes Datenstromende beim Schreiben nach %0"},
                     {sName});
}

void Msg_Catalog::UnexpectedEndOfStreamRemainingToWrite(const char* sName, u3_t uBytes) {
    Msg_Entry::Raise({"Unexpected end of stream %0: %1 bytes remaining to write",
                      "Unerwartetes Datenstromende in %0: noch %1 Bytes zu schreiben"},
                     {sName, uBytes});
}

void Msg_Catalog::UnexpectedStreamWriteError(u3_t uExpected, u3_t uActual) {
    Msg_Entry::Raise({"unexpected stream write error after %1 of %0 bytes",
                      "unerwarteter Fehler beim Schreiben des Datenstroms nach %1 von %0 Bytes"},
                     {uExpected, uActual});
}

void Msg_Catalog::UnexpectedCodingInStream(const char* sName, const char* sExpected,
                                           const char* sActual) {
    Msg_Entry::Raise({"unexpected coding in stream %0: expected %1 but got %2",
                      "unerwartete Kodierung in Datenstrom %0: %1 erwartet, aber %2 gefunden"},
                     {sName, sExpected, sActual});
}

void Msg_Catalog::UnknownOrCorruptedStreamFormat() {
    Msg_Entry::Raise(
        {"unknown or corrupted stream format", "unbekanntes oder beschädigtes Datenstromformat"});
}

// ---- zip archives ----------------------------------------------------------

void Msg_Catalog::InvalidOrCorruptedZipBuffer() {
    Msg_Entry::Raise({"invalid or corrupted zip buffer", "Ungültiger oder zerstörter Zip-Puffer"});
}

void Msg_Catalog::InvalidOrCorruptedZipFile(const char* sName) {
    Msg_Entry::Raise(
        {"invalid or corrupted zip file \"%0\"", "Ungültige oder zerstörte Zip-Datei \"%0\""},
        {sName});
}

void Msg_Catalog::EmptyZipFile(const char* sName) {
    Msg_Entry::Raise({"empty zip file \"%0\"", "leere Zip-Datei \"%0\""}, {sName});
}

void Msg_Catalog::ZipFileIsNotOpenForRead(const char* sName) {
    Msg_Entry::Raise(
        {"zip file \"%0\" is not open for read", "Zip-Datei \"%0\" ist nicht zum Lesen geöffnet"},
        {sName});
}

void Msg_Catalog::ZipFileIsNotOpenForWrite(const char* sName) {
    Msg_Entry::Raise({"zip file \"%0\" is not open for write",
                      "Zip-Datei \"%0\" ist nicht zum Schreiben geöffnet"},
                     {sName});
}

void Msg_Catalog::CurrentFileOfZipArchiveIsNotOpen(const char* sName) {
    Msg_Entry::Raise({"current file of zip archive \"%0\" is not open",
                      "aktuelle Datei des Zip-Archivs \"%0\" ist nicht geöffnet"},
                     {sName});
}

void Msg_Catalog::CrcErrorInCurrentFileOfZipArchive(const char* sName) {
    Msg_Entry::Raise({"CRC error in current file of zip archive \"%0\"",
                      "CRC-Fehler in der aktuellen Datei des Zip-Archivs \"%0\""},
                     {sName});
}

void Msg_Catalog::InternalZipError(const char* sWhat) {
    Msg_Entry::Raise({"internal zip error: %0", "interner Zip-Fehler: %0"}, {sWhat});
}

void Msg_Catalog::InternalErrorProcessingZipFile(const char* sName, const char* sWhat) {
    Msg_Entry::Raise({"internal error processing zip file \"%0\": %1",
                      "interner Fehler beim Bearbeiten der Zip-Datei \"%0\": %1"},
                     {sName, sWhat});
}

// ---- pipes -----------------------------------------------------------------

void Msg_Catalog::CannotCreateNamedPipe(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Cannot create named pipe '%0'", "Named Pipe '%0' kann nicht angelegt werden"}, {sName},
        uSystemError);
}

void Msg_Catalog::CouldNotOpenNamedPipe(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Could not open Named pipe '%0'", "Named Pipe '%0' konnte nicht geöffnet werden"}, {sName},
        uSystemError);
}

void Msg_Catalog::NamedPipeCouldNotBeConnected(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Named pipe '%0' could not be connected", "Named Pipe '%0' konnte nicht verbunden werden"},
        {sName}, uSystemError);
}

void Msg_Catalog::SetNamedPipeHandleStateFailed(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise({"SetNamedPipeHandleState of named pipe '%0' failed",
                      "SetNamedPipeHandleState für Named Pipe '%0' fehlgeschlagen"},
                     {sName}, uSystemError);
}

void Msg_Catalog::ErrorReadingToNamedPipe(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise({"Error reading to named pipe '%0'", "Fehler beim Lesen von Named Pipe '%0'"},
                     {sName}, uSystemError);
}

void Msg_Catalog::ErrorWritingToNamedPipe(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Error writing to named pipe '%0'", "Fehler beim Schreiben in Named Pipe '%0'"}, {sName},
        uSystemError);
}

// ---- shared memory ---------------------------------------------------------

void Msg_Catalog::CannotCreateSharedMemory(const char* sName, u3_t uBytes, u2_t uSystemError) {
    Msg_Entry::Raise({"Cannot create shared memory '%0' with size %1",
                      "Gemeinsamer Speicher '%0' mit Größe %1 kann nicht angelegt werden"},
                     {sName, uBytes}, uSystemError);
}

void Msg_Catalog::CannotOpenSharedMemory(const char* sName, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Cannot open shared memory '%0'", "Gemeinsamer Speicher '%0' kann nicht geöffnet werden"},
        {sName}, uSystemError);
}

void Msg_Catalog::CannotResizeSharedMemory(const char* sName, u3_t uBytes, u2_t uSystemError) {
    Msg_Entry::Raise({"Cannot resize shared memory '%0' to size %1",
                      "Gemeinsamer Speicher '%0' kann nicht auf Größe %1 geändert werden"},
                     {sName, uBytes}, uSystemError);
}

void Msg_Catalog::CannotSetSharedMemoryView(u3_t uOffset, u3_t uBytes, u2_t uSystemError) {
    Msg_Entry::Raise({"Cannot set shared memory view with offset %0 and size %1",
                      "Sicht auf den gemeinsamen Speicher mit Versatz %0 und Größe %1 kann nicht "
                      "gesetzt werden"},
                     {uOffset, uBytes}, uSystemError);
}

void Msg_Catalog::StillSharedMemoryInUse(u3_t uCount) {
    Msg_Entry::Raise(
        {"still %0 shared memory in use", "Es sind noch %0 gemeinsame Speicher in Gebrauch"},
        {uCount});
}

// ---- images ----------------------------------------------------------------

void Msg_Catalog::CouldNotOpenTiffBuffer(u3_t uAddress, u3_t uBytes) {
    Msg_Entry::Raise({"could not open tiff buffer at %0 (%1 bytes)",
                      "TIFF-Puffer an %0 (%1 Bytes) konnte nicht geöffnet werden"},
                     {Msg_Arg::Address(uAddress), uBytes});
}

void Msg_Catalog::CouldNotOpenTiffFile(const char* sName, const char* sAttributes) {
    Msg_Entry::Raise({"could not open tiff file \"%0\" with attributes \"%1\"",
                      "TIFF-Datei \"%0\" konnte nicht mit den Attributen \"%1\" geöffnet werden"},
                     {sName, sAttributes});
}

void Msg_Catalog::CannotReadTiffScanline(u3_t uLine, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Cannot read Tiff scanline %0", "TIFF-Bildzeile %0 kann nicht gelesen werden"}, {uLine},
        uSystemError);
}

void Msg_Catalog::CannotWriteTiffScanline(u3_t uLine, u2_t uSystemError) {
    Msg_Entry::Raise(
        {"Cannot write Tiff scanline %0", "TIFF-Bildzeile %0 kann nicht geschrieben werden"},
        {uLine}, uSystemError);
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// The catalog entries about assertions, integers, memory, languages and the program itself.
#include <string_view>
#include <utility>

#include "vok/base/msg_catalog.h"
#include "vok/base/msg_entry.h"

namespace vok {

// ---- assertions ------------------------------------------------------------

void Msg_Catalog::AssertionFailed(const char* sExpr) {
    Msg_Entry::Raise({"assertion failed: %0", "Zusicherung fehlgeschlagen: %0"}, {sExpr});
}

void Msg_Catalog::AssertionFailedEqual(const char* sLeft, const char* sRight, u3_t uLeft,
                                       u3_t uRight) {
    Msg_Entry::Raise({"assertion failed: %0 == %1 (%2 != %3)",
                      "Zusicherung fehlgeschlagen: %0 == %1 (%2 != %3)"},
                     {sLeft, sRight, uLeft, uRight});
}

void Msg_Catalog::AssertionFailedNotEqual(const char* sLeft, const char* sRight, u3_t uLeft,
                                          u3_t uRight) {
    Msg_Entry::Raise({"assertion failed: %0 != %1 (%2 == %3)",
                      "Zusicherung fehlgeschlagen: %0 != %1 (%2 == %3)"},
                     {sLeft, sRight, uLeft, uRight});
}

void Msg_Catalog::AssertionFailedLess(const char* sLeft, const char* sRight, u3_t uLeft,
                                      u3_t uRight) {
    Msg_Entry::Raise(
        {"assertion failed: %0 < %1 (%2 >= %3)", "Zusicherung fehlgeschlagen: %0 < %1 (%2 >= %3)"},
        {sLeft, sRight, uLeft, uRight});
}

void Msg_Catalog::AssertionFailedLessEqual(const char* sLeft, const char* sRight, u3_t uLeft,
                                           u3_t uRight) {
    Msg_Entry::Raise(
        {"assertion failed: %0 <= %1 (%2 > %3)", "Zusicherung fehlgeschlagen: %0 <= %1 (%2 > %3)"},
        {sLeft, sRight, uLeft, uRight});
}

void Msg_Catalog::AssertionFailedPositive(const char* sExpr, u3_t uValue) {
    Msg_Entry::Raise(
        {"assertion failed: %0 > 0 (%0 == %1)", "Zusicherung fehlgeschlagen: %0 > 0 (%0 == %1)"},
        {sExpr, uValue});
}

void Msg_Catalog::AssertionFailedNotNegative(const char* sExpr, i3_t iValue) {
    Msg_Entry::Raise(
        {"assertion failed: %0 >= 0 (%0 == %1)", "Zusicherung fehlgeschlagen: %0 >= 0 (%0 == %1)"},
        {sExpr, iValue});
}

void Msg_Catalog::AssertionFailedZero(const char* sExpr, u3_t uValue) {
    Msg_Entry::Raise(
        {"assertion failed: %0 == 0 (%0 == %1)", "Zusicherung fehlgeschlagen: %0 == 0 (%0 == %1)"},
        {sExpr, uValue});
}

void Msg_Catalog::AssertionFailedNotZero(const char* sExpr, u3_t uValue) {
    Msg_Entry::Raise(
        {"assertion failed: %0 != 0 (%0 == %1)", "Zusicherung fehlgeschlagen: %0 != 0 (%0 == %1)"},
        {sExpr, uValue});
}

// ---- memory ----------------------------------------------------------------

void Msg_Catalog::AllocationFailed(u3_t uBytes, u3_t uBytesInUse, u3_t uBlocksInUse) {
    Msg_Entry::Raise({"allocation of %0 bytes failed, %1 bytes and %2 blocks in use",
                      "Anfordern von %0 Bytes fehlgeschlagen, %1 Bytes und %2 Blöcke in Gebrauch",
                      Msg_Kind::NoMemory},
                     {uBytes, uBytesInUse, uBlocksInUse});
}

void Msg_Catalog::ReallocationFailed(u3_t uBlockAddress, u3_t uBytes, u3_t uBytesInUse,
                                     u3_t uBlocksInUse) {
    Msg_Entry::Raise({"reallocation of block %0 to %1 bytes failed, %2 bytes and %3 blocks in use",
                      "Größenänderung des Blocks %0 auf %1 Bytes fehlgeschlagen, %2 Bytes und %3 "
                      "Blöcke in Gebrauch",
                      Msg_Kind::NoMemory},
                     {Msg_Arg::Address(uBlockAddress), uBytes, uBytesInUse, uBlocksInUse});
}

void Msg_Catalog::ReallocationFromToFailed(u3_t uBlockAddress, u3_t uOldBytes, u3_t uNewBytes,
                                           u3_t uBytesInUse, u3_t uBlocksInUse) {
    Msg_Entry::Raise(
        {"reallocation of block %0 from %1 to %2 bytes failed, %3 bytes and %4 blocks in use",
         "Größenänderung des Blocks %0 von %1 auf %2 Bytes fehlgeschlagen, %3 Bytes und %4 Blöcke "
         "in Gebrauch",
         Msg_Kind::NoMemory},
        {Msg_Arg::Address(uBlockAddress), uOldBytes, uNewBytes, uBytesInUse, uBlocksInUse});
}

void Msg_Catalog::UnexpectedErrorDuringReallocation(u3_t uBlockAddress, u3_t uOldBytes,
                                                    u3_t uNewBytes, u3_t uBytesInUse,
                                                    u3_t uBlocksInUse) {
    Msg_Entry::Raise(
        {"unexpected error during reallocation of block %0 from size %1 to size %2, %3 bytes and "
         "%4 blocks in use",
         "unerwarteter Fehler bei der Größenänderung des Blocks %0 von Größe %1 auf Größe %2, %3 "
         "Bytes und %4 Blöcke in Gebrauch",
         Msg_Kind::NoMemory},
        {Msg_Arg::Address(uBlockAddress), uOldBytes, uNewBytes, uBytesInUse, uBlocksInUse});
}

void Msg_Catalog::FreeingOfMemoryBlockFailed(u3_t uBlockAddress) {
    Msg_Entry::Raise(
        {"freeing of memory block %0 failed", "Freigeben des Speicherblocks %0 fehlgeschlagen"},
        {Msg_Arg::Address(uBlockAddress)});
}

void Msg_Catalog::BlockDamaged(u3_t uBlockAddress, u3_t uBytes) {
    Msg_Entry::Raise({"block %0 with size %1 damaged", "Block %0 mit Größe %1 ist beschädigt"},
                     {Msg_Arg::Address(uBlockAddress), uBytes});
}

void Msg_Catalog::BlockHasUnexpectedSize(u3_t uBlockAddress, u3_t uBytes, u3_t uExpectedBytes) {
    Msg_Entry::Raise({"block %0 has unexpected size %1, not %2",
                      "Block %0 hat die unerwartete Größe %1 statt %2"},
                     {Msg_Arg::Address(uBlockAddress), uBytes, uExpectedBytes});
}

void Msg_Catalog::BlockWithUnexpectedSize(u3_t uBlockAddress, u3_t uBytes) {
    Msg_Entry::Raise({"block %0 with unexpected size %1", "Block %0 mit unerwarteter Größe %1"},
                     {Msg_Arg::Address(uBlockAddress), uBytes});
}

void Msg_Catalog::MemoryAccessError(u3_t uBlockAddress, u3_t uBytes) {
    Msg_Entry::Raise({"memory access error: block %0 with size %1",
                      "Fehler beim Speicherzugriff: Block %0 mit Größe %1"},
                     {Msg_Arg::Address(uBlockAddress), uBytes});
}

void Msg_Catalog::MemoryWriteError(u3_t uBlockAddress, u3_t uBytes) {
    Msg_Entry::Raise({"memory write error: block %0 with size %1",
                      "Fehler beim Schreiben in den Speicher: Block %0 mit Größe %1"},
                     {Msg_Arg::Address(uBlockAddress), uBytes});
}

void Msg_Catalog::OutOfMemory() {
    Msg_Entry::Raise({"out of memory", "kein Speicher mehr verfügbar", Msg_Kind::NoMemory});
}

void Msg_Catalog::MemoryInUse(u3_t uBytes, u3_t uBlocks, u3_t uReferences, u3_t uPeakBytes,
                              u3_t uPeakBlocks, u3_t uPeakReferences) {
    Msg_Entry::Report({"%0 memory bytes, %1 blocks, %2 references (peak %3, %4, %5)",
                       "%0 Bytes Speicher, %1 Blöcke, %2 Referenzen (Peak %3, %4, %5)"},
                      {uBytes, uBlocks, uReferences, uPeakBytes, uPeakBlocks, uPeakReferences});
}

void Msg_Catalog::StillMemoryBlocksInUse(u3_t uBytes, u3_t uBlocks, u3_t uReferences) {
    Msg_Entry::Raise({"still %1 memory blocks with %0 bytes and %2 references in use",
                      "Es sind noch %1 Speicherblöcke mit %0 Bytes und %2 Referenzen in Gebrauch"},
                     {uBytes, uBlocks, uReferences});
}

// ---- references ------------------------------------------------------------

void Msg_Catalog::TryToDecrementZeroReferenceCount() {
    Msg_Entry::Raise({"try to decrement zero reference count",
                      "Versuch, einen Referenzzähler von null zu vermindern"});
}

void Msg_Catalog::ObjectHasNonzeroReferenceCount() {
    Msg_Entry::Raise({"unexpected state: object has nonzero reference count",
                      "unerwarteter Zustand: Referenzzähler des Objekts ist nicht null"});
}

void Msg_Catalog::ObjectPointsToNothing() {
    Msg_Entry::Raise({"object points to nothing", "Objekt zeigt auf nichts"});
}

void Msg_Catalog::NullPointerAssignment() {
    Msg_Entry::Raise({"null pointer assignment", "Zuweisung eines Nullzeigers"});
}

void Msg_Catalog::NotAPointerToObject(const char* sObject) {
    Msg_Entry::Raise({"not a pointer to object \"%0\"", "kein Zeiger auf Objekt \"%0\""},
                     {sObject});
}

// ---- numbers ---------------------------------------------------------------

void Msg_Catalog::IndexOutOfRange(u3_t uIndex, u3_t uRange) {
    Msg_Entry::Raise({"index %0 out of range %1", "Index %0 außerhalb des Bereichs %1"},
                     {uIndex, uRange});
}

void Msg_Catalog::IntegerValueToBig() {
    Msg_Entry::Raise({"integer value to big", "ganzzahliger Wert zu groß"});
}

void Msg_Catalog::UnexpectedIntegerValue() {
    Msg_Entry::Raise(
        {"unexpected integer value >= 2^32", "unerwarteter ganzzahliger Wert >= 2^32"});
}

void Msg_Catalog::ValueOutOf32BitRange(const char* sName, i3_t iValue) {
    Msg_Entry::Raise({"value of %0=%1 is out of 32 bit range",
                      "Wert von %0=%1 liegt außerhalb des 32-Bit-Bereichs"},
                     {sName, iValue});
}

void Msg_Catalog::ArithmeticOverflow(const char* sLeft, const char* sRight, const char* sOperator) {
    Msg_Entry::Raise({"arithmetic overflow: %0 %2 %1", "arithmetischer Überlauf: %0 %2 %1"},
                     {sLeft, sRight, sOperator});
}

void Msg_Catalog::InvalidEnumValue(const char* sEnum, u3_t uValue) {
    Msg_Entry::Raise({"invalid enum value for %0: %1", "ungültiger Aufzählungswert für %0: %1"},
                     {sEnum, uValue});
}

void Msg_Catalog::InvalidRadix(const char* sRadix) {
    Msg_Entry::Raise({"invalid radix \"%0\"", "ungültige Zahlenbasis \"%0\""}, {sRadix});
}

// ---- languages -------------------------------------------------------------

void Msg_Catalog::InvalidLanguage(const char* sLanguage) {
    Msg_Entry::Raise({"invalid language: \"%0\"", "ungültige Sprache: \"%0\""}, {sLanguage});
}

void Msg_Catalog::InvalidLanguageCode(u2_t uId) {
    Msg_Entry::Raise({"invalid language code: %0", "ungültiger Sprachcode: %0"}, {uId});
}

void Msg_Catalog::InvalidLanguageId(u2_t uIndex) {
    Msg_Entry::Raise({"invalid language id: %0", "ungültige Sprachkennung: %0"}, {uIndex});
}

// ---- the program -----------------------------------------------------------

void Msg_Catalog::FeatureNotYetImplemented(const char* sFeature) {
    Msg_Entry::Raise(
        {"feature not yet implemented: \"%0\"", "Funktion noch nicht implementiert: \"%0\""},
        {sFeature});
}

void Msg_Catalog::FeatureNotSupported(const char* sFeature) {
    Msg_Entry::Raise({"feature not supported: \"%0\"", "Funktion wird nicht unterstützt: \"%0\""},
                     {sFeature});
}

void Msg_Catalog::ParameterHasInvalidValue(const char* sParameter) {
    Msg_Entry::Raise(
        {"parameter \"%0\" has invalid value", "Parameter \"%0\" hat einen ungültigen Wert"},
        {sParameter});
}

void Msg_Catalog::WrongUsage() {
    Msg_Entry::Raise({"wrong usage", "falsche Verwendung"});
}

void Msg_Catalog::FunctionFailed(const char* sFunction, u2_t uSystemError) {
    Msg_Entry::Raise({"Function %0 failed", "Funktion %0 fehlgeschlagen"}, {sFunction},
                     uSystemError);
}

void Msg_Catalog::InternalProgramError(const char* sWhat) {
    Msg_Entry::Raise({"internal program error: %0", "interner Programmfehler: %0"}, {sWhat});
}

void Msg_Catalog::IntegrityCheckOfBinaryDataFailed(u3_t uError) {
    Msg_Entry::Raise({"internal error %0: Integrity check of binary data failed",
                      "interner Fehler %0: Integritätsprüfung der Binärdaten fehlgeschlagen"},
                     {uError});
}

void Msg_Catalog::UnexpectedException(const char* sWhere) {
    Msg_Entry::Log({"unexpected exception in %0", "unerwarteter Ausnahmezustand in %0"}, {sWhere});
}

void Msg_Catalog::UnexpectedException(const char* sWhere, const char* sWhat) {
    Msg_Entry::Log({"unexpected exception in %0: %1", "unerwarteter Ausnahmezustand in %0: %1"},
                   {sWhere, sWhat});
}

void Msg_Catalog::UnexpectedExceptionWithDetail(const char* sWhere, const char* sDetail) {
    Msg_Entry::Log({"unexpected exception in %0(%1)", "unerwarteter Ausnahmezustand in %0(%1)"},
                   {sWhere, sDetail});
}

void Msg_Catalog::UnexpectedExceptionWithDetail(const char* sWhere, const char* sDetail,
                                                const char* sWhat) {
    Msg_Entry::Log(
        {"unexpected exception in %0(%1): %2", "unerwarteter Ausnahmezustand in %0(%1): %2"},
        {sWhere, sDetail, sWhat});
}

void Msg_Catalog::UnexpectedMessageCode(u3_t uExpected, u3_t uActual) {
    Msg_Entry::Raise({"Unexpected message code: expected %0 but got %1",
                      "Unerwarteter Nachrichtencode: %0 erwartet, aber %1 erhalten"},
                     {uExpected, uActual});
}

void Msg_Catalog::InvalidClientInstance(u3_t uInstance) {
    Msg_Entry::Raise({"invalid client instance %0, must be 16-bit integer",
                      "ungültige Client-Instanz %0, muss eine 16-Bit-Ganzzahl sein"},
                     {uInstance});
}

void Msg_Catalog::Threads(u3_t uThreads, u3_t uPeak) {
    Msg_Entry::Report({"%0 threads (peak %1)", "%0 Threads (Peak %1)"}, {uThreads, uPeak});
}

void Msg_Catalog::StillThreadsInUse(u3_t uThreads) {
    Msg_Entry::Raise({"still %1 threads in use", "Es sind noch %1 Threads in Gebrauch"},
                     {nullptr, uThreads});
}

// ---- limits ----------------------------------------------------------------

namespace {

const char* GermanLimit(std::string_view sLimit) {
    constexpr std::pair<std::string_view, const char*> NAMES[] = {
        {"nodes", "Knoten"},
        {"depth", "Tiefe"},
        {"text bytes", "Bytes eines Texts"},
        {"attributes", "Attribute"},
        {"skipped slots", "übersprungene Plätze"},
        {"path steps", "Schritte eines Pfads"},
        {"work for a byte", "Arbeit je Byte"},
        {"memory for a byte", "Speicher je Byte"},
        {"inflated bytes", "entpackte Bytes"},
        {"inflation ratio", "Entpackungsverhältnis"},
        {"zip entries", "Einträge eines Zip-Archivs"},
    };
    for (const auto& [sEnglish, sGerman] : NAMES) {
        if (sLimit == sEnglish) return sGerman;
    }
    return sLimit.data();
}

}  // namespace

void Msg_Catalog::LimitExceeded(const char* sLimit, u3_t uLimit, const char* sField) {
    Msg_Entry::Raise({"limit \"%0\" of %1 exceeded (raise %2)",
                      "Grenze \"%3\" von %1 überschritten (%2 erhöhen)", Msg_Kind::Limit},
                     {sLimit, uLimit, sField, GermanLimit(sLimit)});
}

}  // namespace vok

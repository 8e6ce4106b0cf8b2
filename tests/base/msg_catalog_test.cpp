// Every entry of the catalog, in its order: the exact English text, and that the German one
// says as much.
#include <functional>
#include <set>
#include <tuple>

#include "tests/support.h"

namespace vok {
namespace {

// What becomes of a message; some are raised with the text of a system error at their end.
enum Mode { RAISES, RAISES_WITH_ERROR, REPORTS, LOGS };

// The argument for the next parameter, of a value that shows which one it is and how it was
// printed.
constexpr const char* TEXTS[] = {"<t0>", "<t1>", "<t2>", "<t3>", "<t4>", "<t5>"};

template <class T>
T Next(std::size_t& uNth, std::size_t uError) {
    ++uNth;
    if constexpr (std::is_same_v<T, const char*>)
        return TEXTS[uNth - 1];
    else if constexpr (std::is_same_v<T, bool>)
        return true;
    else
        return static_cast<T>(uNth == uError ? 2 : 7000 + uNth - 1);
}

struct Row {
    template <class... A>
    Row(const char* s, void (*pEntry)(A...), Mode e = RAISES) : sEnglish(s), eMode(e) {
        oCall = [=] {
            // A flag comes first and is no parameter of the text; a system error comes last.
            [[maybe_unused]] std::size_t uNth = (std::is_same_v<A, bool> || ...) ? SIZE_MAX : 0;
            std::apply(pEntry, std::tuple<A...>{
                                   Next<A>(uNth, e == RAISES_WITH_ERROR ? sizeof...(A) : 0)...});
        };
    }

    const char* sEnglish;
    Mode eMode;
    std::function<void()> oCall;
};

using Taking1 = void(const char*);
using Taking2 = void(const char*, const char*);
using Taking3 = void(const char*, const char*, const char*);

const Row ROWS[] = {
    // clang-format off
    {"reallocation of block %0 from %1 to %2 bytes failed, %3 bytes and %4 blocks in use", Msg::ReallocationFromToFailed},
    {"node is not unique", Msg::NodeIsNotUnique},
    {"ambigous source for table \"%0\": \"%1\" \"%2\"", Msg::AmbiguousSourceForTable},
    {"assertion failed: %0 == %1 (%2 != %3)", Msg::AssertionFailedEqual},
    {"assertion failed: %0 > 0 (%0 == %1)", Msg::AssertionFailedPositive},
    {"assertion failed: %0 <= %1 (%2 > %3)", Msg::AssertionFailedLessEqual},
    {"assertion failed: %0 < %1 (%2 >= %3)", Msg::AssertionFailedLess},
    {"assertion failed: %0 != %1 (%2 == %3)", Msg::AssertionFailedNotEqual},
    {"assertion failed: %0 >= 0 (%0 == %1)", Msg::AssertionFailedNotNegative},
    {"assertion failed: %0 != 0 (%0 == %1)", Msg::AssertionFailedNotZero},
    {"assertion failed: %0 == 0 (%0 == %1)", Msg::AssertionFailedZero},
    {"assertion failed: %0", Msg::AssertionFailed},
    {"bad group name '%0' in regular expression", Msg::BadGroupNameInRegularExpression},
    {"invalid or corrupted zip buffer", Msg::InvalidOrCorruptedZipBuffer},
    {"invalid or corrupted zip file \"%0\"", Msg::InvalidOrCorruptedZipFile},
    {"blanks not allowed in column name \"%1\" of table \"%0\"", Msg::BlanksNotAllowedInColumnName},
    {"allocation of %0 bytes failed, %1 bytes and %2 blocks in use", Msg::AllocationFailed},
    {"block %0 with size %1 damaged", Msg::BlockDamaged},
    {"freeing of memory block %0 failed", Msg::FreeingOfMemoryBlockFailed},
    {"memory access error: block %0 with size %1", Msg::MemoryAccessError},
    {"reallocation of block %0 to %1 bytes failed, %2 bytes and %3 blocks in use", Msg::ReallocationFailed},
    {"block %0 has unexpected size %1, not %2", Msg::BlockHasUnexpectedSize},
    {"block %0 with unexpected size %1", Msg::BlockWithUnexpectedSize},
    {"memory write error: block %0 with size %1", Msg::MemoryWriteError},
    {"character '%0' expected after '%1'", Msg::CharacterExpectedAfter},
    {"coding of file \"%0\" could not be determined", Msg::CodingOfFileCouldNotBeDetermined},
    {"Named pipe '%0' could not be connected", Msg::NamedPipeCouldNotBeConnected, RAISES_WITH_ERROR},
    {"Cannot create named pipe '%0'", Msg::CannotCreateNamedPipe, RAISES_WITH_ERROR},
    {"Cannot create shared memory '%0' with size %1", Msg::CannotCreateSharedMemory, RAISES_WITH_ERROR},
    {"try to decrement zero reference count", Msg::TryToDecrementZeroReferenceCount},
    {"directory \"%0\" is not empty, file \"%1\" found", Msg::DirectoryIsNotEmpty},
    {"duplicate column name \"%1\" in table \"%0\"", Msg::DuplicateColumnName},
    {"duplicate expansion character %0", Msg::DuplicateExpansionCharacter},
    {"duplicate format column \"%1\" in table \"%0\" for format \"%2\"", Msg::DuplicateFormatColumn},
    {"duplicate format name \"%1\" in table \"%0\"", Msg::DuplicateFormatName},
    {"duplicate match columns in table lookup", Msg::DuplicateMatchColumnsInTableLookup},
    {"duplicate reco identifyer: \"%0\"", Msg::DuplicateRecoIdentifier},
    {"duplicate replacement", Msg::DuplicateReplacement},
    {"duplicate table id: \"%0\"", Msg::DuplicateTableId},
    {"duplicate table name: \"%0\"", Msg::DuplicateTableName},
    {"duplicate text structure with type \"%0\": item types \"%1\" and \"%2\"", Msg::DuplicateTextStructure},
    {"empty column name in table \"%0\"", Msg::EmptyColumnName},
    {"empty line %1 in csv file \"%0\" was ignored", Msg::EmptyLineInCsvFileIgnored, REPORTS},
    {"node is empty", Msg::NodeIsEmpty}, {"empty path not allowed", Msg::EmptyPathNotAllowed},
    {"empty table name", Msg::EmptyTableName},
    {"feature not yet implemented: \"%0\"", Msg::FeatureNotYetImplemented},
    {"feature not supported: \"%0\"", Msg::FeatureNotSupported},
    {"could not change file \"%0\" to mode %1", Msg::CouldNotChangeFileMode},
    {"could not copy file \"%0\" to \"%1\"", Msg::CouldNotCopyFile},
    {"current file of zip archive \"%0\" is not open", Msg::CurrentFileOfZipArchiveIsNotOpen},
    {"could not create symbolic link \"%0\" -> \"%1\"", Msg::CouldNotCreateSymbolicLink, RAISES_WITH_ERROR},
    {"could not rename file \"%0\" into \"%1\"", Msg::CouldNotRenameFile},
    {"file \"%0\" is not open", Msg::FileIsNotOpen},
    {"file \"%0\" is not open for write", Msg::FileIsNotOpenForWrite},
    {"could not open file \"%0\" with attributes \"%1\", %2 files open", Msg::CouldNotOpenFile, RAISES_WITH_ERROR},
    {"unexpected end of file in \"%0\"", Msg::UnexpectedEndOfFile, RAISES_WITH_ERROR},
    {"could not remove file \"%0\"", Msg::CouldNotRemoveFile, RAISES_WITH_ERROR},
    {"file seek to position %0 in mode %1 failed", Msg::FileSeekFailed, RAISES_WITH_ERROR},
    {"could not touch file \"%0\" to time %1", Msg::CouldNotTouchFile},
    {"%0 open files (peak %1)", Msg::OpenFiles, REPORTS},
    {"file write error after position %2, %1 bytes not written: \"%0\"", Msg::FileWriteError, RAISES_WITH_ERROR},
    {"still %0 files open", Msg::StillFilesOpen},
    {"Function %0 failed", Msg::FunctionFailed, RAISES_WITH_ERROR},
    {"id \"%0\" not found", Msg::IdNotFound},
    {"incomplete format string \"%0\"", Msg::IncompleteFormatString},
    {"index %0 out of range %1", Msg::IndexOutOfRange},
    {"unexpected integer value >= 2^32", Msg::UnexpectedIntegerValue},
    {"integer value to big", Msg::IntegerValueToBig},
    {"internal error %0: Integrity check of binary data failed", Msg::IntegrityCheckOfBinaryDataFailed},
    {"internal program error: %0", Msg::InternalProgramError},
    {"unallowed attribute \"%0\"", Msg::UnallowedAttribute},
    {"binary data is a dump of an invalid object \"%0\"", Msg::BinaryDataIsADumpOfAnInvalidObject},
    {"invalid boolean structure", Msg::InvalidBooleanStructure},
    {"invalid character '%0'", Msg::InvalidCharacter},
    {"invalid character '%0' after '%1'", Msg::InvalidCharacterAfter},
    {"invalid client instance %0, must be 16-bit integer", Msg::InvalidClientInstance},
    {"invalid column name \"%1\" in table \"%0\"", Msg::InvalidColumnName},
    {"invalid enum value for %0: %1", Msg::InvalidEnumValue},
    {"invalid format column \"%1\" in table \"%0\"", Msg::InvalidFormatColumn},
    {"invaöid format name \"%1\" in table \"%0\"", Msg::InvalidFormatName},
    {"invalid format string \"%0\"", Msg::InvalidFormatString},
    {"invalid language: \"%0\"", Msg::InvalidLanguage},
    {"invalid language code: %0", Msg::InvalidLanguageCode},
    {"invalid language id: %0", Msg::InvalidLanguageId},
    {"parameter \"%0\" has invalid value", Msg::ParameterHasInvalidValue},
    {"invalid radix \"%0\"", Msg::InvalidRadix},
    {"invalid table name \"%0\"", Msg::InvalidTableName},
    {"invalid unicode: \"%0\"", Msg::InvalidUnicode}, {"invalid xtoken %0", Msg::InvalidXtoken},
    {"key already \"%0\" exists", Msg::KeyAlreadyExists},
    {"WARNING: Match truncated due to too many posibilities", Msg::MatchTruncated, REPORTS},
    {"still %1 memory blocks with %0 bytes and %2 references in use", Msg::StillMemoryBlocksInUse},
    {"%0 memory bytes, %1 blocks, %2 references (peak %3, %4, %5)", Msg::MemoryInUse, REPORTS},
    {"missing header for binary data in XML string", Msg::MissingHeaderForBinaryData},
    {"missing char '%0' in string", Msg::MissingCharInString},
    {"missing char '%0' in XML stream", Msg::MissingCharInXmlStream},
    {"missing column \"%1\" in table \"%0\"", Msg::MissingColumn},
    {"error in csv file \"%0\": missing char '%3' in line %1: \n%2", Msg::MissingCharInCsvFile},
    {"no freetext \"%2\" for column \"%1\" of table \"%0\"", Msg::NoFreetextForColumn},
    {"no source file for table \"%0\" found", Msg::NoSourceFileForTable},
    {"missing table \"%0\"", Msg::MissingTable},
    {"could not create directory \"%0\"", Msg::CouldNotCreateDirectory},
    {"Duplicate input %0 for output %1", Msg::DuplicateInputForOutput},
    {"Only %0 of %1 entries configured", Msg::OnlySomeEntriesConfigured},
    {"data structure not in access mode", Msg::DataStructureNotInAccessMode},
    {"binary data is not a dump of object \"%0\"", Msg::BinaryDataIsNotADump},
    {"no valid master data found at %0 or access is denied", Msg::NoValidMasterDataFound},
    {"node has no predecessor", Msg::NodeHasNoPredecessor},
    {"node has not %1 successors", Msg::NodeHasNotSuccessors},
    {"node has no successor named \"%0\"", Msg::NodeHasNoSuccessorNamed},
    {"node has not %1 successors named \"%0\"", Msg::NodeHasNotSuccessorsNamed},
    {"not a pointer to object \"%0\"", Msg::NotAPointerToObject},
    {"no XML stream or stream is corrupted", Msg::NoXmlStream},
    {"node already exists", Msg::NodeAlreadyExists},
    {"path or file \"%0\" does not exist", Msg::PathOrFileDoesNotExist},
    {"unexpected state: object has nonzero reference count", Msg::ObjectHasNonzeroReferenceCount},
    {"%1Node \"%0\" not found in configuration", Msg::NodeNotFoundInConfiguration},
    {"object points to nothing", Msg::ObjectPointsToNothing},
    {"null pointer assignment", Msg::NullPointerAssignment},
    {"Could not open Named pipe '%0'", Msg::CouldNotOpenNamedPipe, RAISES_WITH_ERROR},
    {"Cannot open shared memory '%0'", Msg::CannotOpenSharedMemory, RAISES_WITH_ERROR},
    {"An other server is controlling the base dir '%0'", Msg::AnotherServerIsControllingTheBaseDir, RAISES_WITH_ERROR},
    {"cannot link with outer structure", Msg::CannotLinkWithOuterStructure},
    {"arithmetic overflow: %0 %2 %1", Msg::ArithmeticOverflow},
    {"Error reading to named pipe '%0'", Msg::ErrorReadingToNamedPipe, RAISES_WITH_ERROR},
    {"unexpected error during reallocation of block %0 from size %1 to size %2, %3 bytes and %4 blocks in use", Msg::UnexpectedErrorDuringReallocation},
    {"Cannot resize shared memory '%0' to size %1", Msg::CannotResizeSharedMemory, RAISES_WITH_ERROR},
    {"SetNamedPipeHandleState of named pipe '%0' failed", Msg::SetNamedPipeHandleStateFailed, RAISES_WITH_ERROR},
    {"Cannot set shared memory view with offset %0 and size %1", Msg::CannotSetSharedMemoryView, RAISES_WITH_ERROR},
    {"still %0 shared memory in use", Msg::StillSharedMemoryInUse},
    {"value of %0=%1 is out of 32 bit range", Msg::ValueOutOf32BitRange},
    {"source and destination directories are equal \"%0\"", Msg::SourceAndDestinationDirectoriesAreEqual},
    {"source directory \"%0\" not found", Msg::SourceDirectoryNotFound},
    {"stream not open for read", Msg::StreamNotOpenForRead},
    {"stream not open for write", Msg::StreamNotOpenForWrite},
    {"unexpected size of stream part: expected %0 but got %1", Msg::UnexpectedSizeOfStreamPart},
    {"Unexpected end of stream while reading from %0", Msg::UnexpectedEndOfStreamWhileReading},
    {"Unexpected end of stream %0: %1 bytes remaining to read", Msg::UnexpectedEndOfStreamRemainingToRead},
    {"unexpected end of stream after %1 of %0 bytes", Msg::UnexpectedEndOfStreamAfter},
    {"Unexpected end of stream while writing to %0", Msg::UnexpectedEndOfStreamWhileWriting},
    {"Unexpected end of stream %0: %1 bytes remaining to write", Msg::UnexpectedEndOfStreamRemainingToWrite},
    {"unexpected stream write error after %1 of %0 bytes", Msg::UnexpectedStreamWriteError},
    {"%0 threads (peak %1)", Msg::Threads, REPORTS},
    {"still %1 threads in use", Msg::StillThreadsInUse},
    {"could not open tiff buffer at %0 (%1 bytes)", Msg::CouldNotOpenTiffBuffer},
    {"could not open tiff file \"%0\" with attributes \"%1\"", Msg::CouldNotOpenTiffFile},
    {"Cannot read Tiff scanline %0", Msg::CannotReadTiffScanline, RAISES_WITH_ERROR},
    {"Cannot write Tiff scanline %0", Msg::CannotWriteTiffScanline, RAISES_WITH_ERROR},
    {"file \"%0\" has time stamp in future: %1", Msg::FileHasTimeStampInFuture},
    {"error in csv file \"%0\": too few (%3 insted of %4) columns in line %1: \n%2", Msg::TooFewColumnsInCsvFile},
    {"error in csv file \"%0\": too many (%3 insted of %4) columns in line %1: \n%2", Msg::TooManyColumnsInCsvFile},
    {"unavailable master data version %0 at %1", Msg::UnavailableMasterDataVersion},
    {"opening bracket '%0' used without corresponding closing bracket", Msg::OpeningBracketWithoutClosing},
    {"closing bracket '%0' used without corresponding opening bracket", Msg::ClosingBracketWithoutOpening},
    {"unexpected character '%0'", Msg::UnexpectedCharacter},
    {"unexpected coding in stream %0: expected %1 but got %2", Msg::UnexpectedCodingInStream},
    {"unexpected exception in %0(%1)", static_cast<Taking2*>(Msg::UnexpectedExceptionWithDetail), LOGS},
    {"unexpected exception in %0", static_cast<Taking1*>(Msg::UnexpectedException), LOGS},
    {"unexpected non utf sequence found!", Msg::UnexpectedNonUtfSequenceFound, REPORTS},
    {"Unexpected message code: expected %0 but got %1", Msg::UnexpectedMessageCode},
    {"unexpected exception in %0(%1): %2", static_cast<Taking3*>(Msg::UnexpectedExceptionWithDetail), LOGS},
    {"unexpected exception in %0: %1", static_cast<Taking2*>(Msg::UnexpectedException), LOGS},
    {"unknown character coding: \"%0\"", Msg::UnknownCharacterCoding},
    {"unknown conversion letter '%0'", Msg::UnknownConversionLetter},
    {"unknown escape sequence '%0'", Msg::UnknownEscapeSequence},
    {"unknown unicode general category '%0'", Msg::UnknownUnicodeGeneralCategory},
    {"unknown key bound descriptor %0", Msg::UnknownKeyBoundDescriptor},
    {"unknown key bound enumerator %0", Msg::UnknownKeyBoundEnumerator},
    {"unknown normalization form %0", Msg::UnknownNormalizationForm, REPORTS},
    {"unknown reco identifyer: \"%0\"", Msg::UnknownRecoIdentifier},
    {"unknown function '%0' in regular expression", Msg::UnknownFunctionInRegularExpression},
    {"unknown unicode script name '%0", Msg::UnknownUnicodeScriptName},
    {"unknown or corrupted stream format", Msg::UnknownOrCorruptedStreamFormat},
    {"unknown string mode descriptor %0", Msg::UnknownStringModeDescriptor},
    {"unknown xml sequene \"%0\"", Msg::UnknownXmlSequence}, {"wrong usage", Msg::WrongUsage},
    {"Error writing to named pipe '%0'", Msg::ErrorWritingToNamedPipe, RAISES_WITH_ERROR},
    {"binary data of object \"%0\" have wrong version %2, expected %1", +[](const char* s, u2_t uExpected, u2_t uVersion) { Msg::BinaryDataWrongVersion(s, uVersion, uExpected); }},
    {"binary data of object \"%0\" have wrong version %1-%2, expected %3-%4", Msg::BinaryDataWrongVersions},
    {"node \"%0\" with wrong data type: '%2' expected but got '%1'", Msg::NodeWithWrongDataTypeExpected},
    {"node \"%0\" with wrong data type: '%1'", Msg::NodeWithWrongDataType},
    {"\"%0\" with wrong data type", Msg::WithWrongDataType},
    {"empty attribute name in xpath not allowed", Msg::EmptyAttributeNameInXpath},
    {"empty xpath not allowed", Msg::EmptyXpathNotAllowed},
    {"empty zip file \"%0\"", Msg::EmptyZipFile},
    {"CRC error in current file of zip archive \"%0\"", Msg::CrcErrorInCurrentFileOfZipArchive},
    {"internal zip error: %0", Msg::InternalZipError},
    {"internal error processing zip file \"%0\": %1", Msg::InternalErrorProcessingZipFile},
    {"out of memory", Msg::OutOfMemory},
    {"zip file \"%0\" is not open for read", Msg::ZipFileIsNotOpenForRead},
    {"zip file \"%0\" is not open for write", Msg::ZipFileIsNotOpenForWrite},
    {"try to access deleted node", Msg::TryToAccessDeletedNode},
    // clang-format on
};

// Replaces each argument found in sMessage by "%" and its number.
std::string WithPlaceholders(std::string sMessage) {
    for (std::size_t uNth = 0; uNth < std::size(TEXTS); ++uNth) {
        const std::string sCode = "\xE1\xAD" + std::string(1, static_cast<char>(0x98 + uNth));
        for (const std::string& s : {TEXTS[uNth] + std::string(), std::to_string(7000 + uNth),
                                     "0x0000000000001B5" + std::string(1, "89ABCD"[uNth]), sCode}) {
            for (std::size_t u; (u = sMessage.find(s)) != std::string::npos;) {
                sMessage.replace(u, s.size(), "%" + std::to_string(uNth));
            }
        }
    }
    return sMessage;
}

std::set<char> Placeholders(const std::string& sText) {
    std::set<char> oFound;
    for (std::size_t u = 0; u + 1 < sText.size(); ++u) {
        if (sText[u] == '%') oFound.insert(sText[u + 1]);
    }
    return oFound;
}

// A single argument may stand for a placeholder other than %0.
std::string Renumbered(const char* sEnglish) {
    std::string s = sEnglish;
    if (!Placeholders(s).contains('0')) {
        for (char& c : s) c = c == '1' ? '0' : c;
    }
    return s;
}

std::string MessageOf(const Row& oRow) {
    (void)Msg_Capture::TakeConsole();
    (void)Msg_Capture::TakeDebug();
    const std::string sRaised = Raised(oRow.oCall);
    switch (oRow.eMode) {
        case REPORTS: return Msg_Capture::TakeConsole();
        case LOGS: return Msg_Capture::TakeDebug();
        default: return sRaised;
    }
}

const char* EndOf(Mode eMode) {
    if (eMode == REPORTS) return "\n|";
    if (eMode == RAISES_WITH_ERROR) return ": errno=ENOENT (No such file or directory)\n";
    return "\n";
}

TEST(MsgCatalog, EveryRowInBothLanguages) {
    const Msg_Capture oCapture;
    EXPECT_EQ(std::size(ROWS), 193u);
    for (const Row& oRow : ROWS) {
        const std::string sEnglish = Renumbered(oRow.sEnglish);
        const std::string sEnd = EndOf(oRow.eMode);
        Msg::SetLanguageIndex(Msg::ENGLISH);
        EXPECT_EQ(WithPlaceholders(MessageOf(oRow)), sEnglish + sEnd);
        Msg::SetLanguageIndex(Msg::GERMAN);
        const std::string sGerman = WithPlaceholders(MessageOf(oRow));
        EXPECT_TRUE(sGerman.ends_with(sEnd)) << sGerman;
        EXPECT_EQ(Placeholders(sGerman), Placeholders(sEnglish)) << sGerman;
        EXPECT_NE(sGerman, sEnglish + sEnd);
        EXPECT_GT(sGerman.size(), sEnd.size() + 5);
    }
}

TEST(MsgCatalog, GermanTexts) {
    const Msg_Capture oCapture;
    Msg::SetLanguage("de");
    EXPECT_EQ(Raised([] { Msg::AssertionFailed("a > b"); }), "Zusicherung fehlgeschlagen: a > b\n");
    EXPECT_EQ(Raised([] { Msg::StillFilesOpen(3); }), "Es sind noch 3 Dateien offen\n");
    EXPECT_EQ(Raised([] { Msg::InvalidOrCorruptedZipBuffer(); }),
              "Ungültiger oder zerstörter Zip-Puffer\n");
    EXPECT_EQ(Raised([] { Msg::LimitExceeded("nodes", 7, "Limits::m_uNodes"); }),
              "Grenze \"nodes\" von 7 überschritten (Limits::m_uNodes erhöhen)\n");
    Msg::OpenFiles(2, 5);
    EXPECT_EQ(Msg_Capture::TakeConsole(), "2 offene Dateien (Peak 5)\n|");
    (void)Msg_Capture::TakeDebug();
    Msg::UnexpectedException("f", "bad");
    EXPECT_EQ(Msg_Capture::TakeDebug(), "unerwarteter Ausnahmezustand in f: bad\n");
}

TEST(MsgCatalog, ReportsWhereTheCallerChooses) {
    const Msg_Capture oCapture;
    Msg::TooFewColumnsInCsvFile(false, "a.csv", 4, "1;2", 2, 3);
    EXPECT_EQ(Msg_Capture::TakeConsole(),
              "error in csv file \"a.csv\": too few (2 insted of 3) columns in line 4: \n1;2\n|");
}

}  // namespace
}  // namespace vok

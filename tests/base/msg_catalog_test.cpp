// Every entry of the catalog, in its order: the exact English text, and that the German one
// says as much.
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/base/msg_capture.h"
#include "vok/base/msg.h"

namespace vok {
namespace {

enum Mode { RAISES, RAISES_WITH_ERROR, REPORTS, LOGS, RAISES_OR_REPORTS };

// The argument for parameter uNth, of a value that shows which one it is and how it
// was printed.
constexpr u2_t VALUE = 7000;
const char* const TEXTS[] = {"<t0>", "<t1>", "<t2>", "<t3>", "<t4>", "<t5>"};
// What VALUE + uNth looks like as a number, an address and a character.
const char* const NUMBERS[] = {"7000", "7001", "7002", "7003", "7004", "7005"};
const char* const ADDRESSES[] = {"0x0000000000001B58", "0x0000000000001B59", "0x0000000000001B5A",
                                 "0x0000000000001B5B", "0x0000000000001B5C", "0x0000000000001B5D"};
const char* const CHARS[] = {"\u1B58", "\u1B59", "\u1B5A", "\u1B5B", "\u1B5C", "\u1B5D"};

template <class T>
T Argument(std::size_t uNth) {
    if constexpr (std::is_same_v<T, const char*>)
        return TEXTS[uNth];
    else
        return static_cast<T>(VALUE + uNth);
}

struct Row {
    const char* sEnglish;
    Mode eMode;
    std::function<void()> oCall;

    template <class... A>
    Row(const char* s, Mode e, void (*pEntry)(A...)) : sEnglish(s), eMode(e) {
        oCall = [this, pEntry] { Call(pEntry, std::index_sequence_for<A...>()); };
    }
    Row(const Row&) = delete;

  private:
    template <class... A, std::size_t... N>
    void Call(void (*pEntry)(A...), std::index_sequence<N...>) {
        if constexpr ((std::is_same_v<A, bool> || ...)) {
            pEntry(FirstIsFlag<A>(N)...);
        } else {
            // The system error comes last.
            pEntry(eMode == RAISES_WITH_ERROR && N + 1 == sizeof...(A) ? ErrorOr<A>()
                                                                       : Argument<A>(N)...);
        }
    }
    template <class T>
    static T FirstIsFlag(std::size_t uNth) {
        if constexpr (std::is_same_v<T, bool>)
            return true;
        else
            return Argument<T>(uNth - 1);
    }
    template <class T>
    static T ErrorOr() {
        if constexpr (std::is_same_v<T, u2_t>)
            return 2;
        else
            return {};
    }
};

const Row ROWS[] = {
    // clang-format off
    {"reallocation of block %0 from %1 to %2 bytes failed, %3 bytes and %4 blocks in use", RAISES, &Msg::ReallocationFromToFailed},
    {"node is not unique", RAISES, &Msg::NodeIsNotUnique},
    {"ambigous source for table \"%0\": \"%1\" \"%2\"", RAISES, &Msg::AmbiguousSourceForTable},
    {"assertion failed: %0 == %1 (%2 != %3)", RAISES, &Msg::AssertionFailedEqual},
    {"assertion failed: %0 > 0 (%0 == %1)", RAISES, &Msg::AssertionFailedPositive},
    {"assertion failed: %0 <= %1 (%2 > %3)", RAISES, &Msg::AssertionFailedLessEqual},
    {"assertion failed: %0 < %1 (%2 >= %3)", RAISES, &Msg::AssertionFailedLess},
    {"assertion failed: %0 != %1 (%2 == %3)", RAISES, &Msg::AssertionFailedNotEqual},
    {"assertion failed: %0 >= 0 (%0 == %1)", RAISES, &Msg::AssertionFailedNotNegative},
    {"assertion failed: %0 != 0 (%0 == %1)", RAISES, &Msg::AssertionFailedNotZero},
    {"assertion failed: %0 == 0 (%0 == %1)", RAISES, &Msg::AssertionFailedZero},
    {"assertion failed: %0", RAISES, &Msg::AssertionFailed},
    {"bad group name '%0' in regular expression", RAISES, &Msg::BadGroupNameInRegularExpression},
    {"invalid or corrupted zip buffer", RAISES, &Msg::InvalidOrCorruptedZipBuffer},
    {"invalid or corrupted zip file \"%0\"", RAISES, &Msg::InvalidOrCorruptedZipFile},
    {"blanks not allowed in column name \"%1\" of table \"%0\"", RAISES, &Msg::BlanksNotAllowedInColumnName},
    {"allocation of %0 bytes failed, %1 bytes and %2 blocks in use", RAISES, &Msg::AllocationFailed},
    {"block %0 with size %1 damaged", RAISES, &Msg::BlockDamaged},
    {"freeing of memory block %0 failed", RAISES, &Msg::FreeingOfMemoryBlockFailed},
    {"memory access error: block %0 with size %1", RAISES, &Msg::MemoryAccessError},
    {"reallocation of block %0 to %1 bytes failed, %2 bytes and %3 blocks in use", RAISES, &Msg::ReallocationFailed},
    {"block %0 has unexpected size %1, not %2", RAISES, &Msg::BlockHasUnexpectedSize},
    {"block %0 with unexpected size %1", RAISES, &Msg::BlockWithUnexpectedSize},
    {"memory write error: block %0 with size %1", RAISES, &Msg::MemoryWriteError},
    {"character '%0' expected after '%1'", RAISES, &Msg::CharacterExpectedAfter},
    {"coding of file \"%0\" could not be determined", RAISES, &Msg::CodingOfFileCouldNotBeDetermined},
    {"Named pipe '%0' could not be connected", RAISES_WITH_ERROR, &Msg::NamedPipeCouldNotBeConnected},
    {"Cannot create named pipe '%0'", RAISES_WITH_ERROR, &Msg::CannotCreateNamedPipe},
    {"Cannot create shared memory '%0' with size %1", RAISES_WITH_ERROR, &Msg::CannotCreateSharedMemory},
    {"try to decrement zero reference count", RAISES, &Msg::TryToDecrementZeroReferenceCount},
    {"directory \"%0\" is not empty, file \"%1\" found", RAISES, &Msg::DirectoryIsNotEmpty},
    {"duplicate column name \"%1\" in table \"%0\"", RAISES, &Msg::DuplicateColumnName},
    {"duplicate expansion character %0", RAISES, &Msg::DuplicateExpansionCharacter},
    {"duplicate format column \"%1\" in table \"%0\" for format \"%2\"", RAISES, &Msg::DuplicateFormatColumn},
    {"duplicate format name \"%1\" in table \"%0\"", RAISES, &Msg::DuplicateFormatName},
    {"duplicate match columns in table lookup", RAISES, &Msg::DuplicateMatchColumnsInTableLookup},
    {"duplicate reco identifyer: \"%0\"", RAISES, &Msg::DuplicateRecoIdentifier},
    {"duplicate replacement", RAISES, &Msg::DuplicateReplacement},
    {"duplicate table id: \"%0\"", RAISES, &Msg::DuplicateTableId},
    {"duplicate table name: \"%0\"", RAISES, &Msg::DuplicateTableName},
    {"duplicate text structure with type \"%0\": item types \"%1\" and \"%2\"", RAISES, &Msg::DuplicateTextStructure},
    {"empty column name in table \"%0\"", RAISES, &Msg::EmptyColumnName},
    {"empty line %1 in csv file \"%0\" was ignored", REPORTS, &Msg::EmptyLineInCsvFileIgnored},
    {"node is empty", RAISES, &Msg::NodeIsEmpty},
    {"empty path not allowed", RAISES, &Msg::EmptyPathNotAllowed},
    {"empty table name", RAISES, &Msg::EmptyTableName},
    {"feature not yet implemented: \"%0\"", RAISES, &Msg::FeatureNotYetImplemented},
    {"feature not supported: \"%0\"", RAISES, &Msg::FeatureNotSupported},
    {"could not change file \"%0\" to mode %1", RAISES, &Msg::CouldNotChangeFileMode},
    {"could not copy file \"%0\" to \"%1\"", RAISES, &Msg::CouldNotCopyFile},
    {"current file of zip archive \"%0\" is not open", RAISES, &Msg::CurrentFileOfZipArchiveIsNotOpen},
    {"could not create symbolic link \"%0\" -> \"%1\"", RAISES_WITH_ERROR, &Msg::CouldNotCreateSymbolicLink},
    {"could not rename file \"%0\" into \"%1\"", RAISES, &Msg::CouldNotRenameFile},
    {"file \"%0\" is not open", RAISES, &Msg::FileIsNotOpen},
    {"file \"%0\" is not open for write", RAISES, &Msg::FileIsNotOpenForWrite},
    {"could not open file \"%0\" with attributes \"%1\", %2 files open", RAISES_WITH_ERROR, &Msg::CouldNotOpenFile},
    {"unexpected end of file in \"%0\"", RAISES_WITH_ERROR, &Msg::UnexpectedEndOfFile},
    {"could not remove file \"%0\"", RAISES_WITH_ERROR, &Msg::CouldNotRemoveFile},
    {"file seek to position %0 in mode %1 failed", RAISES_WITH_ERROR, &Msg::FileSeekFailed},
    {"could not touch file \"%0\" to time %1", RAISES, &Msg::CouldNotTouchFile},
    {"%0 open files (peak %1)", REPORTS, &Msg::OpenFiles},
    {"file write error after position %2, %1 bytes not written: \"%0\"", RAISES_WITH_ERROR, &Msg::FileWriteError},
    {"still %0 files open", RAISES, &Msg::StillFilesOpen},
    {"Function %0 failed", RAISES_WITH_ERROR, &Msg::FunctionFailed},
    {"id \"%0\" not found", RAISES, &Msg::IdNotFound},
    {"incomplete format string \"%0\"", RAISES, &Msg::IncompleteFormatString},
    {"index %0 out of range %1", RAISES, &Msg::IndexOutOfRange},
    {"unexpected integer value >= 2^32", RAISES, &Msg::UnexpectedIntegerValue},
    {"integer value to big", RAISES, &Msg::IntegerValueToBig},
    {"internal error %0: Integrity check of binary data failed", RAISES, &Msg::IntegrityCheckOfBinaryDataFailed},
    {"internal program error: %0", RAISES, &Msg::InternalProgramError},
    {"unallowed attribute \"%0\"", RAISES, &Msg::UnallowedAttribute},
    {"binary data is a dump of an invalid object \"%0\"", RAISES, &Msg::BinaryDataIsADumpOfAnInvalidObject},
    {"invalid boolean structure", RAISES, &Msg::InvalidBooleanStructure},
    {"invalid character '%0'", RAISES, &Msg::InvalidCharacter},
    {"invalid character '%0' after '%1'", RAISES, &Msg::InvalidCharacterAfter},
    {"invalid client instance %0, must be 16-bit integer", RAISES, &Msg::InvalidClientInstance},
    {"invalid column name \"%1\" in table \"%0\"", RAISES, &Msg::InvalidColumnName},
    {"invalid enum value for %0: %1", RAISES, &Msg::InvalidEnumValue},
    {"invalid format column \"%1\" in table \"%0\"", RAISES, &Msg::InvalidFormatColumn},
    {"invaöid format name \"%1\" in table \"%0\"", RAISES, &Msg::InvalidFormatName},
    {"invalid format string \"%0\"", RAISES, &Msg::InvalidFormatString},
    {"invalid language: \"%0\"", RAISES, &Msg::InvalidLanguage},
    {"invalid language code: %0", RAISES, &Msg::InvalidLanguageCode},
    {"invalid language id: %0", RAISES, &Msg::InvalidLanguageId},
    {"parameter \"%0\" has invalid value", RAISES, &Msg::ParameterHasInvalidValue},
    {"invalid radix \"%0\"", RAISES, &Msg::InvalidRadix},
    {"invalid table name \"%0\"", RAISES, &Msg::InvalidTableName},
    {"invalid unicode: \"%0\"", RAISES, &Msg::InvalidUnicode},
    {"invalid xtoken %0", RAISES, &Msg::InvalidXtoken},
    {"key already \"%0\" exists", RAISES, &Msg::KeyAlreadyExists},
    {"WARNING: Match truncated due to too many posibilities", REPORTS, &Msg::MatchTruncated},
    {"still %1 memory blocks with %0 bytes and %2 references in use", RAISES, &Msg::StillMemoryBlocksInUse},
    {"%0 memory bytes, %1 blocks, %2 references (peak %3, %4, %5)", REPORTS, &Msg::MemoryInUse},
    {"missing header for binary data in XML string", RAISES, &Msg::MissingHeaderForBinaryData},
    {"missing char '%0' in string", RAISES, &Msg::MissingCharInString},
    {"missing char '%0' in XML stream", RAISES, &Msg::MissingCharInXmlStream},
    {"missing column \"%1\" in table \"%0\"", RAISES, &Msg::MissingColumn},
    {"error in csv file \"%0\": missing char '%3' in line %1: \n%2", RAISES_OR_REPORTS, &Msg::MissingCharInCsvFile},
    {"no freetext \"%2\" for column \"%1\" of table \"%0\"", RAISES, &Msg::NoFreetextForColumn},
    {"no source file for table \"%0\" found", RAISES, &Msg::NoSourceFileForTable},
    {"missing table \"%0\"", RAISES, &Msg::MissingTable},
    {"could not create directory \"%0\"", RAISES, &Msg::CouldNotCreateDirectory},
    {"Duplicate input %0 for output %1", RAISES, &Msg::DuplicateInputForOutput},
    {"Only %0 of %1 entries configured", RAISES, &Msg::OnlySomeEntriesConfigured},
    {"data structure not in access mode", RAISES, &Msg::DataStructureNotInAccessMode},
    {"binary data is not a dump of object \"%0\"", RAISES, &Msg::BinaryDataIsNotADump},
    {"no valid master data found at %0 or access is denied", RAISES, &Msg::NoValidMasterDataFound},
    {"node has no predecessor", RAISES, &Msg::NodeHasNoPredecessor},
    {"node has not %1 successors", RAISES, &Msg::NodeHasNotSuccessors},
    {"node has no successor named \"%0\"", RAISES, &Msg::NodeHasNoSuccessorNamed},
    {"node has not %1 successors named \"%0\"", RAISES, &Msg::NodeHasNotSuccessorsNamed},
    {"not a pointer to object \"%0\"", RAISES, &Msg::NotAPointerToObject},
    {"no XML stream or stream is corrupted", RAISES, &Msg::NoXmlStream},
    {"node already exists", RAISES, &Msg::NodeAlreadyExists},
    {"path or file \"%0\" does not exist", RAISES, &Msg::PathOrFileDoesNotExist},
    {"unexpected state: object has nonzero reference count", RAISES, &Msg::ObjectHasNonzeroReferenceCount},
    {"%1Node \"%0\" not found in configuration", RAISES, &Msg::NodeNotFoundInConfiguration},
    {"object points to nothing", RAISES, &Msg::ObjectPointsToNothing},
    {"null pointer assignment", RAISES, &Msg::NullPointerAssignment},
    {"Could not open Named pipe '%0'", RAISES_WITH_ERROR, &Msg::CouldNotOpenNamedPipe},
    {"Cannot open shared memory '%0'", RAISES_WITH_ERROR, &Msg::CannotOpenSharedMemory},
    {"An other server is controlling the base dir '%0'", RAISES_WITH_ERROR, &Msg::AnotherServerIsControllingTheBaseDir},
    {"cannot link with outer structure", RAISES, &Msg::CannotLinkWithOuterStructure},
    {"arithmetic overflow: %0 %2 %1", RAISES, &Msg::ArithmeticOverflow},
    {"Error reading to named pipe '%0'", RAISES_WITH_ERROR, &Msg::ErrorReadingToNamedPipe},
    {"unexpected error during reallocation of block %0 from size %1 to size %2, %3 bytes and %4 blocks in use", RAISES, &Msg::UnexpectedErrorDuringReallocation},
    {"Cannot resize shared memory '%0' to size %1", RAISES_WITH_ERROR, &Msg::CannotResizeSharedMemory},
    {"SetNamedPipeHandleState of named pipe '%0' failed", RAISES_WITH_ERROR, &Msg::SetNamedPipeHandleStateFailed},
    {"Cannot set shared memory view with offset %0 and size %1", RAISES_WITH_ERROR, &Msg::CannotSetSharedMemoryView},
    {"still %0 shared memory in use", RAISES, &Msg::StillSharedMemoryInUse},
    {"value of %0=%1 is out of 32 bit range", RAISES, &Msg::ValueOutOf32BitRange},
    {"source and destination directories are equal \"%0\"", RAISES, &Msg::SourceAndDestinationDirectoriesAreEqual},
    {"source directory \"%0\" not found", RAISES, &Msg::SourceDirectoryNotFound},
    {"stream not open for read", RAISES, &Msg::StreamNotOpenForRead},
    {"stream not open for write", RAISES, &Msg::StreamNotOpenForWrite},
    {"unexpected size of stream part: expected %0 but got %1", RAISES, &Msg::UnexpectedSizeOfStreamPart},
    {"Unexpected end of stream while reading from %0", RAISES, &Msg::UnexpectedEndOfStreamWhileReading},
    {"Unexpected end of stream %0: %1 bytes remaining to read", RAISES, &Msg::UnexpectedEndOfStreamRemainingToRead},
    {"unexpected end of stream after %1 of %0 bytes", RAISES, &Msg::UnexpectedEndOfStreamAfter},
    {"Unexpected end of stream while writing to %0", RAISES, &Msg::UnexpectedEndOfStreamWhileWriting},
    {"Unexpected end of stream %0: %1 bytes remaining to write", RAISES, &Msg::UnexpectedEndOfStreamRemainingToWrite},
    {"unexpected stream write error after %1 of %0 bytes", RAISES, &Msg::UnexpectedStreamWriteError},
    {"%0 threads (peak %1)", REPORTS, &Msg::Threads},
    {"still %1 threads in use", RAISES, &Msg::StillThreadsInUse},
    {"could not open tiff buffer at %0 (%1 bytes)", RAISES, &Msg::CouldNotOpenTiffBuffer},
    {"could not open tiff file \"%0\" with attributes \"%1\"", RAISES, &Msg::CouldNotOpenTiffFile},
    {"Cannot read Tiff scanline %0", RAISES_WITH_ERROR, &Msg::CannotReadTiffScanline},
    {"Cannot write Tiff scanline %0", RAISES_WITH_ERROR, &Msg::CannotWriteTiffScanline},
    {"file \"%0\" has time stamp in future: %1", RAISES, &Msg::FileHasTimeStampInFuture},
    {"error in csv file \"%0\": too few (%3 insted of %4) columns in line %1: \n%2", RAISES_OR_REPORTS, &Msg::TooFewColumnsInCsvFile},
    {"error in csv file \"%0\": too many (%3 insted of %4) columns in line %1: \n%2", RAISES_OR_REPORTS, &Msg::TooManyColumnsInCsvFile},
    {"unavailable master data version %0 at %1", RAISES, &Msg::UnavailableMasterDataVersion},
    {"opening bracket '%0' used without corresponding closing bracket", RAISES, &Msg::OpeningBracketWithoutClosing},
    {"closing bracket '%0' used without corresponding opening bracket", RAISES, &Msg::ClosingBracketWithoutOpening},
    {"unexpected character '%0'", RAISES, &Msg::UnexpectedCharacter},
    {"unexpected coding in stream %0: expected %1 but got %2", RAISES, &Msg::UnexpectedCodingInStream},
    {"unexpected exception in %0(%1)", LOGS, static_cast<void (*)(const char*, const char*)>(&Msg::UnexpectedExceptionWithDetail)},
    {"unexpected exception in %0", LOGS, static_cast<void (*)(const char*)>(&Msg::UnexpectedException)},
    {"unexpected non utf sequence found!", REPORTS, &Msg::UnexpectedNonUtfSequenceFound},
    {"Unexpected message code: expected %0 but got %1", RAISES, &Msg::UnexpectedMessageCode},
    {"unexpected exception in %0(%1): %2", LOGS, static_cast<void (*)(const char*, const char*, const char*)>(&Msg::UnexpectedExceptionWithDetail)},
    {"unexpected exception in %0: %1", LOGS, static_cast<void (*)(const char*, const char*)>(&Msg::UnexpectedException)},
    {"unknown character coding: \"%0\"", RAISES, &Msg::UnknownCharacterCoding},
    {"unknown conversion letter '%0'", RAISES, &Msg::UnknownConversionLetter},
    {"unknown escape sequence '%0'", RAISES, &Msg::UnknownEscapeSequence},
    {"unknown unicode general category '%0'", RAISES, &Msg::UnknownUnicodeGeneralCategory},
    {"unknown key bound descriptor %0", RAISES, &Msg::UnknownKeyBoundDescriptor},
    {"unknown key bound enumerator %0", RAISES, &Msg::UnknownKeyBoundEnumerator},
    {"unknown normalization form %0", REPORTS, &Msg::UnknownNormalizationForm},
    {"unknown reco identifyer: \"%0\"", RAISES, &Msg::UnknownRecoIdentifier},
    {"unknown function '%0' in regular expression", RAISES, &Msg::UnknownFunctionInRegularExpression},
    {"unknown unicode script name '%0", RAISES, &Msg::UnknownUnicodeScriptName},
    {"unknown or corrupted stream format", RAISES, &Msg::UnknownOrCorruptedStreamFormat},
    {"unknown string mode descriptor %0", RAISES, &Msg::UnknownStringModeDescriptor},
    {"unknown xml sequene \"%0\"", RAISES, &Msg::UnknownXmlSequence},
    {"wrong usage", RAISES, &Msg::WrongUsage},
    {"Error writing to named pipe '%0'", RAISES_WITH_ERROR, &Msg::ErrorWritingToNamedPipe},
    {"binary data of object \"%0\" have wrong version %2, expected %1", RAISES, +[](const char* s, u2_t uExpected, u2_t uVersion) { Msg::BinaryDataWrongVersion(s, uVersion, uExpected); }},
    {"binary data of object \"%0\" have wrong version %1-%2, expected %3-%4", RAISES, &Msg::BinaryDataWrongVersions},
    {"node \"%0\" with wrong data type: '%2' expected but got '%1'", RAISES, &Msg::NodeWithWrongDataTypeExpected},
    {"node \"%0\" with wrong data type: '%1'", RAISES, &Msg::NodeWithWrongDataType},
    {"\"%0\" with wrong data type", RAISES, &Msg::WithWrongDataType},
    {"empty attribute name in xpath not allowed", RAISES, &Msg::EmptyAttributeNameInXpath},
    {"empty xpath not allowed", RAISES, &Msg::EmptyXpathNotAllowed},
    {"empty zip file \"%0\"", RAISES, &Msg::EmptyZipFile},
    {"CRC error in current file of zip archive \"%0\"", RAISES, &Msg::CrcErrorInCurrentFileOfZipArchive},
    {"internal zip error: %0", RAISES, &Msg::InternalZipError},
    {"internal error processing zip file \"%0\": %1", RAISES, &Msg::InternalErrorProcessingZipFile},
    {"out of memory", RAISES, &Msg::OutOfMemory},
    {"zip file \"%0\" is not open for read", RAISES, &Msg::ZipFileIsNotOpenForRead},
    {"zip file \"%0\" is not open for write", RAISES, &Msg::ZipFileIsNotOpenForWrite},
    {"try to access deleted node", RAISES, &Msg::TryToAccessDeletedNode},
    // clang-format on
};

// Replaces each argument found in sMessage by "%" and its number.
std::string WithPlaceholders(std::string sMessage) {
    for (std::size_t uNth = 0; uNth < std::size(TEXTS); ++uNth) {
        for (const char* sForm : {TEXTS[uNth], NUMBERS[uNth], ADDRESSES[uNth], CHARS[uNth]}) {
            const std::string s = sForm;
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

TEST(MsgCatalog, HasAllRows) {
    EXPECT_EQ(std::size(ROWS), 193u);
}

TEST(MsgCatalog, EnglishTexts) {
    const Msg_Capture oCapture;
    for (const Row& oRow : ROWS) {
        EXPECT_EQ(WithPlaceholders(MessageOf(oRow)), Renumbered(oRow.sEnglish) + EndOf(oRow.eMode));
    }
}

TEST(MsgCatalog, GermanTextsHaveTheSamePlaceholders) {
    const Msg_Capture oCapture;
    for (const Row& oRow : ROWS) {
        Msg::SetLanguageIndex(Msg::GERMAN);
        const std::string sGerman = WithPlaceholders(MessageOf(oRow));
        SCOPED_TRACE(oRow.sEnglish);
        EXPECT_TRUE(sGerman.ends_with(EndOf(oRow.eMode))) << sGerman;
        EXPECT_EQ(Placeholders(sGerman), Placeholders(Renumbered(oRow.sEnglish))) << sGerman;
        EXPECT_NE(sGerman, std::string(oRow.sEnglish) + EndOf(oRow.eMode));
        EXPECT_GT(sGerman.size(), std::string(EndOf(oRow.eMode)).size() + 5);
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

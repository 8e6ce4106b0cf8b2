// Every entry of the catalog: that both languages show all of its arguments and end alike, and
// the texts by their checksums.
#include <zlib.h>

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
    if constexpr (std::is_same_v<T, const char*>) {
        return TEXTS[uNth - 1];
    } else if constexpr (std::is_same_v<T, bool>) {
        return true;
    } else {
        return static_cast<T>(uNth == uError ? 2 : 7000 + uNth - 1);
    }
}

// A flag comes first and is no parameter of the text; a system error comes last.
struct Entry {
    template <class... A>
    Entry(Mode e, void (*pEntry)(A...)) : eMode(e) {
        constexpr bool FLAG = (std::is_same_v<A, bool> || ...);
        const std::size_t uError = e == RAISES_WITH_ERROR ? sizeof...(A) : 0;
        uArguments = sizeof...(A) - FLAG - (uError != 0);
        oCall = [=] {
            [[maybe_unused]] std::size_t uNth = FLAG ? SIZE_MAX : 0;
            std::apply(pEntry, std::tuple<A...>{Next<A>(uNth, uError)...});
        };
    }

    Mode eMode;
    std::size_t uArguments = 0;
    std::function<void()> oCall;
};

template <class... F>
void Add(std::vector<Entry>& oAll, Mode eMode, F... pEntries) {
    (oAll.emplace_back(eMode, pEntries), ...);
}

void WrongVersion(const char* s, u2_t uExpected, u2_t uVersion) {
    Msg::BinaryDataWrongVersion(s, uVersion, uExpected);
}
using Taking1 = void(const char*);
using Taking2 = void(const char*, const char*);
using Taking3 = void(const char*, const char*, const char*);

std::vector<Entry> AllEntries() {
    std::vector<Entry> oAll;
    Add(oAll, RAISES, Msg::ReallocationFromToFailed, Msg::NodeIsNotUnique,
        Msg::AmbiguousSourceForTable, Msg::AssertionFailedEqual, Msg::AssertionFailedPositive,
        Msg::AssertionFailedLessEqual, Msg::AssertionFailedLess, Msg::AssertionFailedNotEqual,
        Msg::AssertionFailedNotNegative, Msg::AssertionFailedNotZero, Msg::AssertionFailedZero,
        Msg::AssertionFailed, Msg::BadGroupNameInRegularExpression,
        Msg::InvalidOrCorruptedZipBuffer, Msg::InvalidOrCorruptedZipFile,
        Msg::BlanksNotAllowedInColumnName, Msg::AllocationFailed, Msg::BlockDamaged,
        Msg::FreeingOfMemoryBlockFailed, Msg::MemoryAccessError, Msg::ReallocationFailed,
        Msg::BlockHasUnexpectedSize, Msg::BlockWithUnexpectedSize, Msg::MemoryWriteError,
        Msg::CharacterExpectedAfter, Msg::CodingOfFileCouldNotBeDetermined,
        Msg::TryToDecrementZeroReferenceCount, Msg::DirectoryIsNotEmpty, Msg::DuplicateColumnName,
        Msg::DuplicateExpansionCharacter, Msg::DuplicateFormatColumn, Msg::DuplicateFormatName,
        Msg::DuplicateMatchColumnsInTableLookup, Msg::DuplicateRecoIdentifier,
        Msg::DuplicateReplacement, Msg::DuplicateTableId, Msg::DuplicateTableName,
        Msg::DuplicateTextStructure, Msg::EmptyColumnName, Msg::NodeIsEmpty,
        Msg::EmptyPathNotAllowed, Msg::EmptyTableName, Msg::FeatureNotYetImplemented,
        Msg::FeatureNotSupported, Msg::CouldNotChangeFileMode, Msg::CouldNotCopyFile,
        Msg::CurrentFileOfZipArchiveIsNotOpen, Msg::CouldNotRenameFile, Msg::FileIsNotOpen,
        Msg::FileIsNotOpenForWrite, Msg::CouldNotTouchFile, Msg::StillFilesOpen, Msg::IdNotFound,
        Msg::IncompleteFormatString, Msg::IndexOutOfRange, Msg::UnexpectedIntegerValue,
        Msg::IntegerValueToBig, Msg::IntegrityCheckOfBinaryDataFailed, Msg::InternalProgramError,
        Msg::UnallowedAttribute, Msg::BinaryDataIsADumpOfAnInvalidObject,
        Msg::InvalidBooleanStructure, Msg::InvalidCharacter, Msg::InvalidCharacterAfter,
        Msg::InvalidClientInstance, Msg::InvalidColumnName, Msg::InvalidEnumValue,
        Msg::InvalidFormatColumn, Msg::InvalidFormatName, Msg::InvalidFormatString,
        Msg::InvalidLanguage, Msg::InvalidLanguageCode, Msg::InvalidLanguageId,
        Msg::ParameterHasInvalidValue, Msg::InvalidRadix, Msg::InvalidTableName,
        Msg::InvalidUnicode, Msg::InvalidXtoken, Msg::KeyAlreadyExists, Msg::StillMemoryBlocksInUse,
        Msg::MissingHeaderForBinaryData, Msg::MissingCharInString, Msg::MissingCharInXmlStream,
        Msg::MissingColumn, Msg::MissingCharInCsvFile, Msg::NoFreetextForColumn,
        Msg::NoSourceFileForTable, Msg::MissingTable, Msg::CouldNotCreateDirectory,
        Msg::DuplicateInputForOutput, Msg::OnlySomeEntriesConfigured,
        Msg::DataStructureNotInAccessMode, Msg::BinaryDataIsNotADump, Msg::NoValidMasterDataFound,
        Msg::NodeHasNoPredecessor, Msg::NodeHasNotSuccessors, Msg::NodeHasNoSuccessorNamed,
        Msg::NodeHasNotSuccessorsNamed, Msg::NotAPointerToObject, Msg::NoXmlStream,
        Msg::NodeAlreadyExists, Msg::PathOrFileDoesNotExist, Msg::ObjectHasNonzeroReferenceCount,
        Msg::NodeNotFoundInConfiguration, Msg::ObjectPointsToNothing, Msg::NullPointerAssignment,
        Msg::CannotLinkWithOuterStructure, Msg::ArithmeticOverflow,
        Msg::UnexpectedErrorDuringReallocation, Msg::StillSharedMemoryInUse,
        Msg::ValueOutOf32BitRange, Msg::SourceAndDestinationDirectoriesAreEqual,
        Msg::SourceDirectoryNotFound, Msg::StreamNotOpenForRead, Msg::StreamNotOpenForWrite,
        Msg::UnexpectedSizeOfStreamPart, Msg::UnexpectedEndOfStreamWhileReading,
        Msg::UnexpectedEndOfStreamRemainingToRead, Msg::UnexpectedEndOfStreamAfter,
        Msg::UnexpectedEndOfStreamWhileWriting, Msg::UnexpectedEndOfStreamRemainingToWrite,
        Msg::UnexpectedStreamWriteError, Msg::StillThreadsInUse, Msg::CouldNotOpenTiffBuffer,
        Msg::CouldNotOpenTiffFile, Msg::FileHasTimeStampInFuture, Msg::TooFewColumnsInCsvFile,
        Msg::TooManyColumnsInCsvFile, Msg::UnavailableMasterDataVersion,
        Msg::OpeningBracketWithoutClosing, Msg::ClosingBracketWithoutOpening,
        Msg::UnexpectedCharacter, Msg::UnexpectedCodingInStream, Msg::UnexpectedMessageCode,
        Msg::UnknownCharacterCoding, Msg::UnknownConversionLetter, Msg::UnknownEscapeSequence,
        Msg::UnknownUnicodeGeneralCategory, Msg::UnknownKeyBoundDescriptor,
        Msg::UnknownKeyBoundEnumerator, Msg::UnknownRecoIdentifier,
        Msg::UnknownFunctionInRegularExpression, Msg::UnknownUnicodeScriptName,
        Msg::UnknownOrCorruptedStreamFormat, Msg::UnknownStringModeDescriptor,
        Msg::UnknownXmlSequence, Msg::WrongUsage, WrongVersion, Msg::BinaryDataWrongVersions,
        Msg::NodeWithWrongDataTypeExpected, Msg::NodeWithWrongDataType, Msg::WithWrongDataType,
        Msg::EmptyAttributeNameInXpath, Msg::EmptyXpathNotAllowed, Msg::EmptyZipFile,
        Msg::CrcErrorInCurrentFileOfZipArchive, Msg::InternalZipError,
        Msg::InternalErrorProcessingZipFile, Msg::OutOfMemory, Msg::ZipFileIsNotOpenForRead,
        Msg::ZipFileIsNotOpenForWrite, Msg::TryToAccessDeletedNode, Msg::LimitExceeded);
    Add(oAll, RAISES_WITH_ERROR, Msg::NamedPipeCouldNotBeConnected, Msg::CannotCreateNamedPipe,
        Msg::CannotCreateSharedMemory, Msg::CouldNotCreateSymbolicLink, Msg::CouldNotOpenFile,
        Msg::UnexpectedEndOfFile, Msg::CouldNotRemoveFile, Msg::FileSeekFailed, Msg::FileWriteError,
        Msg::FunctionFailed, Msg::CouldNotOpenNamedPipe, Msg::CannotOpenSharedMemory,
        Msg::AnotherServerIsControllingTheBaseDir, Msg::ErrorReadingToNamedPipe,
        Msg::CannotResizeSharedMemory, Msg::SetNamedPipeHandleStateFailed,
        Msg::CannotSetSharedMemoryView, Msg::CannotReadTiffScanline, Msg::CannotWriteTiffScanline,
        Msg::ErrorWritingToNamedPipe);
    Add(oAll, REPORTS, Msg::EmptyLineInCsvFileIgnored, Msg::OpenFiles, Msg::MatchTruncated,
        Msg::MemoryInUse, Msg::Threads, Msg::UnexpectedNonUtfSequenceFound,
        Msg::UnknownNormalizationForm);
    Add(oAll, LOGS, static_cast<Taking2*>(Msg::UnexpectedExceptionWithDetail),
        static_cast<Taking1*>(Msg::UnexpectedException),
        static_cast<Taking3*>(Msg::UnexpectedExceptionWithDetail),
        static_cast<Taking2*>(Msg::UnexpectedException));
    return oAll;
}

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

std::string MessageOf(const Entry& oEntry) {
    (void)Msg_Capture::TakeConsole();
    (void)Msg_Capture::TakeDebug();
    const std::string sRaised = Raised(oEntry.oCall);
    switch (oEntry.eMode) {
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

TEST(MsgCatalog, EveryEntryInBothLanguages) {
    const Msg_Capture oCapture;
    std::string asAll[2];
    for (const Entry& oEntry : AllEntries()) {
        const std::string sEnd = EndOf(oEntry.eMode);
        for (const u2_t uLanguage : {Msg::ENGLISH, Msg::GERMAN}) {
            Msg::SetLanguageIndex(uLanguage);
            const std::string s = WithPlaceholders(MessageOf(oEntry));
            EXPECT_TRUE(s.ends_with(sEnd)) << s;
            EXPECT_GT(s.size(), sEnd.size() + 5) << s;
            EXPECT_EQ(Placeholders(s).size(), oEntry.uArguments) << s;
            asAll[uLanguage] += s;
        }
    }
    // Hosts compare texts and users know them: no letter of them changes by accident.
    const auto Sum = [](const std::string& s) {
        return crc32(0, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size()));
    };
    EXPECT_EQ(Sum(asAll[Msg::ENGLISH]), 0x63A1F819u) << asAll[Msg::ENGLISH];
    EXPECT_EQ(Sum(asAll[Msg::GERMAN]), 0xA6266EE5u) << asAll[Msg::GERMAN];
}

// As they are called where they are watched.
TEST(MsgCatalog, LimitsHaveNamesInBothLanguages) {
    const Msg_Capture oCapture;
    for (const std::string sLimit :
         {"nodes", "depth", "skipped slots", "text bytes", "attributes", "path steps",
          "inflated bytes", "inflation ratio", "zip entries", "work for a byte",
          "memory for a byte", "of another's"}) {
        const auto oRaise = [&] { Msg::LimitExceeded(sLimit.c_str(), 7, "m_u"); };
        Msg::SetLanguageIndex(Msg::ENGLISH);
        EXPECT_EQ(Failing(oRaise), "limit \"" + sLimit + "\" of 7 exceeded (raise m_u)");
        Msg::SetLanguageIndex(Msg::GERMAN);
        const bool bSame = Failing(oRaise).starts_with("Grenze \"" + sLimit + "\" von 7 ");
        EXPECT_EQ(bSame, sLimit == "of another's") << Failing(oRaise);
    }
}

TEST(MsgCatalog, ReportsWhereTheCallerChooses) {
    const Msg_Capture oCapture;
    Msg::TooFewColumnsInCsvFile(false, "a.csv", 4, "1;2", 2, 3);
    EXPECT_EQ(Msg_Capture::TakeConsole(),
              "error in csv file \"a.csv\": too few (2 insted of 3) columns in line 4: \n1;2\n|");
}

}  // namespace
}  // namespace vok

// SPDX-License-Identifier: MIT
// The message catalog: every text the library can report, as one function each.
#ifndef VOK_BASE_MSG_CATALOG_H
#define VOK_BASE_MSG_CATALOG_H

#include "vok/base/types.h"

namespace vok {

// One function per message, named after its English text, with the values for its
// placeholders as parameters. Call them through Msg: Msg::NodeIsEmpty().
//
// Unless marked otherwise an entry raises a Msg_Exception. A parameter uSystemError is
// sys::RuntimeError() of the call that failed (Msg::SystemError()), or 0 for none; it adds
// the system's reason to the text. uChar is a code point. Null texts print as nothing.
//
// By subject; the texts stand in the same order in msg_catalog_core.cpp, _data, _file and _table.
class Msg_Catalog {
  public:
    // ---- assertions --------------------------------------------------------

    [[noreturn]] static void AssertionFailed(const char* sExpr);
    [[noreturn]] static void AssertionFailedEqual(const char* sLeft, const char* sRight, u3_t uLeft,
                                                  u3_t uRight);
    [[noreturn]] static void AssertionFailedNotEqual(const char* sLeft, const char* sRight,
                                                     u3_t uLeft, u3_t uRight);
    [[noreturn]] static void AssertionFailedLess(const char* sLeft, const char* sRight, u3_t uLeft,
                                                 u3_t uRight);
    [[noreturn]] static void AssertionFailedLessEqual(const char* sLeft, const char* sRight,
                                                      u3_t uLeft, u3_t uRight);
    [[noreturn]] static void AssertionFailedPositive(const char* sExpr, u3_t uValue);
    [[noreturn]] static void AssertionFailedNotNegative(const char* sExpr, i3_t iValue);
    [[noreturn]] static void AssertionFailedZero(const char* sExpr, u3_t uValue);
    [[noreturn]] static void AssertionFailedNotZero(const char* sExpr, u3_t uValue);

    // ---- memory ------------------------------------------------------------

    [[noreturn]] static void AllocationFailed(u3_t uBytes, u3_t uBytesInUse, u3_t uBlocksInUse);
    [[noreturn]] static void ReallocationFailed(u3_t uBlockAddress, u3_t uBytes, u3_t uBytesInUse,
                                                u3_t uBlocksInUse);
    [[noreturn]] static void ReallocationFromToFailed(u3_t uBlockAddress, u3_t uOldBytes,
                                                      u3_t uNewBytes, u3_t uBytesInUse,
                                                      u3_t uBlocksInUse);
    [[noreturn]] static void UnexpectedErrorDuringReallocation(u3_t uBlockAddress, u3_t uOldBytes,
                                                               u3_t uNewBytes, u3_t uBytesInUse,
                                                               u3_t uBlocksInUse);
    [[noreturn]] static void FreeingOfMemoryBlockFailed(u3_t uBlockAddress);
    [[noreturn]] static void BlockDamaged(u3_t uBlockAddress, u3_t uBytes);
    [[noreturn]] static void BlockHasUnexpectedSize(u3_t uBlockAddress, u3_t uBytes,
                                                    u3_t uExpectedBytes);
    [[noreturn]] static void BlockWithUnexpectedSize(u3_t uBlockAddress, u3_t uBytes);
    [[noreturn]] static void MemoryAccessError(u3_t uBlockAddress, u3_t uBytes);
    [[noreturn]] static void MemoryWriteError(u3_t uBlockAddress, u3_t uBytes);
    [[noreturn]] static void OutOfMemory();
    static void MemoryInUse(u3_t uBytes, u3_t uBlocks, u3_t uReferences, u3_t uPeakBytes,
                            u3_t uPeakBlocks, u3_t uPeakReferences);  // reports
    [[noreturn]] static void StillMemoryBlocksInUse(u3_t uBytes, u3_t uBlocks, u3_t uReferences);

    // ---- references --------------------------------------------------------

    [[noreturn]] static void TryToDecrementZeroReferenceCount();
    [[noreturn]] static void ObjectHasNonzeroReferenceCount();
    [[noreturn]] static void ObjectPointsToNothing();
    [[noreturn]] static void NullPointerAssignment();
    [[noreturn]] static void NotAPointerToObject(const char* sObject);

    // ---- numbers -----------------------------------------------------------

    [[noreturn]] static void IndexOutOfRange(u3_t uIndex, u3_t uRange);
    [[noreturn]] static void IntegerValueToBig();
    [[noreturn]] static void UnexpectedIntegerValue();
    [[noreturn]] static void ValueOutOf32BitRange(const char* sName, i3_t iValue);
    [[noreturn]] static void ArithmeticOverflow(const char* sLeft, const char* sRight,
                                                const char* sOperator);
    [[noreturn]] static void InvalidEnumValue(const char* sEnum, u3_t uValue);
    [[noreturn]] static void InvalidRadix(const char* sRadix);

    // ---- languages ---------------------------------------------------------

    [[noreturn]] static void InvalidLanguage(const char* sLanguage);
    [[noreturn]] static void InvalidLanguageCode(u2_t uId);
    [[noreturn]] static void InvalidLanguageId(u2_t uIndex);

    // ---- the program -------------------------------------------------------

    [[noreturn]] static void FeatureNotYetImplemented(const char* sFeature);
    [[noreturn]] static void FeatureNotSupported(const char* sFeature);
    [[noreturn]] static void ParameterHasInvalidValue(const char* sParameter);
    [[noreturn]] static void WrongUsage();
    [[noreturn]] static void FunctionFailed(const char* sFunction, u2_t uSystemError);
    [[noreturn]] static void InternalProgramError(const char* sWhat);
    [[noreturn]] static void IntegrityCheckOfBinaryDataFailed(u3_t uError);
    static void UnexpectedException(const char* sWhere);                                 // logs
    static void UnexpectedException(const char* sWhere, const char* sWhat);              // logs
    static void UnexpectedExceptionWithDetail(const char* sWhere, const char* sDetail);  // logs
    static void UnexpectedExceptionWithDetail(const char* sWhere, const char* sDetail,
                                              const char* sWhat);  // logs
    [[noreturn]] static void UnexpectedMessageCode(u3_t uExpected, u3_t uActual);
    [[noreturn]] static void InvalidClientInstance(u3_t uInstance);
    static void Threads(u3_t uThreads, u3_t uPeak);  // reports
    [[noreturn]] static void StillThreadsInUse(u3_t uThreads);

    // ---- limits ------------------------------------------------------------

    // sLimit names what was limited, sField the setting that raises it ("Limits::m_uNodes").
    [[noreturn]] static void LimitExceeded(const char* sLimit, u3_t uLimit, const char* sField);

    // ---- nodes -------------------------------------------------------------

    [[noreturn]] static void NodeIsEmpty();
    [[noreturn]] static void NodeIsNotUnique();
    [[noreturn]] static void NodeAlreadyExists();
    [[noreturn]] static void NodeHasNoPredecessor();
    [[noreturn]] static void NodeHasNotSuccessors(u3_t uNth);
    [[noreturn]] static void NodeHasNoSuccessorNamed(const char* sName);
    [[noreturn]] static void NodeHasNotSuccessorsNamed(const char* sName, u3_t uNth);
    [[noreturn]] static void NodeNotFoundInConfiguration(const char* sNode, const char* sPrefix);
    [[noreturn]] static void TryToAccessDeletedNode();
    [[noreturn]] static void CannotLinkWithOuterStructure();
    [[noreturn]] static void DataStructureNotInAccessMode();

    // ---- types of values ---------------------------------------------------

    [[noreturn]] static void NodeWithWrongDataTypeExpected(const char* sName, const char* sActual,
                                                           const char* sExpected);
    [[noreturn]] static void NodeWithWrongDataType(const char* sName, const char* sType);
    [[noreturn]] static void WithWrongDataType(const char* sName);

    // ---- paths -------------------------------------------------------------

    [[noreturn]] static void EmptyPathNotAllowed();
    [[noreturn]] static void EmptyXpathNotAllowed();
    [[noreturn]] static void EmptyAttributeNameInXpath();
    [[noreturn]] static void UnallowedAttribute(const char* sName);

    // ---- dumps -------------------------------------------------------------

    [[noreturn]] static void BinaryDataIsNotADump(const char* sObject);
    [[noreturn]] static void BinaryDataIsADumpOfAnInvalidObject(const char* sObject);
    // The text names the expected version first.
    [[noreturn]] static void BinaryDataWrongVersion(const char* sObject, u2_t uVersion,
                                                    u2_t uExpected);
    [[noreturn]] static void BinaryDataWrongVersions(const char* sObject, u2_t uLibraryVersion,
                                                     u2_t uVersion, u2_t uExpectedLibraryVersion,
                                                     u2_t uExpectedVersion);

    // ---- XML ---------------------------------------------------------------

    [[noreturn]] static void NoXmlStream();
    [[noreturn]] static void UnknownXmlSequence(const char* sSequence);
    [[noreturn]] static void MissingCharInXmlStream(u2_t uChar);
    [[noreturn]] static void MissingHeaderForBinaryData();
    [[noreturn]] static void InvalidXtoken(const char* sToken);

    // ---- characters --------------------------------------------------------

    [[noreturn]] static void InvalidCharacter(u2_t uChar);
    [[noreturn]] static void InvalidCharacterAfter(u2_t uChar, u2_t uAfter);
    [[noreturn]] static void UnexpectedCharacter(u2_t uChar);
    [[noreturn]] static void CharacterExpectedAfter(u2_t uChar, u2_t uAfter);
    [[noreturn]] static void MissingCharInString(u2_t uChar);
    [[noreturn]] static void OpeningBracketWithoutClosing(u2_t uChar);
    [[noreturn]] static void ClosingBracketWithoutOpening(u2_t uChar);
    [[noreturn]] static void UnknownConversionLetter(u2_t uChar);
    [[noreturn]] static void UnknownEscapeSequence(const char* sSequence);
    [[noreturn]] static void UnknownStringModeDescriptor(u3_t uDescriptor);

    // ---- Unicode -----------------------------------------------------------

    [[noreturn]] static void InvalidUnicode(const char* sText);
    static void UnexpectedNonUtfSequenceFound();  // reports
    [[noreturn]] static void UnknownCharacterCoding(const char* sCoding);
    static void UnknownNormalizationForm(u3_t uForm);  // reports
    [[noreturn]] static void UnknownUnicodeGeneralCategory(const char* sCategory);
    [[noreturn]] static void UnknownUnicodeScriptName(const char* sName);

    // ---- expressions -------------------------------------------------------

    [[noreturn]] static void InvalidBooleanStructure();
    [[noreturn]] static void BadGroupNameInRegularExpression(const char* sName);
    [[noreturn]] static void UnknownFunctionInRegularExpression(const char* sName);

    // ---- files -------------------------------------------------------------

    [[noreturn]] static void CouldNotOpenFile(const char* sPath, const char* sAttributes,
                                              u3_t uOpenFiles, u2_t uSystemError);
    [[noreturn]] static void FileIsNotOpen(const char* sName);
    [[noreturn]] static void FileIsNotOpenForWrite(const char* sName);
    [[noreturn]] static void UnexpectedEndOfFile(const char* sName, u2_t uSystemError);
    [[noreturn]] static void FileSeekFailed(i3_t iPosition, int iMode, u2_t uSystemError);
    [[noreturn]] static void FileWriteError(const char* sName, u3_t uNotWritten, i3_t iPosition,
                                            u2_t uSystemError);
    [[noreturn]] static void CouldNotChangeFileMode(const char* sName, const char* sMode);
    [[noreturn]] static void CouldNotCopyFile(const char* sFrom, const char* sTo,
                                              u2_t uSystemError = 0);
    [[noreturn]] static void CouldNotRenameFile(const char* sFrom, const char* sTo,
                                                u2_t uSystemError = 0);
    [[noreturn]] static void CouldNotRemoveFile(const char* sName, u2_t uSystemError);
    [[noreturn]] static void CouldNotTouchFile(const char* sName, const char* sTime,
                                               u2_t uSystemError = 0);
    [[noreturn]] static void CouldNotCreateSymbolicLink(const char* sLink, const char* sTarget,
                                                        u2_t uSystemError);
    [[noreturn]] static void CodingOfFileCouldNotBeDetermined(const char* sName);
    [[noreturn]] static void FileHasTimeStampInFuture(const char* sName, const char* sTime);
    static void OpenFiles(u3_t uOpen, u3_t uPeak);  // reports
    [[noreturn]] static void StillFilesOpen(u3_t uOpen);

    // ---- directories -------------------------------------------------------

    [[noreturn]] static void CouldNotCreateDirectory(const char* sPath, u2_t uSystemError = 0);
    [[noreturn]] static void DirectoryIsNotEmpty(const char* sDirectory, const char* sFile);
    [[noreturn]] static void PathOrFileDoesNotExist(const char* sPath, u2_t uSystemError = 0);
    [[noreturn]] static void SourceDirectoryNotFound(const char* sDirectory, u2_t uSystemError = 0);
    [[noreturn]] static void SourceAndDestinationDirectoriesAreEqual(const char* sDirectory);
    [[noreturn]] static void AnotherServerIsControllingTheBaseDir(const char* sDirectory,
                                                                  u2_t uSystemError);

    // ---- streams -----------------------------------------------------------

    [[noreturn]] static void StreamNotOpenForRead();
    [[noreturn]] static void StreamNotOpenForWrite();
    [[noreturn]] static void UnexpectedSizeOfStreamPart(u3_t uExpected, u3_t uActual);
    [[noreturn]] static void UnexpectedEndOfStreamWhileReading(const char* sName);
    [[noreturn]] static void UnexpectedEndOfStreamRemainingToRead(const char* sName, u3_t uBytes);
    [[noreturn]] static void UnexpectedEndOfStreamAfter(u3_t uExpected, u3_t uActual);
    [[noreturn]] static void UnexpectedEndOfStreamWhileWriting(const char* sName);
    [[noreturn]] static void UnexpectedEndOfStreamRemainingToWrite(const char* sName, u3_t uBytes);
    [[noreturn]] static void UnexpectedStreamWriteError(u3_t uExpected, u3_t uActual);
    [[noreturn]] static void UnexpectedCodingInStream(const char* sName, const char* sExpected,
                                                      const char* sActual);
    [[noreturn]] static void UnknownOrCorruptedStreamFormat();

    // ---- zip archives ------------------------------------------------------

    [[noreturn]] static void InvalidOrCorruptedZipBuffer();
    [[noreturn]] static void InvalidOrCorruptedZipFile(const char* sName);
    [[noreturn]] static void EmptyZipFile(const char* sName);
    [[noreturn]] static void ZipFileIsNotOpenForRead(const char* sName);
    [[noreturn]] static void ZipFileIsNotOpenForWrite(const char* sName);
    [[noreturn]] static void CurrentFileOfZipArchiveIsNotOpen(const char* sName);
    [[noreturn]] static void CrcErrorInCurrentFileOfZipArchive(const char* sName);
    [[noreturn]] static void InternalZipError(const char* sWhat);
    [[noreturn]] static void InternalErrorProcessingZipFile(const char* sName, const char* sWhat);

    // ---- pipes -------------------------------------------------------------

    [[noreturn]] static void CannotCreateNamedPipe(const char* sName, u2_t uSystemError);
    [[noreturn]] static void CouldNotOpenNamedPipe(const char* sName, u2_t uSystemError);
    [[noreturn]] static void NamedPipeCouldNotBeConnected(const char* sName, u2_t uSystemError);
    [[noreturn]] static void SetNamedPipeHandleStateFailed(const char* sName, u2_t uSystemError);
    [[noreturn]] static void ErrorReadingToNamedPipe(const char* sName, u2_t uSystemError);
    [[noreturn]] static void ErrorWritingToNamedPipe(const char* sName, u2_t uSystemError);

    // ---- shared memory -----------------------------------------------------

    [[noreturn]] static void CannotCreateSharedMemory(const char* sName, u3_t uBytes,
                                                      u2_t uSystemError);
    [[noreturn]] static void CannotOpenSharedMemory(const char* sName, u2_t uSystemError);
    [[noreturn]] static void CannotResizeSharedMemory(const char* sName, u3_t uBytes,
                                                      u2_t uSystemError);
    [[noreturn]] static void CannotSetSharedMemoryView(u3_t uOffset, u3_t uBytes,
                                                       u2_t uSystemError);
    [[noreturn]] static void StillSharedMemoryInUse(u3_t uCount);

    // ---- images ------------------------------------------------------------

    [[noreturn]] static void CouldNotOpenTiffBuffer(u3_t uAddress, u3_t uBytes);
    [[noreturn]] static void CouldNotOpenTiffFile(const char* sName, const char* sAttributes);
    [[noreturn]] static void CannotReadTiffScanline(u3_t uLine, u2_t uSystemError);
    [[noreturn]] static void CannotWriteTiffScanline(u3_t uLine, u2_t uSystemError);

    // ---- tables ------------------------------------------------------------

    [[noreturn]] static void EmptyTableName();
    [[noreturn]] static void InvalidTableName(const char* sName);
    [[noreturn]] static void DuplicateTableName(const char* sName);
    [[noreturn]] static void DuplicateTableId(const char* sId);
    [[noreturn]] static void MissingTable(const char* sTable);
    [[noreturn]] static void NoSourceFileForTable(const char* sTable);
    [[noreturn]] static void AmbiguousSourceForTable(const char* sTable, const char* sFirst,
                                                     const char* sSecond);
    [[noreturn]] static void DuplicateMatchColumnsInTableLookup();
    static void MatchTruncated();  // reports

    // ---- columns -----------------------------------------------------------

    [[noreturn]] static void EmptyColumnName(const char* sTable);
    [[noreturn]] static void InvalidColumnName(const char* sTable, const char* sColumn);
    [[noreturn]] static void BlanksNotAllowedInColumnName(const char* sTable, const char* sColumn);
    [[noreturn]] static void DuplicateColumnName(const char* sTable, const char* sColumn);
    [[noreturn]] static void MissingColumn(const char* sTable, const char* sColumn);
    [[noreturn]] static void NoFreetextForColumn(const char* sTable, const char* sColumn,
                                                 const char* sFreetext);

    // ---- formats -----------------------------------------------------------

    [[noreturn]] static void InvalidFormatString(const char* sFormat);
    [[noreturn]] static void IncompleteFormatString(const char* sFormat);
    [[noreturn]] static void InvalidFormatName(const char* sTable, const char* sFormat);
    [[noreturn]] static void DuplicateFormatName(const char* sTable, const char* sFormat);
    [[noreturn]] static void InvalidFormatColumn(const char* sTable, const char* sColumn);
    [[noreturn]] static void DuplicateFormatColumn(const char* sTable, const char* sColumn,
                                                   const char* sFormat);

    // ---- csv files ---------------------------------------------------------

    static void EmptyLineInCsvFileIgnored(const char* sName, u3_t uLine);  // reports
    static void MissingCharInCsvFile(bool bRaise, const char* sName, u3_t uLine, const char* sText,
                                     u2_t uChar);  // raises or reports
    static void TooFewColumnsInCsvFile(bool bRaise, const char* sName, u3_t uLine,
                                       const char* sText, u3_t uColumns,
                                       u3_t uExpected);  // raises or reports
    static void TooManyColumnsInCsvFile(bool bRaise, const char* sName, u3_t uLine,
                                        const char* sText, u3_t uColumns,
                                        u3_t uExpected);  // raises or reports

    // ---- keys and identifiers ----------------------------------------------

    [[noreturn]] static void IdNotFound(const char* sId);
    [[noreturn]] static void KeyAlreadyExists(const char* sKey);
    [[noreturn]] static void UnknownKeyBoundDescriptor(u3_t uDescriptor);
    [[noreturn]] static void UnknownKeyBoundEnumerator(u3_t uEnumerator);
    [[noreturn]] static void DuplicateRecoIdentifier(const char* sId);
    [[noreturn]] static void UnknownRecoIdentifier(const char* sId);

    // ---- replacements and texts --------------------------------------------

    [[noreturn]] static void DuplicateReplacement();
    [[noreturn]] static void DuplicateExpansionCharacter(u2_t uChar);
    [[noreturn]] static void DuplicateTextStructure(const char* sType, const char* sFirstItemType,
                                                    const char* sSecondItemType);

    // ---- configuration and master data -------------------------------------

    [[noreturn]] static void OnlySomeEntriesConfigured(u3_t uConfigured, u3_t uEntries);
    [[noreturn]] static void DuplicateInputForOutput(const char* sInput, const char* sOutput);
    [[noreturn]] static void NoValidMasterDataFound(const char* sPlace);
    [[noreturn]] static void UnavailableMasterDataVersion(const char* sVersion, const char* sPlace);
};

}  // namespace vok

#endif  // VOK_BASE_MSG_CATALOG_H

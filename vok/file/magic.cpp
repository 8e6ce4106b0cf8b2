// SPDX-License-Identifier: MIT
// The header in front of dumped objects. All numbers have 4 bytes.
//
// With a version:
//      0  0B 17 01 01
//      4  12345678, from which a reader sees the writer's byte order
//      8  library version of the writer
//     12  version of the object
//     16  length of what follows
//     20  "vok::", class name, NUL
// Without one, 32 bytes filled up with zeros; the text in front of the class name is older
// than the library's namespace:
//      0  0B 17 01 01
//      4  "chr::C", class name, NUL
#include <cstring>
#include <string_view>

#include "vok/base/little_endian.h"
#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/file/rest.h"

namespace vok {

namespace {

constexpr char MAGIC[] = {0x0B, 0x17, 0x01, 0x01};
constexpr u2_t ORDER_MARK = 0x12345678;
constexpr u2_t SHORT_MARK = 0x3A726863;  // "chr:"
constexpr std::string_view PREFIX = "vok::";
constexpr std::string_view SHORT_PREFIX = "chr::C";

constexpr std::size_t FRONT_SIZE = 8;  // what tells the forms apart
constexpr std::size_t LONG_SIZE = 20;  // of the long form without its name
constexpr std::size_t SHORT_SIZE = 32;
constexpr std::size_t SHORT_NAME = 10;  // where the class name begins
constexpr std::size_t MAX_READ_NAME = 4096;

enum class Form { None, Long, Short };

[[nodiscard]] std::string_view ClassName(const char* sClassName) {
    return sClassName != nullptr ? sClassName : "Unknown";
}

[[nodiscard]] bool ReadWhole(File_Stream& oStream, char* pTarget, std::size_t uCount) {
    return ReadUpTo(oStream, pTarget, uCount) == uCount;
}

[[nodiscard]] Form ReadForm(File_Stream& oStream) {
    char sFront[FRONT_SIZE];
    if (!ReadWhole(oStream, sFront, sizeof(sFront))) return Form::None;
    if (std::memcmp(sFront, MAGIC, sizeof(MAGIC)) != 0) return Form::None;
    switch (le::Load<u2_t>(sFront + 4)) {
        case ORDER_MARK: return Form::Long;
        case SHORT_MARK: return Form::Short;
        default: return Form::None;
    }
}

// The class name in the rest of a short header; false when there is none.
[[nodiscard]] bool ReadShortName(File_Stream& oStream, Str& oName) {
    char sRest[SHORT_SIZE - FRONT_SIZE];
    if (!ReadWhole(oStream, sRest, sizeof(sRest))) return false;
    if (sRest[0] != ':' || sRest[1] != 'C' || sRest[sizeof(sRest) - 1] != 0) return false;
    oName = Str(sRest + (SHORT_NAME - FRONT_SIZE));
    return true;
}

// The name field of a long header, when it is uWanted bytes long and ends in its only NUL;
// with uWanted 0 any length up to MAX_READ_NAME will do.
[[nodiscard]] bool ReadLongName(File_Stream& oStream, std::size_t uWanted, Str& oName) {
    char sLength[4];
    if (!ReadWhole(oStream, sLength, sizeof(sLength))) return false;
    const std::size_t uLength = le::Load<u2_t>(sLength);
    if (uWanted != 0 ? uLength != uWanted : uLength > MAX_READ_NAME) return false;
    if (uLength <= PREFIX.size()) return false;
    Arr<char> oField;
    char* pField = oField.AddSpace(uLength);
    if (!ReadWhole(oStream, pField, uLength)) return false;
    const std::string_view sField(pField, uLength);
    if (sField.substr(0, PREFIX.size()) != PREFIX || sField.find('\0') != uLength - 1) return false;
    oName = Str(pField + PREFIX.size());
    return true;
}

enum class Verdict { Good, WrongVersion, NoDump };

struct Expected {
    std::string_view m_sClass;
    u2_t m_uMinLibraryVersion;
    u2_t m_uMinVersion;
    u2_t m_uMaxVersion;
};

[[nodiscard]] Verdict ReadMagic(File_Stream& oStream, const Expected& oExpected,
                                u2_t& uLibraryVersion, u2_t& uVersion) {
    const Form eForm = ReadForm(oStream);
    if (eForm == Form::None) return Verdict::NoDump;
    const Str oClass(oExpected.m_sClass);
    Str oName;
    if (eForm == Form::Short) {
        uLibraryVersion = 0;
        uVersion = 0;
        if (oExpected.m_uMinLibraryVersion != 0 || oExpected.m_uMinVersion != 0) {
            return Verdict::NoDump;
        }
        const bool bGood = ReadShortName(oStream, oName) && oName == oClass;
        return bGood ? Verdict::Good : Verdict::NoDump;
    }
    char sVersions[8];
    if (!ReadWhole(oStream, sVersions, sizeof(sVersions))) return Verdict::NoDump;
    uLibraryVersion = le::Load<u2_t>(sVersions);
    uVersion = le::Load<u2_t>(sVersions + 4);
    const bool bGood = uLibraryVersion >= oExpected.m_uMinLibraryVersion &&
                       uLibraryVersion <= VERSION_MAJOR && uVersion >= oExpected.m_uMinVersion &&
                       uVersion <= oExpected.m_uMaxVersion;
    if (!bGood) return Verdict::WrongVersion;
    const std::size_t uLength = PREFIX.size() + oExpected.m_sClass.size() + 1;
    const bool bSame = ReadLongName(oStream, uLength, oName) && oName == oClass;
    return bSame ? Verdict::Good : Verdict::NoDump;
}

[[nodiscard]] Str ReadClass(File_Stream& oStream) {
    Str oName;
    bool bGood = false;
    char sVersions[8];
    switch (ReadForm(oStream)) {
        case Form::None: break;
        case Form::Short: bGood = ReadShortName(oStream, oName); break;
        case Form::Long:
            bGood =
                ReadWhole(oStream, sVersions, sizeof(sVersions)) && ReadLongName(oStream, 0, oName);
            break;
    }
    return bGood ? oName : Str();
}

}  // namespace

u3_t File::WriteMagic(File_Stream& oStream, const char* sClassName, u2_t uVersion,
                      u2_t uLibraryVersion) {
    return Where("vok::File::WriteMagic", [&]() -> u3_t {
        const std::string_view sClass = ClassName(sClassName);
        if (uVersion == NO_VERSION) {
            char sHeader[SHORT_SIZE] = {};
            // Its NUL has to fit, or the name could not be read back.
            Msg::Assert(SHORT_NAME + sClass.size() + 1 <= sizeof(sHeader),
                        "magicAndClassnameLen <= tmp");
            std::memcpy(sHeader, MAGIC, sizeof(MAGIC));
            std::memcpy(sHeader + 4, SHORT_PREFIX.data(), SHORT_PREFIX.size());
            std::memcpy(sHeader + SHORT_NAME, sClass.data(), sClass.size());
            return oStream.Write(sHeader, sizeof(sHeader));
        }
        const i2_t iLength = Msg::ToInt32(PREFIX.size() + sClass.size() + 1);
        char sHeader[LONG_SIZE];
        std::memcpy(sHeader, MAGIC, sizeof(MAGIC));
        le::Store<u2_t>(sHeader + 4, ORDER_MARK);
        le::Store<u2_t>(sHeader + 8,
                        uLibraryVersion != NO_VERSION ? uLibraryVersion : VERSION_MAJOR);
        le::Store<u2_t>(sHeader + 12, uVersion);
        le::Store<u2_t>(sHeader + 16, static_cast<u2_t>(iLength));
        u3_t uDone = oStream.Write(sHeader, sizeof(sHeader));
        uDone += oStream.Write(PREFIX.data(), PREFIX.size());
        uDone += oStream.Write(sClass.data(), sClass.size());
        return uDone + oStream.Write("", 1);
    });
}

bool File::CheckMagic(File_Stream& oStream, const char* sClassName, u2_t& uLibraryVersion,
                      u2_t& uVersion, bool bRaise, u2_t uMinLibraryVersion, u2_t uMinVersion,
                      u2_t uMaxVersion) {
    return Where("vok::File::CheckMagic", [&] {
        const i3_t iPosition = oStream.Tell();
        const std::string_view sClass = ClassName(sClassName);
        const Verdict eVerdict =
            ReadMagic(oStream, {sClass, uMinLibraryVersion, uMinVersion, uMaxVersion},
                      uLibraryVersion, uVersion);
        if (eVerdict == Verdict::Good) return true;
        if (bRaise && eVerdict == Verdict::WrongVersion) {
            Msg::BinaryDataWrongVersions(sClass.data(), uLibraryVersion, uVersion, VERSION_MAJOR,
                                         uMaxVersion);
        }
        if (bRaise) Msg::BinaryDataIsNotADump(sClass.data());
        if (oStream.CanSeek(FROM_START)) oStream.Seek(iPosition);
        return false;
    });
}

Str File::GetFileStreamClass(const Str& oPath) {
    return Where("vok::File::GetFileStreamClass", [&] {
        File oFile(oPath, "rb");
        return oFile.IsOpen() ? ReadClass(oFile) : Str();
    });
}

Str File::GetBufStreamClass(const File_Buf& oBuffer) {
    return Where("vok::File::GetBufStreamClass", [&] {
        File_Buf oView(oBuffer.Data(), oBuffer.Size());
        return ReadClass(oView);
    });
}

}  // namespace vok

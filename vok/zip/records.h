// SPDX-License-Identifier: MIT
// The records of a zip archive, and the bytes they are made of. Internal.
//
// Numbers are little-endian. Of each record the fixed part is given; what follows it is as long as
// its length fields say.
#ifndef VOK_ZIP_RECORDS_H
#define VOK_ZIP_RECORDS_H

#include <string_view>

#include <zlib.h>

#include "vok/base/little_endian.h"

namespace vok::zip {

inline constexpr u2_t LOCAL_SIGNATURE = 0x04034B50;
inline constexpr u2_t CENTRAL_SIGNATURE = 0x02014B50;
inline constexpr u2_t END_SIGNATURE = 0x06054B50;
inline constexpr u2_t DESCRIPTOR_SIGNATURE = 0x08074B50;
inline constexpr u2_t ZIP64_LOCATOR_SIGNATURE = 0x07064B50;
// May stand behind the last central header, with 2 bytes of length in front of its data.
inline constexpr u2_t DIGITAL_SIGNATURE = 0x05054B50;

inline constexpr std::size_t LOCAL_SIZE = 30;
inline constexpr std::size_t CENTRAL_SIZE = 46;
inline constexpr std::size_t END_SIZE = 22;
inline constexpr std::size_t DESCRIPTOR_SIZE = 16;
inline constexpr std::size_t ZIP64_LOCATOR_SIZE = 20;

// General purpose flags.
inline constexpr u1_t FLAG_ENCRYPTED = 0x0001;
inline constexpr u1_t FLAG_DESCRIPTOR = 0x0008;
inline constexpr u1_t FLAG_UTF8 = 0x0800;
inline constexpr u1_t FLAG_MASKED = 0x2000;  // the directory itself is encrypted

inline constexpr u1_t VERSION_NEEDED = 20;

// What a field holds when its value stands in a ZIP64 record.
inline constexpr u2_t IN_ZIP64 = 0xFFFFFFFF;

// Extra fields: 2 bytes of kind, 2 of length, data.
inline constexpr u1_t EXTRA_ZIP64 = 0x0001;
// Version 1, CRC-32 of the name in the header, the name in UTF-8.
inline constexpr u1_t EXTRA_UNICODE_NAME = 0x7075;
// The same for the comment.
inline constexpr u1_t EXTRA_UNICODE_COMMENT = 0x6375;
// Flags, then the times that they announce: 4 bytes each, in seconds since 1970 UTC.
inline constexpr u1_t EXTRA_TIME = 0x5455;

// Where the sizes of a local header begin: CRC-32, compressed size, uncompressed size.
inline constexpr std::size_t LOCAL_FLAGS = 6;
inline constexpr std::size_t LOCAL_CRC = 14;
inline constexpr std::size_t CENTRAL_FLAGS = 8;
inline constexpr std::size_t CENTRAL_CRC = 16;

// A local header.
struct Local {
    explicit Local(const char* p) noexcept : m_p(p) {}

    [[nodiscard]] u2_t Signature() const noexcept { return le::Load<u2_t>(m_p); }
    [[nodiscard]] u1_t Flags() const noexcept { return le::Load<u1_t>(m_p + LOCAL_FLAGS); }
    [[nodiscard]] u1_t Method() const noexcept { return le::Load<u1_t>(m_p + 8); }
    [[nodiscard]] u2_t Crc() const noexcept { return le::Load<u2_t>(m_p + LOCAL_CRC); }
    [[nodiscard]] u2_t CompressedSize() const noexcept { return le::Load<u2_t>(m_p + 18); }
    [[nodiscard]] u2_t UncompressedSize() const noexcept { return le::Load<u2_t>(m_p + 22); }
    [[nodiscard]] u1_t NameSize() const noexcept { return le::Load<u1_t>(m_p + 26); }
    [[nodiscard]] u1_t ExtraSize() const noexcept { return le::Load<u1_t>(m_p + 28); }

    const char* m_p;
};

// A central header, with what follows it.
struct Central {
    explicit Central(const char* p) noexcept : m_p(p) {}

    [[nodiscard]] u2_t Signature() const noexcept { return le::Load<u2_t>(m_p); }
    [[nodiscard]] u1_t VersionMadeBy() const noexcept { return le::Load<u1_t>(m_p + 4); }
    [[nodiscard]] u1_t VersionNeeded() const noexcept { return le::Load<u1_t>(m_p + 6); }
    [[nodiscard]] u1_t Flags() const noexcept { return le::Load<u1_t>(m_p + CENTRAL_FLAGS); }
    [[nodiscard]] u1_t Method() const noexcept { return le::Load<u1_t>(m_p + 10); }
    [[nodiscard]] u2_t DosDate() const noexcept { return le::Load<u2_t>(m_p + 12); }
    [[nodiscard]] u2_t Crc() const noexcept { return le::Load<u2_t>(m_p + CENTRAL_CRC); }
    [[nodiscard]] u2_t CompressedSize() const noexcept { return le::Load<u2_t>(m_p + 20); }
    [[nodiscard]] u2_t UncompressedSize() const noexcept { return le::Load<u2_t>(m_p + 24); }
    [[nodiscard]] u1_t NameSize() const noexcept { return le::Load<u1_t>(m_p + 28); }
    [[nodiscard]] u1_t ExtraSize() const noexcept { return le::Load<u1_t>(m_p + 30); }
    [[nodiscard]] u1_t CommentSize() const noexcept { return le::Load<u1_t>(m_p + 32); }
    [[nodiscard]] u1_t Disk() const noexcept { return le::Load<u1_t>(m_p + 34); }
    [[nodiscard]] u1_t InternalAttributes() const noexcept { return le::Load<u1_t>(m_p + 36); }
    [[nodiscard]] u2_t ExternalAttributes() const noexcept { return le::Load<u2_t>(m_p + 38); }
    [[nodiscard]] u2_t Offset() const noexcept { return le::Load<u2_t>(m_p + 42); }

    [[nodiscard]] std::size_t Size() const noexcept {
        return CENTRAL_SIZE + NameSize() + ExtraSize() + CommentSize();
    }
    [[nodiscard]] std::string_view Name() const noexcept {
        return {m_p + CENTRAL_SIZE, NameSize()};
    }
    [[nodiscard]] std::string_view Extra() const noexcept {
        return {m_p + CENTRAL_SIZE + NameSize(), ExtraSize()};
    }
    [[nodiscard]] std::string_view Comment() const noexcept {
        return {m_p + CENTRAL_SIZE + NameSize() + ExtraSize(), CommentSize()};
    }

    const char* m_p;
};

// An end record, with its comment.
struct End {
    explicit End(const char* p) noexcept : m_p(p) {}

    [[nodiscard]] u2_t Signature() const noexcept { return le::Load<u2_t>(m_p); }
    [[nodiscard]] u1_t Disk() const noexcept { return le::Load<u1_t>(m_p + 4); }
    [[nodiscard]] u1_t DirectoryDisk() const noexcept { return le::Load<u1_t>(m_p + 6); }
    [[nodiscard]] u1_t EntriesHere() const noexcept { return le::Load<u1_t>(m_p + 8); }
    [[nodiscard]] u1_t Entries() const noexcept { return le::Load<u1_t>(m_p + 10); }
    [[nodiscard]] u2_t DirectorySize() const noexcept { return le::Load<u2_t>(m_p + 12); }
    [[nodiscard]] u2_t DirectoryOffset() const noexcept { return le::Load<u2_t>(m_p + 16); }
    [[nodiscard]] u1_t CommentSize() const noexcept { return le::Load<u1_t>(m_p + 20); }

    const char* m_p;
};

[[nodiscard]] inline u2_t CrcOf(std::string_view sBytes) noexcept {
    return static_cast<u2_t>(::crc32_z(0, reinterpret_cast<const Bytef*>(sBytes.data()),
                                       static_cast<z_size_t>(sBytes.size())));
}

// The data of the first extra field of a kind; false when there is none.
[[nodiscard]] inline bool FindExtra(std::string_view sExtra, u1_t uKind,
                                    std::string_view& sData) noexcept {
    while (sExtra.size() >= 4) {
        const std::size_t uSize = le::Load<u1_t>(sExtra.data() + 2);
        if (uSize > sExtra.size() - 4) return false;
        if (le::Load<u1_t>(sExtra.data()) == uKind) {
            sData = sExtra.substr(4, uSize);
            return true;
        }
        sExtra.remove_prefix(4 + uSize);
    }
    return false;
}

}  // namespace vok::zip

#endif  // VOK_ZIP_RECORDS_H

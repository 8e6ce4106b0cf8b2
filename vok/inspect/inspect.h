// SPDX-License-Identifier: MIT
// What the bytes of a stored tree mean, one after the other, also where they are damaged.
#ifndef VOK_INSPECT_INSPECT_H
#define VOK_INSPECT_INSPECT_H

#include <functional>
#include <string_view>

#include "vok/base/limits.h"
#include "vok/file/stream.h"

namespace vok {

// Bytes that mean one thing, or that nothing is known of. Everything it refers to is valid during
// the call only.
struct Inspect_Field {
    // 0 for the stream itself; what is in its wrapping is counted from 1 on and bears the name of
    // its member of an archive, if it is one.
    u2_t m_uDocument = 0;
    std::string_view m_sMember;

    // In bytes of that document. A length of 0 is that of something that is missing.
    u3_t m_uOffset = 0;
    u3_t m_uLength = 0;
    // The first of the bytes: all of them where they are no more than SHOWN.
    std::string_view m_sBytes;
    static constexpr std::size_t SHOWN = 256;

    // "length of step", "type code"; empty for bytes that were skipped because nothing says what
    // they mean: they follow a fault.
    const char* m_sName = "";
    // What they say: "Integer", "-5", "2026-11-24T18:35:56Z". With m_bText the bytes of a text as
    // they are, as far as m_sBytes have them, without the NUL.
    std::string_view m_sValue;
    bool m_bText = false;

    // Of the record that they belong to, as Data::GetPath gives it, and how deep it stands; empty
    // where they belong to none. Behind a fault both are what the order of names and indexes
    // suggests.
    std::string_view m_sPath;
    u2_t m_uDepth = 0;

    // What is wrong with them, in the language of messages; empty where nothing is.
    std::string_view m_sFault;

    [[nodiscard]] bool IsSkipped() const noexcept { return *m_sName == 0; }
};

// Goes through a stream from its position on: DGraph documents of every version, native dumps, and
// both as they are, as zlib or gzip streams, or as members of a zip archive. oVisit gets every
// field in the order of the bytes, first those of the wrapping, then those of each document in it;
// when it returns false that is the end. The fields of a document cover each of its bytes once.
//
// Nothing is refused. Where a field cannot be what the format says, it bears a fault; if what comes
// next is not known then, the bytes up to the next records that look like some are skipped.
//
// Links are not followed, and numbers in dumps not checked against each other: loading does that.
//
// Linear. Memory is 160 KiB, the longest step, 24 bytes for every open level and its name, and 32
// for every member of an archive; a stream that is neither a file nor a memory buffer is held as a
// whole. The position of the stream is somewhere afterwards. Raises what the stream raises, and the
// limits on what may be inflated and on members of archives; those on text bytes and depth are
// faults of the document.
void Inspect(File_Stream& in, const std::function<bool(const Inspect_Field&)>& oVisit,
             const Limits& oLimits = {});

}  // namespace vok

#endif  // VOK_INSPECT_INSPECT_H

// SPDX-License-Identifier: MIT
#include "vok/zip/messages.h"

#include <string_view>

#include "vok/base/msg_entry.h"
#include "vok/base/where.h"

namespace vok::zip {

namespace {

// The line of the where-trail that names a member.
constexpr char MEMBER[] = "vok::Zip_Archive";

}  // namespace

void Archive_Errors::Invalid() const {
    if (m_bMemory) Msg::InvalidOrCorruptedZipBuffer();
    Msg::InvalidOrCorruptedZipFile(Archive());
}

void Archive_Errors::Invalid(const Str& oMember) const {
    Where(MEMBER, oMember.CStr(), [&] { Invalid(); });
    Invalid();
}

void Archive_Errors::Crc(const Str& oMember) const {
    Where(MEMBER, oMember.CStr(), [&] { Msg::CrcErrorInCurrentFileOfZipArchive(Archive()); });
    Invalid();
}

void Archive_Errors::Raise(Member_Fault eFault, const Str& oMember) const {
    // In the order of Member_Fault.
    static constexpr Msg_Text FAULTS[] = {
        {"member \"%0\" of zip archive \"%1\" is encrypted",
         "Datei \"%0\" im Zip-Archiv \"%1\" ist verschlüsselt"},
        {"member \"%0\" of zip archive \"%1\" needs ZIP64, which is not supported",
         "Datei \"%0\" im Zip-Archiv \"%1\" braucht ZIP64, das nicht unterstützt wird"},
        {"member \"%0\" of zip archive \"%1\" lies on another disk",
         "Datei \"%0\" im Zip-Archiv \"%1\" liegt auf einem anderen Datenträger"},
        {"member \"%0\" of zip archive \"%1\" overlaps another one",
         "Datei \"%0\" im Zip-Archiv \"%1\" überschneidet sich mit einer anderen"},
        {"member \"%0\" of zip archive \"%1\" is damaged",
         "Datei \"%0\" im Zip-Archiv \"%1\" ist beschädigt"},
        {"member \"%0\" of zip archive \"%1\" ends early",
         "Datei \"%0\" im Zip-Archiv \"%1\" endet zu früh"},
        {"member \"%0\" of zip archive \"%1\" has another size than it should",
         "Datei \"%0\" im Zip-Archiv \"%1\" hat eine andere Größe als angegeben"},
        {"member \"%0\" of zip archive \"%1\" gets too large for an archive without ZIP64",
         "Datei \"%0\" im Zip-Archiv \"%1\" wird zu groß für ein Archiv ohne ZIP64"},
    };
    Msg_Entry::Raise(FAULTS[static_cast<int>(eFault)], {oMember.CStr(), Archive()});
}

void Archive_Errors::Method(const Str& oMember, u2_t uMethod) const {
    Msg_Entry::Raise(
        {"member \"%0\" of zip archive \"%1\" is compressed by method %2, which is not supported",
         "Datei \"%0\" im Zip-Archiv \"%1\" ist mit dem Verfahren %2 komprimiert, das nicht "
         "unterstützt wird"},
        {oMember.CStr(), Archive(), uMethod});
}

void Archive_Errors::NeedsZip64() const {
    Msg_Entry::Raise({"zip archive \"%0\" needs ZIP64, which is not supported",
                      "Zip-Archiv \"%0\" braucht ZIP64, das nicht unterstützt wird"},
                     {Archive()});
}

void Archive_Errors::Incomplete() const {
    Msg_Entry::Raise({"zip archive \"%0\" is incomplete since writing to it failed",
                      "Zip-Archiv \"%0\" ist unvollständig, weil das Schreiben fehlschlug"},
                     {Archive()});
}

void Archive_Errors::Changed() const {
    Msg_Entry::Raise({"zip archive \"%0\" was changed by somebody else",
                      "Zip-Archiv \"%0\" wurde von anderer Seite geändert"},
                     {Archive()});
}

void RaiseStream(Fault eFault, const char* sName, bool bMemory) {
    if (eFault == Fault::Ends) Msg::UnexpectedEndOfFile(sName, 0);
    if (bMemory) Msg::InvalidOrCorruptedZipBuffer();
    Msg::InvalidOrCorruptedZipFile(sName);
}

void CheckComment(std::string_view sComment) {
    if (sComment.find(std::string_view("PK\x05\x06", 4)) == std::string_view::npos) return;
    Msg::FeatureNotSupported("a zip archive's comment with an end record in it");
}

}  // namespace vok::zip

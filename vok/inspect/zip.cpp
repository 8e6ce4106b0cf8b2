// SPDX-License-Identifier: MIT
// Zip archives: what stands in them, from front to end.
#include <array>

#include "vok/inspect/wrapped.h"
#include "vok/zip/records.h"

namespace vok::inspect {

namespace {

using std::string_view;
using namespace zip;  // NOLINT: the names of its records

struct Layout {
    const char* sName;
    u0_t uSize;
    bool bHex = false;
};
constexpr Layout LOCAL[] = {{"local header", 4, true}};
constexpr Layout CENTRAL[] = {{"central header", 4, true}, {"version made by", 2}};
// Both go on with what is known of a member.
constexpr Layout MEMBER[] = {
    {"version needed", 2}, {"flags", 2, true},     {"method", 2},          {"time", 2},
    {"date", 2},           {"CRC-32", 4, true},    {"compressed size", 4}, {"size", 4},
    {"length of name", 2}, {"length of extra", 2},
};
constexpr Layout BEHIND_CENTRAL[] = {
    {"length of comment", 2},      {"disk", 2},
    {"internal attributes", 2},    {"external attributes", 4, true},
    {"offset of local header", 4},
};
constexpr Layout END[] = {
    {"end record", 4, true},
    {"disk", 2},
    {"disk of directory", 2},
    {"entries here", 2},
    {"entries", 2},
    {"size of directory", 4},
    {"offset of directory", 4},
    {"length of comment", 2},
};
constexpr Layout DESCRIPTOR[] = {
    {"data descriptor", 4, true},
    {"CRC-32", 4, true},
    {"compressed size", 4},
    {"size", 4},
};

class Archive {
  public:
    Archive(Fields& oFields, const Limits& oLimits, Contents& oContents)
        : f(oFields), m_oLimits(oLimits), m_oContents(oContents) {}

    void Run() {
        bool bEnd = false;
        while (f.Left() != 0 && !f.IsOver()) {
            const string_view s = f.Look(4);
            switch (s.size() == 4 ? le::Load<u2_t>(s.data()) : 0) {
                case LOCAL_SIGNATURE: PutMember(); break;
                case CENTRAL_SIGNATURE: PutCentral(); break;
                case END_SIGNATURE:
                    PutEnd();
                    bEnd = true;
                    break;
                default: SkipToRecord();
            }
        }
        if (!bEnd) f.PutMissing("end record", Fault::Ends);
    }

  private:
    template <std::size_t COUNT>
    void Put(const Layout (&aoLayout)[COUNT]) {
        for (const Layout& o : aoLayout) {
            if (f.Left() == 0) return;
            u2_t uNumber = 0;
            u1_t uShort = 0;
            if (!(o.uSize == 4 ? f.Peek(o.sName, uNumber) : f.Peek(o.sName, uShort))) return;
            if (o.uSize == 2) uNumber = uShort;
            f.Put(o.sName, o.uSize, Value(o.bHex ? "%08x" : "%u", uNumber));
        }
    }
    void PutLocal() {
        Put(LOCAL);
        Put(MEMBER);
    }
    void PutCentralHeader() {
        Put(CENTRAL);
        Put(MEMBER);
        Put(BEHIND_CENTRAL);
    }
    void PutText(const char* sName, u3_t uLength) {
        if (uLength != 0) f.Put(sName, uLength, Value::Text());
    }
    void PutBytes(const char* sName, u3_t uLength) {
        if (uLength != 0) f.Put(sName, uLength, {});
    }

    void PutMember() {
        const string_view s = f.Look(LOCAL_SIZE);
        if (s.size() < LOCAL_SIZE) return PutLocal();
        std::array<char, LOCAL_SIZE> aHeader;
        s.copy(aHeader.data(), LOCAL_SIZE);
        const Local o(aHeader.data());
        PutLocal();
        const string_view sName = f.Look(o.NameSize());
        const Str oName(sName);
        PutText("name", o.NameSize());
        PutBytes("extra", o.ExtraSize());
        if (f.Left() != 0 && !f.IsOver()) PutData(o, oName);
    }

    void PutData(const Local& o, const Str& oName) {
        const bool bEncrypted = (o.Flags() & FLAG_ENCRYPTED) != 0;
        const bool bDescriptor = (o.Flags() & FLAG_DESCRIPTOR) != 0 && o.CompressedSize() == 0;
        const bool bPacked = o.Method() == Z_DEFLATED && !bEncrypted;
        // Where the size stands behind the bytes only, stored ones may be anything.
        if (bDescriptor && !bPacked) return SkipToRecord();
        const u3_t uSize = bDescriptor ? f.Left() : o.CompressedSize();
        Survey oFound;
        if (bPacked) {
            oFound = PutPacked(f, "compressed", uSize, m_oLimits, m_uTotal);
        } else {
            oFound = PutStored(f, bEncrypted ? "encrypted" : "stored", uSize);
        }
        if (f.IsOver()) return;
        if (bPacked && !bDescriptor && oFound.oPiece.uStored < uSize) {
            const u3_t uRest = std::min(uSize - oFound.oPiece.uStored, f.Left());
            if (uRest != 0) f.Put("", uRest, {});
        }
        u2_t uCrc = o.Crc();
        if (bDescriptor && oFound.eFault == Fault::None) {
            const string_view s = f.Look(DESCRIPTOR_SIZE);
            const bool bThere =
                s.size() == DESCRIPTOR_SIZE && le::Load<u2_t>(s.data()) == DESCRIPTOR_SIGNATURE;
            if (bThere) uCrc = le::Load<u2_t>(&s[4]);
            if (bThere) Put(DESCRIPTOR);
        }
        const bool bPlain = bPacked || (o.Method() == 0 && !bEncrypted);
        if (bPlain && oFound.eFault == Fault::None && uCrc != oFound.uCrc) {
            f.PutMissing("CRC-32", Fault::WrongSum, Value("%08x", oFound.uCrc));
        }
        if (!bPlain) return;
        if (m_oContents.aoContent.size() >= m_oLimits.m_uZipEntries) {
            m_oLimits.RaiseExceeded(&Limits::m_uZipEntries);
        }
        const std::size_t uPiece = m_oContents.aoPiece.size();
        m_oContents.aoPiece.push_back(oFound.oPiece);
        m_oContents.aoContent.push_back({uPiece, uPiece + 1, oName});
    }

    void PutCentral() {
        const string_view s = f.Look(CENTRAL_SIZE);
        if (s.size() < CENTRAL_SIZE) return PutCentralHeader();
        const Central o(s.data());
        const std::size_t uName = o.NameSize();
        const std::size_t uExtra = o.ExtraSize();
        const std::size_t uComment = o.CommentSize();
        PutCentralHeader();
        PutText("name", uName);
        PutBytes("extra", uExtra);
        PutText("comment", uComment);
    }

    void PutEnd() {
        const string_view s = f.Look(END_SIZE);
        if (s.size() < END_SIZE) return Put(END);
        const std::size_t uComment = End(s.data()).CommentSize();
        Put(END);
        PutText("comment", uComment);
    }

    // Everything up to the next thing that is known, at least a byte.
    void SkipToRecord() {
        f.BeginLong();
        f.Drop(1);
        while (f.Left() != 0) {
            const string_view s = f.Look(File_Window::CHUNK);
            std::size_t u = s.find("PK");
            const bool bFound = u != string_view::npos;
            if (!bFound) u = s.size() - s.ends_with('P');
            const u2_t uSignature = bFound && s.size() - u >= 4 ? le::Load<u2_t>(s.data() + u) : 0;
            const bool bKnown = uSignature == LOCAL_SIGNATURE || uSignature == CENTRAL_SIGNATURE ||
                                uSignature == END_SIGNATURE;
            f.Drop(u);
            if (bKnown) break;
            // What is cut off by the end of the view is looked at again from its own beginning.
            if (!bFound && s.size() != 1) continue;
            if (bFound && s.size() - u < 4 && u != 0) continue;
            f.Drop(1);
        }
        f.EndLong("", {}, Fault::None);
    }

    Fields& f;
    const Limits& m_oLimits;
    Contents& m_oContents;
    u3_t m_uTotal = 0;
};

}  // namespace

void PutZip(Fields& f, const Limits& oLimits, Contents& oContents) {
    Archive(f, oLimits, oContents).Run();
}

}  // namespace vok::inspect

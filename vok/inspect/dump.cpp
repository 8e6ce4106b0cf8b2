// SPDX-License-Identifier: MIT
#include "vok/inspect/dump.h"

#include <bit>
#include <iterator>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/data/data.h"
#include "vok/dump/format.h"
#include "vok/file/buf.h"

namespace vok::inspect {

namespace {

using le::Load;
using std::string_view;

constexpr std::size_t NODE_SIZE = sizeof(Data_Node);

class Dump {
  public:
    explicit Dump(Fields& oFields) noexcept : f(oFields) {}

    void Run() {
        PutHeader();
        const bool bWhole =
            PutBlock<u2_t>("length of user tag",
                           [&](u3_t u) {
                               if (u != 0) f.Put("user tag", u, Value::Text());
                           }) &&
            PutBlock<u3_t>("length of names", [&](u3_t u) { PutTexts("name", u); }) &&
            PutBlock<u3_t>(
                "length of nodes", [&](u3_t u) { PutNodes(u); }, m_bGaps) &&
            PutBlock<u3_t>(
                "length of groups", [&](u3_t u) { PutGroups(u); }, m_bGaps) &&
            PutBlock<u3_t>(
                "length of heap",
                [&](u3_t u) {
                    if (u != 0) f.Put("heap", u, {});
                },
                m_bGaps) &&
            PutBlock<u3_t>("length of attribute names",
                           [&](u3_t u) { PutTexts("attribute name", u); }) &&
            PutBlock<u3_t>("length of attributes", [&](u3_t u) { PutAttributes(u); });
        if (bWhole) PutLater();
        if (f.Left() != 0 && !f.IsOver()) f.SkipRest();
    }

  private:
    void PutHeader() {
        const bool bGood = IsDump(f.Look(DUMP_HEADER_SIZE));
        f.Put("magic", 4, {}, bGood ? Fault::None : Fault::WrongHeader);
        PutWord("byte order", "%08x");
        PutWord("library version", "%u");
        u2_t uVersion = 0;
        m_bGaps = f.Peek("version", uVersion) && uVersion == dump::ATTACHABLE_VERSION;
        PutWord("version", "%u");
        u2_t uName = 0;
        if (!f.Peek("length of class", uName)) return;
        PutWord("length of class", "%u");
        f.Put("class", uName, Value::Text());
    }
    void PutWord(const char* sName, const char* sFormat) {
        u2_t uWord = 0;
        if (f.Peek(sName, uWord)) f.Put(sName, 4, Value(sFormat, uWord));
    }

    // A length of type T, and what oPut puts of so many bytes. False where that is not all there.
    template <class T, class Put>
    [[nodiscard]] bool PutBlock(const char* sLength, const Put& oPut, bool bGap = false) {
        T uLength = 0;
        if (f.IsOver() || !f.Peek(sLength, uLength)) return false;
        const bool bGood = uLength <= f.Left() - sizeof(T);
        f.Put(sLength, sizeof(T), Value("%llu", static_cast<unsigned long long>(uLength)),
              bGood ? Fault::None : Fault::BeyondEnd);
        if (bGood && bGap && !PutGap(uLength)) return false;
        if (bGood) oPut(uLength);
        return bGood;
    }
    // The gap in front of so many bytes.
    [[nodiscard]] bool PutGap(u3_t uBehind) {
        u3_t uGap = 0;
        if (f.IsOver() || !f.Peek("length of gap", uGap)) return false;
        const u3_t uLeft = f.Left() - sizeof(uGap);
        const bool bGood =
            uGap <= dump::MOST_PADDING && uBehind <= uLeft && uGap <= uLeft - uBehind;
        f.Put("length of gap", sizeof(uGap), Value("%llu", static_cast<unsigned long long>(uGap)),
              bGood ? Fault::None : Fault::BeyondEnd);
        if (bGood && uGap != 0) f.Put("gap", uGap, {});
        return bGood;
    }

    // Texts with their NULs.
    void PutTexts(const char* sName, u3_t uSize) {
        while (uSize != 0 && !f.IsOver()) {
            const string_view s = f.Look(std::min<u3_t>(uSize, LONGEST_NAME));
            if (s.empty()) return;
            const std::size_t uEnd = s.find('\0');
            const bool bEnds = uEnd != string_view::npos;
            const std::size_t uText = bEnds ? uEnd + 1 : s.size();
            f.Put(sName, uText, Value::Text(), bEnds ? Fault::None : Fault::Unfinished);
            uSize -= uText;
        }
    }

    void PutNodes(u3_t uSize) {
        for (u3_t uNth = 0; uSize >= NODE_SIZE && !f.IsOver(); ++uNth, uSize -= NODE_SIZE) {
            const string_view s = f.Look(NODE_SIZE);
            if (s.size() < NODE_SIZE) return;
            const u2_t uName = Load<u2_t>(s.data());
            const u2_t uWord = Load<u2_t>(s.data() + 4);
            const u2_t uPred = uWord >> 4;
            char sBelow[48] = "";
            if (uPred != 0) std::snprintf(sBelow, sizeof(sBelow), " below %u", uPred - 1);
            const Value oPayload = Payload(uWord & 15, s.data() + 8);
            f.Put("node", NODE_SIZE,
                  Value("%llu: name %u, %s%s%.*s", static_cast<unsigned long long>(uNth), uName,
                        TypeOf(uWord & 15), sBelow, static_cast<int>(oPayload.View().size()),
                        oPayload.View().data()));
        }
        PutRest("nodes", uSize);
    }
    [[nodiscard]] static const char* TypeOf(u2_t uType) noexcept {
        if (uType == Data_Node::Zombi) return "removed";
        const char* s = Data_Node::TypeName(uType);
        return s != nullptr ? s : "no type";
    }
    [[nodiscard]] static Value Payload(u2_t uType, const char* p) {
        const u2_t uFirst = Load<u2_t>(p);
        const u2_t uSecond = Load<u2_t>(p + 4);
        switch (uType) {
            case Data_Node::Boolean:
            case Data_Node::Integer:
            case Data_Node::Char: return Value(", %d", static_cast<i2_t>(uFirst));
            case Data_Node::Float:
            case Data_Node::Double: {
                char s[NUMBER_ROOM];
                FormatReal(std::bit_cast<double>(Load<u3_t>(p)), s);
                return Value(", %s", s);
            }
            case Data_Node::Date: {
                char s[128];
                const auto u = FormatDate(std::bit_cast<double>(Load<u3_t>(p)), 'T', s);
                return Value(", %.*sZ", static_cast<int>(u), s);
            }
            case Data_Node::String:
            case Data_Node::Binary: return Value(", %u bytes at %u", uSecond, uFirst);
            case Data_Node::Long:
                return Value(", %llu", static_cast<unsigned long long>(Load<u3_t>(p)));
            case Data_Node::Quad: return Value(", %u and three words at %u", uSecond, uFirst);
            case Data_Node::Link:
                return uFirst == ~u2_t{0} ? Value(", to nothing") : Value(", to node %u", uFirst);
            case Data_Node::Tree:
                return Value(", %u successors, group at word %u", uSecond, uFirst);
            default: return {};
        }
    }

    void PutGroups(u3_t uSize) {
        u2_t uLeft = 0;  // words of the group
        while (uSize >= 4 && !f.IsOver()) {
            if (uLeft != 0) {
                PutWord("successor", "%u");
                --uLeft;
            } else if (uSize >= 8) {
                const string_view s = f.Look(8);
                if (s.size() < 8) return;
                uLeft = Load<u2_t>(s.data());
                f.Put("group", 8, Value("%u successors, room for %u", uLeft, Load<u2_t>(&s[4])));
                uSize -= 4;
            } else {
                break;
            }
            uSize -= 4;
        }
        PutRest("groups", uSize);
    }

    void PutAttributes(u3_t uSize) {
        u2_t uLeft = 0;  // records of the name
        while (uSize >= 4 && !f.IsOver()) {
            u2_t uWord = 0;
            if (!f.Peek("attributes", uWord)) return;
            if (uLeft == 0) {
                uLeft = uWord;
                f.Put("nodes with attribute", 4, Value("%u", uWord));
                uSize -= 4;
            } else if (uSize >= dump::ATTRIBUTE_SIZE) {
                const string_view s = f.Look(dump::ATTRIBUTE_SIZE);
                if (s.size() < dump::ATTRIBUTE_SIZE) return;
                f.Put("attribute", s.size(),
                      Value("node %u, value at %u", uWord, Load<u2_t>(&s[4])));
                --uLeft;
                uSize -= dump::ATTRIBUTE_SIZE;
            } else {
                break;
            }
        }
        PutRest("attributes", uSize);
    }
    void PutRest(const char* sName, u3_t uSize) {
        if (uSize != 0 && !f.IsOver()) f.Put(sName, uSize, {}, Fault::WrongRecords);
    }

    // Blocks of later writers, up to the end mark.
    void PutLater() {
        while (!f.IsOver()) {
            if (f.Look(4).size() == 4 && Load<u2_t>(f.Look(4).data()) == 0) break;
            const bool bWhole = PutBlock<u2_t>("length of later block",
                                               [&](u3_t u) { f.Put("later block", u, {}); });
            if (!bWhole) return;
        }
        if (f.IsOver()) return;
        f.Put("end", 4, {});
        if (f.Left() == 0) return;
        f.PutMissing("end", Fault::BytesBehind,
                     Value("%llu", static_cast<unsigned long long>(f.Left())));
    }

    static constexpr u3_t LONGEST_NAME = 64 * 1024;

    Fields& f;
    bool m_bGaps = false;  // in front of nodes, groups and heap
};

}  // namespace

bool IsDump(string_view s) {
    File_Buf oBuf(s.data(), s.size());
    return Data::CanLoad(oBuf);
}

void PutDump(Fields& f) {
    Dump(f).Run();
}

}  // namespace vok::inspect

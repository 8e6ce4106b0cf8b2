// SPDX-License-Identifier: MIT
// Writes a tree as a JSON document.
#include "vok/json/writer.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "vok/base/base64.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/id_map.h"
#include "vok/data/walk.h"
#include "vok/file/buf.h"
#include "vok/json/access.h"
#include "vok/json/form.h"
#include "vok/json/scalar.h"

namespace vok {

namespace json {

namespace {

class Writer {
  public:
    using Node = Data_Node;

    Writer(const Data& oTop, Data_Base& oBase, Tokens& oOut)
        : m_oTop(oTop),
          m_oBase(oBase),
          m_oOut(oOut),
          m_uMark(oBase.m_oAtt.Names().Find(MARK)),
          m_oIndex(oBase.m_oNode.Size()) {}

    void Run() {
        const u2_t uTop = m_oTop.GetId();
        WriteNode(uTop, MarkOf(uTop, Place::Top), true);
        while (m_oFrame.Size() != 0) Step();
    }

  private:
    // What a value stands in.
    enum class Place : u0_t { Top, Alone, Run, List };
    // Successors still to come. Those of one name, and the only item of an array, are in brackets.
    struct Frame {
        const u2_t* pNext;
        const u2_t* pEnd;
        u2_t uRun;  // key of the array that is open, NO_RUN
        bool bList;
    };
    static constexpr u2_t NO_RUN = 0xFFFFFFFF;

    [[nodiscard]] const Node& NodeAt(u2_t uId) const noexcept { return m_oBase.m_oNode(uId); }
    [[nodiscard]] bool IsLive(u2_t uId) const noexcept {
        return NodeAt(uId).GetType() != Node::Zombi;
    }
    void SkipRemoved(Frame& o) const noexcept {
        while (o.pNext != o.pEnd && !IsLive(*o.pNext)) ++o.pNext;
    }

    // ---- nodes ------------------------------------------------------------

    void Step() {
        Frame& f = m_oFrame.Last();
        SkipRemoved(f);
        if (f.pNext == f.pEnd) {
            if (f.uRun != NO_RUN) m_oOut.EndArray();
            f.bList ? m_oOut.EndArray() : m_oOut.EndObject();
            m_oFrame.Pop();
            return;
        }
        const u2_t uId = *f.pNext++;
        const u2_t uKey = NodeAt(uId).uKey;
        if (f.bList) return WriteNode(uId, MarkOf(uId, Place::List), false);
        if (f.uRun == uKey) return WriteNode(uId, MarkOf(uId, Place::Run), false);
        if (f.uRun != NO_RUN) m_oOut.EndArray();
        SkipRemoved(f);
        const bool bRun = f.pNext != f.pEnd && NodeAt(*f.pNext).uKey == uKey;
        const Mark oMark = MarkOf(uId, bRun ? Place::Run : Place::Alone);
        f.uRun = bRun || oMark.bItem ? uKey : NO_RUN;
        WriteName(m_oBase.m_oName(uKey).View());
        if (f.uRun != NO_RUN) m_oOut.StartArray();
        WriteNode(uId, oMark, false);
    }

    void WriteName(std::string_view sName) {
        if (!IsMarked(sName)) [[likely]]
            return m_oOut.Key(sName);
        m_oText.Truncate(0);
        m_oText.Add('#');
        m_oText.Add(sName.data(), sName.size());
        m_oOut.Key({m_oText.Beg(), m_oText.Size()});
    }

    // What the mark of a node says that can be told by brackets, or by a text. One that does not
    // belong where it is, or of a node that has more to tell, is an attribute like any other.
    [[nodiscard]] Mark MarkOf(u2_t uId, Place ePlace) {
        if (m_uMark == Data_Base::NONE || !m_oBase.m_oAtt.Has(uId)) [[likely]]
            return {};
        const char* const sValue = m_oBase.AttributeOf(uId, m_uMark);
        if (sValue == nullptr) return {};
        const Mark o = Mark::Of(sValue);
        const bool bAlone = ePlace == Place::Alone;
        const bool bEmpty = FirstOf(uId) == Data_Base::NONE;
        bool bGood = bAlone || !o.bItem;
        switch (o.eKind) {
            // As a member one with items is told from a run of nodes by another pair of brackets.
            case Mark::List: bGood = bGood && (!bAlone || o.bItem || bEmpty) && IsList(uId); break;
            case Mark::Object: bGood = bGood && bEmpty && IsOnlyMarked(uId); break;
            case Mark::Text: bGood = bGood && IsText(NodeAt(uId)); break;
            default: break;
        }
        return bGood ? o : Mark();
    }
    // Whether there is nothing else to tell but successors.
    [[nodiscard]] bool IsOnlyMarked(u2_t uId) {
        const Node::Type eType = NodeAt(uId).GetType();
        if (eType != Node::Empty && eType != Node::Tree) return false;
        if (uId == m_oTop.GetId() && !TopName().empty()) return false;
        m_oBase.m_oAtt.List(uId, m_oAttKeys);
        return m_oAttKeys.Size() == 1;
    }
    [[nodiscard]] bool IsList(u2_t uId) {
        if (!IsOnlyMarked(uId)) return false;
        // Unnamed ones come first.
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        for (u2_t u = oGroup.uSize; u-- > 0;) {
            if (IsLive(oGroup.pId[u])) return NodeAt(oGroup.pId[u]).uKey == 0;
        }
        return true;
    }
    [[nodiscard]] bool IsText(const Node& o) const noexcept {
        if (o.GetType() != Node::Binary) return false;
        const std::string_view s = BlockOf(o);
        return s.find('\0') != std::string_view::npos && IsUtf8(s.data(), s.size());
    }
    [[nodiscard]] u2_t FirstOf(u2_t uId) {
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        const u2_t* const pEnd = oGroup.pId + oGroup.uSize;
        const u2_t* const p = std::find_if(oGroup.pId, pEnd, [&](u2_t u) { return IsLive(u); });
        return p != pEnd ? *p : Data_Base::NONE;
    }
    // Empty where the name says no more than none.
    [[nodiscard]] std::string_view TopName() const noexcept {
        const std::string_view sName = m_oBase.m_oName(NodeAt(m_oTop.GetId()).uKey).View();
        return sName == "Root" ? std::string_view() : sName;
    }

    void WriteNode(u2_t uId, const Mark& oMark, bool bTop) {
        const Node& oNode = NodeAt(uId);
        if (oMark.eKind == Mark::List) {
            m_oOut.StartArray();
            return OpenFrame(uId, true);
        }
        if (oMark.eKind == Mark::Object) {
            m_oOut.StartObject();
            return m_oOut.EndObject();
        }
        const bool bText = oMark.eKind == Mark::Text;
        const bool bAttributes = ListAttributes(uId, oMark.bItem || bText);
        const std::string_view sName = bTop ? TopName() : std::string_view();
        const bool bTree = FirstOf(uId) != Data_Base::NONE;
        const bool bTyped = !IsPlain(oNode) && !bText;
        if (!bTree && !bTyped && !bAttributes && sName.empty()) return WritePlain(oNode);
        m_oOut.StartObject();
        if (bAttributes) WriteAttributes(uId);
        if (!sName.empty()) {
            m_oOut.Key(NAME);
            m_oOut.Text(sName);
        }
        if (bTree) return OpenFrame(uId, false);
        if (bTyped) {
            m_oOut.Key(TYPE);
            m_oOut.Text(Node::TypeName(oNode.GetType()));
        }
        const Node::Type eType = oNode.GetType();
        if (eType != Node::Empty && eType != Node::Tree) {
            m_oOut.Key(VALUE);
            bTyped ? WriteTyped(oNode) : WritePlain(oNode);
        }
        m_oOut.EndObject();
    }

    void OpenFrame(u2_t uId, bool bList) {
        const Data_Base::Group oGroup = m_oBase.SuccOf(uId);
        m_oFrame.Add(Frame{oGroup.pId, oGroup.pId + oGroup.uSize, NO_RUN, bList});
    }

    // Puts the keys of those that are to be written in m_oAttKeys; false when there are none.
    [[nodiscard]] bool ListAttributes(u2_t uId, bool bWithoutMark) {
        if (!m_oBase.m_oAtt.Has(uId)) [[likely]]
            return false;
        m_oBase.m_oAtt.ListByName(uId, m_oAttKeys);
        if (!bWithoutMark) return m_oAttKeys.Size() != 0;
        u2_t* const pEnd = std::remove(m_oAttKeys.Beg(), m_oAttKeys.End(), m_uMark);
        m_oAttKeys.Truncate(static_cast<std::size_t>(pEnd - m_oAttKeys.Beg()));
        return m_oAttKeys.Size() != 0;
    }
    void WriteAttributes(u2_t uId) {
        m_oOut.Key(ATTRIBUTES);
        m_oOut.StartObject();
        for (const u2_t uKey : m_oAttKeys) {
            m_oOut.Key(m_oBase.m_oAtt.Names()(uKey).View());
            m_oOut.Text(m_oBase.AttributeOf(uId, uKey));
        }
        m_oOut.EndObject();
    }

    // ---- values -----------------------------------------------------------

    [[nodiscard]] static double DoubleOf(const Node& o) noexcept {
        return std::bit_cast<double>(o.Value64());
    }
    [[nodiscard]] std::string_view BlockOf(const Node& o) const noexcept {
        return {m_oBase.m_oHeap.At(o.uWord2), o.uWord3};
    }
    // Whether the value by itself says what type it is of.
    [[nodiscard]] static bool IsPlain(const Node& o) noexcept {
        switch (o.GetType()) {
            case Node::Boolean: return o.uWord2 <= 1;
            case Node::Long: return o.Value64() > 0x7FFFFFFF;
            case Node::Double: return std::isfinite(DoubleOf(o));
            case Node::Empty:
            case Node::Integer:
            case Node::Tree:
            case Node::String: return true;
            default: return false;
        }
    }
    void WritePlain(const Node& o) {
        switch (o.GetType()) {
            case Node::Boolean: return m_oOut.Bool(o.uWord2 != 0);
            case Node::Integer: return m_oOut.Int(static_cast<i2_t>(o.uWord2));
            case Node::Long: return m_oOut.Uint(o.Value64());
            case Node::Double: return m_oOut.Real(DoubleOf(o));
            case Node::String:
                return m_oOut.Text({m_oBase.m_oHeap.At(o.uWord2), o.uWord3 - std::size_t{1}});
            case Node::Binary: return m_oOut.Text(BlockOf(o));
            default: return m_oOut.Null();
        }
    }
    void WriteTyped(const Node& o) {
        switch (o.GetType()) {
            case Node::Char: return WriteChar(o.uWord2);
            case Node::Float:
            case Node::Double: return WriteReal(DoubleOf(o));
            case Node::Date: return WriteDate(DoubleOf(o));
            case Node::Binary: return WriteBlock(BlockOf(o));
            case Node::Quad: return WriteQuad(m_oBase.m_oHeap.QuadOf(o));
            case Node::Link: return WriteLink(o.uWord2);
            case Node::Boolean: return m_oOut.Int(static_cast<i2_t>(o.uWord2));
            default: return m_oOut.Uint(o.Value64());
        }
    }

    void WriteChar(u2_t uCode) {
        char s[4];
        const bool bChar = uCode != 0 && uCode <= 0x10FFFF && (uCode < 0xD800 || uCode > 0xDFFF);
        if (bChar) return m_oOut.Text({s, EncodeUtf8(uCode, s)});
        m_oOut.Uint(uCode);
    }
    void WriteReal(double d) {
        char s[NUMBER_ROOM];
        if (std::isfinite(d)) return m_oOut.Real(d);
        m_oOut.Text(FormatUnreal(d, s));
    }
    void WriteDate(double d) {
        char s[128];
        const std::string_view sPlain = FormatPlainDate(d, s);
        if (!sPlain.empty()) return m_oOut.Text(sPlain);
        WriteReal(d);
    }
    void WriteBlock(std::string_view sBlock) {
        // Pieces without padding between them.
        constexpr std::size_t PIECE = 768;
        char s[Base64Size(PIECE)];
        m_oOut.PlainText([&] {
            const std::string_view sPiece = sBlock.substr(0, PIECE);
            EncodeBase64(sPiece.data(), sPiece.size(), s);
            sBlock.remove_prefix(sPiece.size());
            return std::string_view(s, Base64Size(sPiece.size()));
        });
    }
    void WriteQuad(const Data_Heap::Quad& auWord) {
        m_oText.Truncate(0);
        for (const u2_t uWord : auWord) {
            char s[NUMBER_ROOM];
            if (m_oText.Size() != 0) m_oText.Add(',');
            m_oText.Add(s, FormatInteger(uWord, s));
        }
        m_oOut.Text({m_oText.Beg(), m_oText.Size()});
    }

    // ---- links ------------------------------------------------------------

    // The path of the target, positions counted without removed nodes.
    void WriteLink(u2_t uTarget) {
        const u2_t uTop = m_oTop.GetId();
        if (!m_bIndexed) CountAll();
        if (uTarget >= m_oBase.m_oNode.Size() || m_oIndex.Find(uTarget) == 0) return m_oOut.Null();
        m_oWay.Truncate(0);
        for (u2_t u = uTarget; u != uTop; u = NodeAt(u).Pred()) m_oWay.Add(u);
        m_oText.Truncate(0);
        if (m_oWay.Size() == 0) m_oText.Add('/');
        for (std::size_t u = m_oWay.Size(); u-- > 0;) {
            m_oText.Add('/');
            const std::string_view sName = m_oBase.m_oName(NodeAt(m_oWay(u)).uKey).View();
            detail::AppendStep(m_oText, sName, m_oIndex.Find(m_oWay(u)) - 1);
        }
        m_oOut.Text({m_oText.Beg(), m_oText.Size()});
    }
    // Numbers all nodes within their runs: once, where there are links.
    void CountAll() {
        struct Level {
            u2_t uKey;
            u2_t uNext;
        };
        Arr<Level> oLevel;
        m_bIndexed = true;
        for (Data_Walk o(m_oTop); o.Next();) {
            const std::size_t uDepth = o.GetDepth();
            oLevel.Truncate(std::min(oLevel.Size(), uDepth + 1));
            if (oLevel.Size() <= uDepth) oLevel.Add(Level{NO_RUN, 0});
            Level& l = oLevel(uDepth);
            if (l.uKey != o.GetKey().uKey) l = {o.GetKey().uKey, 0};
            m_oIndex(o.GetId()) = ++l.uNext;
        }
    }

    const Data& m_oTop;
    Data_Base& m_oBase;
    Tokens& m_oOut;
    const u2_t m_uMark;  // key of the attribute
    Arr_Near<Frame, 16> m_oFrame;
    Arr<u2_t> m_oAttKeys;
    Arr<char> m_oText;
    Data_IdMap<u2_t> m_oIndex;  // by id: its place in its run, from 1; 0 outside of what is written
    bool m_bIndexed = false;
    Arr<u2_t> m_oWay;
};

}  // namespace

}  // namespace json

void Json_Save(const Data& oTop, File_Stream& oOut, Json_Layout eLayout) {
    return Where("vok::Json_Save", [&] {
        Data_Base& b = json::Access::NodeOf(oTop);
        oTop.SetAccessMode();
        json::Output oOutput(oOut);
        json::Tokens oTokens(oOutput, eLayout);
        json::Writer(oTop, b, oTokens).Run();
        oOutput.Put('\n');
        oOutput.Finish();
    });
}

void Json_SaveString(const Data& oTop, Str& oOut, Json_Layout eLayout) {
    return Where("vok::Json_SaveString", [&] {
        File_Buf oBuffer("w");
        Json_Save(oTop, oBuffer, eLayout);
        oOut = Str(std::string_view(oBuffer.Data(), oBuffer.Size()));
    });
}

}  // namespace vok

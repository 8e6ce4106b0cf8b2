// SPDX-License-Identifier: MIT
#include "vok/records/writer.h"

#include <algorithm>
#include <utility>

#include "vok/base/hash.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/record_trail.h"
#include "vok/data/walk.h"
#include "vok/dgraph/record_writer.h"
#include "vok/records/messages.h"
#include "vok/records/patch_sink.h"
#include "vok/xml/element_writer.h"

namespace vok {

// What is the same in all forms: which nodes are open, their names and attributes.
class Data_Writer::Impl {
  public:
    explicit Impl(File_Stream& oOut) : m_oOut(oOut) { m_oOpen.Add(OpenNode{}); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    virtual ~Impl() = default;

    void Open(std::string_view sName, u2_t uSuccs) {
        Begin(sName);
        m_eState = State::Opened;
        m_uTold = uSuccs;
    }
    void SetAttVal(std::string_view sName, std::string_view sValue) {
        if (m_eState != State::Opened) RaiseNotOpened(records::RaiseLateAttribute);
        AddAtt(sName, sValue);
    }
    void SetValue(const Data_Value& oValue) {
        if (m_eState != State::Opened) RaiseNotOpened(records::RaiseHasValue);
        Check(oValue);
        WriteLeaf(oValue);
        m_eState = State::HasValue;
    }
    void Close();
    void Add(std::string_view sName, const Data_Value& oValue) {
        Check(oValue);
        Begin(sName);
        WriteLeaf(oValue);
    }
    void Add(const Data_Record& oRecord) {
        const bool bTree = oRecord.GetType() == Data_Node::Tree;
        if (!bTree) Check(oRecord);
        Begin(oRecord.GetName());
        for (const Data_Record::Attribute& o : oRecord.GetAttributes()) AddAtt(o.sName, o.sValue);
        if (!bTree) return WriteLeaf(oRecord);
        m_eState = State::Opened;
        m_uTold = oRecord.GetSuccs();
    }
    void AnnounceTarget(std::string_view sPath);
    void Finish();

  protected:
    // An open node, beside its level in the trail.
    struct OpenNode {
        u2_t uCount = 0;  // successors so far
        u2_t uTold = UNKNOWN;
        u3_t uCountAt = 0;      // where their number is to be put
        std::size_t uPath = 0;  // bytes of its path
    };
    struct Att {
        u2_t uKey;           // in m_oAttNames
        std::size_t uValue;  // in m_oAttText
        std::size_t uSize;
    };

    // The record, or element, of the node begun: with a value, or with others in it, of which
    // uCountAt receives where their number belongs; and the end of the latter.
    virtual void Leaf(const Data_Value& oValue) = 0;
    virtual void Tree(u2_t uSuccs, u3_t& uCountAt) = 0;
    virtual void EndTree(const OpenNode& oNode) = 0;
    virtual void End() = 0;
    // Raises the error of a link that the form cannot write.
    virtual void CheckLink(std::string_view) const {}

    [[nodiscard]] bool IsRoot() const noexcept { return m_oTrail.Size() == 1; }
    // Of the node begun.
    [[nodiscard]] u2_t Key() const noexcept { return m_oTrail.Last().uKey; }
    [[nodiscard]] const Hash_Text& Name() const noexcept { return m_oTrail.NameText(Key()); }
    [[nodiscard]] std::string_view ValueOf(const Att& o) const noexcept {
        return {m_oAttText.Beg() + o.uValue, o.uSize};
    }
    // Of every attribute of the node begun the last value, in the order of their keys.
    void SortAttributes();

    detail::Record_Trail m_oTrail;
    Hash m_oAttNames;  // keys in the order in which the document names them
    Arr<Att> m_oAtt;
    Arr<char> m_oAttText;
    Hash m_oTarget;     // paths of announced targets, without the first slash
    Arr<char> m_oPath;  // of the node begun, where there are any

  private:
    // Of the node that was told last.
    enum class State : u0_t { Closed, Opened, HasValue };

    // A node behind the last one of the open level; it is neither a leaf nor a tree yet.
    void Begin(std::string_view sName) {
        if (m_eState != State::Closed || IsRoot() || m_oTarget.Size() != 1) [[unlikely]]
            return BeginSlow(sName);
        BeginHere(sName);
    }
    void BeginHere(std::string_view sName) {
        const u2_t uKey = m_oTrail.Intern(sName);
        detail::Record_Trail::Level& o = m_oTrail.Last();
        if (uKey == o.uKey) {
            ++o.uRun;
        } else {
            if (o.uKey != Hash::NONE && m_oTrail.Names().IsLess(uKey, o.uKey)) {
                records::RaiseOutOfOrder(Name().View(), m_oTrail.NameText(uKey).View());
            }
            m_oTrail.Note(uKey, 0);
        }
        ++m_oOpen.Last().uCount;
        if (m_oAtt.Size() == 0) return;
        m_oAtt.Truncate(0);
        m_oAttText.Truncate(0);
    }
    void BeginSlow(std::string_view sName);
    void Check(const Data_Value& oValue) const {
        const bool bNul = oValue.GetType() != Data_Node::Binary;
        (void)Msg::ToInt32(oValue.Text().size() + bNul);
        if (oValue.GetType() == Data_Node::Link) [[unlikely]]
            CheckLink(oValue.Text());
    }
    void WriteLeaf(const Data_Value& oValue) {
        constexpr u2_t TEXTS = 1u << Data_Node::String | 1u << Data_Node::Link;
        const std::string_view s = oValue.Text();
        if ((TEXTS >> oValue.GetType() & 1u) == 0 || IsAsciiText(s.data(), s.size())) [[likely]]
            return Leaf(oValue);
        // The text as a tree would have it.
        const Utf8_Text oText(s);
        Leaf(oValue.GetType() == Data_Node::Link ? Data_Value::Link(oText.View())
                                                 : Data_Value(oText.View()));
    }
    void AddAtt(std::string_view sName, std::string_view sValue);
    void OpenTree();
    // The name of the innermost open node.
    [[nodiscard]] std::string_view OpenName() const noexcept {
        return m_oTrail.NameAt(m_oTrail.Size() - 2);
    }
    [[noreturn]] void RaiseNotOpened(void (*pRaise)(std::string_view)) const;

    File_Stream& m_oOut;
    Arr<OpenNode> m_oOpen;  // parallel to the levels of the trail
    State m_eState = State::Closed;
    u2_t m_uTold = UNKNOWN;
};

void Data_Writer::Impl::BeginSlow(std::string_view sName) {
    if (m_eState == State::HasValue) records::RaiseHasValue(Name().View());
    if (m_eState == State::Opened) OpenTree();
    if (IsRoot() && Key() != Hash::NONE) records::RaiseComplete();
    BeginHere(IsRoot() && sName.empty() ? "Root" : sName);
    if (m_oTarget.Size() == 1 || IsRoot()) return;
    const std::size_t uParent = m_oOpen.Last().uPath;
    m_oPath.Truncate(uParent);
    if (uParent != 0) m_oPath.Add('/');
    detail::AppendStep(m_oPath, Name().View(), m_oTrail.Last().uRun - 1);
}

// The node that was opened has others in it.
void Data_Writer::Impl::OpenTree() {
    u3_t uCountAt = 0;
    m_oOpen.ReserveMore(1);
    Tree(m_uTold, uCountAt);
    m_oTrail.Open(0);
    m_oOpen.Emplace(0u, m_uTold, uCountAt, m_oPath.Size());
    m_eState = State::Closed;
}

void Data_Writer::Impl::Close() {
    if (m_eState == State::HasValue) {
        m_eState = State::Closed;
        return;
    }
    if (m_eState == State::Opened) {
        if (m_uTold != UNKNOWN && m_uTold != 0) {
            records::RaiseWrongCount(Name().View(), 0, m_uTold);
        }
        m_eState = State::Closed;
        return WriteLeaf({});
    }
    if (IsRoot()) records::RaiseNoNode();
    const OpenNode& o = m_oOpen.Last();  // stays there while nothing is opened
    if (o.uTold != UNKNOWN && o.uTold != o.uCount) {
        records::RaiseWrongCount(OpenName(), o.uCount, o.uTold);
    }
    m_oOpen.Pop();
    m_oTrail.Close();
    EndTree(o);
}

void Data_Writer::Impl::Finish() {
    if (m_eState != State::Closed) records::RaiseStillOpen(Name().View());
    if (!IsRoot()) records::RaiseStillOpen(OpenName());
    if (Key() == Hash::NONE) records::RaiseNoNode();
    End();
    m_oOut.Flush();
}

// ---- attributes -----------------------------------------------------------------

void Data_Writer::Impl::AddAtt(std::string_view sName, std::string_view sValue) {
    const Utf8_Text oName(sName);
    if (oName.Len() == 0) Msg::UnallowedAttribute("");
    const Utf8_Text oValue(sValue);
    const u2_t uKey = m_oAttNames.Insert(oName.View());
    const std::size_t uAt = m_oAttText.Size();
    m_oAttText.Add(oValue.View().data(), oValue.Len());
    m_oAtt.Add(Att{uKey, uAt, oValue.Len()});
}

void Data_Writer::Impl::SortAttributes() {
    std::stable_sort(m_oAtt.Beg(), m_oAtt.End(),
                     [](const Att& a, const Att& b) { return a.uKey < b.uKey; });
    std::size_t uKept = 0;
    for (std::size_t u = 0; u < m_oAtt.Size(); ++u) {
        const bool bLast = u + 1 == m_oAtt.Size() || m_oAtt(u + 1).uKey != m_oAtt(u).uKey;
        if (bLast) m_oAtt(uKept++) = m_oAtt(u);
    }
    m_oAtt.Truncate(uKept);
}

// ---- links --------------------------------------------------------------

void Data_Writer::Impl::RaiseNotOpened(void (*pRaise)(std::string_view)) const {
    if (Key() != Hash::NONE) pRaise(Name().View());
    records::RaiseNoNode();
}

void Data_Writer::Impl::AnnounceTarget(std::string_view sPath) {
    if (Key() != Hash::NONE) records::RaiseComplete();
    if (sPath.starts_with('/')) sPath.remove_prefix(1);
    // The root has no path, and the empty text is always there.
    m_oTarget.Insert(sPath.empty() ? "/" : sPath);
}

// ---- the forms --------------------------------------------------------------------

class Data_Writer::ToDGraph final : public Impl {
  public:
    ToDGraph(File_Stream& oOut, int iMinor, int iPatch)
        : Impl(oOut), m_oSink(oOut), m_oRecord(m_oSink, iMinor) {
        m_oRecord.Header({1, iMinor, iPatch});
    }

  private:
    void Leaf(const Data_Value& oValue) override {
        Step();
        switch (oValue.GetType()) {
            case Data_Node::Boolean: return m_oRecord.Bool(oValue.Int() != 0);
            case Data_Node::Integer: return m_oRecord.Int(static_cast<u2_t>(oValue.Int()));
            case Data_Node::Char: return m_oRecord.Char(static_cast<u2_t>(oValue.Int()));
            case Data_Node::Float: return m_oRecord.Flt(static_cast<float>(oValue.Dbl()));
            case Data_Node::Double: return m_oRecord.Dbl(oValue.Lng());
            case Data_Node::Date: return m_oRecord.Date(oValue.Dbl());
            case Data_Node::String: return m_oRecord.Str(oValue.Text());
            case Data_Node::Binary:
                return m_oRecord.Bin(oValue.Text().data(), oValue.Text().size());
            case Data_Node::Long: return m_oRecord.Lng(oValue.Lng());
            case Data_Node::Quad: return m_oRecord.Quad(oValue.QuadWords());
            case Data_Node::Link: return Link(oValue.Text());
            default: return m_oRecord.Count(0);
        }
    }
    void Tree(u2_t uSuccs, u3_t& uCountAt) override {
        Step();
        m_oRecord.Count(uSuccs);
        uCountAt = m_oSink.Offset() - 4;
        if (uSuccs == UNKNOWN) m_oSink.Keep(uCountAt);
    }
    void EndTree(const OpenNode& o) override {
        if (o.uTold == UNKNOWN) m_oSink.Patch(o.uCountAt, o.uCount);
    }
    void End() override { m_oSink.Finish(); }

    [[gnu::always_inline]] void Step() {
        if (m_oAtt.Size() != 0 || !m_oTrail.Names().IsVerbatim(Key())) [[unlikely]]
            return LongStep();
        m_oRecord.Step(Name(), m_oTrail.Last().uRun - 1);
    }
    [[gnu::noinline]] void LongStep() {
        m_oRecord.BeginStep(Name().View(), m_oTrail.Last().uRun - 1);
        SortAttributes();
        for (const Att& a : m_oAtt) {
            if (a.uSize != 0) m_oRecord.AddAttribute(m_oAttNames(a.uKey).View(), ValueOf(a));
        }
        m_oRecord.EndStep();
    }
    // The name of the target is that of the last step of its path.
    void Link(std::string_view sPath) {
        if (sPath.starts_with('/')) sPath.remove_prefix(1);
        // To the root there is none.
        if (sPath.empty()) return m_oRecord.Count(0);
        std::string_view sName = sPath.substr(sPath.rfind('/') + 1);
        sName = sName.substr(0, sName.find('['));
        m_oTargetName.Truncate(0);
        m_oTargetName.Add(sName.data(), sName.size());
        const char* const pEnd =
            Data::DecodeXpath(m_oTargetName.Beg(), m_oTargetName.Beg() + sName.size());
        sName = {m_oTargetName.Beg(), static_cast<std::size_t>(pEnd - m_oTargetName.Beg())};
        m_oRecord.Link(sName.substr(0, sName.find('\0')), sPath);
    }

    records::PatchSink m_oSink;
    dgraph::RecordWriter<records::PatchSink> m_oRecord;
    Arr<char> m_oTargetName;
};

class Data_Writer::ToXml final : public Impl {
  public:
    explicit ToXml(File_Stream& oOut) : Impl(oOut), m_oSink(oOut), m_oElement(m_oSink, 0) {
        m_oElement.Declaration();
    }

  private:
    void Leaf(const Data_Value& oValue) override {
        if (ShortLeaf(oValue)) return;
        u2_t uTarget = 0;
        if (oValue.GetType() == Data_Node::Link) uTarget = NumberOf(Target(oValue.Text()));
        StartTag();
        switch (const Data_Node::Type eType = oValue.GetType()) {
            case Data_Node::Boolean:
            case Data_Node::Integer: m_oElement.Int(eType, static_cast<u2_t>(oValue.Int())); break;
            case Data_Node::Char: m_oElement.Char(static_cast<u2_t>(oValue.Int())); break;
            case Data_Node::Float:
            case Data_Node::Double: m_oElement.Real(eType, oValue.Dbl()); break;
            case Data_Node::Date: m_oElement.Date(oValue.Dbl()); break;
            case Data_Node::Long: m_oElement.Lng(oValue.Lng()); break;
            case Data_Node::Quad: m_oElement.Quad(oValue.QuadWords()); break;
            case Data_Node::String: m_oElement.Str(oValue.Text()); break;
            case Data_Node::Binary:
                m_oElement.Bin(oValue.Text().data(), oValue.Text().size());
                break;
            case Data_Node::Link: return m_oElement.Link(uTarget);
            default: return m_oElement.Empty();
        }
        m_oElement.EndTag(WrittenName());
    }
    void Tree(u2_t, u3_t&) override {
        StartTag();
        m_oElement.BeginTree();
    }
    void EndTree(const OpenNode&) override { m_oElement.EndTree(WrittenName()); }
    void CheckLink(std::string_view sPath) const override { (void)Target(sPath); }
    void End() override { m_oSink.Finish(); }

    // The same for most; false for any other, with nothing written.
    [[nodiscard]] bool ShortLeaf(const Data_Value& oValue) {
        using Element = xml::ElementWriter<PieceSink>;
        if (m_oAtt.Size() != 0 || m_oTarget.Size() != 1 || IsRoot() || !IsVerbatim()) return false;
        const Hash_Text& oName = Name();
        if (oName.uLength > Element::SHORT_NAME) return false;
        char* p = m_oSink.Space(Element::SHORT_ROOM);
        switch (oValue.GetType()) {
            case Data_Node::Integer:
                p = m_oElement.ShortNumber<Data_Node::Integer>(p, oName, oValue.Int());
                break;
            case Data_Node::Double:
                p = m_oElement.ShortNumber<Data_Node::Double>(p, oName, oValue.Dbl());
                break;
            case Data_Node::Long:
                p = m_oElement.ShortNumber<Data_Node::Long>(p, oName, oValue.Lng());
                break;
            case Data_Node::Boolean:
                p = m_oElement.ShortNumber<Data_Node::Boolean>(p, oName, oValue.Int());
                break;
            case Data_Node::String: {
                const std::string_view s = oValue.Text();
                if (!Element::IsShort(s)) return false;
                p = m_oElement.ShortText(p, oName, [s](char* pTo) {
                    CopyBytes(pTo, s.data(), s.size());
                    return pTo + s.size();
                });
                break;
            }
            case Data_Node::Empty: p = m_oElement.ShortEmpty(p, oName); break;
            default: return false;
        }
        m_oSink.Cut(p);
        return true;
    }

    void StartTag() {
        m_oElement.BeginTag(WrittenName());
        if (IsRoot()) m_oElement.DeclareTypes();
        if (m_oAtt.Size() != 0) WriteAttributes();
        if (m_oTarget.Size() == 1) return;
        const std::string_view sPath(m_oPath.Beg(), m_oPath.Size());
        const u2_t uTarget = m_oTarget.Find(IsRoot() ? "/" : sPath);
        if (uTarget != Hash::NONE) m_oElement.Number(xml::NODE_ID, NumberOf(uTarget));
    }
    void WriteAttributes() {
        SortAttributes();
        std::sort(m_oAtt.Beg(), m_oAtt.End(), [this](const Att& a, const Att& b) {
            return m_oAttNames.IsLess(a.uKey, b.uKey);
        });
        for (const Att& a : m_oAtt) {
            m_oElement.NodeAttribute(m_oAttNames(a.uKey).View(), ValueOf(a));
        }
    }
    // Whether the name of the node is written as it stands.
    [[nodiscard]] bool IsVerbatim() {
        if (std::exchange(m_uStarts, m_oTrail.Starts()) != m_oTrail.Starts()) {
            m_oVerbatim.Truncate(0);
        }
        const u2_t uKey = Key();
        if (uKey >= m_oVerbatim.Size()) m_oVerbatim.Resize(m_oTrail.Names().Size());
        u0_t& uVerbatim = m_oVerbatim(uKey);
        if (uVerbatim == 0) uVerbatim = xml::IsVerbatimName(Name().View()) ? YES : NO;
        return uVerbatim == YES;
    }
    [[nodiscard]] std::string_view WrittenName() {
        const std::string_view sName = Name().View();
        if (IsVerbatim()) return sName;
        m_oWritten.Truncate(0);
        xml::EncodeName(m_oWritten, sName);
        return {m_oWritten.Beg(), m_oWritten.Size()};
    }
    [[nodiscard]] u2_t Target(std::string_view sPath) const {
        if (sPath.starts_with('/')) sPath.remove_prefix(1);
        const u2_t uTarget = m_oTarget.Find(sPath.empty() ? "/" : sPath);
        if (uTarget == Hash::NONE) records::RaiseUnknownTarget(sPath);
        return uTarget;
    }
    // Numbers count up in the order in which the document names them.
    [[nodiscard]] u2_t NumberOf(u2_t uTarget) {
        if (uTarget >= m_oNumber.Size()) m_oNumber.Resize(m_oTarget.Size());
        u2_t& uNumber = m_oNumber(uTarget);
        if (uNumber == 0) uNumber = ++m_uNumbers;
        return uNumber;
    }

    static constexpr u0_t YES = 1;
    static constexpr u0_t NO = 2;

    PieceSink m_oSink;
    xml::ElementWriter<PieceSink> m_oElement;
    u2_t m_uStarts = 0;     // of the table of names
    Arr<u0_t> m_oVerbatim;  // by key of the name; 0 for what was not looked at
    Arr<char> m_oWritten;
    Arr<u2_t> m_oNumber;  // by target; 0 for none yet
    u2_t m_uNumbers = 0;
};

// ---- the public operations ----------------------------------------------------------

Data_Writer::Data_Writer(File_Stream& oOut, Form eForm, int iMinor, int iPatch)
    : m_pImpl(Where("vok::Data_Writer::Data_Writer", [&]() -> std::unique_ptr<Impl> {
          if (eForm == Form::Xml) return std::make_unique<ToXml>(oOut);
          return std::make_unique<ToDGraph>(oOut, iMinor, iPatch);
      })) {}

Data_Writer::Data_Writer(Data_Writer&&) noexcept = default;
Data_Writer& Data_Writer::operator=(Data_Writer&&) noexcept = default;
Data_Writer::~Data_Writer() = default;

void Data_Writer::Open(std::string_view sName, u2_t uSuccs) {
    return Where("vok::Data_Writer::Open", [&] { m_pImpl->Open(sName, uSuccs); });
}

void Data_Writer::SetAttVal(std::string_view sName, std::string_view sValue) {
    return Where("vok::Data_Writer::SetAttVal", [&] { m_pImpl->SetAttVal(sName, sValue); });
}

void Data_Writer::SetValue(const Data_Value& oValue) {
    return Where("vok::Data_Writer::SetValue", [&] { m_pImpl->SetValue(oValue); });
}

void Data_Writer::Close() {
    return Where("vok::Data_Writer::Close", [&] { m_pImpl->Close(); });
}

void Data_Writer::Add(std::string_view sName, const Data_Value& oValue) {
    return Where("vok::Data_Writer::Add", [&] { m_pImpl->Add(sName, oValue); });
}

void Data_Writer::Add(const Data_Record& oRecord) {
    return Where("vok::Data_Writer::Add", [&] { m_pImpl->Add(oRecord); });
}

void Data_Writer::Add(const Data& oNode) {
    return Where("vok::Data_Writer::Add", [&] {
        Arr<const char*> oNames;
        Arr<const char*> oValues;
        std::size_t uOpen = 0;
        for (Data_Walk o(oNode); o.Next();) {
            for (; uOpen > o.GetDepth(); --uOpen) m_pImpl->Close();
            const char* sName = o.GetName();
            m_pImpl->Open(sName != nullptr ? sName : "", UNKNOWN);
            const Data oHere = o.GetData();
            oHere.GetAttributes(oNames, oValues);
            for (std::size_t u = 0; u < oNames.Size(); ++u) {
                m_pImpl->SetAttVal(oNames(u), oValues(u));
            }
            ++uOpen;
            const Data_Node::Type eType = o.GetType();
            if (eType == Data_Node::Link) {
                const Data oTarget = oHere.GetValLink();
                const bool bLive = oTarget.IsNode() && oTarget.GetType() != Data_Node::Zombi;
                if (bLive) m_pImpl->SetValue(Data_Value::Link(oTarget.GetPath().View()));
            } else if (eType != Data_Node::Tree && eType != Data_Node::Empty) {
                m_pImpl->SetValue(o.GetValue());
            }
        }
        for (; uOpen != 0; --uOpen) m_pImpl->Close();
    });
}

void Data_Writer::AnnounceTarget(std::string_view sPath) {
    return Where("vok::Data_Writer::AnnounceTarget", [&] { m_pImpl->AnnounceTarget(sPath); });
}

void Data_Writer::Finish() {
    return Where("vok::Data_Writer::Finish", [&] { m_pImpl->Finish(); });
}

}  // namespace vok

#include "vok/records/writer.h"

#include <algorithm>
#include <utility>

#include "vok/base/hash.h"
#include "vok/base/where.h"
#include "vok/data/escape.h"
#include "vok/data/names.h"
#include "vok/data/walk.h"
#include "vok/dgraph/record_writer.h"
#include "vok/records/messages.h"
#include "vok/records/patch_sink.h"
#include "vok/xml/element_writer.h"

namespace vok {

// What is the same in all forms: which nodes are open, their names and attributes.
class Data_Writer::Impl {
  public:
    explicit Impl(File_Stream& oOut) : m_oOut(oOut) { m_oLevel.Add(Level{}); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    virtual ~Impl() = default;

    // A node behind the last one of the open level; it is neither a leaf nor a tree yet.
    void Begin(std::string_view sName);
    void Open(std::string_view sName, u2_t uSuccs) {
        Begin(sName);
        m_eState = State::Opened;
        m_uTold = uSuccs;
    }
    void SetAttVal(std::string_view sName, std::string_view sValue);
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
    void AddAttributes(const Data_Record& oRecord) {
        for (const Data_Record::Attribute& o : oRecord.GetAttributes()) AddAtt(o.sName, o.sValue);
    }
    void AnnounceTarget(std::string_view sPath);
    void Finish();
    // Raises the errors of a value, before anything is changed.
    virtual void Check(const Data_Value& oValue) const {
        (void)Msg::ToInt32(oValue.Text().size() + 1);
    }
    void WriteLeaf(const Data_Value& oValue);

  protected:
    // The successors of an open node, of which the last one has that name and position.
    struct Level {
        u2_t uKey = Hash::NONE;
        u2_t uRun = 0;
        u2_t uCount = 0;
        u2_t uTold = UNKNOWN;
        u3_t uCountAt = 0;      // where the count is to be put
        std::size_t uPath = 0;  // bytes of the path of the open node
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
    virtual void EndTree(const Level& oLevel) = 0;
    virtual void End() = 0;
    // Other keys belong to the names from now on.
    virtual void ForgetNames() {}

    [[nodiscard]] const Level& Last() const noexcept { return m_oLevel.Last(); }
    [[nodiscard]] bool IsRoot() const noexcept { return m_oLevel.Size() == 1; }
    [[nodiscard]] std::string_view NameOf(const Level& o) const noexcept {
        return m_oNames(o.uKey).View();
    }
    [[nodiscard]] std::string_view ValueOf(const Att& o) const noexcept {
        return {m_oAttText.Beg() + o.uValue, o.uSize};
    }
    // Of every attribute of the node begun the last value, in the order of their keys.
    void SortAttributes();

    Data_Names m_oNames;
    Hash m_oAttNames;  // keys in the order in which the document names them
    Arr<Att> m_oAtt;
    Arr<char> m_oAttText;
    Hash m_oTarget;     // paths of announced targets, without the first slash
    Arr<char> m_oPath;  // of the node begun, where there are any

  private:
    // Of the node that was told last.
    enum class State : u0_t { Closed, Opened, HasValue };

    // Names beyond so many are forgotten.
    static constexpr std::size_t MOST_NAMES = 65536;

    void AddAtt(std::string_view sName, std::string_view sValue);
    void OpenTree();
    void RestartNames();
    [[noreturn]] void RaiseNotOpened(void (*pRaise)(std::string_view)) const;

    File_Stream& m_oOut;
    Arr<Level> m_oLevel;
    State m_eState = State::Closed;
    u2_t m_uTold = UNKNOWN;
    Arr<char> m_oValid;
};

void Data_Writer::Impl::Begin(std::string_view sName) {
    if (m_eState == State::HasValue) records::RaiseHasValue(NameOf(Last()));
    if (m_eState == State::Opened) OpenTree();
    if (IsRoot()) {
        if (Last().uKey != Hash::NONE) records::RaiseComplete();
        if (sName.empty()) sName = "Root";
    }
    if (m_oNames.Size() > std::max(MOST_NAMES, 2 * m_oLevel.Size())) RestartNames();
    const u2_t uKey = m_oNames.Intern(sName);
    Level& o = m_oLevel.Last();
    if (uKey == o.uKey) {
        ++o.uRun;
    } else {
        if (o.uKey != Hash::NONE && m_oNames.IsLess(uKey, o.uKey)) {
            records::RaiseOutOfOrder(NameOf(o), m_oNames(uKey).View());
        }
        o.uKey = uKey;
        o.uRun = 0;
    }
    ++o.uCount;
    if (m_oAtt.Size() != 0) {
        m_oAtt.Truncate(0);
        m_oAttText.Truncate(0);
    }
    if (m_oTarget.Size() == 1 || IsRoot()) return;
    m_oPath.Truncate(o.uPath);
    if (o.uPath != 0) m_oPath.Add('/');
    detail::AppendStep(m_oPath, NameOf(o), o.uRun);
}

// The node that was opened has others in it.
void Data_Writer::Impl::OpenTree() {
    (void)Msg::ToInt32(m_oLevel.Size());
    Level oLevel;
    oLevel.uTold = m_uTold;
    oLevel.uPath = m_oPath.Size();
    m_oLevel.ReserveMore(1);
    Tree(m_uTold, oLevel.uCountAt);
    m_oLevel.Add(oLevel);
    m_eState = State::Closed;
}

void Data_Writer::Impl::WriteLeaf(const Data_Value& oValue) {
    if (oValue.GetType() != Data_Node::String && oValue.GetType() != Data_Node::Link) {
        return Leaf(oValue);
    }
    // The text as a tree would have it.
    const std::string_view s = oValue.Text();
    if (IsAsciiText(s.data(), s.size())) [[likely]]
        return Leaf(oValue);
    const Utf8_Text oText(s);
    if (oValue.GetType() == Data_Node::Link) return Leaf(Data_Value::Link(oText.View()));
    Leaf(oText.View());
}

void Data_Writer::Impl::Close() {
    switch (std::exchange(m_eState, State::Closed)) {
        case State::HasValue: return;
        case State::Opened:
            if (m_uTold != UNKNOWN && m_uTold != 0) {
                m_eState = State::Opened;
                records::RaiseWrongCount(NameOf(Last()), 0, m_uTold);
            }
            return WriteLeaf({});
        case State::Closed: break;
    }
    if (IsRoot()) records::RaiseNoNode();
    const Level& o = Last();
    if (o.uTold != UNKNOWN && o.uTold != o.uCount) {
        records::RaiseWrongCount(NameOf(m_oLevel(m_oLevel.Size() - 2)), o.uCount, o.uTold);
    }
    const Level oClosed = o;
    m_oLevel.Pop();
    EndTree(oClosed);
}

void Data_Writer::Impl::Finish() {
    if (m_eState != State::Closed) records::RaiseStillOpen(NameOf(Last()));
    if (!IsRoot()) records::RaiseStillOpen(NameOf(m_oLevel(m_oLevel.Size() - 2)));
    if (Last().uKey == Hash::NONE) records::RaiseNoNode();
    End();
    m_oOut.Flush();
}

// ---- attributes -----------------------------------------------------------------

void Data_Writer::Impl::SetAttVal(std::string_view sName, std::string_view sValue) {
    if (m_eState != State::Opened) RaiseNotOpened(records::RaiseLateAttribute);
    AddAtt(sName, sValue);
}

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

// ---- names and links --------------------------------------------------------------

void Data_Writer::Impl::RaiseNotOpened(void (*pRaise)(std::string_view)) const {
    if (Last().uKey == Hash::NONE) records::RaiseNoNode();
    pRaise(NameOf(Last()));
    records::RaiseNoNode();  // not reached
}

// Only those of open nodes are kept.
void Data_Writer::Impl::RestartNames() {
    Hash oNew;
    oNew.Start();
    for (std::size_t u = 0; u < m_oLevel.Size(); ++u) {
        Level& o = m_oLevel(u);
        if (o.uKey != Hash::NONE) o.uKey = oNew.Insert(NameOf(o));
    }
    m_oNames.Renew(oNew);
    ForgetNames();
}

void Data_Writer::Impl::AnnounceTarget(std::string_view sPath) {
    if (Last().uKey != Hash::NONE) records::RaiseComplete();
    if (sPath.starts_with('/')) sPath.remove_prefix(1);
    // The root has no path, and the empty text is always there.
    m_oTarget.Insert(sPath.empty() ? "/" : sPath);
}

// ---- the forms --------------------------------------------------------------------

class Data_Writer::ToDGraph final : public Impl {
  public:
    ToDGraph(File_Stream& oOut, int iMinor)
        : Impl(oOut), m_oSink(oOut), m_oRecord(m_oSink, iMinor) {
        m_oRecord.Header({1, iMinor, 0});
    }

  private:
    void Leaf(const Data_Value& oValue) override {
        Step();
        switch (oValue.GetType()) {
            case Data_Node::Boolean: return m_oRecord.Bool(oValue.Int() != 0);
            case Data_Node::Integer: return m_oRecord.Int(static_cast<u2_t>(oValue.Int()));
            case Data_Node::Char: return m_oRecord.Char(static_cast<u2_t>(oValue.Int()));
            case Data_Node::Float: return m_oRecord.Flt(oValue.Dbl());
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
    void EndTree(const Level& oLevel) override {
        if (oLevel.uTold == UNKNOWN) m_oSink.Patch(oLevel.uCountAt, oLevel.uCount);
    }
    void End() override { m_oSink.Finish(); }

    void Step() {
        const Level& o = Last();
        const u2_t uIndex = IsRoot() ? 0 : o.uRun;
        if (m_oAtt.Size() == 0 && m_oNames.IsVerbatim(o.uKey)) {
            return m_oRecord.Step(m_oNames(o.uKey), uIndex);
        }
        m_oRecord.BeginStep(NameOf(o), uIndex);
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

    void Check(const Data_Value& oValue) const override {
        Impl::Check(oValue);
        if (oValue.GetType() == Data_Node::Link) (void)Target(oValue.Text());
    }

  private:
    void Leaf(const Data_Value& oValue) override {
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
    void EndTree(const Level&) override { m_oElement.EndTree(WrittenName()); }
    void End() override { m_oSink.Finish(); }
    void ForgetNames() override { m_oVerbatim.Truncate(0); }

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
    [[nodiscard]] std::string_view WrittenName() {
        const u2_t uKey = Last().uKey;
        if (uKey >= m_oVerbatim.Size()) m_oVerbatim.Resize(m_oNames.Size());
        u0_t& uVerbatim = m_oVerbatim(uKey);
        const std::string_view sName = NameOf(Last());
        if (uVerbatim == 0) uVerbatim = xml::IsVerbatimName(sName) ? YES : NO;
        if (uVerbatim == YES) return sName;
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
    Arr<u0_t> m_oVerbatim;  // by key of the name; 0 for what was not looked at
    Arr<char> m_oWritten;
    Arr<u2_t> m_oNumber;  // by target; 0 for none yet
    u2_t m_uNumbers = 0;
};

// ---- the public operations ----------------------------------------------------------

Data_Writer::Data_Writer(File_Stream& oOut, Form eForm, int iMinor)
    : m_pImpl(Where("vok::Data_Writer::Data_Writer", [&]() -> std::unique_ptr<Impl> {
          if (eForm == Form::Xml) return std::make_unique<ToXml>(oOut);
          return std::make_unique<ToDGraph>(oOut, iMinor);
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
    return Where("vok::Data_Writer::Add", [&] {
        if (oRecord.GetType() == Data_Node::Tree) {
            m_pImpl->Open(oRecord.GetName(), oRecord.GetSuccs());
            m_pImpl->AddAttributes(oRecord);
        } else {
            m_pImpl->Check(oRecord);
            m_pImpl->Begin(oRecord.GetName());
            m_pImpl->AddAttributes(oRecord);
            m_pImpl->WriteLeaf(oRecord);
        }
    });
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
            switch (o.GetType()) {
                case Data_Node::Tree:
                case Data_Node::Empty: break;
                case Data_Node::Boolean: m_pImpl->SetValue(o.Int() != 0); break;
                case Data_Node::Integer: m_pImpl->SetValue(o.Int()); break;
                case Data_Node::Char:
                    m_pImpl->SetValue(Data_Value::Char(static_cast<u2_t>(o.Int())));
                    break;
                case Data_Node::Float: m_pImpl->SetValue(Data_Value::Float(o.Dbl())); break;
                case Data_Node::Double: m_pImpl->SetValue(o.Dbl()); break;
                case Data_Node::Date: m_pImpl->SetValue(Data_Value::Date(o.Dbl())); break;
                case Data_Node::String: m_pImpl->SetValue(o.Text()); break;
                case Data_Node::Binary:
                    m_pImpl->SetValue(Data_Value::Binary(o.Block().data(), o.Block().size()));
                    break;
                case Data_Node::Long: m_pImpl->SetValue(o.Lng()); break;
                case Data_Node::Quad:
                    m_pImpl->SetValue(Data_Value::Quad(o.QuadWord(0), o.QuadWord(1), o.QuadWord(2),
                                                       o.QuadWord(3)));
                    break;
                case Data_Node::Link: {
                    const Data oTarget = oHere.GetValLink();
                    const bool bLive = oTarget.IsNode() && oTarget.GetType() != Data_Node::Zombi;
                    if (bLive) m_pImpl->SetValue(Data_Value::Link(oTarget.GetPath().View()));
                    break;
                }
                default: break;
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

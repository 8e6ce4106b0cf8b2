#include "vok/dgraph/records.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "vok/base/date.h"
#include "vok/base/where.h"
#include "vok/base/work.h"
#include "vok/data/builder.h"
#include "vok/data/escape.h"
#include "vok/data/select.h"
#include "vok/data/xpath.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/messages.h"
#include "vok/dgraph/step.h"
#include "vok/file/rest.h"

namespace vok {

using namespace dgraph;

namespace {

// What comes next in a stream, in pieces. Memory follows the bytes that are there.
class Window {
  public:
    static constexpr std::size_t CHUNK = 64 * 1024;

    explicit Window(File_Stream& oIn) : m_oIn(oIn) {}

    // The next uSize bytes, or those that are left; they count as read, and stay where they are
    // until the next call.
    std::string_view View(std::size_t uSize) {
        if (m_uEnd - m_uAt < uSize) [[unlikely]]
            return Rest(uSize);
        const std::string_view sView(m_oBuffer.Beg() + m_uAt, uSize);
        m_uAt += uSize;
        return sView;
    }
    // A number, of which what is missing is zero.
    template <class T>
    T Get(std::size_t* pGot = nullptr) {
        const std::string_view sView = View(sizeof(T));
        if (pGot != nullptr) *pGot = sView.size();
        if (sView.size() == sizeof(T)) [[likely]]
            return Load<T>(sView.data());
        char s[sizeof(T)] = {};
        sView.copy(s, sizeof(T));
        return Load<T>(s);
    }

    [[nodiscard]] u3_t Offset() const noexcept { return m_uBefore + m_uAt; }
    [[nodiscard]] u3_t Missing() const noexcept { return m_uMissing; }
    // Leaves the stream behind what was read, where it can seek.
    void GiveBack() {
        const std::size_t uLeft = m_uEnd - m_uAt;
        if (uLeft == 0 || !m_oIn.CanSeek(File_Stream::FROM_POSITION)) return;
        m_oIn.Seek(-static_cast<i3_t>(uLeft), File_Stream::FROM_POSITION);
        m_uEnd = m_uAt;
    }

  private:
    std::string_view Rest(std::size_t uSize) {
        Fill(uSize);
        const std::string_view sView(m_oBuffer.Beg() + m_uAt, std::min(uSize, m_uEnd - m_uAt));
        m_uAt += sView.size();
        m_uMissing += uSize - sView.size();
        return sView;
    }
    void Fill(std::size_t uSize) {
        m_uEnd -= m_uAt;
        if (m_uEnd != 0) std::memmove(m_oBuffer.Beg(), m_oBuffer.Beg() + m_uAt, m_uEnd);
        m_uBefore += m_uAt;
        m_uAt = 0;
        while (m_uEnd < uSize) {
            // As much again as there is.
            const std::size_t uMore = std::max(m_uEnd, CHUNK);
            if (m_oBuffer.Size() < m_uEnd + uMore) m_oBuffer.Resize(m_uEnd + uMore);
            const std::size_t uRead = ReadUpTo(m_oIn, m_oBuffer.Beg() + m_uEnd, uMore);
            m_uEnd += uRead;
            if (uRead < uMore) break;
        }
    }

    File_Stream& m_oIn;
    Arr<char> m_oBuffer;
    std::size_t m_uAt = 0;
    std::size_t m_uEnd = 0;
    u3_t m_uBefore = 0;  // bytes in front of the buffer
    u3_t m_uMissing = 0;
};

}  // namespace

// ---- Dgraph_Reader ------------------------------------------------------------

class Dgraph_Reader::Impl {
  public:
    Impl(File_Stream& oIn, const Limits& oLimits) : m_oWindow(oIn), m_oLimits(oLimits) {
        const std::string_view sHeader = m_oWindow.View(HEADER_SIZE);
        if (!LoadHeader(sHeader.data(), sHeader.size(), m_oVersion)) RaiseNoBinaryDGraph();
        if (m_oVersion.iMajor != 1) RaiseWrongVersion();
        m_uMissingHeader = m_oWindow.Missing();
        m_oLevel.Add(Level{1, 0});
    }

    // The successors of an open node, of which the last one read is the node of this level.
    struct Level {
        u2_t uPending;            // records still to come; a negative number is a large one
        u2_t uName;               // of the last one, in m_oNames
        u2_t uRun = 0;            // nodes so far in the run of its name
        u2_t uBefore = NONE_YET;  // places that it left free in front of it
    };
    static constexpr u2_t NONE_YET = 0xFFFFFFFF;

    // Empty behind the end of the document.
    [[nodiscard]] std::string_view NameAt(std::size_t uLevel) const noexcept {
        if (uLevel >= m_oLevel.Size()) return {};
        const u2_t uBegin = m_oLevel(uLevel).uName;
        const std::size_t uEnd =
            uLevel + 1 < m_oLevel.Size() ? m_oLevel(uLevel + 1).uName : m_oNames.Size();
        return {m_oNames.Beg() + uBegin, uEnd - uBegin};
    }
    // Closes levels without records to come, from uFirst on; false when that closes all of them, or
    // the document is at its end.
    bool CloseLevels(std::size_t uFirst = 0) noexcept {
        while (m_oLevel.Size() > uFirst && m_oLevel.Last().uPending == 0) {
            m_oNames.Truncate(m_oLevel.Last().uName);
            m_oLevel.Pop();
        }
        return m_oLevel.Size() > uFirst && !m_bEnd;
    }

    void ReadStep(Dgraph_Reader& r);
    void ReadValue(Dgraph_Reader& r);

    Window m_oWindow;
    const Limits m_oLimits;
    Work m_oWork{m_oLimits};
    Version m_oVersion;
    u3_t m_uMissingHeader = 0;
    Arr<Level> m_oLevel;
    Arr<char> m_oNames;
    Step m_oStep;
    Arr<char> m_oFilled;
    std::vector<Outer_Link> m_aoOuter;
    u3_t m_uNodes = 1;
    u3_t m_uSkipped = 0;
    u2_t m_uDepth = 0;
    u2_t m_uMostDepth = ~u2_t{0};  // records below are left out
    bool m_bEnd = false;

  private:
    std::size_t GetLength() {
        const auto iLength = m_oWindow.Get<i2_t>();
        if (iLength < 0) RaiseNegativeLength();
        if (static_cast<u3_t>(iLength) > m_oLimits.m_uTextBytes) {
            m_oLimits.RaiseExceeded(&Limits::m_uTextBytes);
        }
        return static_cast<std::size_t>(iLength);
    }
    // A block that the stream cuts short is filled up with zeros, not more than were worth reading.
    std::string_view ReadBlock() {
        const std::size_t uLength = GetLength();
        const std::string_view sBlock = m_oWindow.View(uLength);
        if (sBlock.size() == uLength) return sBlock;
        m_oFilled.Truncate(0);
        m_oFilled.Add(sBlock.data(), sBlock.size());
        const std::size_t uZeros = std::min(uLength - sBlock.size(), Window::CHUNK);
        for (std::size_t u = 0; u < uZeros; ++u) m_oFilled.Add('\0');
        return {m_oFilled.Beg(), m_oFilled.Size()};
    }
    void Count(u3_t uNodes) {
        if (m_uNodes + uNodes > m_oLimits.m_uNodes) m_oLimits.RaiseExceeded(&Limits::m_uNodes);
        m_uNodes += uNodes;
    }
    // The bytes of the name of a step that is no more than a name as it stands and an index of up
    // to nine digits; 0 for any other.
    [[nodiscard]] std::size_t PlainName(std::string_view sStep) const noexcept;
    void NoteName(std::string_view sName, i2_t iIndex);
};

std::size_t Dgraph_Reader::Impl::PlainName(std::string_view sStep) const noexcept {
    const std::size_t uSize = sStep.size();
    std::size_t uName = 0;
    if (uSize < 4 || sStep[uSize - 1] != ']') return 0;
    if (sStep[uSize - 3] == '[') {
        uName = uSize - 3;
    } else {
        uName = sStep.rfind('[', uSize - 3);
        if (uName == std::string_view::npos || uSize - uName > 11) return 0;
    }
    for (std::size_t u = uName + 1; u + 1 < uSize; ++u) {
        if (static_cast<u0_t>(sStep[u] - '0') > 9) return 0;
    }
    bool bVerbatim = uName != 0;
    for (std::size_t u = 0; u < uName; ++u) bVerbatim &= VERBATIM[static_cast<u0_t>(sStep[u])];
    return bVerbatim ? uName : 0;
}

void Dgraph_Reader::Impl::ReadStep(Dgraph_Reader& r) {
    const std::size_t uLength = GetLength();
    if (uLength == 0) RaiseEmptyNodePath();
    const std::string_view sStep = m_oWindow.View(uLength);
    r.m_oAttribute.Truncate(0);
    if (const std::size_t uName = PlainName(sStep); uName != 0) {
        u2_t uIndex = 0;
        const char* p = sStep.data() + uName + 1;
        for (; p != &sStep.back(); ++p) uIndex = 10 * uIndex + static_cast<u2_t>(*p - '0');
        return NoteName(sStep.substr(0, uName), static_cast<i2_t>(uIndex));
    }
    m_oStep.Parse(sStep);
    const Utf8_Text oName(m_oStep.Name());
    NoteName(oName.View(), m_oStep.Index());
    const Arr<Step::Attribute>& oAttributes = m_oStep.Attributes();
    if (oAttributes.Size() > m_oLimits.m_uAttributes) {
        m_oLimits.RaiseExceeded(&Limits::m_uAttributes);
    }
    for (const Step::Attribute& o : oAttributes) {
        if (*o.sName == 0) Msg::UnallowedAttribute("");
        r.m_oAttribute.Add(Attribute{o.sName, o.sValue});
    }
}

void Dgraph_Reader::Impl::NoteName(std::string_view sName, i2_t iIndex) {
    Level& oLevel = m_oLevel.Last();
    m_uDepth = static_cast<u2_t>(m_oLevel.Size() - 1);
    const bool bSameRun = oLevel.uBefore != NONE_YET && NameAt(m_uDepth) == sName;
    if (!bSameRun) {
        oLevel.uRun = 0;
        m_oNames.Truncate(oLevel.uName);
        m_oNames.Add(sName.data(), sName.size());
        (void)Msg::ToInt32(m_oNames.Size());
    }
    oLevel.uBefore = 0;
    if (m_uDepth != 0) {
        Count(1);
        const auto iRun = static_cast<i2_t>(oLevel.uRun);
        if (bSameRun && iIndex < iRun) RaiseElementExists();
        if (iIndex > iRun) {
            oLevel.uBefore = static_cast<u2_t>(iIndex - i3_t{iRun});
            m_uSkipped += oLevel.uBefore;
            if (m_uSkipped > m_oLimits.m_uSkippedSlots) {
                m_oLimits.RaiseExceeded(&Limits::m_uSkippedSlots);
            }
            Count(oLevel.uBefore);
        }
    }
    oLevel.uRun = static_cast<u2_t>(iIndex) + 1;
}

void Dgraph_Reader::Impl::ReadValue(Dgraph_Reader& r) {
    r.m_uValue = 0;
    r.m_sText = {};
    r.m_eType = Data_Node::Empty;
    const auto oSet = [&r](Data_Node::Type eType, u3_t uValue) {
        r.m_eType = eType;
        r.m_uValue = uValue;
    };
    const auto eCode = static_cast<Code>(m_oWindow.Get<u0_t>());
    --m_oLevel.Last().uPending;
    switch (eCode) {
        case CODE_NONE: {
            std::size_t uGot = 0;
            const auto uCount = m_oWindow.Get<u2_t>(&uGot);
            m_bEnd = uGot < 4;
            if (m_bEnd || uCount == 0) return;
            if (m_oLevel.Size() >= m_oLimits.m_uDepth) {
                m_oLimits.RaiseExceeded(&Limits::m_uDepth);
            }
            m_oLevel.Add(Level{uCount, static_cast<u2_t>(m_oNames.Size())});
            return oSet(Data_Node::Tree, uCount);
        }
        case CODE_INTEGER: return oSet(Data_Node::Integer, m_oWindow.Get<u2_t>());
        case CODE_FLOAT: {
            const double dValue = std::bit_cast<float>(m_oWindow.Get<u2_t>());
            return oSet(Data_Node::Float, std::bit_cast<u3_t>(dValue));
        }
        case CODE_DOUBLE: return oSet(Data_Node::Double, m_oWindow.Get<u3_t>());
        case CODE_CHAR: return oSet(Data_Node::Char, m_oWindow.Get<u0_t>());
        case CODE_BOOLEAN: return oSet(Data_Node::Boolean, m_oWindow.Get<u0_t>() != 0);
        case CODE_DATE: {
            const double dDays = std::bit_cast<double>(m_oWindow.Get<u3_t>());
            return oSet(Data_Node::Date, std::bit_cast<u3_t>(SecondsOfDays(dDays)));
        }
        case CODE_LONG: return oSet(Data_Node::Long, m_oWindow.Get<u3_t>());
        case CODE_STRING:
            r.m_sText = m_oWindow.View(GetLength());
            r.m_sText = r.m_sText.substr(0, r.m_sText.find('\0'));
            return oSet(Data_Node::String, 0);
        case CODE_BINARY: r.m_sText = ReadBlock(); return oSet(Data_Node::Binary, 0);
        case CODE_LINK: {
            const std::size_t uName = GetLength();
            if (uName == 0) RaiseEmptyTargetName();
            (void)m_oWindow.View(uName);
            const std::size_t uPath = GetLength();
            if (uPath == 0) RaiseEmptyTargetPath();
            r.m_sText = m_oWindow.View(uPath);
            return oSet(Data_Node::Link, 0);
        }
        case CODE_QUAD:
            for (u2_t& u : r.m_auQuad) u = m_oWindow.Get<u2_t>();
            return oSet(Data_Node::Quad, 0);
        default: return;  // a code without a value
    }
}

Dgraph_Reader::Dgraph_Reader(File_Stream& oIn, const Limits& oLimits)
    : m_pImpl(Where("vok::Dgraph_Reader::Dgraph_Reader",
                    [&] { return std::make_unique<Impl>(oIn, oLimits); })) {}

Dgraph_Reader::~Dgraph_Reader() = default;

bool Dgraph_Reader::Next() {
    return Where("vok::Dgraph_Reader::Next", [&] {
        Impl& o = *m_pImpl;
        do {
            if (!o.CloseLevels()) {
                m_uMissingNodes = 0;
                for (const Impl::Level& oLevel : o.m_oLevel) m_uMissingNodes += oLevel.uPending;
                o.m_oWindow.GiveBack();
                o.m_uDepth = 0;
                return false;
            }
            m_uOffset = o.m_oWindow.Offset();
            o.ReadStep(*this);
            o.ReadValue(*this);
        } while (o.m_uDepth > o.m_uMostDepth);
        o.m_uMostDepth = ~u2_t{0};
        return true;
    });
}

void Dgraph_Reader::SkipSuccessors() noexcept {
    m_pImpl->m_uMostDepth = m_pImpl->m_uDepth;
}

u2_t Dgraph_Reader::GetDepth() const noexcept {
    return m_pImpl->m_uDepth;
}

std::string_view Dgraph_Reader::GetName() const noexcept {
    return m_pImpl->NameAt(m_pImpl->m_uDepth);
}

i2_t Dgraph_Reader::GetIndex() const noexcept {
    const Impl& o = *m_pImpl;
    return o.m_uDepth < o.m_oLevel.Size() ? static_cast<i2_t>(o.m_oLevel(o.m_uDepth).uRun - 1) : 0;
}

u3_t Dgraph_Reader::MissingBytes() const noexcept {
    return m_pImpl->m_oWindow.Missing() - m_pImpl->m_uMissingHeader;
}

const std::vector<Dgraph_Reader::Outer_Link>& Dgraph_Reader::GetOuterLinks() const noexcept {
    return m_pImpl->m_aoOuter;
}

Str Dgraph_Reader::GetPath() const {
    return Where("vok::Dgraph_Reader::GetPath", [&] {
        Arr<char> oPath;
        for (u2_t u = 1; u <= m_pImpl->m_uDepth; ++u) {
            oPath.Add('/');
            vok::detail::AppendStep(oPath, m_pImpl->NameAt(u), m_pImpl->m_oLevel(u).uRun - 1);
        }
        if (m_pImpl->m_uDepth == 0) oPath.Add('/');
        return Str(std::string_view(oPath.Beg(), oPath.Size()));
    });
}

// ---- subtrees -----------------------------------------------------------------

namespace {

// A node of the tree that is taken, and the path that it is to link to.
struct Pending_Link {
    u2_t uId;
    Str oPath;
};

// Makes a tree of records: its root of the one that a reader has come to, the rest of those below.
class Taker {
  public:
    Taker(Data& oTree, Dgraph_Reader& oReader) : m_oReader(oReader), m_oTree(oTree) {}

    void TakeRoot();
    // uBefore gives how many places the run of a record leaves free in front of it, oMore whether
    // there are records below the root still to come.
    template <class More, class Before>
    void TakeBelow(const More& oMore, const Before& oBefore) {
        Data_Builder oBuilder(m_oTree);
        const u2_t uTop = m_oReader.GetDepth();
        u2_t uOpen = 0;
        while (oMore() && m_oReader.Next()) {
            for (; uOpen > m_oReader.GetDepth() - uTop - 1; --uOpen) oBuilder.Close();
            // They are nodes until links are resolved, which may count them.
            for (u2_t u = oBefore(); u != 0; --u) {
                m_oFree.Add(oBuilder.AddEmpty(m_oReader.GetName()));
            }
            uOpen += Append(oBuilder);
        }
        oBuilder.Finish();
        for (const u2_t u : m_oFree) m_oTree.GetNodeFromID(u).Remove();
    }
    // Resolves the links below the node whose path in the document is sTop; the others are put into
    // aoOuter.
    void ResolveLinks(const Str& oTop, Work& oWork,
                      std::vector<Dgraph_Reader::Outer_Link>& aoOuter);
    [[nodiscard]] bool HasLinks() const noexcept { return !m_aoLink.empty(); }
    // At the end, the places that were free are gone.
    void DropFree() {
        if (m_oFree.Size() != 0) m_oTree.Shrink();
    }

  private:
    // Whether it is open now.
    bool Append(Data_Builder& oBuilder);

    Dgraph_Reader& m_oReader;
    Data& m_oTree;
    Arr<u2_t> m_oFree;  // ids of what stands for free places, ascending
    std::vector<Pending_Link> m_aoLink;
};

void Taker::TakeRoot() {
    m_oTree.SetRootName(m_oReader.GetName());
    const std::string_view sText = m_oReader.Text();
    switch (const Data_Node::Type eType = m_oReader.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer:
        case Data_Node::Char: m_oTree.SetValInt(m_oReader.Int(), eType); break;
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date: m_oTree.SetValDbl(m_oReader.Dbl(), eType); break;
        case Data_Node::Long: m_oTree.SetValLng(m_oReader.Lng()); break;
        case Data_Node::String: m_oTree.SetValStr(sText); break;
        case Data_Node::Binary:
            m_oTree.SetValBin(sText.data(), static_cast<u2_t>(sText.size()));
            break;
        case Data_Node::Quad:
            m_oTree.SetValQuad(m_oReader.QuadWord(0), m_oReader.QuadWord(1), m_oReader.QuadWord(2),
                               m_oReader.QuadWord(3));
            break;
        case Data_Node::Link: m_aoLink.push_back({0, Str(sText)}); break;
        default: break;
    }
    for (const Dgraph_Reader::Attribute& o : m_oReader.GetAttributes()) {
        m_oTree.SetAttVal(o.sName, o.sValue);
    }
}

bool Taker::Append(Data_Builder& oBuilder) {
    const std::string_view sName = m_oReader.GetName();
    const std::string_view sText = m_oReader.Text();
    const Data_Node::Type eType = m_oReader.GetType();
    switch (eType) {
        case Data_Node::Tree: oBuilder.Open(sName); break;
        case Data_Node::Boolean: oBuilder.AddBool(sName, m_oReader.Int() != 0); break;
        case Data_Node::Integer: oBuilder.AddInt(sName, m_oReader.Int()); break;
        case Data_Node::Char: oBuilder.AddChar(sName, m_oReader.Int()); break;
        case Data_Node::Float: oBuilder.AddFlt(sName, static_cast<float>(m_oReader.Dbl())); break;
        case Data_Node::Double: oBuilder.AddDbl(sName, m_oReader.Dbl()); break;
        case Data_Node::Date: oBuilder.AddDate(sName, m_oReader.Dbl()); break;
        case Data_Node::Long: oBuilder.AddLng(sName, m_oReader.Lng()); break;
        case Data_Node::String: oBuilder.AddStr(sName, sText); break;
        case Data_Node::Binary:
            oBuilder.AddBin(sName, sText.data(), static_cast<u2_t>(sText.size()));
            break;
        case Data_Node::Quad:
            oBuilder.AddQuad(sName, m_oReader.QuadWord(0), m_oReader.QuadWord(1),
                             m_oReader.QuadWord(2), m_oReader.QuadWord(3));
            break;
        case Data_Node::Link: m_aoLink.push_back({oBuilder.AddEmpty(sName), Str(sText)}); break;
        default: oBuilder.AddEmpty(sName); break;
    }
    for (const Dgraph_Reader::Attribute& o : m_oReader.GetAttributes()) {
        oBuilder.SetAttVal(o.sName, o.sValue);
    }
    return eType == Data_Node::Tree;
}

void Taker::ResolveLinks(const Str& oTop, Work& oWork,
                         std::vector<Dgraph_Reader::Outer_Link>& aoOuter) {
    m_oTree.SetAccessMode();
    Arr<u2_t> oFound;
    const std::string_view sTop = oTop.View().substr(!oTop.IsEmpty());  // no slash in front
    for (const Pending_Link& o : m_aoLink) {
        std::string_view sPath = o.oPath.View();
        const bool bBelow =
            sPath.starts_with(sTop) &&
            (sTop.empty() || sPath.size() == sTop.size() || sPath[sTop.size()] == '/');
        if (!bBelow) {
            // Places that were free are gone in the end.
            const auto pBehind = std::lower_bound(m_oFree.begin(), m_oFree.end(), o.uId);
            aoOuter.push_back({o.uId - static_cast<u2_t>(pBehind - m_oFree.begin()), o.oPath});
            continue;
        }
        sPath.remove_prefix(sTop.size());
        vok::detail::SelectNodes(*Access::BaseOf(m_oTree), 0, sPath.empty() ? "/" : sPath.data(),
                                 oWork, oFound);
        if (oFound.Size() == 0) RaiseTargetMissing();
        if (oFound.Size() > 1) RaiseTargetNotUnique();
        m_oTree.GetNodeFromID(o.uId).SetValLink(m_oTree.GetNodeFromID(oFound(0)));
    }
}

}  // namespace

void Dgraph_Reader::Take(Data& oTree) {
    return Where("vok::Dgraph_Reader::Take", [&] {
        Impl& o = *m_pImpl;
        o.m_aoOuter.clear();
        oTree.Reset();
        Dgraph_SetVersion(oTree, 1, o.m_oVersion.iMinor, o.m_oVersion.iPatch);
        Taker oTaker(oTree, *this);
        const std::size_t uTop = o.m_uDepth;
        oTaker.TakeRoot();
        if (m_eType == Data_Node::Tree) {
            oTaker.TakeBelow([&] { return o.CloseLevels(uTop + 1); },
                             [&] { return o.m_oLevel(o.m_uDepth).uBefore; });
        }
        o.m_uDepth = static_cast<u2_t>(uTop);
        if (oTaker.HasLinks()) {
            o.m_oWork.SetInput(o.m_oWindow.Offset());
            oTaker.ResolveLinks(uTop == 0 ? Str() : GetPath(), o.m_oWork, o.m_aoOuter);
        }
        oTaker.DropFree();
    });
}

// ---- Dgraph_Records -----------------------------------------------------------

// The steps of a path without escapes, and how many nodes of each there were below the parents that
// are open.
class Dgraph_Records::Path {
  public:
    explicit Path(const Str& oPath) {
        Data_Xpath oParsed;
        oParsed.Parse(oPath.CStr());
        bool bLooksDown = !oParsed.IsDescendantFromRoot();
        for (std::size_t u = 0; u < oParsed.Size(); ++u) {
            const Data_XpathStep& o = oParsed(u);
            bLooksDown = bLooksDown && o.m_eKind == Data_XpathStep::Named && !o.m_bDescendant &&
                         !(o.m_bAnyName && o.m_iIndex >= 0);
            Step& oStep = m_aoStep.emplace_back(Step{{}, o.m_bAnyName, o.m_iIndex, {}, 0});
            if (!o.m_bAnyName) oStep.oName = Decoded(o.m_sName);
            for (std::size_t v = 0; v < o.m_oAttName.Size(); ++v) {
                oStep.aoAttribute.emplace_back(Decoded(o.m_oAttName(v)), Decoded(o.AttVal(v)));
            }
        }
        if (!bLooksDown) RaisePathNeedsTree(oPath.CStr());
    }
    [[nodiscard]] std::size_t Size() const noexcept { return m_aoStep.size(); }
    // Whether a record, whose ancestors are those of the steps before, is that of a step.
    [[nodiscard]] bool Takes(const Dgraph_Reader& r) {
        const std::size_t uDepth = r.GetDepth();
        Step& o = m_aoStep[uDepth - 1];
        if (uDepth < m_aoStep.size()) m_aoStep[uDepth].uSeen = 0;
        if (!o.bAnyName && o.oName.View() != r.GetName()) return false;
        const auto iPosition = static_cast<i2_t>(o.uSeen++);
        if (o.iIndex >= 0 && o.iIndex != iPosition) return false;
        for (const auto& [oName, oValue] : o.aoAttribute) {
            // Of two of one name the last one counts.
            std::string_view sHas;
            bool bHas = false;
            for (const Dgraph_Reader::Attribute& a : r.GetAttributes()) {
                if (a.sName != oName.View()) continue;
                sHas = a.sValue;
                bHas = true;
            }
            if (!bHas || sHas != oValue.View()) return false;
        }
        return true;
    }

  private:
    struct Step {
        Str oName;
        bool bAnyName;
        i2_t iIndex;  // -1 for any
        std::vector<std::pair<Str, Str>> aoAttribute;
        u2_t uSeen;
    };

    [[nodiscard]] static Str Decoded(const char* sText) {
        Arr<char> oText;
        oText.Add(sText, std::strlen(sText) + 1);
        Data::DecodeXpath(oText.Beg());
        return Str(oText.Beg());
    }

    std::vector<Step> m_aoStep;
};

Dgraph_Records::Dgraph_Records(File_Stream& oIn, std::string_view sPath, const Limits& oLimits)
    : m_oReader(oIn, oLimits), m_pPath(std::make_unique<Path>(Str(sPath))) {}

Dgraph_Records::~Dgraph_Records() = default;

bool Dgraph_Records::Next() {
    while (m_oReader.Next()) {
        const std::size_t uDepth = m_oReader.GetDepth();
        if (uDepth != 0 && !m_pPath->Takes(m_oReader)) {
            m_oReader.SkipSuccessors();
        } else if (uDepth == m_pPath->Size()) {
            m_oReader.Take(m_oTree);
            return true;
        }
    }
    return false;
}

}  // namespace vok

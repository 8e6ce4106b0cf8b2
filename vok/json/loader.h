// SPDX-License-Identifier: MIT
// Reading JSON: makes a tree of what RapidJSON's reader tells. Internal.
//
// Its functions stand in two files: levels and members (loader.cpp), and the values that are
// written with their types (typed.cpp).
#ifndef VOK_JSON_LOADER_H
#define VOK_JSON_LOADER_H

#include <algorithm>
#include <string_view>

#include "vok/base/work.h"
#include "vok/data/memory_watch.h"
#include "vok/data/store.h"
#include "vok/file/xml_source.h"
#include "vok/json/form.h"
#include "vok/json/scalar.h"

namespace vok::json {

// The text of the document, byte by byte, as the reader asks for it.
class Input {
  public:
    using Ch = char;

    explicit Input(xml::Source& oSource) noexcept
        : m_oSource(oSource), m_p(oSource.Begin()), m_pEnd(oSource.End()) {}
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // NUL at the end; one in the document is as much of an error.
    [[nodiscard]] char Peek() {
        if (m_p == m_pEnd) [[unlikely]] {
            if (!Fetch()) return 0;
        }
        return *m_p;
    }
    char Take() {
        const char c = Peek();
        m_p += m_p != m_pEnd;
        return c;
    }
    [[nodiscard]] std::size_t Tell() const noexcept {
        return m_uBefore + static_cast<std::size_t>(m_p - m_oSource.Begin());
    }
    void SkipBlanks() {
        for (char c = Peek(); c == ' ' || c == '\t' || c == '\r' || c == '\n'; c = Peek()) ++m_p;
    }
    // Goes back to a place that an error names, as far as it is still at hand.
    void MoveTo(std::size_t uTell) noexcept {
        const char* const pBegin = m_oSource.Begin();
        const std::size_t uAt = uTell > m_uBefore ? uTell - m_uBefore : 0;
        const auto uSize = static_cast<std::size_t>(m_pEnd - pBegin);
        m_p = pBegin + (uAt < uSize ? uAt : uSize);
    }
    [[nodiscard]] const char* Position() const noexcept { return m_p; }

    // What the reader would write in place.
    [[nodiscard]] char* PutBegin() noexcept { return nullptr; }
    void Put(char) noexcept {}
    void Flush() noexcept {}
    std::size_t PutEnd(char*) noexcept { return 0; }

  private:
    // Errors name places a few bytes back.
    static constexpr std::ptrdiff_t KEPT = 64;
    [[nodiscard]] bool Fetch();

    xml::Source& m_oSource;
    const char* m_p;
    const char* m_pEnd;
    std::size_t m_uBefore = 0;  // bytes in front of those at hand, as UTF-8
};

class Loader {
  public:
    using Node = Data_Node;

    Loader(Data_Base& oBase, xml::Source& oSource, const Limits& oLimits)
        : m_oBase(oBase),
          m_oSource(oSource),
          m_oIn(oSource),
          m_oLimits(oLimits),
          m_oWork(oLimits),
          m_uMostNodes(std::min(oLimits.m_uNodes, detail::NODES_BETWEEN_CHECKS)) {}
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    // Reads the document, and the blanks behind it.
    void Run();
    // Sets the links, once all nodes are there.
    void ResolveLinks();

    // Where reading stands: a byte at hand, and the node.
    [[nodiscard]] const char* Position() const noexcept { return m_oIn.Position(); }
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }
    [[nodiscard]] u3_t Rounded() const noexcept { return m_uRounded; }
    [[nodiscard]] u3_t Work() const noexcept { return m_oWork.Done(); }
    // Of a link without a target: bytes from where reading began to behind it.
    [[nodiscard]] u3_t LinkOffset() const noexcept { return m_uLinkOffset; }

    // ---- what the reader calls ----------------------------------------------

    bool Null() { return OnScalar({Scalar::Null, {}}); }
    bool Bool(bool b) { return OnScalar({b ? Scalar::True : Scalar::False, {}}); }
    bool RawNumber(const char* s, u2_t uSize, bool) {
        return OnScalar({Scalar::Number, {s, uSize}});
    }
    bool String(const char* s, u2_t uSize, bool) {
        const bool bNul = CheckText({s, uSize});
        return OnScalar({Scalar::Text, {s, uSize}, bNul});
    }
    bool Key(const char* s, u2_t uSize, bool);
    bool StartObject();
    bool EndObject(u2_t);
    bool StartArray();
    bool EndArray(u2_t);
    // Numbers come as they are.
    bool Int(int) noexcept { return false; }
    bool Uint(unsigned) noexcept { return false; }
    bool Int64(std::int64_t) noexcept { return false; }
    bool Uint64(std::uint64_t) noexcept { return false; }
    bool Double(double) noexcept { return false; }

  private:
    // What is open.
    enum class Kind : u0_t {
        Object,      // a node, whose members come
        List,        // a node, whose unnamed successors come
        Run,         // nodes of one name below an object
        Attributes,  // those of the object around it, as long as they look like attributes
    };
    struct Level {
        u2_t uNode;       // Run, Attributes: that of the object around it
        u2_t uKey = 0;    // of the next member, or of the run
        u2_t uCount = 0;  // nodes of the run
        u2_t uLast = 0;   // the last one of them
        u2_t uAttributes = 0;
        Kind eKind;
        bool bMembers = false;          // has successors: no value can come
        bool bTold = false;             // something else was said of it
        Mark::Kind eMark = Mark::None;  // of the last node
    };
    // What an object says of its own value, as long as it has no successors.
    struct Pending {
        Node::Type eType = Node::Tree;  // Tree: not told
        bool bValue = false;
        Scalar::Kind eKind = Scalar::Null;
        bool bNul = false;
        [[nodiscard]] bool IsThere() const noexcept { return bValue || eType != Node::Tree; }
    };
    struct Ends {
        std::size_t uName;
        std::size_t uValue;
    };
    struct Link {
        u2_t uId;
        u3_t uOffset;
        std::size_t uEnd;  // of its path among all of them
    };

    // Returns whether there is a NUL in it.
    bool CheckText(std::string_view sText) const;
    void CheckLimits();
    // Where a small input can become a large tree, looks at its memory, and says at how many nodes
    // that is worth doing again.
    void CheckMemory();

    // ---- nodes ------------------------------------------------------------

    u2_t Append(Node::Type eType, u3_t uValue);
    u2_t AppendText(std::string_view sText);
    void Open(u2_t uId, Kind eKind);
    // The object that is open gets its next member.
    void BeginMember(Level& o);
    void TakeKey(Level& o);
    // Of the node that was appended last.
    void SetMark(u2_t uId, const Mark& oMark);

    // ---- members that are no successors -------------------------------------

    bool OnScalar(const Scalar& o);
    [[nodiscard]] bool TakeSpecial(Level& oLevel, const Scalar& o);
    void AddAttribute(std::string_view sValue);
    void SetAttributes(u2_t uId);
    // What looked like attributes, or like a value, are successors.
    void Demote();
    void DemotePending();

    // ---- values -----------------------------------------------------------

    void AppendScalar(const Scalar& o);
    [[nodiscard]] u3_t AddBlock(std::string_view sBlock);
    void SetValue(u2_t uId);
    void SetTyped(u2_t uId, Node::Type eType, const Scalar& o);
    u3_t PlainBits(const Scalar& o, Node::Type& eType);
    [[nodiscard]] bool BinaryBits(std::string_view sText, u3_t& uBits);
    [[nodiscard]] bool QuadBits(std::string_view sText, u3_t& uBits);
    void AddLink(u2_t uId, const Scalar& o);
    [[nodiscard]] u2_t FindTarget(char* pPath, char* pEnd);

    Data_Base& m_oBase;
    xml::Source& m_oSource;
    Input m_oIn;
    const Limits& m_oLimits;
    vok::Work m_oWork;
    u3_t m_uMostNodes;       // nodes there may be before CheckMemory is asked
    u3_t m_uAttributes = 0;  // since it was asked
    u2_t m_uNode = 0;
    u3_t m_uDepth = 0;  // of nodes that are open
    u3_t m_uRounded = 0;
    u3_t m_uLinkOffset = 0;
    Arr_Near<Level, 16> m_oLevel;
    Member m_eMember = Member::Successor;  // what the last name stands for
    Arr<char> m_oName;                     // of the next attribute
    Pending m_oPending;
    Arr<char> m_oPendingText;
    Arr<Ends> m_oAttribute;  // of the level that is open
    Arr<char> m_oAttributeText;
    Arr<char> m_oBlock;
    Arr<Link> m_oLink;
    Arr<char> m_oLinkText;
};

}  // namespace vok::json

#endif  // VOK_JSON_LOADER_H

// SPDX-License-Identifier: MIT
// Reading XML: the loader behind Data::LoadFromXML. Internal.
//
// Its functions stand in three files: elements (loader.cpp), the values that texts
// stand for (value.cpp), and the loop that most elements go through (fast_loader.cpp).
#ifndef VOK_XML_LOADER_H
#define VOK_XML_LOADER_H

#include <string_view>

#include "vok/data/memory_watch.h"
#include "vok/data/store.h"
#include "vok/xml/tokens.h"

namespace vok::detail {

// Makes nodes of elements as they come.
class XmlLoader final : public xml::Tokens {
  public:
    using Node = Data_Node;

    // For a document that goes below a node, or becomes it.
    XmlLoader(Data_Base& oBase, u2_t uNode, xml::Source& oSource, u2_t uFlags,
              const Limits& oLimits);
    // For parts of one, which RunBelow reads.
    XmlLoader(xml::Source& oSource, u2_t uFlags, const Limits& oLimits)
        : Tokens(oSource, uFlags, oLimits) {}

    // Reads the document and returns the number of elements.
    u2_t Run();

    // Sets the links, once all elements are there.
    void ResolveLinks();

    // From where oAt stands reads what is in the innermost open element as the successors of a
    // tree's root, which has its name and no others, and its end. uNodes is how many there have
    // been in the document so far. Links are for VisitNumbers.
    void RunBelow(Data_Base& oBase, Tokens& oAt, u3_t uNodes);
    // Has oTarget called with each number of a node, and the node, oLink with each that leads to
    // one.
    template <class Target, class Link>
    void VisitNumbers(Target oTarget, Link oLink) const {
        for (const Numbered& o : m_oTarget) oTarget(o.uNumber, o.uId);
        for (const Numbered& o : m_oLink) oLink(o.uNumber, o.uId);
    }

    // Says what of the document the tree does not hold; its order must be up to date.
    void AddTo(Load_Report& oReport);

    // Where reading stands: the innermost open element.
    [[nodiscard]] u2_t CurrentNode() const noexcept { return m_uNode; }

  private:
    struct Numbered {
        u3_t uNumber;
        u2_t uId;
    };

    // ---- tokens -----------------------------------------------------------

    void OnText(std::string_view sRun) override { AddText(TypeOf(m_uNode), sRun); }
    void OnCdata(std::string_view sRun) override { AddCdata(TypeOf(m_uNode), sRun); }
    bool OnStart() override;
    void OnEnd(std::string_view sName) override;
    [[nodiscard]] bool IsBinary() const noexcept override {
        return TypeOf(m_uNode) == Node::Binary;
    }
    void BeforeFetch(u3_t uBytes) override {
        if (m_oWork.IsMetered()) CheckMemory(uBytes);
    }

    // ---- elements ---------------------------------------------------------

    [[nodiscard]] Node::Type TypeOf(u2_t uId) const noexcept {
        return m_pBase->m_oNode(uId).GetType();
    }
    [[nodiscard]] bool IsNameOf(u2_t uId, std::string_view sName) {
        return m_pBase->m_oName.IsText(m_pBase->m_oNode(uId).uKey, Decoded(sName, m_oNameRoom));
    }

    u2_t InternName(std::string_view sName) {
        Data_Names& oNames = m_pBase->m_oName;
        const u2_t uKey = oNames.Intern(Decoded(sName, m_oNameRoom));
        if (!xml::HasEscapes(sName)) oNames.SetXmlVerbatim(uKey);
        return uKey;
    }

    void OpenElement();
    void CheckLimits();
    // Raises the error of the limit on nodes. Where a small input can become a large tree, looks
    // at its memory, and at uMore bytes that will be asked for, and says at how many nodes that is
    // worth doing again.
    void CheckMemory(u3_t uMore = 0);
    [[nodiscard]] u3_t CountReordered();
    void CloseElement();
    void SetAttributes();

    void AddNumbered(Arr<Numbered>& oArr, std::string_view sValue) const;

    // Gives the node the type that a text stands for and no value yet; false for another text.
    bool SetType(std::string_view sType);
    void SetAttribute(const xml::Tag::Attribute& o);

    // ---- texts ------------------------------------------------------------

    // Blanks in front of an element mean nothing; any other text makes it a fault.
    void EndTextBeforeElement();

    // Gives the current node the value that its text stands for.
    void SetText();
    void SetValue(u2_t uId, std::string_view sText);
    void SetQuad(u2_t uId, std::string_view sText);
    void SetBlock(u2_t uId, std::string_view sText);
    // Adds the bytes of a text in base64 and gives the value of a block; false for any other text.
    bool AddBlock(std::string_view sText, u3_t& uValue);

    // ---- the fast way -----------------------------------------------------

    // Reads elements as long as they are like most elements are: an expected name, no attributes
    // but the type, a plain text or number, its own end tag behind it. Stops in front of the
    // first other token, which is for the ways above. This loop is what loading XML costs.
    void ReadFastElements();
    // Its steps. They look at no more than ROOM bytes without asking for the end.
    enum class Content : u0_t { Other, Ends, Opens };
    [[nodiscard]] const char* FastClose(const char* p, const char* pBlanks) noexcept;
    [[nodiscard]] u2_t FastName(const char* p);
    [[nodiscard]] u2_t ScanName(const char* p);
    [[nodiscard]] Content FastContent(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] Content FastCdata(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] Content FastTyped(const char*& p, const Hash_Text& oName, Node& oNode);
    [[nodiscard]] const char* FastBlock(const char* p, const Hash_Text& oName, u3_t& uBlock);
    [[nodiscard]] u2_t PlaceText(std::string_view sText);
    [[nodiscard]] bool AddFastText(Node& oNode, std::string_view sText);

    Data_Base* m_pBase = nullptr;
    u2_t m_uNode = 0;        // the innermost open element, or where the document goes
    u3_t m_uFirst = 0;       // nodes that were there before: they do not count
    u3_t m_uMost = 0;        // nodes there may be
    u3_t m_uMostNodes = 0;   // nodes there may be before CheckMemory is asked
    u3_t m_uAttributes = 0;  // since it was asked
    u3_t m_uAbove = 0;       // elements that are open around what is read
    Arr<char> m_oNameRoom;
    Arr<char> m_oValueRoom;
    Arr<char> m_oBlock;
    Arr<Numbered> m_oTarget;
    Arr<Numbered> m_oLink;
};

}  // namespace vok::detail

#endif  // VOK_XML_LOADER_H

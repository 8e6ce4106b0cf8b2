// SPDX-License-Identifier: MIT
// XML documents, record by record. Internal.
#ifndef VOK_XML_RECORD_READER_H
#define VOK_XML_RECORD_READER_H

#include <optional>
#include <string_view>

#include "vok/data/record_source.h"
#include "vok/xml/loader.h"
#include "vok/xml/tokens.h"

namespace vok::xml {

// What the loader makes a node of is a record here, and what it refuses is refused at the same
// place and with the same error. What an element is shows with what comes behind its start tag: it
// is held until then.
class RecordReader final : public detail::Record_Source, private Tokens {
  public:
    // oSource and oLimits must outlive it.
    RecordReader(Source& oSource, const Limits& oLimits);

    const Data_Record* Next() override;
    void GoBack(const Data_Record* pGiven) noexcept override;
    void BuildBelow(Data& oTree, Data_Base& oBase, Built& oBuilt) override;
    void AddTo(Load_Report& oReport) const override;
    [[nodiscard]] u3_t Offset() const override { return m_oSource.OffsetOf(m_p); }

  private:
    void OnText(std::string_view sRun) override { AddText(OpenType(), sRun); }
    void OnCdata(std::string_view sRun) override { AddCdata(OpenType(), sRun); }
    bool OnStart() override;
    void OnEnd(std::string_view sName) override;
    [[nodiscard]] bool IsBinary() const noexcept override {
        return OpenType() == Data_Node::Binary;
    }
    void BeforeFetch(u3_t uBytes) override;

    // The type of the innermost open element: one that is not held any more has others in it.
    [[nodiscard]] Data_Node::Type OpenType() const noexcept {
        return m_bHeld ? m_eType : Data_Node::Tree;
    }
    [[nodiscard]] const Data_Record* ReadRecord();
    // Reads elements, and the ends of those that have others in them, as long as they are like most
    // are - a name as it stands, no attributes but the type, a plain text or number, all of it at
    // hand - and stand in order: what a loop keeps in registers is not put aside between calls.
    // They are at hand as a batch, the first of which is returned; null where there is none, with
    // no more than ends read.
    [[nodiscard]] const Data_Record* ReadAhead();
    // The same for one of a run of trees, as they come to who takes each of them: the source has
    // come to it.
    [[nodiscard]] bool ReadNextTree(const char* p);
    [[nodiscard]] std::size_t ReadSeveral(std::size_t uMost);
    [[nodiscard]] u2_t FindName(const char* p, bool bNew);
    [[nodiscard]] u2_t ScanName(const char* p, bool bNew);
    [[nodiscard]] const char* TakeContent(detail::Record_Batch::Entry& o, const char* p,
                                          const Hash_Text& oName) const;
    [[nodiscard]] const char* TakeEnd(const char* p) const noexcept;
    void CheckLimits() const;
    // Holds the element of m_oTag.
    void Hold();
    void TakeAttributes();
    bool TakeType(std::string_view sType);
    void NoteAttribute(std::string_view sName, std::string_view sValue);
    void ShowAttributes();
    // The element that is held has others in it, or ends: then it is the next record.
    void EndAsTree();
    void EndAsLeaf();
    void TakeValue();
    void CloseElement() noexcept;

    u3_t m_uNodes = 1;
    u3_t m_uReordered = 0;  // elements, in front of a batch
    bool m_bHeld = false;   // the innermost element is held
    bool m_bReady = false;  // the record is what Next is to come to
    bool m_bEnd = false;
    Arr<char> m_oNameRoom;
    Arr<char> m_oValueRoom;
    Arr<char> m_oValue;          // of the record
    Arr<char> m_oAttText;        // names and values of its attributes
    Arr<std::size_t> m_oAttEnd;  // where each of them ends
    // What builds the trees of records, once there are any.
    std::optional<detail::XmlLoader> m_oLoader;
};

}  // namespace vok::xml

#endif  // VOK_XML_RECORD_READER_H

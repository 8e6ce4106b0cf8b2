// SPDX-License-Identifier: MIT
// Trees of records. Internal.
#ifndef VOK_RECORDS_TAKE_H
#define VOK_RECORDS_TAKE_H

#include <vector>

#include "vok/base/work.h"
#include "vok/data/builder.h"
#include "vok/data/record_source.h"
#include "vok/data/store.h"
#include "vok/records/reader.h"

namespace vok::records {

// Trees of records, one after the other.
class Taker {
  public:
    explicit Taker(detail::Record_Source& oSource)
        : m_oSource(oSource), m_oTag(oSource.Version()) {}

    // Makes a tree without nodes, whatever its user tag, one of the record that the source has come
    // to and of all below it. Links are charged to oWork.
    void Take(Data& oTree, Work& oWork);
    // Those that lead out of the tree taken last.
    [[nodiscard]] const std::vector<Data_Reader::Outer_Link>& OuterLinks() const noexcept {
        return m_aoOuter;
    }
    // The path of a link that was an error; empty where none was.
    [[nodiscard]] const Str& Fault() const noexcept { return m_oFault; }

  private:
    // A node that is to lead to another.
    struct Pending_Link {
        u2_t uId;
        u3_t uNumber;  // of its target; NO_NUMBER where that is told by its path
        bool bEmpty;   // it is nothing else
        Str oTarget;
    };
    struct Numbered {
        u3_t uNumber;
        u2_t uId;
    };

    void TakeRoot(Data& oTree);
    void TakeBelow(Data& oTree);
    // The same by the source itself, where it can.
    [[nodiscard]] bool BuildBelow(Data& oTree);
    void NoteGaps(const Data_Base& b);
    void NoteFault(const Data& oTree, u2_t uId);
    void Append(Data_Builder& oBuilder, Data_Base& b);
    [[nodiscard]] Data_Name NameIn(Data_Base& b);
    [[nodiscard]] Data_Name FindName(Data_Base& b, u2_t uNth, const Hash_Text& oName);
    void Note(u2_t uId);
    void NoteLinks(u2_t uId, bool bLink);
    void ResolveLinks(Data& oTree, Work& oWork);
    [[nodiscard]] bool Resolve(Data& oTree, const Pending_Link& o, Work& oWork);
    [[nodiscard]] bool FindNumbered(const Pending_Link& o, u2_t& uTarget) const;
    [[nodiscard]] bool FindPath(const Data& oTree, const Pending_Link& o, Work& oWork,
                                u2_t& uTarget) const;

    detail::Record_Source& m_oSource;
    const Str m_oTag;
    std::size_t m_uTop = 0;  // level of the root
    Arr<u2_t> m_oFree;       // ids of removed nodes, ascending
    Arr<Numbered> m_oNumber;
    std::vector<Pending_Link> m_aoLink;
    std::vector<Data_Reader::Outer_Link> m_aoOuter;
    Str m_oFault;
    Arr<u2_t> m_oKeyOf;  // by key of the source: the one in the tree, when it was looked up last
};

}  // namespace vok::records

#endif  // VOK_RECORDS_TAKE_H

// SPDX-License-Identifier: MIT
// Trees of records. Internal.
#ifndef VOK_RECORDS_TAKE_H
#define VOK_RECORDS_TAKE_H

#include <vector>

#include "vok/base/work.h"
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
    using Built = detail::Record_Source::Built;

    void TakeName(Data_Base& b);
    void TakeRoot(Data& oTree);
    void TakeBelow(Data& oTree, Data_Base& b);
    void NoteGaps(const Data_Base& b);
    void NoteFault(const Data& oTree, u2_t uId);
    void ResolveLinks(Data& oTree, Work& oWork);
    [[nodiscard]] bool Resolve(Data& oTree, const Built::Link& o, Work& oWork);
    [[nodiscard]] bool FindNumbered(u3_t uNumber, u2_t& uTarget) const;
    [[nodiscard]] bool FindPath(const Data& oTree, const Str& oTarget, Work& oWork,
                                u2_t& uTarget) const;

    detail::Record_Source& m_oSource;
    const Str m_oTag;
    std::size_t m_uTop = 0;  // level of the root
    u2_t m_uName = 0;        // the key of the name of the root taken last
    Built m_oBuilt;
    Arr<u2_t> m_oFree;  // ids of removed nodes, ascending
    std::vector<Data_Reader::Outer_Link> m_aoOuter;
    Str m_oFault;
};

}  // namespace vok::records

#endif  // VOK_RECORDS_TAKE_H

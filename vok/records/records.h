// SPDX-License-Identifier: MIT
// The parts of a document that a path selects, in constant memory.
#ifndef VOK_RECORDS_RECORDS_H
#define VOK_RECORDS_RECORDS_H

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>

#include "vok/records/reader.h"

namespace vok {

// Subtrees of a document of any size, one after the other in its order, each as a tree of its own
// that the next one takes the place of:
//
//     for (const Data& oOrder : Records("orders.xml.gz", "/order[@state=\"open\"]")) Use(oOrder);
//
// The path goes from the root downward by names, "*", "//", positions and attributes. Other steps,
// and a position among all successors, ask for the whole tree: "path "%0" needs the whole tree" is
// raised at once. Other errors are those of Data_Xpath::Parse, and while going on those of
// Data_Reader. Memory is that of Data_Reader and of the largest subtree.
//
// What a document says of links is kept as by Data_Reader::Take; but in a subtree that lies within
// another selected one, those that lead out of it are empty, and not listed.
class Records {
  public:
    Records(File_Stream& oIn, std::string_view sPath, const Limits& oLimits = {});
    Records(const Str& oFile, std::string_view sPath, const Limits& oLimits = {});
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;
    ~Records();

    // The tree is the next one; false when there is none any more, and the document was read to its
    // end.
    bool Next();
    [[nodiscard]] const Data& GetData() const noexcept { return m_oTree; }
    // The same for who keeps it: the next one does not take its place. Costs a copy, linear in its
    // nodes, where the path selects parts of it as well.
    [[nodiscard]] Data Release();
    // Where in the document its root stands. Linear in the depth.
    [[nodiscard]] Str GetPath() const;
    [[nodiscard]] const Data_Reader& GetReader() const noexcept { return m_oReader; }

    class Iterator {
      public:
        using value_type = Data;
        using difference_type = std::ptrdiff_t;

        explicit Iterator(Records& oRecords) : m_pRecords(&oRecords) { ++*this; }
        [[nodiscard]] const Data& operator*() const noexcept { return m_pRecords->GetData(); }
        Iterator& operator++() {
            m_bMore = m_pRecords->Next();
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const Iterator& o, std::default_sentinel_t) noexcept {
            return !o.m_bMore;
        }

      private:
        Records* m_pRecords;
        bool m_bMore = false;
    };
    // Once: the document is gone through.
    [[nodiscard]] Iterator begin() { return Iterator(*this); }
    [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  private:
    class Inner;

    Data_Reader m_oReader;
    std::unique_ptr<Inner> m_pInner;
    Data m_oTree;
};

}  // namespace vok

#endif  // VOK_RECORDS_RECORDS_H

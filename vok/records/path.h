// SPDX-License-Identifier: MIT
// Paths that are looked for while a document goes by. Internal.
#ifndef VOK_RECORDS_PATH_H
#define VOK_RECORDS_PATH_H

#include <string_view>
#include <utility>
#include <vector>

#include "vok/base/arr.h"
#include "vok/base/str.h"
#include "vok/data/record.h"

namespace vok::records {

// Follows a path down a document whose nodes come in pre-order: of each open node it holds which
// steps may be taken next. Memory is that, for each open level, and the path.
class Path {
  public:
    // Raises "path "%0" needs the whole tree" for one that goes up, or asks for a position among
    // all successors; other errors are those of Data_Xpath::Parse.
    explicit Path(std::string_view sPath);
    // Whether that would be raised; raises the other errors.
    [[nodiscard]] static bool NeedsTree(std::string_view sPath);
    // Whether it may select nodes within others that it selects.
    [[nodiscard]] bool MayNest() const noexcept;

    struct Verdict {
        bool bSelected = false;  // the path leads to the node
        bool bBelow = false;     // it may lead to nodes below it
    };
    // What of a node, of which the one above and those in front of it were asked about before.
    [[nodiscard]] Verdict Look(const Data_Record& r);
    // Whether there can be nothing more: every step asks for one position, and all of them are
    // behind.
    [[nodiscard]] bool IsThrough(std::size_t uDepth) const noexcept;

  private:
    struct Step {
        Str oName;
        bool bAnyName = false;
        i2_t iIndex = -1;  // -1 for any
        bool bDescend = false;
        std::vector<std::pair<Str, Str>> aoAttribute;
    };
    // A step that may be taken below an open node, or at any depth there; and how many nodes of its
    // name have gone by.
    struct Way {
        u2_t uStep;
        bool bAnyDepth;
        u2_t uSeen;
    };

    [[nodiscard]] bool Takes(const Data_Record& r, const Step& oStep, u2_t& uSeen) const noexcept;
    [[nodiscard]] static bool HasAttributes(const Data_Record& r, const Step& oStep) noexcept;
    void Go(std::size_t uLevelEnd, u2_t uStep, bool bAnyDepth);

    std::vector<Step> m_aoStep;
    Arr<Way> m_oWay;            // of all open levels, one behind the other
    Arr<std::size_t> m_oLevel;  // where those of each begin
};

}  // namespace vok::records

#endif  // VOK_RECORDS_PATH_H

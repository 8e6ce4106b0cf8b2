// Where the reader or the writer of a document stands: the way down to its node. Internal.
#ifndef VOK_DATA_RECORD_TRAIL_H
#define VOK_DATA_RECORD_TRAIL_H

#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/msg.h"
#include "vok/base/str.h"
#include "vok/data/escape.h"

namespace vok::detail {

// The levels that are open, from that of the root down, and of each the last node that came: its
// name and its position in its run of equal names. Takes 16 bytes and that name for each level.
class Record_Trail {
  public:
    struct Level {
        u2_t uName = 0;  // of the last node, in m_oNames
        u2_t uRun = 0;   // nodes so far in the run of its name
        bool bBegun = false;
        u2_t uPending = 0;  // records to come, as far as the document tells
    };

    Record_Trail() { Open(0); }

    // A level below the last node of the last one, and the end of the last one.
    void Open(u2_t uPending) {
        (void)Msg::ToInt32(m_oNames.Size());
        m_oLevel.Add(Level{static_cast<u2_t>(m_oNames.Size()), 0, false, uPending});
    }
    void Close() noexcept {
        m_oNames.Truncate(m_oLevel.Last().uName);
        m_oLevel.Pop();
    }

    // Whether a node of that name would continue the run at the end of the last level.
    [[nodiscard]] bool Continues(std::string_view sName) const noexcept {
        return m_oLevel.Last().bBegun && NameAt(m_oLevel.Size() - 1) == sName;
    }
    // A node behind the others of the last level, as the one at uIndex of its run; bContinues is
    // what the question above said.
    void Note(std::string_view sName, u2_t uIndex, bool bContinues) {
        Level& o = m_oLevel.Last();
        o.uRun = uIndex + 1;
        if (bContinues) return;
        m_oNames.Truncate(o.uName);
        m_oNames.Add(sName.data(), sName.size());
        o.bBegun = true;
    }

    [[nodiscard]] std::size_t Size() const noexcept { return m_oLevel.Size(); }
    [[nodiscard]] Level& Last() noexcept { return m_oLevel.Last(); }
    [[nodiscard]] const Level& At(std::size_t uLevel) const noexcept { return m_oLevel(uLevel); }
    [[nodiscard]] const Arr<Level>& Levels() const noexcept { return m_oLevel; }
    // The name of the last node of an open level. Valid until the next change.
    [[nodiscard]] std::string_view NameAt(std::size_t uLevel) const noexcept {
        const u2_t uBegin = m_oLevel(uLevel).uName;
        const std::size_t uEnd =
            uLevel + 1 < m_oLevel.Size() ? m_oLevel(uLevel + 1).uName : m_oNames.Size();
        return {m_oNames.Beg() + uBegin, uEnd - uBegin};
    }
    // "/a[0]/b[2]" for the last node of a level. Linear in what it gives.
    [[nodiscard]] Str PathTo(std::size_t uLevel) const {
        Arr<char> oPath;
        for (std::size_t u = 1; u <= uLevel; ++u) {
            oPath.Add('/');
            AppendStep(oPath, NameAt(u), m_oLevel(u).uRun - 1);
        }
        if (uLevel == 0) oPath.Add('/');
        return Str(std::string_view(oPath.Beg(), oPath.Size()));
    }

  private:
    Arr<Level> m_oLevel;
    Arr<char> m_oNames;
};

}  // namespace vok::detail

#endif  // VOK_DATA_RECORD_TRAIL_H

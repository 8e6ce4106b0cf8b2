// SPDX-License-Identifier: MIT
// Where in the tree the records of a document stand. Internal.
#ifndef VOK_INSPECT_PLACE_H
#define VOK_INSPECT_PLACE_H

#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/types.h"

namespace vok::inspect {

// The path of the last record, grown and cut step by step, and the levels that are open. What has
// been skipped may have had records, so that counts do not say any more where a level ends: then
// names and indexes do, which ascend on each level.
class Place {
  public:
    Place() { m_oLevel.Add(Level{0, 0, 0, 1}); }

    [[nodiscard]] std::string_view Path() const noexcept {
        if (m_oPath.Size() == 0) return "/";
        return {m_oPath.Beg(), m_oPath.Size()};
    }
    [[nodiscard]] u2_t Depth() const noexcept { return static_cast<u2_t>(m_oLevel.Size() - 1); }
    [[nodiscard]] std::size_t Levels() const noexcept { return m_oLevel.Size(); }

    // Closes levels without records to come; false when that closes all of them.
    bool CloseLevels() noexcept;
    // Records that are announced and have not come.
    [[nodiscard]] u3_t Pending() const noexcept;
    // Goes to the next record of the last level, or of another one where records were lost. False
    // where its index was there before.
    bool Next(std::string_view sName, i2_t iIndex);
    // To one whose name is not known.
    void NextUnnamed();
    // A level below the last record.
    void Open(u2_t uPending);
    void LoseRecords() noexcept { m_bLost = true; }
    // Whether counts tell what is announced: nothing was lost.
    [[nodiscard]] bool IsCounted() const noexcept { return !m_bLost; }
    [[nodiscard]] bool HasRoot() const noexcept { return m_oLevel.Size() != 1; }
    // For records behind the end of the document, or without a root: they are below the root.
    void Reopen();

  private:
    struct Level {
        u3_t uPath;  // bytes of the path in front of its last record
        u2_t uName;  // bytes of the name of that in the path; 0 where none has come
        u2_t uRun;   // records so far in the run of its name
        u2_t uPending;
    };

    [[nodiscard]] std::string_view NameAt(std::size_t uLevel) const noexcept {
        return {m_oPath.Beg() + m_oLevel(uLevel).uPath + 1, m_oLevel(uLevel).uName};
    }
    [[nodiscard]] std::size_t LevelFor(std::string_view sName, u2_t uIndex) const noexcept;
    void Enter(u2_t uIndex);

    Arr<char> m_oPath;
    Arr<char> m_oName;  // of the record that is gone to, as paths have it
    Arr<Level> m_oLevel;
    bool m_bLost = false;
};

}  // namespace vok::inspect

#endif  // VOK_INSPECT_PLACE_H

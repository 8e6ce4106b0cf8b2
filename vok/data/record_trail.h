// SPDX-License-Identifier: MIT
// Where the reader or the writer of a document stands: the way down to its node. Internal.
#ifndef VOK_DATA_RECORD_TRAIL_H
#define VOK_DATA_RECORD_TRAIL_H

#include <algorithm>
#include <string_view>

#include "vok/base/arr.h"
#include "vok/base/msg.h"
#include "vok/base/str.h"
#include "vok/data/names.h"

namespace vok::detail {

// The levels that are open, from that of the root down, and of each the last node that came: its
// name and its position in its run of equal names. Takes 16 bytes for each level, and the names
// that came last: at most MOST_NAMES of them, or as many as levels are open.
class Record_Trail {
  public:
    struct Level {
        u2_t uKey = Hash::NONE;   // of the name of the last node
        u2_t uRun = 0;            // nodes so far in the run of its name
        u2_t uMost = Hash::NONE;  // of the highest name so far
        u2_t uPending = 0;        // records to come, as far as the document tells
    };

    Record_Trail() { m_oLevel.Add(Level{}); }

    // A level below the last node of the last one, and the end of the last one.
    void Open(u2_t uPending) {
        (void)Msg::ToInt32(m_oLevel.Size());
        m_oLevel.Emplace(Hash::NONE, 0u, Hash::NONE, uPending);
    }
    void Close() noexcept { m_oLevel.Pop(); }
    // The same as Open where that needs no memory, see HasRoom; and with what there is to know of
    // the last level.
    void OpenBelow(u2_t uPending) noexcept {
        *m_oLevel.AddSpacePrivate() = {Hash::NONE, 0, Hash::NONE, uPending};
    }
    void OpenBelow(const Level& oLast, u2_t uPending) noexcept {
        Level& o = m_oLevel.Last();
        o.uKey = oLast.uKey;
        o.uRun = oLast.uRun;
        o.uMost = oLast.uMost;
        o.uPending = oLast.uPending;
        OpenBelow(uPending);
    }
    // The levels that were closed last are open after all, as they were; none was opened since.
    void Reopen(std::size_t uLevels) noexcept { m_oLevel.SetSize(m_oLevel.Size() + uLevels); }
    // All levels from uFirst on, of which there were as many or more before, are these.
    void Restore(std::size_t uFirst, const Level* pLevels, std::size_t uSize) noexcept {
        m_oLevel.SetSize(uFirst + uSize);
        std::copy(pLevels, pLevels + uSize, m_oLevel.Beg() + uFirst);
    }
    // Whether one more level needs no memory.
    [[nodiscard]] bool HasRoom() const noexcept { return m_oLevel.Size() != m_oLevel.Capacity(); }

    // The key of a name, good until the next call with another one: the table may start again then,
    // and the keys of the levels are others.
    u2_t Intern(std::string_view sName) {
        KeepBounded();
        return m_oNames.Intern(sName);
    }
    u2_t InternAs(std::string_view sName, Hash_Guess::As eAs) {
        KeepBounded();
        return m_oNames.InternAs(sName, eAs);
    }
    // Whether the table starts again with the next name that is interned.
    [[nodiscard]] bool IsFull() const noexcept {
        return m_oNames.Size() > std::max(MOST_NAMES, 4 * m_oLevel.Size());
    }
    [[nodiscard]] Data_Names& Names() noexcept { return m_oNames; }
    // How often the table has started again.
    [[nodiscard]] u2_t Starts() const noexcept { return m_uStarts; }
    [[nodiscard]] const Hash_Text& NameText(u2_t uKey) const noexcept { return m_oNames(uKey); }
    // Whether a node of that name behind the others of the last level would stand in front of one
    // of them in a tree. To be asked of each once.
    [[nodiscard]] bool IsBehindHigher(u2_t uKey) noexcept {
        return IsBehindHigher(m_oNames, m_oLevel.Last(), uKey);
    }
    [[nodiscard]] static bool IsBehindHigher(const Hash& oNames, Level& o, u2_t uKey) noexcept {
        if (uKey == o.uMost) return false;
        if (o.uMost != Hash::NONE && oNames.IsLess(uKey, o.uMost)) return true;
        o.uMost = uKey;
        return false;
    }
    // A node behind the others of the last level, as the one at uIndex of its run.
    void Note(u2_t uKey, u2_t uIndex) noexcept { NoteAt(m_oLevel.Size() - 1, uKey, uIndex); }
    void NoteAt(std::size_t uLevel, u2_t uKey, u2_t uIndex) noexcept {
        m_oLevel(uLevel).uKey = uKey;
        m_oLevel(uLevel).uRun = uIndex + 1;
    }

    [[nodiscard]] std::size_t Size() const noexcept { return m_oLevel.Size(); }
    [[nodiscard]] Level& Last() noexcept { return m_oLevel.Last(); }
    [[nodiscard]] const Level& Last() const noexcept { return m_oLevel.Last(); }
    [[nodiscard]] const Level& At(std::size_t uLevel) const noexcept { return m_oLevel(uLevel); }
    [[nodiscard]] const Arr<Level>& Levels() const noexcept { return m_oLevel; }
    // The name of the last node of a level that has one. Valid as long as its key.
    [[nodiscard]] std::string_view NameAt(std::size_t uLevel) const noexcept {
        return m_oNames(m_oLevel(uLevel).uKey).View();
    }
    // "/a[0]/b[2]" for the last node of a level. Linear in what it gives.
    [[nodiscard]] Str PathTo(std::size_t uLevel) const {
        Path_Text oPath;
        for (std::size_t u = 1; u <= uLevel; ++u) AddStep(oPath, m_oLevel(u));
        return Whole(oPath);
    }
    // The same step by step, by what a level is or was, or by a name and an index; and the whole.
    void AddStep(Arr<char>& oPath, const Level& o) const {
        AddStep(oPath, m_oNames(o.uKey).View(), o.uRun - 1);
    }
    static void AddStep(Arr<char>& oPath, std::string_view sName, u2_t uIndex) {
        oPath.Add('/');
        AppendStep(oPath, sName, uIndex);
    }
    [[nodiscard]] static Str Whole(const Arr<char>& oPath) {
        return Str(oPath.Size() != 0 ? std::string_view(oPath.Beg(), oPath.Size()) : "/");
    }

  private:
    static constexpr std::size_t MOST_NAMES = 65536;

    void KeepBounded() {
        if (IsFull()) [[unlikely]]
            StartAgain();
    }
    // Only the names of open levels are kept.
    [[gnu::noinline]] void StartAgain() {
        Hash oNew;
        oNew.Start();
        for (std::size_t u = 0; u < m_oLevel.Size(); ++u) {
            Level& o = m_oLevel(u);
            for (u2_t* p : {&o.uKey, &o.uMost}) {
                if (*p != Hash::NONE) *p = oNew.Insert(m_oNames(*p).View());
            }
        }
        m_oNames.Renew(oNew);
        ++m_uStarts;
    }

    Arr<Level> m_oLevel;
    Data_Names m_oNames;
    u2_t m_uStarts = 0;
};

}  // namespace vok::detail

#endif  // VOK_DATA_RECORD_TRAIL_H

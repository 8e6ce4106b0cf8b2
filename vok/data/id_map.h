// SPDX-License-Identifier: MIT
// What is known of some nodes of a tree, by id. Internal.
#ifndef VOK_DATA_ID_MAP_H
#define VOK_DATA_ID_MAP_H

#include <utility>

#include "vok/base/arr.h"

namespace vok {

// A small value for each of the ids below a bound; T() for those that were never asked for. An
// operation on a small part of a large tree must not pay for the tree: a few values stand in a
// table of their own (open addressing), and in an array by id as soon as that takes no more room.
template <class T>
class Data_IdMap {
  public:
    explicit Data_IdMap(std::size_t uIds) noexcept : m_uIds(uIds) {}

    // The value of uId, to be changed; valid until the next call. Constant time, amortised.
    [[nodiscard]] T& operator()(u2_t uId) {
        if (m_oById.Size() != 0) [[likely]]
            return m_oById(uId);
        if (2 * m_uUsed >= m_oSlot.Size()) Grow();
        if (m_oById.Size() != 0) return m_oById(uId);
        Slot& oSlot = m_oSlot(SlotOf(uId));
        m_uUsed += oSlot.uId == FREE;
        oSlot.uId = uId + 1;
        return oSlot.tValue;
    }
    // The value of uId as it is.
    [[nodiscard]] T Find(u2_t uId) const noexcept {
        if (m_oById.Size() != 0) return m_oById(uId);
        return m_uUsed != 0 ? m_oSlot(SlotOf(uId)).tValue : T();
    }
    // The array by id at once, for one who will ask for most of them.
    void Spread() {
        if (m_oById.Size() == 0) m_oById.Resize(m_uIds);
    }

  private:
    static constexpr u2_t FREE = 0;
    static constexpr std::size_t FIRST_SLOTS = 32;
    struct Slot {
        u2_t uId;  // plus 1
        T tValue;
    };

    // Where uId stands, or belongs: at most half of the slots are taken.
    [[nodiscard]] std::size_t SlotOf(u2_t uId) const noexcept {
        const std::size_t uMask = m_oSlot.Size() - 1;
        // Knuth, volume 3, 6.4: neighbours spread over the table.
        std::size_t uSlot = (uId * std::size_t{0x9E3779B97F4A7C15} >> 32) & uMask;
        while (m_oSlot(uSlot).uId != FREE && m_oSlot(uSlot).uId != uId + 1) {
            uSlot = (uSlot + 1) & uMask;
        }
        return uSlot;
    }
    void Grow() {
        const std::size_t uSlots = m_oSlot.Size() != 0 ? 2 * m_oSlot.Size() : FIRST_SLOTS;
        Arr<Slot> oOld;
        oOld.Swap(m_oSlot);
        if (uSlots * sizeof(Slot) >= m_uIds * sizeof(T)) {
            m_oById.Resize(m_uIds);
            for (const Slot& o : std::as_const(oOld)) {
                if (o.uId != FREE) m_oById(o.uId - 1) = o.tValue;
            }
            return;
        }
        m_oSlot.Resize(uSlots);
        for (const Slot& o : std::as_const(oOld)) {
            if (o.uId != FREE) m_oSlot(SlotOf(o.uId - 1)) = o;
        }
    }

    const std::size_t m_uIds;
    std::size_t m_uUsed = 0;
    Arr<Slot> m_oSlot;
    Arr<T> m_oById;
};

}  // namespace vok

#endif  // VOK_DATA_ID_MAP_H

// SPDX-License-Identifier: MIT
// What one operation over data from outside uses up. Internal.
#ifndef VOK_BASE_WORK_H
#define VOK_BASE_WORK_H

#include "vok/base/limits.h"

namespace vok {

// Counts against the limits that are proportional to the input. Every loop that input can drive
// further than its own bytes reach charges what it does; loops over the bytes themselves do not.
class Work {
  public:
    // The limits must outlive this. uInput is the size of the input as far as it is known.
    explicit Work(const Limits& oLimits, u3_t uInput = 0) noexcept : m_oLimits(oLimits) {
        SetInput(uInput);
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    // So much of the input is there; unless the limits tell its size, which then counts.
    void SetInput(u3_t uBytes) noexcept {
        const u3_t uInput = IsMetered() ? m_oLimits.m_uInputBytes : uBytes;
        m_uMost = Product(m_oLimits.m_uWorkPerByte, uInput, Limits::FREE_WORK);
        m_uMostMemory = Product(m_oLimits.m_uMemoryPerByte, uInput, Limits::FREE_MEMORY);
    }
    // Whether what is read was inflated: only then the memory of a tree can outgrow its input.
    [[nodiscard]] bool IsMetered() const noexcept { return m_oLimits.m_uInputBytes != 0; }

    // Raises the error of the limit on work.
    void Charge(u3_t uUnits) {
        m_uDone += uUnits;
        if (m_uDone > m_uMost) [[unlikely]]
            RaiseWork();
    }
    // Nodes that a path looks at: they count against a limit of their own as well.
    void Look(u3_t uNodes) {
        m_uSteps += uNodes;
        if (m_uSteps > m_oLimits.m_uPathSteps) [[unlikely]]
            RaiseSteps();
        Charge(uNodes);
    }
    // Units for a look at so many bytes of text.
    [[nodiscard]] static constexpr u3_t OfText(std::size_t uBytes) noexcept { return uBytes / 32; }

    // Raises the error of the limit on memory if so much is too much; else what is left.
    u3_t CheckMemory(u3_t uBytes) const {
        if (uBytes > m_uMostMemory) [[unlikely]]
            RaiseMemory();
        return m_uMostMemory - uBytes;
    }

    [[nodiscard]] u3_t Done() const noexcept { return m_uDone; }

  private:
    // uFactor * uBytes + uFree, or the largest number.
    [[nodiscard]] static u3_t Product(u3_t uFactor, u3_t uBytes, u3_t uFree) noexcept {
        constexpr u3_t MOST = ~u3_t{0};
        const u3_t uRoom = MOST - uFree;
        return uBytes != 0 && uFactor > uRoom / uBytes ? MOST : uFactor * uBytes + uFree;
    }
    [[noreturn]] void RaiseWork() const;
    [[noreturn]] void RaiseSteps() const;
    [[noreturn]] void RaiseMemory() const;

    const Limits& m_oLimits;
    u3_t m_uDone = 0;
    u3_t m_uSteps = 0;
    u3_t m_uMost = 0;
    u3_t m_uMostMemory = 0;
};

}  // namespace vok

#endif  // VOK_BASE_WORK_H

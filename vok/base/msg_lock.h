// SPDX-License-Identifier: MIT
// The locks of the message facility. Internal.
#ifndef VOK_BASE_MSG_LOCK_H
#define VOK_BASE_MSG_LOCK_H

#include <atomic>

#include "vok/base/types.h"
#include "vok/sys/sys.h"

namespace vok {

// A spin lock that knows its holder. Constant-initialised and trivially destroyed, so
// that messages can be emitted before main() and after it.
class Msg_Lock {
  public:
    constexpr Msg_Lock() noexcept = default;
    Msg_Lock(const Msg_Lock&) = delete;
    Msg_Lock& operator=(const Msg_Lock&) = delete;

    void Enter() noexcept {
        while (m_uHeld.exchange(1, std::memory_order_acquire) != 0) sys::SleepMs(1);
        NoteHolder();
    }
    // The same, but gives up after so many milliseconds; false then.
    bool TryEnter(unsigned uMilliseconds) noexcept {
        while (m_uHeld.exchange(1, std::memory_order_acquire) != 0) {
            if (uMilliseconds-- == 0) return false;
            sys::SleepMs(1);
        }
        NoteHolder();
        return true;
    }

    void Leave() noexcept {
        m_uThread.store(0, std::memory_order_relaxed);
        m_uProcess.store(0, std::memory_order_relaxed);
        m_uHeld.store(0, std::memory_order_release);
    }

    // Whether the calling thread is the holder. Another thread's ids never look like ours,
    // so the answer needs no lock.
    [[nodiscard]] bool IsMine() const noexcept {
        return m_uHeld.load(std::memory_order_relaxed) != 0 &&
               m_uThread.load(std::memory_order_relaxed) == sys::ThreadId() &&
               m_uProcess.load(std::memory_order_relaxed) == sys::ProcessId();
    }

    // Of the holder, whose ids change in the child of a fork.
    void NoteHolder() noexcept {
        m_uProcess.store(sys::ProcessId(), std::memory_order_relaxed);
        m_uThread.store(sys::ThreadId(), std::memory_order_relaxed);
    }

  private:
    std::atomic<u2_t> m_uHeld{0};
    std::atomic<u2_t> m_uProcess{0};
    std::atomic<u2_t> m_uThread{0};
};

// Holds a lock for its own lifetime, unless the thread already holds it.
class Msg_Guard {
  public:
    explicit Msg_Guard(Msg_Lock& oLock) noexcept : m_oLock(oLock), m_bNested(oLock.IsMine()) {
        if (!m_bNested) m_oLock.Enter();
    }
    // Waits no longer than that.
    Msg_Guard(Msg_Lock& oLock, unsigned uMilliseconds) noexcept
        : m_oLock(oLock), m_bNested(oLock.IsMine()) {
        if (!m_bNested) m_bHeld = m_oLock.TryEnter(uMilliseconds);
    }
    ~Msg_Guard() {
        if (!m_bNested && m_bHeld) m_oLock.Leave();
    }
    Msg_Guard(const Msg_Guard&) = delete;
    Msg_Guard& operator=(const Msg_Guard&) = delete;

    // True when the thread came here from inside the lock.
    [[nodiscard]] bool IsNested() const noexcept { return m_bNested; }
    // False when waiting took too long.
    [[nodiscard]] bool IsHeld() const noexcept { return m_bHeld; }

  private:
    Msg_Lock& m_oLock;
    const bool m_bNested;
    bool m_bHeld = true;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_LOCK_H

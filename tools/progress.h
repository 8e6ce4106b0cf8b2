// SPDX-License-Identifier: MIT
// A progress line on standard error for work that takes its time.
#ifndef TOOLS_PROGRESS_H
#define TOOLS_PROGRESS_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace tools {

// Shows what goes on once it has gone on for a second, if standard error is a terminal, and
// wipes the line at the end. Of several at a time the first one is shown.
class Progress {
  public:
    // uTotal 0: nobody knows. sWhat must outlive the object.
    explicit Progress(const char* sWhat, std::uint64_t uTotal = 0);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Add(std::uint64_t uBytes) noexcept {
        m_uDone.fetch_add(uBytes, std::memory_order_relaxed);
    }

  private:
    void Run();
    void Draw(double dSeconds) const;

    const char* m_sWhat;
    std::uint64_t m_uTotal;
    std::atomic<std::uint64_t> m_uDone{0};
    std::mutex m_oMutex;
    std::condition_variable m_oWake;
    bool m_bEnd = false;
    std::thread m_oThread;  // does not run where nobody would see it
};

// Shows none from now on, for the terminal belongs to somebody else.
void HideProgress() noexcept;

}  // namespace tools

#endif  // TOOLS_PROGRESS_H

// SPDX-License-Identifier: MIT
#include "tools/each_file.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "tools/print.h"

namespace tools {

namespace {

// What became of a file, and what there is to say.
struct Done {
    int iExit = 0;
    std::exception_ptr pError;
    Spoken oSpoken;
};

int AtOnce(const std::vector<std::string>& asFile, unsigned uThreads,
           const std::function<int(const std::string&)>& oDo) {
    std::vector<std::optional<Done>> aoDone(asFile.size());
    std::atomic<std::size_t> uNext{0};
    std::mutex oMutex;
    std::condition_variable oWake;
    const auto oWork = [&] {
        for (std::size_t u; (u = uNext.fetch_add(1)) < asFile.size();) {
            Done o;
            try {
                const SpeakLater oLater(o.oSpoken);
                o.iExit = oDo(asFile[u]);
            } catch (...) {
                o.pError = std::current_exception();
            }
            const std::lock_guard oLock(oMutex);
            aoDone[u] = std::move(o);
            oWake.notify_one();
        }
    };
    std::vector<std::jthread> aoThread;
    // Whatever comes up here ends the others at the file that they are at.
    struct Stop {
        std::atomic<std::size_t>& uNext;
        const std::size_t uEnd;
        ~Stop() { uNext = uEnd; }
    } oStop{uNext, asFile.size()};
    for (unsigned u = 0; u < uThreads; ++u) aoThread.emplace_back(oWork);
    int iExit = 0;
    for (std::optional<Done>& oDone : aoDone) {
        std::unique_lock oLock(oMutex);
        oWake.wait(oLock, [&] { return oDone.has_value(); });
        const Done o = std::move(*oDone);
        oLock.unlock();
        Speak(o.oSpoken);
        if (o.pError != nullptr) std::rethrow_exception(o.pError);
        iExit = std::max(iExit, o.iExit);
    }
    return iExit;
}

}  // namespace

int ForEachFile(const std::vector<std::string>& asFile, unsigned uAtOnce,
                const std::function<int(const std::string&)>& oDo) {
    const auto uThreads = static_cast<unsigned>(std::min<std::size_t>(uAtOnce, asFile.size()));
    // Standard input is read once: which of two of them has it is told by their order.
    const bool bOnce = std::count(asFile.begin(), asFile.end(), "-") < 2;
    if (uThreads > 1 && bOnce) return AtOnce(asFile, uThreads, oDo);
    int iExit = 0;
    for (const std::string& sFile : asFile) iExit = std::max(iExit, oDo(sFile));
    return iExit;
}

}  // namespace tools

// vok check: whether files can be loaded, and where they cannot.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/loss.h"
#include "tools/output.h"
#include "tools/survey.h"
#include "tools/text.h"

namespace tools {

namespace {

// What is said of a file.
struct Verdict {
    int iExit = EXIT_GOOD;
    std::string sOut;
    std::string sErr;
    bool bDone = false;
};

Verdict VerdictOf(const std::string& sFile, const std::string& sForm, std::uint64_t uNodes,
                  const vok::Load_Report& oReport, const std::string& sBehind) {
    Verdict o;
    if (const std::string sFault = FaultOf(oReport, sBehind); !sFault.empty()) {
        o.iExit = EXIT_NEGATIVE;
        o.sOut = Visible(sFile) + ": " + sFault + '\n';
        return o;
    }
    o.sOut = Visible(sFile) + ": good (" + sForm + ", " + std::to_string(uNodes) + " nodes)\n";
    for (const std::string& sLost : LostByReading(oReport)) {
        o.sErr += "vok: " + Visible(sFile) + ": not kept: " + sLost + '\n';
    }
    return o;
}

Verdict CheckOne(const std::string& sFile) {
    Verdict oVerdict;
    try {
        Answer(
            sFile,
            [&] {
                const Survey o = LookThrough(sFile);
                // Whether a link leads anywhere shows when all nodes are there.
                if (o.bXml ? o.bTreeLinks : o.bLinks) throw NeedsTree();
                oVerdict =
                    VerdictOf(sFile, o.bXml ? "xml" : "dgraph", o.uNodes, o.oReport, o.sBehind);
                return 0;
            },
            [&] {
                const Input o = Load(sFile);
                oVerdict = VerdictOf(sFile, o.sFormat, o.oTree.GetNodes(), o.oReport, o.sBehind);
                return 0;
            });
    } catch (const InputError& oError) {
        oVerdict.iExit = oError.m_bTrouble ? EXIT_TROUBLE : EXIT_NEGATIVE;
        oVerdict.sOut = Visible(oError.what()) + '\n';
    }
    return oVerdict;
}

void Tell(const Verdict& o) {
    Print(o.sOut);
    std::fputs(o.sErr.c_str(), stderr);
}

// Several files at a time, told in their order.
int CheckAtOnce(const std::vector<std::string>& asFile, unsigned uThreads) {
    std::vector<Verdict> aoVerdict(asFile.size());
    std::exception_ptr pError;
    std::atomic<std::size_t> uNext{0};
    std::mutex oMutex;
    std::condition_variable oDone;
    const auto oWork = [&] {
        for (std::size_t u; (u = uNext.fetch_add(1)) < asFile.size();) {
            Verdict o;
            std::exception_ptr p;
            try {
                o = CheckOne(asFile[u]);
            } catch (...) {
                p = std::current_exception();
            }
            const std::lock_guard oLock(oMutex);
            if (p != nullptr) pError = p;
            aoVerdict[u] = std::move(o);
            aoVerdict[u].bDone = true;
            oDone.notify_one();
        }
    };
    std::vector<std::jthread> aoThread;
    for (unsigned u = 0; u < uThreads; ++u) aoThread.emplace_back(oWork);
    int iExit = EXIT_GOOD;
    for (std::size_t u = 0; u < asFile.size(); ++u) {
        std::unique_lock oLock(oMutex);
        oDone.wait(oLock, [&] { return aoVerdict[u].bDone; });
        if (pError != nullptr) {
            uNext = asFile.size();
            oLock.unlock();
            aoThread.clear();
            std::rethrow_exception(pError);
        }
        const Verdict o = std::move(aoVerdict[u]);
        oLock.unlock();
        Tell(o);
        iExit = std::max(iExit, o.iExit);
    }
    return iExit;
}

}  // namespace

int Check(const std::vector<std::string>& asFile, unsigned uAtOnce) {
    const auto uThreads = static_cast<unsigned>(std::min<std::size_t>(uAtOnce, asFile.size()));
    // Standard input is read once: which of two of them has it is told by their order.
    const bool bOnce = std::count(asFile.begin(), asFile.end(), "-") < 2;
    if (uThreads > 1 && bOnce) return CheckAtOnce(asFile, uThreads);
    int iExit = EXIT_GOOD;
    for (const std::string& sFile : asFile) {
        const Verdict o = CheckOne(sFile);
        Tell(o);
        iExit = std::max(iExit, o.iExit);
    }
    return iExit;
}

}  // namespace tools

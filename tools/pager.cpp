// SPDX-License-Identifier: MIT
#include "tools/pager.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tools/progress.h"
#include "vok/sys/sys.h"

namespace tools {

namespace {

enum class State { Unwanted, Forbidden, Wanted, Running };
State g_eState = State::Unwanted;

std::string Command() {
    for (const char* sName : {"VOK_PAGER", "PAGER"}) {
        if (const char* s = std::getenv(sName)) return s;
    }
    return "if command -v less >/dev/null; then exec less; else exec cat; fi";
}

}  // namespace

void AllowPager() noexcept {
    if (g_eState == State::Unwanted && vok::sys::IsTerminal(stdout)) g_eState = State::Wanted;
}

void ForbidPager() noexcept {
    g_eState = State::Forbidden;
}

void StartPager() {
    if (g_eState != State::Wanted) return;
    const std::string sCommand = Command();
    const bool bNone = sCommand.empty() || sCommand == "cat";
    g_eState = !bNone && vok::sys::StartPager(sCommand.c_str()) ? State::Running : State::Forbidden;
    if (g_eState == State::Running) HideProgress();
}

bool IsPaging() noexcept {
    return g_eState == State::Running;
}

void FinishPager() noexcept {
    if (g_eState != State::Running) return;
    (void)std::fflush(stdout);
    vok::sys::FinishPager();
}

}  // namespace tools

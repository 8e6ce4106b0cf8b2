// SPDX-License-Identifier: MIT
// What is too long for a terminal goes through a pager.
#ifndef TOOLS_PAGER_H
#define TOOLS_PAGER_H

namespace tools {

// From the first byte that is printed on, if standard output is a terminal: through the command in
// VOK_PAGER, PAGER, or less, which shows what fits a screen at once. None if that is empty or
// "cat".
void AllowPager() noexcept;
void ForbidPager() noexcept;

// In front of what is printed.
void StartPager();
// Whether what is printed goes through one.
[[nodiscard]] bool IsPaging() noexcept;
// Waits until the one who reads has seen enough; behind everything that is printed.
void FinishPager() noexcept;

}  // namespace tools

#endif  // TOOLS_PAGER_H

// SPDX-License-Identifier: MIT
// The two ways out of the message facility: console and log. Internal.
//
// Locks: everything printed is printed under the message lock, everything logged under
// the log lock. The log lock comes first: inside a log write a message may be emitted (by a
// debug sink). The other way round, where a writer or a sink logs while a message is being
// printed, the log lock is waited for as long as a write takes, but not for ever: two threads
// could otherwise wait for each other.
#ifndef VOK_BASE_MSG_CHANNEL_H
#define VOK_BASE_MSG_CHANNEL_H

#include <array>
#include <string_view>

#include "vok/base/msg_exception.h"
#include "vok/base/msg_lock.h"
#include "vok/base/types.h"

namespace vok {

// What replaces the placeholders of a text; null for those that it has not.
using Msg_Args = std::array<const char*, 10>;
// Msg::Emit; what is raised is of a kind, with a system error of Msg_Kind::System.
void Msg_Emit(int iMode, Msg_Kind eKind, const char* sText, u2_t uSystemError,
              const Msg_Args& psArgs);

// The line with ids, time and version that precedes raised and logged messages.
class Msg_Banner {
  public:
    Msg_Banner() noexcept = default;
    // iTime: seconds since 1970-01-01 UTC.
    void Format(i3_t iTime) noexcept;
    // Empty until formatted.
    [[nodiscard]] const char* Text() const noexcept { return m_sText; }

  private:
    char m_sText[160] = "";
};

// The caller holds Lock() for all but Lock() itself.
class Msg_Console {
  public:
    [[nodiscard]] static Msg_Lock& Lock() noexcept;
    // Starts a message: standard output, nothing held back.
    static void Begin() noexcept;
    // Hands text to the writer; what it cannot take is held back.
    static void Write(std::string_view sText) noexcept;
    // Ends a message.
    static void Flush() noexcept;
};

class Msg_LogFile {
  public:
    // Writes a banner, unless empty, and a message; nothing when the thread is already
    // inside a log write.
    static void WriteMessage(const char* sBanner, const char* sText) noexcept;
};

class Msg_Debug {
  public:
    // Hands a text to the debug sink; without one to the debugger, if there is any.
    static void Write(const char* sText) noexcept;
    // The same for a text that was asked for: without a sink it goes out in any case.
    static void Trace(const char* sText) noexcept;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_CHANNEL_H

// The two ways out of the message facility: console and log. Internal.
//
// Locks: everything printed is printed under the message lock, everything logged under
// the log lock. A thread that holds the message lock never waits for the log lock, so
// that a message may be emitted from inside a log write (by a debug sink).
#ifndef VOK_BASE_MSG_CHANNEL_H
#define VOK_BASE_MSG_CHANNEL_H

#include <string_view>

#include "vok/base/msg_lock.h"
#include "vok/base/types.h"

namespace vok {

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
    // Hands a text to the debug sink.
    static void Write(const char* sText) noexcept;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_CHANNEL_H

// SPDX-License-Identifier: MIT
// The message facility: everything the library reports goes through here.
#ifndef VOK_BASE_MSG_H
#define VOK_BASE_MSG_H

#include <limits>
#include <string>
#include <utility>

#include "vok/base/msg_catalog.h"
#include "vok/base/msg_exception.h"
#include "vok/base/types.h"

namespace vok {

// Errors are raised, warnings and statistics reported, by calling the entry of the
// catalog that names them: Msg::NodeIsEmpty(). This class adds what lies around the
// entries: the language, the console and log channels, and range checks.
//
// Everything is static and process-wide; any thread may call anything at any time.
// One message is formatted and printed under one lock, the log is written under a
// second one.
//
// Neither raising nor reporting takes heap memory. (Writing to a log file does; when
// there is none left the log misses a line.)
class Msg : public Msg_Catalog {
  public:
    // ---- emitting ---------------------------------------------------------

    static constexpr int MODE_RAISE = 1;
    static constexpr int MODE_REPORT = 0;
    static constexpr int MODE_LOG = -1;

    // "No code, but say what the system says": a system call failed without a reason.
    static constexpr u2_t NO_SYSTEM_ERROR_CODE = 0xFFFFFFFF;

    // Formats sText, in which "%" with a digit stands for that argument and "%%" for "%",
    // and raises, prints or logs it. A null argument prints nothing. uSystemError, unless
    // it is 0, adds the text of ErrnoText(). Returns 0, and never when iMode is
    // MODE_RAISE. Throws nothing but the Msg_Exception it was asked for.
    static int Emit(int iMode, const char* sText, u2_t uSystemError, const char* a0 = nullptr,
                    const char* a1 = nullptr, const char* a2 = nullptr, const char* a3 = nullptr,
                    const char* a4 = nullptr, const char* a5 = nullptr, const char* a6 = nullptr,
                    const char* a7 = nullptr, const char* a8 = nullptr, const char* a9 = nullptr);

    // For catch (...) only, see Where(): notes that the exception in flight passed sName
    // and throws it on. A Msg_Exception gets a line in its trail, any other
    // std::exception is logged, anything else (a cancelled thread) passes untouched.
    [[noreturn]] static void Rethrow(const char* sName, const char* sDetail = nullptr);

    // ---- language ---------------------------------------------------------

    static constexpr u2_t LANGUAGE_COUNT = 2;
    static constexpr u2_t ENGLISH = 0;
    static constexpr u2_t GERMAN = 1;

    // Selects by native name, English name or code, in any case. Raises "invalid
    // language".
    static void SetLanguage(const char* sName);
    // Selects by numeric id: 1031 is row 0, 1033 row 1. Raises "invalid language code".
    static void SetLanguageId(u2_t uId);
    // Selects by row. Raises "invalid language id" unless uIndex is below LANGUAGE_COUNT.
    static void SetLanguageIndex(u2_t uIndex);

    // The current language.
    [[nodiscard]] static u2_t LanguageIndex() noexcept;
    [[nodiscard]] static u2_t LanguageId() noexcept;
    [[nodiscard]] static const char* LanguageNativeName() noexcept;
    [[nodiscard]] static const char* LanguageEnglishName() noexcept;
    [[nodiscard]] static const char* LanguageCode() noexcept;

    // 0 or null when there is no row uIndex; for every row that exists, what the getter
    // without argument gives: the value of the current language.
    [[nodiscard]] static u2_t LanguageId(u2_t uIndex) noexcept;
    [[nodiscard]] static const char* LanguageNativeName(u2_t uIndex) noexcept;
    [[nodiscard]] static const char* LanguageEnglishName(u2_t uIndex) noexcept;
    [[nodiscard]] static const char* LanguageCode(u2_t uIndex) noexcept;

    // ---- console ----------------------------------------------------------

    // Where printed text goes: pWrite takes a piece of UTF-8, pFlush ends a message. Both
    // are called under the message lock, one thread at a time. A message emitted from
    // inside them is neither printed nor logged but held back, see HeldBack(); what they
    // throw is dropped. They must not use the log themselves.
    struct Writer {
        void (*pWrite)(const char* pText, std::size_t uSize);
        void (*pFlush)();
    };

    // Replaces the writer, returns the previous one. A null pWrite holds all text back.
    static Writer SetWriter(const Writer& oWriter) noexcept;
    // The writer the library starts with: characters up to 255 (greater ones become 255)
    // to standard output, or standard error when the console level is positive.
    [[nodiscard]] static Writer DefaultWriter() noexcept;

    // 0: standard output; positive: standard error. Every message emitted resets it.
    static void SetConsoleLevel(int iLevel) noexcept;
    [[nodiscard]] static int ConsoleLevel() noexcept;

    // What of the last message could not go to a writer, at most 1022 bytes.
    [[nodiscard]] static std::string HeldBack();

    // Whether raised and logged messages print a line with time and version first.
    // Initially on. Returns the previous setting.
    static bool SetBanner(bool bOn) noexcept;
    [[nodiscard]] static bool Banner() noexcept;

    // Sends printed text to the debugger instead of the writer. Returns the previous
    // setting; initially off.
    static bool SetDebugOutput(bool bOn) noexcept;

    // Replaces what takes debugger output; null restores the system's debugger. Where the
    // system has none that is standard error, and silent unless SetDebugOutput is on.
    using DebugSink = void (*)(const char* sText);
    static DebugSink SetDebugSink(DebugSink pSink) noexcept;

    // Prints a banner with the time of oError, then its message.
    static void LogException(const Msg_Exception& oError) noexcept;

    // Prints "PROGRAM ABORTED" and the words of the command line. Does not end anything.
    static void Abort(int iArgc, const char* const* psArgv) noexcept;

    // ---- log --------------------------------------------------------------

    // Names the log file and checks that it can be appended to; if not, a list of usual
    // places is tried. Null or empty switches logging off. Characters above 127 in the
    // path become "~". The file is open only while a line is written.
    static void SetLogFile(const char* sPath) noexcept;
    // The path in use; empty while logging is off.
    [[nodiscard]] static std::string LogFile();

    static constexpr int LOG_NEWLINE = 1;    // end the text with a line break
    static constexpr int LOG_IDS = 4;        // "<process,thread> " before it
    static constexpr int LOG_TIME = 8;       // "year-month-day hour:minute:second " before that
    static constexpr int LOG_NO_DEBUG = 16;  // no copy to the debugger

    // Writes a text to the debugger and, if there is one, the log file. Does nothing when
    // called from inside a log write of the same thread.
    static void Log(const char* sText, int iFlags) noexcept;

    // ---- checks -----------------------------------------------------------

    // Whether an integer of any type fits a signed integer of 32 or 16 bits.
    template <class T>
    [[nodiscard]] static constexpr bool IsInt32(T tX) noexcept {
        return std::in_range<i2_t>(tX);
    }
    template <class T>
    [[nodiscard]] static constexpr bool IsInt16(T tX) noexcept {
        return std::in_range<std::int16_t>(tX);
    }

    // tX, or the assertion failure "vok::Msg::IsInt32(x)".
    template <class T>
    static constexpr i2_t ToInt32(T tX) {
        if (!IsInt32(tX)) [[unlikely]]
            AssertionFailed("vok::Msg::IsInt32(x)");
        return static_cast<i2_t>(tX);
    }

    // uX, or "unexpected integer value >= 2^32".
    static constexpr u2_t ToU2(u3_t uX) {
        if (uX > std::numeric_limits<u2_t>::max()) [[unlikely]]
            UnexpectedIntegerValue();
        return static_cast<u2_t>(uX);
    }

    // Raises the assertion failure sCondition unless bGood.
    static constexpr void Assert(bool bGood, const char* sCondition) {
        if (!bGood) [[unlikely]]
            AssertionFailed(sCondition);
    }

    // ---- system errors ----------------------------------------------------

    // The text for an error number of the C runtime (numbered as on Windows everywhere):
    // "ENOENT (No such file or directory)". Any other number gives "%d :" with the
    // thread's last system error and its text, or "UNKNOWN (unknown errno %d)" with uCode.
    // The result is sBuf, or a fixed text when that will do.
    static const char* ErrnoText(char* sBuf, std::size_t uSize, u2_t uCode) noexcept;

    // What an entry that takes a system error wants after a call of the C runtime failed:
    // its error number, or NO_SYSTEM_ERROR_CODE when it gave none. Then the text is the one of
    // the thread's last system error.
    [[nodiscard]] static u2_t SystemError() noexcept;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_H

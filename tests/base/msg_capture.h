// Catches what the message facility prints and logs during one test.
#ifndef TESTS_BASE_MSG_CAPTURE_H
#define TESTS_BASE_MSG_CAPTURE_H

#include <string>

#include "vok/base/msg.h"

namespace vok {

// English, no banner, no log file; console and debugger output go into texts. Everything
// is put back at the end.
class Msg_Capture {
  public:
    Msg_Capture() {
        s_sConsole.clear();
        s_sDebug.clear();
        Msg::SetLanguageIndex(Msg::ENGLISH);
        m_bBanner = Msg::SetBanner(false);
        m_oWriter = Msg::SetWriter({Write, Flush});
        m_pSink = Msg::SetDebugSink(Debug);
    }
    ~Msg_Capture() {
        Msg::SetLanguageIndex(Msg::ENGLISH);
        Msg::SetBanner(m_bBanner);
        Msg::SetWriter(m_oWriter);
        Msg::SetDebugSink(m_pSink);
        Msg::SetDebugOutput(false);
        Msg::SetLogFile(nullptr);
    }
    Msg_Capture(const Msg_Capture&) = delete;
    Msg_Capture& operator=(const Msg_Capture&) = delete;

    // Each flush shows as "|".
    [[nodiscard]] static std::string TakeConsole() { return std::exchange(s_sConsole, {}); }
    [[nodiscard]] static std::string TakeDebug() { return std::exchange(s_sDebug, {}); }

  private:
    static void Write(const char* pText, std::size_t uSize) { s_sConsole.append(pText, uSize); }
    static void Flush() { s_sConsole += '|'; }
    static void Debug(const char* sText) { s_sDebug += sText; }

    static inline std::string s_sConsole;
    static inline std::string s_sDebug;
    bool m_bBanner;
    Msg::Writer m_oWriter;
    Msg::DebugSink m_pSink;
};

// The message that oBody raises; "(nothing raised)" if none.
template <class F>
std::string Raised(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        return oError.what();
    }
    return "(nothing raised)";
}

}  // namespace vok

#endif  // TESTS_BASE_MSG_CAPTURE_H

// SPDX-License-Identifier: MIT
// What the tests of streams and files share.
#ifndef TESTS_FILE_FILE_SUPPORT_H
#define TESTS_FILE_FILE_SUPPORT_H

#include "tests/support.h"
#include "vok/file/file.h"

namespace vok {

// "0B 17" as its bytes.
inline std::string Bytes(std::string_view sHex) {
    std::string sBytes;
    for (; sHex.size() > 1; sHex.remove_prefix(std::min<std::size_t>(3, sHex.size()))) {
        sBytes += static_cast<char>(std::stoi(std::string(sHex.substr(0, 2)), nullptr, 16));
    }
    return sBytes;
}

// The message that oBody raises, which has to have a part in it, none where that is empty, and the
// kind. Returns whether.
template <class F>
testing::AssertionResult Raises(std::string_view sPart, F&& oBody,
                                Msg_Kind eKind = Msg_Kind::System) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        const bool bGood = !sPart.empty() && oError.Kind() == eKind;
        return bGood ? Has(oError.what(), sPart) : testing::AssertionFailure() << oError.what();
    }
    return sPart.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << "no error";
}

// A directory of its own for each test, English messages, and no real waiting.
class File_Test : public testing::Test {
  protected:
    File_Test() {
        s_uSleeps.clear();
        s_pOnSleep = nullptr;
        m_pSleep = File::SetSleep([](unsigned uMilliseconds) {
            s_uSleeps.push_back(uMilliseconds);
            if (s_pOnSleep != nullptr) s_pOnSleep();
        });
    }
    ~File_Test() override { File::SetSleep(m_pSleep); }

    static inline std::vector<unsigned> s_uSleeps;  // what was waited for, in order
    static inline void (*s_pOnSleep)() = nullptr;   // what others do meanwhile

  private:
    Msg_Capture m_oCapture;
    Scratch_Dir m_oDir;
    File::SleepMs m_pSleep;
};

}  // namespace vok

#endif  // TESTS_FILE_FILE_SUPPORT_H

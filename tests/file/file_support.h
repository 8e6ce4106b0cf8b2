// What the tests of streams and files share.
#ifndef TESTS_FILE_FILE_SUPPORT_H
#define TESTS_FILE_FILE_SUPPORT_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "tests/base/msg_capture.h"
#include "vok/file/file.h"
#include "vok/sys/sys.h"

namespace vok {

// "0B 17" as its bytes.
inline std::string Bytes(std::string_view sHex) {
    std::string sBytes;
    unsigned uByte = 0;
    unsigned uDigits = 0;
    for (const char c : sHex) {
        if (c == ' ') continue;
        uByte = uByte * 16 + static_cast<unsigned>(c <= '9' ? c - '0' : c - 'A' + 10);
        if (++uDigits % 2 == 0) sBytes += static_cast<char>(uByte);
        uByte &= 0xF;
    }
    return sBytes;
}

inline std::string Content(const File_Buf& oBuf) {
    return {oBuf.Data() != nullptr ? oBuf.Data() : "", oBuf.Size()};
}
inline std::string Content(const Arr<char>& oArr) {
    return {oArr.Beg() != nullptr ? oArr.Beg() : "", oArr.Size()};
}

// The where-trail of what oBody raises.
template <class F>
std::string Trail(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        return oError.where();
    }
    return "(nothing raised)";
}

// Forward only, without a name, and never more than three bytes at a time.
class Trickle_Stream : public File_Stream {
  public:
    explicit Trickle_Stream(std::string_view sBytes) : m_sBytes(sBytes) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        std::size_t uDone = 0;
        do {
            const std::size_t uMost = bAllowShort ? 3 : uCount - uDone;
            const std::size_t uPart = m_sBytes.copy(static_cast<char*>(pTarget) + uDone, uMost);
            m_sBytes.remove_prefix(uPart);
            uDone += uPart;
        } while (!bAllowShort && uDone < uCount && !m_sBytes.empty());
        if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
        return uDone;
    }
    std::size_t Write(const void*, std::size_t) override { Msg::FileIsNotOpenForWrite(Name()); }
    void Seek(i3_t iOffset, int iWhence) override { Msg::FileSeekFailed(iOffset, iWhence, 0); }
    i3_t Tell() override { return -1; }
    int Flush() override { return 0; }

  private:
    std::string_view m_sBytes;
};

// A directory of its own for each test, English messages, and no real waiting.
class File_Test : public testing::Test {
  protected:
    File_Test() {
        std::filesystem::remove_all(m_sDir);
        std::filesystem::create_directories(m_sDir);
        s_uSleeps.clear();
        s_pOnSleep = nullptr;
        m_pSleep = File::SetSleep([](unsigned uMilliseconds) {
            s_uSleeps.push_back(uMilliseconds);
            if (s_pOnSleep != nullptr) s_pOnSleep();
        });
    }
    ~File_Test() override {
        File::SetSleep(m_pSleep);
        std::filesystem::remove_all(m_sDir);
    }

    [[nodiscard]] std::string Path(const char* sName) const { return m_sDir + "/" + sName; }
    [[nodiscard]] static std::string OnDisk(const std::string& sPath) {
        std::ifstream oIn(sPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(oIn), {}};
    }
    static void ToDisk(const std::string& sPath, std::string_view sBytes) {
        std::ofstream(sPath, std::ios::binary) << sBytes;
    }

    static inline std::vector<unsigned> s_uSleeps;  // what was waited for, in order
    static inline void (*s_pOnSleep)() = nullptr;   // what others do meanwhile

  private:
    Msg_Capture m_oCapture;
    std::string m_sDir = testing::TempDir() + "vok_file_test_" + std::to_string(sys::ProcessId());
    File::SleepMs m_pSleep;
};

}  // namespace vok

#endif  // TESTS_FILE_FILE_SUPPORT_H

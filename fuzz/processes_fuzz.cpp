// SPDX-License-Identifier: MIT
// What another process may send through a pipe, or leave in shared memory: the first byte chooses.
// Nothing but a Msg_Exception may come out, memory follows the bytes that are there, and what is
// read is what was sent.
#include <unistd.h>

#include <cstdio>

#include "fuzz/fuzz_support.h"
#include "vok/base/little_endian.h"
#include "vok/file/nam_pipe.h"
#include "vok/file/shm.h"

namespace {

using namespace vok;

constexpr u2_t SOON = 10000;         // ms
constexpr std::size_t MOST = 60000;  // bytes, which a pipe takes without being read
const std::string g_sName = "vok-fuzz-" + std::to_string(::getpid());

// The messages are those that a simple reader finds, the end and faults where it finds them.
void Messages(std::string_view s, u3_t uMost) {
    static File_NamPipeServer s_oServer(g_sName.c_str());
    File_NamPipe oSends(g_sName.c_str(), SOON), oReads;
    Check(s_oServer.Accept(oReads, SOON));
    oSends.Write(s.data(), s.size());
    oSends.Close();
    try {
        for (Arr<char> oMessage; oReads.ReadMessage(oMessage, uMost);) {
            Check(s.size() >= 8);
            const auto uSize = le::Load<u3_t>(s.data());
            Check(uSize <= uMost && uSize <= s.size() - 8 && oMessage.Size() == uSize);
            Check(std::string_view(oMessage.Beg(), oMessage.Size()) ==
                  s.substr(8, static_cast<std::size_t>(uSize)));
            s.remove_prefix(8 + static_cast<std::size_t>(uSize));
        }
        Check(s.empty());
    } catch (const Msg_Exception&) {
        const u3_t uSize = s.size() >= 8 ? le::Load<u3_t>(s.data()) : 0;
        Check(!s.empty() && (s.size() < 8 || uSize > uMost || uSize > s.size() - 8));
    }
}

// A header of what is there, and bytes behind it, as files that a fuzzer writes them.
void Memory(std::string_view s) {
    const std::string sPath = "/dev/shm/" + g_sName;
    const std::string_view sHeader = s.substr(0, 40);
    std::string sAll(sHeader);
    if (s.size() > 40) {
        sAll.resize(4096);
        sAll += s.substr(40);
    }
    std::FILE* const pFile = std::fopen(sPath.c_str(), "wb");
    Check(pFile != nullptr && std::fwrite(sAll.data(), 1, sAll.size(), pFile) == sAll.size());
    Check(std::fclose(pFile) == 0);
    try {
        File_Shm oShm(g_sName.c_str());
        Arr<char> oBytes;
        Check(oShm.Read(oBytes, File_Stream::ALL) == oShm.Size());
        Check(oShm.Size() <= s.size() - 40 && oShm.Size() <= oShm.Limit());
        Check(std::string_view(oBytes.Beg(), oBytes.Size()) == s.substr(40, oBytes.Size()));
        Check(!oShm.Refresh());
        oShm.Seek(0);
        Data oTree;
        oTree.Attach(oShm, Data_Trust::None, SmallLimits());
        Check(CheckStore(*dgraph::Access::BaseOf(oTree)) == nullptr);
    } catch (const Msg_Exception&) {
    }
    // Who writes goes on behind it, or does not.
    try {
        File_Shm oShm(g_sName.c_str(), File_Shm::Mode::CreateOrOpen, 100000);
        const u3_t uBefore = oShm.Size();
        oShm.Write("0123456789", 10);
        oShm.Publish();
        Check(File_Shm(g_sName.c_str()).Size() == uBefore + 10);
    } catch (const Msg_Exception&) {
    }
    Check(File_Shm::Remove(g_sName.c_str()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    static const bool s_bQuiet = (Msg::SetBanner(false), true);
    if (!s_bQuiet || uSize == 0 || uSize > MOST) return 0;
    const std::string_view s(reinterpret_cast<const char*>(pData) + 1, uSize - 1);
    if (*pData == 0) {
        Memory(s);
    } else {
        Messages(s, u3_t{*pData} * *pData);
    }
    return 0;
}

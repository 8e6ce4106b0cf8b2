// SPDX-License-Identifier: MIT
// What the tests of all folders share.
#ifndef TESTS_SUPPORT_H
#define TESTS_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vok/base/msg.h"
#include "vok/data/data.h"
#include "vok/data/store_check.h"
#include "vok/data/succ_it.h"
#include "vok/dgraph/access.h"
#include "vok/file/buf.h"
#include "vok/sys/sys.h"

namespace vok {

using Ids = std::vector<u2_t>;
using Pair = std::pair<std::string, std::string>;  // a row of a table: what goes in, what comes out
using Texts = std::vector<std::string>;

// Where the tests are not optimized, what is large is a quarter as large.
#ifdef __OPTIMIZE__
inline constexpr unsigned LARGE = 4;
#else
inline constexpr unsigned LARGE = 1;
#endif

// Raised errors print nothing.
inline const bool g_bQuiet = (Msg::SetBanner(false), true);

constexpr const char* NOTHING_RAISED = "(nothing raised)";
constexpr const char* DELETED = "try to access deleted node\n";

// The message that oBody raises.
template <class F>
std::string Raised(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        return oError.what();
    }
    return NOTHING_RAISED;
}

// The same without its line break, and empty when there is none.
template <class F>
std::string Failing(F&& oBody) {
    std::string s = Raised(oBody);
    if (s == NOTHING_RAISED) return "";
    if (s.ends_with('\n')) s.pop_back();
    return s;
}

// Whether a text has another one in it; where it has not, it is shown.
inline testing::AssertionResult Has(const std::string& sText, std::string_view sPart) {
    if (sText.find(sPart) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << sPart << "\" in \"" << sText << '"';
}

// The limits of loading as their messages name them.
struct Limit {
    u3_t Limits::*pField;
    const char* sWhat;
    const char* sField;
};
inline constexpr Limit LIMIT_NODES{&Limits::m_uNodes, "nodes", "m_uNodes"};
inline constexpr Limit LIMIT_DEPTH{&Limits::m_uDepth, "depth", "m_uDepth"};
inline constexpr Limit LIMIT_SLOTS{&Limits::m_uSkippedSlots, "skipped slots", "m_uSkippedSlots"};
inline constexpr Limit LIMIT_TEXT_BYTES{&Limits::m_uTextBytes, "text bytes", "m_uTextBytes"};
inline constexpr Limit LIMIT_ATTRIBUTES{&Limits::m_uAttributes, "attributes", "m_uAttributes"};
inline constexpr Limit LIMIT_PATH_STEPS{&Limits::m_uPathSteps, "path steps", "m_uPathSteps"};

inline Limits AtMost(const Limit& o, u3_t uMost) {
    Limits oLimits;
    oLimits.*o.pField = uMost;
    return oLimits;
}
inline std::string Exceeded(const Limit& o, u3_t uMost) {
    return std::string("limit \"") + o.sWhat + "\" of " + std::to_string(uMost) +
           " exceeded (raise Limits::" + o.sField + ")";
}

// The where-trail of the error that oBody raises.
template <class F>
std::string Trail(F&& oBody) {
    try {
        oBody();
    } catch (const Msg_Exception& oError) {
        return oError.where();
    }
    return NOTHING_RAISED;
}

// What does not hold in the store of a tree; empty when all does.
inline std::string Fault(const Data& oTree) {
    const Data_Base* pBase = dgraph::Access::BaseOf(oTree);
    const char* sFault = pBase != nullptr ? CheckStore(*pBase) : nullptr;
    return sFault != nullptr ? sFault : "";
}

// Where loading stopped: "20 4:5 /d[0]" for byte, line, column and path.
inline std::string PlaceOf(const Load_Report& o) {
    return std::to_string(o.m_uOffset) + " " + std::to_string(o.m_uLine) + ":" +
           std::to_string(o.m_uColumn) + " " + (o.m_oPath.IsEmpty() ? "" : o.m_oPath.CStr());
}

// English, no banner, no log file; console and debugger output go into texts. Everything
// is put back at the end.
class Msg_Capture {
  public:
    Msg_Capture() {
        s_sConsole.clear();
        s_sDebug.clear();
        Msg::SetLanguageIndex(Msg::ENGLISH);
        m_bBanner = Msg::SetBanner(false);
        m_oWriter = Msg::SetWriter(
            {[](const char* pText, std::size_t uSize) { s_sConsole.append(pText, uSize); },
             [] { s_sConsole += '|'; }});
        m_pSink = Msg::SetDebugSink([](const char* sText) { s_sDebug += sText; });
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

    // Each flush shows as "|".
    [[nodiscard]] static std::string TakeConsole() { return std::exchange(s_sConsole, {}); }
    [[nodiscard]] static std::string TakeDebug() { return std::exchange(s_sDebug, {}); }

  private:
    static inline std::string s_sConsole;
    static inline std::string s_sDebug;
    bool m_bBanner;
    Msg::Writer m_oWriter;
    Msg::DebugSink m_pSink;
};

// Counts and refuses the memory of blocks during one test. Blocks made under it end under it.
class Mem_Probe {
  public:
    Mem_Probe() : m_oOld(Mem::SetAllocator({Alloc, Resize, Free})) {
        s_uNow = s_uPeak = s_uAsked = 0;
        s_uFailIn = 0;
    }
    ~Mem_Probe() { Mem::SetAllocator(m_oOld); }
    Mem_Probe(const Mem_Probe&) = delete;

    // The most bytes in use at one time, and what all requests add up to.
    [[nodiscard]] static std::size_t Peak() noexcept { return s_uPeak; }
    [[nodiscard]] static std::size_t Asked() noexcept { return s_uAsked; }

    // The n-th request from now on is refused, once; 0 refuses none.
    static void FailIn(unsigned uNth) noexcept { s_uFailIn = uNth; }
    // Counts a request; true when it is the one to be refused.
    static bool Refuses() noexcept { return s_uFailIn != 0 && --s_uFailIn == 0; }
    // Whether the refusal is still to come.
    [[nodiscard]] static bool IsArmed() noexcept { return s_uFailIn != 0; }
    // Whether the n-th request of oBody was refused, which it has to raise.
    template <class F>
    static bool HasRefused(unsigned uNth, F&& oBody) {
        FailIn(uNth);
        const std::string sRaised = Raised(oBody);
        const bool bRefused = !IsArmed();
        FailIn(0);
        EXPECT_EQ(sRaised != NOTHING_RAISED, bRefused) << sRaised;
        return bRefused;
    }

  private:
    static void* Alloc(std::size_t uSize) { return Resize(nullptr, 0, uSize); }
    static void* Resize(void* pBlock, std::size_t uOldSize, std::size_t uNewSize) {
        void* pNew = Refuses() ? nullptr : std::realloc(pBlock, uNewSize);
        if (pNew == nullptr) return nullptr;
        s_uAsked += uNewSize;
        s_uNow += uNewSize - uOldSize;
        s_uPeak = s_uNow > s_uPeak ? s_uNow : s_uPeak;
        return pNew;
    }
    static void Free(void* pBlock, std::size_t uSize) {
        s_uNow -= uSize;
        std::free(pBlock);
    }

    static inline std::size_t s_uNow, s_uPeak, s_uAsked;
    static inline unsigned s_uFailIn = 0;
    Mem::Allocator m_oOld;
};

// An empty directory that is the current one for the time of a test.
class Scratch_Dir {
  public:
    Scratch_Dir() {
        std::filesystem::remove_all(m_oDir);
        std::filesystem::create_directories(m_oDir);
        std::filesystem::current_path(m_oDir);
    }
    ~Scratch_Dir() {
        std::filesystem::current_path(m_oOld);
        std::filesystem::remove_all(m_oDir);
    }
    Scratch_Dir(const Scratch_Dir&) = delete;

  private:
    std::filesystem::path m_oOld = std::filesystem::current_path();
    std::filesystem::path m_oDir =
        std::filesystem::temp_directory_path() / ("vok_test_" + std::to_string(sys::ProcessId()));
};

// Paths are UTF-8.
inline std::filesystem::path ToPath(const std::string& sPath) {
    return {std::u8string(sPath.begin(), sPath.end())};
}
inline std::string OnDisk(const std::string& sPath) {
    std::ifstream oIn(ToPath(sPath), std::ios::binary);
    return {std::istreambuf_iterator<char>(oIn), {}};
}
inline void ToDisk(const std::string& sPath, std::string_view sBytes) {
    std::ofstream(ToPath(sPath), std::ios::binary) << sBytes;
}
// What a file written as text holds, lines ending in "\n" on every system.
inline std::string LinesOnDisk(const std::string& sPath) {
    std::ifstream oIn(ToPath(sPath));
    return {std::istreambuf_iterator<char>(oIn), {}};
}

// Numbers as documents and dumps hold them.
template <class T>
std::string Number(T tValue) {
    std::string sBytes;
    for (std::size_t u = 0; u < sizeof(T); ++u) {
        sBytes += static_cast<char>(static_cast<u3_t>(tValue) >> 8 * u & 0xFF);
    }
    return sBytes;
}
inline std::string I32(i3_t iValue) {
    return Number(static_cast<u2_t>(iValue));
}
inline std::string U64(u3_t uValue) {
    return Number(uValue);
}

inline std::string Joined(const Texts& oTexts) {
    std::string sAll;
    for (const std::string& s : oTexts) sAll += s;
    return sAll;
}

inline std::string Repeat(const std::string& s, std::size_t uTimes) {
    std::string sAll;
    for (; uTimes != 0; --uTimes) sAll += s;
    return sAll;
}

// Bytes that deflate to about so many bits each, the same ones every time.
inline std::string Noise(std::size_t uSize, unsigned uBits, unsigned uSeed = 1) {
    std::mt19937 oRandom(uSeed);
    std::string s(uSize, 0);
    for (char& c : s) c = static_cast<char>(oRandom() & ((1u << uBits) - 1));
    return s;
}

inline std::string Content(const File_Buf& oBuf) {
    return {oBuf.Data() != nullptr ? oBuf.Data() : "", oBuf.Size()};
}
inline std::string Content(const Arr<char>& oArr) {
    return {oArr.Beg() != nullptr ? oArr.Beg() : "", oArr.Size()};
}

// Without a name and unable to seek. Hands out few bytes at a time where it may, and keeps what
// was written apart, call by call.
class Drop_Stream : public File_Stream {
  public:
    explicit Drop_Stream(std::string_view sBytes = {}, std::size_t uMost = 1)
        : m_sBytes(sBytes), m_uMost(uMost) {}

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override {
        if (Fails()) Msg::UnexpectedEndOfFile(nullptr, 0);
        const std::size_t uMost = bAllowShort && uCount > m_uMost ? m_uMost : uCount;
        const std::size_t uRead = m_sBytes.copy(static_cast<char*>(pTarget), uMost);
        m_sBytes.remove_prefix(uRead);
        if (!bAllowShort && uRead < uCount) Msg::UnexpectedEndOfFile(nullptr, 0);
        return uRead;
    }
    std::size_t Write(const void* pSource, std::size_t uCount) override {
        if (Fails()) Msg::FileWriteError(nullptr, uCount, 0, 0);
        m_oWritten.emplace_back(static_cast<const char*>(pSource), uCount);
        return uCount;
    }
    void Seek(i3_t iOffset, int iWhence) override { Msg::FileSeekFailed(iOffset, iWhence, 0); }
    i3_t Tell() override { return -1; }
    int Flush() override {
        if (Fails()) Msg::FileWriteError(nullptr, 0, 0, 0);
        ++m_uFlushes;
        return 0;
    }
    bool Fails() noexcept { return m_uFailIn != 0 && --m_uFailIn == 0; }

    std::string_view m_sBytes;  // still to be read
    std::size_t m_uMost;
    Texts m_oWritten;
    unsigned m_uFlushes = 0;
    unsigned m_uFailIn = 0;  // the n-th operation from now on fails, once; 0 lets none fail
};

inline Data NewTree() {
    Data oRoot;
    oRoot.SetToRoot();
    return oRoot;
}

// The live nodes that an iterator delivers.
inline Ids IdsOf(Data_SuccIt oIt) {
    Ids oIds;
    for (; oIt.SkipZombies(); oIt.Advance()) oIds.push_back(oIt.GetData().GetId());
    return oIds;
}
inline Ids IdsOf(const Data_NodeSet& oSet) {
    Ids oIds;
    for (std::size_t u = 0; u < oSet.Size(); ++u) oIds.push_back(oSet.GetNth(u).GetId());
    return oIds;
}

// The bytes of a binary node.
inline std::string BlockOf(const Data& o) {
    u2_t uSize = 0;
    const void* pData = o.GetValBin(uSize);
    return {static_cast<const char*>(pData), uSize};
}

// What oWrite writes into an empty buffer.
template <class F>
std::string Written(F&& oWrite) {
    File_Buf oBuf("w");
    oWrite(oBuf);
    return Content(oBuf);
}
inline std::string DumpOf(const Data& oTree) {
    return Written([&](File_Buf& o) { oTree.Dump(o); });
}

// The attributes of a node as "name=value" texts in the order they are delivered.
inline Texts AttributesOf(const Data& oNode, bool bSorted = false) {
    Arr<const char*> oNames;
    Arr<const char*> oValues;
    oNode.GetAttributes(oNames, oValues, bSorted);
    Texts oListed;
    for (std::size_t u = 0; u < oNames.Size(); ++u) {
        oListed.push_back(oNames(u) + std::string("=") + oValues(u));
    }
    return oListed;
}

inline std::string ShowValue(const Data& o) {
    switch (o.GetType()) {
        case Data_Node::Empty:
        case Data_Node::Tree:
        case Data_Node::Zombi: return "";
        case Data_Node::Boolean: return o.GetValBool() ? ":yes" : ":no";
        case Data_Node::Char: return ":'" + std::to_string(o.GetValInt(Data_Node::Char));
        case Data_Node::String: return ":'" + std::string(o.GetValText()) + "'";
        case Data_Node::Binary: {
            std::string s = ":#";
            for (const char c : BlockOf(o)) {
                for (const int iShift : {4, 0}) s += "0123456789ABCDEF"[c >> iShift & 15];
            }
            return s;
        }
        case Data_Node::Link: {
            const Data oTarget = o.GetValLink();
            return oTarget.IsNode() ? std::string("->") + oTarget.GetPath().CStr() : "->nothing";
        }
        default: {
            Str oText;
            o.CvtStr(oText);
            static constexpr const char* SUFFIX[] = {"", "", "", "", "f", "d", "", "", "", "u", ""};
            return std::string(":") + oText.CStr() + SUFFIX[o.GetType()];
        }
    }
}

// "Root(a:1 b@k=v:'text' c(d))": names, attributes, values and successors of a small tree.
inline std::string Show(const Data& o) {
    std::string s = o.GetName() != nullptr ? o.GetName() : "?";
    for (const std::string& sAttribute : AttributesOf(o)) s += "@" + sAttribute;
    s += ShowValue(o);
    if (o.GetType() != Data_Node::Tree) return s;
    s += '(';
    for (Data_SuccIt oIt = o.GetSuccIt(); oIt.SkipZombies(); oIt.Advance()) {
        s += (s.back() == '(' ? "" : " ") + Show(oIt.GetData());
    }
    return s + ")";
}

inline u2_t RandomBelow(std::mt19937& oRandom, std::size_t uEnd) {
    return static_cast<u2_t>(oRandom() % uEnd);
}

// Appends uCount nodes below random nodes of a tree, named at random from sNames.
inline void Grow(const Data& oRoot, std::mt19937& oRandom, unsigned uCount, const Texts& sNames) {
    for (unsigned u = 0; u < uCount;) {
        Data oParent = oRoot.GetNodeFromID(RandomBelow(oRandom, oRoot.GetNodes()));
        if (oParent.GetType() != Data_Node::Tree && oParent.GetType() != Data_Node::Empty) continue;
        oParent.CreateNewSucc(sNames[RandomBelow(oRandom, sNames.size())].c_str());
        ++u;
    }
}

}  // namespace vok

#endif  // TESTS_SUPPORT_H

// SPDX-License-Identifier: MIT
// Blocks and arrays.
#include "tests/support.h"
#include "vok/base/arr.h"

namespace vok {
namespace {

TEST(Mem, CountsBlocksAndOwners) {
    const Msg_Capture oCapture;
    const u3_t uBytes = Mem::BytesInUse();
    const u3_t uBlocks = Mem::BlocksInUse();
    void* pData = Mem::Create(100);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pData) % 16, 0u);
    EXPECT_EQ(Mem::BytesInUse() - uBytes, 100u);
    // Small, larger, pages, larger, and back: the bytes come along.
    static_cast<char*>(pData)[99] = 'x';
    for (const std::size_t uSize : {200u, 100000u, 3u << 20, 9u << 20, 2u << 20, 1000u}) {
        pData = Mem::Resize(pData, uSize);
        EXPECT_EQ(static_cast<char*>(pData)[99], 'x');
        EXPECT_EQ(Mem::SizeOf(pData), uSize);
        std::memset(static_cast<char*>(pData) + 100, 0, uSize - 100);
    }
    EXPECT_EQ(Mem::GetRefCnt(pData), 0u);
    EXPECT_EQ(Raised([&] { Mem::DecRef(pData); }), "try to decrement zero reference count\n");
    Mem::AddRef(pData);
    Mem::AddRef(pData);
    EXPECT_EQ(Mem::GetRefCnt(pData), 2u);
    Mem::DecRef(pData);
    EXPECT_FALSE(Mem::DropRef(pData));
    EXPECT_TRUE(Mem::DropRef(pData));
    Mem::Free(pData);
    Mem::Free(nullptr);
    EXPECT_EQ(Mem::BytesInUse(), uBytes);
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

TEST(Mem, TracesWhatOwnersGiveUp) {
    const Msg_Capture oCapture;
    void* const pData = Mem::Create(8);
    for (int i = 0; i < 3; ++i) Mem::AddRef(pData);
    Mem::DecRef(pData);  // not yet
    Mem::SetDebug(true);
    Mem::DecRef(pData);
    EXPECT_FALSE(Mem::DropRef(pData));
    EXPECT_TRUE(Mem::DropRef(pData));
    Mem::SetDebug(false);
    char sBlock[64];
    std::snprintf(sBlock, sizeof(sBlock), "VOK.Mem:reference_count(0x%016llX) = ",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pData)) -
                      Mem::HEADER_SIZE);
    const std::string sLine = sBlock;
    EXPECT_EQ(Msg_Capture::TakeDebug(), sLine + "2 - 1\n" + sLine + "1 - 1\n");
    Mem::Free(pData);
}

TEST(Mem, FailuresSayHowMuchIsInUse) {
    const Msg_Capture oCapture;
    const Mem_Probe oProbe;
    void* pData = Mem::Create(8);
    const std::string sInUse = " bytes failed, " + std::to_string(Mem::BytesInUse()) +
                               " bytes and " + std::to_string(Mem::BlocksInUse()) +
                               " blocks in use\n";
    EXPECT_EQ(Raised([] { (void)Mem::Create(SIZE_MAX); }),
              "allocation of 18446744073709551615" + sInUse);
    Mem_Probe::FailIn(1);
    EXPECT_EQ(Raised([] { (void)Mem::Create(5); }), "allocation of 5" + sInUse);
    Mem_Probe::FailIn(1);
    const std::string sError = Raised([&] { (void)Mem::Resize(pData, 50); });
    EXPECT_TRUE(sError.starts_with("reallocation of block 0x")) << sError;
    EXPECT_TRUE(sError.ends_with(" to 50" + sInUse)) << sError;
    EXPECT_EQ(Mem::SizeOf(pData), 8u);
    Mem::Free(pData);
}

TEST(Arr, SharedElementsAreCopiedBeforeTheyChange) {
    const struct {
        void (*pChange)(Arr<char>&);
        const char* sResult;
    } oRows[] = {
        {[](Arr<char>& o) { o.Add('x'); }, "abcx"},
        {[](Arr<char>& o) { o.Add(std::as_const(o)(0)); }, "abca"},
        {[](Arr<char>& o) { o.Add("xy", 2); }, "abcxy"},
        {[](Arr<char>& o) { o.Insert(0, 'x'); }, "xabc"},
        {[](Arr<char>& o) { o.Insert(3, std::as_const(o)(1)); }, "abcb"},
        {[](Arr<char>& o) { (o.Resize(2), o.Add('x')); }, "abx"},
        {[](Arr<char>& o) { (o.Truncate(1), o.Add('x')); }, "ax"},
        {[](Arr<char>& o) { (o.MakePrivate(), o(1) = 'x'); }, "axc"},
        {[](Arr<char>& o) { (o.Reserve(1), o(1) = 'x'); }, "axc"},
        {[](Arr<char>& o) { (o.Trim(), o(1) = 'x'); }, "axc"},
        {[](Arr<char>& o) { o.Clear(); }, ""},
        {[](Arr<char>& o) { o.Share(o); }, "abc"},
    };
    const u3_t uBlocks = Mem::BlocksInUse();
    for (const auto& oRow : oRows) {
        Arr<char> oArr;
        oArr.Reserve(20);
        oArr.Add("abc", 3);
        Arr<char> oShared;
        oShared.Add('z');
        oShared.Share(oArr);
        EXPECT_EQ(std::as_const(oShared).Beg(), std::as_const(oArr).Beg());
        oRow.pChange(oShared);
        EXPECT_EQ(Content(oShared), oRow.sResult);
        EXPECT_EQ(Content(oArr), "abc");
        oRow.pChange(oArr);  // by now perhaps the only owner
        EXPECT_EQ(Content(oArr), oRow.sResult);
        EXPECT_EQ(Content(oShared), oRow.sResult);
    }
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

// It needs memory for what does not fit into it, and for nothing else.
TEST(Arr, NearElementsLieInTheArray) {
    const Mem_Probe oProbe;
    const u3_t uBlocks = Mem::BlocksInUse();
    {
        Arr_Near<u2_t, 6> oArr;  // rounded up to whole words of 16 bytes
        ASSERT_EQ(oArr.Capacity(), 8u);
        for (u2_t u = 0; u < 8; ++u) oArr.Add(u);
        oArr.Trim();
        EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
        EXPECT_EQ(oArr.HeapBytes(), 0u);
        Mem_Probe::FailIn(1);
        EXPECT_THROW(oArr.Add(8), Msg_Exception);
        EXPECT_EQ(oArr.Size(), 8u);
        oArr.Add(8);
        EXPECT_EQ(Mem::BlocksInUse(), uBlocks + 1);
        EXPECT_EQ(oArr.HeapBytes(), 16 * sizeof(u2_t) + Mem::HEADER_SIZE);
        for (u2_t u = 0; u < 9; ++u) EXPECT_EQ(oArr(u), u);
    }
    {
        Arr_Near<char, 16> oNear;
        oNear.Add("near", 4);
        Arr<char> oFar;
        oFar.Add("farther", 7);
        oNear.Swap(oFar);
        EXPECT_EQ(Content(oNear) + " " + Content(oFar), "farther near");
        oFar.Clear();
        oFar.Add('x');
        oNear.Clear();
        oNear.Add('y');
        EXPECT_EQ(Content(oNear) + Content(oFar), "yx");
    }
    EXPECT_EQ(Mem::BlocksInUse(), uBlocks);
}

TEST(Arr, GrowsAndFailsWithoutLoss) {
    const Mem_Probe oProbe;
    Arr<u2_t> oArr;
    std::size_t uMoves = 0;
    for (u2_t u = 0; u < 1000000; ++u) {
        const std::size_t uCapacity = oArr.Capacity();
        oArr.Add(u);
        uMoves += oArr.Capacity() != uCapacity;
    }
    EXPECT_LT(uMoves, 40u);
    EXPECT_LE(oArr.Capacity(), oArr.Size() + oArr.Size() / 4);
    for (u2_t u = 0; u < 1000000; u += 997) ASSERT_EQ(oArr(u), u);
    oArr.Trim();
    const auto Fails = [&](auto&& oBody) {
        Mem_Probe::FailIn(1);
        EXPECT_THROW(oBody(), Msg_Exception);
    };
    Fails([&] { oArr.Add(1); });
    Fails([&] { oArr.Insert(5, 1); });
    Fails([&] { oArr.Resize(2000000); });
    // Sizes that do not fit into bytes are refused like any other.
    EXPECT_THROW(oArr.Reserve(SIZE_MAX / 4 + 2), Msg_Exception);
    EXPECT_THROW(oArr.Resize(SIZE_MAX), Msg_Exception);
    EXPECT_EQ(oArr.Size(), 1000000u);
    EXPECT_EQ(oArr(5), 5u);
    oArr.Resize(3);
    oArr.Resize(5);
    EXPECT_EQ(oArr(2), 2u);
    EXPECT_EQ(oArr(3) + oArr(4), 0u);
}

}  // namespace
}  // namespace vok

// SPDX-License-Identifier: MIT
// Archives that are not what they say.
#include "tests/zip/zip_support.h"

namespace vok {
namespace {

using namespace std::string_view_literals;

constexpr char INVALID[] = "invalid or corrupted zip buffer\n";

// What is said about a member of the archive in memory.
std::string About(const char* sMember, const char* sWhat) {
    return "member \""s + sMember + "\" of zip archive \"*** Zip_Archive ***\" " + sWhat + "\n";
}

// Two members, the second one stored.
std::string Sample() {
    Zip_Archive oZip("sample.zip", "w");
    AddMember(oZip, "one", Noise(300, 3));
    AddMember(oZip, "two", "stored bytes", ZIP_STORED);
    oZip.Close("end");
    return OnDisk("sample.zip");
}

enum class In { Local, Central, End, Both };

// Where the nth record of a kind begins.
std::size_t Find(const std::string& sZip, In eKind, unsigned uNth) {
    const char* const sMagic[] = {"PK\3\4", "PK\1\2", "PK\5\6"};
    std::size_t uAt = sZip.find(sMagic[static_cast<int>(eKind)]);
    while (uNth-- > 0) uAt = sZip.find(sMagic[static_cast<int>(eKind)], uAt + 1);
    return uAt;
}

// Bytes put into a record, or into both headers of a member.
struct Patch {
    In eKind;
    unsigned uNth;
    std::size_t uOffset;  // in the record, the local one for Both
    std::string_view sBytes;
    std::string sError = INVALID;
};

constexpr char SIZE[] = "has another size than it should";
constexpr std::string_view ONES = "\xFF\xFF\xFF\xFF";

TEST_F(Zip_Test, NamesWhatIsWrong) {
    const std::string sSample = Sample();
    ASSERT_EQ(ReadError(sSample), NOTHING_RAISED);
    const auto oOffset = [&](In eKind, unsigned uNth, std::size_t uBehind) {
        return Number(static_cast<u2_t>(Find(sSample, eKind, uNth) + uBehind));
    };
    const std::string sDirectory = oOffset(In::Central, 0, 0);
    const std::string sNearDirectory = oOffset(In::Central, 0, 0 - std::size_t{4});
    const std::string sBeside = oOffset(In::Local, 1, 1);
    const std::string sOther = oOffset(In::Local, 0, 0);
    const Patch oPatches[] = {
        // clang-format off
        // the end record: disks, counts, places, comment
        {In::End, 0, 4, "\1"},        {In::End, 0, 6, "\1"},        {In::End, 0, 8, "\1"},
        {In::End, 0, 8, "\1\0\1"sv}, {In::End, 0, 8, "\3\0\3"sv}, {In::End, 0, 8, "\0\0\0"sv},
        {In::End, 0, 8, ONES},        {In::End, 0, 12, ONES},       {In::End, 0, 16, ONES},
        {In::End, 0, 20, "\4"},
        // the directory
        {In::Central, 1, 0, "X"},          {In::Central, 0, 28, "\4"},
        {In::Central, 1, 28, ONES},        {In::Central, 1, 42, ONES},
        {In::Central, 1, 42, sDirectory},  {In::Central, 1, 42, sNearDirectory},
        {In::Central, 1, 42, sBeside},
        // local headers that disagree
        {In::Local, 0, 0, "X"},    {In::Local, 0, 6, "\1"},  {In::Local, 0, 8, "\0"sv},
        {In::Local, 0, 14, ONES},  {In::Local, 0, 18, "\1"}, {In::Local, 0, 22, "\1"},
        {In::Local, 0, 26, "\2"},  {In::Local, 0, 30, "ONE"}, {In::Local, 1, 28, ONES},
        // clang-format on
        {In::Central, 1, 8, "\1", About("two", "is encrypted")},
        {In::Central, 1, 8, "\0\x20"sv, About("two", "is encrypted")},
        {In::Central, 1, 10, "\x0C",
         About("two", "is compressed by method 12, which is not supported")},
        {In::Central, 1, 34, "\1", About("two", "lies on another disk")},
        {In::Central, 1, 24, "\x0D", About("two", SIZE)},
        {In::Central, 1, 42, sOther, About("one", "overlaps another one")},
        {In::Local, 0, 28, "\1", About("one", "overlaps another one")},
        // sizes on which both agree, and which are wrong
        {In::Both, 0, 18, "\x80\0"sv, About("one", "ends early")},
        {In::Both, 0, 22, "\x2B", About("one", SIZE)},
        {In::Both, 0, 22, "\x2D", About("one", SIZE)},
        // the data
        {In::Local, 0, 33, "\xFF", About("one", "is damaged")},
        {In::Local, 1, 33, "S",
         "CRC error in current file of zip archive \"*** Zip_Archive ***\"\n"},
    };
    for (const Patch& o : oPatches) {
        SCOPED_TRACE(std::to_string(static_cast<int>(o.eKind)) + "/" + std::to_string(o.uOffset));
        std::string sZip = sSample;
        const In eKind = o.eKind == In::Both ? In::Local : o.eKind;
        sZip.replace(Find(sSample, eKind, o.uNth) + o.uOffset, o.sBytes.size(), o.sBytes);
        if (o.eKind == In::Both) {
            sZip.replace(Find(sSample, In::Central, o.uNth) + o.uOffset + 2, o.sBytes.size(),
                         o.sBytes);
        }
        EXPECT_EQ(ReadError(sZip), o.sError);
        // The same on disk fails alike, with its own name.
        ToDisk("disk.zip", sZip);
        const std::string sOnDisk = Raised([] { (void)ReadZip("disk.zip"); });
        EXPECT_EQ(sOnDisk == "invalid or corrupted zip file \"disk.zip\"\n", o.sError == INVALID);
        EXPECT_TRUE(Has(sOnDisk, "\"disk.zip\""));
        EXPECT_EQ(File::OpenFiles(), 0u);
    }
    std::string sBad = sSample;
    sBad[Find(sSample, In::Local, 1)] = 'X';
    Zip_Archive oZip;
    oZip.Open(sBad.data(), sBad.size());
    oZip.LocateFile("two");
    EXPECT_EQ(Trail([&] { oZip.OpenCurrentFile(); }),
              "vok::Zip_Archive(two)\nvok::Zip_Archive::OpenCurrentFile\n");
}

TEST_F(Zip_Test, RefusesEveryTruncationAndTakesWhatLiesAround) {
    const std::string sSample = Sample();
    for (std::size_t u = 0; u < sSample.size(); ++u) {
        ASSERT_EQ(ReadError(sSample.substr(0, u)), INVALID) << u;
    }
    for (const std::size_t uSize : {1u, 21u, 70000u, 200000u}) {
        const std::string sJunk = Noise(uSize, 7);
        EXPECT_EQ(ReadError(sJunk), INVALID);
        EXPECT_EQ(ReadError(sJunk + sSample), NOTHING_RAISED);
        EXPECT_EQ(ReadError(sSample + sJunk), NOTHING_RAISED);
        ToDisk("x.zip", sJunk + sSample + sJunk);
        EXPECT_EQ(ReadZip("x.zip").size(), 2u);
    }
    // A member that is an archive is not taken for the archive that was cut.
    const std::string sOuter = ZipBytes({{"inner.zip", sSample}}, nullptr, ZIP_STORED);
    for (std::size_t u = 0; u < sOuter.size(); ++u) {
        ASSERT_EQ(ReadError(sOuter.substr(0, u)), INVALID) << u;
    }
}

// Whatever byte is changed: the same members, or an error. Never others.
TEST_F(Zip_Test, NoChangeOfAByteGoesUnseen) {
    const std::string sSample = Sample();
    Zip_Archive oGood("sample.zip");
    const Members oMembers = ReadAll(oGood);
    for (std::size_t u = 0; u < sSample.size(); ++u) {
        for (const int iFlip : {1, 0x80, 0xFF}) {
            std::string sZip = sSample;
            sZip[u] = static_cast<char>(sZip[u] ^ iFlip);
            Zip_Archive oZip;
            Members oRead;
            const std::string sError = Raised([&] {
                oZip.Open(sZip.data(), sZip.size());
                oRead = ReadAll(oZip);
            });
            if (sError == NOTHING_RAISED) {
                EXPECT_EQ(oRead, oMembers) << u;
            }
        }
    }
}

TEST_F(Zip_Test, CommentsWithSignaturesAndZip64) {
    const std::string sFake = "PK\5\6\0\0\0\0\1\0\1\0\x2E\0\0\0\0\0\0\0\0\0"s;
    Zip_Archive oZip("x.zip", "w");
    AddMember(oZip, "n", "bytes");
    oZip.Close("PK\5\6 PK\5\6 end");
    EXPECT_EQ(ReadZip("x.zip"), (Members{{"n", "bytes"}}));
    std::string sZip = ZipBytes({{"n", "bytes"}});
    sZip[sZip.size() - 2] = static_cast<char>(sFake.size());
    EXPECT_EQ(ReadError(sZip + sFake), NOTHING_RAISED) << "names no directory";

    std::string sLarge = ZipBytes({{"n", "bytes"}});
    const std::size_t uEnd = sLarge.size() - 22;
    sLarge.insert(uEnd, "PK\6\7"s + std::string(16, 0));
    for (const std::size_t uField : {0u, 8u, 16u}) {
        std::string sHere = sLarge;
        if (uField != 0) sHere.replace(uEnd + 20 + uField, 4, ONES);
        EXPECT_EQ(ReadError(sHere),
                  "zip archive \"*** Zip_Archive ***\" needs ZIP64, which is not supported\n");
    }
    {
        Zip_Archive oMade("y.zip", "w");
        oMade.OpenNewFile("n", {}, {}, "\1\0\x08\0\0\0\0\0\0\0\0\0"s);
    }
    sZip = OnDisk("y.zip");
    sZip.replace(sZip.find("PK\1\2") + 24, 4, ONES);
    EXPECT_EQ(ReadError(sZip), About("n", "needs ZIP64, which is not supported"));
}

// Small inputs that want much: limits and memory.
TEST_F(Zip_Test, BombsAreLimited) {
    const std::string sZip = ZipBytes({{"bomb", std::string(20'000'000, 0)}});
    EXPECT_LT(sZip.size(), 30000u);
    constexpr Limit BYTES{&Limits::m_uInflatedBytes, "inflated bytes", "m_uInflatedBytes"};
    constexpr Limit RATIO{&Limits::m_uInflationRatio, "inflation ratio", "m_uInflationRatio"};
    EXPECT_EQ(ReadError(sZip, AtMost(BYTES, 19'999'999)), Exceeded(BYTES, 19'999'999) + "\n");
    EXPECT_EQ(ReadError(sZip), NOTHING_RAISED);

    // Streams joined end to end count as one, and their ratio from 64 MiB on.
    Zip_Buf oBuf;
    oBuf.Open("wz");
    oBuf.Write(std::string(20'000'000, 0).data(), 20'000'000);
    oBuf.Close();
    const std::string sPacked = Joined(Texts(5, Content(oBuf.GetBuffer())));
    const auto oPast = [&](i3_t iTo, const Limits& oLimits) {
        oBuf.Open(sPacked.data(), sPacked.size(), oLimits);
        EXPECT_EQ(Failing([&] { oBuf.Seek(iTo); }), "");
        return Failing([&] { oBuf.Seek(iTo + 19'000'000); });
    };
    EXPECT_EQ(oPast(1'000'000, AtMost(BYTES, 19'999'999)), Exceeded(BYTES, 19'999'999));
    EXPECT_EQ(oPast(60'000'000, {}), Exceeded(RATIO, 200));
    EXPECT_EQ(oPast(60'000'000, AtMost(RATIO, 1100)), "");

    // A member that claims 4 GiB: memory follows what is there.
    std::string sLie = ZipBytes({{"n", Noise(1000, 8)}});
    sLie.replace(sLie.find("PK\3\4") + 22, 4, "\xFE\xFF\xFF\xFF");
    sLie.replace(sLie.find("PK\1\2") + 24, 4, "\xFE\xFF\xFF\xFF");
    const Mem_Probe oProbe;
    EXPECT_EQ(ReadError(sLie, Limits::Trusted()), About("n", SIZE));
    EXPECT_EQ(ReadError(sLie), Exceeded(BYTES, u3_t{1} << 31) + "\n");
    EXPECT_LT(Mem_Probe::Peak(), 2'000'000u);
}

}  // namespace
}  // namespace vok

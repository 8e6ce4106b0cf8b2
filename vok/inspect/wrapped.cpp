// SPDX-License-Identifier: MIT
#include "vok/inspect/wrapped.h"

#include <string_view>

namespace vok::inspect {

namespace {

using le::Load;
using std::string_view;

[[nodiscard]] u0_t ByteAt(string_view s, std::size_t u) noexcept {
    return u < s.size() ? static_cast<u0_t>(s[u]) : u0_t{0};
}

void PutRest(Fields& f) {
    if (f.Left() == 0 || f.IsOver()) return;
    f.PutMissing("end", Fault::BytesBehind,
                 Value("%llu", static_cast<unsigned long long>(f.Left())));
    f.SkipRest();
}

// A number of the trailer, and what it should be.
void PutSum(Fields& f, const char* sName, const char* sFormat, u2_t uSum, u2_t uRight,
            Fault eFault) {
    f.Put(sName, 4, Value(sFormat, uSum), uSum == uRight ? Fault::None : eFault);
}

}  // namespace

// ---- zlib ---------------------------------------------------------------------------

void PutZlib(Fields& f, const Limits& oLimits, Contents& oContents) {
    const string_view s = f.Look(2);
    const unsigned uCheck = 256u * ByteAt(s, 0) + ByteAt(s, 1);
    const bool bDictionary = (ByteAt(s, 1) & 0x20) != 0;
    const bool bGood = s.size() == 2 && uCheck % 31 == 0 && !bDictionary;
    f.Put("zlib header", 2, Value("deflate, level %d", ByteAt(s, 1) >> 6),
          bGood || s.size() < 2 ? Fault::None : Fault::WrongHeader);
    if (f.Left() == 0 || f.IsOver()) return;
    u3_t uTotal = 0;
    const Survey o = PutPacked(f, "compressed", f.Left(), oLimits, uTotal);
    oContents.aoPiece.push_back(o.oPiece);
    oContents.aoContent.push_back({0, 1, {}});
    if (o.eFault != Fault::None || f.IsOver()) return PutRest(f);
    const string_view sSum = f.Look(4);
    if (sSum.size() < 4) return f.Put("Adler-32", 4, {});
    u2_t uSum = 0;  // the high byte first
    for (const char c : sSum) uSum = uSum << 8 | static_cast<u0_t>(c);
    PutSum(f, "Adler-32", "%08x", uSum, o.uAdler, Fault::WrongSum);
    PutRest(f);
}

// ---- gzip ---------------------------------------------------------------------------

namespace {

constexpr std::size_t GZIP_SIZE = 10;
enum GzipFlag : u0_t { HAS_CRC = 2, HAS_EXTRA = 4, HAS_NAME = 8, HAS_COMMENT = 16 };

void PutTextWithNul(Fields& f, const char* sName) {
    const string_view s = f.Look(File_Window::CHUNK);
    const std::size_t uEnd = s.find('\0');
    const bool bEnds = uEnd != string_view::npos;
    f.Put(sName, bEnds ? uEnd + 1 : s.size(), Value::Text(),
          bEnds ? Fault::None : Fault::Unfinished);
}

void PutGzipHeader(Fields& f) {
    const string_view s = f.Look(GZIP_SIZE);
    const u0_t uFlags = ByteAt(s, 3);
    const u0_t uMethod = ByteAt(s, 2);
    const u2_t uTime = s.size() < GZIP_SIZE ? 0 : Load<u2_t>(s.data() + 4);
    f.Put("gzip magic", 2, {});
    f.Put("method", 1, Value(uMethod == Z_DEFLATED ? "deflate" : "?"),
          uMethod == Z_DEFLATED ? Fault::None : Fault::UnknownMethod);
    f.Put("flags", 1, Value("%02x", unsigned{uFlags}));
    f.Put("time", 4, Value("%u", uTime));
    f.Put("extra flags, system", 2, {});
    if ((uFlags & HAS_EXTRA) != 0) {
        u1_t uLength = 0;
        if (!f.Peek("length of extra", uLength)) return;
        f.Put("length of extra", 2, Value("%u", unsigned{uLength}));
        if (uLength != 0) f.Put("extra", uLength, {});
    }
    if ((uFlags & HAS_NAME) != 0) PutTextWithNul(f, "name");
    if ((uFlags & HAS_COMMENT) != 0) PutTextWithNul(f, "comment");
    if ((uFlags & HAS_CRC) != 0) f.Put("CRC-16 of header", 2, {});
}

}  // namespace

void PutGzip(Fields& f, const Limits& oLimits, Contents& oContents) {
    u3_t uTotal = 0;
    while (f.Look(2) == "\x1f\x8b" && !f.IsOver()) {
        PutGzipHeader(f);
        if (f.Left() == 0 || f.IsOver()) break;
        const Survey o = PutPacked(f, "compressed", f.Left(), oLimits, uTotal);
        oContents.aoPiece.push_back(o.oPiece);
        if (o.eFault != Fault::None) break;
        u2_t uWord = 0;
        if (!f.Peek("CRC-32", uWord)) break;
        PutSum(f, "CRC-32", "%08x", uWord, o.uCrc, Fault::WrongSum);
        if (!f.Peek("size", uWord)) break;
        PutSum(f, "size", "%u", uWord, static_cast<u2_t>(o.oPiece.uPlain), Fault::WrongSize);
    }
    oContents.aoContent.push_back({0, oContents.aoPiece.size(), {}});
    PutRest(f);
}

}  // namespace vok::inspect

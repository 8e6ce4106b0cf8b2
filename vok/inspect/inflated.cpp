// SPDX-License-Identifier: MIT
#include "vok/inspect/inflated.h"

#include "vok/base/msg.h"

namespace vok::inspect {

namespace {

constexpr int RAW_WINDOW = -15;
constexpr std::size_t CHUNK = 16 * 1024;

[[nodiscard]] const Bytef* BytesOf(const char* p) noexcept {
    return reinterpret_cast<const Bytef*>(p);
}

}  // namespace

// ---- inflating ----------------------------------------------------------------------

Inflater::Inflater() {
    if (::inflateInit2(&m_oZ, RAW_WINDOW) != Z_OK) Msg::OutOfMemory();
}

Inflater::~Inflater() {
    ::inflateEnd(&m_oZ);
}

void Inflater::Restart() noexcept {
    ::inflateReset(&m_oZ);
    m_eState = State::Going;
}

std::size_t Inflater::Run(std::string_view& sIn, char* pOut, std::size_t uRoom) {
    if (m_eState != State::Going) return 0;
    // zlib takes the input without const and leaves it alone.
    m_oZ.next_in = const_cast<Bytef*>(BytesOf(sIn.data()));
    m_oZ.avail_in = static_cast<uInt>(std::min(sIn.size(), CHUNK));
    m_oZ.next_out = reinterpret_cast<Bytef*>(pOut);
    m_oZ.avail_out = static_cast<uInt>(std::min(uRoom, CHUNK));
    const uInt uIn = m_oZ.avail_in;
    const uInt uOut = m_oZ.avail_out;
    const int iResult = ::inflate(&m_oZ, Z_NO_FLUSH);
    if (iResult == Z_MEM_ERROR) Msg::OutOfMemory();
    if (iResult == Z_STREAM_END) {
        m_eState = State::Complete;
    } else if (iResult != Z_OK && iResult != Z_BUF_ERROR) {
        m_eState = State::Damaged;
    }
    sIn.remove_prefix(uIn - m_oZ.avail_in);
    return uOut - m_oZ.avail_out;
}

Survey PutPacked(Fields& f, const char* sName, u3_t uMost, const Limits& oLimits, u3_t& uTotal) {
    Survey o;
    o.oPiece.uOffset = f.Offset();
    uMost = std::min(uMost, f.Left());
    Inflater oInflater;
    Arr<char> oRoom;
    oRoom.Resize(CHUNK);
    f.BeginLong();
    const auto oUsed = [&] { return f.Offset() - o.oPiece.uOffset; };
    while (oInflater.GetState() == Inflater::State::Going) {
        std::string_view sIn = f.Look(std::min<u3_t>(CHUNK, uMost - oUsed()));
        const std::size_t uSeen = sIn.size();
        const std::size_t uMade = oInflater.Run(sIn, oRoom.Beg(), CHUNK);
        if (uMade == 0 && uSeen == sIn.size() && oInflater.GetState() == Inflater::State::Going) {
            o.eFault = Fault::Ends;
            break;
        }
        o.uCrc = static_cast<u2_t>(::crc32_z(o.uCrc, BytesOf(oRoom.Beg()), uMade));
        o.uAdler = static_cast<u2_t>(::adler32_z(o.uAdler, BytesOf(oRoom.Beg()), uMade));
        o.oPiece.uPlain += uMade;
        f.Drop(uSeen - sIn.size());
        uTotal += uMade;
        if (uTotal > oLimits.m_uInflatedBytes) {
            oLimits.RaiseExceeded(&Limits::m_uInflatedBytes);
        }
        const u3_t uRatio = std::max<u3_t>(oLimits.m_uInflationRatio, 1);
        if (uTotal > Limits::FREE_INFLATION && uTotal / uRatio > f.Offset()) {
            oLimits.RaiseExceeded(&Limits::m_uInflationRatio);
        }
    }
    if (oInflater.GetState() == Inflater::State::Damaged) o.eFault = Fault::Damaged;
    o.oPiece.uStored = oUsed();
    f.EndLong(sName, Value("%llu bytes inflated", static_cast<unsigned long long>(o.oPiece.uPlain)),
              o.eFault);
    return o;
}

Survey PutStored(Fields& f, const char* sName, u3_t uSize) {
    Survey o;
    const u3_t uHere = std::min(uSize, f.Left());
    o.oPiece = {f.Offset(), uHere, uHere, false};
    if (uHere < uSize) o.eFault = Fault::Ends;
    f.BeginLong();
    for (u3_t uLeft = uHere; uLeft != 0;) {
        const std::string_view s = f.Look(std::min<u3_t>(uLeft, CHUNK));
        if (s.empty()) break;
        o.uCrc = static_cast<u2_t>(::crc32_z(o.uCrc, BytesOf(s.data()), s.size()));
        uLeft -= s.size();
        f.Drop(s.size());
    }
    f.EndLong(sName, {}, o.eFault);
    return o;
}

// ---- the plain bytes ----------------------------------------------------------------

Plain_Stream::Plain_Stream(File_Stream& oIn, i3_t iStart, const Piece* pBegin, const Piece* pEnd)
    : m_oIn(oIn), m_iStart(iStart), m_p(pBegin), m_pEnd(pEnd) {
    if (m_p != m_pEnd) StartPiece();
}

void Plain_Stream::StartPiece() {
    m_uLeft = m_p->uPlain;
    m_uUnread = m_p->uStored;
    m_sIn = {};
    m_oInflater.Restart();
    m_oIn.Seek(m_iStart + static_cast<i3_t>(m_p->uOffset));
}

std::size_t Plain_Stream::Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) {
    return ReadInChunks(oBuffer, uCount, bAppend);
}

std::size_t Plain_Stream::Read(void* pTarget, std::size_t uCount, bool bAllowShort) {
    char* const p = static_cast<char*>(pTarget);
    std::size_t uDone = 0;
    while (uDone < uCount && m_p != m_pEnd) {
        const auto uPart = static_cast<std::size_t>(std::min<u3_t>(uCount - uDone, m_uLeft));
        const std::size_t uRead = uPart != 0 ? ReadPiece(p + uDone, uPart) : 0;
        uDone += uRead;
        m_uLeft -= uRead;
        if (uRead == 0 && ++m_p != m_pEnd) StartPiece();
    }
    if (uDone < uCount && !bAllowShort) Msg::UnexpectedEndOfFile(Name(), 0);
    return uDone;
}

std::size_t Plain_Stream::ReadPiece(char* pTarget, std::size_t uCount) {
    if (!m_p->bPacked) return m_oIn.Read(pTarget, uCount, true);
    while (true) {
        if (m_sIn.empty() && m_uUnread != 0) {
            m_oRoom.Resize(CHUNK);
            const auto uWanted = static_cast<std::size_t>(std::min<u3_t>(m_uUnread, CHUNK));
            const std::size_t uRead = ReadUpTo(m_oIn, m_oRoom.Beg(), uWanted);
            m_sIn = {m_oRoom.Beg(), uRead};
            m_uUnread = uRead != 0 ? m_uUnread - uRead : 0;
        }
        const std::size_t uBefore = m_sIn.size();
        const std::size_t uMade = m_oInflater.Run(m_sIn, pTarget, uCount);
        if (uMade != 0) return uMade;
        const bool bStuck = m_sIn.size() == uBefore && (uBefore != 0 || m_uUnread == 0);
        if (bStuck || m_oInflater.GetState() != Inflater::State::Going) return 0;
    }
}

std::size_t Plain_Stream::Write(const void*, std::size_t) {
    Msg::FileIsNotOpenForWrite(Name());
}

void Plain_Stream::Seek(i3_t iOffset, int iWhence) {
    Msg::FileSeekFailed(iOffset, iWhence, 0);
}

}  // namespace vok::inspect

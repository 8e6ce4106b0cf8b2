// SPDX-License-Identifier: MIT
#include "serializer/fields/record_in.h"

#include <algorithm>
#include <array>

#include "serializer/fields/convert.h"
#include "serializer/utilities.h"
#include "vok/base/date.h"

namespace Velmar::Q7R::Serializer::fields {

RecordIn::RecordIn(std::span<const Byte> oDocument, bool bRefuseUnknown) noexcept
    : m_bRefuseUnknown(bRefuseUnknown) {
    const char* const p = reinterpret_cast<const char*>(oDocument.data());
    vok::dgraph::Version oVersion;
    if (oDocument.size() < vok::dgraph::HEADER_SIZE ||
        !vok::dgraph::LoadHeader(p, oDocument.size(), oVersion) || oVersion.iMajor != 1) {
        m_bFailed = true;
        return;
    }
    m_p = p + vok::dgraph::HEADER_SIZE;
    m_pEnd = p + oDocument.size();
}

void RecordIn::Fail() noexcept {
    m_bFailed = true;
    m_uPending = 0;
    m_p = m_pEnd;
}

const char* RecordIn::FailValue() noexcept {
    Fail();
    return nullptr;
}

// ---- finding --------------------------------------------------------------------

bool RecordIn::ParseHead(Head& o) const noexcept {
    if (Left() < 4) return false;
    const std::size_t uStep = vok::le::Load<vok::u2_t>(m_p);
    // Behind it a type code.
    if (uStep > MOST_BYTES || Left() - 4 <= uStep) return false;
    o.pCode = m_p + 4 + uStep;
    return o.oStep.Parse(m_p + 4, uStep);
}

bool NameOrder::Takes(std::string_view sName, vok::u2_t uIndex) noexcept {
    const bool bSame = m_bAny && sName == m_sName;
    if (m_sName.data() == nullptr ||
        (bSame ? uIndex != m_uIndex + 1 : sName <= m_sName || uIndex != 0)) {
        return false;
    }
    m_sName = sName;
    m_uIndex = uIndex;
    m_bAny = true;
    return true;
}

bool RecordIn::Look(const Place& oPlace) noexcept {
    // Most that are not there have a record behind them that differs in its first letter.
    const auto oByte = [](char c) { return static_cast<unsigned char>(c); };
    if (Left() > 4 && oByte(m_p[4]) > oByte(oPlace.sName[0]) && oByte(oPlace.sName[0]) != '\b')
        return false;
    // The order of names is not that of their escapes.
    if (oPlace.sName.find('\b') != std::string_view::npos) return Fail(), false;
    NameOrder oOrder(oPlace.sBefore);
    for (Head o; m_uPending != 0;) {
        if (!ParseHead(o)) return Fail(), false;
        if (o.oStep.sName > oPlace.sName) return false;
        if (o.oStep.sName == oPlace.sName) {
            if (o.oStep.uIndex != 0) return Fail(), false;
            m_p = o.pCode;
            return true;
        }
        if (!SkipUnknown(o, oOrder)) return Fail(), false;
    }
    return false;
}

const char* RecordIn::FetchOther(const Place& oPlace, vok::dgraph::Code eCode,
                                 std::size_t uSize) noexcept {
    if (m_uPending == 0) return nullptr;
    // As expected but for its value, or not.
    return Look(oPlace) ? Value(eCode, uSize) : nullptr;
}

void RecordIn::SkipRest(std::string_view sBefore) noexcept {
    NameOrder oOrder(sBefore);
    for (Head o; m_uPending != 0;) {
        if (!ParseHead(o) || !SkipUnknown(o, oOrder)) return Fail();
    }
}

bool RecordIn::SkipUnknown(const Head& o, NameOrder& oOrder) noexcept {
    if (m_bRefuseUnknown || !oOrder.Takes(o.oStep.sName, o.oStep.uIndex)) return false;
    m_p = o.pCode;
    --m_uPending;
    return SkipValue();
}

void RecordIn::CheckBehind(const Place& oPlace) noexcept {
    Head o;
    if (!ParseHead(o) || oPlace.sName.find('\b') != std::string_view::npos ||
        o.oStep.sName <= oPlace.sName)
        Fail();
}

bool RecordIn::SkipValue() noexcept {
    struct Level {
        vok::u2_t uPending;
        NameOrder oOrder = NameOrder();
    };
    std::array<Level, 16> aoLevel{};
    std::size_t uLevels = 0;
    vok::u2_t uSuccessors = 0;
    if (!SkipOneValue(uSuccessors)) return false;
    for (;;) {
        if (uSuccessors != 0) {
            if (uLevels == aoLevel.size()) return false;
            aoLevel[uLevels++] = Level{uSuccessors, NameOrder()};
        }
        while (uLevels != 0 && aoLevel[uLevels - 1].uPending == 0) --uLevels;
        if (uLevels == 0) return true;
        Head o;
        Level& oLevel = aoLevel[uLevels - 1];
        if (!ParseHead(o) || !oLevel.oOrder.Takes(o.oStep.sName, o.oStep.uIndex)) return false;
        --oLevel.uPending;
        m_p = o.pCode;
        if (!SkipOneValue(uSuccessors)) return false;
    }
}

bool RecordIn::SkipOneValue(vok::u2_t& uSuccessors) noexcept {
    const auto uCode = static_cast<vok::u0_t>(*m_p++);
    std::size_t uSize = vok::dgraph::FixedSize(uCode);
    if (uSize == 0 || uCode == vok::dgraph::CODE_LINK || Left() < uSize) return false;
    const bool bBlock = uCode == vok::dgraph::CODE_STRING || uCode == vok::dgraph::CODE_BINARY;
    const std::size_t uNumber = uSize == 4 ? vok::le::Load<vok::u2_t>(m_p) : 0;
    uSuccessors = uCode == vok::dgraph::CODE_NONE ? static_cast<vok::u2_t>(uNumber) : 0;
    if (bBlock) uSize += uNumber;
    if (uSuccessors > 0x7FFFFFFF || uSize > MOST_BYTES || Left() < uSize) return false;
    m_p += uSize;
    return true;
}

// ---- values ---------------------------------------------------------------------

const char* RecordIn::Block(vok::dgraph::Code eCode, std::size_t& uSize) noexcept {
    if (Left() < 5 || *m_p != static_cast<char>(eCode)) return Fail(), nullptr;
    uSize = vok::le::Load<vok::u2_t>(m_p + 1);
    if (uSize > MOST_BYTES || uSize > Left() - 5) return Fail(), nullptr;
    const char* const p = m_p + 5;
    m_p = p + uSize;
    --m_uPending;
    return p;
}

void RecordIn::Get(std::string_view& sText) noexcept {
    std::size_t uSize = 0;
    const char* const p = Block(vok::dgraph::CODE_STRING, uSize);
    if (p == nullptr) return;
    if (uSize == 0 || p[uSize - 1] != 0 || !IsTreeText({p, uSize - 1})) return Fail();
    sText = {p, uSize - 1};
}

void RecordIn::Get(std::string& sText) {
    std::string_view s;
    Get(s);
    if (!m_bFailed) sText.assign(s);
}

void RecordIn::Get(std::u16string& sText) {
    std::string_view s;
    Get(s);
    if (!m_bFailed) sText = Utilities::Utf8ToString(s).Text();
}

bool RecordIn::GetLong(vok::u3_t& u, bool bSigned) noexcept {
    if (Left() != 0 && *m_p == vok::dgraph::CODE_STRING) {
        std::string_view s;
        Number oNumber;
        Get(s);
        if (m_bFailed) return false;
        if (!ParseNumber(s, bSigned, oNumber) || (oNumber.bNegative && !bSigned))
            return Fail(), false;
        u = oNumber.uBits;
        return true;
    }
    if (Left() != 0 && *m_p == vok::dgraph::CODE_INTEGER) {
        const char* const p = Value(vok::dgraph::CODE_INTEGER, 4);
        if (p == nullptr) return false;
        const auto i = vok::le::Load<vok::i2_t>(p);
        if (i < 0 && !bSigned) return Fail(), false;
        u = static_cast<vok::u3_t>(std::int64_t{i});
        return true;
    }
    const char* const p = Value(vok::dgraph::CODE_LONG, 8);
    if (p != nullptr) u = vok::le::Load<vok::u3_t>(p);
    return p != nullptr;
}

bool RecordIn::GetDate(std::int64_t& iTicks, std::int64_t iPeriod, std::int64_t iLowest,
                       std::uint64_t uHighest) noexcept {
    const char* const p = Value(vok::dgraph::CODE_DATE, 8);
    if (p == nullptr) return false;
    const double dSeconds = vok::SecondsOfDays(std::bit_cast<double>(vok::le::Load<vok::u3_t>(p)));
    if (!TicksOf(dSeconds, iPeriod, iTicks) || !Number::Of(iTicks).IsWithin(iLowest, uHighest)) {
        return Fail(), false;
    }
    return true;
}

bool RecordIn::GetBytes(std::span<const Byte>& oBytes) noexcept {
    std::size_t uSize = 0;
    const char* const p = Block(vok::dgraph::CODE_BINARY, uSize);
    if (p != nullptr) oBytes = {reinterpret_cast<const Byte*>(p), uSize};
    return p != nullptr;
}

}  // namespace Velmar::Q7R::Serializer::fields

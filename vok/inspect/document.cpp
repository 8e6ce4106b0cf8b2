// SPDX-License-Identifier: MIT
#include "vok/inspect/document.h"

#include <algorithm>
#include <bit>

#include "vok/base/date.h"
#include "vok/base/number.h"
#include "vok/inspect/names.h"

namespace vok::inspect {

using namespace dgraph;  // NOLINT: the names of its format
using std::string_view;

namespace {

// The least that a record takes: a length, the name and the index of "a[0]", a code without value.
constexpr std::size_t SHORTEST_RECORD = 4 + 4 + 1;

// By type code.
constexpr const char* TYPES[] = {
    "none: successors", "Integer", "Float",  "Double", "Char", "String",
    "Boolean",          "Link",    "Binary", "Date",   "Long", "Quad"};

[[nodiscard]] unsigned long long Wide(u3_t u) noexcept {
    return u;
}
[[nodiscard]] Value Real(double dValue) {
    char s[NUMBER_ROOM];
    FormatReal(dValue, s);
    return Value("%s", s);
}
[[nodiscard]] Value DateText(double dDays) {
    char s[128];
    const std::size_t uLength = FormatDate(SecondsOfDays(dDays), 'T', s);
    return Value("%.*sZ", static_cast<int>(uLength), s);
}

}  // namespace

bool Document::PutHeader() {
    const string_view s = f.Look(HEADER_SIZE + Plausible::AHEAD);
    Version oVersion;
    const bool bMagic = LoadHeader(s.data(), std::min(s.size(), HEADER_SIZE), oVersion);
    const bool bRecords =
        s.size() > HEADER_SIZE && Plausible(false).IsRecords(s.substr(HEADER_SIZE));
    f.Put(MAGIC_FIELD, MAGIC_SIZE, Value::Text(), bMagic ? Fault::None : Fault::WrongMagic);
    const string_view sVersion = f.Look(3);
    const auto oByte = [&](std::size_t u) {
        return u < sVersion.size() ? static_cast<u0_t>(sVersion[u]) : 0;
    };
    const int iMajor = oByte(0);
    m_iMinor = oByte(1);
    const bool bDump = bMagic && iMajor == 2 && !bRecords;
    const bool bKnown = !bMagic || iMajor == 1 || bDump;
    f.Put(VERSION_FIELD, 3, Value("%d.%d.%d", iMajor, m_iMinor, oByte(2)),
          bKnown ? Fault::None : Fault::WrongVersion);
    f.Put("reserved", HEADER_SIZE - MAGIC_SIZE - 3, {});
    return !bDump;
}

void Document::PutWithoutHeader() {
    Plausible oPlausible(false);
    const string_view s = f.Look(HEADER_SIZE + Plausible::AHEAD);
    if (s.size() > HEADER_SIZE && oPlausible.IsRecords(s.substr(HEADER_SIZE))) {
        (void)PutHeader();
        return PutRecords();
    }
    m_oPlausible.emplace(false);
    f.PutMissing(MAGIC_FIELD, Fault::UnknownForm);
    if (!Resume()) return;
    m_oPlace.Reopen();
    PutRecords();
}

void Document::PutRecords() {
    m_oPlausible.emplace(m_iMinor < 3);
    while (!f.IsOver()) {
        if (!m_oPlace.CloseLevels()) {
            if (f.Left() == 0) return;
            f.SetPlace({}, 0);
            f.PutMissing("end", Fault::BytesBehind, Value("%llu", Wide(f.Left())));
            if (!Resume()) return;
            m_oPlace.Reopen();
            continue;
        }
        if (f.Left() == 0) {
            return PutMissingRecords();
        }
        if (PutRecord() || f.IsOver() || !Resume()) continue;
        // What comes where the root is damaged is below it.
        if (!m_oPlace.HasRoot()) m_oPlace.Reopen();
    }
}

void Document::PutMissingRecords() {
    f.SetPlace({}, 0);
    if (!m_oPlace.IsCounted()) return;
    f.PutMissing("end", Fault::RecordsMissing, Value("%llu", Wide(m_oPlace.Pending())));
}

// ---- a record -----------------------------------------------------------------------

bool Document::PutRecord() {
    f.SetPlace({}, m_oPlace.Depth());
    if (!PutStep()) return false;
    const string_view s = f.Look(1);
    if (s.empty()) {
        f.PutMissing(TYPE_CODE, Fault::Ends);
        return true;
    }
    const auto uCode = static_cast<u0_t>(s[0]);
    const bool bKnown = uCode < std::size(TYPES);
    f.Put(TYPE_CODE, 1,
          bKnown ? Value(TYPES[uCode]) : Value("%u, which is none: no value", unsigned{uCode}));
    return PutValue(uCode);
}

Fault Document::FaultOfLength(i2_t iLength) const noexcept {
    if (iLength < 0) return Fault::NegativeLength;
    if (static_cast<u3_t>(iLength) > f.Left() - 4) return Fault::BeyondEnd;
    if (static_cast<u3_t>(iLength) > m_oLimits.m_uTextBytes) return Fault::TooLong;
    return Fault::None;
}

bool Document::PutStep() {
    i2_t iLength = 0;
    if (!f.Peek(STEP_LENGTH, iLength)) return true;
    Fault eFault = FaultOfLength(iLength);
    if (iLength == 0) eFault = Fault::EmptyStep;
    if (eFault != Fault::None) {
        f.Put(STEP_LENGTH, 4, Value("%d", iLength), eFault);
        return false;
    }
    const auto uLength = static_cast<std::size_t>(iLength);
    const char* sFault = "";
    // No writer puts a NUL into a step, but somebody may have counted one behind it: readers take
    // it up to its first. The beginning tells, so that what is no step is not looked at as a whole.
    const std::size_t uFirst = std::min<std::size_t>(uLength, File_Window::CHUNK);
    if (f.Look(4 + uFirst).find('\0', 4) < 4 + uLength - 1) {
        f.Put(STEP_LENGTH, 4, Value("%d", iLength), Fault::NulInStep);
        return false;
    }
    {
        const string_view s = f.Look(4 + uLength + Plausible::AHEAD);
        if (s.size() < 4 + uLength) return false;  // a file that was cut meanwhile
        const string_view sStep = s.substr(4, uLength);
        const StepFault eStep = m_oStep.TryParse(sStep);
        sFault = dgraph::TextOf(eStep);
        // Either the text is damaged, or its length: then nothing fits behind it.
        if (eStep != StepFault::None && !m_oPlausible->IsValueAndRecords(s.substr(4 + uLength))) {
            f.Put(STEP_LENGTH, 4, Value("%d", iLength), sFault);
            return false;
        }
        if (eStep != StepFault::None) {
            m_oPlace.NextUnnamed();
        } else if (!m_oPlace.Next(m_oStep.Name(), m_oStep.Index())) {
            sFault = TextOf(Fault::IndexTaken);
        }
    }
    f.SetPlace(m_oPlace.Path(), m_oPlace.Depth());
    f.Put(STEP_LENGTH, 4, Value("%d", iLength));
    f.Put(STEP, uLength, Value::Text(), sFault);
    return true;
}

bool Document::PutValue(u0_t uCode) {
    switch (uCode) {
        case CODE_NONE: return PutCount();
        case CODE_INTEGER: return PutNumber<i2_t>([](i2_t i) { return Value("%d", i); });
        case CODE_FLOAT:
            return PutNumber<u2_t>([](u2_t u) { return Real(std::bit_cast<float>(u)); });
        case CODE_DOUBLE:
            return PutNumber<u3_t>([](u3_t u) { return Real(std::bit_cast<double>(u)); });
        case CODE_CHAR: return PutNumber<u0_t>([](u0_t u) { return Value("%d", int{u}); });
        case CODE_BOOLEAN:
            return PutNumber<u0_t>([](u0_t u) { return Value(u != 0 ? "true" : "false"); });
        case CODE_DATE:
            return PutNumber<u3_t>([](u3_t u) { return DateText(std::bit_cast<double>(u)); });
        case CODE_LONG: return PutNumber<u3_t>([](u3_t u) { return Value("%llu", Wide(u)); });
        case CODE_QUAD: return PutQuad();
        case CODE_STRING: return PutBlock(TEXT_LENGTH, TEXT, true, false);
        case CODE_BINARY: return PutBlock("length of block", "block", false, false);
        case CODE_LINK:
            return PutBlock("length of name", "name of target", true, true) &&
                   PutBlock("length of path", TARGET_PATH, true, true);
        default: return true;
    }
}

template <class T, class Format>
bool Document::PutNumber(const Format& oFormat) {
    T tNumber{};
    if (f.Peek("value", tNumber)) f.Put("value", sizeof(T), oFormat(tNumber));
    return true;
}

bool Document::PutCount() {
    u2_t uCount = 0;
    if (!f.Peek("count", uCount)) return true;
    Fault eFault = Fault::None;
    // A count that is wrong does not hide the records behind it. How many there are is open then.
    if (uCount > (f.Left() - 4) / SHORTEST_RECORD) {
        eFault = Fault::TooMany;
    } else if (uCount != 0 && m_oPlace.Levels() >= m_oLimits.m_uDepth) {
        eFault = Fault::TooDeep;
    }
    f.Put("count", 4, Value("%u", uCount), eFault);
    if (eFault == Fault::TooMany) m_oPlace.LoseRecords();
    if (eFault == Fault::TooDeep) {
        m_oPlace.LoseRecords();
        return false;
    }
    if (uCount != 0) m_oPlace.Open(uCount);
    return true;
}

bool Document::PutBlock(const char* sLength, const char* sBytes, bool bText, bool bTarget) {
    i2_t iLength = 0;
    if (!f.Peek(sLength, iLength)) return true;
    Fault eFault = FaultOfLength(iLength);
    if (eFault == Fault::None && bText && !bTarget && IsTextLost(static_cast<u3_t>(iLength))) {
        eFault = Fault::Unfinished;
    }
    const bool bLost = eFault != Fault::None;
    if (bTarget && iLength == 0) eFault = Fault::EmptyTarget;
    f.Put(sLength, 4, Value("%d", iLength), eFault);
    if (bLost) return false;
    if (iLength != 0) {
        const Value oNone("");
        f.Put(sBytes, static_cast<u3_t>(iLength), bText ? Value::Text() : oNone);
    }
    return true;
}

// Whether a text that does not end with its first NUL has records behind that, or none behind
// itself: then its length is wrong. Of long ones this is not asked.
bool Document::IsTextLost(u3_t uLength) {
    if (uLength == 0 || uLength > Plausible::AHEAD) return false;
    string_view s = f.Look(4 + uLength + Plausible::AHEAD);
    if (s.size() < 4 + uLength) return false;
    s.remove_prefix(4);
    const std::size_t uNul = s.find('\0');
    if (uNul == uLength - 1) return false;
    if (uNul < uLength && m_oPlausible->IsRecords(s.substr(uNul + 1))) return true;
    const string_view sBehind = s.substr(uLength);
    return !sBehind.empty() && !m_oPlausible->IsRecords(sBehind);
}

// Minor versions before 3 have a text, which readers do not expect.
bool Document::PutQuad() {
    const string_view s = f.Look(4 + LONGEST_TEXT_QUAD);
    if (const std::size_t uText = m_iMinor < 3 ? TextQuadLength(s) : 0; uText != 0) {
        f.Put(TEXT_LENGTH, 4, Value("%u", static_cast<unsigned>(uText)), Fault::OldQuad);
        f.Put(TEXT, uText, Value::Text());
        return true;
    }
    if (s.size() < 16) {
        f.Put("value", 16, {});
        return true;
    }
    const char* const p = s.data();
    f.Put("value", 16,
          Value("%u,%u,%u,%u", Load<u2_t>(p), Load<u2_t>(p + 4), Load<u2_t>(p + 8),
                Load<u2_t>(p + 12)));
    return true;
}

// ---- behind a fault -----------------------------------------------------------------

bool Document::Resume() {
    f.SetPlace({}, 0);
    f.BeginLong();
    bool bFound = false;
    while (!bFound && f.Left() != 0) {
        const string_view s = f.Look(2 * Plausible::AHEAD);
        const std::size_t uEnd = s.size() < f.Left() ? s.size() - Plausible::AHEAD : s.size();
        std::size_t u = 0;
        while (u < uEnd && !m_oPlausible->IsRecords(s.substr(u))) ++u;
        bFound = u < uEnd;
        f.Drop(u);
    }
    f.EndLong("", {}, Fault::None);
    m_oPlace.LoseRecords();
    return bFound;
}

}  // namespace vok::inspect

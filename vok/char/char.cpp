// SPDX-License-Identifier: MIT
#include "vok/char/char.h"

#include <iterator>

#include "vok/base/str.h"
#include "vok/base/utf8.h"
#include "vok/base/where.h"
#include "vok/char/tables.h"

namespace vok::Char {

using namespace detail;

namespace {

// The place of a name, short or long; uCount when there is none such.
[[nodiscard]] std::size_t Find(const Name* pNames, std::size_t uCount, std::string_view sName) {
    std::size_t u = 0;
    while (u < uCount && sName != pNames[u].m_sShort && sName != pNames[u].m_sLong) ++u;
    return u;
}

[[nodiscard]] u2_t Moved(u2_t uChar, i2_t Case::*pStep) noexcept {
    return uChar + static_cast<u2_t>(CASES[PropertiesOf(uChar).m_uCase].*pStep);
}

[[nodiscard]] bool Has(u2_t uChar, u0_t uFlag) noexcept {
    return (PropertiesOf(uChar).m_uFlags & uFlag) != 0;
}

}  // namespace

Category GeneralCategory(u2_t uChar) noexcept {
    return static_cast<Category>(PropertiesOf(uChar).m_uCategory);
}

const char* CategoryName(Category eCategory) noexcept {
    const auto u = static_cast<std::size_t>(eCategory);
    return CATEGORIES[u < std::size(CATEGORIES) ? u : 0].m_sShort;
}

Category CategoryOfName(std::string_view sName) {
    return Where("vok::Char::CategoryOfName", [&] {
        const std::size_t u = Find(CATEGORIES, std::size(CATEGORIES), sName);
        if (u == std::size(CATEGORIES)) Msg::UnknownUnicodeGeneralCategory(Str(sName).CStr());
        return static_cast<Category>(u);
    });
}

Script ScriptOf(u2_t uChar) noexcept {
    return static_cast<Script>(PropertiesOf(uChar).m_uScript);
}

const char* ScriptName(Script eScript) noexcept {
    const auto u = static_cast<std::size_t>(eScript);
    return SCRIPTS[u < SCRIPT_COUNT ? u : 0].m_sLong;
}

Script ScriptOfName(std::string_view sName) {
    return Where("vok::Char::ScriptOfName", [&] {
        const std::size_t u = Find(SCRIPTS, SCRIPT_COUNT, sName);
        if (u == SCRIPT_COUNT) Msg::UnknownUnicodeScriptName(Str(sName).CStr());
        return static_cast<Script>(u);
    });
}

u0_t CombiningClass(u2_t uChar) noexcept {
    return PropertiesOf(uChar).m_uCombining;
}

u2_t ToUpper(u2_t uChar) noexcept {
    return Moved(uChar, &Case::m_iUpper);
}

u2_t ToLower(u2_t uChar) noexcept {
    return Moved(uChar, &Case::m_iLower);
}

u2_t ToTitle(u2_t uChar) noexcept {
    return Moved(uChar, &Case::m_iTitle);
}

u2_t ToFolded(u2_t uChar) noexcept {
    return Moved(uChar, &Case::m_iFold);
}

bool IsIdStart(u2_t uChar) noexcept {
    return Has(uChar, ID_START);
}

bool IsIdContinue(u2_t uChar) noexcept {
    return Has(uChar, ID_CONTINUE);
}

bool IsIdentifier(std::string_view sText) noexcept {
    const char* p = sText.data();
    const char* const pEnd = p + sText.size();
    u0_t uWanted = ID_START;
    while (p != pEnd) {
        if (Utf8SequenceLength(p, static_cast<std::size_t>(pEnd - p)) == 0) return false;
        if (!Has(DecodeUtf8(p, pEnd), uWanted)) return false;
        uWanted = ID_CONTINUE;
    }
    return uWanted == ID_CONTINUE;
}

unsigned Columns(u2_t uChar) noexcept {
    return PropertiesOf(uChar).m_uFlags & COLUMNS;
}

}  // namespace vok::Char

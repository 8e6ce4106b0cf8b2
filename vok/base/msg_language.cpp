// SPDX-License-Identifier: MIT
#include <atomic>

#include "vok/base/msg.h"

namespace vok {

namespace {

struct Language {
    u2_t m_uId;
    const char* m_sNativeName;
    const char* m_sEnglishName;
    const char* m_sCode;
};

// The ids are crossed: 1031 is elsewhere the number of German and 1033 that of English.
// Callers that select by id rely on this pairing; do not put it right.
constexpr Language LANGUAGES[Msg::LANGUAGE_COUNT] = {
    {1031, "english", "english", "en"},
    {1033, "deutsch", "german", "de"},
};

constexpr const char* Language::*const NAME_COLUMNS[] = {
    &Language::m_sNativeName, &Language::m_sEnglishName, &Language::m_sCode};

constinit std::atomic<u2_t> g_uCurrent{Msg::ENGLISH};

const Language& Current() noexcept {
    return LANGUAGES[Msg::LanguageIndex()];
}

char ToLower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsSameIgnoringCase(const char* sLeft, const char* sRight) noexcept {
    while (*sLeft != 0 && ToLower(*sLeft) == ToLower(*sRight)) {
        ++sLeft;
        ++sRight;
    }
    return *sLeft == 0 && *sRight == 0;
}

}  // namespace

void Msg::SetLanguage(const char* sName) {
    for (const auto pColumn : NAME_COLUMNS) {
        for (u2_t uIndex = 0; sName != nullptr && uIndex < LANGUAGE_COUNT; ++uIndex) {
            if (!IsSameIgnoringCase(sName, LANGUAGES[uIndex].*pColumn)) continue;
            return SetLanguageIndex(uIndex);
        }
    }
    InvalidLanguage(sName);
}

void Msg::SetLanguageId(u2_t uId) {
    for (u2_t uIndex = 0; uIndex < LANGUAGE_COUNT; ++uIndex) {
        if (LANGUAGES[uIndex].m_uId == uId) return SetLanguageIndex(uIndex);
    }
    InvalidLanguageCode(uId);
}

void Msg::SetLanguageIndex(u2_t uIndex) {
    if (uIndex >= LANGUAGE_COUNT) InvalidLanguageId(uIndex);
    g_uCurrent.store(uIndex, std::memory_order_relaxed);
}

u2_t Msg::LanguageIndex() noexcept {
    return g_uCurrent.load(std::memory_order_relaxed);
}

u2_t Msg::LanguageId() noexcept {
    return Current().m_uId;
}

const char* Msg::LanguageNativeName() noexcept {
    return Current().m_sNativeName;
}

const char* Msg::LanguageEnglishName() noexcept {
    return Current().m_sEnglishName;
}

const char* Msg::LanguageCode() noexcept {
    return Current().m_sCode;
}

u2_t Msg::LanguageId(u2_t uIndex) noexcept {
    return uIndex < LANGUAGE_COUNT ? LanguageId() : 0;
}

const char* Msg::LanguageNativeName(u2_t uIndex) noexcept {
    return uIndex < LANGUAGE_COUNT ? LanguageNativeName() : nullptr;
}

const char* Msg::LanguageEnglishName(u2_t uIndex) noexcept {
    return uIndex < LANGUAGE_COUNT ? LanguageEnglishName() : nullptr;
}

const char* Msg::LanguageCode(u2_t uIndex) noexcept {
    return uIndex < LANGUAGE_COUNT ? LanguageCode() : nullptr;
}

}  // namespace vok

// SPDX-License-Identifier: MIT
#include "tools/say.h"

#include <cstdlib>

#include "vok/base/msg.h"

namespace tools {

void ChooseLanguage() {
    for (const char* sName : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* s = std::getenv(sName);
        if (s == nullptr || *s == 0) continue;
        const std::string_view sLanguage(s);
        const bool bGerman = sLanguage.starts_with("de") &&
                             (sLanguage.size() == 2 || sLanguage[2] == '_' || sLanguage[2] == '.');
        vok::Msg::SetLanguageIndex(bGerman ? vok::Msg::GERMAN : vok::Msg::ENGLISH);
        return;
    }
}

void SpeakEnglish() {
    vok::Msg::SetLanguageIndex(vok::Msg::ENGLISH);
}

std::string Say(std::string_view sEnglish, std::initializer_list<std::string_view> asValue) {
    std::string_view sText = sEnglish;
    if (vok::Msg::LanguageIndex() == vok::Msg::GERMAN) {
        const std::string_view sGerman = GermanOf(sEnglish);
        if (!sGerman.empty()) sText = sGerman;
    }
    std::string sSaid;
    for (std::size_t u = 0; u < sText.size(); ++u) {
        const auto uValue =
            static_cast<std::size_t>(u + 1 < sText.size() ? sText[u + 1] - '0' : 10);
        if (sText[u] == '%' && uValue < asValue.size()) {
            sSaid += asValue.begin()[uValue];
            ++u;
        } else {
            sSaid += sText[u];
        }
    }
    return sSaid;
}

}  // namespace tools

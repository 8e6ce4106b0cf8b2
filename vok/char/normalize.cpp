// SPDX-License-Identifier: MIT
#include "vok/char/normalize.h"

#include "vok/base/where.h"
#include "vok/char/normalizer.h"

namespace vok::Char {

using namespace detail;

namespace {

[[nodiscard]] bool IsForm(Form eForm) {
    if (eForm <= Form::NFKD) return true;
    Msg::UnknownNormalizationForm(static_cast<u3_t>(eForm));
    return false;
}

void Add(Arr<char>& oOut, std::string_view sText) {
    oOut.Add(sText.data(), sText.size());
}

void AddNormalized(std::string_view sText, Form eForm, Arr<char>& oOut) {
    Appending oAppending(oOut);
    oOut.ReserveMore(sText.size());
    Normalizer o(sText, eForm);
    while (o.Next()) {
        Add(oOut, o.Same());
        Add(oOut, o.Changed());
    }
    oAppending.Keep();
}

[[nodiscard]] bool Changes(std::string_view sText, Form eForm) {
    Normalizer o(sText, eForm);
    while (o.Next()) {
        if (o.Source() != o.Changed()) return true;
    }
    return false;
}

// A mark that stands above, below or across a letter.
[[nodiscard]] bool IsAccent(u2_t uCode) noexcept {
    const u0_t uClass = NormalOf(uCode).m_uCombining;
    return uClass == 1 || (uClass >= 200 && uClass <= 240);
}

void AddPlain(Arr<char>& oOut, std::string_view sText) {
    const char* p = sText.data();
    const char* const pEnd = p + sText.size();
    while (p != pEnd) {
        const char* const pFrom = p;
        const char* pTo = SkipAscii(p, pEnd);
        p = pTo;
        while (p != pEnd && !IsAccent(Decode(p, pEnd).m_uCode)) pTo = p;
        Add(oOut, {pFrom, static_cast<std::size_t>(pTo - pFrom)});
    }
}

void AddWithoutAccents(std::string_view sText, Arr<char>& oOut) {
    Arr<char> oPlain;
    Normalizer o(sText, Form::NFD);
    while (o.Next()) {
        AddPlain(oPlain, o.Same());
        AddPlain(oPlain, o.Changed());
    }
    AddNormalized({oPlain.Beg(), oPlain.Size()}, Form::NFC, oOut);
}

}  // namespace

void Normalize(std::string_view sText, Form eForm, Arr<char>& oOut) {
    return Where("vok::Char::Normalize", [&] {
        if (!IsForm(eForm)) return Add(oOut, sText);
        AddNormalized(sText, eForm, oOut);
    });
}

Str Normalize(const Str& oText, Form eForm) {
    return Where("vok::Char::Normalize", [&] {
        if (!IsForm(eForm) || !Changes(oText.View(), eForm)) return oText;
        Arr<char> oOut;
        AddNormalized(oText.View(), eForm, oOut);
        return Str(std::string_view(oOut.Beg(), oOut.Size()));
    });
}

bool IsNormalized(std::string_view sText, Form eForm) {
    return Where("vok::Char::IsNormalized",
                 [&] { return !IsForm(eForm) || !Changes(sText, eForm); });
}

void RemoveAccents(std::string_view sText, Arr<char>& oOut) {
    return Where("vok::Char::RemoveAccents", [&] { AddWithoutAccents(sText, oOut); });
}

Str RemoveAccents(const Str& oText) {
    return Where("vok::Char::RemoveAccents", [&] {
        if (IsAscii(oText.CStr(), oText.Len())) return oText;
        Arr<char> oOut;
        AddWithoutAccents(oText.View(), oOut);
        const std::string_view sOut(oOut.Beg(), oOut.Size());
        return sOut == oText.View() ? oText : Str(sOut);
    });
}

}  // namespace vok::Char

// SPDX-License-Identifier: MIT
// Any bytes at all as text: the laws of normalization, of case and of clusters.
#include "fuzz/fuzz_support.h"
#include "vok/base/utf8.h"
#include "vok/char/casing.h"
#include "vok/char/char.h"
#include "vok/char/cluster.h"
#include "vok/char/compare.h"
#include "vok/char/normalize.h"

namespace {

using namespace vok;
using Char::Casing;
using Char::Form;

template <class F>
std::string Appended(F&& oAppend) {
    Arr<char> oOut;
    oAppend(oOut);
    Check(IsUtf8(oOut.Beg(), oOut.Size()));
    return std::string(oOut.Beg(), oOut.Size());
}

std::string In(Form eForm, std::string_view s) {
    return Appended([&](Arr<char>& o) { Char::Normalize(s, eForm, o); });
}

void CheckForms(std::string_view s) {
    const std::string sC = In(Form::NFC, s);
    const std::string sD = In(Form::NFD, s);
    Check(In(Form::NFC, sD) == sC && In(Form::NFD, sC) == sD);
    Check(In(Form::NFKC, sD) == In(Form::NFKC, In(Form::NFKD, s)));
    Check(Char::EqualNormalized(s, sC) && Char::EqualNormalized(sD, s, Form::NFC));
    for (const Form eForm : {Form::NFC, Form::NFD, Form::NFKC, Form::NFKD}) {
        const std::string sOnce = In(eForm, s);
        Check(In(eForm, sOnce) == sOnce && Char::IsNormalized(sOnce, eForm));
        Check(Char::IsNormalized(s, eForm) == (sOnce == s));
        Check(sOnce.size() <= 11 * s.size());
        // Whatever is before and behind it, a space is a border.
        Check(In(eForm, std::string(s) + " " + sOnce) == sOnce + " " + sOnce);
    }
    const std::string sPlain = Appended([&](Arr<char>& o) { Char::RemoveAccents(s, o); });
    Check(sPlain == Appended([&](Arr<char>& o) { Char::RemoveAccents(sC, o); }));
}

void CheckCases(std::string_view s) {
    for (const Casing eCasing : {Casing::Standard, Casing::Turkish}) {
        const std::string sFolded = Appended([&](Arr<char>& o) { Char::Fold(s, o, eCasing); });
        Check(sFolded == Appended([&](Arr<char>& o) { Char::Fold(sFolded, o, eCasing); }));
        Check(sFolded.size() <= 3 * s.size());
        Check(Char::EqualNoCase(s, sFolded, eCasing));
        Check(Char::CompareNoCase(s, "m", eCasing) == -Char::CompareNoCase("m", sFolded, eCasing));
        const auto oBounded = [&](auto pOperation) {
            Check(Appended([&](Arr<char>& o) { pOperation(s, o, eCasing); }).size() <=
                  3 * s.size());
        };
        using Operation = void (*)(std::string_view, Arr<char>&, Casing);
        oBounded(Operation{Char::Upper});
        oBounded(Operation{Char::Lower});
        oBounded(Operation{Char::Title});
    }
    // What is found is what was looked for, and the beginning is found.
    const Char::Found oWhole = Char::FindNoCase(s, s);
    Check(oWhole.m_uAt == 0 && oWhole.m_uSize == s.size());
    const std::string_view sPart = s.substr(0, Char::NextCluster(s, 0));
    const Char::Found oLast = Char::FindNoCase(s, sPart, sPart.size());
    if (oLast.m_uAt != Char::Found::NONE && !sPart.empty()) {
        Check(oLast.m_uAt >= sPart.size() && oLast.m_uAt + oLast.m_uSize <= s.size());
        Check(Char::EqualNoCase(s.substr(oLast.m_uAt, oLast.m_uSize), sPart));
    }
}

void CheckClusters(std::string_view s) {
    std::size_t uAt = 0, uCount = 0, uWidth = 0;
    for (const std::string_view sCluster : Char::Clusters(s)) {
        Check(!sCluster.empty() && sCluster.data() == s.data() + uAt);
        Check(Char::FitColumns(s, uWidth) >= uAt);
        uAt += sCluster.size();
        uWidth += Char::Width(sCluster);
        ++uCount;
        if (uCount > 200) break;  // FitColumns above looks at all before it
    }
    if (uCount <= 200) Check(uAt == s.size() && uWidth == Char::Width(s));
    Check(Char::CountClusters(s) <= s.size() && Char::Width(s) <= 2 * s.size());
    (void)Char::IsIdentifier(s);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sText(reinterpret_cast<const char*>(pData), uSize);
    CheckForms(sText);
    CheckCases(sText);
    CheckClusters(sText);
    return 0;
}

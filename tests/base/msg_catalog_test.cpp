// SPDX-License-Identifier: MIT
// Every entry of the catalog: that both languages show all of its arguments and end alike, and
// the texts by their checksums.
#include <zlib.h>

#include <functional>
#include <set>
#include <tuple>

#include "tests/support.h"

namespace vok {
namespace {

// The argument for the next parameter, of a value that shows which one it is and how it was
// printed.
constexpr const char* TEXTS[] = {"<t0>", "<t1>", "<t2>", "<t3>", "<t4>", "<t5>"};

template <class T>
T Next(std::size_t& uNth, std::size_t uError, u2_t uCode) {
    ++uNth;
    if constexpr (std::is_same_v<T, const char*>) {
        return TEXTS[uNth - 1];
    } else if constexpr (std::is_same_v<T, bool>) {
        return true;
    } else {
        return static_cast<T>(uNth == uError ? uCode : 7000 + uNth - 1);
    }
}

// An entry as the catalog's header declares it. A flag comes first and is no parameter of the text;
// a system error comes last, and its text ends the message. One that need not be told is not.
struct Entry {
    template <class... A>
    Entry(void (*pEntry)(A...), std::string_view sParameters, std::string_view sDoes)
        : sWhat(sDoes), bSystemError(sParameters.ends_with("uSystemError)")) {
        constexpr bool FLAG = (std::is_same_v<A, bool> || ...);
        const bool bMayError = sParameters.ends_with("uMayError)");
        const std::size_t uError = bSystemError || bMayError ? sizeof...(A) : 0;
        uArguments = sizeof...(A) - FLAG - (uError != 0);
        const u2_t uCode = bMayError ? 0 : 2;
        oCall = [=] {
            [[maybe_unused]] std::size_t uNth = FLAG ? SIZE_MAX : 0;
            std::apply(pEntry, std::tuple<A...>{Next<A>(uNth, uError, uCode)...});
        };
    }

    std::string_view sWhat;  // "reports", "logs"; the others raise, as long as they are told to
    bool bSystemError;
    std::size_t uArguments = 0;
    std::function<void()> oCall;
};

#define ENTRY(name, parameters, what) \
    {static_cast<void(*) parameters>(Msg::name), #parameters, what},
const Entry ENTRIES[] = {
#include "msg_entries.inc"
};

// Replaces each argument found in sMessage by "%" and its number.
std::string WithPlaceholders(std::string sMessage) {
    for (std::size_t uNth = 0; uNth < std::size(TEXTS); ++uNth) {
        const std::string sCode = "\xE1\xAD" + std::string(1, static_cast<char>(0x98 + uNth));
        for (const std::string& s : {TEXTS[uNth] + std::string(), std::to_string(7000 + uNth),
                                     "0x0000000000001B5" + std::string(1, "89ABCD"[uNth]), sCode}) {
            for (std::size_t u; (u = sMessage.find(s)) != std::string::npos;) {
                sMessage.replace(u, s.size(), "%" + std::to_string(uNth));
            }
        }
    }
    return sMessage;
}

std::set<char> Placeholders(const std::string& sText) {
    std::set<char> oFound;
    for (std::size_t u = 0; u + 1 < sText.size(); ++u) {
        if (sText[u] == '%') oFound.insert(sText[u + 1]);
    }
    return oFound;
}

std::string MessageOf(const Entry& oEntry) {
    (void)Msg_Capture::TakeConsole();
    (void)Msg_Capture::TakeDebug();
    const std::string sRaised = Raised(oEntry.oCall);
    if (oEntry.sWhat == "reports") return Msg_Capture::TakeConsole();
    return oEntry.sWhat == "logs" ? Msg_Capture::TakeDebug() : sRaised;
}

TEST(MsgCatalog, EveryEntryInBothLanguages) {
    const Msg_Capture oCapture;
    std::string asAll[2];
    for (const Entry& oEntry : ENTRIES) {
        const std::string sEnd = oEntry.sWhat == "reports" ? "\n|"
                                 : oEntry.bSystemError
                                     ? ": errno=ENOENT (No such file or directory)\n"
                                     : "\n";
        for (const u2_t uLanguage : {Msg::ENGLISH, Msg::GERMAN}) {
            Msg::SetLanguageIndex(uLanguage);
            const std::string s = WithPlaceholders(MessageOf(oEntry));
            EXPECT_TRUE(s.ends_with(sEnd)) << s;
            EXPECT_GT(s.size(), sEnd.size() + 5) << s;
            EXPECT_EQ(Placeholders(s).size(), oEntry.uArguments) << s;
            asAll[uLanguage] += s;
        }
    }
    // Hosts compare texts and users know them: no letter of them changes by accident.
    const auto Sum = [](const std::string& s) {
        return crc32(0, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size()));
    };
    EXPECT_EQ(Sum(asAll[Msg::ENGLISH]), 0x67E41A6Au) << asAll[Msg::ENGLISH];
    EXPECT_EQ(Sum(asAll[Msg::GERMAN]), 0x622B1A8Fu) << asAll[Msg::GERMAN];
}

// As they are called where they are watched.
TEST(MsgCatalog, LimitsHaveNamesInBothLanguages) {
    const Msg_Capture oCapture;
    for (const std::string sLimit :
         {"nodes", "depth", "skipped slots", "text bytes", "attributes", "path steps",
          "inflated bytes", "inflation ratio", "zip entries", "work for a byte",
          "memory for a byte", "of another's"}) {
        const auto oRaise = [&] { Msg::LimitExceeded(sLimit.c_str(), 7, "m_u"); };
        Msg::SetLanguageIndex(Msg::ENGLISH);
        EXPECT_EQ(Failing(oRaise), "limit \"" + sLimit + "\" of 7 exceeded (raise m_u)");
        Msg::SetLanguageIndex(Msg::GERMAN);
        const bool bSame = Failing(oRaise).starts_with("Grenze \"" + sLimit + "\" von 7 ");
        EXPECT_EQ(bSame, sLimit == "of another's") << Failing(oRaise);
    }
}

TEST(MsgCatalog, ReportsWhereTheCallerChooses) {
    const Msg_Capture oCapture;
    Msg::TooFewColumnsInCsvFile(false, "a.csv", 4, "1;2", 2, 3);
    EXPECT_EQ(Msg_Capture::TakeConsole(),
              "error in csv file \"a.csv\": too few (2 insted of 3) columns in line 4: \n1;2\n|");
}

}  // namespace
}  // namespace vok

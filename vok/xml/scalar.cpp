// SPDX-License-Identifier: MIT
#include "vok/xml/scalar.h"

#include "vok/base/date.h"
#include "vok/base/msg.h"
#include "vok/base/number.h"
#include "vok/base/str.h"
#include "vok/base/utf8.h"

namespace vok::xml {

namespace {

// A moment, or what FormatReal gives for the numbers that are none.
double ParseMoment(std::string_view sText) {
    double dSeconds;
    if (ParseDate(sText, dSeconds)) return dSeconds;
    for (const std::string_view s : {"INF", "-INF", "NaN"}) {
        if (sText == s) return ParseReal(sText);
    }
    RaiseUnknownText(sText);
}

}  // namespace

u3_t ParseScalar(Data_Node::Type eType, std::string_view sText, u3_t uSeed) {
    switch (eType) {
        case Data_Node::Boolean: return ParseLongAnyBase(sText) != 0;
        case Data_Node::Integer: return static_cast<u2_t>(ParseLongAnyBase(sText));
        case Data_Node::Char: {
            const char* p = sText.data();
            return sText.empty() ? uSeed : DecodeUtf8(p, p + sText.size());
        }
        case Data_Node::Date:
            return std::bit_cast<u3_t>(ParseMoment(sText) + std::bit_cast<double>(uSeed));
        case Data_Node::Long: return ParseLong64(sText);
        default: return std::bit_cast<u3_t>(ParseReal(sText));
    }
}

std::array<u2_t, 4> ParseQuad(std::string_view sText) {
    std::array<u2_t, 4> auWord{};
    for (u2_t& uWord : auWord) {
        uWord = static_cast<u2_t>(ParseLong64(sText));
        const std::size_t uComma = sText.find(',');
        if (uComma == std::string_view::npos) break;
        sText.remove_prefix(uComma + 1);
    }
    return auWord;
}

u3_t ParseNodeNumber(std::string_view sValue) {
    return sValue.size() > 2 ? ParseLong64(sValue.substr(2)) : 0;
}

void RaiseUnknownText(std::string_view sText) {
    Msg::UnknownXmlSequence(Str(sText.substr(0, 64)).CStr());
}

}  // namespace vok::xml

// SPDX-License-Identifier: MIT
// XML tokens for programs that do without a tree.
#include <string_view>
#include <vector>

#include "vok/base/where.h"
#include "vok/file/file.h"
#include "vok/file/xml_tag.h"
#include "vok/file/xml_text.h"

namespace vok {

namespace {

// The flags of Data::LoadFromXML that concern tokens.
constexpr u2_t KEEP_UNKNOWN = 1;
constexpr u2_t LOOSE_TAGS = 8;

Str DecodedText(std::string_view sText, u2_t uFlags) {
    Arr<char> oText;
    (void)xml::DecodeText(oText, sText, (uFlags & KEEP_UNKNOWN) != 0);
    return Str(std::string_view(oText.Beg(), oText.Size()));
}

Str DecodedValue(std::string_view sValue, u2_t uFlags) {
    Arr<char> oText;
    (void)xml::DecodeValue(oText, sValue, (uFlags & KEEP_UNKNOWN) != 0);
    return Str(std::string_view(oText.Beg(), oText.Size()));
}

Str DecodedName(std::string_view sName) {
    Arr<char> oName;
    xml::DecodeName(oName, sName);
    return Str(std::string_view(oName.Beg(), oName.Size()));
}

}  // namespace

bool File::ReadXML(File_Stream& oStream, Str& oToken, char cEnd, u2_t uFlags) {
    return Where("vok::File::ReadXML", [&] {
        Arr<char> oBytes;
        char c = 0;
        bool bEnd = false;
        // Byte by byte: what follows belongs to whoever reads next.
        while (!bEnd && oStream.Read(&c, 1, true) == 1) {
            bEnd = c == cEnd;
            if (!bEnd) oBytes.Add(c);
        }
        const std::string_view sToken(oBytes.Beg(), oBytes.Size());
        oToken = cEnd == '<' ? DecodedText(sToken, uFlags) : Str(sToken);
        return bEnd;
    });
}

u3_t File::WriteXML(File_Stream& oStream, std::string_view sText) {
    return Where("vok::File::WriteXML", [&]() -> u3_t {
        Arr<char> oText;
        xml::EncodeText(oText, sText, true);
        return oText.Size() != 0 ? oStream.Write(oText.Beg(), oText.Size()) : 0;
    });
}

void File::SplitXMLToken(std::string_view sTag, Str& oName, std::vector<XML_Attribute>& oAttributes,
                         u2_t uFlags) {
    return Where("vok::File::SplitXMLToken", [&] {
        Arr<char> oBytes;
        oBytes.Add('<');  // what an error in front of the name is reported after
        oBytes.Add(sTag.data(), sTag.size());
        oBytes.Add('>');
        xml::Tag oTag;
        const char* p = oBytes.Beg() + 1;
        if (!oTag.Parse(p, oBytes.End(), (uFlags & LOOSE_TAGS) != 0)) {
            Msg::MissingCharInXmlStream('>');
        }
        if (p != oBytes.End()) xml::RaiseInvalidCharacter(p, oBytes.End());
        oName = DecodedName(oTag.Name());
        oAttributes.clear();
        for (const xml::Tag::Attribute& o : oTag.Attributes()) {
            oAttributes.push_back({DecodedName(o.sName), DecodedValue(o.sValue, uFlags)});
        }
    });
}

}  // namespace vok

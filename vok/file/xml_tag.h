// SPDX-License-Identifier: MIT
// A start tag of XML, taken apart. Internal.
#ifndef VOK_FILE_XML_TAG_H
#define VOK_FILE_XML_TAG_H

#include <string_view>

#include "vok/base/arr.h"

namespace vok::xml {

class Tag {
  public:
    // As they are written; inside the text that was parsed.
    struct Attribute {
        std::string_view sName;
        std::string_view sValue;
    };

    // Takes the start tag at p, which stands behind its "<", and moves p behind its ">". False
    // when the text ends inside it. bLoose: values may lack their quotes, attributes their
    // values. Raises "missing char '%0' in XML stream" and "invalid character '%0' after
    // '%1'", with p at the place. Linear.
    bool Parse(const char*& p, const char* pEnd, bool bLoose) {
        return ParseName(p, pEnd) && ParseRest(p, pEnd, bLoose);
    }
    // The same in two steps.
    bool ParseName(const char*& p, const char* pEnd);
    bool ParseRest(const char*& p, const char* pEnd, bool bLoose);
    // Moves p from behind the name behind the ">", whatever stands between them; false when the
    // text ends before. A ">" in quotes does not count.
    [[nodiscard]] static bool Skip(const char*& p, const char* pEnd) noexcept;

    [[nodiscard]] std::string_view Name() const noexcept { return m_sName; }
    [[nodiscard]] const Arr<Attribute>& Attributes() const noexcept { return m_oAttribute; }
    // Whether it ends in "/>".
    [[nodiscard]] bool IsEmpty() const noexcept { return m_bEmpty; }

  private:
    bool ParseAttribute(const char*& p, const char* pEnd, bool bLoose);

    std::string_view m_sName;
    Arr<Attribute> m_oAttribute;
    bool m_bEmpty = false;
};

// Raises "invalid character '%0' after '%1'" for the character at p, with the byte before it.
[[noreturn]] void RaiseInvalidCharacter(const char* p, const char* pEnd);

}  // namespace vok::xml

#endif  // VOK_FILE_XML_TAG_H

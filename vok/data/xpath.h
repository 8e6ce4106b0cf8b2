// SPDX-License-Identifier: MIT
// Path expressions over a tree.
//
//     path      = [ "/" [ "/" ] ] [ step { ( "/" | "//" ) step } [ "/" | "//" ] ]
//     step      = "." | ".." | ( name | "*" ) { predicate }
//     predicate = "[" ( "*" | digits ) "]" | "[@" name "=" quote value quote "]"
//
// Positions count from 0. "//" matches the next step at every depth. The characters that the
// syntax uses are written as backspace (code 8), decimal code, semicolon in names and values.
#ifndef VOK_DATA_XPATH_H
#define VOK_DATA_XPATH_H

#include "vok/data/data.h"

namespace vok {

// One step of a parsed path. Texts point into the path that it was parsed from.
struct Data_XpathStep {
    enum Kind : u0_t { Named = 0, Self = 1, Parent = 2 };

    const char* m_sName = nullptr;
    Arr<const char*> m_oAttName;
    Arr<const char*> m_oAttVal;  // parallel to the names
    i2_t m_iIndex = -1;          // -1 when no position is given
    bool m_bAnyName = false;     // "*"
    bool m_bDescendant = false;  // followed by "//"
    Kind m_eKind = Named;

    [[nodiscard]] const char* AttVal(std::size_t uNth) const noexcept { return m_oAttVal(uNth); }

    // Parses the step at pBegin and returns the place behind it and its separator. Writes
    // NULs into the text, escapes stay. Raises "assertion failed: sXpath < sEnd", "invalid
    // character '%0' after '%1'", "character '%0' expected after '%1'", "opening bracket
    // '%0' used without corresponding closing bracket", "missing char '%0' in string",
    // "empty attribute name in xpath not allowed", "integer value to big".
    char* Parse(char* pBegin, char* pEnd);
};

class Data_Xpath {
  public:
    using Step = Data_XpathStep;

    Data_Xpath() noexcept = default;
    Data_Xpath(const Data_Xpath&) = delete;
    Data_Xpath& operator=(const Data_Xpath&) = delete;
    ~Data_Xpath();

    // Parses a path in place of what was there. Linear. Raises the errors of a step and
    // "empty xpath not allowed"; the path is then empty.
    void Parse(const char* sText);

    [[nodiscard]] std::size_t Size() const noexcept { return m_uSteps; }
    [[nodiscard]] const Step& operator()(std::size_t uNth) const noexcept { return m_pSteps[uNth]; }
    // The path began with "/".
    [[nodiscard]] bool IsAbsolute() const noexcept { return m_bAbsolute; }
    // The path began with "//".
    [[nodiscard]] bool IsDescendantFromRoot() const noexcept { return m_bDescendantFromRoot; }

    // What Data::GetNodeSet gives for this path, which may be used as often as one likes; its own
    // errors are behind.
    [[nodiscard]] Data_NodeSet Evaluate(const Data& oFrom, const Limits& oLimits = {}) const;
    // The first of those nodes in the order of a walk, looked for no further than that; an empty
    // cursor where there is none.
    [[nodiscard]] Data EvaluateFirst(const Data& oFrom, const Limits& oLimits = {}) const;

    // The steps in readable form, one a line, appended to oOut.
    void Debug(Str& oOut) const;

  private:
    void Clear() noexcept;
    Step& AddStep();

    Arr<char> m_oText;
    Step* m_pSteps = nullptr;  // in a Mem block
    std::size_t m_uSteps = 0;
    std::size_t m_uCapacity = 0;
    bool m_bAbsolute = false;
    bool m_bDescendantFromRoot = false;
};

}  // namespace vok

#endif  // VOK_DATA_XPATH_H

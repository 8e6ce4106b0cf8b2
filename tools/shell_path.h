// SPDX-License-Identifier: MIT
// Paths as people and shells write them.
//
// They are those of the library, but names may stand in double quotes, in which the characters of
// the path syntax have no meaning: /"Start menu"/item[2]/"a.b". In quotes \" and \\ are those
// characters, \n, \r, \t, \xHH, \uHHHH, \UHHHHHHHH those of that code; "" is no name. So are the
// values of attributes, [@title="a \"b\""]. A last step @name is an attribute.
#ifndef TOOLS_SHELL_PATH_H
#define TOOLS_SHELL_PATH_H

#include <string>
#include <string_view>

namespace tools {

// As the library has it. Raises std::invalid_argument for quotes that do not end and escapes that
// are none; other faults are found by who parses the path.
std::string LibraryPath(const std::string& sShell);

// A path to nodes, or to an attribute of each of them.
struct NodesOrAttribute {
    std::string sNodes;      // as the library has it
    std::string sAttribute;  // empty for the nodes
};
// Raises the same, and for an attribute without a name.
NodesOrAttribute ParseNodesOrAttribute(const std::string& sShell);

// A path as the library has it in the form above, which leads to the same nodes when it is pasted
// between single quotes. Nothing in it plays with a terminal.
std::string ShownPath(std::string_view sLibrary);
// Shortened(ShownPath(...)), in constant time but for long names: of a deep tree there may be many
// long paths.
std::string ShownPlace(std::string_view sLibrary);
// The path for an attribute of what a path in that form leads to.
std::string ShownAttribute(const std::string& sShown, std::string_view sName);

}  // namespace tools

#endif  // TOOLS_SHELL_PATH_H

// SPDX-License-Identifier: MIT
// Changes of a tree, as the command line has them.
#ifndef TOOLS_EDIT_H
#define TOOLS_EDIT_H

#include <optional>
#include <string>
#include <vector>

#include "vok/data/data.h"

namespace tools {

struct Edit {
    enum Kind { Set, Add, Delete, Move, Rename };

    Kind eKind = Set;
    std::string sPath;  // as a shell has it; of Set and Delete it may be an attribute's
    std::string sName;  // Add, Rename
    std::optional<std::string> sValue;
    std::string sType;               // of the value; empty: the one that is there, else String
    std::string sTo;                 // Move: of the new parent, as a shell has it
    std::optional<unsigned> uPlace;  // among the nodes of its name; behind them where not told
};

// Does it to every node that its path selects. Raises std::invalid_argument for what is wrong with
// it, and where there is nothing to do it to: then what was done so far is to be dropped.
void Apply(const Edit& oEdit, vok::Data& oTree);

// Where there is nothing at a path.
struct NothingThere : std::exception {};

// The words of a line as a shell has them: between blanks, or in quotes, single or double. Quotes
// within a word, as those of names in a path, stay, and blanks between them do not end it.
std::vector<std::string> WordsOf(const std::string& sLine);

// The types that a value may be told to have, as "integer".
std::vector<std::string> TypeNames();

}  // namespace tools

#endif  // TOOLS_EDIT_H

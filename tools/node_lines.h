// SPDX-License-Identifier: MIT
// Trees as indented lines, a node each.
#ifndef TOOLS_NODE_LINES_H
#define TOOLS_NODE_LINES_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/text.h"
#include "vok/data/record.h"

namespace tools {

// Prints nodes that come in pre-order:
//
//     order @state="open"
//       id Integer 17
//       item[1] String "x"
class NodeLines {
  public:
    explicit NodeLines(bool bColoured) : m_oPalette(bColoured) {}

    // For the node that is shown from, which nothing stands in front of.
    void StartAt() noexcept { m_aoRun.clear(); }
    // A node at a depth below that.
    void Add(const vok::Data_Record& r, std::size_t uDepth);
    void Add(const vok::Data& oNode, std::size_t uDepth);

  private:
    struct Shown {
        std::string_view sName;
        vok::Data_Node::Type eType;
        std::string sValue;
        std::vector<vok::Data_Record::Attribute> aoAttribute;  // by name, each once
    };
    struct Run {
        std::string sName;
        unsigned uCount = 0;
    };

    void Add(const Shown& o, std::size_t uDepth);
    [[nodiscard]] unsigned IndexOf(std::string_view sName, std::size_t uDepth);

    Palette m_oPalette;
    std::vector<Run> m_aoRun;  // by level
};

}  // namespace tools

#endif  // TOOLS_NODE_LINES_H

// SPDX-License-Identifier: MIT
// Where the nodes of a tree stand in the document that it was loaded from.
#ifndef TOOLS_NODE_BYTES_H
#define TOOLS_NODE_BYTES_H

#include <string_view>

#include "tools/input.h"
#include "vok/data/id_map.h"

namespace tools {

class NodeBytes {
  public:
    // Reads the document again; oIn must have kept its bytes. Raises std::invalid_argument for
    // forms that have no place for each node: dumps and JSON.
    explicit NodeBytes(const Input& oIn);

    struct Place {
        vok::u3_t uOffset = 0;
        vok::u3_t uLength = 0;  // 0 where nothing is known
    };
    // What the document says of a node, up to what it says of the next one.
    [[nodiscard]] Place Find(vok::u2_t uId) const noexcept { return m_oPlace.Find(uId); }
    // The first of those bytes, at most uMost.
    [[nodiscard]] std::string_view Bytes(const Place& o, std::size_t uMost) const noexcept {
        return m_sDocument.substr(o.uOffset, std::min<vok::u3_t>(o.uLength, uMost));
    }

  private:
    const std::string_view m_sDocument;
    vok::Data_IdMap<Place> m_oPlace;
};

}  // namespace tools

#endif  // TOOLS_NODE_BYTES_H

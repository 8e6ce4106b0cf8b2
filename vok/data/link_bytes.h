// SPDX-License-Identifier: MIT
// What the links of a tree are written with. Internal.
#ifndef VOK_DATA_LINK_BYTES_H
#define VOK_DATA_LINK_BYTES_H

#include "vok/data/store.h"

namespace vok::detail {

// Bytes of the paths of all targets of links, at least: a document in which many links lead to one
// deep node can be small where it numbers them, or finds them with "//", and is large once each
// carries a path. Linear in nodes; nothing where there are no links.
[[nodiscard]] u3_t LinkBytes(const Data_Base& b);

}  // namespace vok::detail

#endif  // VOK_DATA_LINK_BYTES_H

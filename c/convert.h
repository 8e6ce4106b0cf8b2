/* SPDX-License-Identifier: MIT */
// Values at the border. Internal.
#ifndef C_CONVERT_H
#define C_CONVERT_H

#include "c/internal.h"
#include "c/vok_tree_document.h"
#include "c/vok_tree_value.h"
#include "vok/data/value.h"

namespace vok::c {

// Raises VOK_TREE_ARGUMENT for a type without a value of its own, and for null with a size. A Link
// has the path of its target.
[[nodiscard]] Data_Value FromC(const vok_tree_value& oValue);
[[nodiscard]] vok_tree_value ToC(const Data_Value& oValue) noexcept;
[[nodiscard]] vok_tree_report ToC(const Load_Report& oReport) noexcept;

// The bytes of a block that a program hands in.
[[nodiscard]] u2_t BlockSize(const void* pBytes, std::size_t uSize);

}  // namespace vok::c

#endif  // C_CONVERT_H

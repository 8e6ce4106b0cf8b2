// SPDX-License-Identifier: MIT
// The package database of a Debian machine: stanzas of "Field: value" lines.
#ifndef EXAMPLES_PACKAGE_INVENTORY_STATUS_FILE_H
#define EXAMPLES_PACKAGE_INVENTORY_STATUS_FILE_H

#include <stdexcept>
#include <string>
#include <vector>

#include "examples/package_inventory/package.h"

namespace inventory {

// Says what is wrong and where: "FILE:LINE: reason" or "FILE: reason".
class StatusError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// All packages of a database. Raises StatusError.
[[nodiscard]] std::vector<Package> ReadStatusFile(const std::string& sPath, std::size_t& uBytes);

}  // namespace inventory

#endif  // EXAMPLES_PACKAGE_INVENTORY_STATUS_FILE_H

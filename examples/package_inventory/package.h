// SPDX-License-Identifier: MIT
// Packages of a Debian machine as objects with fields.
#ifndef EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H
#define EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H

#include <map>
#include <string>
#include <vector>

#include "serializer/fields.h"

namespace inventory {

using Velmar::Q7R::Serializer::Field;
using Velmar::Q7R::Serializer::Int32;
using Velmar::Q7R::Serializer::List;

// "libc6:any (>= 2.36) [amd64]" in its parts; what is missing is empty, and not written.
struct Alternative {
    std::string sName;
    std::string sArchitecture;
    std::string sVersion;  // with its relation: ">= 2.36"
    std::string sRest;     // restrictions, as they stand

    bool operator==(const Alternative&) const = default;
    static constexpr auto Fields() {
        return List<Alternative>(Field("name", &Alternative::sName),
                                 Field("architecture", &Alternative::sArchitecture).OmitEmpty(),
                                 Field("version", &Alternative::sVersion).OmitEmpty(),
                                 Field("rest", &Alternative::sRest).OmitEmpty());
    }
};

// One of these has to be there.
using Dependency = std::vector<Alternative>;

// Names of fields are values here, so that they need not be known when reading: a subnode for each,
// with its "field" and what it says.
struct Package {
    std::string sName;
    std::map<std::string, std::string> oTexts;
    std::map<std::string, Int32> oNumbers;
    std::map<std::string, std::vector<Dependency>> oDependencies;

    bool operator==(const Package&) const = default;
    static constexpr auto Fields() {
        return List<Package>(
            Field("name", &Package::sName),
            Field("text", &Package::oTexts).Entries("field", "value"),
            Field("number", &Package::oNumbers).Entries("field", "value"),
            Field("relation", &Package::oDependencies).Entries("field", "any-of").Items("package"));
    }
};

struct Inventory {
    std::vector<Package> oPackages;

    static constexpr auto Fields() {
        return List<Inventory>(Field("package", &Inventory::oPackages));
    }
};

}  // namespace inventory

#endif  // EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H

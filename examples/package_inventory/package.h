// Packages of a Debian machine as objects that write and read themselves.
#ifndef EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H
#define EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H

#include <map>
#include <string>
#include <vector>

#include "serializer/serializer.h"

namespace inventory {

using Velmar::Q7R::Serializer::Int32;
using Velmar::Q7R::Serializer::ISerialisable;
using Velmar::Q7R::Serializer::Node;

// "libc6:any (>= 2.36) [amd64]" in its parts; what is missing is empty.
struct Alternative {
    std::string sName;
    std::string sArchitecture;
    std::string sVersion;  // with its relation: ">= 2.36"
    std::string sRest;     // restrictions, as they stand

    bool operator==(const Alternative&) const = default;
    void Write(Node& node) const;
    void Read(const Node& node);
};

// One of these has to be there.
using Dependency = std::vector<Alternative>;

struct Package {
    std::string sName;
    std::map<std::string, std::string> oTexts;  // field -> text
    std::map<std::string, Int32> oNumbers;      // field -> number
    std::map<std::string, std::vector<Dependency>> oDependencies;

    bool operator==(const Package&) const = default;
    void Write(Node& node) const;
    void Read(const Node& node);
};

struct Inventory : ISerialisable {
    std::vector<Package> oPackages;

    void WriteValues(Node& node) override;
    void ReadValues(Node& node) override;
};

}  // namespace inventory

#endif  // EXAMPLES_PACKAGE_INVENTORY_PACKAGE_H

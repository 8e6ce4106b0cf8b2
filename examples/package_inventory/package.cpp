#include "examples/package_inventory/package.h"

namespace inventory {

using Velmar::Q7R::Serializer::String;

namespace {

bool ReadText(const Node& node, const char* sName, std::string& sText, Int32 iIndex = 0) {
    String oText;
    if (!node.TryGetValue(sName, iIndex, oText)) return false;
    sText = oText.ToUtf8();
    return true;
}

// A subnode per entry, so that field names need not be known when reading.
template <class Map, class WriteEntry>
void WriteMap(Node& node, const char* sName, const Map& oMap, WriteEntry oWriteEntry) {
    for (const auto& [sField, oValue] : oMap) {
        Node oEntry = node.AddSubnode(sName);
        oEntry.AddValue("field", sField);
        oWriteEntry(oEntry, oValue);
    }
}

template <class Map, class ReadEntry>
void ReadMap(const Node& node, const char* sName, Map& oMap, ReadEntry oReadEntry) {
    Node oEntry;
    for (Int32 i = 0; node.TryGetSubnode(sName, i, oEntry); ++i) {
        std::string sField;
        ReadText(oEntry, "field", sField);
        oReadEntry(oEntry, oMap[sField]);
    }
}

}  // namespace

void Alternative::Write(Node& node) const {
    node.AddValue("name", sName);
    if (!sArchitecture.empty()) node.AddValue("architecture", sArchitecture);
    if (!sVersion.empty()) node.AddValue("version", sVersion);
    if (!sRest.empty()) node.AddValue("rest", sRest);
}

void Alternative::Read(const Node& node) {
    ReadText(node, "name", sName);
    ReadText(node, "architecture", sArchitecture);
    ReadText(node, "version", sVersion);
    ReadText(node, "rest", sRest);
}

void Package::Write(Node& node) const {
    node.AddValue("name", sName);
    WriteMap(node, "text", oTexts,
             [](Node& oEntry, const std::string& s) { oEntry.AddValue("value", s); });
    WriteMap(node, "number", oNumbers,
             [](Node& oEntry, Int32 iValue) { oEntry.AddValue("value", iValue); });
    WriteMap(node, "relation", oDependencies,
             [](Node& oEntry, const std::vector<Dependency>& oAll) {
                 for (const Dependency& oDependency : oAll) {
                     Node oAnyOf = oEntry.AddSubnode("any-of");
                     for (const Alternative& oAlternative : oDependency) {
                         Node oPackage = oAnyOf.AddSubnode("package");
                         oAlternative.Write(oPackage);
                     }
                 }
             });
}

void Package::Read(const Node& node) {
    ReadText(node, "name", sName);
    ReadMap(node, "text", oTexts,
            [](const Node& oEntry, std::string& s) { ReadText(oEntry, "value", s); });
    ReadMap(node, "number", oNumbers,
            [](const Node& oEntry, Int32& iValue) { oEntry.TryGetValue("value", iValue); });
    ReadMap(node, "relation", oDependencies, [](const Node& oEntry, std::vector<Dependency>& oAll) {
        Node oAnyOf;
        for (Int32 i = 0; oEntry.TryGetSubnode("any-of", i, oAnyOf); ++i) {
            Dependency& oDependency = oAll.emplace_back();
            Node oPackage;
            for (Int32 j = 0; oAnyOf.TryGetSubnode("package", j, oPackage); ++j) {
                oDependency.emplace_back().Read(oPackage);
            }
        }
    });
}

void Inventory::WriteValues(Node& node) {
    for (const Package& oPackage : oPackages) {
        Node oEntry = node.AddSubnode("package");
        oPackage.Write(oEntry);
    }
}

void Inventory::ReadValues(Node& node) {
    oPackages.clear();
    Node oEntry;
    for (Int32 i = 0; node.TryGetSubnode("package", i, oEntry); ++i) {
        oPackages.emplace_back().Read(oEntry);
    }
}

}  // namespace inventory

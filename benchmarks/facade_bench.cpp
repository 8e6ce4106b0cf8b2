// SPDX-License-Identifier: MIT
// The way of a host: an object that writes itself node by node.
#include <span>

#include "benchmarks/contender.h"
#include "serializer/serializer.h"

namespace bench {

namespace {

using Velmar::Q7R::Serializer::Byte;
using Velmar::Q7R::Serializer::ISerialisable;
using Velmar::Q7R::Serializer::Node;
using Velmar::Q7R::Serializer::Serializer;

class Host : public ISerialisable {
  public:
    explicit Host(const Set& oSet) : m_oSet(oSet) {}

    void WriteValues(Node& node) override {
        std::size_t uNext = 1;
        WriteChildren(node, m_oSet.items[0].uChildren, uNext);
    }
    // Into the members of an object, or not: then only the document is read.
    void ReadValues(Node& node) override {
        if (!m_bTakes) return;
        std::size_t uNext = 1;
        ReadChildren(node, m_oSet.items[0].uChildren, uNext);
    }
    void TakeValues() { m_bTakes = true; }

  private:
    // Objects nest three levels deep: a host may recurse.
    void WriteChildren(Node& node, std::uint32_t uCount, std::size_t& uNext) {
        for (std::uint32_t u = 0; u < uCount; ++u) {
            const Item& oItem = m_oSet.items[uNext++];
            const std::string& sName = m_oSet.names[oItem.uName];
            switch (oItem.eKind) {
                case Kind::Integer: node.AddValue(sName, oItem.iValue); break;
                case Kind::Double: node.AddValue(sName, oItem.dValue); break;
                case Kind::Boolean: node.AddValue(sName, oItem.iValue != 0); break;
                case Kind::Text: node.AddValue(sName, oItem.pText); break;
                case Kind::Binary: {
                    const auto* pBytes = reinterpret_cast<const Byte*>(oItem.pText);
                    node.AddValue(sName, std::span<const Byte>(pBytes, oItem.uText));
                    break;
                }
                case Kind::Map:
                case Kind::List: {
                    Node oSub = node.AddSubnode(sName);
                    WriteChildren(oSub, oItem.uChildren, uNext);
                }
            }
        }
    }

    // Asks for each value by its name and its position among those of that name.
    void ReadChildren(const Node& node, std::uint32_t uCount, std::size_t& uNext) {
        std::uint32_t uLast = 0;
        Velmar::Q7R::Serializer::Int32 iIndex = 0;
        for (std::uint32_t u = 0; u < uCount; ++u) {
            const Item& oItem = m_oSet.items[uNext++];
            iIndex = u != 0 && oItem.uName == uLast ? iIndex + 1 : 0;
            uLast = oItem.uName;
            const std::string& sName = m_oSet.names[oItem.uName];
            switch (oItem.eKind) {
                case Kind::Integer: node.TryGetValue(sName, iIndex, m_iValue); break;
                case Kind::Double: node.TryGetValue(sName, iIndex, m_dValue); break;
                case Kind::Boolean: node.TryGetValue(sName, iIndex, m_bValue); break;
                case Kind::Text: node.TryGetValue(sName, iIndex, m_sValue); break;
                case Kind::Binary: node.TryGetValue(sName, iIndex, m_aoValue); break;
                case Kind::Map:
                case Kind::List: {
                    Node oSub;
                    if (node.TryGetSubnode(sName, iIndex, oSub)) {
                        ReadChildren(oSub, oItem.uChildren, uNext);
                    }
                }
            }
            benchmark::ClobberMemory();
        }
    }

    const Set& m_oSet;
    bool m_bTakes = false;
    // What is read, each time in place of the last one.
    Velmar::Q7R::Serializer::Int32 m_iValue = 0;
    double m_dValue = 0;
    bool m_bValue = false;
    std::string m_sValue;
    std::vector<Byte> m_aoValue;
};

}  // namespace

void RegisterFacade(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + "/facade/";
    const double dNodes = static_cast<double>(oSet.items.size());
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oBody)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("build+write", [&oSet, dNodes](benchmark::State& oState) {
        Host oHost(oSet);
        Serializer oSerializer;
        std::size_t uBytes = 0;
        const Region oRegion;
        for (auto _ : oState) uBytes = oSerializer.WriteToBinaryBuffer(oHost).size();
        Count(oState, dNodes, static_cast<double>(uBytes));
    });
    oAdd("read", [&oSet, dNodes](benchmark::State& oState) {
        Host oHost(oSet);
        Serializer oSerializer;
        const auto aoBytes = oSerializer.WriteToBinaryBuffer(oHost);
        const Region oRegion;
        for (auto _ : oState) oSerializer.ReadFromBinaryBuffer(oHost, aoBytes);
        Count(oState, dNodes, static_cast<double>(aoBytes.size()));
    });
    oAdd("read values", [&oSet, dNodes](benchmark::State& oState) {
        Host oHost(oSet);
        oHost.TakeValues();
        Serializer oSerializer;
        const auto aoBytes = oSerializer.WriteToBinaryBuffer(oHost);
        const Region oRegion;
        for (auto _ : oState) oSerializer.ReadFromBinaryBuffer(oHost, aoBytes);
        Count(oState, dNodes, static_cast<double>(aoBytes.size()));
    });
}

}  // namespace bench

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
    void ReadValues(Node&) override {}

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

    const Set& m_oSet;
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
}

}  // namespace bench

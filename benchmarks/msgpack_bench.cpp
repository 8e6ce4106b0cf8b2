// SPDX-License-Identifier: MIT
// MessagePack: trees are msgpack::object in a zone.
#include <msgpack.hpp>

#include <optional>

#include "benchmarks/contender.h"

namespace bench {

namespace {

using msgpack::object;

class Msgpack {
  public:
    static constexpr const char* NAME = "msgpack";

    explicit Msgpack(const Set& oSet) : m_oSet(oSet) {
        std::size_t uNext = 0;
        Build(m_oBuilt, uNext);
    }

    // In the zone of the tree built last.
    void BuildAgain() {
        m_oZone.clear();
        std::size_t uNext = 0;
        Build(m_oBuilt, uNext);
    }

    void Write() {
        m_oBuffer.clear();
        msgpack::pack(m_oBuffer, m_oBuilt);
    }
    [[nodiscard]] std::size_t Size() const { return m_oBuffer.size(); }
    void Read() { m_oRead = msgpack::unpack(m_oBuffer.data(), m_oBuffer.size()); }

    // Into the zone of the last one.
    void ReadAgain() {
        m_oAgain.clear();
        benchmark::DoNotOptimize(msgpack::unpack(m_oAgain, m_oBuffer.data(), m_oBuffer.size()));
    }

    std::uint64_t Walk() { return Sum(m_oRead.get()); }

    std::uint64_t Lookup() {
        std::uint64_t uSum = 0;
        const object& oRoot = m_oRead.get();
        if (m_oSet.uMaps == 1) {
            AskAll(oRoot, uSum);
        } else {
            for (std::uint32_t u = 0; u < oRoot.via.array.size; ++u) {
                AskAll(oRoot.via.array.ptr[u], uSum);
            }
        }
        return uSum;
    }

    // What the zone holds for the objects themselves; texts are referred to where they are.
    double HeapBytes() { return static_cast<double>(m_uZoneBytes); }

  private:
    template <class T>
    T* Allocate(std::size_t uCount) {
        m_uZoneBytes += uCount * sizeof(T);
        return static_cast<T*>(m_oZone.allocate_align(uCount * sizeof(T), alignof(T)));
    }

    void Build(object& oInto, std::size_t& uNext) {
        const Item& oItem = m_oSet.items[uNext++];
        switch (oItem.eKind) {
            case Kind::Integer: oInto = object(oItem.iValue); break;
            case Kind::Double: oInto = object(oItem.dValue); break;
            case Kind::Boolean: oInto = object(oItem.iValue != 0); break;
            case Kind::Text: oInto = OwnText(oItem.pText, oItem.uText); break;
            case Kind::Binary:
                oInto = OwnText(oItem.pText, oItem.uText);
                oInto.type = msgpack::type::BIN;  // which holds the same as a text
                break;
            case Kind::Map: {
                oInto.type = msgpack::type::MAP;
                oInto.via.map.size = oItem.uChildren;
                oInto.via.map.ptr = Allocate<msgpack::object_kv>(oItem.uChildren);
                for (std::uint32_t u = 0; u < oItem.uChildren; ++u) {
                    msgpack::object_kv& oPair = oInto.via.map.ptr[u];
                    const std::string& sName = m_oSet.names[m_oSet.items[uNext].uName];
                    oPair.key = Text(sName.data(), sName.size());
                    Build(oPair.val, uNext);
                }
                break;
            }
            case Kind::List: {
                oInto.type = msgpack::type::ARRAY;
                oInto.via.array.size = oItem.uChildren;
                oInto.via.array.ptr = Allocate<object>(oItem.uChildren);
                for (std::uint32_t u = 0; u < oItem.uChildren; ++u) {
                    Build(oInto.via.array.ptr[u], uNext);
                }
            }
        }
    }

    // A text that belongs to the tree, as the other contenders keep theirs.
    object OwnText(const char* pText, std::size_t uSize) {
        char* pCopy = static_cast<char*>(m_oZone.allocate_no_align(uSize));
        std::memcpy(pCopy, pText, uSize);
        return Text(pCopy, uSize);
    }

    static object Text(const char* pText, std::size_t uSize) {
        object o;
        o.type = msgpack::type::STR;
        o.via.str.ptr = pText;
        o.via.str.size = static_cast<std::uint32_t>(uSize);
        return o;
    }

    static std::uint64_t Sum(const object& o) {
        switch (o.type) {
            case msgpack::type::POSITIVE_INTEGER:
            case msgpack::type::NEGATIVE_INTEGER: return static_cast<std::uint64_t>(o.via.i64);
            case msgpack::type::BOOLEAN: return o.via.boolean;
            case msgpack::type::FLOAT64: return static_cast<std::uint64_t>(o.via.f64);
            case msgpack::type::STR: return o.via.str.size;
            case msgpack::type::BIN: return o.via.bin.size;
            case msgpack::type::MAP: {
                std::uint64_t uSum = 1;
                for (std::uint32_t u = 0; u < o.via.map.size; ++u) {
                    const msgpack::object_kv& oPair = o.via.map.ptr[u];
                    uSum += static_cast<unsigned char>(*oPair.key.via.str.ptr) + Sum(oPair.val);
                }
                return uSum;
            }
            case msgpack::type::ARRAY: {
                std::uint64_t uSum = 1;
                for (std::uint32_t u = 0; u < o.via.array.size; ++u)
                    uSum += Sum(o.via.array.ptr[u]);
                return uSum;
            }
            default: return 0;
        }
    }

    void AskAll(const object& oMap, std::uint64_t& uSum) const {
        for (const std::uint32_t uName : m_oSet.lookups) {
            const std::string& sName = m_oSet.names[uName];
            for (std::uint32_t u = 0; u < oMap.via.map.size; ++u) {
                const msgpack::object_kv& oPair = oMap.via.map.ptr[u];
                if (oPair.key.via.str.size != sName.size() ||
                    std::memcmp(oPair.key.via.str.ptr, sName.data(), sName.size()) != 0) {
                    continue;
                }
                uSum += u;
                break;
            }
        }
    }

    const Set& m_oSet;
    msgpack::zone m_oZone{64 * 1024};
    std::size_t m_uZoneBytes = 0;
    object m_oBuilt;
    msgpack::sbuffer m_oBuffer;
    msgpack::object_handle m_oRead;
    msgpack::zone m_oAgain;
};

}  // namespace

void RegisterMsgpack(const Set& oSet) {
    Register<Msgpack>(oSet);
}

}  // namespace bench

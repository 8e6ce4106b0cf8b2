// SPDX-License-Identifier: MIT
#include <cereal/archives/binary.hpp>
#include <cereal/archives/json.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <sstream>

#include "benchmarks/objects.h"

namespace bench::objects {

template <class Archive>
void serialize(Archive& ar, Leg& o) {
    ar(CEREAL_NVP(o.V1), CEREAL_NVP(o.V2), CEREAL_NVP(o.V3), CEREAL_NVP(o.V4));
}
template <class Archive>
void serialize(Archive& ar, Order& o) {
    ar(CEREAL_NVP(o.id), CEREAL_NVP(o.symbol), CEREAL_NVP(o.price), CEREAL_NVP(o.quantity),
       CEREAL_NVP(o.active), CEREAL_NVP(o.note), CEREAL_NVP(o.tags), CEREAL_NVP(o.leg));
}
template <class Archive>
void serialize(Archive& ar, Orders& o) {
    ar(CEREAL_NVP(o.order));
}
template <class Archive>
void serialize(Archive& ar, Address& o) {
    ar(CEREAL_NVP(o.street), CEREAL_NVP(o.city), CEREAL_NVP(o.country), CEREAL_NVP(o.zip));
}
template <class Archive>
void serialize(Archive& ar, Flags& o) {
    ar(CEREAL_NVP(o.admin), CEREAL_NVP(o.beta), CEREAL_NVP(o.mail), CEREAL_NVP(o.push));
}
template <class Archive>
void serialize(Archive& ar, Person& o) {
    ar(CEREAL_NVP(o.name), CEREAL_NVP(o.age), CEREAL_NVP(o.active), CEREAL_NVP(o.balance),
       CEREAL_NVP(o.address), CEREAL_NVP(o.phones), CEREAL_NVP(o.scores), CEREAL_NVP(o.flags));
}

}  // namespace bench::objects

namespace bench {

namespace {

template <class Out, class In>
class CerealObject {
  public:
    template <class T>
    void Write(const T& object) {
        std::ostringstream oStream;
        {
            Out oArchive(oStream);
            oArchive(object);
        }
        m_sBytes = std::move(oStream).str();
    }
    template <class T>
    void Read(T& object) const {
        std::istringstream oStream(m_sBytes);
        In oArchive(oStream);
        oArchive(object);
    }
    void Forget() { m_sBytes = {}; }
    [[nodiscard]] std::size_t Size() const { return m_sBytes.size(); }

  private:
    std::string m_sBytes;
};
struct Binary : CerealObject<cereal::BinaryOutputArchive, cereal::BinaryInputArchive> {
    static constexpr const char* NAME = "cereal, binary";
};
struct Json : CerealObject<cereal::JSONOutputArchive, cereal::JSONInputArchive> {
    static constexpr const char* NAME = "cereal, JSON";
};

}  // namespace

void RegisterCereal(const Set& oSet) {
    RegisterContender<Binary>(oSet);
    RegisterContender<Json>(oSet);
}

}  // namespace bench

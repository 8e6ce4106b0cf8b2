// SPDX-License-Identifier: MIT
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <sstream>

#include "benchmarks/objects.h"

namespace bench::objects {

template <class Archive>
void serialize(Archive& ar, Leg& o, unsigned) {
    ar& o.V1& o.V2& o.V3& o.V4;
}
template <class Archive>
void serialize(Archive& ar, Order& o, unsigned) {
    ar& o.id& o.symbol& o.price& o.quantity& o.active& o.note& o.tags& o.leg;
}
template <class Archive>
void serialize(Archive& ar, Orders& o, unsigned) {
    ar& o.order;
}
template <class Archive>
void serialize(Archive& ar, Address& o, unsigned) {
    ar& o.street& o.city& o.country& o.zip;
}
template <class Archive>
void serialize(Archive& ar, Flags& o, unsigned) {
    ar& o.admin& o.beta& o.mail& o.push;
}
template <class Archive>
void serialize(Archive& ar, Person& o, unsigned) {
    ar& o.name& o.age& o.active& o.balance& o.address& o.phones& o.scores& o.flags;
}

}  // namespace bench::objects

namespace bench {

namespace {

class BoostObject {
  public:
    static constexpr const char* NAME = "Boost, binary";
    template <class T>
    void Write(const T& object) {
        std::ostringstream oStream;
        {
            boost::archive::binary_oarchive oArchive(oStream);
            oArchive << object;
        }
        m_sBytes = std::move(oStream).str();
    }
    template <class T>
    void Read(T& object) const {
        std::istringstream oStream(m_sBytes);
        boost::archive::binary_iarchive oArchive(oStream);
        oArchive >> object;
    }
    void Forget() { m_sBytes = {}; }
    [[nodiscard]] std::size_t Size() const { return m_sBytes.size(); }

  private:
    std::string m_sBytes;
};

}  // namespace

void RegisterBoost(const Set& oSet) {
    RegisterContender<BoostObject>(oSet);
}

}  // namespace bench

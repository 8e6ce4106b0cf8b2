// SPDX-License-Identifier: MIT
#include "benchmarks/objects.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace bench {

using namespace objects;

namespace {

// Items of a set as they stand behind each other.
class Items {
  public:
    explicit Items(const Set& oSet) : m_p(oSet.items.data()) {}
    const Item& Next() { return *m_p++; }
    int Int() { return Next().iValue; }
    bool Bool() { return Next().iValue != 0; }
    double Dbl() { return Next().dValue; }
    std::string Text() {
        const Item& o = Next();
        return {o.pText, o.uText};
    }

  private:
    const Item* m_p;
};

}  // namespace

const objects::Orders& OrderObjects() {
    static const objects::Orders ORDERS = [] {
        objects::Orders orders;
        Items in(bench::Orders());
        orders.order.resize(in.Next().uChildren);
        for (Order& o : orders.order) {
            in.Next();
            o.id = in.Int();
            o.symbol = in.Text();
            o.price = in.Dbl();
            o.quantity = in.Int();
            o.active = in.Bool();
            o.note = in.Text();
            o.tags.resize(in.Next().uChildren);
            for (std::string& s : o.tags) s = in.Text();
            in.Next();
            o.leg = {in.Int(), in.Int(), in.Int(), in.Int()};
        }
        return orders;
    }();
    return ORDERS;
}

const Person& PersonObject() {
    static const Person PERSON = [] {
        Person o;
        Items in(Small());
        in.Next();
        o.name = in.Text();
        o.age = in.Int();
        o.active = in.Bool();
        o.balance = in.Dbl();
        in.Next();
        o.address.street = in.Text();
        o.address.city = in.Text();
        o.address.zip = in.Int();
        o.address.country = in.Text();
        o.phones.resize(in.Next().uChildren);
        for (std::string& s : o.phones) s = in.Text();
        o.scores.resize(in.Next().uChildren);
        for (int& i : o.scores) i = in.Int();
        in.Next();
        o.flags = {in.Bool(), in.Bool(), in.Bool(), in.Bool()};
        return o;
    }();
    return PERSON;
}

namespace {

namespace facade = Velmar::Q7R::Serializer;

class VokObject {
  public:
    static constexpr const char* NAME = "vok";
    template <class T>
    void Write(const T& object) {
        facade::Serializer().Write(object, m_aoBytes);
    }
    template <class T>
    void Read(T& object) const {
        facade::Serializer().Read(object, m_aoBytes);
    }
    void Forget() { m_aoBytes = {}; }
    [[nodiscard]] std::size_t Size() const { return m_aoBytes.size(); }

  private:
    std::vector<facade::Byte> m_aoBytes;
};

// The same documents through a tree, as older hosts go.
class VokTree {
  public:
    static constexpr const char* NAME = "vok, through a tree";
    template <class T>
    void Write(const T& object) {
        m_aoBytes = facade::fields::WriteThroughTree(facade::fields::SourceOf(object), true);
    }
    template <class T>
    void Read(T& object) const {
        facade::fields::ReadThroughTree(m_aoBytes, facade::fields::TargetOf(object), false);
    }
    void Forget() { m_aoBytes = {}; }
    [[nodiscard]] std::size_t Size() const { return m_aoBytes.size(); }

  private:
    std::vector<facade::Byte> m_aoBytes;
};

class MsgpackObject {
  public:
    static constexpr const char* NAME = "msgpack";
    template <class T>
    void Write(const T& object) {
        m_oBuffer.clear();
        msgpack::pack(m_oBuffer, object);
    }
    template <class T>
    void Read(T& object) const {
        msgpack::unpack(m_oBuffer.data(), m_oBuffer.size()).get().convert(object);
    }
    void Forget() { m_oBuffer = {}; }
    [[nodiscard]] std::size_t Size() const { return m_oBuffer.size(); }

  private:
    msgpack::sbuffer m_oBuffer;
};

// Field by field, as its users write it.
class RapidjsonObject {
  public:
    static constexpr const char* NAME = "rapidjson";
    template <class T>
    void Write(const T& object) {
        m_oBuffer.Clear();
        Json oJson(m_oBuffer);
        Put(oJson, object);
    }
    template <class T>
    void Read(T& object) const {
        rapidjson::Document oDocument;
        oDocument.Parse(m_oBuffer.GetString(), m_oBuffer.GetSize());
        Take(oDocument, object);
    }
    void Forget() { m_oBuffer = {}; }
    [[nodiscard]] std::size_t Size() const { return m_oBuffer.GetSize(); }

  private:
    using Json = rapidjson::Writer<rapidjson::StringBuffer>;
    using Value = rapidjson::Value;

    static void Put(Json& o, int i) { o.Int(i); }
    static void Put(Json& o, bool b) { o.Bool(b); }
    static void Put(Json& o, double d) { o.Double(d); }
    static void Put(Json& o, const std::string& s) {
        o.String(s.data(), static_cast<rapidjson::SizeType>(s.size()));
    }
    template <class T>
    static void Put(Json& o, const std::vector<T>& a) {
        o.StartArray();
        for (const T& t : a) Put(o, t);
        o.EndArray();
    }
    template <class T>
    static void Put(Json& o, const T& object) {
        o.StartObject();
        ForEach(object, [&o](const char* sName, const auto& value) {
            o.Key(sName);
            Put(o, value);
        });
        o.EndObject();
    }

    static void Take(const Value& o, int& i) { i = o.GetInt(); }
    static void Take(const Value& o, bool& b) { b = o.GetBool(); }
    static void Take(const Value& o, double& d) { d = o.GetDouble(); }
    static void Take(const Value& o, std::string& s) {
        s.assign(o.GetString(), o.GetStringLength());
    }
    template <class T>
    static void Take(const Value& o, std::vector<T>& a) {
        a.resize(o.Size());
        for (rapidjson::SizeType u = 0; u < o.Size(); ++u) Take(o[u], a[u]);
    }
    template <class T>
    static void Take(const Value& o, T& object) {
        ForEach(object, [&o](const char* sName, auto& value) { Take(o[sName], value); });
    }

    // The names of the fields stand in the types once for all contenders.
    template <class T, class Use>
    static void ForEach(T& object, const Use& oUse) {
        std::apply(
            [&](const auto&... f) {
                (oUse(f.m_sName.data(), std::invoke(f.m_oAccess, object)), ...);
            },
            facade::fields::LIST<std::remove_const_t<T>>.m_oFields);
    }

    rapidjson::StringBuffer m_oBuffer;
};

}  // namespace

void RegisterObjects(const Set& oSet) {
    RegisterContender<VokObject>(oSet);
    RegisterContender<VokTree>(oSet);
    RegisterContender<MsgpackObject>(oSet);
    RegisterContender<RapidjsonObject>(oSet);
}

}  // namespace bench

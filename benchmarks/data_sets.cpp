// SPDX-License-Identifier: MIT
#include "benchmarks/data_sets.h"

#include <map>
#include <random>

namespace bench {

namespace {

class Maker {
  public:
    explicit Maker(Set& oSet) : m_oSet(oSet) {}

    std::uint32_t Name(const std::string& sName) {
        const auto uNext = static_cast<std::uint32_t>(m_oSet.names.size());
        const auto [oFound, bNew] = m_oNames.try_emplace(sName, uNext);
        if (bNew) m_oSet.names.push_back(sName);
        return oFound->second;
    }
    void Map(std::uint32_t uName, std::uint32_t uChildren) {
        Add(Kind::Map, uName).uChildren = uChildren;
    }
    void List(std::uint32_t uName, std::uint32_t uChildren) {
        Add(Kind::List, uName).uChildren = uChildren;
    }
    void Integer(std::uint32_t uName, std::int32_t iValue) {
        Add(Kind::Integer, uName).iValue = iValue;
    }
    void Double(std::uint32_t uName, double dValue) { Add(Kind::Double, uName).dValue = dValue; }
    void Boolean(std::uint32_t uName, bool bValue) { Add(Kind::Boolean, uName).iValue = bValue; }
    void Text(std::uint32_t uName, const std::string& sText) { AddBytes(Kind::Text, uName, sText); }
    void Binary(std::uint32_t uName, const std::string& sBytes) {
        AddBytes(Kind::Binary, uName, sBytes);
    }

  private:
    void AddBytes(Kind eKind, std::uint32_t uName, const std::string& sBytes) {
        Item& oItem = Add(eKind, uName);
        oItem.pText = Shared(sBytes);
        oItem.uText = static_cast<std::uint32_t>(sBytes.size());
    }
    Item& Add(Kind eKind, std::uint32_t uName) {
        Item oItem{};
        oItem.eKind = eKind;
        oItem.uName = uName;
        m_oSet.items.push_back(oItem);
        return m_oSet.items.back();
    }
    // Equal texts stand once: building is to be timed, not the reading of its input.
    const char* Shared(const std::string& sText) {
        const auto [oFound, bNew] = m_oTexts.try_emplace(sText, nullptr);
        if (bNew) {
            m_oSet.texts.push_back(sText);
            oFound->second = m_oSet.texts.back().c_str();
        }
        return oFound->second;
    }

    std::map<std::string, std::uint32_t> m_oNames;
    std::map<std::string, const char*> m_oTexts;
    Set& m_oSet;
};

Set MakeOrders() {
    Set oSet;
    oSet.sName = "orders";
    Maker m(oSet);
    std::mt19937 oRandom(1);
    constexpr std::uint32_t COUNT = 100000;
    const std::uint32_t uRoot = m.Name("orders"), uOrder = m.Name("order"), uId = m.Name("id"),
                        uSymbol = m.Name("symbol"), uPrice = m.Name("price"),
                        uQuantity = m.Name("quantity"), uActive = m.Name("active"),
                        uNote = m.Name("note"), uTags = m.Name("tags"), uTag = m.Name("tag"),
                        uLeg = m.Name("leg"), uV1 = m.Name("V1"), uV2 = m.Name("V2"),
                        uV3 = m.Name("V3"), uV4 = m.Name("V4");
    const char* asSymbols[] = {"ALFA", "BRVO", "CHRL", "DLTA", "ECHO", "FXTR"};
    const char* asTags[] = {"spot", "limit", "urgent", "desk-4", "hedge", "partial"};
    oSet.items.reserve(16 * COUNT + 1);
    m.List(uRoot, COUNT);
    for (std::uint32_t u = 0; u < COUNT; ++u) {
        m.Map(uOrder, 8);
        m.Integer(uId, static_cast<std::int32_t>(u));
        m.Text(uSymbol, asSymbols[oRandom() % 6]);
        m.Double(uPrice, static_cast<double>(oRandom() % 100000) / 100.0);
        m.Integer(uQuantity, static_cast<std::int32_t>(oRandom() % 10000));
        m.Boolean(uActive, oRandom() % 2 == 0);
        m.Text(uNote, "customer note number " + std::to_string(oRandom() % 1000));
        m.List(uTags, 3);
        for (int i = 0; i < 3; ++i) m.Text(uTag, asTags[oRandom() % 6]);
        m.Map(uLeg, 4);
        m.Integer(uV1, static_cast<std::int32_t>(oRandom() % 1000));
        m.Integer(uV2, static_cast<std::int32_t>(oRandom() % 1000000));
        m.Integer(uV3, -static_cast<std::int32_t>(oRandom() % 1000));
        m.Integer(uV4, static_cast<std::int32_t>(oRandom() % 100));
    }
    oSet.lookups = {uId, uPrice, uNote, uQuantity};
    oSet.uMaps = COUNT;
    return oSet;
}

Set MakeConfig() {
    Set oSet;
    oSet.sName = "config";
    Maker m(oSet);
    std::mt19937 oRandom(2);
    constexpr std::uint32_t NAMES = 2000, SECTIONS = 40, GROUPS = 10, FIELDS = 49;
    for (std::uint32_t u = 0; u < NAMES; ++u) {
        static const char* const asWords[] = {"cache", "network", "timeout", "path", "user"};
        m.Name(std::string(asWords[u % 5]) + "_setting_" + std::to_string(u));
    }
    const std::uint32_t uRoot = m.Name("config");
    m.Map(uRoot, SECTIONS);
    for (std::uint32_t uSection = 0; uSection < SECTIONS; ++uSection) {
        m.Map(uSection * 7, GROUPS);
        for (std::uint32_t uGroup = 0; uGroup < GROUPS; ++uGroup) {
            m.Map(300 + uGroup * 11, FIELDS);
            const auto uFirst = static_cast<std::uint32_t>(oRandom() % NAMES);
            for (std::uint32_t u = 0; u < FIELDS; ++u) {
                // Different names in one group, in no order.
                const std::uint32_t uName = (uFirst + u * 37) % NAMES;
                switch (oRandom() % 4) {
                    case 0: m.Integer(uName, static_cast<std::int32_t>(oRandom() % 100)); break;
                    case 1: m.Boolean(uName, oRandom() % 2 == 0); break;
                    case 2: m.Double(uName, static_cast<double>(oRandom() % 1000) / 8); break;
                    default: m.Text(uName, "/srv/app/value" + std::to_string(oRandom() % 50));
                }
            }
        }
    }
    // Sections are what the root holds.
    for (std::uint32_t u = 0; u < SECTIONS; ++u) oSet.lookups.push_back(u * 7);
    oSet.uMaps = 1;
    return oSet;
}

Set MakeSmall() {
    Set oSet;
    oSet.sName = "small";
    Maker m(oSet);
    m.Map(m.Name("person"), 8);
    m.Text(m.Name("name"), "Erika Mustermann");
    m.Integer(m.Name("age"), 42);
    m.Boolean(m.Name("active"), true);
    m.Double(m.Name("balance"), 1234.5);
    m.Map(m.Name("address"), 4);
    m.Text(m.Name("street"), "Heidestr. 17");
    m.Text(m.Name("city"), "Koeln");
    m.Integer(m.Name("zip"), 51147);
    m.Text(m.Name("country"), "DE");
    m.List(m.Name("phones"), 3);
    for (int i = 0; i < 3; ++i) m.Text(m.Name("phone"), "+49 221 555 0" + std::to_string(i));
    m.List(m.Name("scores"), 4);
    for (int i = 0; i < 4; ++i) m.Integer(m.Name("score"), 10 * i);
    m.Map(m.Name("flags"), 4);
    for (const char* s : {"admin", "beta", "mail", "push"}) m.Boolean(m.Name(s), *s != 'a');
    oSet.lookups = {m.Name("age"), m.Name("balance"), m.Name("name")};
    oSet.uMaps = 1;
    return oSet;
}

Set MakeNumbers() {
    Set oSet;
    oSet.sName = "numbers";
    Maker m(oSet);
    constexpr std::uint32_t COUNT = 1000000;
    oSet.items.reserve(COUNT + 1);
    m.Map(m.Name("root"), 1);
    m.List(m.Name("numbers"), COUNT);
    const std::uint32_t uNumber = m.Name("n");
    std::mt19937 oRandom(3);
    for (std::uint32_t u = 0; u < COUNT; ++u) {
        m.Integer(uNumber, static_cast<std::int32_t>(oRandom() % 100000));
    }
    oSet.lookups = {m.Name("numbers")};
    oSet.uMaps = 1;
    return oSet;
}

Set MakeNames() {
    Set oSet;
    oSet.sName = "names";
    Maker m(oSet);
    constexpr std::uint32_t COUNT = 200000, ASKED = 200;
    std::mt19937 oRandom(4);
    m.Map(m.Name("root"), COUNT);
    for (std::uint32_t u = 0; u < COUNT; ++u) {
        // In no order, as names from outside are.
        const std::uint32_t uName = m.Name("name-" + std::to_string(u * 7919 % COUNT));
        m.Integer(uName, static_cast<std::int32_t>(u));
        if (u % (COUNT / ASKED) == 0) oSet.lookups.push_back(uName);
    }
    oSet.uMaps = 1;
    return oSet;
}

Set MakeDeep() {
    Set oSet;
    oSet.sName = "deep";
    Maker m(oSet);
    constexpr std::uint32_t CHAINS = 100, LEVELS = 200;
    const std::uint32_t uChain = m.Name("chain"), uLevel = m.Name("level"),
                        uInner = m.Name("inner"), uText = m.Name("text");
    m.List(m.Name("deep"), CHAINS);
    for (std::uint32_t uNth = 0; uNth < CHAINS; ++uNth) {
        for (std::uint32_t u = 0; u < LEVELS; ++u) {
            m.Map(u == 0 ? uChain : uInner, u + 1 < LEVELS ? 3 : 2);
            m.Integer(uLevel, static_cast<std::int32_t>(u));
            m.Text(uText, "at level " + std::to_string(u % 10));
        }
    }
    oSet.lookups = {uLevel, uText};
    oSet.uMaps = CHAINS;
    return oSet;
}

Set MakeBlobs() {
    Set oSet;
    oSet.sName = "blobs";
    Maker m(oSet);
    constexpr std::uint32_t COUNT = 64, BYTES = 64 * 1024;
    m.Map(m.Name("root"), 1);
    m.List(m.Name("blobs"), COUNT);
    const std::uint32_t uBlob = m.Name("blob");
    std::mt19937 oRandom(5);
    std::string sBytes(BYTES, '\0');
    for (std::uint32_t u = 0; u < COUNT; ++u) {
        for (char& c : sBytes) c = static_cast<char>(oRandom());
        m.Binary(uBlob, sBytes);
    }
    oSet.lookups = {m.Name("blobs")};
    oSet.uMaps = 1;
    return oSet;
}

// Made once, by who asks first.
template <Set (*MAKE)()>
const Set& Made() {
    static const Set oSet = MAKE();
    return oSet;
}

}  // namespace

const Set& Orders() {
    return Made<MakeOrders>();
}
const Set& Config() {
    return Made<MakeConfig>();
}
const Set& Small() {
    return Made<MakeSmall>();
}
const Set& Numbers() {
    return Made<MakeNumbers>();
}
const Set& Names() {
    return Made<MakeNames>();
}
const Set& Deep() {
    return Made<MakeDeep>();
}
const Set& Blobs() {
    return Made<MakeBlobs>();
}

}  // namespace bench

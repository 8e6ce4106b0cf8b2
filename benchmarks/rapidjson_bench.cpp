// SPDX-License-Identifier: MIT
// RapidJSON: trees are rapidjson::Value in a pool.
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "benchmarks/contender.h"
#include "vok/base/base64.h"

namespace bench {

namespace {

using rapidjson::Value;

class Rapidjson {
  public:
    static constexpr const char* NAME = "rapidjson";

    explicit Rapidjson(const Set& oSet) : m_oSet(oSet) {
        std::size_t uNext = 0;
        Build(m_oBuilt, uNext);
    }

    void Write() {
        m_oBuffer.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> oWriter(m_oBuffer);
        m_oBuilt.Accept(oWriter);
    }
    [[nodiscard]] std::size_t Size() const { return m_oBuffer.GetSize(); }
    void Read() {
        m_oRead = rapidjson::Document();
        m_oRead.Parse(m_oBuffer.GetString(), m_oBuffer.GetSize());
    }

    std::uint64_t Walk() { return Sum(m_oRead); }

    std::uint64_t Lookup() {
        std::uint64_t uSum = 0;
        if (m_oSet.uMaps == 1) {
            AskAll(m_oRead, uSum);
        } else {
            for (const Value& oMap : m_oRead.GetArray()) AskAll(oMap, uSum);
        }
        return uSum;
    }

    double HeapBytes() { return static_cast<double>(m_oBuilt.GetAllocator().Size()); }

  private:
    static rapidjson::SizeType Length(const std::string& sText) {
        return static_cast<rapidjson::SizeType>(sText.size());
    }

    void Build(Value& oInto, std::size_t& uNext) {
        auto& oPool = m_oBuilt.GetAllocator();
        const Item& oItem = m_oSet.items[uNext++];
        switch (oItem.eKind) {
            case Kind::Integer: oInto.SetInt(oItem.iValue); break;
            case Kind::Double: oInto.SetDouble(oItem.dValue); break;
            case Kind::Boolean: oInto.SetBool(oItem.iValue != 0); break;
            case Kind::Text: oInto.SetString(oItem.pText, oItem.uText, oPool); break;
            case Kind::Binary: {
                // JSON carries no bytes: their base64 is made here, once, and never decoded.
                std::string sText(vok::Base64Size(oItem.uText), '\0');
                vok::EncodeBase64(oItem.pText, oItem.uText, sText.data());
                oInto.SetString(sText.data(), Length(sText), oPool);
                break;
            }
            case Kind::Map:
                oInto.SetObject();
                for (std::uint32_t u = 0; u < oItem.uChildren; ++u) {
                    const std::string& sName = m_oSet.names[m_oSet.items[uNext].uName];
                    Value oName(rapidjson::StringRef(sName.data(), Length(sName)));
                    Value oValue;
                    Build(oValue, uNext);
                    oInto.AddMember(oName, oValue, oPool);
                }
                break;
            case Kind::List:
                oInto.SetArray();
                oInto.Reserve(oItem.uChildren, oPool);
                for (std::uint32_t u = 0; u < oItem.uChildren; ++u) {
                    Value oValue;
                    Build(oValue, uNext);
                    oInto.PushBack(oValue, oPool);
                }
        }
    }

    static std::uint64_t Sum(const Value& o) {
        switch (o.GetType()) {
            case rapidjson::kNumberType:
                return o.IsInt() ? static_cast<std::uint64_t>(o.GetInt())
                                 : static_cast<std::uint64_t>(o.GetDouble());
            case rapidjson::kTrueType: return 1;
            case rapidjson::kStringType: return o.GetStringLength();
            case rapidjson::kObjectType: {
                std::uint64_t uSum = 1;
                for (const auto& oMember : o.GetObject()) {
                    uSum += static_cast<unsigned char>(*oMember.name.GetString());
                    uSum += Sum(oMember.value);
                }
                return uSum;
            }
            case rapidjson::kArrayType: {
                std::uint64_t uSum = 1;
                for (const Value& oElement : o.GetArray()) uSum += Sum(oElement);
                return uSum;
            }
            default: return 0;
        }
    }

    void AskAll(const Value& oMap, std::uint64_t& uSum) const {
        for (const std::uint32_t uName : m_oSet.lookups) {
            const std::string& sName = m_oSet.names[uName];
            const auto oFound =
                oMap.FindMember(Value(rapidjson::StringRef(sName.data(), Length(sName))));
            uSum += oFound != oMap.MemberEnd();
        }
    }

    const Set& m_oSet;
    rapidjson::Document m_oBuilt;
    rapidjson::StringBuffer m_oBuffer;
    rapidjson::Document m_oRead;
};

}  // namespace

void RegisterRapidjson(const Set& oSet) {
    Register<Rapidjson>(oSet);
}

}  // namespace bench

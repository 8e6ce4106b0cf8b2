// SPDX-License-Identifier: MIT
#include "tools/json_lines.h"

#include <cmath>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <rapidjson/writer.h>

#include "tools/text.h"
#include "vok/base/utf8.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

using vok::Data_Node;

// Where a walk through a record stands among its shapes: of every open level the shape, how far its
// successors were gone through - their names come in order - and the one that came last.
struct Place {
    const Shape* pShape;
    std::size_t uNext = 0;
    const Shape* pLast = nullptr;
};

// What is written was gone through before; a file may have become another one since.
[[noreturn]] void RaiseChanged() {
    throw std::runtime_error("the document changed while it was read");
}

[[nodiscard]] std::string_view NameOf(const vok::Data_View& o) noexcept {
    const char* sName = o.GetName();
    return sName != nullptr ? sName : "";
}

}  // namespace

void NoteShape(Shape& oTop, const vok::Data& oRecord) {
    struct Level {
        Shape* pShape;
        std::size_t uNext = 0;
        const Shape* pLast = nullptr;
    };
    std::vector<Level> aoLevel;
    for (vok::Data_Walk o(oRecord); o.Next();) {
        aoLevel.resize(o.GetDepth());
        Shape* pShape = &oTop;
        if (!aoLevel.empty()) {
            Level& oLevel = aoLevel.back();
            const std::string_view sName = NameOf(o);
            auto& aoBelow = oLevel.pShape->aoBelow;
            while (oLevel.uNext < aoBelow.size() && aoBelow[oLevel.uNext]->sName < sName) {
                ++oLevel.uNext;
            }
            if (oLevel.uNext == aoBelow.size() || aoBelow[oLevel.uNext]->sName != sName) {
                auto pNew = std::make_unique<Shape>();
                pNew->sName = sName;
                aoBelow.insert(aoBelow.begin() + static_cast<std::ptrdiff_t>(oLevel.uNext),
                               std::move(pNew));
            }
            pShape = aoBelow[oLevel.uNext].get();
            pShape->bList = pShape->bList || pShape == oLevel.pLast;
            oLevel.pLast = pShape;
        }
        pShape->bObject = pShape->bObject || o.GetType() == Data_Node::Tree || o.HasAttributes();
        if (o.GetType() == Data_Node::Tree) aoLevel.push_back({pShape});
    }
}

class JsonLines::Impl {
  public:
    Impl(vok::File_Stream& oOut, const Shape& oTop)
        : m_oTop(oTop), m_oSink{oOut, {}}, m_oJson(m_oSink) {}

    void Add(const vok::Data& oRecord) {
        m_aoPlace.clear();
        m_oJson.Reset(m_oSink);
        for (vok::Data_Walk o(oRecord); o.Next();) {
            CloseTo(o.GetDepth());
            AddNode(o, m_aoPlace.empty() ? m_oTop : NextShape(NameOf(o)));
        }
        CloseTo(0);
        m_oSink.Put('\n');
    }
    void Finish() { m_oSink.Write(); }

  private:
    // What the writer of JSON writes to.
    struct Sink {
        using Ch = char;
        void Put(char c) {
            sPiece += c;
            if (sPiece.size() >= PIECE) Write();
        }
        void Flush() {}
        void Write() {
            if (!sPiece.empty()) oOut.Write(sPiece.data(), sPiece.size());
            sPiece.clear();
        }
        static constexpr std::size_t PIECE = 65536;
        vok::File_Stream& oOut;
        std::string sPiece;
    };

    void Text(std::string_view s) {
        m_oJson.String(s.data(), static_cast<rapidjson::SizeType>(s.size()));
    }
    // "@" and "#" are for attributes and values: names that begin so have one more of them.
    void Key(std::string_view sName) {
        const bool bMark = sName.starts_with('@') || sName.starts_with('#');
        m_sKey.assign(bMark ? 1 : 0, sName.empty() ? ' ' : sName[0]).append(sName);
        m_oJson.Key(m_sKey.data(), static_cast<rapidjson::SizeType>(m_sKey.size()));
    }

    // The successor of that name in the object that is open last; begins its list.
    const Shape& NextShape(std::string_view sName) {
        Place& o = m_aoPlace.back();
        const auto& aoBelow = o.pShape->aoBelow;
        while (o.uNext < aoBelow.size() && aoBelow[o.uNext]->sName != sName) ++o.uNext;
        if (o.uNext == aoBelow.size()) RaiseChanged();
        const Shape* const pShape = aoBelow[o.uNext].get();
        if (o.pLast == pShape) {
            if (!pShape->bList) RaiseChanged();
            return *pShape;
        }
        EndList(o);
        Key(sName);
        if (pShape->bList) m_oJson.StartArray();
        o.pLast = pShape;
        return *pShape;
    }
    void EndList(const Place& o) {
        if (o.pLast != nullptr && o.pLast->bList) m_oJson.EndArray();
    }
    // Ends objects until so many are open.
    void CloseTo(std::size_t uDepth) {
        for (; m_aoPlace.size() > uDepth; m_aoPlace.pop_back()) {
            EndList(m_aoPlace.back());
            m_oJson.EndObject();
        }
    }

    void AddNode(const vok::Data_Walk& o, const Shape& oShape) {
        const Data_Node::Type eType = o.GetType();
        if (!oShape.bObject) {
            if (eType == Data_Node::Tree || o.HasAttributes()) RaiseChanged();
            return AddValue(o);
        }
        m_oJson.StartObject();
        if (o.HasAttributes()) AddAttributes(o.GetData());
        if (eType == Data_Node::Tree) return m_aoPlace.push_back({&oShape});
        if (eType != Data_Node::Empty) {
            m_oJson.Key("#value");
            AddValue(o);
        }
        m_oJson.EndObject();
    }

    void AddAttributes(const vok::Data& oNode) {
        oNode.GetAttributes(m_oNames, m_oValues, true);
        for (std::size_t u = 0; u < m_oNames.Size(); ++u) {
            m_sKey.assign(1, '@').append(m_oNames(u));
            m_oJson.Key(m_sKey.data(), static_cast<rapidjson::SizeType>(m_sKey.size()));
            Text(m_oValues(u));
        }
    }

    // JSON has no infinities and nothing that is not a number.
    void AddReal(double d) {
        if (std::isfinite(d)) {
            m_oJson.Double(d);
        } else {
            m_oJson.Null();
        }
    }
    void AddValue(const vok::Data_Walk& o) {
        switch (o.GetType()) {
            case Data_Node::Boolean: m_oJson.Bool(o.Int() != 0); break;
            case Data_Node::Integer: m_oJson.Int(o.Int()); break;
            case Data_Node::Long: m_oJson.Uint64(o.Lng()); break;
            case Data_Node::Float:
            case Data_Node::Double: AddReal(o.Dbl()); break;
            case Data_Node::Char: {
                char s[4];
                const unsigned uSize = vok::EncodeUtf8(static_cast<vok::u2_t>(o.Int()), s);
                Text({s, o.Int() != 0 ? uSize : 0});
                break;
            }
            case Data_Node::Quad:
                m_oJson.StartArray();
                for (unsigned u = 0; u < 4; ++u) m_oJson.Uint(o.QuadWord(u));
                m_oJson.EndArray();
                break;
            case Data_Node::String: Text(o.Text()); break;
            case Data_Node::Date:
            case Data_Node::Binary:
            case Data_Node::Link: Text(ValueText(o.GetData())); break;
            default: m_oJson.Null(); break;
        }
    }

    const Shape& m_oTop;
    Sink m_oSink;
    rapidjson::Writer<Sink> m_oJson;
    std::vector<Place> m_aoPlace;  // of the objects that are open
    vok::Arr<const char*> m_oNames;
    vok::Arr<const char*> m_oValues;
    std::string m_sKey;
};

JsonLines::JsonLines(vok::File_Stream& oOut, const Shape& oTop)
    : m_pImpl(std::make_unique<Impl>(oOut, oTop)) {}

JsonLines::~JsonLines() = default;

void JsonLines::Add(const vok::Data& oRecord) {
    m_pImpl->Add(oRecord);
}

void JsonLines::Finish() {
    m_pImpl->Finish();
}

}  // namespace tools

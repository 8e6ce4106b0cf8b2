// SPDX-License-Identifier: MIT
// Nodes as JSON, for writers of RapidJSON.
#ifndef TOOLS_JSON_NODES_H
#define TOOLS_JSON_NODES_H

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include <rapidjson/rapidjson.h>

#include "tools/print.h"
#include "tools/text.h"
#include "vok/base/str.h"
#include "vok/data/data.h"
#include "vok/data/walk.h"

namespace tools {

// What the writer of JSON writes to: the standard output.
class JsonPrinter {
  public:
    using Ch = char;
    void Put(char c) {
        m_sPiece += c;
        if (m_sPiece.size() == PIECE) Flush();
    }
    void Flush() {
        Print(m_sPiece);
        m_sPiece.clear();
    }

  private:
    static constexpr std::size_t PIECE = 65536;
    std::string m_sPiece;
};

// Names of files and values of messages need not be UTF-8; JSON is.
template <class Writer>
void WriteText(Writer& oOut, std::string_view s) {
    const vok::Utf8_Text oValid(s);
    oOut.String(oValid.Data(), static_cast<rapidjson::SizeType>(oValid.Len()));
}

// JSON has no infinities and no NaN: they are texts, like everything that is no number.
template <class Writer>
void WriteValue(Writer& oOut, const vok::Data& oNode) {
    using vok::Data_Node;
    switch (oNode.GetType()) {
        case Data_Node::Boolean: oOut.Bool(oNode.GetValBool()); break;
        case Data_Node::Integer: oOut.Int(oNode.GetValInt()); break;
        case Data_Node::Char: oOut.Int(oNode.GetValInt(Data_Node::Char)); break;
        case Data_Node::Long: oOut.Uint64(oNode.GetValLng()); break;
        case Data_Node::Float:
        case Data_Node::Double: {
            const double dValue = oNode.GetValDbl(oNode.GetType());
            if (std::isfinite(dValue)) {
                oOut.Double(dValue);
                break;
            }
            [[fallthrough]];
        }
        default: WriteText(oOut, ValueText(oNode));
    }
}

// The members "type" and "value" of a node.
template <class Writer>
void WriteTypeAndValue(Writer& oOut, const vok::Data& oNode, bool bAttributes) {
    using vok::Data_Node;
    oOut.Key("type");
    WriteText(oOut, Data_Node::TypeName(oNode.GetType()));
    vok::Arr<const char*> oNames;
    vok::Arr<const char*> oValues;
    if (bAttributes) oNode.GetAttributes(oNames, oValues, true);
    if (oNames.Size() != 0) {
        oOut.Key("attributes");
        oOut.StartObject();
        for (std::size_t u = 0; u < oNames.Size(); ++u) {
            oOut.Key(oNames(u));
            WriteText(oOut, oValues(u));
        }
        oOut.EndObject();
    }
    if (oNode.GetType() != Data_Node::Tree && oNode.GetType() != Data_Node::Empty) {
        oOut.Key("value");
        WriteValue(oOut, oNode);
    }
}

// Everything of a node but its successors; the object stays open.
template <class Writer>
void WriteNode(Writer& oOut, const vok::Data& oNode) {
    oOut.StartObject();
    oOut.Key("name");
    const char* sName = oNode.GetName();
    WriteText(oOut, sName != nullptr ? sName : "");
    WriteTypeAndValue(oOut, oNode, true);
}

template <class Writer>
void WriteTree(Writer& oOut, const vok::Data& oFrom, std::optional<unsigned> uMostDepth = {}) {
    // Levels whose object is open; each but the last has its list of successors open as well.
    std::size_t uOpen = 0;
    vok::Data oNode = oFrom;
    for (vok::Data_Walk o(oFrom); o.Next();) {
        if (uOpen == o.GetDepth() && uOpen != 0) {
            oOut.Key("successors");
            oOut.StartArray();
        }
        for (; uOpen > o.GetDepth(); --uOpen) {
            oOut.EndObject();
            if (uOpen > o.GetDepth() + 1) oOut.EndArray();
        }
        oNode.SetToNode(o.GetId());
        WriteNode(oOut, oNode);
        ++uOpen;
        if (uMostDepth && o.GetDepth() >= *uMostDepth) o.SkipSuccessors();
    }
    for (; uOpen > 0; --uOpen) {
        oOut.EndObject();
        if (uOpen > 1) oOut.EndArray();
    }
}

}  // namespace tools

#endif  // TOOLS_JSON_NODES_H

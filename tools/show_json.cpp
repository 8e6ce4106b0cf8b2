// vok show --json: a tree for other programs.
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include <rapidjson/prettywriter.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Node;

// What the writer of JSON writes to: the standard output.
class Printer {
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
using Writer = rapidjson::PrettyWriter<Printer>;

void WriteText(Writer& oOut, std::string_view s) {
    oOut.String(s.data(), static_cast<rapidjson::SizeType>(s.size()));
}

// JSON has no infinities and no NaN: they are texts, like everything that is no number.
void WriteValue(Writer& oOut, const Data& oNode) {
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

// Everything of a node but its successors; the object stays open.
void WriteNode(Writer& oOut, const Data& oNode) {
    oOut.StartObject();
    oOut.Key("name");
    const char* sName = oNode.GetName();
    WriteText(oOut, sName != nullptr ? sName : "");
    oOut.Key("type");
    WriteText(oOut, Data_Node::TypeName(oNode.GetType()));
    vok::Arr<const char*> oNames;
    vok::Arr<const char*> oValues;
    oNode.GetAttributes(oNames, oValues, true);
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

void WriteTree(Writer& oOut, const Data& oFrom, std::optional<unsigned> uMostDepth) {
    // Levels whose object is open; each but the last has its list of successors open as well.
    std::size_t uOpen = 0;
    Data oNode = oFrom;
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

bool IsDeep(const vok::Data_NodeSet& oFound) {
    constexpr std::size_t DEEP = 100;
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        for (vok::Data_Walk o(oFound.GetNth(u)); o.Next();) {
            if (o.GetDepth() > DEEP) return true;
        }
    }
    return false;
}

}  // namespace

int ShowJson(const ShowOptions& o) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    Printer oStream;
    Writer oOut(oStream);
    // Lines of a deep tree would be longer than all that is in them.
    oOut.SetIndent(' ', IsDeep(oFound) ? 0 : 1);
    oOut.StartArray();
    for (std::size_t u = 0; u < oFound.Size(); ++u) WriteTree(oOut, oFound.GetNth(u), o.uDepth);
    oOut.EndArray();
    oStream.Put('\n');
    oStream.Flush();
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools

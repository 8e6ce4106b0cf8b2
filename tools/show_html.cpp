// SPDX-License-Identifier: MIT
// vok show --html: a tree as a page that needs nothing but a browser.
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/node_bytes.h"
#include "tools/page.h"
#include "tools/say.h"
#include "tools/text.h"
#include "vok/data/id_map.h"
#include "vok/data/names.h"
#include "vok/data/succ_it.h"
#include "vok/data/walk.h"

namespace tools {

namespace {

using vok::Data;
using vok::Data_Node;

// Nodes in pre-order, as the page wants them: see there.
class PageData {
  public:
    PageData(const Data& oTop, ScriptSink& oOut)
        : m_oTop(oTop), m_oNumber(oTop.GetNodes()), m_oJson(oOut) {}

    // pBytes may be null.
    void Write(const std::string& sTitle, const NodeBytes* pBytes) {
        Survey();
        m_oJson.StartObject();
        Key("title");
        Text(sTitle);
        Key("names");
        m_oJson.StartArray();
        for (vok::u2_t u = 0; u < m_oNames.Size(); ++u) Text(m_oNames(u).View());
        m_oJson.EndArray();
        Key("types");
        m_oJson.StartArray();
        for (vok::u2_t u = 0; u <= Data_Node::Tree; ++u) Text(Data_Node::TypeName(u));
        m_oJson.EndArray();
        Key("nodes");
        m_oJson.StartArray();
        WriteNodes();
        m_oJson.EndArray();
        if (pBytes != nullptr) WriteBytes(*pBytes);
        m_oJson.EndObject();
    }

  private:
    // Numbers of nodes, and all names.
    void Survey() {
        vok::u2_t uNumber = 0;
        for (vok::Data_Walk o(m_oTop); o.Next();) {
            m_oNumber(o.GetId()) = ++uNumber;
            (void)m_oNames.Intern(NameOf(o));
        }
    }
    void WriteNodes() {
        std::vector<vok::u2_t> auOpen;  // numbers of the nodes above
        vok::u2_t uNumber = 0;
        for (vok::Data_Walk o(m_oTop); o.Next(); ++uNumber) {
            auOpen.resize(o.GetDepth());
            m_oJson.StartArray();
            m_oJson.Uint(m_oNames.Look(NameOf(o)));
            m_oJson.Uint(o.GetType());
            m_oJson.Uint(auOpen.empty() ? 0 : auOpen.back());
            WriteValue(o);
            if (o.HasAttributes()) WriteAttributes(o.GetData());
            m_oJson.EndArray();
            auOpen.push_back(uNumber);
        }
    }
    void WriteValue(const vok::Data_Walk& o) {
        switch (o.GetType()) {
            case Data_Node::Empty:
            case Data_Node::Tree: m_oJson.Null(); return;
            case Data_Node::Link: {
                const vok::u2_t uTarget = o.LinkId();
                const vok::u2_t uNumber = uTarget < m_oTop.GetNodes() ? m_oNumber.Find(uTarget) : 0;
                m_oJson.Int64(static_cast<std::int64_t>(uNumber) - 1);
                return;
            }
            default: Text(ValueText(o.GetValue()));
        }
    }
    // As far as they are worth looking at.
    void WriteBytes(const NodeBytes& oBytes) {
        constexpr std::size_t MOST = 256;
        Key("bytes");
        m_oJson.StartArray();
        for (vok::Data_Walk o(m_oTop); o.Next();) {
            const NodeBytes::Place oPlace = oBytes.Find(o.GetId());
            if (oPlace.uLength == 0) {
                m_oJson.Uint(0);
                continue;
            }
            m_oJson.StartArray();
            m_oJson.Uint64(oPlace.uOffset);
            m_oJson.Uint64(oPlace.uLength);
            Text(Hex(oBytes.Bytes(oPlace, MOST)));
            m_oJson.EndArray();
        }
        m_oJson.EndArray();
    }
    void WriteAttributes(const Data& oNode) {
        m_oJson.StartArray();
        for (const auto& [sName, sValue] : oNode.GetAttributes()) {
            m_oJson.StartArray();
            Text(sName);
            Text(sValue);
            m_oJson.EndArray();
        }
        m_oJson.EndArray();
    }

    [[nodiscard]] static std::string_view NameOf(const vok::Data_Walk& o) noexcept {
        const char* sName = o.GetName();
        return sName != nullptr ? sName : "";
    }
    void Key(std::string_view s) {
        m_oJson.Key(s.data(), static_cast<rapidjson::SizeType>(s.size()));
    }
    void Text(std::string_view s) { WriteText(m_oJson, s); }

    const Data m_oTop;
    vok::Data_IdMap<vok::u2_t> m_oNumber;  // by id, plus 1
    vok::Data_Names m_oNames;
    rapidjson::Writer<ScriptSink> m_oJson;
};

}  // namespace

int ShowHtml(const ShowOptions& o) {
    const Input oIn = Load(o.sFile, {}, o.bBytes);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    if (oFound.Size() == 0) return EXIT_NEGATIVE;
    if (oFound.Size() > 1) {
        throw std::invalid_argument(Say("a page shows one tree: there are %0 nodes at that path",
                                        {std::to_string(oFound.Size())}));
    }
    std::optional<NodeBytes> oBytes;
    if (o.bBytes) oBytes.emplace(oIn);
    WritePage(TREE_PAGE, o.sOut, [&](ScriptSink& oOut) {
        PageData(oFound.GetNth(0), oOut)
            .Write(o.sFile == "-" ? "Tree" : o.sFile, oBytes ? &*oBytes : nullptr);
    });
    return EXIT_GOOD;
}

}  // namespace tools

// SPDX-License-Identifier: MIT
// Documents record by record: ours beside the readers that others have for what is larger than
// memory, over the same data. Each looks at every name and every value.
#include <expat.h>
#include <libxml/xmlreader.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "benchmarks/contender.h"
#include "benchmarks/vok_tree.h"
#include "vok/data/walk.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"
#include "vok/records/reader.h"
#include "vok/records/records.h"
#include "vok/records/writer.h"

namespace bench {

namespace {

// The set as each form has it.
struct Documents {
    std::string sDGraph;
    std::string sXml;
    std::string sJson;  // a line for every successor of the root
};

void WriteJson(const Set& oSet, rapidjson::Writer<rapidjson::StringBuffer>& o, std::size_t& uNext) {
    const Item& oItem = oSet.items[uNext++];
    switch (oItem.eKind) {
        case Kind::Integer: o.Int(oItem.iValue); break;
        case Kind::Double: o.Double(oItem.dValue); break;
        case Kind::Boolean: o.Bool(oItem.iValue != 0); break;
        case Kind::Text:
        case Kind::Binary: o.String(oItem.pText, oItem.uText); break;
        case Kind::Map:
            o.StartObject();
            for (std::uint32_t u = 0; u < oItem.uChildren; ++u) {
                const std::string& sName = oSet.names[oSet.items[uNext].uName];
                o.Key(sName.data(), static_cast<rapidjson::SizeType>(sName.size()));
                WriteJson(oSet, o, uNext);
            }
            o.EndObject();
            break;
        case Kind::List:
            o.StartArray();
            for (std::uint32_t u = 0; u < oItem.uChildren; ++u) WriteJson(oSet, o, uNext);
            o.EndArray();
    }
}

const Documents& DocumentsOf(const Set& oSet) {
    static Documents s_o;
    if (!s_o.sDGraph.empty()) return s_o;
    vok::Data oTree = MakeTree(oSet);
    vok::Dgraph_SetVersion(oTree, 1, 3, 0);
    vok::File_Buf oOut("w");
    vok::Dgraph_SaveDGraph(oTree, oOut);
    s_o.sDGraph.assign(oOut.Data(), oOut.Size());
    oOut.Open("w");
    oTree.SaveToXML(oOut);
    s_o.sXml.assign(oOut.Data(), oOut.Size());
    std::size_t uNext = 1;
    while (uNext < oSet.items.size()) {
        rapidjson::StringBuffer oLine;
        rapidjson::Writer<rapidjson::StringBuffer> oJson(oLine);
        WriteJson(oSet, oJson, uNext);
        s_o.sJson.append(oLine.GetString(), oLine.GetSize()).append(1, '\n');
    }
    return s_o;
}

std::uint64_t SumOf(const vok::Data_Record& r) {
    return r.GetName().size() + static_cast<std::uint64_t>(r.Int()) + r.Text().size();
}

std::uint64_t ReadRecords(const std::string& sDocument) {
    vok::File_Buf oIn(sDocument.data(), sDocument.size());
    vok::Data_Reader oReader(oIn);
    std::uint64_t uSum = 0;
    while (oReader.Next()) uSum += SumOf(*oReader);
    return uSum;
}

std::uint64_t ReadTrees(const std::string& sDocument) {
    vok::File_Buf oIn(sDocument.data(), sDocument.size());
    std::uint64_t uSum = 0;
    for (const vok::Data& o : vok::Records(oIn, "/*")) uSum += o.GetNodes();
    return uSum;
}

std::uint64_t LoadTree(const std::string& sDocument) {
    vok::File_Buf oIn(sDocument.data(), sDocument.size());
    vok::Data oTree;
    vok::Dgraph_Load(oTree, oIn);
    return oTree.GetNodes();
}

// What the types of values cost the others is not asked for: they give texts.
std::uint64_t ReadLibXml(const std::string& sDocument) {
    xmlTextReader* p = xmlReaderForMemory(sDocument.data(), static_cast<int>(sDocument.size()),
                                          nullptr, nullptr, XML_PARSE_HUGE);
    std::uint64_t uSum = 0;
    while (xmlTextReaderRead(p) == 1) {
        const int iType = xmlTextReaderNodeType(p);
        if (iType == XML_READER_TYPE_ELEMENT) {
            uSum += std::strlen(reinterpret_cast<const char*>(xmlTextReaderConstName(p)));
        } else if (iType == XML_READER_TYPE_TEXT || iType == XML_READER_TYPE_CDATA) {
            uSum += std::strlen(reinterpret_cast<const char*>(xmlTextReaderConstValue(p)));
        }
    }
    xmlFreeTextReader(p);
    return uSum;
}

std::uint64_t ReadExpat(const std::string& sDocument) {
    XML_Parser p = XML_ParserCreate(nullptr);
    std::uint64_t uSum = 0;
    XML_SetUserData(p, &uSum);
    XML_SetStartElementHandler(p, [](void* pSum, const XML_Char* sName, const XML_Char**) {
        *static_cast<std::uint64_t*>(pSum) += std::strlen(sName);
    });
    XML_SetCharacterDataHandler(p, [](void* pSum, const XML_Char*, int iSize) {
        *static_cast<std::uint64_t*>(pSum) += static_cast<std::uint64_t>(iSize);
    });
    XML_Parse(p, sDocument.data(), static_cast<int>(sDocument.size()), 1);
    XML_ParserFree(p);
    return uSum;
}

// RapidJSON's reader, which calls for every value.
struct Handler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler> {
    std::uint64_t uSum = 0;
    bool Key(const char*, rapidjson::SizeType uSize, bool) { return uSum += uSize, true; }
    bool String(const char*, rapidjson::SizeType uSize, bool) { return uSum += uSize, true; }
    bool Int(int i) { return uSum += static_cast<std::uint64_t>(i), true; }
    bool Uint(unsigned u) { return uSum += u, true; }
    bool Double(double d) { return uSum += static_cast<std::uint64_t>(d), true; }
    bool Default() { return true; }
};
std::uint64_t ReadRapidjson(const std::string& sLines) {
    Handler oHandler;
    rapidjson::Reader oReader;
    rapidjson::StringStream oIn(sLines.c_str());
    while (oIn.Peek() != 0) {
        oReader.Parse<rapidjson::kParseStopWhenDoneFlag>(oIn, oHandler);
        while (oIn.Peek() == '\n') oIn.Take();
    }
    return oHandler.uSum;
}

// A node of the set in the order of names, which a writer asks for.
struct Node {
    std::string_view sName;
    std::size_t uDepth;
    vok::Data_Value oValue;
};
const std::vector<Node>& NodesOf(const Set& oSet) {
    static const vok::Data s_oTree = MakeTree(oSet);
    static std::vector<Node> s_aoNode;
    if (!s_aoNode.empty()) return s_aoNode;
    for (vok::Data_Walk o(s_oTree); o.Next();) {
        s_aoNode.push_back({o.GetName(), o.GetDepth(), o.GetValue()});
    }
    return s_aoNode;
}

std::uint64_t WriteNodes(const std::vector<Node>& aoNode, vok::Data_Writer::Form eForm) {
    vok::File_Buf oOut("w");
    vok::Data_Writer oWriter(oOut, eForm);
    std::size_t uOpen = 0;
    for (const Node& o : aoNode) {
        for (; uOpen > o.uDepth; --uOpen) oWriter.Close();
        if (o.oValue.GetType() == vok::Data_Node::Tree) {
            oWriter.Open(o.sName);
            ++uOpen;
        } else {
            oWriter.Add(o.sName, o.oValue);
        }
    }
    for (; uOpen != 0; --uOpen) oWriter.Close();
    oWriter.Finish();
    return oOut.Size();
}

// The same with a tree, which is built for it.
std::uint64_t BuildAndWrite(const Set& oSet, bool bXml) {
    vok::Data oTree = MakeTree(oSet);
    vok::Dgraph_SetVersion(oTree, 1, 3, 0);
    vok::File_Buf oOut("w");
    bXml ? oTree.SaveToXML(oOut) : vok::Dgraph_SaveDGraph(oTree, oOut);
    return oOut.Size();
}

template <class Body>
void Add(const Set& oSet, const char* sForm, const char* sContender, const char* sWhat,
         std::string Documents::*pDocument, Body oBody) {
    const std::string sName =
        std::string(oSet.sName) + ' ' + sForm + '/' + sContender + '/' + sWhat;
    benchmark::RegisterBenchmark(sName.c_str(), [&oSet, pDocument,
                                                 oBody](benchmark::State& oState) {
        const std::string& sDocument = DocumentsOf(oSet).*pDocument;
        (void)NodesOf(oSet);
        {
            const Region oRegion;
            for (auto _ : oState) benchmark::DoNotOptimize(oBody(sDocument));
        }
        Count(oState, static_cast<double>(oSet.items.size()),
              static_cast<double>(sDocument.size()));
    })->Unit(benchmark::kMicrosecond);
}

}  // namespace

void RegisterRecords(const Set& oSet) {
    if (std::strcmp(oSet.sName, "orders") != 0) return;
    using Form = vok::Data_Writer::Form;
    constexpr const char* DGRAPH = "by records";
    constexpr const char* XML = "by records as XML";
    Add(oSet, DGRAPH, "tree", "read", &Documents::sDGraph, LoadTree);
    Add(oSet, DGRAPH, "Data_Reader", "read", &Documents::sDGraph, ReadRecords);
    Add(oSet, DGRAPH, "Records", "read", &Documents::sDGraph, ReadTrees);
    Add(oSet, DGRAPH, "rapidjson SAX, JSON Lines", "read", &Documents::sJson, ReadRapidjson);
    Add(oSet, DGRAPH, "tree", "write", &Documents::sDGraph,
        [&oSet](const std::string&) { return BuildAndWrite(oSet, false); });
    Add(oSet, DGRAPH, "Data_Writer", "write", &Documents::sDGraph,
        [&oSet](const std::string&) { return WriteNodes(NodesOf(oSet), Form::DGraph); });
    Add(oSet, XML, "tree", "read", &Documents::sXml, LoadTree);
    Add(oSet, XML, "Data_Reader", "read", &Documents::sXml, ReadRecords);
    Add(oSet, XML, "Records", "read", &Documents::sXml, ReadTrees);
    Add(oSet, XML, "libxml2 xmlTextReader", "read", &Documents::sXml, ReadLibXml);
    Add(oSet, XML, "expat", "read", &Documents::sXml, ReadExpat);
    Add(oSet, XML, "tree", "write", &Documents::sXml,
        [&oSet](const std::string&) { return BuildAndWrite(oSet, true); });
    Add(oSet, XML, "Data_Writer", "write", &Documents::sXml,
        [&oSet](const std::string&) { return WriteNodes(NodesOf(oSet), Form::Xml); });
}

}  // namespace bench

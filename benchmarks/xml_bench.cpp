// SPDX-License-Identifier: MIT
// XML: the same document loaded, and the tree that came out of it saved.
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <malloc.h>
#include <pugixml.hpp>

#include "benchmarks/contender.h"
#include "benchmarks/vok_tree.h"
#include "vok/file/buf.h"

namespace bench {

namespace {

// Bytes that the process has from malloc.
double MallocBytes() {
    const struct mallinfo2 o = mallinfo2();
    return static_cast<double>(o.uordblks + o.hblkhd);
}

// Contenders load a document into a tree of their own, replacing the last, and save that to
// memory of their own.
class VokXml {
  public:
    static constexpr const char* NAME = "vok";
    void Load(std::string_view sText) {
        m_oTree = vok::Data();
        m_oTree.LoadFromXMLString(sText, vok::Data::XML_KEEP_UNKNOWN);
    }
    void Save() {
        m_oOut.Open("w");
        m_oTree.SaveToXML(m_oOut);
    }
    double HeapBytes(std::string_view) { return static_cast<double>(m_oTree.HeapBytes()); }

  private:
    vok::Data m_oTree;
    vok::File_Buf m_oOut{"w"};
};

class PugiXml {
  public:
    static constexpr const char* NAME = "pugixml";
    void Load(std::string_view sText) { m_oTree.load_buffer(sText.data(), sText.size()); }
    void Save() {
        m_oOut.sText.clear();
        m_oTree.save(m_oOut);
    }
    double HeapBytes(std::string_view sText) {
        m_oTree.reset();
        const double dBefore = MallocBytes();
        Load(sText);
        return MallocBytes() - dBefore;
    }

  private:
    struct Writer : pugi::xml_writer {
        void write(const void* pData, std::size_t uSize) override {
            sText.append(static_cast<const char*>(pData), uSize);
        }
        std::string sText;
    };
    pugi::xml_document m_oTree;
    Writer m_oOut;
};

class LibXml {
  public:
    static constexpr const char* NAME = "libxml2";
    LibXml() = default;
    LibXml(const LibXml&) = delete;
    LibXml& operator=(const LibXml&) = delete;
    ~LibXml() { xmlFreeDoc(m_pTree); }
    void Load(std::string_view sText) {
        xmlFreeDoc(m_pTree);
        m_pTree = xmlReadMemory(sText.data(), static_cast<int>(sText.size()), nullptr, nullptr,
                                XML_PARSE_HUGE | XML_PARSE_COMPACT);
    }
    void Save() {
        xmlChar* pText = nullptr;
        int iSize = 0;
        xmlDocDumpMemory(m_pTree, &pText, &iSize);
        xmlFree(pText);
    }
    double HeapBytes(std::string_view sText) {
        xmlFreeDoc(m_pTree);
        m_pTree = nullptr;
        const double dBefore = MallocBytes();
        Load(sText);
        return MallocBytes() - dBefore;
    }

  private:
    xmlDoc* m_pTree = nullptr;
};

const std::string& DocumentOf(const Set& oSet) {
    static std::map<std::string, std::string> s_oDocuments;
    std::string& sText = s_oDocuments[oSet.sName];
    if (sText.empty()) {
        vok::File_Buf oOut("w");
        MakeTree(oSet).SaveToXML(oOut);
        sText.assign(oOut.Data(), oOut.Size());
    }
    return sText;
}

template <class Contender>
void RegisterOne(const Set& oSet) {
    const std::string sPrefix = std::string(oSet.sName) + " as XML/" + Contender::NAME + "/";
    const auto oAdd = [&](const char* sWhat, auto oBody) {
        const auto oRun = [&oSet, oBody](benchmark::State& oState) {
            const std::string& sText = DocumentOf(oSet);
            const double dNodes = static_cast<double>(oSet.items.size());
            Contender o;
            o.Load(sText);
            {
                const Region oRegion;
                for (auto _ : oState) {
                    oBody(o, sText);
                    benchmark::ClobberMemory();
                }
            }
            Count(oState, dNodes, static_cast<double>(sText.size()));
            oState.counters["heap/node"] = o.HeapBytes(sText) / dNodes;
        };
        benchmark::RegisterBenchmark((sPrefix + sWhat).c_str(), oRun)
            ->Unit(benchmark::kMicrosecond);
    };
    oAdd("load", [](Contender& o, const std::string& sText) { o.Load(sText); });
    oAdd("save", [](Contender& o, const std::string&) { o.Save(); });
}

}  // namespace

void RegisterXml(const Set& oSet) {
    RegisterOne<VokXml>(oSet);
    RegisterOne<PugiXml>(oSet);
    RegisterOne<LibXml>(oSet);
}

}  // namespace bench

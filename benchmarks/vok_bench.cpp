// SPDX-License-Identifier: MIT
#include <memory>

#include "benchmarks/contender.h"
#include "benchmarks/vok_tree.h"
#include "vok/data/walk.h"
#include "vok/dgraph/dgraph.h"
#include "vok/file/buf.h"

namespace bench {

namespace {

using vok::Data;
using vok::Data_Key;
using vok::Data_Name;
using vok::Data_Node;

// Builds by names, or by keys that were made once per tree.
template <bool BY_KEY>
class Vok {
  public:
    static constexpr const char* NAME = BY_KEY ? "vok-keys" : "vok";

    explicit Vok(const Set& oSet) : m_oSet(oSet) {
        m_oBuilt.SetToRoot();
        vok::Dgraph_SetVersion(m_oBuilt, 1, 3, 0);
        std::vector<Data_Key> aoKeys;
        if constexpr (BY_KEY) {
            aoKeys.reserve(oSet.names.size());
            for (const std::string& s : oSet.names) aoKeys.push_back(m_oBuilt.MakeKey(s));
        }
        m_oBuilt.SetRootName(oSet.names[oSet.items[0].uName].c_str());
        BuildTree(oSet, m_oBuilt, [&](const Item& oItem) {
            return BY_KEY ? Data_Name(aoKeys[oItem.uName]) : Data_Name(oSet.names[oItem.uName]);
        });
    }

    // In place of the tree built last, with the keys looked up then.
    void BuildAgain() {
        m_oAgain.Reset();
        if (m_aoKeys.empty()) {
            for (const std::string& s : m_oSet.names) m_aoKeys.push_back(m_oAgain.MakeKey(s));
        }
        BuildTree(m_oSet, m_oAgain, [&](const Item& oItem) {
            return BY_KEY ? Data_Name(m_aoKeys[oItem.uName]) : Data_Name(m_oSet.names[oItem.uName]);
        });
    }
    void Write() {
        m_oBuffer.Open("w");
        vok::Dgraph_SaveDGraph(m_oBuilt, m_oBuffer);
    }
    [[nodiscard]] std::size_t Size() const { return m_oBuffer.Size(); }
    void Read() {
        m_oRead.Clear();
        ReadAgain();
    }
    // Into the tree that the last document was read into.
    void ReadAgain() {
        vok::File_Buf oIn(m_oBuffer.Data(), m_oBuffer.Size());
        vok::Dgraph_LoadDGraph(m_oRead, oIn);
        if constexpr (BY_KEY) {
            m_aoAsked.clear();
            for (const std::uint32_t u : m_oSet.lookups) {
                m_aoAsked.push_back(m_oRead.FindKey(m_oSet.names[u].c_str()));
            }
        }
    }

    std::uint64_t Walk() {
        std::uint64_t uSum = 0;
        for (vok::Data_Walk o(m_oRead); o.Next();) {
            uSum += static_cast<unsigned char>(*o.GetName());
            switch (o.GetType()) {
                case Data_Node::Integer:
                case Data_Node::Boolean: uSum += static_cast<std::uint64_t>(o.Int()); break;
                case Data_Node::Double: uSum += static_cast<std::uint64_t>(o.Dbl()); break;
                case Data_Node::String: uSum += o.Text().size(); break;
                default: ++uSum;
            }
        }
        return uSum;
    }

    std::uint64_t Lookup() {
        std::uint64_t uSum = 0;
        const auto oAskAll = [&](const vok::Data_View& oMap) {
            for (std::size_t u = 0; u < m_oSet.lookups.size(); ++u) {
                if constexpr (BY_KEY) {
                    uSum += oMap.Find(m_aoAsked[u]).GetId();
                } else {
                    uSum += oMap.Find(m_oSet.names[m_oSet.lookups[u]]).GetId();
                }
            }
        };
        const vok::Data_View oRoot(m_oRead);
        if (m_oSet.uMaps == 1) {
            oAskAll(oRoot);
        } else {
            for (vok::u2_t u = 0; u < oRoot.GetSuccs(); ++u) oAskAll(oRoot.GetSucc(u));
        }
        return uSum;
    }

    double HeapBytes() {
        m_oBuilt.SetAccessMode();
        return static_cast<double>(m_oBuilt.HeapBytes() - m_oBuilt.TextBytes());
    }

  private:
    const Set& m_oSet;
    Data m_oBuilt;
    vok::File_Buf m_oBuffer;
    Data m_oRead;
    Data m_oAgain;
    std::vector<Data_Key> m_aoKeys;
    std::vector<Data_Key> m_aoAsked;  // keys of the names to look up
};

}  // namespace

void RegisterVok(const Set& oSet) {
    Register<Vok<false>>(oSet);
    Register<Vok<true>>(oSet);
}

}  // namespace bench

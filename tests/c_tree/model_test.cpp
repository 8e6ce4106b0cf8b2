// SPDX-License-Identifier: MIT
// Random calls against a plain model of a tree. VOK_C_CALLS tells how many, 20,000 without it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "c/vok_tree.h"

namespace {

using std::size_t;
using std::string;

// ---- the model ----------------------------------------------------------------

struct Model {
    string sName;
    std::uint32_t uId = 0;
    int iType = VOK_TREE_TYPE_EMPTY;
    string sValue;  // its bytes
    std::map<string, string> oAttributes;
    Model* pParent = nullptr;
    std::vector<std::unique_ptr<Model>> oSuccs;  // by name, then as they came

    [[nodiscard]] auto Run(const string& s) {
        return std::equal_range(oSuccs.begin(), oSuccs.end(), s,
                                [](const auto& a, const auto& b) { return NameOf(a) < NameOf(b); });
    }
    static const string& NameOf(const string& s) { return s; }
    static const string& NameOf(const std::unique_ptr<Model>& p) { return p->sName; }

    Model* Hang(std::unique_ptr<Model> p, size_t uPosition) {
        const auto [oFirst, oLast] = Run(p->sName);
        const auto uRun = static_cast<size_t>(oLast - oFirst);
        p->pParent = this;
        iType = VOK_TREE_TYPE_TREE;
        const auto oAt = oFirst + static_cast<std::ptrdiff_t>(std::min(uPosition, uRun));
        return oSuccs.insert(oAt, std::move(p))->get();
    }
    std::unique_ptr<Model> Unhang(Model* p) {
        const auto oAt =
            std::find_if(oSuccs.begin(), oSuccs.end(), [p](const auto& o) { return o.get() == p; });
        std::unique_ptr<Model> pOwn = std::move(*oAt);
        oSuccs.erase(oAt);
        if (oSuccs.empty()) iType = VOK_TREE_TYPE_EMPTY;
        return pOwn;
    }
    [[nodiscard]] bool IsBelow(const Model* pTop) const {
        const Model* p = this;
        while (p != nullptr && p != pTop) p = p->pParent;
        return p == pTop;
    }
    [[nodiscard]] bool IsLeaf() const { return oSuccs.empty(); }
    // Copies without ids, which the caller learns from the tree.
    [[nodiscard]] std::unique_ptr<Model> Copy() const {
        auto p = std::make_unique<Model>();
        p->sName = sName;
        p->iType = iType;
        p->sValue = sValue;
        p->oAttributes = oAttributes;
        for (const auto& o : oSuccs) {
            p->oSuccs.push_back(o->Copy());
            p->oSuccs.back()->pParent = p.get();
        }
        return p;
    }
    void Collect(std::vector<Model*>& oAll) {
        oAll.push_back(this);
        for (const auto& o : oSuccs) o->Collect(oAll);
    }
    // As a path has it.
    [[nodiscard]] string Path() const {
        if (pParent == nullptr) return "";
        size_t uNth = 0;
        for (const auto& o : pParent->oSuccs) {
            if (o.get() == this) break;
            uNth += o->sName == sName;
        }
        return pParent->Path() + '/' + sName + '[' + std::to_string(uNth) + ']';
    }
};

// ---- values -------------------------------------------------------------------

// What both sides hold of a value: its bytes.
string BytesOf(const vok_tree_value& o) {
    const auto oRaw = [](const auto& t) {
        return string(reinterpret_cast<const char*>(&t), sizeof(t));
    };
    switch (o.type) {
        case VOK_TREE_TYPE_BOOLEAN:
        case VOK_TREE_TYPE_INTEGER: return oRaw(o.as.integer);
        case VOK_TREE_TYPE_CHAR: return oRaw(o.as.character);
        case VOK_TREE_TYPE_FLOAT:
        case VOK_TREE_TYPE_DOUBLE:
        case VOK_TREE_TYPE_DATE: return oRaw(o.as.real);
        case VOK_TREE_TYPE_STRING: return {o.as.text.data, o.as.text.size};
        case VOK_TREE_TYPE_BINARY:
            return o.as.bytes.size != 0
                       ? string(static_cast<const char*>(o.as.bytes.data), o.as.bytes.size)
                       : "";
        case VOK_TREE_TYPE_LONG: return oRaw(o.as.whole);
        case VOK_TREE_TYPE_QUAD: return oRaw(o.as.quad);
        default: return "";
    }
}

// ---- a stream that fails anywhere ---------------------------------------------

struct Bytes {
    string s;
    size_t uAt = 0;
    int iCalls = 0;
    int iFailsAt = -1;

    static Bytes& Of(void* p) { return *static_cast<Bytes*>(p); }
    [[nodiscard]] bool Fails() { return iCalls++ == iFailsAt; }
    static std::int64_t Read(void* pContext, void* p, size_t uSize) {
        Bytes& o = Of(pContext);
        if (o.Fails()) return -1;
        uSize = std::min({uSize, o.s.size() - o.uAt, size_t{100}});
        std::memcpy(p, o.s.data() + o.uAt, uSize);
        o.uAt += uSize;
        return static_cast<std::int64_t>(uSize);
    }
    static std::int64_t Write(void* pContext, const void* p, size_t uSize) {
        Bytes& o = Of(pContext);
        if (o.Fails()) return 0;
        uSize = std::min(uSize, size_t{100});
        o.s.replace(o.uAt, uSize, static_cast<const char*>(p), uSize);
        o.uAt += uSize;
        return static_cast<std::int64_t>(uSize);
    }
    static std::int32_t Seek(void* pContext, std::int64_t iPosition) {
        Bytes& o = Of(pContext);
        if (o.Fails() || static_cast<size_t>(iPosition) > o.s.size()) return 1;
        o.uAt = static_cast<size_t>(iPosition);
        return 0;
    }
    static std::int64_t Tell(void* pContext) { return static_cast<std::int64_t>(Of(pContext).uAt); }
    static std::int64_t Size(void* pContext) {
        return static_cast<std::int64_t>(Of(pContext).s.size());
    }
    [[nodiscard]] vok_tree_stream Stream(bool bSeek) {
        vok_tree_stream o = {};
        o.context = this;
        o.read = Read;
        o.write = Write;
        if (!bSeek) return o;
        o.seek = Seek;
        o.tell = Tell;
        o.size = Size;
        return o;
    }
};

// ---- the player ---------------------------------------------------------------

struct Cursor {
    Cursor() { vok_tree_new(&p); }
    ~Cursor() { vok_tree_free(p); }
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    operator vok_tree_node*() const { return p; }
    vok_tree_node* p = nullptr;
};

class Player {
  public:
    explicit Player(unsigned uSeed) : m_oRandom(uSeed) { Restart(); }

    void Play(unsigned uCalls) {
        for (unsigned u = 0; u < uCalls && !testing::Test::HasFailure(); ++u) {
            if (m_oAll.size() > 150) Restart();
            SCOPED_TRACE("call " + std::to_string(u));
            Step();
            if (u % 64 == 0) CompareAll();
        }
        CompareAll();
    }

  private:
    [[nodiscard]] std::uint32_t Random() { return static_cast<std::uint32_t>(m_oRandom()); }
    [[nodiscard]] unsigned Below(size_t uEnd) {
        return static_cast<unsigned>(m_oRandom() % std::max<size_t>(uEnd, 1));
    }
    [[nodiscard]] Model* Any() { return m_oAll[Below(m_oAll.size())]; }
    [[nodiscard]] string Name() { return string(1, static_cast<char>('a' + Below(4))); }
    [[nodiscard]] std::uint32_t Position() { return Below(3) == 0 ? VOK_TREE_LAST : Below(5); }

    void Restart() {
        vok_tree_reset(m_oRoot);
        vok_tree_set_root_name(m_oRoot, "Root");
        m_pRoot = std::make_unique<Model>();
        m_pRoot->sName = "Root";
        Collect();
    }
    void Collect() {
        m_oAll.clear();
        m_pRoot->Collect(m_oAll);
    }
    // Puts the cursor on a node of the model.
    void Go(vok_tree_node* p, const Model* pModel) {
        ASSERT_EQ(vok_tree_by_id(m_oRoot, pModel->uId, p), VOK_TREE_OK);
    }
    // Learns the ids of nodes that are new, or all of them.
    void Learn(Model* pModel, vok_tree_node* p) {
        pModel->uId = vok_tree_id(p);
        std::uint32_t uNth = 0;
        for (const auto& o : pModel->oSuccs) {
            Cursor oSucc;
            do {
                ASSERT_EQ(vok_tree_succ(p, nullptr, uNth++, oSucc), VOK_TREE_OK);
            } while (TypeOf(oSucc) == VOK_TREE_TYPE_REMOVED);
            Learn(o.get(), oSucc);
        }
    }
    static int TypeOf(const vok_tree_node* p) {
        std::int32_t iType = -1;
        EXPECT_EQ(vok_tree_type(p, &iType), VOK_TREE_OK);
        return iType;
    }
    // What fails must be known to, and must change nothing.
    void Expect(vok_tree_status iStatus, bool bGood) {
        EXPECT_EQ(iStatus == VOK_TREE_OK, bGood) << iStatus << vok_tree_last_error()->text;
    }

    Model* Added(Model* pParent, const string& sName, std::uint32_t uPosition,
                 const vok_tree_node* p) {
        auto pNew = std::make_unique<Model>();
        pNew->sName = sName;
        pNew->uId = vok_tree_id(p);
        Model* const pModel = pParent->Hang(std::move(pNew), uPosition);
        m_oAll.push_back(pModel);
        return pModel;
    }
    // Whether a node takes successors.
    static bool TakesSuccs(const Model* p) {
        const bool bBlank = p->iType == VOK_TREE_TYPE_STRING &&
                            p->sValue.find_first_not_of(" \t\r\n") == string::npos;
        return p->iType == VOK_TREE_TYPE_EMPTY || p->iType == VOK_TREE_TYPE_TREE || bBlank;
    }
    static void NoValue(Model* p) {
        p->sValue.clear();
        p->iType = p->IsLeaf() ? VOK_TREE_TYPE_EMPTY : VOK_TREE_TYPE_TREE;
    }

    void Step() {
        Model* const p = Any();
        Cursor o;
        Go(o, p);
        switch (Below(20)) {
            case 0:
            case 1: return Add(p, o);
            case 2:
            case 3: return Set(p, o);
            case 4: return AddValue(p, o);
            case 5: return Insert(p, o);
            case 6: return Attributes(p, o);
            case 7: return Delete(p, o);
            case 8: return Rename(p, o);
            case 9: return Move(p, o);
            case 10: return Copy(p, o);
            case 11: return Paths(p, o);
            case 12: return Iterate(p, o);
            case 13: return Below(4) == 0 ? Shrink() : Neighbours(p, o);
            case 14: return Document();
            case 15: return Link(p, o);
            case 16: return Clone(p, o);
            case 17: return Wide(p, o);
            case 18: return Nothing();
            default: return Below(2) == 0 ? Create(p, o) : Records();
        }
    }

    void Add(Model* p, vok_tree_node* o) {
        const string s = Name();
        const bool bGood = TakesSuccs(p);
        Expect(vok_tree_add(o, s.c_str(), o), bGood);
        if (!bGood) return;
        NoValue(p);
        Added(p, s, VOK_TREE_LAST, o);
    }
    void Insert(Model* p, vok_tree_node* o) {
        const string s = Name();
        const std::uint32_t uPosition = Position();
        const bool bGood = TakesSuccs(p);
        Expect(vok_tree_insert(o, s.c_str(), uPosition, o), bGood);
        if (!bGood) return;
        NoValue(p);
        Added(p, s, uPosition, o);
    }

    // A random value; its bytes last as long as m_sText.
    [[nodiscard]] vok_tree_value Value() {
        vok_tree_value o = {};
        o.type = static_cast<int>(1 + Below(10));
        m_sText.assign(Below(6), static_cast<char>(' ' + Below(3) * 20));
        switch (o.type) {
            case VOK_TREE_TYPE_BOOLEAN: o.as.integer = static_cast<int>(Below(2)); break;
            case VOK_TREE_TYPE_INTEGER: o.as.integer = static_cast<int>(Random()); break;
            case VOK_TREE_TYPE_CHAR: o.as.character = 'A' + Below(50); break;
            case VOK_TREE_TYPE_FLOAT: o.as.real = Below(1000) / 8.0; break;
            case VOK_TREE_TYPE_DOUBLE: o.as.real = Random() / 7.0; break;
            case VOK_TREE_TYPE_DATE: o.as.real = Below(2000000000); break;
            case VOK_TREE_TYPE_STRING: o.as.text = {m_sText.data(), m_sText.size()}; break;
            case VOK_TREE_TYPE_BINARY: o.as.bytes = {m_sText.data(), m_sText.size()}; break;
            case VOK_TREE_TYPE_LONG: o.as.whole = std::uint64_t{Random()} << 32 | 5; break;
            default:
                for (std::uint32_t& u : o.as.quad) u = Random();
        }
        return o;
    }
    void Set(Model* p, vok_tree_node* o) {
        if (Below(8) == 0) {
            Expect(vok_tree_clear_value(o), p->IsLeaf());
            if (p->IsLeaf()) NoValue(p);
            return;
        }
        const vok_tree_value oValue = Value();
        // By the function of its type, and by that for all.
        const vok_tree_status iStatus =
            Below(2) == 0 ? vok_tree_set_value(o, &oValue) : SetTyped(o, oValue);
        Expect(iStatus, p->IsLeaf());
        if (!p->IsLeaf()) return;
        p->iType = oValue.type;
        p->sValue = BytesOf(oValue);
    }
    static vok_tree_status SetTyped(vok_tree_node* o, const vok_tree_value& v) {
        switch (v.type) {
            case VOK_TREE_TYPE_BOOLEAN: return vok_tree_set_bool(o, v.as.integer);
            case VOK_TREE_TYPE_INTEGER: return vok_tree_set_int(o, v.as.integer);
            case VOK_TREE_TYPE_CHAR: return vok_tree_set_char(o, v.as.character);
            case VOK_TREE_TYPE_FLOAT: return vok_tree_set_float(o, v.as.real);
            case VOK_TREE_TYPE_DOUBLE: return vok_tree_set_double(o, v.as.real);
            case VOK_TREE_TYPE_DATE: return vok_tree_set_date(o, v.as.real);
            case VOK_TREE_TYPE_STRING: return vok_tree_set_text(o, v.as.text.data, v.as.text.size);
            case VOK_TREE_TYPE_BINARY:
                return vok_tree_set_bytes(o, v.as.bytes.data, v.as.bytes.size);
            case VOK_TREE_TYPE_LONG: return vok_tree_set_long(o, v.as.whole);
            default: return vok_tree_set_quad(o, v.as.quad);
        }
    }
    static vok_tree_status AddTyped(vok_tree_node* o, const char* s, const vok_tree_value& v) {
        switch (v.type) {
            case VOK_TREE_TYPE_BOOLEAN: return vok_tree_add_bool(o, s, v.as.integer, o);
            case VOK_TREE_TYPE_INTEGER: return vok_tree_add_int(o, s, v.as.integer, o);
            case VOK_TREE_TYPE_CHAR: return vok_tree_add_char(o, s, v.as.character, o);
            case VOK_TREE_TYPE_FLOAT: return vok_tree_add_float(o, s, v.as.real, o);
            case VOK_TREE_TYPE_DOUBLE: return vok_tree_add_double(o, s, v.as.real, o);
            case VOK_TREE_TYPE_DATE: return vok_tree_add_date(o, s, v.as.real, o);
            case VOK_TREE_TYPE_STRING:
                return vok_tree_add_text(o, s, v.as.text.data, v.as.text.size, o);
            case VOK_TREE_TYPE_BINARY:
                return vok_tree_add_bytes(o, s, v.as.bytes.data, v.as.bytes.size, o);
            case VOK_TREE_TYPE_LONG: return vok_tree_add_long(o, s, v.as.whole, o);
            default: return vok_tree_add_quad(o, s, v.as.quad, o);
        }
    }
    void AddValue(Model* p, vok_tree_node* o) {
        const string s = Name();
        const vok_tree_value oValue = Value();
        const bool bGood = TakesSuccs(p);
        Expect(Below(2) == 0 ? vok_tree_add_value(o, s.c_str(), &oValue, o)
                             : AddTyped(o, s.c_str(), oValue),
               bGood);
        if (!bGood) return;
        NoValue(p);
        Model* const pNew = Added(p, s, VOK_TREE_LAST, o);
        pNew->iType = oValue.type;
        pNew->sValue = BytesOf(oValue);
    }
    void Attributes(Model* p, vok_tree_node* o) {
        const string sName = Name();
        const string sValue = Name() + Name();
        switch (Below(8)) {
            case 0:
                Expect(vok_tree_remove_attributes(o), true);
                p->oAttributes.clear();
                break;
            case 1:
                Expect(vok_tree_set_attribute(o, sName.c_str(), nullptr), true);
                p->oAttributes.erase(sName);
                break;
            case 2: {
                Model* const pTo = Any();
                Cursor oTo;
                Go(oTo, pTo);
                Expect(vok_tree_copy_attributes(o, oTo), true);
                pTo->oAttributes = std::map<string, string>(p->oAttributes);
                break;
            }
            default:
                Expect(vok_tree_set_attribute(o, sName.c_str(), sValue.c_str()), true);
                p->oAttributes[sName] = sValue;
        }
    }
    void Delete(Model* p, vok_tree_node* o) {
        if (Below(4) == 0) {
            Expect(vok_tree_remove_succs(o), true);
            p->oSuccs.clear();
            if (p->iType == VOK_TREE_TYPE_TREE) NoValue(p);
            return Collect();
        }
        Expect(Below(2) == 0 ? vok_tree_delete(o) : RemoveAndErase(o), p->pParent != nullptr);
        if (p->pParent == nullptr) return;
        p->pParent->Unhang(p);
        Collect();
    }
    static vok_tree_status RemoveAndErase(vok_tree_node* o) {
        const vok_tree_status iStatus = vok_tree_remove(o);
        return iStatus == VOK_TREE_OK ? vok_tree_erase(o) : iStatus;
    }
    void Rename(Model* p, vok_tree_node* o) {
        if (p->pParent == nullptr) return;
        const string s = Name();
        const std::uint32_t uPosition = Position();
        Expect(vok_tree_rename(o, s.c_str(), uPosition), true);
        Model* const pParent = p->pParent;
        std::unique_ptr<Model> pOwn = pParent->Unhang(p);
        p->sName = s;
        pParent->Hang(std::move(pOwn), uPosition);
    }
    void Move(Model* p, vok_tree_node* o) {
        Model* const pTo = Any();
        Cursor oTo;
        Go(oTo, pTo);
        const std::uint32_t uPosition = Position();
        const bool bGood = p->pParent != nullptr && !pTo->IsBelow(p) && TakesSuccs(pTo);
        Expect(vok_tree_move(o, oTo, uPosition), bGood);
        if (!bGood) return;
        std::unique_ptr<Model> pOwn = p->pParent->Unhang(p);
        NoValue(pTo);
        pTo->Hang(std::move(pOwn), uPosition);
    }
    void Copy(Model* p, vok_tree_node* o) {
        Model* const pTo = Any();
        Cursor oTo;
        Go(oTo, pTo);
        const std::uint32_t uPosition = Position();
        const bool bGood = TakesSuccs(pTo);
        Expect(vok_tree_copy(o, oTo, uPosition, o), bGood);
        if (!bGood) return;
        std::unique_ptr<Model> pCopy = p->Copy();
        NoValue(pTo);
        Learn(pTo->Hang(std::move(pCopy), uPosition), o);
        Collect();
    }
    void Create(Model* p, vok_tree_node* o) {
        const string s = Name();
        const auto [oFirst, oLast] = p->Run(s);
        const size_t uRun = static_cast<size_t>(oLast - oFirst);
        const string sStep = s + '[' + std::to_string(uRun) + ']';
        const bool bGood = TakesSuccs(p);
        std::uint32_t uCreated = 0;
        Expect(vok_tree_create(o, sStep.c_str(), nullptr, o, &uCreated), bGood);
        if (!bGood) return;
        EXPECT_EQ(uCreated, 1u);
        NoValue(p);
        Added(p, s, VOK_TREE_LAST, o);
    }

    // ---- what only looks -------------------------------------------------------

    void Paths(Model* p, vok_tree_node* o) {
        const string sPath = p->pParent != nullptr ? p->Path() : "/";
        char s[512];
        if (vok_tree_path(o, s, sizeof(s), nullptr) == VOK_TREE_TOO_SMALL) return;
        EXPECT_EQ(s, sPath);
        Cursor oFound;
        EXPECT_EQ(vok_tree_first(m_oRoot, s, nullptr, oFound), VOK_TREE_OK);
        EXPECT_TRUE(vok_tree_is_same(o, oFound));
        // All of a name below a node.
        const string sName = Name();
        size_t uExpected = 0;
        std::vector<Model*> oBelow;
        p->Collect(oBelow);
        for (const Model* q : oBelow) uExpected += q != p && q->sName == sName;
        vok_tree_nodes* pNodes = nullptr;
        EXPECT_EQ(vok_tree_select(o, (".//" + sName).c_str(), nullptr, &pNodes), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_nodes_count(pNodes), uExpected) << sPath << sName;
        vok_tree_nodes_free(pNodes);
    }
    void Iterate(Model* p, vok_tree_node* o) {
        const string sName = Name();
        for (const char* s : {sName.c_str(), static_cast<const char*>(nullptr)}) {
            vok_tree_iterator* pIterator = nullptr;
            ASSERT_EQ(vok_tree_iterate(o, s, &pIterator), VOK_TREE_OK);
            Cursor oSucc;
            for (const auto& pSucc : p->oSuccs) {
                if (s != nullptr && pSucc->sName != s) continue;
                EXPECT_EQ(vok_tree_iterator_next(pIterator, oSucc), VOK_TREE_OK);
                EXPECT_EQ(vok_tree_id(oSucc), pSucc->uId);
            }
            EXPECT_EQ(vok_tree_iterator_next(pIterator, oSucc), VOK_TREE_NONE);
            vok_tree_iterator_free(pIterator);
        }
        std::uint32_t uCount = 0;
        EXPECT_EQ(vok_tree_live_succs(o, &uCount), VOK_TREE_OK);
        EXPECT_EQ(uCount, p->oSuccs.size());
    }
    void Neighbours(Model* p, vok_tree_node* o) {
        Cursor oFound;
        const vok_tree_status iParent = vok_tree_parent(o, oFound);
        EXPECT_EQ(iParent == VOK_TREE_OK, p->pParent != nullptr);
        if (p->pParent == nullptr) return;
        EXPECT_EQ(vok_tree_id(oFound), p->pParent->uId);
        const auto& oAll = p->pParent->oSuccs;
        const auto oAt =
            std::find_if(oAll.begin(), oAll.end(), [p](const auto& q) { return q.get() == p; });
        const bool bNext = oAt + 1 != oAll.end();
        EXPECT_EQ(vok_tree_next_sibling(o, oFound), bNext ? VOK_TREE_OK : VOK_TREE_NONE);
        if (bNext) {
            EXPECT_EQ(vok_tree_id(oFound), (*(oAt + 1))->uId);
        }
        const bool bPrevious = oAt != oAll.begin();
        EXPECT_EQ(vok_tree_previous_sibling(o, oFound), bPrevious ? VOK_TREE_OK : VOK_TREE_NONE);
        if (bPrevious) {
            EXPECT_EQ(vok_tree_id(oFound), (*(oAt - 1))->uId);
        }
    }
    void Shrink() {
        EXPECT_EQ(vok_tree_shrink(m_oRoot), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_node_count(m_oRoot), m_oAll.size());
        Learn(m_pRoot.get(), m_oRoot);
    }
    // A link, which the model does not keep.
    void Link(Model* p, vok_tree_node* o) {
        Cursor oTarget;
        Cursor oFound;
        Go(oTarget, Any());
        Expect(vok_tree_set_link(o, oTarget), p->IsLeaf());
        if (!p->IsLeaf()) return;
        EXPECT_EQ(vok_tree_get_link(o, oFound), VOK_TREE_OK);
        EXPECT_TRUE(vok_tree_is_same(oFound, oTarget));
        std::int32_t iCycle = 0;
        EXPECT_EQ(vok_tree_has_cycle(oTarget, &iCycle), VOK_TREE_OK);
        Model* const pTarget = Of(oTarget);
        EXPECT_GE(iCycle, p->IsBelow(pTarget) ? 1 : 0);
        Expect(vok_tree_clear_value(o), true);
        NoValue(p);
    }
    [[nodiscard]] Model* Of(const vok_tree_node* o) {
        return *std::find_if(m_oAll.begin(), m_oAll.end(),
                             [o](const Model* p) { return p->uId == vok_tree_id(o); });
    }
    // A tree of its own, changed; what differs makes the one of the other. Nodes move over to it.
    void Clone(Model* p, vok_tree_node* o) {
        Cursor oClone;
        Cursor oPatch;
        Cursor oAgain;
        std::int32_t iEqual = 0;
        Expect(vok_tree_clone(o, oClone), true);
        EXPECT_EQ(vok_tree_is_equal(o, oClone, &iEqual), VOK_TREE_OK);
        EXPECT_EQ(iEqual, 1);
        EXPECT_EQ(vok_tree_set_attribute(oClone, "new", "x"), VOK_TREE_OK);
        if (TakesSuccs(p)) (void)vok_tree_add(oClone, "z", nullptr);
        std::uint64_t uCount = 0;
        const auto oStop = [](void*, const vok_tree_difference*) { return std::int32_t{1}; };
        const auto oGoOn = [](void*, const vok_tree_difference*) { return std::int32_t{0}; };
        EXPECT_EQ(vok_tree_diff(o, oClone, nullptr, oStop, nullptr, &uCount), VOK_TREE_OK);
        EXPECT_EQ(uCount, 1u);
        EXPECT_EQ(vok_tree_diff(o, oClone, nullptr, oGoOn, nullptr, &uCount), VOK_TREE_OK);
        // A node that was empty has another type then; what is below such a one is not visited.
        EXPECT_EQ(uCount, TakesSuccs(p) ? 2u : 1u);
        EXPECT_EQ(vok_tree_make_patch(o, oClone, nullptr, oPatch), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_apply_patch(o, oPatch, oAgain), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_is_equal(oAgain, oClone, &iEqual), VOK_TREE_OK);
        EXPECT_EQ(iEqual, 1);
        if (p->pParent == nullptr || !p->IsLeaf() || !TakesSuccs(p)) return;
        Cursor oOld;
        EXPECT_EQ(vok_tree_assign(oOld, o), VOK_TREE_OK);
        Expect(vok_tree_move(o, oClone, Position()), true);
        EXPECT_EQ(vok_tree_parent(o, oAgain), VOK_TREE_OK);
        EXPECT_TRUE(vok_tree_is_same(oAgain, oClone));
        // It has kept its place here, which the model does not have.
        Expect(vok_tree_erase(oOld), true);
        p->pParent->Unhang(p);
        Collect();
    }
    // The same questions in UTF-16, and by a path that is kept.
    void Wide(Model* p, vok_tree_node* o) {
        vok_tree_char16 sPath[256];
        size_t uLength = 0;
        if (vok_tree_path16(o, sPath, 256, &uLength) == VOK_TREE_TOO_SMALL) return;
        EXPECT_EQ(uLength, p->pParent != nullptr ? p->Path().size() : 1);
        Cursor oFound;
        EXPECT_EQ(vok_tree_first16(m_oRoot, sPath, nullptr, oFound), VOK_TREE_OK);
        EXPECT_TRUE(vok_tree_is_same(o, oFound));
        vok_tree_query* pQuery = nullptr;
        EXPECT_EQ(vok_tree_query_new16(sPath, &pQuery), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_query_first(pQuery, m_oRoot, nullptr, oFound), VOK_TREE_OK);
        EXPECT_TRUE(vok_tree_is_same(o, oFound));
        vok_tree_nodes* pNodes = nullptr;
        EXPECT_EQ(vok_tree_query_select(pQuery, m_oRoot, nullptr, &pNodes), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_nodes_count(pNodes), 1u);
        vok_tree_nodes_free(pNodes);
        vok_tree_query_free(pQuery);
        vok_tree_char16 sName[16];
        EXPECT_EQ(vok_tree_name16(o, sName, 16, &uLength), VOK_TREE_OK);
        EXPECT_EQ(string(sName, sName + uLength), p->sName);
    }
    // A cursor on nothing, and one on a node that is gone: all is refused, or makes a tree.
    void Nothing() {
        Cursor oEmpty;
        std::int32_t i = 0;
        std::uint32_t u = 0;
        char s[8];
        EXPECT_EQ(vok_tree_type(oEmpty, &i), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_get_int(oEmpty, &i), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_path(oEmpty, s, sizeof(s), nullptr), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_live_succs(oEmpty, &u), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_save_file(oEmpty, "never", VOK_TREE_XML), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_parent(oEmpty, oEmpty), VOK_TREE_NONE);
        EXPECT_EQ(vok_tree_add(oEmpty, "a", oEmpty), VOK_TREE_OK);
        Cursor oGone;
        EXPECT_EQ(vok_tree_assign(oGone, oEmpty), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_delete(oEmpty), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_to_root(oEmpty), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_shrink(oEmpty), VOK_TREE_OK);
        EXPECT_EQ(vok_tree_set_int(oGone, 1), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_add(oGone, "a", nullptr), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_name(oGone, nullptr, nullptr), VOK_TREE_ARGUMENT);
        EXPECT_EQ(vok_tree_shrink(oGone), VOK_TREE_FAILED);
        EXPECT_EQ(vok_tree_to_root(oGone), VOK_TREE_OK);
    }
    // Out and back in, with a failure somewhere: the tree is the same, or nothing has changed.
    void Document() {
        static constexpr int FORMS[] = {VOK_TREE_JSON, VOK_TREE_DUMP, VOK_TREE_DGRAPH,
                                        VOK_TREE_XML};
        static constexpr int WRAPPINGS[] = {0, VOK_TREE_ZLIB, VOK_TREE_GZIP};
        const int iForm = FORMS[Below(4)];
        const int iWrapping = WRAPPINGS[Below(3)];
        Bytes oBytes;
        vok_tree_stream oStream = oBytes.Stream(Below(2) == 0);
        oBytes.iFailsAt = Below(2) == 0 ? static_cast<int>(Below(40)) : -1;
        const vok_tree_status iSaved = vok_tree_save_stream(m_oRoot, &oStream, iForm | iWrapping);
        const bool bFailed = oBytes.iFailsAt >= 0 && oBytes.iCalls > oBytes.iFailsAt;
        ASSERT_EQ(iSaved, bFailed ? VOK_TREE_STREAM : VOK_TREE_OK);
        if (bFailed) return;
        oBytes.uAt = 0;
        oBytes.iCalls = 0;
        oBytes.iFailsAt = Below(2) == 0 ? static_cast<int>(Below(40)) : -1;
        if (Below(4) == 0) oBytes.s.resize(Below(oBytes.s.size()));
        if (Below(4) == 0 && !oBytes.s.empty()) {
            oBytes.s[Below(oBytes.s.size())] = static_cast<char>(Random());
        }
        Cursor oLoaded;
        vok_tree_report oReport;
        const vok_tree_status iLoaded =
            vok_tree_load_stream(oLoaded, &oStream, VOK_TREE_ANY, nullptr, &oReport);
        EXPECT_EQ(vok_tree_is_node(oLoaded), iLoaded == VOK_TREE_OK);
    }
    // A document by records, put together again: the same tree.
    void Records() {
        std::uint8_t* pBytes = nullptr;
        size_t uSize = 0;
        const int iForm = Below(2) == 0 ? VOK_TREE_XML : VOK_TREE_DGRAPH;
        ASSERT_EQ(vok_tree_save_memory(m_oRoot, iForm, &pBytes, &uSize), VOK_TREE_OK);
        vok_tree_reader* pReader = nullptr;
        ASSERT_EQ(vok_tree_reader_open_memory(pBytes, uSize, nullptr, &pReader), VOK_TREE_OK);
        Bytes oBytes;
        const bool bFails = Below(2) == 0;
        vok_tree_stream oStream = oBytes.Stream(Below(2) == 0);
        vok_tree_writer* pWriter = nullptr;
        ASSERT_EQ(vok_tree_writer_open_stream(&oStream, VOK_TREE_XML, &pWriter), VOK_TREE_OK);
        if (bFails) oBytes.iFailsAt = static_cast<int>(Below(20));
        std::uint32_t uOpen = 0;
        vok_tree_status iStatus = VOK_TREE_OK;
        while (vok_tree_reader_next(pReader) == VOK_TREE_OK && iStatus == VOK_TREE_OK) {
            vok_tree_record oRecord;
            ASSERT_EQ(vok_tree_reader_record(pReader, &oRecord), VOK_TREE_OK);
            while (uOpen > oRecord.depth && iStatus == VOK_TREE_OK) {
                iStatus = vok_tree_writer_end(pWriter);
                --uOpen;
            }
            if (iStatus == VOK_TREE_OK) iStatus = vok_tree_writer_add_record(pWriter, pReader);
            uOpen += oRecord.value.type == VOK_TREE_TYPE_TREE;
        }
        for (; uOpen > 0 && iStatus == VOK_TREE_OK; --uOpen) iStatus = vok_tree_writer_end(pWriter);
        if (iStatus == VOK_TREE_OK) iStatus = vok_tree_writer_finish(pWriter);
        const bool bFailed = oBytes.iFailsAt >= 0 && oBytes.iCalls > oBytes.iFailsAt;
        EXPECT_EQ(iStatus, bFailed ? VOK_TREE_STREAM : VOK_TREE_OK) << vok_tree_last_error()->text;
        // After a failure nothing that is tried does harm.
        if (bFailed) {
            (void)vok_tree_writer_begin(pWriter, "z", VOK_TREE_UNKNOWN);
            (void)vok_tree_writer_add_node(pWriter, m_oRoot);
            (void)vok_tree_writer_end(pWriter);
            (void)vok_tree_writer_finish(pWriter);
        }
        vok_tree_writer_free(pWriter);
        vok_tree_reader_free(pReader);
        if (!bFailed) {
            Cursor oA;
            Cursor oB;
            EXPECT_EQ(vok_tree_load_memory(oA, pBytes, uSize, iForm, nullptr, nullptr),
                      VOK_TREE_OK);
            EXPECT_EQ(vok_tree_load_memory(oB, oBytes.s.data(), oBytes.s.size(), VOK_TREE_XML,
                                           nullptr, nullptr),
                      VOK_TREE_OK);
            std::uint8_t aA[16], aB[16];
            EXPECT_EQ(vok_tree_hash(oA, aA), VOK_TREE_OK);
            EXPECT_EQ(vok_tree_hash(oB, aB), VOK_TREE_OK);
            EXPECT_EQ(std::memcmp(aA, aB, 16), 0);
        }
        vok_tree_bytes_free(pBytes);
    }

    // ---- comparing -------------------------------------------------------------

    void CompareAll() {
        for (const Model* p : m_oAll) {
            Cursor o;
            Go(o, p);
            const char* s = nullptr;
            EXPECT_EQ(vok_tree_name(o, &s, nullptr), VOK_TREE_OK);
            EXPECT_EQ(s, p->sName);
            vok_tree_value oValue;
            EXPECT_EQ(vok_tree_get_value(o, &oValue), VOK_TREE_OK);
            EXPECT_EQ(oValue.type, p->iType);
            EXPECT_EQ(BytesOf(oValue), p->sValue);
            const char* as[8];
            const char* asValue[8];
            size_t uCount = 0;
            ASSERT_EQ(vok_tree_attributes(o, as, asValue, 8, &uCount), VOK_TREE_OK);
            std::map<string, string> oFound;
            for (size_t u = 0; u < uCount; ++u) oFound[as[u]] = asValue[u];
            EXPECT_EQ(oFound, p->oAttributes);
            std::uint32_t uNth = 0;
            for (const auto& pSucc : p->oSuccs) {
                Cursor oSucc;
                EXPECT_EQ(vok_tree_succ(o, nullptr, uNth++, oSucc), VOK_TREE_OK);
                EXPECT_EQ(vok_tree_id(oSucc), pSucc->uId);
            }
        }
        // And in forms that keep all of it.
        Cursor oLoaded;
        for (const int iForm : {VOK_TREE_JSON, VOK_TREE_DUMP}) {
            std::uint8_t* pBytes = nullptr;
            size_t uSize = 0;
            std::int32_t iEqual = 0;
            ASSERT_EQ(vok_tree_save_memory(m_oRoot, iForm, &pBytes, &uSize), VOK_TREE_OK);
            EXPECT_EQ(vok_tree_load_memory(oLoaded, pBytes, uSize, iForm, nullptr, nullptr),
                      VOK_TREE_OK);
            EXPECT_EQ(vok_tree_is_equal(m_oRoot, oLoaded, &iEqual), VOK_TREE_OK);
            EXPECT_EQ(iEqual, 1) << string(reinterpret_cast<char*>(pBytes), uSize);
            vok_tree_bytes_free(pBytes);
        }
    }

    std::mt19937 m_oRandom;
    Cursor m_oRoot;
    std::unique_ptr<Model> m_pRoot;
    std::vector<Model*> m_oAll;  // in no order
    string m_sText;
};

TEST(CTreeModel, RandomCalls) {
    const char* const sCalls = std::getenv("VOK_C_CALLS");
    const auto uCalls =
        sCalls != nullptr ? static_cast<unsigned>(std::strtoul(sCalls, nullptr, 10)) : 20000u;
    Player(4711).Play(uCalls);
    EXPECT_EQ(vok_tree_live_handles(), 0);
    EXPECT_EQ(vok_tree_live_blocks(), 0);
}

}  // namespace

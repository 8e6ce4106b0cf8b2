// SPDX-License-Identifier: MIT
// Every function with every pointer null in turn, and with handles of another kind.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "c/vok_tree.h"

namespace {

// All functions with a status, as the headers declare them.
const std::set<std::string> FUNCTIONS = {
#include "c_tree_functions.inc"
};

class Sweep {
  public:
    Sweep() {
        vok_tree_new(&m_pNode);
        vok_tree_new(&m_pOther);
        vok_tree_add_text(m_pNode, "a", "text", 4, m_pOther);
        vok_tree_iterate(m_pNode, nullptr, &m_pIterator);
        vok_tree_select(m_pNode, "*", nullptr, &m_pNodes);
        vok_tree_query_new("*", &m_pQuery);
        vok_tree_reader_open_memory("<a/>", 4, nullptr, &m_pReader);
        vok_tree_reader_next(m_pReader);
        vok_tree_records_open_memory("<a/>", 4, "/", nullptr, &m_pRecords);
        m_oStream.write = [](void*, const void*, std::size_t uSize) {
            return static_cast<std::int64_t>(uSize);
        };
        m_oStream.read = [](void*, void*, std::size_t) { return std::int64_t{0}; };
        vok_tree_writer_open_stream(&m_oStream, VOK_TREE_XML, &m_pWriter);
    }
    ~Sweep() {
        FreeOutputs();
        vok_tree_iterator_free(m_pIterator);
        vok_tree_nodes_free(m_pNodes);
        vok_tree_query_free(m_pQuery);
        vok_tree_reader_free(m_pReader);
        vok_tree_records_free(m_pRecords);
        vok_tree_writer_free(m_pWriter);
        vok_tree_free(m_pNode);
        vok_tree_free(m_pOther);
    }
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;

    // sNulls has a letter for each argument: "*" must not be null, "?" may be, "." is no pointer.
    template <class... P>
    void Run(const char* sName, const char* sNulls, vok_tree_status (*pFunction)(P...),
             std::type_identity_t<P>... a) {
        SCOPED_TRACE(sName);
        EXPECT_TRUE(m_oSeen.insert(sName).second);
        ASSERT_EQ(std::string(sNulls).size(), sizeof...(P));
        const std::tuple<P...> oAll(a...);
        RunEach(sNulls, pFunction, oAll, std::index_sequence_for<P...>());
    }
    // Those with other results.
    void RunOthers() {
        vok_tree_free(nullptr);
        vok_tree_iterator_free(nullptr);
        vok_tree_nodes_free(nullptr);
        vok_tree_query_free(nullptr);
        vok_tree_reader_free(nullptr);
        vok_tree_records_free(nullptr);
        vok_tree_writer_free(nullptr);
        vok_tree_bytes_free(nullptr);
        // One of another kind stays as it is.
        vok_tree_free(reinterpret_cast<vok_tree_node*>(m_pQuery));
        EXPECT_EQ(vok_tree_is_node(nullptr), 0);
        EXPECT_EQ(vok_tree_is_node(reinterpret_cast<vok_tree_node*>(m_pQuery)), 0);
        EXPECT_EQ(vok_tree_is_same(m_pNode, nullptr), 0);
        EXPECT_EQ(vok_tree_is_same(nullptr, nullptr), 0);
        EXPECT_EQ(vok_tree_id(nullptr), 0u);
        EXPECT_EQ(vok_tree_node_count(nullptr), 0u);
        EXPECT_EQ(vok_tree_nodes_count(nullptr), 0u);
    }

    vok_tree_node *m_pNode = nullptr, *m_pOther = nullptr;
    vok_tree_iterator* m_pIterator = nullptr;
    vok_tree_nodes* m_pNodes = nullptr;
    vok_tree_query* m_pQuery = nullptr;
    vok_tree_reader* m_pReader = nullptr;
    vok_tree_records* m_pRecords = nullptr;
    vok_tree_writer* m_pWriter = nullptr;
    vok_tree_stream m_oStream = {};
    // Where handles are handed out.
    vok_tree_node* m_pNewNode = nullptr;
    vok_tree_iterator* m_pNewIterator = nullptr;
    vok_tree_nodes* m_pNewNodes = nullptr;
    vok_tree_query* m_pNewQuery = nullptr;
    vok_tree_reader* m_pNewReader = nullptr;
    vok_tree_records* m_pNewRecords = nullptr;
    vok_tree_writer* m_pNewWriter = nullptr;
    std::uint8_t* m_pBytes = nullptr;
    std::set<std::string> m_oSeen;

  private:
    template <class F, class Tuple, std::size_t... N>
    void RunEach(const char* sNulls, F pFunction, const Tuple& oAll, std::index_sequence<N...>) {
        (RunOne<N>(sNulls[N], pFunction, oAll), ...);
    }
    template <std::size_t N, class F, class Tuple>
    void RunOne(char cNull, F pFunction, const Tuple& oAll) {
        using Type = std::tuple_element_t<N, Tuple>;
        if constexpr (std::is_pointer_v<Type>) {
            Tuple oArguments = oAll;
            std::get<N>(oArguments) = nullptr;
            Expect(cNull, pFunction, oArguments, "null");
            using Pointee = std::remove_const_t<std::remove_pointer_t<Type>>;
            if constexpr (IS_HANDLE<Pointee>) {
                const bool bNode = std::is_same_v<Pointee, vok_tree_node>;
                void* const pForeign = bNode ? static_cast<void*>(m_pQuery) : m_pNode;
                std::get<N>(oArguments) = static_cast<Type>(pForeign);
                Expect('*', pFunction, oArguments, "of another kind");
            }
        } else {
            EXPECT_EQ(cNull, '.') << N;
        }
    }
    template <class T>
    static constexpr bool IS_HANDLE =
        std::is_same_v<T, vok_tree_node> || std::is_same_v<T, vok_tree_iterator> ||
        std::is_same_v<T, vok_tree_nodes> || std::is_same_v<T, vok_tree_query> ||
        std::is_same_v<T, vok_tree_reader> || std::is_same_v<T, vok_tree_records> ||
        std::is_same_v<T, vok_tree_writer>;

    template <class F, class Tuple>
    void Expect(char cNull, F pFunction, const Tuple& oArguments, const char* sWhat) {
        vok_tree_clear_error();
        const vok_tree_status iStatus = std::apply(pFunction, oArguments);
        FreeOutputs();
        EXPECT_EQ(iStatus == VOK_TREE_ARGUMENT, cNull == '*') << sWhat << ": " << iStatus;
        EXPECT_EQ(vok_tree_last_error()->code, iStatus < 0 ? iStatus : VOK_TREE_OK);
    }
    void FreeOutputs() {
        vok_tree_free(std::exchange(m_pNewNode, nullptr));
        vok_tree_iterator_free(std::exchange(m_pNewIterator, nullptr));
        vok_tree_nodes_free(std::exchange(m_pNewNodes, nullptr));
        vok_tree_query_free(std::exchange(m_pNewQuery, nullptr));
        vok_tree_reader_free(std::exchange(m_pNewReader, nullptr));
        vok_tree_records_free(std::exchange(m_pNewRecords, nullptr));
        vok_tree_writer_free(std::exchange(m_pNewWriter, nullptr));
        vok_tree_bytes_free(std::exchange(m_pBytes, nullptr));
    }
};

#define SWEEP(function, nulls, ...) o.Run(#function, nulls, function, __VA_ARGS__)

TEST(CTreeNulls, EveryPointerOfEveryFunction) {
    Sweep o;
    vok_tree_node* const n = o.m_pNode;
    vok_tree_node* const m = o.m_pOther;
    const char* s = nullptr;
    const char* as[4];
    const void* v = nullptr;
    char ac[64];
    vok_tree_char16 aw[64];
    std::size_t z = 0;
    std::int32_t i = 0;
    std::int64_t l = 0;
    std::uint32_t u = 0;
    std::uint64_t w = 0;
    double d = 0;
    std::uint32_t au[4] = {};
    std::uint8_t ab[16];
    vok_tree_value oValue = {};
    vok_tree_report oReport;
    vok_tree_record oRecord;
    vok_tree_record_attribute oAttribute;
    const vok_tree_limits oLimits = {};
    const vok_tree_compare_options oOptions = {};
    const auto pConflict = [](void*, const vok_tree_conflict*) { return 0; };
    const auto pVisit = [](void*, const vok_tree_difference*) { return 0; };

    SWEEP(vok_tree_set_language, ".", 0);
    SWEEP(vok_tree_new, "*", &o.m_pNewNode);
    SWEEP(vok_tree_duplicate, "**", n, &o.m_pNewNode);
    SWEEP(vok_tree_assign, "**", m, n);
    SWEEP(vok_tree_to_root, "*", n);
    SWEEP(vok_tree_root, "*?", n, m);
    SWEEP(vok_tree_by_id, "*.?", n, 0, m);
    SWEEP(vok_tree_parent, "*?", n, m);
    SWEEP(vok_tree_next_sibling, "*?", n, m);
    SWEEP(vok_tree_previous_sibling, "*?", n, m);
    SWEEP(vok_tree_depth, "**", n, &i);
    SWEEP(vok_tree_name, "**?", n, &s, &z);
    SWEEP(vok_tree_set_root_name, "*?", n, "r");
    SWEEP(vok_tree_user_tag, "*?.?", n, ac, 64, &z);
    SWEEP(vok_tree_set_user_tag, "*?", n, "t");
    SWEEP(vok_tree_add, "*??", n, "a", m);
    SWEEP(vok_tree_succ, "*?.?", n, "a", 0, m);
    SWEEP(vok_tree_succ_count, "*?*", n, "a", &u);
    SWEEP(vok_tree_live_succs, "**", n, &u);
    SWEEP(vok_tree_iterate, "*?*", n, "a", &o.m_pNewIterator);
    SWEEP(vok_tree_iterator_next, "*?", o.m_pIterator, m);
    SWEEP(vok_tree_prepare, "*", n);
    SWEEP(vok_tree_set_attribute, "*??", n, "k", "v");
    SWEEP(vok_tree_attribute, "*?*?", n, "k", &s, &z);
    SWEEP(vok_tree_attributes, "*??.?", n, as, as, 4, &z);
    SWEEP(vok_tree_remove_attributes, "*", n);
    SWEEP(vok_tree_copy_attributes, "**", n, m);

    SWEEP(vok_tree_type, "**", n, &i);
    SWEEP(vok_tree_get_value, "**", n, &oValue);
    SWEEP(vok_tree_set_value, "**", m, &oValue);
    SWEEP(vok_tree_add_value, "*?*?", n, "a", &oValue, m);
    SWEEP(vok_tree_get_bool, "**", n, &i);
    SWEEP(vok_tree_get_int, "**", n, &i);
    SWEEP(vok_tree_get_char, "**", n, &u);
    SWEEP(vok_tree_get_float, "**", n, &d);
    SWEEP(vok_tree_get_double, "**", n, &d);
    SWEEP(vok_tree_get_date, "**", n, &d);
    SWEEP(vok_tree_get_long, "**", n, &w);
    SWEEP(vok_tree_get_text, "**?", n, &s, &z);
    SWEEP(vok_tree_get_bytes, "**?", n, &v, &z);
    SWEEP(vok_tree_get_quad, "**", n, au);
    SWEEP(vok_tree_get_link, "*?", n, m);
    SWEEP(vok_tree_as_int, "*.*", n, 0, &l);
    SWEEP(vok_tree_as_double, "*.*", n, 0, &d);
    SWEEP(vok_tree_as_text, "*??.?", n, "", ac, 64, &z);
    SWEEP(vok_tree_set_bool, "*.", m, 1);
    SWEEP(vok_tree_set_int, "*.", m, 1);
    SWEEP(vok_tree_set_char, "*.", m, 1);
    SWEEP(vok_tree_set_float, "*.", m, 1);
    SWEEP(vok_tree_set_double, "*.", m, 1);
    SWEEP(vok_tree_set_date, "*.", m, 1);
    SWEEP(vok_tree_set_long, "*.", m, 1);
    SWEEP(vok_tree_set_text, "*?.", m, "x", VOK_TREE_TO_NUL);
    SWEEP(vok_tree_set_bytes, "**.", m, "x", 1);
    SWEEP(vok_tree_set_quad, "**", m, au);
    SWEEP(vok_tree_set_link, "**", m, n);
    SWEEP(vok_tree_clear_value, "*", m);
    SWEEP(vok_tree_copy_value, "**", n, m);
    SWEEP(vok_tree_add_bool, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_int, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_char, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_float, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_double, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_date, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_long, "*?.?", n, "a", 1, m);
    SWEEP(vok_tree_add_text, "*??.?", n, "a", "x", VOK_TREE_TO_NUL, m);
    SWEEP(vok_tree_add_bytes, "*?*.?", n, "a", "x", 1, m);
    SWEEP(vok_tree_add_quad, "*?*?", n, "a", au, m);
    SWEEP(vok_tree_add_link, "*?*?", n, "a", n, m);

    SWEEP(vok_tree_create, "*????", n, "/p[0]", &oLimits, m, &u);
    SWEEP(vok_tree_first, "*???", n, "p", &oLimits, m);
    SWEEP(vok_tree_select, "*??*", n, "p", &oLimits, &o.m_pNewNodes);
    SWEEP(vok_tree_nodes_at, "*.?", o.m_pNodes, 0, m);
    SWEEP(vok_tree_query_new, "?*", "p", &o.m_pNewQuery);
    SWEEP(vok_tree_query_first, "**??", o.m_pQuery, n, &oLimits, m);
    SWEEP(vok_tree_query_select, "**?*", o.m_pQuery, n, &oLimits, &o.m_pNewNodes);
    SWEEP(vok_tree_path, "*?.?", n, ac, 64, &z);
    SWEEP(vok_tree_escape, "??.?", "x", ac, 64, &z);

    SWEEP(vok_tree_insert, "*?.?", n, "a", 0, m);
    SWEEP(vok_tree_remove, "*", m);
    SWEEP(vok_tree_remove_succs, "*", m);
    SWEEP(vok_tree_erase, "*", m);
    SWEEP(vok_tree_delete, "*", m);
    SWEEP(vok_tree_rename, "*?.", m, "b", 0);
    SWEEP(vok_tree_move, "**.", m, n, 0);
    SWEEP(vok_tree_copy, "**.?", n, n, 0, m);
    SWEEP(vok_tree_clone, "*?", n, m);
    SWEEP(vok_tree_shrink, "*", m);
    SWEEP(vok_tree_reset, "*", m);
    SWEEP(vok_tree_has_cycle, "**", n, &i);
    SWEEP(vok_tree_is_equal, "***", n, m, &i);
    SWEEP(vok_tree_hash, "**", n, ab);
    SWEEP(vok_tree_diff, "**?*??", n, m, &oOptions, pVisit, &i, &w);
    SWEEP(vok_tree_make_patch, "**?*", n, m, &oOptions, m);
    SWEEP(vok_tree_apply_patch, "**?", n, m, m);

    SWEEP(vok_tree_merge, "***?.???", n, n, n, &oOptions, VOK_TREE_PICK_A, pConflict, &i, m);

    SWEEP(vok_tree_set_version, "*...", n, 1, 3, 0);
    SWEEP(vok_tree_attach_file, "**.??", m, "does/not/exist", 0, &oLimits, &oReport);
    SWEEP(vok_tree_load_file, "**.??", m, "does/not/exist", 0, &oLimits, &oReport);
    SWEEP(vok_tree_load_memory, "**..??", m, "<a/>", 4, 0, &oLimits, &oReport);
    SWEEP(vok_tree_load_stream, "**.??", m, &o.m_oStream, 0, &oLimits, &oReport);
    SWEEP(vok_tree_save_file, "**.", n, "null_test.xml", VOK_TREE_XML);
    SWEEP(vok_tree_save_memory, "*.**", n, VOK_TREE_XML, &o.m_pBytes, &z);
    SWEEP(vok_tree_save_stream, "**.", n, &o.m_oStream, VOK_TREE_XML);

    SWEEP(vok_tree_reader_open_file, "*?*", "does/not/exist", &oLimits, &o.m_pNewReader);
    SWEEP(vok_tree_reader_open_memory, "*.?*", "<a/>", 4, &oLimits, &o.m_pNewReader);
    SWEEP(vok_tree_reader_open_stream, "*?*", &o.m_oStream, &oLimits, &o.m_pNewReader);
    SWEEP(vok_tree_reader_record, "**", o.m_pReader, &oRecord);
    SWEEP(vok_tree_reader_attribute, "*.*", o.m_pReader, 0, &oAttribute);
    SWEEP(vok_tree_reader_path, "*?.?", o.m_pReader, ac, 64, &z);
    SWEEP(vok_tree_reader_path16, "*?.?", o.m_pReader, aw, 64, &z);
    SWEEP(vok_tree_writer_add_record, "**", o.m_pWriter, o.m_pReader);
    SWEEP(vok_tree_reader_skip, "*", o.m_pReader);
    SWEEP(vok_tree_reader_take, "**", o.m_pReader, m);
    SWEEP(vok_tree_reader_report, "**", o.m_pReader, &oReport);
    SWEEP(vok_tree_reader_next, "*", o.m_pReader);
    SWEEP(vok_tree_writer_open_file, "*.*", "null_test.xml", VOK_TREE_XML, &o.m_pNewWriter);
    SWEEP(vok_tree_writer_open_stream, "*.*", &o.m_oStream, VOK_TREE_XML, &o.m_pNewWriter);
    SWEEP(vok_tree_writer_announce, "*?", o.m_pWriter, "a[0]");
    SWEEP(vok_tree_writer_begin, "*?.", o.m_pWriter, "a", 0);
    SWEEP(vok_tree_writer_attribute, "*??", o.m_pWriter, "k", "v");
    SWEEP(vok_tree_writer_value, "**", o.m_pWriter, &oValue);
    SWEEP(vok_tree_writer_add, "*??", o.m_pWriter, "a", &oValue);
    SWEEP(vok_tree_writer_add_node, "**", o.m_pWriter, n);

    SWEEP(vok_tree_records_open_file, "*??*", "does/not/exist", "a", &oLimits, &o.m_pNewRecords);
    SWEEP(vok_tree_records_open_memory, "*.??*", "<a/>", 4, "a", &oLimits, &o.m_pNewRecords);
    SWEEP(vok_tree_records_open_stream, "*??*", &o.m_oStream, "a", &oLimits, &o.m_pNewRecords);
    SWEEP(vok_tree_records_path, "*?.?", o.m_pRecords, ac, 64, &z);
    SWEEP(vok_tree_records_path16, "*?.?", o.m_pRecords, aw, 64, &z);
    SWEEP(vok_tree_records_report, "**", o.m_pRecords, &oReport);
    SWEEP(vok_tree_records_next, "*?", o.m_pRecords, m);

    SWEEP(vok_tree_set_root_name16, "*?", n, u"r");
    SWEEP(vok_tree_add16, "*??", n, u"a", m);
    SWEEP(vok_tree_succ16, "*?.?", n, u"a", 0, m);
    SWEEP(vok_tree_succ_count16, "*?*", n, u"a", &u);
    SWEEP(vok_tree_iterate16, "*?*", n, u"a", &o.m_pNewIterator);
    SWEEP(vok_tree_set_attribute16, "*??", n, u"k", u"v");
    SWEEP(vok_tree_set_text16, "*?.", m, u"x", VOK_TREE_TO_NUL);
    SWEEP(vok_tree_add_text16, "*??.?", n, u"a", u"x", VOK_TREE_TO_NUL, m);
    SWEEP(vok_tree_add_value16, "*?*?", n, u"a", &oValue, m);
    SWEEP(vok_tree_set_user_tag16, "*?", n, u"t");
    SWEEP(vok_tree_user_tag16, "*?.?", n, aw, 64, &z);
    SWEEP(vok_tree_escape16, "??.?", u"x", aw, 64, &z);
    SWEEP(vok_tree_writer_add16, "*??", o.m_pWriter, u"a", &oValue);
    SWEEP(vok_tree_writer_announce16, "*?", o.m_pWriter, u"a[0]");
    SWEEP(vok_tree_create16, "*????", n, u"/p[0]", &oLimits, m, &u);
    SWEEP(vok_tree_first16, "*???", n, u"p", &oLimits, m);
    SWEEP(vok_tree_select16, "*??*", n, u"p", &oLimits, &o.m_pNewNodes);
    SWEEP(vok_tree_query_new16, "?*", u"p", &o.m_pNewQuery);
    SWEEP(vok_tree_insert16, "*?.?", n, u"a", 0, m);
    SWEEP(vok_tree_rename16, "*?.", n, u"r", 0);
    SWEEP(vok_tree_attach_file16, "**.??", m, u"does/not/exist", 0, &oLimits, &oReport);
    SWEEP(vok_tree_load_file16, "**.??", m, u"does/not/exist", 0, &oLimits, &oReport);
    SWEEP(vok_tree_save_file16, "**.", n, u"null_test.xml", VOK_TREE_XML);
    SWEEP(vok_tree_reader_open_file16, "*?*", u"does/not/exist", &oLimits, &o.m_pNewReader);
    SWEEP(vok_tree_records_open_file16, "*??*", u"does/not/exist", u"a", &oLimits,
          &o.m_pNewRecords);
    SWEEP(vok_tree_writer_open_file16, "*.*", u"null_test.xml", VOK_TREE_XML, &o.m_pNewWriter);
    SWEEP(vok_tree_writer_begin16, "*?.", o.m_pWriter, u"a", 0);
    SWEEP(vok_tree_writer_attribute16, "*??", o.m_pWriter, u"k", u"v");
    SWEEP(vok_tree_name16, "*?.?", n, aw, 64, &z);
    SWEEP(vok_tree_get_text16, "*?.?", n, aw, 64, &z);
    SWEEP(vok_tree_as_text16, "*??.?", n, u"", aw, 64, &z);
    SWEEP(vok_tree_attribute16, "*??.?", n, u"k", aw, 64, &z);
    SWEEP(vok_tree_path16, "*?.?", n, aw, 64, &z);
    SWEEP(vok_tree_last_error16, "?.?", aw, 64, &z);
    SWEEP(vok_tree_writer_end, "*", o.m_pWriter);
    SWEEP(vok_tree_writer_finish, "*", o.m_pWriter);

    EXPECT_EQ(o.m_oSeen, FUNCTIONS);
    o.RunOthers();
    std::remove("null_test.xml");
}

}  // namespace

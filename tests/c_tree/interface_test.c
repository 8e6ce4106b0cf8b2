/* SPDX-License-Identifier: MIT */
/* The trees of C as a C program uses them: compiled as C99, C11 and C++20. Prints the first thing
 * that is wrong. */
#include "tests/c_tree/support.h"

#include "serializer/c/vok_serializer.h" /* both together */

/* ---- a tree with everything in it ---------------------------------------- */

static const uint32_t QUAD[4] = {1, 2, 3, 0xFFFFFFFF};

static int make_tree(vok_tree_node* root) {
    vok_tree_node* n = NULL;
    vok_tree_node* target = NULL;
    OK(vok_tree_new(&n));
    OK(vok_tree_new(&target));
    OK(vok_tree_to_root(root));
    OK(vok_tree_set_root_name(root, "Root")); /* as in every DGraph document */
    OK(vok_tree_add_bool(root, "bool", 7, NULL));
    OK(vok_tree_add_int(root, "int", -42, NULL));
    OK(vok_tree_add_char(root, "char", 0xE4, NULL));
    OK(vok_tree_add_float(root, "float", 0.5, NULL));
    OK(vok_tree_add_double(root, "double", 0.1, NULL));
    OK(vok_tree_add_date(root, "date", 86400.0 * 365, NULL));
    OK(vok_tree_add_long(root, "long", UINT64_C(0xFFFFFFFFFFFFFFFF), NULL));
    OK(vok_tree_add_text(root, "text",
                         "Gr\xC3\xB6\xC3\x9F"
                         "e",
                         VOK_TREE_TO_NUL, target));
    OK(vok_tree_add_text(root, "text", "second", 3, NULL));
    OK(vok_tree_add_bytes(root, "bytes", "\0\1\377", 3, NULL));
    OK(vok_tree_add_quad(root, "quad", QUAD, NULL));
    OK(vok_tree_add_link(root, "link", target, NULL));
    OK(vok_tree_create(root, "sub[0]/leaf[1]", NULL, n, NULL));
    OK(vok_tree_set_attribute(n, "b", "2"));
    OK(vok_tree_set_attribute(n, "a", "1"));
    vok_tree_free(target);
    vok_tree_free(n);
    return 0;
}

/* ---- values -------------------------------------------------------------- */

/* What every getter says of a node: one letter for each. */
static void ask_all(const vok_tree_node* n, char answers[12]) {
    int32_t i;
    uint32_t u, q[4];
    double d;
    uint64_t l;
    const char* s;
    const void* b;
    size_t size;
    vok_tree_status status[11];
    size_t k;
    status[0] = vok_tree_get_bool(n, &i);
    status[1] = vok_tree_get_int(n, &i);
    status[2] = vok_tree_get_char(n, &u);
    status[3] = vok_tree_get_float(n, &d);
    status[4] = vok_tree_get_double(n, &d);
    status[5] = vok_tree_get_date(n, &d);
    status[6] = vok_tree_get_long(n, &l);
    status[7] = vok_tree_get_text(n, &s, NULL);
    status[8] = vok_tree_get_bytes(n, &b, &size);
    status[9] = vok_tree_get_quad(n, q);
    status[10] = vok_tree_get_link(n, NULL);
    for (k = 0; k < 11; ++k) {
        answers[k] = status[k] == VOK_TREE_OK ? '+' : status[k] == VOK_TREE_TYPE ? '-' : '?';
    }
    answers[11] = 0;
}

static int check_values(vok_tree_node* root) {
    static const struct {
        const char* name;
        int32_t type;
        const char* getters;
        const char* text; /* null where there is none */
    } rows[] = {
        {"bool", VOK_TREE_TYPE_BOOLEAN, "+----------", "1"},
        {"bytes", VOK_TREE_TYPE_BINARY, "--------+--", NULL},
        {"char", VOK_TREE_TYPE_CHAR, "--+--------", "228"},
        {"date", VOK_TREE_TYPE_DATE, "-----+-----", "1971-01-01 00:00:00"},
        {"double", VOK_TREE_TYPE_DOUBLE, "----+------", "0.1"},
        {"float", VOK_TREE_TYPE_FLOAT, "---+-------", "0.5"},
        {"int", VOK_TREE_TYPE_INTEGER, "-+---------", "-42"},
        {"link", VOK_TREE_TYPE_LINK, "----------+", NULL},
        {"long", VOK_TREE_TYPE_LONG, "------+----", "18446744073709551615"},
        {"quad", VOK_TREE_TYPE_QUAD, "---------+-", NULL},
        {"sub", VOK_TREE_TYPE_TREE, "-----------", NULL},
        {"text", VOK_TREE_TYPE_STRING, "-------+---",
         "Gr\xC3\xB6\xC3\x9F"
         "e"},
    };
    vok_tree_node *n = NULL, *copy = NULL;
    size_t k, length = 0, size = 0;
    OK(vok_tree_new(&n));
    OK(vok_tree_new(&copy));
    for (k = 0; k < COUNT(rows); ++k) {
        char answers[12], text[64] = "?";
        int32_t type = -1, equal = 0;
        vok_tree_value value;
        OK(vok_tree_succ(root, rows[k].name, 0, n));
        OK(vok_tree_type(n, &type));
        CHECK(type == rows[k].type);
        ask_all(n, answers);
        CHECK(is(answers, rows[k].getters));
        if (rows[k].text != NULL) {
            OK(vok_tree_as_text(n, NULL, text, sizeof(text), &length));
            CHECK(is(text, rows[k].text) && length == strlen(text));
        } else if (type != VOK_TREE_TYPE_QUAD) {
            CHECK(vok_tree_as_text(n, NULL, text, sizeof(text), NULL) == VOK_TREE_TYPE);
        }
        /* The same as a value apart from the tree, into another tree and back. */
        OK(vok_tree_get_value(n, &value));
        CHECK(value.type == type);
        if (type == VOK_TREE_TYPE_LINK || type == VOK_TREE_TYPE_TREE) {
            CHECK(vok_tree_set_value(copy, &value) == VOK_TREE_ARGUMENT);
            continue;
        }
        OK(vok_tree_set_value(copy, &value));
        OK(vok_tree_set_root_name(copy, rows[k].name));
        OK(vok_tree_is_equal(n, copy, &equal));
        CHECK(equal == 1);
        OK(vok_tree_copy_value(n, copy));
        OK(vok_tree_is_equal(n, copy, &equal));
        CHECK(equal == 1);
    }
    {
        const char* text = NULL;
        const void* bytes = NULL;
        uint32_t quad[4];
        int64_t number = 0;
        double real = 0;
        OK(vok_tree_succ(root, "text", 1, n));
        OK(vok_tree_get_text(n, &text, &length));
        CHECK(is(text, "sec") && length == 3);
        OK(vok_tree_succ(root, "bytes", 0, n));
        OK(vok_tree_get_bytes(n, &bytes, &size));
        CHECK(size == 3 && memcmp(bytes, "\0\1\377", 3) == 0);
        OK(vok_tree_succ(root, "quad", 0, n));
        OK(vok_tree_get_quad(n, quad));
        CHECK(memcmp(quad, QUAD, sizeof(QUAD)) == 0);
        OK(vok_tree_succ(root, "link", 0, n));
        OK(vok_tree_get_link(n, n));
        OK(vok_tree_name(n, &text, NULL));
        CHECK(is(text, "text"));
        OK(vok_tree_set_text(copy, "17 and more", VOK_TREE_TO_NUL));
        OK(vok_tree_as_int(copy, 5, &number));
        OK(vok_tree_as_double(copy, 5, &real));
        CHECK(number == 17 && real == 17.0);
        OK(vok_tree_clear_value(copy));
        OK(vok_tree_as_int(copy, 5, &number));
        CHECK(number == 5);
        /* Reals that are whole in the smallest way, and texts with a NUL in them. */
        OK(vok_tree_set_text(copy, "a\0b", 3));
        OK(vok_tree_get_text(copy, &text, &length));
        CHECK(length == 1);
    }
    CHECK(is(vok_tree_type_name(VOK_TREE_TYPE_QUAD), "Quad") &&
          is(vok_tree_type_name(99), "Unknown"));
    CHECK(vok_tree_set_text(root, "x", 1) == VOK_TREE_FAILED);
    CHECK(strstr(vok_tree_last_error()->text, "wrong data type") != NULL);
    CHECK(strstr(vok_tree_last_error()->trail, "vok_tree_set_text\n") != NULL);
    CHECK(vok_tree_set_bytes(copy, NULL, 1) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_set_text(copy, NULL, 1) == VOK_TREE_ARGUMENT);
    vok_tree_free(copy);
    vok_tree_free(n);
    return 0;
}

/* ---- successors, attributes, paths, editing ------------------------------ */

/* The names of the successors, a letter each. */
static int names(const vok_tree_node* node, const char* name, char* letters) {
    vok_tree_iterator* each = NULL;
    vok_tree_node* n = NULL;
    const char* s = NULL;
    OK(vok_tree_new(&n));
    OK(vok_tree_iterate(node, name, &each));
    while (vok_tree_iterator_next(each, n) == VOK_TREE_OK) {
        OK(vok_tree_name(n, &s, NULL));
        *letters++ = *s;
    }
    *letters = 0;
    CHECK(vok_tree_iterator_next(each, n) == VOK_TREE_NONE);
    vok_tree_iterator_free(each);
    vok_tree_free(n);
    return 0;
}

#define NAMES(node, name, expected)              \
    do {                                         \
        char letters_[64];                       \
        CHECK(names(node, name, letters_) == 0); \
        CHECK(is(letters_, expected));           \
    } while (0)

static int check_structure(void) {
    vok_tree_node *root = NULL, *n = NULL, *m = NULL;
    vok_tree_nodes* found = NULL;
    vok_tree_query* query = NULL;
    uint32_t count = 0, created = 0;
    int32_t depth = 0, flag = 0;
    const char *keys[4], *values[4], *text = NULL;
    size_t size = 0;
    char buffer[32];
    OK(vok_tree_new(&root));
    OK(vok_tree_new(&n));
    OK(vok_tree_new(&m));
    CHECK(!vok_tree_is_node(root) && vok_tree_node_count(root) == 0);
    CHECK(vok_tree_root(root, n) == VOK_TREE_NONE && vok_tree_type(root, &flag) == VOK_TREE_FAILED);
    OK(vok_tree_add(root, "c", n));
    OK(vok_tree_add(root, "a", NULL));
    OK(vok_tree_add(root, "b", NULL));
    OK(vok_tree_insert(root, "b", 0, m));
    NAMES(root, NULL, "abbc");
    NAMES(root, "b", "bb");
    NAMES(root, "x", "");
    CHECK(path_is(m, "/b[0]") == 0 && path_is(root, "/") == 0);
    OK(vok_tree_next_sibling(m, m));
    CHECK(path_is(m, "/b[1]") == 0);
    OK(vok_tree_next_sibling(m, m));
    CHECK(vok_tree_is_same(m, n) && vok_tree_id(m) == vok_tree_id(n));
    CHECK(vok_tree_next_sibling(m, m) == VOK_TREE_NONE && vok_tree_is_same(m, n));
    OK(vok_tree_previous_sibling(m, m));
    OK(vok_tree_parent(m, m));
    CHECK(vok_tree_is_same(m, root) && vok_tree_parent(m, m) == VOK_TREE_NONE);
    OK(vok_tree_by_id(root, vok_tree_id(n), m));
    CHECK(vok_tree_is_same(m, n) && vok_tree_by_id(root, 1000, m) == VOK_TREE_NONE);
    OK(vok_tree_depth(n, &depth));
    CHECK(depth == 1);

    /* A removed node keeps its place, which counts. */
    OK(vok_tree_succ(root, "b", 0, m));
    OK(vok_tree_remove(m));
    CHECK(vok_tree_set_int(m, 1) == VOK_TREE_FAILED && vok_tree_remove(root) == VOK_TREE_FAILED);
    NAMES(root, NULL, "abc");
    OK(vok_tree_succ_count(root, "b", &count));
    CHECK(count == 2);
    OK(vok_tree_succ_count(root, NULL, &count));
    CHECK(count == 4);
    OK(vok_tree_live_succs(root, &count));
    CHECK(count == 3);
    OK(vok_tree_erase(m));
    OK(vok_tree_succ_count(root, "b", &count));
    CHECK(count == 1);
    OK(vok_tree_rename(n, "b", 0));
    CHECK(path_is(n, "/b[0]") == 0);
    OK(vok_tree_succ(root, "b", 1, m));
    OK(vok_tree_move(n, m, VOK_TREE_LAST));
    CHECK(path_is(n, "/b[0]/b[0]") == 0);
    CHECK(vok_tree_move(m, n, 0) == VOK_TREE_FAILED);
    OK(vok_tree_copy(m, n, VOK_TREE_LAST, m));
    CHECK(path_is(m, "/b[0]/b[0]/b[0]") == 0);
    OK(vok_tree_delete(m));
    OK(vok_tree_shrink(root));
    CHECK(vok_tree_node_count(root) == 4);
    OK(vok_tree_first(root, "/b/b", NULL, n));
    OK(vok_tree_set_link(n, root));
    OK(vok_tree_has_cycle(root, &flag));
    CHECK(flag == 1);
    OK(vok_tree_first(root, "/b", NULL, n));
    OK(vok_tree_remove_succs(n));
    OK(vok_tree_set_int(n, 1));

    /* Paths. */
    OK(vok_tree_create(root, "/o[0][@k=\"1\"]/v[0]", NULL, n, &created));
    CHECK(created == 2);
    OK(vok_tree_create(root, "/o[1][@k=\"2\"]/v[0]", NULL, n, &created));
    CHECK(vok_tree_create(root, "/*", NULL, n, NULL) == VOK_TREE_FAILED);
    OK(vok_tree_select(root, "//v", NULL, &found));
    CHECK(vok_tree_nodes_count(found) == 2);
    OK(vok_tree_nodes_at(found, 1, m));
    CHECK(vok_tree_is_same(m, n) && vok_tree_nodes_at(found, 2, m) == VOK_TREE_NONE);
    vok_tree_nodes_free(found);
    OK(vok_tree_query_new("o[@k=\"2\"]", &query));
    OK(vok_tree_query_first(query, root, NULL, m));
    CHECK(path_is(m, "/o[1]") == 0 && vok_tree_query_first(query, n, NULL, m) == VOK_TREE_NONE);
    OK(vok_tree_query_select(query, root, NULL, &found));
    CHECK(vok_tree_nodes_count(found) == 1);
    vok_tree_nodes_free(found);
    vok_tree_query_free(query);
    CHECK(vok_tree_query_new("o[", &query) == VOK_TREE_FAILED);
    CHECK(vok_tree_first(root, "///", NULL, n) == VOK_TREE_FAILED);
    {
        vok_tree_limits limits = {{0}};
        limits.at_most[VOK_TREE_LIMIT_PATH_STEPS] = 2;
        CHECK(vok_tree_select(root, "//v", &limits, &found) == VOK_TREE_LIMIT);
        CHECK(strstr(vok_tree_last_error()->text, "limit") != NULL);
    }
    OK(vok_tree_escape("a/b", buffer, sizeof(buffer), &size));
    CHECK(is(buffer, "a\b47;b") && size == 6);

    /* Attributes. */
    OK(vok_tree_set_attribute(m, "z", "26"));
    OK(vok_tree_attributes(m, NULL, NULL, 0, &size));
    CHECK(size == 2 && vok_tree_attributes(m, keys, values, 1, &size) == VOK_TREE_TOO_SMALL);
    OK(vok_tree_attributes(m, keys, values, 4, &size));
    CHECK(size == 2 && is(keys[0], "k") && is(values[0], "2") && is(keys[1], "z"));
    OK(vok_tree_copy_attributes(m, root));
    OK(vok_tree_set_attribute(root, "k", NULL));
    CHECK(vok_tree_attribute(root, "k", &text, NULL) == VOK_TREE_NONE);
    OK(vok_tree_attribute(root, "z", &text, &size));
    CHECK(is(text, "26") && size == 2);
    OK(vok_tree_remove_attributes(root));
    CHECK(vok_tree_attribute(root, "z", &text, NULL) == VOK_TREE_NONE);
    CHECK(vok_tree_set_attribute(root, "", "x") == VOK_TREE_FAILED);

    /* Cursors keep their tree. */
    OK(vok_tree_clone(m, n));
    CHECK(path_is(n, "/") == 0);
    OK(vok_tree_assign(root, n));
    vok_tree_free(n);
    OK(vok_tree_duplicate(root, &n));
    CHECK(vok_tree_is_same(root, n));
    vok_tree_free(root);
    OK(vok_tree_prepare(n));
    OK(vok_tree_reset(n));
    CHECK(vok_tree_node_count(n) == 1);
    OK(vok_tree_set_user_tag(n, "mine"));
    OK(vok_tree_user_tag(n, buffer, sizeof(buffer), NULL));
    CHECK(is(buffer, "mine"));
    vok_tree_free(n);
    vok_tree_free(m);
    return 0;
}

/* ---- comparing ----------------------------------------------------------- */

static int32_t note(void* context, const vok_tree_difference* d) {
    char* s = (char*)context;
    char line[64];
    sprintf(line, "%d %s %s%s%s;", (int)d->what, d->path, d->attribute != NULL ? d->attribute : "",
            vok_tree_is_node(d->a) ? "a" : "", vok_tree_is_node(d->b) ? "b" : "");
    strcat(s, line);
    return strlen(s) > 60;
}

static int check_comparing(const vok_tree_node* root) {
    vok_tree_node *a = NULL, *b = NULL, *n = NULL;
    uint8_t ha[16], hb[16];
    uint64_t count = 0;
    int32_t equal = -1;
    char differences[256] = "";
    OK(vok_tree_new(&a));
    OK(vok_tree_new(&b));
    OK(vok_tree_new(&n));
    OK(vok_tree_clone(root, a));
    OK(vok_tree_clone(root, b));
    OK(vok_tree_hash(a, ha));
    OK(vok_tree_hash(b, hb));
    CHECK(memcmp(ha, hb, 16) == 0);
    OK(vok_tree_first(b, "/int", NULL, n));
    OK(vok_tree_set_int(n, 1));
    OK(vok_tree_first(b, "/sub/leaf", NULL, n));
    OK(vok_tree_set_attribute(n, "a", "3"));
    OK(vok_tree_add(b, "zz", NULL));
    OK(vok_tree_hash(b, hb));
    CHECK(memcmp(ha, hb, 16) != 0);
    OK(vok_tree_diff(a, b, NULL, note, differences, &count));
    CHECK(is(differences, "4 /int[0] ab;5 /sub[0]/leaf[0] aab;1 /zz[0] b;") && count == 3);
    OK(vok_tree_make_patch(a, b, NULL, n));
    OK(vok_tree_apply_patch(a, n, a));
    OK(vok_tree_is_equal(a, b, &equal));
    CHECK(equal == 1);
    CHECK(vok_tree_apply_patch(a, root, n) == VOK_TREE_FAILED);
    vok_tree_free(n);
    vok_tree_free(b);
    vok_tree_free(a);
    return 0;
}

static int32_t note_conflict(void* context, const vok_tree_conflict* c) {
    char* s = (char*)context;
    int32_t base = 0, a = 0, b = 0;
    vok_tree_get_int(c->base, &base);
    vok_tree_get_int(c->a.node, &a);
    vok_tree_get_int(c->b.node, &b);
    sprintf(s + strlen(s), "%s %d %d/%d %d/%d;", c->path, (int)base, (int)c->a.did, (int)a,
            (int)c->b.did, (int)b);
    return 0;
}

/* Successors that are told apart by a key, and what is not looked at. */
static int check_aligning(void) {
    static const char BASE[] = "{\"i\":[{\"k\":1,\"v\":1},{\"k\":2,\"v\":2}],\"t\":0}";
    static const char A[] = "{\"i\":[{\"k\":2,\"v\":5},{\"k\":3,\"v\":3}],\"t\":1}";
    static const char B[] = "{\"i\":[{\"k\":1,\"v\":1},{\"k\":2,\"v\":6}],\"t\":0}";
    static const char* const KEYS[] = {"k"};
    static const char* const IGNORED[] = {"t"};
    static const struct {
        int32_t pick;
        vok_tree_status status;
        int32_t value; /* of the node with key 2 */
    } rows[] = {{VOK_TREE_PICK_NONE, VOK_TREE_NONE, 0},
                {VOK_TREE_PICK_A, VOK_TREE_OK, 5},
                {VOK_TREE_PICK_B, VOK_TREE_OK, 6},
                {3, VOK_TREE_ARGUMENT, 0}};
    vok_tree_node *base = NULL, *a = NULL, *b = NULL, *n = NULL;
    vok_tree_compare_options options;
    char text[256] = "";
    size_t k;
    memset(&options, 0, sizeof(options));
    options.keys = KEYS;
    options.key_count = 1;
    options.ignored = IGNORED;
    options.ignored_count = 1;
    OK(vok_tree_new(&base));
    OK(vok_tree_new(&a));
    OK(vok_tree_new(&b));
    OK(vok_tree_new(&n));
    OK(vok_tree_load_memory(base, BASE, sizeof(BASE) - 1, VOK_TREE_JSON, NULL, NULL));
    OK(vok_tree_load_memory(a, A, sizeof(A) - 1, VOK_TREE_JSON, NULL, NULL));
    OK(vok_tree_load_memory(b, B, sizeof(B) - 1, VOK_TREE_JSON, NULL, NULL));
    OK(vok_tree_diff(base, a, &options, note, text, NULL));
    CHECK(is(text, "0 /i[0] a;4 /i[1]/v[0] ab;1 /i[1] b;"));
    for (k = 0; k < COUNT(rows); ++k) {
        int32_t value = 0;
        text[0] = 0;
        CHECK(vok_tree_merge(base, a, b, &options, rows[k].pick, note_conflict, text, n) ==
              rows[k].status);
        if (rows[k].status == VOK_TREE_ARGUMENT) continue;
        CHECK(is(text, "/i[1]/v[0] 2 0/5 0/6;"));
        if (rows[k].status != VOK_TREE_OK) continue;
        OK(vok_tree_first(n, "/i[0]/v", NULL, n));
        OK(vok_tree_get_int(n, &value));
        CHECK(value == rows[k].value);
    }
    options.keys = NULL;
    CHECK(vok_tree_diff(base, a, &options, note, text, NULL) == VOK_TREE_ARGUMENT);
    vok_tree_free(n);
    vok_tree_free(b);
    vok_tree_free(a);
    vok_tree_free(base);
    return 0;
}

/* ---- UTF-16 -------------------------------------------------------------- */

#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L)
static int check_utf16(void) {
    vok_tree_node *root = NULL, *n = NULL;
    vok_tree_char16 text[64];
    size_t length = 0;
    uint32_t count = 0;
    const char* s = NULL;
    OK(vok_tree_new(&root));
    OK(vok_tree_new(&n));
    OK(vok_tree_create16(root, u"/Gr\u00F6\u00DFe[0]", NULL, n, NULL));
    OK(vok_tree_set_text16(n, u"\U0001F600 and more", 2));
    OK(vok_tree_get_text(n, &s, &length));
    CHECK(is(s, "\xF0\x9F\x98\x80") && length == 4);
    OK(vok_tree_get_text16(n, text, 64, &length));
    CHECK(length == 2 && text[0] == 0xD83D && text[1] == 0xDE00 && text[2] == 0);
    CHECK(vok_tree_get_text16(n, text, 2, &length) == VOK_TREE_TOO_SMALL && length == 2);
    OK(vok_tree_name16(n, text, 64, &length));
    CHECK(length == 5 && memcmp(text, u"Gr\u00F6\u00DFe", 12) == 0);
    OK(vok_tree_path16(n, text, 64, NULL));
    CHECK(memcmp(text, u"/Gr\u00F6\u00DFe[0]", 20) == 0);
    OK(vok_tree_add_text16(root, u"b", u"x\xD800", VOK_TREE_TO_NUL, n));
    OK(vok_tree_get_text(n, &s, NULL));
    CHECK(is(s, "x\xEF\xBF\xBD"));
    OK(vok_tree_set_attribute16(n, u"k", u"v"));
    OK(vok_tree_attribute16(n, u"k", text, 64, &length));
    CHECK(length == 1 && text[0] == 'v');
    CHECK(vok_tree_attribute16(n, u"l", text, 64, &length) == VOK_TREE_NONE);
    OK(vok_tree_set_attribute16(n, u"k", NULL));
    OK(vok_tree_rename16(n, u"c", 0));
    OK(vok_tree_insert16(root, u"c", 0, NULL));
    OK(vok_tree_add16(root, u"c", n));
    OK(vok_tree_succ_count16(root, u"c", &count));
    CHECK(count == 3);
    OK(vok_tree_succ16(root, u"c", 2, n));
    OK(vok_tree_first16(root, u"/c[2]", NULL, n));
    OK(vok_tree_escape16(u"a/\u00F6", text, 64, &length));
    CHECK(length == 6 && text[5] == 0xF6);
    OK(vok_tree_set_user_tag16(root, u"\u00F6"));
    OK(vok_tree_user_tag16(root, text, 64, &length));
    CHECK(length == 1 && text[0] == 0xF6);
    OK(vok_tree_set_root_name16(root, u"top"));
    OK(vok_tree_as_text16(n, u"other", text, 64, &length));
    CHECK(length == 5 && text[4] == 'r');
    CHECK(vok_tree_first16(root, u"[", NULL, n) == VOK_TREE_FAILED);
    OK(vok_tree_last_error16(text, 64, &length));
    CHECK(length == strlen(vok_tree_last_error()->text) && text[0] == 'o');
    OK(vok_tree_save_file16(root, u"interface_test_\u00F6", VOK_TREE_JSON));
    OK(vok_tree_load_file16(n, u"interface_test_\u00F6", VOK_TREE_JSON, NULL, NULL));
    CHECK(same_tree(root, n) == 0);
    remove("interface_test_\xC3\xB6");
    vok_tree_free(n);
    vok_tree_free(root);
    return 0;
}
#else
static int check_utf16(void) {
    return 0;
}
#endif

/* ---- both interfaces ----------------------------------------------------- */

static int check_both(void) {
    static const vok_char NAME[] = {'i', 0};
    vok_node* other = NULL;
    vok_tree_node* tree = NULL;
    uint8_t* bytes = NULL;
    int32_t size = 0, value = 0;
    CHECK(vok_root_create(&other) == VOK_OK && vok_node_add_int(other, NAME, 42) == VOK_OK);
    CHECK(vok_save_buffer(other, &bytes, &size) == VOK_OK);
    OK(vok_tree_new(&tree));
    OK(vok_tree_load_memory(tree, bytes, (size_t)size, VOK_TREE_DGRAPH, NULL, NULL));
    OK(vok_tree_succ(tree, "i", 0, tree));
    OK(vok_tree_get_int(tree, &value));
    CHECK(value == 42);
    vok_bytes_free(bytes);
    vok_node_free(other);
    vok_tree_free(tree);
    return 0;
}

int main(void) {
    vok_tree_node* root = NULL;
    CHECK(vok_tree_interface_version() == VOK_TREE_INTERFACE);
    CHECK(vok_tree_last_error()->code == VOK_TREE_OK && is(vok_tree_last_error()->text, ""));
    OK(vok_tree_new(&root));
    CHECK(vok_tree_live_bytes() == 0);
    if (make_tree(root) != 0 || check_values(root) != 0 || check_structure() != 0) return 1;
    if (check_comparing(root) != 0 || check_aligning() != 0 ||
        check_documents_and_records(root) != 0)
        return 1;
    if (check_utf16() != 0 || check_both() != 0 || check_memory() != 0) return 1;
    OK(vok_tree_set_language(VOK_TREE_GERMAN));
    CHECK(vok_tree_set_language(2) == VOK_TREE_ARGUMENT);
    CHECK(
        is(vok_tree_last_error()->text, "Parameter \"language\" hat einen ung\xC3\xBCltigen Wert"));
    vok_tree_free(root);
    CHECK(vok_tree_live_handles() == 0);
    CHECK(vok_tree_live_blocks() == 0);
    puts("good");
    return 0;
}

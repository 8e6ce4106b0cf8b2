/* SPDX-License-Identifier: MIT */
/* Values of every type, and many nodes in one call. Prints the first thing that is wrong. */
#include "serializer/c/vok_serializer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define CHECK(condition)                                           \
    do {                                                           \
        if (!(condition)) {                                        \
            printf("%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            return 1;                                              \
        }                                                          \
    } while (0)

#define FAILS(call, text) CHECK((call) == VOK_FAILED && is_text(vok_last_error(), text))

/* A text as UTF-16; one of eight at a time. */
static const vok_char* U(const char* text) {
    static vok_char buffers[8][64];
    static int next = 0;
    vok_char* buffer = buffers[next++ % 8];
    size_t i = 0;
    for (; text[i] != 0 && i < 63; ++i) buffer[i] = (unsigned char)text[i];
    buffer[i] = 0;
    return buffer;
}

static int is_text(const vok_char* value, const char* text) {
    size_t i = 0;
    for (; text[i] != 0; ++i) {
        if (value[i] != (unsigned char)text[i]) break;
    }
    if (value[i] == 0 && text[i] == 0) return 1;
    for (i = 0; value[i] != 0; ++i) putchar(value[i] < 128 ? value[i] : '?');
    putchar('\n');
    return 0;
}

static int check_values(void) {
    vok_node* root = NULL;
    vok_node* read = NULL;
    uint8_t *newer = NULL, *older = NULL;
    const vok_char* text = NULL;
    int32_t newer_size = 0, older_size = 0, length = 0;
    int64_t whole = 7;
    double real = 0;
    float small = 0;
    CHECK(vok_root_create(&root) == VOK_OK);
    CHECK(vok_node_add_long(root, U("l"), -2) == VOK_OK);
    CHECK(vok_node_add_float(root, U("f"), 0.1f) == VOK_OK);
    CHECK(vok_node_add_double(root, U("d"), 0.1) == VOK_OK);
    CHECK(vok_node_add_date(root, U("t"), 86400) == VOK_OK);
    CHECK(vok_node_add_int(root, U("i"), 300) == VOK_OK);
    CHECK(vok_node_set_attribute(root, U("a"), U("x")) == VOK_OK);
    CHECK(vok_node_set_attribute(root, U("a"), U("y")) == VOK_OK);
    CHECK(vok_save_buffer_as(root, VOK_DGRAPH_1_3, &newer, &newer_size) == VOK_OK);
    CHECK(vok_save_buffer_as(root, VOK_DGRAPH, &older, &older_size) == VOK_OK);
    /* Eight bytes against a length and "-2" or its two's complement. */
    CHECK(newer_size != older_size);

    CHECK(vok_root_create(&read) == VOK_OK);
    CHECK(vok_load_buffer(read, newer, newer_size) == VOK_OK);
    CHECK(vok_node_get_whole(read, U("l"), 0, INT64_MIN, INT64_MAX, &whole) == VOK_OK);
    CHECK(whole == -2);
    CHECK(vok_node_get_whole(read, U("l"), 0, 0, UINT64_MAX, &whole) == VOK_OK && whole == -2);
    CHECK(vok_node_get_whole(read, U("i"), 0, 0, 300, &whole) == VOK_OK && whole == 300);
    FAILS(vok_node_get_whole(read, U("i"), 0, -128, 127, &whole),
          "/i: a number from -128 to 127 expected, Integer 300 found");
    CHECK(vok_node_get_whole(read, U("none"), 0, 0, 1, &whole) == VOK_NOT_FOUND && whole == 300);
    CHECK(vok_node_get_real(read, U("i"), 0, &real) == VOK_OK && real == 300);
    CHECK(vok_node_get_real(read, U("f"), 0, &real) == VOK_OK && real == (double)0.1f);
    CHECK(vok_node_get_float(read, U("f"), 0, &small) == VOK_OK && small == 0.1f);
    FAILS(vok_node_get_float(read, U("d"), 0, &small),
          "/d: a number that a Float holds expected, Double 0.1 found");
    CHECK(vok_node_get_date(read, U("t"), 0, &whole) == VOK_OK && whole == 86400);
    FAILS(vok_node_get_date(read, U("i"), 0, &whole), "/i: Date expected, Integer 300 found");
    CHECK(vok_node_get_attribute(read, U("a"), &text, &length) == VOK_OK && length == 1);
    CHECK(is_text(text, "y"));
    CHECK(vok_node_get_attribute(read, U("b"), &text, &length) == VOK_NOT_FOUND);
    CHECK(vok_load_buffer(read, older, older_size) == VOK_OK);
    CHECK(vok_node_get_whole(read, U("l"), 0, INT64_MIN, INT64_MAX, &whole) == VOK_OK);
    CHECK(whole == -2);

    FAILS(vok_node_add_long(NULL, U("x"), 1), "Failed to add Node int value");
    FAILS(vok_node_add_float(NULL, U("x"), 1), "Failed to add Node double value");
    FAILS(vok_node_add_date(NULL, U("x"), 1), "Failed to add Node int value");
    FAILS(vok_node_set_attribute(NULL, U("x"), U("y")), "Failed to set Node attribute");
    FAILS(vok_node_get_attribute(NULL, U("x"), &text, &length), "Failed to get Node attribute");
    vok_bytes_free(newer);
    vok_bytes_free(older);
    vok_node_free(root);
    vok_node_free(read);
    return 0;
}

/* ---- items ------------------------------------------------------------------ */

typedef struct {
    uint8_t bytes[512];
    int32_t size;
} items;

static void put(items* o, const void* bytes, size_t size) {
    memcpy(o->bytes + o->size, bytes, size);
    o->size += (int32_t)size;
}
static void number(items* o, uint64_t value, int size) {
    for (; size > 0; --size, value >>= 8) o->bytes[o->size++] = (uint8_t)value;
}
static void text(items* o, const char* value) {
    number(o, strlen(value), 4);
    put(o, value, strlen(value));
}
static void item(items* o, int code, const char* name) {
    number(o, (uint64_t)code, 1);
    text(o, name);
}
static uint64_t bits(double value) {
    uint64_t u = 0;
    memcpy(&u, &value, 8);
    return u;
}

/* One of each. */
static void fill(items* o) {
    o->size = 0;
    item(o, VOK_ITEM_ATTRIBUTE, "at");
    text(o, "tribute");
    item(o, VOK_ITEM_REAL, "real");
    number(o, bits(0.5), 8);
    item(o, VOK_ITEM_TREE, "t");
    item(o, VOK_ITEM_STRING, "s");
    text(o, "text");
    item(o, VOK_ITEM_BOOLEAN, "b");
    number(o, 1, 1);
    number(o, VOK_ITEM_END, 1);
    item(o, VOK_ITEM_INTEGER, "i");
    number(o, (uint64_t)-5, 4);
    item(o, VOK_ITEM_LONG, "l");
    number(o, (uint64_t)-6, 8);
    item(o, VOK_ITEM_FLOAT, "f");
    number(o, bits(0.25), 8);
    item(o, VOK_ITEM_DOUBLE, "d");
    number(o, bits(-1.5), 8);
    item(o, VOK_ITEM_DATE, "date");
    number(o, bits(60), 8);
    item(o, VOK_ITEM_BINARY, "raw");
    text(o, "\1\2\3");
    item(o, VOK_ITEM_NULL, "n");
    item(o, VOK_ITEM_EMPTY, "e");
    item(o, VOK_ITEM_HOST, "h");
}

/* The same by single calls, but for what only items have. */
static int check_added(const vok_node* root) {
    vok_node* sub = NULL;
    const vok_char* value = NULL;
    const uint8_t* raw = NULL;
    int32_t i = 0, length = 0;
    int64_t whole = 0;
    double d = 0;
    CHECK(vok_node_get_attribute(root, U("at"), &value, &length) == VOK_OK);
    CHECK(is_text(value, "tribute"));
    CHECK(vok_node_get_attribute(root, U("real"), &value, &length) == VOK_OK);
    CHECK(is_text(value, "0.5"));
    CHECK(vok_node_get_subnode(root, U("t"), 0, &sub) == VOK_OK);
    CHECK(vok_node_get_bool(sub, U("b"), 0, &i) == VOK_OK && i == 1);
    CHECK(vok_node_get_string(sub, U("s"), 0, &value, &length) == VOK_OK);
    CHECK(is_text(value, "text"));
    vok_node_free(sub);
    CHECK(vok_node_get_int(root, U("i"), 0, &i) == VOK_OK && i == -5);
    CHECK(vok_node_get_whole(root, U("l"), 0, -9, 9, &whole) == VOK_OK && whole == -6);
    CHECK(vok_node_get_double(root, U("d"), 0, &d) == VOK_OK && d == -1.5);
    CHECK(vok_node_get_real(root, U("f"), 0, &d) == VOK_OK && d == 0.25);
    CHECK(vok_node_get_date(root, U("date"), 0, &whole) == VOK_OK && whole == 60);
    CHECK(vok_node_get_bytes(root, U("raw"), 0, &raw, &length) == VOK_OK && length == 3);
    CHECK(memcmp(raw, "\1\2\3", 3) == 0);
    CHECK(vok_node_get_subnode(root, U("n"), 0, &sub) == VOK_OK);
    CHECK(vok_node_get_attribute(sub, U("null"), &value, &length) == VOK_OK);
    CHECK(is_text(value, "true"));
    vok_node_free(sub);
    CHECK(vok_node_count(root, U("e"), &i) == VOK_OK && i == 1);
    CHECK(vok_node_get_int(root, U("h"), 0, &i) == VOK_FAILED);
    return 0;
}

static uint32_t u4(const uint8_t* bytes) {
    return (uint32_t)bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 |
           (uint32_t)bytes[3] << 24;
}

/* Every node: its size leads to the next one, its name is one of the table. */
static int check_told(const uint8_t* bytes, int32_t size) {
    static const char* const in_order[] = {"Root", "d", "date", "e", "f", "h", "i",
                                           "l",    "n", "raw",  "t", "b", "s"};
    const char* names[16];
    uint32_t lengths[16];
    uint32_t at = u4(bytes), count = u4(bytes + at), nodes = 0;
    CHECK(count == 13);
    at += 4;
    for (count = 0; count < 13; ++count) {
        lengths[count] = u4(bytes + at);
        names[count] = (const char*)bytes + at + 4;
        at += 4 + lengths[count];
    }
    CHECK(at == (uint32_t)size);
    for (at = 4; at < u4(bytes); ++nodes) {
        const uint32_t name = u4(bytes + at + 8), attributes = u4(bytes + at + 13);
        CHECK(nodes < 13 && name < 13 && lengths[name] == strlen(in_order[nodes]));
        CHECK(memcmp(names[name], in_order[nodes], lengths[name]) == 0);
        CHECK(attributes == (nodes == 0 ? 2u : nodes == 8 ? 1u : 0u));
        if (nodes == 0) {
            at += 17; /* "at", "tribute" and "real", "0.5", of which one is a number */
            CHECK(u4(bytes + at) == 2 && bytes[at + 6] == 0 && u4(bytes + at + 15) == 7);
            at += 26;
            CHECK(u4(bytes + at) == 4 && bytes[at + 8] == 1 && u4(bytes + at + 17) == 3);
            at += 24;
        } else {
            at = bytes[at + 12] == VOK_ITEM_TREE ? at + 17 : at + 4 + u4(bytes + at);
        }
    }
    CHECK(nodes == 13);
    return 0;
}

static int check_items(void) {
    items all;
    vok_node* root = NULL;
    vok_node* hosts[2] = {NULL, NULL};
    vok_node* found = NULL;
    uint8_t* told = NULL;
    int32_t size = 0, cut = 0;
    fill(&all);
    CHECK(vok_root_create(&root) == VOK_OK);
    CHECK(vok_node_add_items(root, all.bytes, all.size, hosts, 2) == VOK_OK);
    CHECK(hosts[0] != NULL && hosts[1] == NULL && check_added(root) == 0);
    CHECK(vok_node_get_items(root, &told, &size) == VOK_OK && check_told(told, size) == 0);
    vok_bytes_free(told);
    CHECK(vok_node_add_int(hosts[0], U("x"), 4) == VOK_OK);
    CHECK(vok_node_get_subnode(root, U("h"), 0, &found) == VOK_OK);
    CHECK(vok_node_get_int(found, U("x"), 0, &size) == VOK_OK && size == 4);
    vok_node_free(found);
    vok_node_free(hosts[0]);
    CHECK(vok_node_from_id(root, 2, &found) == VOK_OK);
    CHECK(vok_node_from_id(root, 1000, &found) == VOK_NOT_FOUND);
    CHECK(vok_node_from_id(root, -1, &found) == VOK_NOT_FOUND);
    vok_node_free(found);
    FAILS(vok_fail_in_buffer(root, 2, U("no good"), 0, NULL, 0), "/t[0]/s: no good");
    FAILS(vok_fail_in_buffer(root, 4, U("Long"), 1, NULL, 0),
          "/i: Long expected, Integer -5 found");
    FAILS(vok_fail_in_buffer(root, -1, U("no good"), 1, NULL, 0), "no good");
    FAILS(vok_fail_in_file(root, 2, U("no good"), 0, U("is/not/there")), "/t[0]/s: no good");

    /* Cut anywhere, and each byte another one: refused or not, nothing is lost. */
    for (cut = 0; cut < all.size; ++cut) {
        const int32_t status = vok_node_add_items(root, all.bytes, cut, hosts, 0);
        CHECK(status == VOK_OK || is_text(vok_last_error(), "Failed to add Node items"));
    }
    FAILS(vok_node_add_items(root, all.bytes, all.size, NULL, 0), "Failed to add Node items");
    for (cut = 0; cut < all.size * 3; ++cut) {
        static const uint8_t others[] = {0xFF, 0x00, 0x15};
        const uint8_t kept = all.bytes[cut / 3];
        all.bytes[cut / 3] = others[cut % 3];
        hosts[0] = hosts[1] = NULL;
        (void)vok_node_add_items(root, all.bytes, all.size, hosts, 2);
        vok_node_free(hosts[0]);
        vok_node_free(hosts[1]);
        all.bytes[cut / 3] = kept;
    }
    vok_node_free(root);
    return 0;
}

static int check_failing(void) {
    items all;
    vok_node* root = NULL;
    uint8_t* told = NULL;
    int32_t size = 0;
    CHECK(vok_node_create(&root) == VOK_OK);
    CHECK(vok_node_get_items(root, &told, &size) == VOK_NOT_FOUND && told == NULL);
    vok_node_free(root);
    CHECK(vok_root_create(&root) == VOK_OK);
    all.size = 0;
    item(&all, VOK_ITEM_TREE, "a");
    item(&all, VOK_ITEM_STRING, "s");
    number(&all, 3, 4);
    put(&all, "x\0y", 3);
    FAILS(vok_node_add_items(root, all.bytes, all.size, NULL, 0),
          "/a[0]/s: a text ends at its first NUL: use bytes");
    all.size = 0;
    item(&all, VOK_ITEM_TREE, "b");
    item(&all, VOK_ITEM_FAIL, "not good");
    FAILS(vok_node_add_items(root, all.bytes, all.size, NULL, 0), "/b: not good");
    all.size = 0;
    number(&all, VOK_ITEM_END, 1);
    FAILS(vok_node_add_items(root, all.bytes, all.size, NULL, 0), "Failed to add Node items");
    FAILS(vok_node_add_items(NULL, all.bytes, all.size, NULL, 0), "Failed to add Node items");
    FAILS(vok_node_get_items(NULL, &told, &size), "Failed to get Node items");
    CHECK(vok_node_add_items(root, NULL, 5, NULL, -1) == VOK_OK);
    vok_node_free(root);
    return 0;
}

int main(void) {
    if (check_values() != 0 || check_items() != 0 || check_failing() != 0) return 1;
    CHECK(vok_live_nodes() == 0);
    CHECK(vok_live_blocks() == 0);
    puts("good");
    return 0;
}

/* The C interface as a C program uses it. Prints the first thing that is wrong. */
#include "serializer/c/vok_serializer.h"

#include <stdio.h>
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
        if (value[i] != (unsigned char)text[i]) return 0;
    }
    return value[i] == 0;
}

static int fill(vok_node* root) {
    static const uint8_t bytes[] = {0, 1, 255};
    vok_node* sub = NULL;
    CHECK(vok_node_add_string(root, U("s"), U("te\xE4xt")) == VOK_OK);
    CHECK(vok_node_add_string(root, U("s"), NULL) == VOK_OK);
    CHECK(vok_node_add_int(root, U("i"), -7) == VOK_OK);
    CHECK(vok_node_add_double(root, U("d"), 0.1) == VOK_OK);
    CHECK(vok_node_add_bool(root, U("b"), 5) == VOK_OK);
    CHECK(vok_node_add_bytes(root, U("raw"), bytes, 3) == VOK_OK);
    CHECK(vok_node_add_bytes(root, U("raw"), NULL, 3) == VOK_OK);
    CHECK(vok_node_add_ints(root, U("q"), 1, 2, 3, 4) == VOK_OK);
    CHECK(vok_node_add_subnode(root, U("sub"), &sub) == VOK_OK);
    CHECK(vok_node_add_int(sub, U("V1"), 10) == VOK_OK);
    CHECK(vok_node_add_int(sub, U("V3"), 30) == VOK_OK);
    vok_node_free(sub);
    return 0;
}

static int check(const vok_node* root) {
    const vok_char* text = NULL;
    const uint8_t* bytes = NULL;
    int32_t a = -1, b = -1, c = -1, d = -1;
    double real = 0;
    vok_node* sub = NULL;
    CHECK(vok_node_get_string(root, U("s"), 0, &text, &a) == VOK_OK);
    CHECK(is_text(text, "te\xE4xt") && a == 5);
    CHECK(vok_node_get_string(root, U("s"), 1, &text, &a) == VOK_OK && a == 0);
    CHECK(vok_node_get_int(root, U("i"), 0, &a) == VOK_OK && a == -7);
    CHECK(vok_node_get_double(root, U("d"), 0, &real) == VOK_OK && real == 0.1);
    CHECK(vok_node_get_bool(root, U("b"), 0, &a) == VOK_OK && a == 1);
    CHECK(vok_node_get_bytes(root, U("raw"), 0, &bytes, &a) == VOK_OK);
    CHECK(a == 3 && memcmp(bytes, "\0\1\377", 3) == 0);
    CHECK(vok_node_get_bytes(root, U("raw"), 1, &bytes, &a) == VOK_OK && a == 0);
    CHECK(vok_node_get_ints(root, U("q"), 0, &a, &b, &c, &d) == VOK_OK);
    CHECK(a == 1 && b == 2 && c == 3 && d == 4);
    CHECK(vok_node_count(root, U("s"), &a) == VOK_OK && a == 2);
    CHECK(vok_node_count(root, U("none"), &a) == VOK_OK && a == 0);
    a = 77;
    CHECK(vok_node_get_int(root, U("none"), 0, &a) == VOK_NOT_FOUND && a == 77);
    CHECK(vok_node_get_subnode(root, U("sub"), 1, &sub) == VOK_NOT_FOUND && sub == NULL);
    CHECK(vok_node_get_ints(root, U("sub"), 0, &a, &b, &c, &d) == VOK_NOT_FOUND);
    CHECK(a == 10 && b == 2 && c == 30 && d == 4);
    CHECK(vok_node_get_subnode(root, U("sub"), 0, &sub) == VOK_OK);
    CHECK(vok_node_get_int(sub, U("V3"), 0, &a) == VOK_OK && a == 30);
    vok_node_free(sub);
    /* Another type. */
    FAILS(vok_node_get_int(root, U("s"), 0, &a), "Failed to get Node int value");
    FAILS(vok_node_get_string(root, U("i"), 0, &text, &a),
          "node \"i\" with wrong data type: 'String' expected but got 'Integer'\n"
          "vok::Data::GetValStr\nvok::Data::GetStr\n");
    CHECK(vok_set_language(2) == VOK_FAILED &&
          is_text(vok_last_error(), "invalid language id: 2\n"));
    CHECK(vok_set_language(1) == VOK_OK);
    FAILS(vok_node_get_string(root, U("i"), 0, &text, &a),
          "Knoten \"i\" mit falschem Datentyp: 'String' erwartet, aber 'Integer' erhalten\n"
          "vok::Data::GetValStr\nvok::Data::GetStr\n");
    CHECK(vok_set_language(0) == VOK_OK);
    return 0;
}

/* Nothing crashes on a null handle; everything fails, with its own text. */
static int check_null(void) {
    const vok_char* text = NULL;
    const uint8_t* bytes = NULL;
    uint8_t* saved = NULL;
    vok_node* sub = NULL;
    int32_t a = 7;
    double real = 7;
    FAILS(vok_node_add_string(NULL, U("x"), U("y")), "Failed to add Node String value");
    FAILS(vok_node_add_int(NULL, U("x"), 1), "Failed to add Node int value");
    FAILS(vok_node_add_double(NULL, U("x"), 1), "Failed to add Node double value");
    FAILS(vok_node_add_bool(NULL, U("x"), 1), "Failed to add Node bool value");
    FAILS(vok_node_add_bytes(NULL, U("x"), NULL, 0), "Failed to add Node byte array");
    FAILS(vok_node_add_ints(NULL, U("x"), 1, 2, 3, 4), "Failed to add Node quad tuple");
    FAILS(vok_node_add_subnode(NULL, U("x"), &sub), "Failed to add subnode");
    FAILS(vok_node_get_string(NULL, U("x"), 0, &text, &a), "object points to nothing\n");
    CHECK(vok_node_get_int(NULL, U("x"), 0, &a) == VOK_FAILED);
    FAILS(vok_node_get_ints(NULL, U("x"), 0, &a, &a, &a, &a), "Failed to get Node int value");
    FAILS(vok_node_get_double(NULL, U("x"), 0, &real), "Failed to get Node double value");
    FAILS(vok_node_get_bool(NULL, U("x"), 0, &a), "Failed to get Node bool value");
    FAILS(vok_node_get_bytes(NULL, U("x"), 0, &bytes, &a), "Failed to get Node byte array");
    FAILS(vok_node_get_subnode(NULL, U("x"), 0, &sub), "Failed to get subnode");
    FAILS(vok_node_count(NULL, U("x"), &a), "Failed to get subnode count");
    FAILS(vok_node_copy(NULL, &sub), "Failed to make a node");
    CHECK(vok_save_file(NULL, U("x")) == VOK_FAILED);
    FAILS(vok_load_file(NULL, U("x")), "Invalid vok::Data");
    FAILS(vok_save_buffer(NULL, &saved, &a), "Invalid vok::Data");
    /* Outputs are as they were. */
    CHECK(text == NULL && sub == NULL && bytes == NULL);
    CHECK(saved == NULL && a == 7 && real == 7);
    return 0;
}

int main(void) {
    vok_node* root = NULL;
    vok_node* loaded = NULL;
    uint8_t* bytes = NULL;
    int32_t size = 0;
    CHECK(vok_serializer_version() == VOK_SERIALIZER_VERSION);
    vok_set_banner(0);
    CHECK(vok_set_banner(0) == 0);
    CHECK(is_text(vok_last_error(), ""));
    CHECK(vok_root_create(&root) == VOK_OK);
    if (fill(root) != 0 || check(root) != 0) return 1;
    CHECK(vok_save_buffer(root, &bytes, &size) == VOK_OK);
    CHECK(size > 30 && memcmp(bytes, "DGraphBin\1\2", 12) == 0);
    CHECK(vok_node_create(&loaded) == VOK_OK && vok_load_buffer(loaded, bytes, size) == VOK_OK);
    if (check(loaded) != 0) return 1;
    CHECK(vok_save_file(root, U("interface_test.xml")) == VOK_OK);
    CHECK(vok_load_file(loaded, U("interface_test.xml")) == VOK_OK);
    remove("interface_test.xml");
    FAILS(vok_load_buffer(loaded, bytes, 8), "Failed to read data from file.");
    CHECK(vok_load_buffer(loaded, NULL, 0) == VOK_FAILED);
    CHECK(vok_load_file(loaded, U("does/not/exist")) == VOK_FAILED);
    CHECK(vok_load_file(loaded, NULL) == VOK_FAILED);
    if (check(loaded) != 0) return 1;
    vok_node_free(loaded);

    FAILS(vok_save_file(root, NULL), "Failed to write data to file");
    vok_bytes_free(bytes);
    vok_node_free(root);
    vok_node_free(NULL);

    CHECK(vok_node_create(&root) == VOK_OK && vok_live_bytes() == 0);
    CHECK(vok_node_add_bytes(root, U("x"), NULL, -1) == VOK_FAILED);
    CHECK(vok_node_add_int(root, U("x"), 1) == VOK_OK && vok_live_bytes() > 0);
    /* A copy keeps the tree, and designates the same node of it. */
    CHECK(vok_node_copy(root, &loaded) == VOK_OK && vok_live_nodes() == 2);
    vok_node_free(root);
    CHECK(vok_node_add_int(loaded, U("x"), 2) == VOK_OK);
    CHECK(vok_node_count(loaded, U("x"), &size) == VOK_OK && size == 2);
    vok_node_free(loaded);
    if (check_null() != 0) return 1;
    CHECK(vok_live_nodes() == 0);
    CHECK(vok_live_blocks() == 0);
    puts("good");
    return 0;
}

/* SPDX-License-Identifier: MIT */
/* The C interface as a C program uses it. Prints the first thing that is wrong. */
#include "serializer/c/vok_serializer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#ifndef _WIN32
#include <pthread.h>
#endif

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

/* Two of each name. */
static int fill(vok_node* root) {
    static const uint8_t bytes[] = {0, 1, 255};
    int32_t i;
    for (i = 0; i < 2; ++i) {
        vok_node* sub = NULL;
        CHECK(vok_node_add_string(root, U("s"), i == 0 ? U("te\xE4xt") : NULL) == VOK_OK);
        CHECK(vok_node_add_int(root, U("i"), i - 7) == VOK_OK);
        CHECK(vok_node_add_double(root, U("d"), i + 0.1) == VOK_OK);
        CHECK(vok_node_add_bool(root, U("b"), 5 * (1 - i)) == VOK_OK);
        CHECK(vok_node_add_bytes(root, U("raw"), i == 0 ? bytes : NULL, 3) == VOK_OK);
        CHECK(vok_node_add_ints(root, U("q"), i, 2, 3, 4) == VOK_OK);
        CHECK(vok_node_add_subnode(root, U("sub"), &sub) == VOK_OK);
        CHECK(vok_node_add_int(sub, U("V1"), 10 + i) == VOK_OK);
        CHECK(vok_node_add_int(sub, U("V3"), 30) == VOK_OK);
        vok_node_free(sub);
    }
    return 0;
}

static int check(const vok_node* root) {
    const vok_char* text = NULL;
    const uint8_t* bytes = NULL;
    int32_t a = -1, b = -1, c = -1, d = -1, length = -1, number = -1, flag = -1, size = -1,
            own = -1, i;
    double real = 0;
    vok_node* sub = NULL;
    for (i = 0; i < 3; ++i) {
        const vok_status found = i < 2 ? VOK_OK : VOK_NOT_FOUND;
        /* There is no third one: outputs keep what the second gave. */
        const int32_t k = i < 2 ? i : 1;
        CHECK(vok_node_get_string(root, U("s"), i, &text, &length) == found);
        CHECK(is_text(text, k == 0 ? "te\xE4xt" : "") && length == 5 * (1 - k));
        CHECK(vok_node_get_int(root, U("i"), i, &number) == found && number == k - 7);
        CHECK(vok_node_get_double(root, U("d"), i, &real) == found && real == k + 0.1);
        CHECK(vok_node_get_bool(root, U("b"), i, &flag) == found && flag == 1 - k);
        CHECK(vok_node_get_bytes(root, U("raw"), i, &bytes, &size) == found);
        CHECK(size == 3 * (1 - k) && (k == 1 ? bytes == NULL : memcmp(bytes, "\0\1\377", 3) == 0));
        CHECK(vok_node_get_ints(root, U("q"), i, &a, &b, &c, &d) == found);
        CHECK(a == k && b == 2 && c == 3 && d == 4);
        CHECK(vok_node_get_subnode(root, U("sub"), i, &sub) == found);
        if (found == VOK_NOT_FOUND) continue;
        CHECK(vok_node_get_int(sub, U("V1"), 0, &own) == VOK_OK && own == 10 + i);
        vok_node_free(sub);
        sub = NULL;
    }
    CHECK(sub == NULL);
    CHECK(vok_node_get_int(root, U("none"), 0, &number) == VOK_NOT_FOUND && number == -6);
    /* Those of four that there are. */
    CHECK(vok_node_get_ints(root, U("sub"), 0, &a, &b, &c, &d) == VOK_NOT_FOUND);
    CHECK(a == 10 && b == 2 && c == 30 && d == 4);
    CHECK(vok_node_count(root, U("s"), &a) == VOK_OK && a == 2);
    CHECK(vok_node_count(root, U("none"), &a) == VOK_OK && a == 0);
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

/* Whether value begins with text. */
static int begins(const vok_char* value, const char* text) {
    size_t i = 0;
    while (text[i] != 0 && value[i] == (unsigned char)text[i]) ++i;
    return text[i] == 0;
}

/* The reason of a failure, and where in the document it lies. */
static int check_reasons(void) {
    static const struct {
        const char* bytes;
        int32_t size;
        const char* detail;
    } rows[] = {
        {"no document", 11, "No binary DGraph buffer!\nat byte 11\nvok::Dgraph_LoadDGraph"},
        {"DGraphBin\1\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
         "\7\0\0\0Root[0]\0\1\0\0\0\xFF\xFF\xFF\xFF",
         50,
         "Dgraph_LoadDGraph: Input stream is corrupted! Negative length read.\n"
         "at byte 50, in /\nvok::Dgraph_LoadDGraph"},
    };
    vok_node* root = NULL;
    size_t i;
    CHECK(vok_root_create(&root) == VOK_OK);
    for (i = 0; i < sizeof(rows) / sizeof(rows[0]); ++i) {
        FAILS(vok_load_buffer(root, (const uint8_t*)rows[i].bytes, rows[i].size),
              "Failed to read data from file.");
        CHECK(begins(vok_last_error_detail(), rows[i].detail));
    }
    /* What says it all has none. */
    FAILS(vok_load_buffer(NULL, NULL, 0), "Invalid vok::Data");
    CHECK(is_text(vok_last_error_detail(), ""));
    vok_node_free(root);
    return 0;
}

#ifndef _WIN32
static void* fail_in_thread(void* good) {
    vok_node* node = NULL;
    if (!is_text(vok_last_error(), "") || !is_text(vok_last_error_detail(), "")) return NULL;
    if (vok_node_copy(NULL, &node) != VOK_FAILED) return NULL;
    return is_text(vok_last_error(), "Failed to make a node") ? good : NULL;
}

/* A request to end the thread waits until a call is over. */
static void* cancelled_thread(void* root) {
    pthread_cancel(pthread_self());
    if (vok_save_file((vok_node*)root, U("cancelled.xml")) != VOK_OK) return NULL;
    if (vok_load_file((vok_node*)root, U("cancelled.xml")) != VOK_OK) return NULL;
    pthread_testcancel();
    return NULL;
}

static int check_threads(void) {
    pthread_t thread;
    void* result = NULL;
    char good = 1;
    vok_node* root = NULL;
    FAILS(vok_node_add_int(NULL, U("x"), 1), "Failed to add Node int value");
    CHECK(pthread_create(&thread, NULL, fail_in_thread, &good) == 0);
    CHECK(pthread_join(thread, &result) == 0 && result == &good);
    CHECK(is_text(vok_last_error(), "Failed to add Node int value"));
    CHECK(is_text(vok_last_error_detail(), "object points to nothing\n"));

    CHECK(vok_root_create(&root) == VOK_OK && vok_node_add_int(root, U("i"), 1) == VOK_OK);
    CHECK(pthread_create(&thread, NULL, cancelled_thread, root) == 0);
    CHECK(pthread_join(thread, &result) == 0 && result == PTHREAD_CANCELED);
    remove("cancelled.xml");
    vok_node_free(root);
    return 0;
}
#endif

/* Memory that runs out: the C library's own functions refuse. Where sanitizers bring theirs the
 * build says that there are none of ours. */
#if !defined(OWN_MALLOC) && defined(__GLIBC__)
#define OWN_MALLOC 1
#endif

#if OWN_MALLOC
extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* block, size_t size);

/* Requests that are still granted; all of them below 0. */
static long granted = -1;

static int refuses(void) {
    if (granted < 0) return 0;
    if (granted == 0) return 1;
    --granted;
    return 0;
}
void* malloc(size_t size) {
    return refuses() ? NULL : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    return refuses() ? NULL : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
    return refuses() ? NULL : __libc_realloc(block, size);
}

/* What fails does so with its own text; returns how many operations failed, -1 for a wrong text. */
static int work(const uint8_t* document, int32_t size) {
    static const vok_char long_text[300] = {'x', 0xE4, 'x', 0xE4, 'x'};
    vok_node* root = NULL;
    vok_node* sub = NULL;
    uint8_t* bytes = NULL;
    const vok_char* text = NULL;
    const uint8_t* raw = NULL;
    int32_t length = 0;
    int failed = 0;
    vok_char name[300];
    size_t i;
    for (i = 0; i < 299; ++i) name[i] = (vok_char)(i % 2 == 0 ? 'n' : 0xE4);
    name[299] = 0;
#define TRY(call, text)                                      \
    do {                                                     \
        if ((call) == VOK_FAILED) {                          \
            ++failed;                                        \
            if (!is_text(vok_last_error(), text)) return -1; \
        }                                                    \
    } while (0)
    TRY(vok_root_create(&root), "Failed to make a node");
    if (root == NULL) return failed;
    TRY(vok_node_add_string(root, name, long_text), "Failed to add Node String value");
    TRY(vok_node_add_bytes(root, name, document, size), "Failed to add Node byte array");
    TRY(vok_node_add_ints(root, name, 1, 2, 3, 4), "Failed to add Node quad tuple");
    TRY(vok_node_add_subnode(root, name, &sub), "Failed to add subnode");
    TRY(vok_node_get_string(root, U("s"), 0, &text, &length), "Failed to get Node String value");
    TRY(vok_node_get_bytes(root, name, 1, &raw, &length), "Failed to get Node byte array");
    TRY(vok_node_count(root, name, &length), "Failed to get subnode count");
    TRY(vok_save_buffer(root, &bytes, &length), "Failed to write data to buffer");
    TRY(vok_save_file(root, U("memory.xml")), "Failed to write data to file");
    TRY(vok_load_buffer(root, document, size), "Failed to read data from file.");
    vok_bytes_free(bytes);
    vok_node_free(sub);
    vok_node_free(root);
    return failed;
}

static void* first_failure(void* result) {
    vok_node* node = NULL;
    granted = 0;
    *(int*)result = vok_node_create(&node) == VOK_FAILED &&
                    vok_load_file(NULL, NULL) == VOK_FAILED &&
                    is_text(vok_last_error(), "Invalid vok::Data");
    granted = -1;
    return NULL;
}

static int check_memory(void) {
    vok_node* root = NULL;
    uint8_t* document = NULL;
    int32_t size = 0;
    long most = 0;
    int failed = 1, result = 0;
    pthread_t thread;
    CHECK(vok_root_create(&root) == VOK_OK && fill(root) == 0);
    CHECK(vok_save_buffer(root, &document, &size) == VOK_OK);
    vok_node_free(root);
    while (failed != 0) {
        CHECK(most < 10000);
        granted = most++;
        failed = work(document, size);
        granted = -1;
        CHECK(failed >= 0 && vok_live_nodes() == 0);
    }
    CHECK(most > 20);
    remove("memory.xml");
    /* Not even in a thread that has never had any. */
    CHECK(pthread_create(&thread, NULL, first_failure, &result) == 0);
    CHECK(pthread_join(thread, NULL) == 0 && result == 1);
    vok_bytes_free(document);
    return 0;
}
#endif

/* A document on its way, in a buffer; fails after some calls. */
typedef struct {
    uint8_t bytes[4096];
    int32_t size, at, calls;
} pipe;

static int32_t put(void* context, const uint8_t* bytes, int32_t size) {
    pipe* p = (pipe*)context;
    if (p->calls-- == 0 || p->size + size > (int32_t)sizeof(p->bytes)) return 1;
    memcpy(p->bytes + p->size, bytes, (size_t)size);
    p->size += size;
    return 0;
}

static int32_t take(void* context, uint8_t* bytes, int32_t size) {
    pipe* p = (pipe*)context;
    if (p->calls-- == 0) return -1;
    if (size > 100) size = 100;
    if (size > p->size - p->at) size = p->size - p->at;
    memcpy(bytes, p->bytes + p->at, (size_t)size);
    p->at += size;
    return size;
}

static int streams(vok_node* root) {
    static const int32_t forms[] = {VOK_DGRAPH, VOK_XML, VOK_DGRAPH | VOK_ZLIB, VOK_XML | VOK_GZIP};
    pipe p;
    size_t i;
    for (i = 0; i < sizeof(forms) / sizeof(forms[0]); ++i) {
        vok_node* loaded = NULL;
        CHECK(vok_node_create(&loaded) == VOK_OK);
        memset(&p, 0, sizeof(p));
        p.calls = -1;
        CHECK(vok_save_stream(root, forms[i], put, &p) == VOK_OK);
        CHECK(vok_load_stream(loaded, take, &p) == VOK_OK);
        if (check(loaded) != 0) return 1;
        p.at = 0;
        p.calls = 1;
        FAILS(vok_load_stream(loaded, take, &p), "Failed to read data from stream");
        if (check(loaded) != 0) return 1;
        p.calls = 0;
        FAILS(vok_save_stream(root, forms[i], put, &p), "Failed to write data to stream");
        vok_node_free(loaded);
    }
    FAILS(vok_save_stream(NULL, VOK_XML, put, &p), "Invalid vok::Data");
    FAILS(vok_save_stream(root, VOK_XML, NULL, &p), "Failed to write data to stream");
    FAILS(vok_load_stream(NULL, take, &p), "Invalid vok::Data");
    return 0;
}

int main(void) {
    vok_node* root = NULL;
    vok_node* loaded = NULL;
    uint8_t* bytes = NULL;
    int32_t size = 0;
    CHECK(vok_serializer_version() == VOK_SERIALIZER_VERSION);
    /* Off from when the library is loaded. */
    CHECK(vok_set_banner(1) == 0 && vok_set_banner(0) == 1);
    CHECK(is_text(vok_last_error(), ""));
    CHECK(vok_root_create(&root) == VOK_OK);
    if (fill(root) != 0 || check(root) != 0 || streams(root) != 0) return 1;
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
    if (check_null() != 0 || check_reasons() != 0) return 1;
#ifndef _WIN32
    if (check_threads() != 0) return 1;
#endif
#if OWN_MALLOC
    if (check_memory() != 0) return 1;
#endif
    CHECK(vok_live_nodes() == 0);
    CHECK(vok_live_blocks() == 0);
    puts("good");
    return 0;
}

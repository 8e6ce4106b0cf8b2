/* SPDX-License-Identifier: MIT */
/* Memory that runs out anywhere: the C library's own functions refuse. Where sanitizers bring
 * theirs the build says that there are none of ours. */
#include "tests/c_tree/support.h"

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

static int64_t swallow(void* context, const void* bytes, size_t size) {
    (void)context;
    (void)bytes;
    return (int64_t)size;
}

/* Some of everything; returns how many calls failed, -1 where the first one does not say that
 * there is no memory, or one has no text. */
static int work(const uint8_t* document, size_t size) {
    static const int32_t FORMS[] = {VOK_TREE_XML, VOK_TREE_DGRAPH, VOK_TREE_JSON, VOK_TREE_DUMP};
    vok_tree_node *root = NULL, *n = NULL;
    vok_tree_iterator* each = NULL;
    vok_tree_nodes* nodes = NULL;
    vok_tree_query* query = NULL;
    vok_tree_reader* reader = NULL;
    vok_tree_records* records = NULL;
    vok_tree_writer* writer = NULL;
    vok_tree_stream stream;
    char path[64];
    uint8_t hash[16];
    size_t k;
    int failed = 0;
    memset(&stream, 0, sizeof(stream));
    stream.write = swallow;
#define TRY(call)                                               \
    do {                                                        \
        const vok_tree_status status = (call);                                        \
        if (status < 0) {                                                             \
            if (failed++ == 0 && status != VOK_TREE_NO_MEMORY) return -1;             \
            if (vok_tree_last_error()->text[0] == 0) return -1;                       \
        }                                                                             \
    } while (0)
    TRY(vok_tree_new(&root));
    TRY(vok_tree_new(&n));
    if (root != NULL && n != NULL) {
        TRY(vok_tree_create(root, "/a[2]/b[0][@c=\"d\"]", NULL, n, NULL));
        TRY(vok_tree_add_text(root, "text", (const char*)document, size, NULL));
        TRY(vok_tree_add_bytes(root, "bytes", document, size, NULL));
        TRY(vok_tree_iterate(root, NULL, &each));
        TRY(vok_tree_select(root, "//*", NULL, &nodes));
        TRY(vok_tree_query_new("//b", &query));
        if (query != NULL) TRY(vok_tree_query_first(query, root, NULL, n));
        TRY(vok_tree_path(root, path, sizeof(path), NULL));
        TRY(vok_tree_load_memory(n, document, size, VOK_TREE_ANY, NULL, NULL));
        TRY(vok_tree_copy(n, root, 0, NULL));
        TRY(vok_tree_clone(root, n));
        TRY(vok_tree_hash(root, hash));
        for (k = 0; k < COUNT(FORMS); ++k) {
            uint8_t* bytes = NULL;
            size_t length = 0;
            TRY(vok_tree_save_memory(root, FORMS[k] | VOK_TREE_GZIP, &bytes, &length));
            if (bytes != NULL) TRY(vok_tree_load_memory(n, bytes, length, FORMS[k], NULL, NULL));
            vok_tree_bytes_free(bytes);
        }
        TRY(vok_tree_reader_open_memory(document, size, NULL, &reader));
        if (reader != NULL) {
            TRY(vok_tree_reader_next(reader));
            TRY(vok_tree_reader_take(reader, n));
        }
        TRY(vok_tree_records_open_memory(document, size, "//id", NULL, &records));
        if (records != NULL) TRY(vok_tree_records_next(records, n));
        TRY(vok_tree_writer_open_stream(&stream, VOK_TREE_XML | VOK_TREE_GZIP, &writer));
        if (writer != NULL) {
            TRY(vok_tree_writer_add_node(writer, root));
            TRY(vok_tree_writer_finish(writer));
        }
    }
    vok_tree_writer_free(writer);
    vok_tree_records_free(records);
    vok_tree_reader_free(reader);
    vok_tree_query_free(query);
    vok_tree_nodes_free(nodes);
    vok_tree_iterator_free(each);
    vok_tree_free(n);
    vok_tree_free(root);
    return failed;
}

int check_memory(void) {
    static const char DOCUMENT[] =
        "<orders><order state='open'><id>1</id></order><id>2</id></orders>";
    const int64_t blocks = vok_tree_live_blocks(), handles = vok_tree_live_handles();
    long most = 0;
    int failed = 1;
    while (failed != 0) {
        CHECK(most < 10000);
        granted = most++;
        failed = work((const uint8_t*)DOCUMENT, sizeof(DOCUMENT) - 1);
        granted = -1;
        CHECK(failed >= 0 && vok_tree_live_handles() == handles);
        CHECK(vok_tree_live_blocks() == blocks);
    }
    CHECK(most > 50);
    return 0;
}
#else
int check_memory(void) {
    return 0;
}
#endif

/* SPDX-License-Identifier: MIT */
/* Documents, streams that fail or lie, records. */
#include "tests/c_tree/support.h"

/* ---- a stream over memory that can be told to fail ----------------------- */

typedef struct memory {
    unsigned char bytes[1 << 16];
    size_t size;
    size_t at;
    size_t piece;    /* at most so many bytes a call; 0 for all */
    int calls;       /* so far */
    int fails_at;    /* which call fails; below 0 none */
    int64_t failure; /* what that one returns */
} memory;

static int fails(memory* m) {
    return m->calls++ == m->fails_at;
}

static size_t part(const memory* m, size_t size) {
    return m->piece != 0 && size > m->piece ? m->piece : size;
}

static int64_t take(void* context, void* bytes, size_t size) {
    memory* m = (memory*)context;
    size_t n = part(m, size);
    if (fails(m)) return m->failure > 0 ? (int64_t)size + m->failure : m->failure;
    if (n > m->size - m->at) n = m->size - m->at;
    memcpy(bytes, m->bytes + m->at, n);
    m->at += n;
    return (int64_t)n;
}

static int64_t put(void* context, const void* bytes, size_t size) {
    memory* m = (memory*)context;
    size_t n = part(m, size);
    if (fails(m)) return m->failure > 0 ? (int64_t)size + m->failure : m->failure;
    if (n > sizeof(m->bytes) - m->at) return -1;
    memcpy(m->bytes + m->at, bytes, n);
    m->at += n;
    if (m->at > m->size) m->size = m->at;
    return (int64_t)n;
}

static int32_t go(void* context, int64_t position) {
    memory* m = (memory*)context;
    if (fails(m) || position < 0 || (size_t)position > m->size) return -1;
    m->at = (size_t)position;
    return 0;
}

static int64_t where(void* context) {
    memory* m = (memory*)context;
    return fails(m) ? m->failure : (int64_t)m->at;
}

static int64_t how_many(void* context) {
    memory* m = (memory*)context;
    return fails(m) ? m->failure : (int64_t)m->size;
}

static memory g_memory;

static vok_tree_stream stream_of(memory* m, int can_seek) {
    vok_tree_stream s;
    memset(&s, 0, sizeof(s));
    s.context = m;
    s.read = take;
    s.write = put;
    if (can_seek) {
        s.seek = go;
        s.tell = where;
        s.size = how_many;
    }
    return s;
}

static void rewind_memory(memory* m, int keep) {
    if (!keep) m->size = 0;
    m->at = 0;
    m->calls = 0;
    m->fails_at = -1;
}

/* ---- documents ----------------------------------------------------------- */

static const int32_t FORMS[] = {
    VOK_TREE_XML,
    VOK_TREE_XML | VOK_TREE_NO_DECLARATION,
    VOK_TREE_XML | VOK_TREE_GZIP,
    VOK_TREE_DGRAPH,
    VOK_TREE_DGRAPH | VOK_TREE_ZLIB,
    VOK_TREE_JSON,
    VOK_TREE_JSON | VOK_TREE_COMPACT | VOK_TREE_GZIP,
    VOK_TREE_DUMP,
    VOK_TREE_DUMP | VOK_TREE_ZLIB,
};

static int check_documents(vok_tree_node* root) {
    static const char PATH[] = "interface_test_tree";
    vok_tree_node* loaded = NULL;
    vok_tree_report report;
    uint8_t* bytes = NULL;
    size_t size = 0, k;
    int seeks;
    int32_t equal = 1;
    OK(vok_tree_new(&loaded));
    for (k = 0; k < COUNT(FORMS); ++k) {
        const int32_t form = FORMS[k], kind = form & 0xF, plain = (form & 0x30) == 0;
        OK(vok_tree_save_memory(root, form, &bytes, &size));
        OK(vok_tree_load_memory(loaded, bytes, size, VOK_TREE_ANY, NULL, &report));
        CHECK(same_tree(root, loaded) == 0 && report.nodes >= vok_tree_node_count(loaded));
        OK(vok_tree_load_memory(loaded, bytes, size, kind, NULL, NULL));
        CHECK(same_tree(root, loaded) == 0);
        /* The same bytes to a stream, that can seek or not, in pieces; and back. */
        for (seeks = 0; seeks < 2; ++seeks) {
            vok_tree_stream s = stream_of(&g_memory, seeks);
            rewind_memory(&g_memory, 0);
            g_memory.piece = 7;
            OK(vok_tree_save_stream(root, &s, form));
            CHECK(g_memory.size == size && memcmp(g_memory.bytes, bytes, size) == 0);
            OK(put(&g_memory, "rest", 4) == 4 ? VOK_TREE_OK : VOK_TREE_FAILED);
            rewind_memory(&g_memory, 1);
            OK(vok_tree_load_stream(loaded, &s, VOK_TREE_ANY, NULL, &report));
            CHECK(same_tree(root, loaded) == 0);
            /* What can seek is left behind the document: JSON takes blanks along. */
            if (seeks && kind != VOK_TREE_XML) CHECK(g_memory.at == size);
            if (seeks && plain && kind == VOK_TREE_DUMP) CHECK(report.bytes_left == 4);
        }
        OK(vok_tree_save_file(root, PATH, form));
        OK(vok_tree_load_file(loaded, PATH, VOK_TREE_ANY, NULL, NULL));
        CHECK(same_tree(root, loaded) == 0);
        vok_tree_bytes_free(bytes);
    }
    OK(vok_tree_save_file(root, PATH, VOK_TREE_XML | VOK_TREE_ZIP));
    OK(vok_tree_load_file(loaded, PATH, VOK_TREE_ANY, NULL, NULL));
    CHECK(same_tree(root, loaded) == 0);
    remove(PATH);

    /* Where it lies; what is changed is not the file's. */
    OK(vok_tree_save_file(root, PATH, VOK_TREE_DUMP | VOK_TREE_ATTACHABLE));
    for (int checked = 0; checked < 2; ++checked) {
        OK(vok_tree_attach_file(loaded, PATH, checked, NULL, &report));
        CHECK(same_tree(root, loaded) == 0);
        CHECK(report.nodes != 0 && report.bytes_left == 0);
        OK(vok_tree_set_attribute(loaded, "changed", "yes"));
        OK(vok_tree_is_equal(root, loaded, &equal));
        CHECK(equal == 0);
    }
    /* A file is not replaced everywhere while it is attached. */
    OK(vok_tree_load_memory(loaded, "<a/>", 4, 0, NULL, NULL));
    CHECK(vok_tree_attach_file(loaded, "does/not/exist", 1, NULL, &report) == VOK_TREE_SYSTEM);
    OK(vok_tree_save_file(root, PATH, VOK_TREE_JSON));
    CHECK(vok_tree_attach_file(loaded, PATH, 0, NULL, &report) == VOK_TREE_FAILED);
    remove(PATH);

    /* Forms that are none. */
    CHECK(vok_tree_save_memory(root, VOK_TREE_ANY, &bytes, &size) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_save_memory(root, 5, &bytes, &size) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_save_memory(root, VOK_TREE_XML | VOK_TREE_ZIP, &bytes, &size) ==
          VOK_TREE_ARGUMENT);
    CHECK(vok_tree_save_memory(root, VOK_TREE_XML | 0x8000, &bytes, &size) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_save_file(root, "", VOK_TREE_XML) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_load_memory(loaded, "<a/>", 4, -1, NULL, NULL) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_load_memory(loaded, "<a/>", 4, VOK_TREE_ZLIB, NULL, NULL) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_load_file(loaded, "does/not/exist", 0, NULL, NULL) == VOK_TREE_SYSTEM);

    /* Versions: one that is told, and the one that is given. */
    OK(vok_tree_load_memory(loaded, "<a/>", 4, 0, NULL, NULL));
    OK(vok_tree_set_version(loaded, 1, 1, 2));
    OK(vok_tree_save_memory(loaded, VOK_TREE_DGRAPH, &bytes, &size));
    CHECK(memcmp(bytes, "DGraphBin\1\1\2", 12) == 0);
    vok_tree_bytes_free(bytes);
    OK(vok_tree_set_user_tag(loaded, ""));
    OK(vok_tree_save_memory(loaded, VOK_TREE_DGRAPH, &bytes, &size));
    CHECK(memcmp(bytes, "DGraphBin\1\3\0", 12) == 0);
    vok_tree_bytes_free(bytes);
    OK(vok_tree_set_version(loaded, 9, 0, 0));
    CHECK(vok_tree_save_memory(loaded, VOK_TREE_DGRAPH, &bytes, &size) == VOK_TREE_FAILED);
    /* What is in the place of a file stays when it fails, or is not finished. */
    OK(vok_tree_save_file(root, PATH, VOK_TREE_XML));
    CHECK(vok_tree_save_file(loaded, PATH, VOK_TREE_DGRAPH) == VOK_TREE_FAILED);
    {
        vok_tree_writer* writer = NULL;
        OK(vok_tree_writer_open_file(PATH, VOK_TREE_XML, &writer));
        OK(vok_tree_writer_begin(writer, "other", VOK_TREE_UNKNOWN));
        vok_tree_writer_free(writer);
    }
    OK(vok_tree_load_file(loaded, PATH, VOK_TREE_ANY, NULL, NULL));
    CHECK(same_tree(root, loaded) == 0);
    remove(PATH);

    /* Where a document is faulty; the tree stays. */
    {
        static const char FAULTY[] = "<a>\n <b>1</b>\n <c d=></c></a>";
        const vok_tree_error* e;
        CHECK(vok_tree_load_memory(root, FAULTY, sizeof(FAULTY) - 1, 0, NULL, &report) ==
              VOK_TREE_FAILED);
        e = vok_tree_last_error();
        CHECK(e->code == VOK_TREE_FAILED && e->line == 3 && e->column == report.column);
        CHECK(e->offset == report.offset && e->offset > 14 && is(e->path, report.path));
        CHECK(vok_tree_type(NULL, NULL) == VOK_TREE_ARGUMENT);
        CHECK(e->line == 0 && e->offset == 0 && vok_tree_last_error()->path[0] == 0);
        vok_tree_clear_error();
        CHECK(vok_tree_last_error()->code == VOK_TREE_OK && is(vok_tree_last_error()->text, ""));
    }
    {
        vok_tree_limits limits = {{0}};
        limits.at_most[VOK_TREE_LIMIT_DEPTH] = 1;
        CHECK(vok_tree_load_memory(loaded, "<a><b/></a>", 11, 0, &limits, NULL) == VOK_TREE_LIMIT);
        OK(vok_tree_load_memory(loaded, "<a><b> </b>x<!-- --></a>", 24, 0, NULL, &report));
        CHECK(report.comments == 1 && report.dropped_texts == 1);
        OK(vok_tree_load_memory(loaded, "<a><b> </b></a>", 15, VOK_TREE_XML | VOK_TREE_SKIP_BLANKS,
                                NULL, NULL));
        OK(vok_tree_first(loaded, "/b", NULL, loaded));
        {
            int32_t type = -1;
            OK(vok_tree_type(loaded, &type));
            CHECK(type == VOK_TREE_TYPE_EMPTY);
        }
    }
    vok_tree_free(loaded);
    return 0;
}

/* ---- streams that fail or lie -------------------------------------------- */

static int check_failing_streams(vok_tree_node* root) {
    static const int64_t FAILURES[] = {-1, INT64_MIN, 1, INT64_MAX / 2 + 2};
    vok_tree_node* loaded = NULL;
    size_t k, f;
    int call, seeks, saving;
    OK(vok_tree_new(&loaded));
    for (k = 0; k < COUNT(FORMS); ++k) {
        for (f = 0; f < COUNT(FAILURES) * 4; ++f) {
            vok_tree_stream s;
            seeks = f & 1;
            saving = f & 2;
            s = stream_of(&g_memory, seeks);
            g_memory.piece = 512;
            if (!saving) {
                rewind_memory(&g_memory, 0);
                OK(vok_tree_save_stream(root, &s, FORMS[k]));
            }
            /* Each call in turn fails, until there are no more of them. */
            for (call = 0;; ++call) {
                vok_tree_status status;
                rewind_memory(&g_memory, !saving);
                g_memory.fails_at = call;
                g_memory.failure = FAILURES[f / 4];
                status = saving ? vok_tree_save_stream(root, &s, FORMS[k])
                                : vok_tree_load_stream(loaded, &s, VOK_TREE_ANY, NULL, NULL);
                if (g_memory.calls <= call) {
                    OK(status);
                    break;
                }
                /* A stream that cannot tell its position or size can still be read. */
                CHECK(status == VOK_TREE_STREAM || (seeks && status == VOK_TREE_OK));
                CHECK(call < 100);
            }
            CHECK(call > 0);
        }
    }
    {
        /* Without the function that is needed. */
        vok_tree_stream s = stream_of(&g_memory, 0);
        s.read = NULL;
        s.write = NULL;
        CHECK(vok_tree_load_stream(loaded, &s, 0, NULL, NULL) == VOK_TREE_ARGUMENT);
        CHECK(vok_tree_save_stream(root, &s, VOK_TREE_XML) == VOK_TREE_ARGUMENT);
    }
    vok_tree_free(loaded);
    return 0;
}

/* ---- records ------------------------------------------------------------- */

static const char ORDERS[] =
    "<orders><order state=\"open\"><id dt:dt=\"i4\">1</id></order>"
    "<order state=\"done\"><id dt:dt=\"i4\">2</id></order></orders>";

static int check_reading(void) {
    char events[256] = "", event[96], path[64];
    vok_tree_reader* reader = NULL;
    vok_tree_record record;
    vok_tree_record_attribute attribute;
    vok_tree_report report;
    vok_tree_node* node = NULL;
    size_t length = 0;
    OK(vok_tree_new(&node));
    OK(vok_tree_reader_open_memory(ORDERS, sizeof(ORDERS) - 1, NULL, &reader));
    CHECK(vok_tree_reader_record(reader, &record) == VOK_TREE_NONE);
    while (vok_tree_reader_next(reader) == VOK_TREE_OK) {
        OK(vok_tree_reader_record(reader, &record));
        OK(vok_tree_reader_path(reader, path, sizeof(path), &length));
        sprintf(event, "%u%.*s%d", (unsigned)record.depth, (int)record.name_size, record.name,
                (int)record.index);
        strcat(events, event);
        if (record.value.type == VOK_TREE_TYPE_INTEGER) {
            sprintf(event, "=%d@%s", (int)record.value.as.integer, path);
            strcat(events, event);
        }
        strcat(events, " ");
        if (vok_tree_reader_attribute(reader, 0, &attribute) != VOK_TREE_OK) continue;
        CHECK(vok_tree_reader_attribute(reader, 1, &attribute) == VOK_TREE_NONE);
        CHECK(record.attributes == 1 && attribute.name_size == 5 && attribute.value_size == 4);
        /* The second one is taken whole. */
        if (memcmp(attribute.value, "done", 4) == 0) OK(vok_tree_reader_take(reader, node));
    }
    CHECK(is(events, "0orders0 1order0 2id0=1@/order[0]/id[0] 1order1 "));
    CHECK(vok_tree_reader_next(reader) == VOK_TREE_NONE);
    OK(vok_tree_first(node, "/id", NULL, node));
    OK(vok_tree_reader_report(reader, &report));
    CHECK(report.offset == sizeof(ORDERS) - 1 && report.nodes == 5);
    vok_tree_reader_free(reader);

    /* Skipping, and a fault on the way. */
    OK(vok_tree_reader_open_memory(ORDERS, sizeof(ORDERS) - 10, NULL, &reader));
    OK(vok_tree_reader_next(reader));
    OK(vok_tree_reader_skip(reader));
    CHECK(vok_tree_reader_next(reader) == VOK_TREE_FAILED);
    CHECK(vok_tree_last_error()->line == 1 && vok_tree_last_error()->offset > 80);
    CHECK(vok_tree_reader_next(reader) == VOK_TREE_ARGUMENT);
    CHECK(vok_tree_reader_take(reader, node) == VOK_TREE_NONE);
    OK(vok_tree_reader_report(reader, &report));
    vok_tree_reader_free(reader);
    CHECK(vok_tree_reader_open_file("does/not/exist", NULL, &reader) == VOK_TREE_SYSTEM);

    /* A tree that is used again: cursors on what it was do no harm. */
    {
        vok_tree_node* former = NULL;
        const char* name = NULL;
        int32_t id = 0;
        OK(vok_tree_reader_open_memory(ORDERS, sizeof(ORDERS) - 1, NULL, &reader));
        OK(vok_tree_reader_next(reader));
        OK(vok_tree_reader_next(reader));
        OK(vok_tree_reader_take(reader, node));
        OK(vok_tree_duplicate(node, &former));
        OK(vok_tree_first(former, "/id", NULL, former));
        OK(vok_tree_reader_next(reader));
        OK(vok_tree_reader_take(reader, node));
        if (vok_tree_get_int(former, &id) == VOK_TREE_OK) CHECK(id == 2);
        if (vok_tree_name(former, &name, NULL) == VOK_TREE_OK) CHECK(is(name, "id"));
        (void)vok_tree_set_int(former, 3);
        vok_tree_free(node);
        OK(vok_tree_to_root(former));
        node = former;
        vok_tree_reader_free(reader);
    }

    /* Parts by a path, from a stream that at last fails. */
    {
        vok_tree_stream s = stream_of(&g_memory, 0);
        vok_tree_records* records = NULL;
        int32_t id = 0, sum = 0, calls;
        g_memory.piece = 8;
        memcpy(g_memory.bytes, ORDERS, sizeof(ORDERS) - 1);
        g_memory.size = sizeof(ORDERS) - 1;
        rewind_memory(&g_memory, 1);
        OK(vok_tree_records_open_stream(&s, "/order", NULL, &records));
        CHECK(vok_tree_records_path(records, path, sizeof(path), NULL) == VOK_TREE_NONE);
        while (vok_tree_records_next(records, node) == VOK_TREE_OK) {
            OK(vok_tree_first(node, "/id", NULL, node));
            OK(vok_tree_get_int(node, &id));
            sum = 10 * sum + id;
            OK(vok_tree_records_path(records, path, sizeof(path), NULL));
        }
        CHECK(sum == 12 && is(path, "/order[1]"));
        CHECK(vok_tree_records_next(records, node) == VOK_TREE_NONE);
        OK(vok_tree_records_report(records, &report));
        CHECK(report.nodes == 5);
        vok_tree_records_free(records);
        calls = g_memory.calls;
        rewind_memory(&g_memory, 1);
        g_memory.fails_at = calls - 1;
        g_memory.failure = -1;
        CHECK(vok_tree_records_open_stream(&s, "/order", NULL, &records) == VOK_TREE_STREAM);
        CHECK(vok_tree_records_open_stream(&s, "/..", NULL, &records) == VOK_TREE_FAILED);
    }
    vok_tree_free(node);
    return 0;
}

/* The same nodes by a writer and by a tree: the same bytes. */
static int check_writing(void) {
    static const int32_t WRITTEN[] = {VOK_TREE_DGRAPH, VOK_TREE_XML,
                                      VOK_TREE_DGRAPH | VOK_TREE_GZIP,
                                      VOK_TREE_XML | VOK_TREE_ZLIB};
    vok_tree_node* tree = NULL;
    vok_tree_reader* reader = NULL;
    vok_tree_writer* writer = NULL;
    vok_tree_value value;
    uint8_t* bytes = NULL;
    size_t size = 0, k;
    OK(vok_tree_new(&tree));
    OK(vok_tree_load_memory(tree, ORDERS, sizeof(ORDERS) - 1, 0, NULL, NULL));
    memset(&value, 0, sizeof(value));
    for (k = 0; k < COUNT(WRITTEN) * 4; ++k) {
        vok_tree_stream s = stream_of(&g_memory, (int)k & 1);
        const int32_t form = WRITTEN[k / 4];
        rewind_memory(&g_memory, 0);
        g_memory.piece = 0;
        OK(vok_tree_writer_open_stream(&s, form, &writer));
        if ((k & 2) == 0) {
            OK(vok_tree_writer_begin(writer, "orders", VOK_TREE_UNKNOWN));
            OK(vok_tree_writer_begin(writer, "order", 1));
            OK(vok_tree_writer_attribute(writer, "state", "open"));
            value.type = VOK_TREE_TYPE_INTEGER;
            value.as.integer = 1;
            OK(vok_tree_writer_add(writer, "id", &value));
            CHECK(vok_tree_writer_attribute(writer, "x", "y") == VOK_TREE_FAILED);
            CHECK(vok_tree_writer_finish(writer) == VOK_TREE_FAILED);
            OK(vok_tree_writer_end(writer));
            CHECK(vok_tree_writer_begin(writer, "a", 0) == VOK_TREE_FAILED); /* out of order */
            OK(vok_tree_writer_begin(writer, "order", VOK_TREE_UNKNOWN));
            OK(vok_tree_writer_attribute(writer, "state", "done"));
            OK(vok_tree_writer_begin(writer, "id", VOK_TREE_UNKNOWN));
            value.as.integer = 2;
            OK(vok_tree_writer_value(writer, &value));
            OK(vok_tree_writer_end(writer));
            OK(vok_tree_writer_end(writer));
            OK(vok_tree_writer_end(writer));
        } else {
            /* From a reader, and a part of a tree. */
            vok_tree_node* order = NULL;
            OK(vok_tree_new(&order));
            OK(vok_tree_reader_open_memory(ORDERS, sizeof(ORDERS) - 1, NULL, &reader));
            CHECK(vok_tree_writer_add_record(writer, reader) == VOK_TREE_ARGUMENT);
            OK(vok_tree_reader_next(reader));
            OK(vok_tree_writer_add_record(writer, reader));
            OK(vok_tree_reader_next(reader));
            OK(vok_tree_writer_add_record(writer, reader));
            OK(vok_tree_reader_next(reader));
            OK(vok_tree_writer_add_record(writer, reader));
            OK(vok_tree_writer_end(writer));
            OK(vok_tree_first(tree, "/order[1]", NULL, order));
            OK(vok_tree_writer_add_node(writer, order));
            OK(vok_tree_writer_end(writer));
            vok_tree_reader_free(reader);
            vok_tree_free(order);
        }
        OK(vok_tree_writer_finish(writer));
        CHECK(vok_tree_writer_begin(writer, "a", 0) == VOK_TREE_ARGUMENT);
        vok_tree_writer_free(writer);
        OK(vok_tree_set_version(tree, 1, 3, 0));
        OK(vok_tree_save_memory(tree, form, &bytes, &size));
        CHECK(g_memory.size == size && memcmp(g_memory.bytes, bytes, size) == 0);
        vok_tree_bytes_free(bytes);
    }
    CHECK(vok_tree_writer_open_file("x", VOK_TREE_JSON, &writer) == VOK_TREE_ARGUMENT);
    OK(vok_tree_writer_open_file("interface_test_writer", VOK_TREE_XML, &writer));
    OK(vok_tree_writer_announce(writer, "b[0]"));
    OK(vok_tree_writer_begin(writer, "a", VOK_TREE_UNKNOWN));
    OK(vok_tree_writer_add(writer, "b", NULL));
    value.type = VOK_TREE_TYPE_LINK;
    value.as.text.data = "b[0]";
    value.as.text.size = VOK_TREE_TO_NUL;
    OK(vok_tree_writer_add(writer, "c", &value));
    OK(vok_tree_writer_end(writer));
    OK(vok_tree_writer_finish(writer));
    vok_tree_writer_free(writer);
    OK(vok_tree_load_file(tree, "interface_test_writer", 0, NULL, NULL));
    remove("interface_test_writer");
    OK(vok_tree_first(tree, "/c", NULL, tree));
    OK(vok_tree_get_link(tree, tree));
    CHECK(path_is(tree, "/b[0]") == 0);

    /* A stream that fails while it is written. */
    for (k = 0; k < 2; ++k) {
        vok_tree_stream s = stream_of(&g_memory, (int)k);
        rewind_memory(&g_memory, 0);
        g_memory.failure = -1;
        OK(vok_tree_writer_open_stream(&s, VOK_TREE_XML, &writer));
        g_memory.fails_at = g_memory.calls;
        OK(vok_tree_writer_begin(writer, "a", VOK_TREE_UNKNOWN));
        OK(vok_tree_writer_end(writer));
        CHECK(vok_tree_writer_finish(writer) == VOK_TREE_STREAM);
        vok_tree_writer_free(writer);
    }
    vok_tree_free(tree);
    return 0;
}

int check_documents_and_records(vok_tree_node* root) {
    if (check_documents(root) != 0 || check_failing_streams(root) != 0) return 1;
    return check_reading() != 0 || check_writing() != 0;
}

/* SPDX-License-Identifier: MIT */
#include "examples/package_inventory_c/status_file.h"

#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* A part of a text, not terminated. */
typedef struct slice {
    const char* at;
    size_t size;
} slice;

typedef struct field {
    char* name; /* valid UTF-8, both of them */
    char* value;
} field;

typedef struct parser {
    const char* path;
    char* fault; /* the first one, after which nothing more is read */
    size_t line;

    /* Of the field that is being read. */
    char name[256];
    size_t field_line;
    char* value;
    size_t value_size;
    size_t value_room;

    /* Of the stanza. */
    field* fields;
    size_t count;
    size_t room;

    vok_tree_node* root;
    vok_tree_node *package, *entry, *group, *item; /* where the tree is built */
    vok_tree_node* text;                           /* makes texts valid */
    size_t packages;
} parser;

/* ---- failures ------------------------------------------------------------ */

static int failed(const parser* p) {
    return p->fault[0] != 0;
}

/* Only the first one counts. */
static void fail(parser* p, size_t line, const char* format, ...) {
    va_list arguments;
    int used;
    if (failed(p)) return;
    used = line != 0 ? snprintf(p->fault, 512, "%s:%lu: ", p->path, (unsigned long)line)
                     : snprintf(p->fault, 512, "%s: ", p->path);
    if (used < 0 || used >= 512) return;
    va_start(arguments, format);
    vsnprintf(p->fault + used, 512 - (size_t)used, format, arguments);
    va_end(arguments);
}

/* Null when it has failed. */
static void* grown(parser* p, void* memory, size_t size) {
    void* larger = realloc(memory, size);
    if (larger == NULL) fail(p, 0, "out of memory");
    return larger;
}

static void must(parser* p, vok_tree_status status) {
    if (status != VOK_TREE_OK) fail(p, p->line, "%s", vok_tree_last_error()->text);
}

/* ---- slices -------------------------------------------------------------- */

static int is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

static slice trim(slice s) {
    while (s.size > 0 && is_blank(s.at[0])) ++s.at, --s.size;
    while (s.size > 0 && is_blank(s.at[s.size - 1])) --s.size;
    return s;
}

static slice rest_of(slice s, size_t from) {
    s.at += from;
    s.size -= from;
    return s;
}

static size_t length_until(slice s, const char* set) {
    size_t n = 0;
    while (n < s.size && (s.at[n] == 0 || strchr(set, s.at[n]) == NULL)) ++n;
    return n;
}

/* Cuts what stands before c off the front of s; all of it when there is no c. */
static slice cut_at(slice* s, char c) {
    const char* found = s->size != 0 ? (const char*)memchr(s->at, c, s->size) : NULL;
    slice head = *s;
    if (found != NULL) head.size = (size_t)(found - s->at);
    *s = rest_of(*s, found != NULL ? head.size + 1 : s->size);
    return head;
}

/* ---- the tree ------------------------------------------------------------ */

static void add_text(parser* p, vok_tree_node* node, const char* name, slice s) {
    must(p, vok_tree_add_text(node, name, s.at, s.size, NULL));
}

static void add_if_any(parser* p, vok_tree_node* node, const char* name, slice s) {
    if (s.size != 0) add_text(p, node, name, s);
}

/* "libc6:any (>= 2.36) [amd64]" in its parts. */
static void add_alternative(parser* p, slice s) {
    slice word, name, version = {"", 0};
    s = trim(s);
    word = s;
    word.size = length_until(s, " \t\n([");
    s = trim(rest_of(s, word.size));
    name = cut_at(&word, ':');
    if (s.size > 0 && s.at[0] == '(') {
        s = rest_of(s, 1);
        version = trim(cut_at(&s, ')'));
        s = trim(s);
    }
    must(p, vok_tree_add(p->group, "package", p->item));
    add_text(p, p->item, "name", name);
    add_if_any(p, p->item, "architecture", word);
    add_if_any(p, p->item, "version", version);
    add_if_any(p, p->item, "rest", s);
}

static void add_groups(parser* p, slice s) {
    while (trim(s).size != 0) {
        slice group = cut_at(&s, ',');
        if (trim(group).size == 0) continue;
        must(p, vok_tree_add(p->entry, "any-of", p->group));
        while (trim(group).size != 0) add_alternative(p, cut_at(&group, '|'));
    }
}

/* ---- fields -------------------------------------------------------------- */

typedef enum kind { TEXT, NUMBER, RELATION, NAME } kind;

static kind kind_of(const char* name) {
    static const char* const RELATIONS[] = {"Breaks",     "Conflicts",   "Depends",
                                            "Enhances",   "Pre-Depends", "Provides",
                                            "Recommends", "Replaces",    "Suggests"};
    size_t i;
    if (strcmp(name, "Package") == 0) return NAME;
    if (strcmp(name, "Installed-Size") == 0 || strcmp(name, "Size") == 0) return NUMBER;
    for (i = 0; i < sizeof(RELATIONS) / sizeof(RELATIONS[0]); ++i) {
        if (strcmp(name, RELATIONS[i]) == 0) return RELATION;
    }
    return TEXT;
}

/* Whether all of a text is a number of 32 bits. */
static int to_number(const char* s, int32_t* number) {
    char* end = NULL;
    long value;
    if (!(s[0] >= '0' && s[0] <= '9') && !(s[0] == '-' && s[1] >= '0' && s[1] <= '9')) return 0;
    errno = 0;
    value = strtol(s, &end, 10);
    if (errno != 0 || *end != 0 || value < INT32_MIN || value > INT32_MAX) return 0;
    *number = (int32_t)value;
    return 1;
}

/* A copy as the library keeps it, what is no UTF-8 read as Latin-1; null when it has failed. */
static char* valid_copy(parser* p, const char* s, size_t size) {
    const char* kept = "";
    char* copy;
    must(p, vok_tree_set_text(p->text, s, size));
    must(p, vok_tree_get_text(p->text, &kept, &size));
    if (failed(p)) return NULL;
    copy = (char*)grown(p, NULL, size + 1);
    if (copy != NULL) memcpy(copy, kept, size + 1);
    return copy;
}

static void append(parser* p, char before, slice s) {
    const size_t size = p->value_size + s.size + 1;
    if (size > p->value_room) {
        char* larger = (char*)grown(p, p->value, 2 * size);
        if (larger == NULL) return;
        p->value = larger;
        p->value_room = 2 * size;
    }
    if (before != 0) p->value[p->value_size++] = before;
    if (s.size != 0) memcpy(p->value + p->value_size, s.at, s.size);
    p->value_size += s.size;
}

static void start_field(parser* p, slice line) {
    slice name;
    if (length_until(line, ":") == line.size) {
        fail(p, p->line, "expected 'Field: value'");
        return;
    }
    name = trim(cut_at(&line, ':'));
    if (name.size == 0) fail(p, p->line, "field without a name");
    if (name.size >= sizeof(p->name)) fail(p, p->line, "field with a very long name");
    if (failed(p)) return;
    memcpy(p->name, name.at, name.size);
    p->name[name.size] = 0;
    p->value_size = 0;
    append(p, 0, trim(line));
    p->field_line = p->line;
}

static const char* value_of(const parser* p, const char* name) {
    size_t i;
    for (i = 0; i < p->count; ++i) {
        if (strcmp(p->fields[i].name, name) == 0) return p->fields[i].value;
    }
    return "";
}

/* Takes both texts over. Of two fields of one name the second counts, but for that of the package.
 */
static void keep_field(parser* p, char* name, char* value) {
    field* f = p->fields;
    field* const end = f + p->count;
    while (f != end && strcmp(f->name, name) != 0) ++f;
    if (f == end) {
        ++p->count;
    } else {
        if (kind_of(name) == NAME && f->value[0] != 0) {
            fail(p, p->field_line, "second Package field in a stanza");
        }
        free(f->name);
        free(f->value);
    }
    f->name = name;
    f->value = value;
}

static void end_field(parser* p) {
    char *name, *value;
    int32_t number;
    if (p->name[0] == 0 || failed(p)) return;
    if (p->count == p->room) {
        field* larger = (field*)grown(p, p->fields, (2 * p->room + 16) * sizeof(field));
        if (larger == NULL) return;
        p->fields = larger;
        p->room = 2 * p->room + 16;
    }
    name = valid_copy(p, p->name, strlen(p->name));
    value = valid_copy(p, p->value, p->value_size);
    p->name[0] = 0;
    if (name == NULL || value == NULL) {
        free(name);
        free(value);
        return;
    }
    if (kind_of(name) == NUMBER && !to_number(value, &number)) {
        fail(p, p->field_line, "%s is no number of 32 bits: '%s'", name, value);
    }
    keep_field(p, name, value);
}

/* ---- stanzas ------------------------------------------------------------- */

static int by_name(const void* a, const void* b) {
    return strcmp(((const field*)a)->name, ((const field*)b)->name);
}

static void clear_fields(parser* p) {
    while (p->count > 0) {
        --p->count;
        free(p->fields[p->count].name);
        free(p->fields[p->count].value);
    }
}

static void add_field(parser* p, const field* f) {
    static const char* const NODES[] = {"text", "number", "relation"};
    const kind k = kind_of(f->name);
    const slice value = {f->value, strlen(f->value)};
    int32_t number = 0;
    if (k == NAME) return;
    must(p, vok_tree_add(p->package, NODES[k], p->entry));
    must(p, vok_tree_add_text(p->entry, "field", f->name, VOK_TREE_TO_NUL, NULL));
    if (k == TEXT) add_text(p, p->entry, "value", value);
    if (k == NUMBER && to_number(f->value, &number)) {
        must(p, vok_tree_add_int(p->entry, "value", number, NULL));
    }
    if (k == RELATION) add_groups(p, value);
}

static void end_stanza(parser* p) {
    size_t i;
    const char* name;
    end_field(p);
    if (p->count == 0 || failed(p)) return;
    name = value_of(p, "Package");
    if (name[0] == 0) {
        fail(p, p->line, "stanza without a Package field ends here");
        return;
    }
    qsort(p->fields, p->count, sizeof(field), by_name);
    must(p, vok_tree_add(p->root, "package", p->package));
    must(p, vok_tree_add_text(p->package, "name", name, VOK_TREE_TO_NUL, NULL));
    for (i = 0; i < p->count; ++i) add_field(p, &p->fields[i]);
    clear_fields(p);
    ++p->packages;
}

static void parse(parser* p, slice text) {
    while (text.size != 0 && !failed(p)) {
        const slice line = cut_at(&text, '\n');
        ++p->line;
        if (line.size != 0 && memchr(line.at, 0, line.size) != NULL) {
            fail(p, p->line, "NUL byte: this is no package database");
        }
        if (trim(line).size == 0) {
            end_stanza(p);
        } else if (line.at[0] == ' ' || line.at[0] == '\t') {
            if (p->name[0] == 0) fail(p, p->line, "continuation without a field before it");
            append(p, '\n', line);
        } else {
            end_field(p);
            start_field(p, line);
        }
    }
    ++p->line;
    end_stanza(p);
    if (p->packages == 0) fail(p, 0, "no packages in it: this is no package database");
}

/* ---- files --------------------------------------------------------------- */

/* All bytes of a file; null when it cannot be read. */
static char* read_all(const char* path, size_t* size) {
    FILE* file = fopen(path, "rb");
    char* bytes = NULL;
    size_t room = 0;
    *size = 0;
    if (file == NULL) return NULL;
    do {
        char* larger = (char*)realloc(bytes, room = 2 * room + 65536);
        if (larger == NULL) break;
        bytes = larger;
        *size += fread(bytes + *size, 1, room - *size, file);
    } while (*size == room);
    if (ferror(file) || *size == room) {
        free(bytes);
        bytes = NULL;
    }
    fclose(file);
    return bytes;
}

size_t read_status_file(const char* path, vok_tree_node* root, size_t* size, char fault[512]) {
    parser* p = (parser*)calloc(1, sizeof(parser));
    char* bytes = read_all(path, size);
    size_t packages = 0;
    if (p != NULL && bytes != NULL) {
        slice text;
        text.at = bytes;
        text.size = *size;
        p->path = path;
        p->fault = fault;
        p->root = root;
        fault[0] = 0;
        must(p, vok_tree_new(&p->package));
        must(p, vok_tree_new(&p->entry));
        must(p, vok_tree_new(&p->group));
        must(p, vok_tree_new(&p->item));
        must(p, vok_tree_new(&p->text));
        must(p, vok_tree_to_root(root));
        if (!failed(p)) parse(p, text);
        if (!failed(p)) packages = p->packages;
        clear_fields(p);
        free(p->fields);
        free(p->value);
        vok_tree_free(p->package);
        vok_tree_free(p->entry);
        vok_tree_free(p->group);
        vok_tree_free(p->item);
        vok_tree_free(p->text);
    } else {
        snprintf(fault, 512, "%s: cannot be read", path);
    }
    free(bytes);
    free(p);
    return packages;
}

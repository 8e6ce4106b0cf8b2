/* SPDX-License-Identifier: MIT */
/* The same in C: a point to an XML file and back. */
#include <stdio.h>

#include "serializer/c/vok_serializer.h"

static const vok_char x[] = {'x', 0};
static const vok_char y[] = {'y', 0};
static const vok_char path[] = {'p', 'o', 'i', 'n', 't', '.', 'x', 'm', 'l', 0};

/* Prints the text of a failure, ASCII in English. */
static int failed(void) {
    const vok_char* text = vok_last_error();
    fputs("consumer: ", stderr);
    for (; *text != 0; ++text) fputc(*text, stderr);
    fputc('\n', stderr);
    return 1;
}

static vok_status write_point(int32_t at_x, int32_t at_y) {
    vok_node* root;
    vok_status status = vok_root_create(&root);
    if (status != VOK_OK) return status;
    status = vok_node_add_int(root, x, at_x);
    if (status == VOK_OK) status = vok_node_add_int(root, y, at_y);
    if (status == VOK_OK) status = vok_save_file(root, path);
    vok_node_free(root);
    return status;
}

static vok_status read_point(int32_t* at_x, int32_t* at_y) {
    vok_node* root;
    vok_status status = vok_root_create(&root);
    if (status != VOK_OK) return status;
    status = vok_load_file(root, path);
    if (status == VOK_OK) status = vok_node_get_int(root, x, 0, at_x);
    if (status == VOK_OK) status = vok_node_get_int(root, y, 0, at_y);
    vok_node_free(root);
    return status;
}

int main(void) {
    int32_t at_x = 0, at_y = 0;
    if (write_point(3, -4) != VOK_OK || read_point(&at_x, &at_y) != VOK_OK) return failed();
    remove("point.xml");
    printf("point.xml: (%d, %d)\n", (int)at_x, (int)at_y);
    return at_x == 3 && at_y == -4 ? 0 : 1;
}

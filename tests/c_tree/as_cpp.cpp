// SPDX-License-Identifier: MIT
/* The same program as C++. */
#include "tests/c_tree/documents_test.c"
#include "tests/c_tree/interface_test.c"

/* Declared otherwise by the C++ library: refused in C only. */
#define OWN_MALLOC 0
#include "tests/c_tree/memory_test.c"

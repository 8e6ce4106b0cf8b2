/* The same program as C++. */
#include "tests/c_tree/documents_test.c"
#include "tests/c_tree/interface_test.c"

// SPDX-License-Identifier: MIT
#include <exception>

#include "tests/file/peer.h"

int main(int argc, char** argv) {
    if (argc == 4 && std::string(argv[1]) == "--peer") {
        for (const vok::Role_Entry* p = vok::g_pRoles; p != nullptr; p = p->pNext) {
            if (argv[2] != std::string(p->sName)) continue;
            try {
                return p->pRole(argv[3]);
            } catch (const std::exception& oError) {
                std::fprintf(stderr, "%s: %s", p->sName, oError.what());
                return 1;
            }
        }
        return 2;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

// SPDX-License-Identifier: MIT
// The C interface with several threads.
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "serializer/c/vok_serializer.h"

// One thread adds to a tree and frees no handle, the others free its handles meanwhile.
int main() {
    constexpr int COUNT = 20000;
    constexpr int OTHERS = 3;
    vok_node* pRoot = nullptr;
    if (vok_root_create(&pRoot) != VOK_OK) return 1;
    std::vector<std::atomic<vok_node*>> oHandles(COUNT);
    std::vector<std::thread> oThreads;
    for (int iNth = 0; iNth < OTHERS; ++iNth) {
        oThreads.emplace_back([&oHandles, iNth] {
            for (int i = iNth; i < COUNT; i += OTHERS) {
                vok_node* p = nullptr;
                while ((p = oHandles[static_cast<std::size_t>(i)].exchange(nullptr)) == nullptr) {
                    std::this_thread::yield();
                }
                vok_node_free(p);
            }
        });
    }
    for (auto& oHandle : oHandles) {
        vok_node* p = nullptr;
        if (vok_node_add_subnode(pRoot, u"sub", &p) != VOK_OK ||
            vok_node_add_int(p, u"i", 1) != VOK_OK) {
            std::abort();  // others wait for what does not come
        }
        oHandle = p;
    }
    // The last handle of the tree may be one of theirs.
    vok_node_free(pRoot);
    for (std::thread& o : oThreads) o.join();
    const bool bGood = vok_live_nodes() == 0 && vok_live_blocks() == 0;
    std::puts(bGood ? "good" : "something is left");
    return bGood ? 0 : 1;
}

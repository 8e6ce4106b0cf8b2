// SPDX-License-Identifier: MIT
// One tree that several threads read, and trees of their own; every thread has its own last error.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "c/vok_tree.h"

namespace {

// Reads all of a prepared tree and fails in its own way; tells whether all was as it should be.
bool Read(const vok_tree_node* pRoot, int iThread) {
    bool bGood = true;
    vok_tree_node* pNode = nullptr;
    vok_tree_iterator* pIterator = nullptr;
    vok_tree_new(&pNode);
    for (int iRound = 0; iRound < 20; ++iRound) {
        std::int64_t iSum = 0;
        std::int32_t iValue = 0;
        vok_tree_iterate(pRoot, "i", &pIterator);
        while (vok_tree_iterator_next(pIterator, pNode) == VOK_TREE_OK) {
            vok_tree_get_int(pNode, &iValue);
            iSum += iValue;
        }
        vok_tree_iterator_free(pIterator);
        bGood = bGood && iSum == 499500;
        const std::string sName = "none" + std::to_string(iThread);
        vok_tree_query* pQuery = nullptr;
        bGood = bGood && vok_tree_query_new((sName + "[").c_str(), &pQuery) == VOK_TREE_FAILED;
        bGood = bGood && vok_tree_get_text(pNode, nullptr, nullptr) == VOK_TREE_ARGUMENT;
        bGood = bGood && vok_tree_load_file(pNode, sName.c_str(), 0, nullptr, nullptr) < 0;
        const std::string sError = vok_tree_last_error()->text;
        bGood = bGood && sError.find(sName) != std::string::npos;
    }
    vok_tree_free(pNode);
    return bGood;
}

TEST(CTreeThreads, OneTreeIsRead) {
    vok_tree_node* pRoot = nullptr;
    ASSERT_EQ(vok_tree_new(&pRoot), VOK_TREE_OK);
    for (int i = 0; i < 1000; ++i) vok_tree_add_int(pRoot, "i", i, nullptr);
    ASSERT_EQ(vok_tree_prepare(pRoot), VOK_TREE_OK);
    std::atomic<int> iGood = 0;
    std::vector<std::thread> oThreads;
    for (int i = 0; i < 4; ++i) {
        oThreads.emplace_back([&, i] { iGood += Read(pRoot, i) ? 1 : 0; });
    }
    for (std::thread& o : oThreads) o.join();
    EXPECT_EQ(iGood, 4);
    vok_tree_free(pRoot);
    EXPECT_EQ(vok_tree_live_handles(), 0);
}

}  // namespace

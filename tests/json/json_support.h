// SPDX-License-Identifier: MIT
// What the tests of JSON share.
#ifndef TESTS_JSON_JSON_SUPPORT_H
#define TESTS_JSON_JSON_SUPPORT_H

#include <string>

#include "tests/support.h"
#include "vok/compare/diff.h"
#include "vok/json/json.h"

namespace vok {

inline std::string JsonOf(const Data& oTree, Json_Layout eLayout = Json_Layout::Compact) {
    std::string s = Written([&](File_Buf& o) { Json_Save(oTree, o, eLayout); });
    EXPECT_TRUE(s.ends_with('\n'));
    s.pop_back();
    return s;
}
inline Data FromJson(const std::string& sJson) {
    Data oTree;
    Load_Report oReport;
    Json_LoadString(oTree, sJson, {}, &oReport);
    EXPECT_EQ(oReport.m_uBytesLeft, 0u);
    EXPECT_EQ(Fault(oTree), "");
    return oTree;
}
inline std::string FirstDifference(const Data& oA, const Data& oB) {
    std::string s;
    Data::Diff(oA, oB, [&](const Data_Difference& o) {
        s = std::string(Data_Difference::WhatName(o.m_eWhat)) + " " + o.m_sPath;
        return false;
    });
    return s;
}

// A tree comes back from both layouts, from memory and from a stream that gives little at a time,
// and is written as the same bytes again.
inline testing::AssertionResult ComesBack(const Data& oTree) {
    std::string sFirst;
    for (const Json_Layout eLayout : {Json_Layout::Compact, Json_Layout::Lines}) {
        const std::string sJson = JsonOf(oTree, eLayout);
        Data oMemory = FromJson(sJson);
        Data oStream;
        Drop_Stream oIn(sJson, 7);
        Json_Load(oStream, oIn);
        for (const Data& oBack : {oMemory, oStream}) {
            if (!Data::Equal(oTree, oBack)) {
                return testing::AssertionFailure() << FirstDifference(oTree, oBack) << "\n"
                                                   << sJson;
            }
            if (JsonOf(oBack, eLayout) != sJson) return testing::AssertionFailure() << sJson;
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace vok

#endif  // TESTS_JSON_JSON_SUPPORT_H

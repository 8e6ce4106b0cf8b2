// SPDX-License-Identifier: MIT
// What the tests of readers and writers of records share.
#ifndef TESTS_RECORDS_RECORDS_SUPPORT_H
#define TESTS_RECORDS_RECORDS_SUPPORT_H

#include <optional>
#include <ostream>

#include "tests/dgraph/dgraph_support.h"
#include "vok/records/canonical.h"
#include "vok/records/reader.h"
#include "vok/records/records.h"

namespace vok {

// What reading gives: the tree as text, or the message; and the report in one line.
struct Reading {
    std::string sShown;
    std::string sReport;
    bool bFailed = false;  // sShown is the message
    friend bool operator==(const Reading&, const Reading&) = default;
    friend std::ostream& operator<<(std::ostream& o, const Reading& r) {
        return o << r.sShown << "; " << r.sReport;
    }
};
inline std::string Line(const Load_Report& r) {
    std::string s = PlaceOf(r);
    for (const u3_t u :
         {r.m_uNodes, r.m_uMissingBytes, r.m_uMissingNodes, r.m_uBytesLeft, r.m_uDroppedTexts,
          r.m_uKeptReferences, r.m_uReordered, r.m_uComments, r.m_uInstructions}) {
        s += " " + std::to_string(u);
    }
    return s;
}

// The tree that all loaders give.
inline Reading LoadWhole(File_Stream& oIn, const Limits& oLimits = {}) {
    Data oTree;
    Load_Report r;
    const std::string sError = Failing([&] { Dgraph_Load(oTree, oIn, oLimits, &r); });
    return {sError.empty() ? Show(oTree.GetRoot()) : sError, Line(r), !sError.empty()};
}
// That of all records together; no report where there is not even a reader.
inline Reading TakeWhole(File_Stream& oIn, const Limits& oLimits = {}) {
    Data oTree;
    std::optional<Data_Reader> oReader;
    const std::string sError = Failing([&] {
        oReader.emplace(oIn, oLimits).Next();
        oReader->Take(oTree);
        while (oReader->Next()) {
        }
    });
    return {sError.empty() ? Show(oTree) : sError, oReader ? Line(oReader->GetReport()) : "",
            !sError.empty()};
}

// The canonical form of what loading gives, and what is said of it record by record, which is empty
// where only the tree can tell.
inline std::string FormOf(const Data& oTree) {
    std::string s;
    oTree.GetRoot().Canonical([&](std::string_view sPiece) { s += sPiece; });
    return s;
}
inline std::string FormByRecords(File_Stream& oIn) {
    std::string s;
    Data_Canonical oForm([&](std::string_view sPiece) { s += sPiece; });
    for (Data_Reader o(oIn); o.Next();) {
        if (!oForm.Add(o)) return {};
    }
    oForm.Finish();
    return s;
}

// Every record with all that it says, as far as reading comes.
inline Reading EachRecord(File_Stream& oIn, const Limits& oLimits = {}) {
    std::string s;
    std::optional<Data_Reader> oReader;
    s += Failing([&] {
        oReader.emplace(oIn, oLimits);
        while (oReader->Next()) {
            const Data_Record& r = **oReader;
            s += std::to_string(r.GetOffset()) + ' ' + std::to_string(r.GetDepth()) + ' ';
            s += std::string(r.GetName()) + '[' + std::to_string(r.GetIndex()) + "] ";
            s += std::to_string(r.GetType()) + ' ' + std::to_string(r.Lng()) + ' ';
            s += std::string(r.Text()) + '\n';
            for (const auto& o : r.GetAttributes()) {
                s += std::string(o.sName) + '=' + std::string(o.sValue) + '\n';
            }
        }
    });
    return {s, oReader ? Line(oReader->GetReport()) + (oReader->IsInOrder() ? "" : "!") : "",
            false};
}

// What reading comes to without a tree, or with one of each record of a level.
inline Reading ReadThrough(File_Stream& oIn, const Limits& oLimits, u2_t uTakenLevel) {
    Data oTree;
    std::optional<Data_Reader> oReader;
    const std::string sError = Failing([&] {
        oReader.emplace(oIn, oLimits);
        while (oReader->Next()) {
            if ((*oReader)->GetDepth() == uTakenLevel) oReader->Take(oTree);
        }
    });
    return {sError, oReader ? Line(oReader->GetReport()) + (oReader->IsInOrder() ? "" : "!") : "",
            !sError.empty()};
}

}  // namespace vok

#endif  // TESTS_RECORDS_RECORDS_SUPPORT_H

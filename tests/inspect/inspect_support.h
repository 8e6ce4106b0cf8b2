// SPDX-License-Identifier: MIT
// What the tests of inspecting share: fields as text, and what holds for the fields of any bytes.
#ifndef TESTS_INSPECT_INSPECT_SUPPORT_H
#define TESTS_INSPECT_INSPECT_SUPPORT_H

#include <map>

#include "tests/dgraph/dgraph_support.h"
#include "vok/inspect/inspect.h"
#include "vok/zip/stream.h"

namespace vok {

// "30+4 length of step=7", then the path for steps, and the fault.
inline std::string FieldText(const Inspect_Field& o) {
    const std::string sName = o.IsSkipped() ? "skipped" : o.m_sName;
    std::string s = std::to_string(o.m_uOffset) + '+' + std::to_string(o.m_uLength) + ' ' + sName;
    if (o.m_bText || !o.m_sValue.empty()) s += '=' + std::string(o.m_sValue);
    if (sName == "step") s += " at " + std::string(o.m_sPath);
    if (!o.m_sFault.empty()) s += " !" + std::string(o.m_sFault);
    return s;
}

// The fields of every document of a stream. Each of its bytes is in one of them, and they have the
// bytes that they say.
struct Inspected {
    explicit Inspected(File_Stream& oIn, const Limits& oLimits = {}) {
        Inspect(
            oIn,
            [&](const Inspect_Field& o) {
                Add(o);
                return true;
            },
            oLimits);
    }
    explicit Inspected(std::string_view sBytes, const Limits& oLimits = {}) {
        File_Buf oBuf(sBytes.data(), sBytes.size());
        *this = Inspected(static_cast<File_Stream&>(oBuf), oLimits);
    }

    void Add(const Inspect_Field& o) {
        Text& oDocument = m_oDocument[o.m_uDocument];
        EXPECT_EQ(o.m_uOffset, oDocument.uEnd);
        EXPECT_EQ(o.m_sBytes.size(), std::min<u3_t>(o.m_uLength, Inspect_Field::SHOWN));
        EXPECT_TRUE(o.m_uLength != 0 || !o.m_sFault.empty());
        oDocument.uEnd = o.m_uOffset + o.m_uLength;
        oDocument.sBytes.append(o.m_sBytes).resize(oDocument.uEnd, '?');
        oDocument.asField.push_back(FieldText(o));
        bFault = bFault || o.IsSkipped() || !o.m_sFault.empty();
        if (o.m_sName == std::string_view("step")) asPath.emplace_back(o.m_sPath);
    }
    // The fields of a document from an offset on, a line each.
    [[nodiscard]] std::string From(u3_t uOffset, u2_t uDocument = 0) const {
        std::string s;
        for (const std::string& sField : m_oDocument.at(uDocument).asField) {
            if (std::stoull(sField) >= uOffset) s += sField + '\n';
        }
        return s;
    }

    struct Text {
        u3_t uEnd = 0;
        std::string sBytes;  // with "?" for those that are not shown
        Texts asField;
    };
    std::map<u2_t, Text> m_oDocument;
    Texts asPath;  // of every step
    bool bFault = false;
};

// Inspects any bytes and holds the fields to those.
inline Inspected Covered(std::string_view sBytes) {
    Inspected o(sBytes);
    const Inspected::Text& oText = o.m_oDocument[0];
    EXPECT_EQ(oText.uEnd, sBytes.size());
    for (std::size_t u = 0; u < std::min(oText.sBytes.size(), sBytes.size()); ++u) {
        if (oText.sBytes[u] != '?' && oText.sBytes[u] != sBytes[u]) {
            ADD_FAILURE() << "another byte at " << u;
            break;
        }
    }
    return o;
}

inline std::string Gzipped(std::string_view sBytes) {
    File_Buf oBuf("w");
    Zip_Stream oStream(oBuf, "wz");
    oStream.Write(sBytes.data(), sBytes.size());
    oStream.Close();
    return Content(oBuf.GetBuffer());
}
inline std::string Dumped(const Data& oTree) {
    return Written([&](File_Buf& o) { oTree.Dump(o); });
}

}  // namespace vok

#endif  // TESTS_INSPECT_INSPECT_SUPPORT_H

// SPDX-License-Identifier: MIT
#include "serializer/fields/failure.h"

#include <algorithm>

#include "serializer/exception.h"
#include "serializer/utilities.h"
#include "vok/base/msg_exception.h"
#include "vok/base/number.h"
#include "vok/dgraph/format.h"
#include "vok/file/file.h"

namespace Velmar::Q7R::Serializer::fields {

namespace {

// Bytes of a path in a message.
constexpr std::size_t MOST_PATH = 512;

// Where the record behind the one at uAt begins, or the end of a document that was cut short.
// Records stand behind each other whatever contains what.
std::size_t NextRecord(std::string_view sDocument, std::size_t uAt) {
    const auto oNumberAt = [&](std::size_t u) {
        return u + 4 <= sDocument.size() ? vok::le::Load<vok::u2_t>(sDocument.data() + u) : 0u;
    };
    uAt += 4 + std::size_t{oNumberAt(uAt)};
    if (uAt >= sDocument.size()) return sDocument.size();
    const auto uCode = static_cast<vok::u0_t>(sDocument[uAt++]);
    const bool bLink = uCode == vok::dgraph::CODE_LINK;
    // Bytes that a length stands in front of, once or twice.
    if (bLink) uAt += 4 + std::size_t{oNumberAt(uAt)};
    if (bLink || uCode == vok::dgraph::CODE_STRING || uCode == vok::dgraph::CODE_BINARY) {
        uAt += oNumberAt(uAt);
    }
    uAt += vok::dgraph::FixedSize(uCode);
    return std::min(uAt, sDocument.size());
}

// Where what begins at uAt and ends with sEnd ends, or the end of the document.
std::size_t Behind(std::string_view sDocument, std::string_view sEnd, std::size_t uAt) {
    const std::size_t uEnd = sDocument.find(sEnd, uAt);
    return uEnd == std::string_view::npos ? sDocument.size() : uEnd + sEnd.size();
}

}  // namespace

std::string PathOf(const vok::Data& oNode) {
    std::string sPath = oNode.GetPath().CStr();
    if (sPath.ends_with("[0]")) sPath.resize(sPath.size() - 3);
    return sPath;
}

std::string NotFound(std::string_view sExpected, const vok::Data_View& oNode) {
    std::string sReason(sExpected);
    sReason += " expected, ";
    sReason += vok::Data_Node::TypeName(oNode.GetType());
    switch (oNode.GetType()) {
        case vok::Data_Node::Integer: (sReason += ' ') += std::to_string(oNode.Int()); break;
        case vok::Data_Node::Long: (sReason += ' ') += std::to_string(oNode.Lng()); break;
        case vok::Data_Node::Float:
        case vok::Data_Node::Double: {
            char sValue[vok::NUMBER_ROOM];
            sReason += ' ';
            sReason.append(sValue, vok::FormatReal(oNode.Dbl(), sValue));
            break;
        }
        default: break;
    }
    return sReason + " found";
}

void RaiseAt(const std::string& sPath, std::string_view sReason, std::string_view sWhere,
             vok::u3_t uOffset, vok::u2_t uLine) {
    System::ApplicationException::Place oPlace{uOffset, uLine, 0};
    sPath.copy(oPlace.sPath, sizeof(oPlace.sPath) - 1);
    // The end of a long one says more than its beginning, and the reason more than both.
    std::string sText = sPath;
    if (sText.size() > MOST_PATH) sText.replace(0, sText.size() - MOST_PATH, "...");
    sText += ": ";
    sText += sReason;
    if (!sWhere.empty()) {
        sText += ", ";
        sText += sWhere;
    }
    throw System::ApplicationException(sText.c_str(), oPlace);
}

void RaiseInDGraph(const Fault& oFault, std::span<const Byte> oDocument) {
    const std::string_view sDocument(reinterpret_cast<const char*>(oDocument.data()),
                                     oDocument.size());
    std::size_t uAt = std::min(vok::dgraph::HEADER_SIZE, sDocument.size());
    for (vok::u2_t u = 0; u < oFault.uNode; ++u) uAt = NextRecord(sDocument, uAt);
    RaiseAt(oFault.sPath, oFault.sReason, "byte " + std::to_string(uAt), uAt);
}

void RaiseInXml(const Fault& oFault, std::string_view sDocument) {
    // UTF-16 has bytes of zero; its lines are not counted here.
    if (sDocument.find('\0') != std::string_view::npos) RaiseAt(oFault.sPath, oFault.sReason);
    vok::u2_t uLeft = oFault.uNode + 1;
    std::size_t uAt = 0;
    while ((uAt = sDocument.find('<', uAt)) != std::string_view::npos) {
        const std::string_view sTag = sDocument.substr(uAt);
        if (sTag.starts_with("<!--")) {
            uAt = Behind(sDocument, "-->", uAt);
        } else if (sTag.starts_with("<![CDATA[")) {
            uAt = Behind(sDocument, "]]>", uAt);
        } else if (sTag.starts_with("<?")) {
            uAt = Behind(sDocument, "?>", uAt);
        } else if (sTag.starts_with("</") || sTag.starts_with("<!")) {
            ++uAt;
        } else if (--uLeft == 0) {
            const auto uLine = static_cast<vok::u2_t>(
                std::count(sDocument.begin(), sDocument.begin() + static_cast<std::ptrdiff_t>(uAt),
                           '\n') +
                1);
            RaiseAt(oFault.sPath, oFault.sReason, "line " + std::to_string(uLine), uAt, uLine);
        } else {
            ++uAt;
        }
    }
    RaiseAt(oFault.sPath, oFault.sReason);
}

void RaiseInFile(const Fault& oFault, StringRef oFile) {
    std::string sDocument;
    try {
        vok::File oIn;
        vok::Arr<char> oBytes;
        oIn.Open(Utilities::String2Str(oFile), "r", true);
        oIn.Read(oBytes, vok::File_Stream::ALL);
        sDocument.assign(oBytes.Beg(), oBytes.Size());
    } catch (const vok::Msg_Exception&) {
        // Gone, or not to be read twice: then there is no line to tell.
    }
    RaiseInXml(oFault, sDocument);
}

}  // namespace Velmar::Q7R::Serializer::fields

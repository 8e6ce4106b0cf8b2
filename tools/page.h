// SPDX-License-Identifier: MIT
// Pages for a browser, which need nothing else: a fixed part, which the build puts in the program
// from the files in tools/pages, and data.
#ifndef TOOLS_PAGE_H
#define TOOLS_PAGE_H

#include <functional>
#include <string>

#include "vok/file/stream.h"

namespace tools {

extern const char* const TREE_PAGE;
extern const char* const DIFF_PAGE;

// Where the data of a page go, for writers of RapidJSON. They are in a script, which ends at "</":
// that never comes.
class ScriptSink {
  public:
    using Ch = char;

    explicit ScriptSink(vok::File_Stream& oOut) noexcept : m_oOut(oOut) {}
    void Put(char c) {
        c == '<' ? void(m_sPiece += "\\u003c") : m_sPiece.push_back(c);
        if (m_sPiece.size() >= PIECE) Flush();
    }
    void Flush() {
        m_oOut.Write(m_sPiece.data(), m_sPiece.size());
        m_sPiece.clear();
    }

  private:
    static constexpr std::size_t PIECE = 65536;
    vok::File_Stream& m_oOut;
    std::string m_sPiece;
};

// Writes a page as a file, whole; "-" is standard output. oData writes one JSON value.
void WritePage(const char* sPage, const std::string& sPath,
               const std::function<void(ScriptSink&)>& oData);

}  // namespace tools

#endif  // TOOLS_PAGE_H

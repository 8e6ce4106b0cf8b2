// SPDX-License-Identifier: MIT
#include "tools/page.h"

#include <string_view>

#include "tools/tree_file.h"

namespace tools {

void WritePage(const char* sPage, const std::string& sPath,
               const std::function<void(ScriptSink&)>& oData) {
    constexpr std::string_view DATA = "@DATA@";
    const std::string_view sAll(sPage);
    const std::size_t uData = sAll.find(DATA);
    WriteFile(sPath, {}, true, [&](vok::File_Stream& oOut) {
        oOut.Write(sAll.data(), uData);
        ScriptSink oSink(oOut);
        oData(oSink);
        oSink.Flush();
        const std::string_view sRest = sAll.substr(uData + DATA.size());
        oOut.Write(sRest.data(), sRest.size());
    });
}

}  // namespace tools

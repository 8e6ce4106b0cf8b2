// SPDX-License-Identifier: MIT
// What C++ answers: for each line FILE, depth limit, PATH of the file that is named, a line.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "vok/vok.h"

namespace {

using namespace vok;

std::string Line(const std::string& sFile, u3_t uDepth, const std::string& sPath) {
    Limits oLimits;
    if (uDepth != 0) oLimits.m_uDepth = uDepth;
    Load_Report oReport;
    Data oTree;
    try {
        if (sFile.ends_with(".json")) {
            File oIn{Str(sFile)};
            Json_Load(oTree, oIn, oLimits, &oReport);
        } else {
            Dgraph_LoadFromFile(oTree, sFile.c_str(), oLimits, &oReport);
        }
        oReport = {};  // what fails from here on has no place in the document
        std::ostringstream s;
        s << oTree.GetNodes() << ' ' << oTree.Hash().ToHex().CStr();
        for (const Data& o : oTree.GetNodeSet(sPath, oLimits)) {
            s << " | " << o.GetPath().CStr() << ' ' << Data_Node::TypeName(o.GetType()) << ' '
              << o.Hash().ToHex().CStr();
        }
        return s.str();
    } catch (const Msg_Exception& e) {
        std::string sText = e.what();
        sText.pop_back();
        std::ostringstream s;
        s << "error: " << sText << " @ " << oReport.m_uOffset << ' ' << oReport.m_uLine << ' '
          << oReport.m_uColumn << ' ' << oReport.m_oPath.CStr();
        return s.str();
    }
}

}  // namespace

int main(int argc, char** argv) {
    Msg::SetBanner(false);
    std::ifstream oCases(argc > 1 ? argv[1] : "");
    for (std::string sLine; std::getline(oCases, sLine);) {
        std::istringstream oFields(sLine);
        std::string sFile, sDepth, sPath;
        std::getline(oFields, sFile, '\t');
        std::getline(oFields, sDepth, '\t');
        std::getline(oFields, sPath, '\t');
        std::puts(Line(sFile, std::stoull(sDepth), sPath).c_str());
    }
    return 0;
}

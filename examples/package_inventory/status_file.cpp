// SPDX-License-Identifier: MIT
#include "examples/package_inventory/status_file.h"

#include <charconv>
#include <set>
#include <string_view>

#include "vok/base/msg.h"
#include "vok/base/str.h"
#include "vok/file/file.h"
#include "vok/file/scan.h"

namespace inventory {

namespace {

const std::set<std::string_view> NUMBERS = {"Installed-Size", "Size"};
const std::set<std::string_view> DEPENDENCIES = {"Breaks",     "Conflicts",   "Depends",
                                                 "Enhances",   "Pre-Depends", "Provides",
                                                 "Recommends", "Replaces",    "Suggests"};

constexpr std::string_view BLANKS = " \t\r\n";

std::string_view Trim(std::string_view s) {
    const std::size_t uFirst = s.find_first_not_of(BLANKS);
    if (uFirst == s.npos) return {};
    return s.substr(uFirst, s.find_last_not_of(BLANKS) - uFirst + 1);
}

// Cuts what stands before c off the front of s; all of it when there is no c.
std::string_view CutAt(std::string_view& s, char c) {
    const std::size_t uEnd = s.find(c);
    const std::string_view sHead = s.substr(0, uEnd);
    s = uEnd == s.npos ? std::string_view{} : s.substr(uEnd + 1);
    return sHead;
}

Alternative ParseAlternative(std::string_view s) {
    Alternative o;
    s = Trim(s);
    const std::string_view sWord = s.substr(0, s.find_first_of(" \t\n(["));
    s = Trim(s.substr(sWord.size()));
    const std::size_t uColon = sWord.find(':');
    o.sName = sWord.substr(0, uColon);
    if (uColon != sWord.npos) o.sArchitecture = sWord.substr(uColon + 1);
    if (s.starts_with('(')) {
        s.remove_prefix(1);
        o.sVersion = Trim(CutAt(s, ')'));
        s = Trim(s);
    }
    o.sRest = s;
    return o;
}

std::vector<Dependency> ParseDependencies(std::string_view s) {
    std::vector<Dependency> oAll;
    while (!Trim(s).empty()) {
        std::string_view sGroup = CutAt(s, ',');
        if (Trim(sGroup).empty()) continue;
        Dependency& oDependency = oAll.emplace_back();
        while (!Trim(sGroup).empty()) {
            oDependency.push_back(ParseAlternative(CutAt(sGroup, '|')));
        }
    }
    return oAll;
}

class Parser {
  public:
    Parser(const std::string& sPath, vok::File_Scan& oLines) : m_sPath(sPath), m_oLines(oLines) {}

    std::vector<Package> Run() {
        for (std::string_view sLine; m_oLines.ReadLine(sLine);) {
            ++m_uLine;
            if (sLine.find('\0') != sLine.npos) Fail("NUL byte: this is no package database");
            if (Trim(sLine).empty()) {
                EndStanza();
            } else if (sLine[0] == ' ' || sLine[0] == '\t') {
                if (m_sField.empty()) Fail("continuation without a field before it");
                m_sValue += '\n';
                m_sValue += sLine;
            } else {
                EndField();
                StartField(sLine);
            }
        }
        ++m_uLine;
        EndStanza();
        if (m_oPackages.empty()) {
            throw StatusError(m_sPath + ": no packages in it: this is no package database");
        }
        return std::move(m_oPackages);
    }

  private:
    [[noreturn]] void Fail(const std::string& sReason, std::size_t uLine = 0) const {
        throw StatusError(m_sPath + ":" + std::to_string(uLine != 0 ? uLine : m_uLine) + ": " +
                          sReason);
    }

    void StartField(std::string_view sLine) {
        if (sLine.find(':') == sLine.npos) Fail("expected 'Field: value'");
        m_sField = Trim(CutAt(sLine, ':'));
        if (m_sField.empty()) Fail("field without a name");
        m_sValue = Trim(sLine);
        m_uFieldLine = m_uLine;
    }

    void EndField() {
        if (m_sField.empty()) return;
        // The library keeps valid UTF-8 only: what is not is taken as Latin-1 right here, so
        // that the comparison at the end is one of equals.
        const std::string sValue = vok::Str(std::string_view(m_sValue)).CStr();
        const std::string sField = vok::Str(std::string_view(m_sField)).CStr();
        if (sField == "Package") {
            if (!m_oPackage.sName.empty()) Fail("second Package field in a stanza", m_uFieldLine);
            m_oPackage.sName = sValue;
        } else if (NUMBERS.contains(sField)) {
            Int32 iNumber = 0;
            const char* pEnd = sValue.data() + sValue.size();
            const auto oResult = std::from_chars(sValue.data(), pEnd, iNumber);
            if (oResult.ec != std::errc() || oResult.ptr != pEnd) {
                Fail(sField + " is no number of 32 bits: '" + sValue + "'", m_uFieldLine);
            }
            m_oPackage.oNumbers[sField] = iNumber;
        } else if (DEPENDENCIES.contains(sField)) {
            m_oPackage.oDependencies[sField] = ParseDependencies(sValue);
        } else {
            m_oPackage.oTexts[sField] = sValue;
        }
        m_bStanza = true;
        m_sField.clear();
    }

    void EndStanza() {
        EndField();
        if (!m_bStanza) return;
        if (m_oPackage.sName.empty()) Fail("stanza without a Package field ends here");
        m_oPackages.push_back(std::move(m_oPackage));
        m_oPackage = Package();
        m_bStanza = false;
    }

    const std::string& m_sPath;
    vok::File_Scan& m_oLines;
    std::size_t m_uLine = 0;
    std::size_t m_uFieldLine = 0;
    std::string m_sField;
    std::string m_sValue;
    bool m_bStanza = false;
    Package m_oPackage;
    std::vector<Package> m_oPackages;
};

}  // namespace

std::vector<Package> ReadStatusFile(const std::string& sPath, std::size_t& uBytes) {
    try {
        vok::File oFile(vok::Str(sPath.c_str()), "Tr");
        vok::File_Scan oLines(oFile);
        std::vector<Package> oPackages = Parser(sPath, oLines).Run();
        uBytes = oLines.Offset();
        return oPackages;
    } catch (const vok::Msg_Exception& e) {
        throw StatusError(std::string(Trim(e.what())));
    }
}

}  // namespace inventory

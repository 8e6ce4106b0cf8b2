// SPDX-License-Identifier: MIT
// vok inspect: bytes beside what they mean.
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/limits.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/standard_input.h"
#include "tools/text.h"
#include "vok/file/file.h"
#include "vok/inspect/inspect.h"
#include "vok/inspect/names.h"

namespace tools {

namespace {

using vok::Inspect_Field;

// ---- what is shown --------------------------------------------------------------

// The subtree at a path of names, positions and "*", as the paths of fields have them.
class Below {
  public:
    explicit Below(std::string_view sPath) {
        if (sPath.starts_with('/')) sPath.remove_prefix(1);
        while (!sPath.empty()) {
            const std::size_t uEnd = std::min(sPath.find('/'), sPath.size());
            const std::string_view sStep = sPath.substr(0, uEnd);
            if (sStep.empty() || sStep.find('@') != sStep.npos) {
                throw std::invalid_argument(Say("a path of names, positions and * is expected"));
            }
            m_asStep.emplace_back(sStep);
            sPath.remove_prefix(std::min(uEnd + 1, sPath.size()));
        }
    }
    [[nodiscard]] bool Has(std::string_view sPath) const {
        if (sPath.empty()) return false;
        for (const std::string& sStep : m_asStep) {
            if (sPath.size() < 2) return false;
            sPath.remove_prefix(1);
            const std::size_t uEnd = std::min(sPath.find('/'), sPath.size());
            const std::string_view sHere = sPath.substr(0, uEnd);
            const bool bIndex = sStep.find('[') != sStep.npos;
            const std::string_view sCompared = bIndex ? sHere : sHere.substr(0, sHere.find('['));
            if (sStep != "*" && sStep != sCompared) return false;
            sPath.remove_prefix(uEnd);
        }
        return true;
    }

  private:
    std::vector<std::string> m_asStep;
};

// Paths grow with the depth of what they lead to: of long ones the end tells most.
std::string PathText(std::string_view sPath) {
    constexpr std::size_t LONGEST = 400;
    if (sPath.size() <= LONGEST) return ShownPath(sPath);
    const std::size_t uFrom = std::min(sPath.find('/', sPath.size() - LONGEST), sPath.size());
    return "..." + Escaped(sPath.substr(uFrom));
}

// ---- lines for people -----------------------------------------------------------

class Lines {
  public:
    explicit Lines(bool bColoured) : m_oPalette(bColoured) {}

    void Add(const Inspect_Field& o) {
        if (o.m_uDocument != m_uDocument) {
            m_uDocument = o.m_uDocument;
            const std::string sName = o.m_sMember.empty() ? "" : ' ' + Quoted(o.m_sMember);
            Print("\nwithin, document " + std::to_string(o.m_uDocument) + sName + ":\n");
        }
        std::string sRest = Coloured(m_oPalette.sName, o.IsSkipped() ? "skipped" : o.m_sName, 16);
        const std::string sValue = ValueOf(o);
        if (!sValue.empty()) sRest += "  " + Coloured(m_oPalette.sValue, sValue, 0);
        if (IsStep(o)) {
            sRest += "  " + Coloured(m_oPalette.sType, "at " + PathText(o.m_sPath), 0);
        }
        if (!o.m_sFault.empty()) {
            sRest += "  " + Coloured(m_oPalette.sFault, "! " + Visible(o.m_sFault), 0);
        }
        AddBytes(o, sRest);
    }

  private:
    static constexpr std::size_t WIDTH = 12;  // bytes in a line
    static constexpr std::size_t LONGEST_TEXT = 48;

    static bool IsStep(const Inspect_Field& o) {
        return std::string_view(o.m_sName) == vok::inspect::STEP;
    }

    // Fields that fit two lines are shown whole, of others the first line.
    void AddBytes(const Inspect_Field& o, std::string sRest) {
        const bool bWhole = o.m_uLength <= 2 * WIDTH && o.m_uLength <= o.m_sBytes.size();
        std::size_t u = 0;
        do {
            std::string sHex = Hex(o.m_sBytes.substr(u, WIDTH), true);
            if (!bWhole && o.m_uLength > WIDTH) sHex += " ...";
            char sOffset[32];
            std::snprintf(sOffset, sizeof(sOffset), "%08llx  ",
                          static_cast<unsigned long long>(o.m_uOffset + u));
            if (!sRest.empty()) sHex.resize(std::max(sHex.size(), 3 * WIDTH + 3), ' ');
            std::string sLine = sOffset + sHex + (sRest.empty() ? "" : "  " + sRest);
            sLine.erase(sLine.find_last_not_of(' ') + 1);
            Print(sLine + '\n');
            sRest.clear();
            u += WIDTH;
        } while (bWhole && u < o.m_uLength);
    }
    static std::string ValueOf(const Inspect_Field& o) {
        if (o.IsSkipped()) return std::to_string(o.m_uLength) + " bytes";
        if (!o.m_bText) return Escaped(o.m_sValue);
        const std::string_view s = Beginning(o.m_sValue, LONGEST_TEXT);
        // A step is full of quotes.
        std::string sText = IsStep(o) ? Escaped(s) : Quoted(s);
        const bool bCut = s.size() < o.m_sValue.size();
        if (bCut) sText += "... (" + std::to_string(o.m_uLength) + " bytes)";
        return sText;
    }
    std::string Coloured(const char* sColour, std::string s, std::size_t uWidth) const {
        s.resize(std::max(s.size(), uWidth), ' ');
        return *sColour == 0 ? s : sColour + s + m_oPalette.sEnd;
    }

    Palette m_oPalette;
    vok::u2_t m_uDocument = 0;
};

// ---- lines of JSON --------------------------------------------------------------

void AddJson(const Inspect_Field& o) {
    rapidjson::StringBuffer oBuffer;
    rapidjson::Writer<rapidjson::StringBuffer> oOut(oBuffer);
    const auto oText = [&](const char* sKey, std::string_view s) {
        const vok::Utf8_Text oValid(s);
        oOut.Key(sKey);
        oOut.String(oValid.Data(), static_cast<rapidjson::SizeType>(oValid.Len()));
    };
    oOut.StartObject();
    oOut.Key("document");
    oOut.Uint(o.m_uDocument);
    if (!o.m_sMember.empty()) oText("member", o.m_sMember);
    oOut.Key("offset");
    oOut.Uint64(o.m_uOffset);
    oOut.Key("length");
    oOut.Uint64(o.m_uLength);
    oText("hex", Hex(o.m_sBytes, false));
    if (o.IsSkipped()) {
        oOut.Key("skipped");
        oOut.Bool(true);
    } else {
        oText("field", o.m_sName);
    }
    if (!o.m_sValue.empty() || o.m_bText) oText("value", o.m_sValue);
    if (!o.m_sPath.empty()) oText("path", PathText(o.m_sPath));
    if (!o.m_sFault.empty()) oText("fault", o.m_sFault);
    oOut.EndObject();
    Print(std::string(oBuffer.GetString(), oBuffer.GetSize()) + '\n');
}

// ---- the command ----------------------------------------------------------------

class Selection {
  public:
    explicit Selection(const InspectOptions& o) : m_oBelow(o.sPath), m_o(o) {}

    [[nodiscard]] bool Has(const Inspect_Field& o) {
        if (!m_o.sPath.empty() && !m_oBelow.Has(o.m_sPath)) return false;
        if (!m_o.uOffset) return true;
        // Places are told of documents, not of what they are wrapped in.
        if (o.m_uDocument == 0) m_bWrapped = m_bWrapped || IsWrapping(o);
        if (m_bWrapped && o.m_uDocument == 0) return false;
        return o.m_uOffset + std::max<vok::u3_t>(o.m_uLength, 1) > *m_o.uOffset;
    }

  private:
    static bool IsWrapping(const Inspect_Field& o) {
        const std::string_view sName(o.m_sName);
        return o.m_uOffset == 0 &&
               (sName == "zlib header" || sName == "gzip magic" || sName == "local header");
    }

    Below m_oBelow;
    const InspectOptions& m_o;
    bool m_bWrapped = false;
};

void Go(const std::string& sFile, const std::function<bool(const Inspect_Field&)>& oVisit) {
    if (sFile == "-") {
        StandardInputStream oIn;
        return vok::Inspect(oIn, oVisit, TheLimits());
    }
    vok::File oIn(vok::Str(sFile), "Tr");
    vok::Inspect(oIn, oVisit, TheLimits());
}

}  // namespace

int Inspect(const InspectOptions& o) {
    Lines oLines(!o.bPlain && WantsColour());
    Selection oSelection(o);
    vok::u3_t uShown = 0;
    bool bFaulty = false;
    Go(o.sFile, [&](const Inspect_Field& oField) {
        bFaulty = bFaulty || oField.IsSkipped() || !oField.m_sFault.empty();
        if (!oSelection.Has(oField)) return true;
        o.bJson ? AddJson(oField) : oLines.Add(oField);
        return ++uShown != o.uFields;
    });
    const bool bNowhere = uShown == 0 && (o.uOffset || !o.sPath.empty());
    if (bNowhere) Complain(Say("nothing at that place"));
    return bFaulty || bNowhere ? EXIT_NEGATIVE : EXIT_GOOD;
}

}  // namespace tools

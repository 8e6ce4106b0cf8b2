// SPDX-License-Identifier: MIT
#include "tools/complete.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "tools/input.h"
#include "tools/path.h"
#include "tools/shell_path.h"
#include "vok/data/succ_it.h"

namespace tools {

namespace {

using vok::Data;

// Larger files are not read while somebody waits for a word, nor more words shown.
constexpr std::uintmax_t LARGEST_FILE = 16 << 20;
constexpr std::size_t MOST_WORDS = 1000;

[[nodiscard]] bool IsPath(const CLI::Option& o) {
    for (const char* s : {"PATH", "TO", "--path", "--records", "--ignore"}) {
        if (o.check_name(s) || o.get_name(true) == s) return true;
    }
    return false;
}

// "TEXT:{a,b,c}": the only values that an option takes.
std::vector<std::string> ValuesOf(const CLI::Option& o) {
    const std::string sType = o.get_type_name();
    const std::size_t uOpen = sType.find('{');
    const std::size_t uClose = sType.find('}');
    if (uOpen == std::string::npos || uClose == std::string::npos) return {};
    return CLI::detail::split(sType.substr(uOpen + 1, uClose - uOpen - 1), ',');
}

// The nodes below those at the path in front of the last slash, by their names; with positions
// where there are several.
std::vector<std::string> PathsIn(const std::string& sFile, const std::string& sWord) {
    if (sFile.empty() || sFile == "-") return {};
    if (std::filesystem::file_size(ToPath(sFile)) > LARGEST_FILE) return {};
    const std::string sParent = sWord.substr(0, sWord.rfind('/') + 1);
    const bool bAny = sParent.ends_with("//");  // anything may follow
    if (bAny) return {};
    const Input oIn = Load(sFile);
    const std::string sAt = sParent.size() > 1 ? sParent.substr(0, sParent.size() - 1) : "/";
    const vok::Data_NodeSet oFound = oIn.oTree.GetNodeSet(LibraryPath(sAt));
    std::vector<std::string> as;
    for (std::size_t u = 0; u < oFound.Size() && as.size() < MOST_WORDS; ++u) {
        for (vok::Data_SuccIt o = oFound.GetNth(u).GetSuccIt(); o.SkipZombies(); o.Advance()) {
            const Data oNode = o.GetData();
            const std::string sPath = ShownPath(oNode.GetPath().View());
            const std::string sStep = sPath.substr(sPath.rfind('/') + 1);
            const char* sName = oNode.GetName();
            const bool bOne = oFound.GetNth(u).GetSuccCount(sName != nullptr ? sName : "") == 1;
            as.push_back((sParent.empty() ? "/" : sParent) +
                         (bOne ? sStep.substr(0, sStep.rfind('[')) : sStep));
            if (as.size() == MOST_WORDS) break;
        }
    }
    return as;
}

std::vector<const CLI::App*> SubcommandsOf(const CLI::App& oApp) {
    return oApp.get_subcommands([](const CLI::App*) { return true; });
}

// The words in front of the one that is to be completed, as the parser would take them.
class Parsed {
  public:
    Parsed(const CLI::App& oTop, const std::vector<std::string>& asWord) : m_pApp(&oTop) {
        for (std::size_t u = 0; u + 1 < asWord.size(); ++u) Take(asWord[u]);
    }
    [[nodiscard]] const CLI::App& App() const noexcept { return *m_pApp; }
    // The option whose value comes; null where another word comes.
    [[nodiscard]] const CLI::Option* Waiting() const noexcept { return m_pWaiting; }
    [[nodiscard]] const CLI::Option* NextPositional() const {
        const CLI::Option* pLast = nullptr;
        std::size_t uNth = 0;
        for (const CLI::Option* p : m_pApp->get_options()) {
            if (!p->get_positional()) continue;
            pLast = p;
            if (uNth++ == m_asPositional.size()) return p;
        }
        const bool bMany = pLast != nullptr && pLast->get_items_expected_max() > 1;
        return bMany ? pLast : nullptr;
    }
    [[nodiscard]] std::string File() const {
        return m_asPositional.empty() ? std::string() : m_asPositional[0];
    }

  private:
    void Take(const std::string& s) {
        if (m_pWaiting != nullptr) {
            m_pWaiting = nullptr;
        } else if (!m_bOnlyWords && s == "--") {
            m_bOnlyWords = true;
        } else if (!m_bOnlyWords && s.size() > 1 && s[0] == '-') {
            const CLI::Option* const p = Find(s);
            if (p != nullptr && p->get_items_expected_max() > 0) m_pWaiting = p;
        } else if (const CLI::App* p = Subcommand(s); p != nullptr) {
            m_pApp = p;
        } else {
            m_asPositional.push_back(s);
        }
    }
    [[nodiscard]] const CLI::App* Subcommand(const std::string& sName) const {
        for (const CLI::App* p : SubcommandsOf(*m_pApp)) {
            if (p->get_name() == sName) return p;
        }
        return nullptr;
    }
    [[nodiscard]] const CLI::Option* Find(const std::string& sName) const {
        for (const CLI::App* pApp = m_pApp; pApp != nullptr; pApp = pApp->get_parent()) {
            const CLI::Option* const p = pApp->get_option_no_throw(sName);
            if (p != nullptr) return p;
        }
        return nullptr;
    }

    const CLI::App* m_pApp;
    const CLI::Option* m_pWaiting = nullptr;
    bool m_bOnlyWords = false;
    std::vector<std::string> m_asPositional;
};

void AddOptions(const CLI::App& oApp, std::vector<std::string>& as) {
    for (const CLI::App* pApp = &oApp; pApp != nullptr; pApp = pApp->get_parent()) {
        for (const CLI::Option* p : pApp->get_options()) {
            for (const std::string& s : p->get_lnames()) as.push_back("--" + s);
        }
    }
}

std::vector<std::string> Candidates(const CLI::App& oApp, const std::vector<std::string>& asWord) {
    const Parsed o(oApp, asWord);
    const std::string& sWord = asWord.back();
    const CLI::Option* const pValue = o.Waiting() != nullptr ? o.Waiting() : o.NextPositional();
    std::vector<std::string> as;
    if (o.Waiting() == nullptr && sWord.starts_with('-')) {
        AddOptions(o.App(), as);
        return as;
    }
    for (const CLI::App* p : SubcommandsOf(o.App())) {
        if (!p->get_group().empty()) as.push_back(p->get_name());
    }
    if (pValue == nullptr) return as;
    if (IsPath(*pValue)) return PathsIn(o.File(), sWord);
    return !as.empty() ? as : ValuesOf(*pValue);
}

}  // namespace

std::vector<std::string> Completions(const CLI::App& oApp, const std::vector<std::string>& asWord) {
    if (asWord.empty()) return {};
    std::vector<std::string> as;
    try {
        as = Candidates(oApp, asWord);
    } catch (const std::exception&) {
        return {};
    }
    std::erase_if(as, [&](const std::string& s) { return !s.starts_with(asWord.back()); });
    std::sort(as.begin(), as.end());
    as.erase(std::unique(as.begin(), as.end()), as.end());
    return as;
}

std::string CompletionScript(const std::string& sShell) {
    if (sShell == "bash") {
        return "_vok() {\n"
               "    local IFS=$'\\n'\n"
               "    COMPREPLY=($(\"${COMP_WORDS[0]}\" complete -- "
               "\"${COMP_WORDS[@]:1:COMP_CWORD}\" 2>/dev/null))\n"
               "    [[ ${COMPREPLY[0]-} != /* ]] || compopt -o nospace\n"
               "}\n"
               "complete -o default -F _vok vok\n";
    }
    if (sShell == "zsh") {
        return "#compdef vok\n"
               "_vok() {\n"
               "    local -a found\n"
               "    found=(\"${(@f)$(\"${words[1]}\" complete -- "
               "\"${(@)words[2,CURRENT]}\" 2>/dev/null)}\")\n"
               "    found=(\"${(@)found:#}\")\n"
               "    if (( $#found )); then compadd -S '' -a found; else _files; fi\n"
               "}\n"
               "compdef _vok vok\n";
    }
    return "function __vok\n"
           "    set -l words (commandline -opc) (commandline -ct)\n"
           "    $words[1] complete -- $words[2..-1] 2>/dev/null\n"
           "end\n"
           "complete -c vok -a '(__vok)'\n";
}

}  // namespace tools

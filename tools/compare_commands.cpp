// SPDX-License-Identifier: MIT
#include "tools/compare_commands.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/pager.h"

namespace tools {

namespace {

// One each: an option that takes several at once would take the files.
CLI::Option* AddList(CLI::App& oApp, const char* sName, std::vector<std::string>& as,
                     const char* sWhat) {
    return oApp.add_option(sName, as, sWhat)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

std::array<CLI::Option*, 3> AddCompareOptions(CLI::App& oApp, vok::Data_DiffOptions& o) {
    auto* pKey = AddList(
        oApp, "-k,--key", o.m_asKey,
        "What tells nodes of one name apart: an attribute (@id), a value below (id), or both "
        "(head/@id); of several the first that a node has");
    auto* pIgnore = AddList(oApp, "-i,--ignore", o.m_asIgnore,
                            "Leave out what is at this path; attributes as PATH/@name");
    auto* pDelta =
        oApp.add_option("--delta", o.m_dDelta, "Reals that are no further apart are the same")
            ->check(CLI::NonNegativeNumber);
    return {pKey, pIgnore, pDelta};
}

const char* const FORMS = "Form of OUT instead of what its ending tells";

void AddDiff(CLI::App& oApp, int& iExit) {
    auto* p = oApp.add_subcommand("diff", "Compare two trees, whatever form they are in");
    auto o = std::make_shared<DiffOptions>();
    p->add_option("A", o->sA, "File to read, - for standard input")->required();
    p->add_option("B", o->sB, "File to compare it with")->required();
    const auto apCompare = AddCompareOptions(*p, o->oCompare);
    auto* pByPosition = p->add_flag("--by-position", o->bByPosition,
                                    "Compare the first of a name with the first, and so on");
    for (CLI::Option* pOther : apCompare) pByPosition->excludes(pOther);
    auto* pQuiet = p->add_flag("-q,--quiet", o->bQuiet, "Only the exit status");
    auto* pJson = p->add_flag("--json", o->bJson,
                              "A JSON object a line: what, path in A (a) and B (b), old, new")
                      ->excludes(pQuiet);
    p->add_flag("--html", o->bHtml,
                "A page for a browser, which needs nothing else: both sides beside each other")
        ->excludes(pQuiet)
        ->excludes(pJson);
    auto* pOut = p->add_option("-o,--patch", o->sOut,
                               "Write what makes B of A to this file, for vok patch; with --html "
                               "the page, else it goes to standard output")
                     ->excludes(pQuiet)
                     ->excludes(pJson);
    p->add_option("--to", o->sTo, FORMS)
        ->check(CLI::IsMember({"xml", "dgraph", "dump", "json"}))
        ->needs(pOut);
    p->footer(
        "Nodes of one name are aligned: one that was put in, taken out or moved is one "
        "difference.\n"
        "Example: vok diff old.xml new.dgraph --key @id --ignore //order/@time\n"
        "         vok diff old.xml new.xml --delta 1e-9 --json\n"
        "         vok diff old.xml new.xml --html -o differences.html\n"
        "         vok diff old.xml new.xml -o changes.xml\n"
        "Exit status 0 when they are the same, 1 when they differ.");
    p->callback([o, &iExit] {
        AllowPager();
        iExit = Diff(*o);
    });
}

void AddPatch(CLI::App& oApp, int& iExit) {
    auto* p = oApp.add_subcommand("patch", "Apply the differences that vok diff -o has written");
    auto o = std::make_shared<PatchOptions>();
    p->add_option("IN", o->sIn, "File to read, - for standard input")->required();
    p->add_option("PATCH", o->sPatch, "The differences; any form and wrapping")->required();
    p->add_option("-o,--out", o->sOut, "File to write, - for standard output; may be IN")
        ->required();
    p->add_option("--to", o->sTo, FORMS)->check(CLI::IsMember({"xml", "dgraph", "dump", "json"}));
    p->footer(
        "All of it or nothing: what the patch changes or removes must be there as it was.\n"
        "Example: vok patch orders.xml changes.xml -o orders.xml\n"
        "Exit status 1 when the patch does not fit, which is told with the path.");
    p->callback([o, &iExit] { iExit = Patch(*o); });
}

void AddMerge(CLI::App& oApp, int& iExit) {
    auto* p = oApp.add_subcommand("merge", "Make one tree of two that were made of a third one");
    auto o = std::make_shared<MergeOptions>();
    p->add_option("BASE", o->sBase, "What both were made of, - for standard input")->required();
    p->add_option("A", o->sA, "File with the changes of one side")->required();
    p->add_option("B", o->sB, "File with those of the other side")->required();
    p->add_option("-o,--out", o->sOut, "File to write, - for standard output; may be A")
        ->required();
    p->add_option("--to", o->sTo, FORMS)->check(CLI::IsMember({"xml", "dgraph", "dump", "json"}));
    AddCompareOptions(*p, o->oCompare);
    auto* pOurs = p->add_flag("--ours", o->bOurs, "Take A's where both have changed the same");
    p->add_flag("--theirs", o->bTheirs, "Take B's")->excludes(pOurs);
    p->footer(
        "Conflicts are told on standard error: the path in BASE, what is there (=), and what A "
        "(<)\n"
        "and B (>) have made of it. Nothing is written then, unless a side is named.\n"
        "Example: vok merge base.xml mine.xml yours.xml --key @id -o both.xml\n"
        "Exit status 1 when there are conflicts.");
    p->callback([o, &iExit] { iExit = Merge(*o); });
}

}  // namespace

void AddCompareCommands(CLI::App& oApp, int& iExit) {
    AddDiff(oApp, iExit);
    AddPatch(oApp, iExit);
    AddMerge(oApp, iExit);
}

}  // namespace tools

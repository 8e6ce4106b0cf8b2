// SPDX-License-Identifier: MIT
#include "tools/edit_commands.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/text.h"

namespace tools {

namespace {

struct Verb {
    Edit::Kind eKind;
    const char* sName;
    const char* sWhat;
    const char* sExample;
};
constexpr Verb VERBS[] = {
    {Edit::Set, "set", "Give nodes a value, or an attribute one",
     "vok set orders.xml '//order[@id=\"7\"]/price' 9.5 -i"},
    {Edit::Add, "add", "Give nodes a new successor",
     "vok add orders.xml /order[0] note 'urgent' -i"},
    {Edit::Delete, "delete", "Delete nodes with all below them, or attributes",
     "vok delete orders.xml '//order/@time' -o small.dgraph"},
    {Edit::Move, "move", "Move nodes with all below them",
     "vok move orders.xml /order[3] /archive -i"},
    {Edit::Rename, "rename", "Give nodes another name", "vok rename orders.xml //price cost -i"},
};

const char* const PLACE = "Place among the nodes of its name, from 0; behind them if not told";

// What an edit consists of, without the file.
void AddWords(CLI::App& o, Edit& oEdit) {
    const bool bAttributes = oEdit.eKind == Edit::Set || oEdit.eKind == Edit::Delete;
    o.add_option("PATH", oEdit.sPath,
                 bAttributes ? "Nodes, or attributes of nodes: /order/@state" : "Nodes")
        ->required();
    const auto oAddValue = [&] {
        return o.add_option_function<std::string>(
            "VALUE", [&oEdit](const std::string& s) { oEdit.sValue = s; },
            "As vok get -0 prints it");
    };
    const auto oAddPlace = [&] { o.add_option("--at", oEdit.uPlace, PLACE); };
    const auto oAddType = [&] {
        o.add_option("--type", oEdit.sType,
                     "Type of the value; without it the one that the node has, else string")
            ->check(CLI::IsMember(TypeNames()));
    };
    switch (oEdit.eKind) {
        case Edit::Set:
            oAddValue()->required();
            oAddType();
            break;
        case Edit::Add:
            o.add_option("NAME", oEdit.sName, "Name of the new node")->required();
            oAddValue();
            oAddType();
            oAddPlace();
            break;
        case Edit::Delete: break;
        case Edit::Move:
            o.add_option("TO", oEdit.sTo, "The node whose successors they become")->required();
            oAddPlace();
            break;
        case Edit::Rename:
            o.add_option("NAME", oEdit.sName, "The new name")->required();
            oAddPlace();
            break;
    }
}

// One that is written in a word: "set /a 5".
Edit ParseEdit(const std::string& sLine) {
    std::vector<std::string> asWord = WordsOf(sLine);
    for (const Verb& oVerb : VERBS) {
        if (asWord.empty() || asWord[0] != oVerb.sName) continue;
        Edit o;
        o.eKind = oVerb.eKind;
        CLI::App oApp;
        oApp.allow_windows_style_options(false);
        oApp.set_help_flag();
        AddWords(oApp, o);
        std::reverse(asWord.begin(), asWord.end());
        asWord.pop_back();
        try {
            oApp.parse(asWord);
        } catch (const CLI::ParseError& oError) {
            throw std::invalid_argument(Visible(sLine) + ": " + oError.what());
        }
        return o;
    }
    throw std::invalid_argument("no edit: " + Visible(sLine));
}

void AddFiles(CLI::App& o, EditOptions& oOptions) {
    auto* pInPlace =
        o.add_flag("-i,--in-place", oOptions.bInPlace, "Write FILE anew, in its form and wrapping");
    o.add_option("-o,--output", oOptions.sOut,
                 "File to write, - for standard output; its ending tells the form")
        ->excludes(pInPlace);
    o.add_option("--to", oOptions.sTo, "Form of it instead; without either that of FILE")
        ->check(CLI::IsMember({"xml", "dgraph", "dump", "json"}))
        ->excludes(pInPlace);
    o.add_flag("--lossless", oOptions.bLossless,
               "Write nothing if what FILE has beside its tree, as comments, would be lost");
}

const char* const TOLD =
    "All of it is done, or nothing. Exit status 1 when nothing is at a path.\n"
    "Types: boolean, integer, long, float, double, char, date, string, binary (Base64), quad\n"
    "(1,2,3,4), link (a path), empty.";

}  // namespace

void AddEditCommands(CLI::App& oApp, int& iExit) {
    for (const Verb& oVerb : VERBS) {
        auto* p = oApp.add_subcommand(oVerb.sName, oVerb.sWhat);
        auto o = std::make_shared<EditOptions>();
        o->aoEdit.resize(1);
        o->aoEdit[0].eKind = oVerb.eKind;
        p->add_option("FILE", o->sFile, "File to read, - for standard input")->required();
        AddWords(*p, o->aoEdit[0]);
        AddFiles(*p, *o);
        p->footer(std::string("Example: ") + oVerb.sExample + '\n' + TOLD);
        p->callback([o, &iExit] { iExit = EditFile(*o); });
    }
    auto* p = oApp.add_subcommand("edit", "Several changes at once");
    auto o = std::make_shared<EditOptions>();
    auto asEdit = std::make_shared<std::vector<std::string>>();
    p->add_option("FILE", o->sFile, "File to read, - for standard input")->required();
    p->add_option("-e,--edit", *asEdit,
                  "set, add, delete, move or rename with what follows FILE there, in one word")
        ->required()
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    AddFiles(*p, *o);
    p->footer(std::string("Example: vok edit orders.xml -e 'set /order[0]/price 9.5' "
                          "-e 'delete //note' -i\n"
                          "Words of an edit stand between blanks, or in quotes.\n") +
              TOLD);
    p->callback([o, asEdit, &iExit] {
        for (const std::string& s : *asEdit) o->aoEdit.push_back(ParseEdit(s));
        iExit = EditFile(*o);
    });
}

}  // namespace tools

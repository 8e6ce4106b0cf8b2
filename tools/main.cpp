// SPDX-License-Identifier: MIT
// The program "vok": trees in files, without writing code.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/commands.h"
#include "tools/compare_commands.h"
#include "tools/complete.h"
#include "tools/csv.h"
#include "tools/edit_commands.h"
#include "tools/limits.h"
#include "tools/output.h"
#include "tools/pager.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/text.h"
#include "vok/base/msg.h"
#include "vok/sys/sys.h"

namespace {

using namespace tools;

// What every command answers with; set by the one that was chosen.
int g_iExit = EXIT_GOOD;

const char* const PATHS =
    "PATH is a path such as /order[3]/price, which is the price of the fourth order: positions "
    "count\n"
    "from 0. * is any name, // any depth, [@id=\"7\"] asks for an attribute. \"/\" is the top "
    "node;\n"
    "its name is no step. Names with other characters stand in quotes: '/\"Start menu\"/\"a.b\"'.";
// For options that are paths of nodes.
std::string ToLibrary(const std::string& sPath) {
    return LibraryPath(sPath);
}

CLI::Option* AddJobs(CLI::App& oApp, unsigned& uAtOnce, const char* sWhat) {
    return oApp.add_option("-j,--jobs", uAtOnce, sWhat)->check(CLI::Range(1u, MOST_AT_ONCE));
}

void AddConvert(CLI::App& oApp) {
    auto* p = oApp.add_subcommand("convert", "Convert a file to another form");
    auto o = std::make_shared<ConvertOptions>();
    p->add_option("IN", o->sIn, "File to read, - for standard input; any form and wrapping")
        ->required();
    p->add_option("OUT", o->sOut,
                  "File to write, - for standard output; with --into another one to read");
    auto asMore = std::make_shared<std::vector<std::string>>();
    p->add_option("MORE", *asMore, "More files to read, with --into");
    auto* pInto = p->add_option(
        "--into", o->sInto,
        "Convert all files that are named: each to one of its name in this folder, with "
        "the ending that --to tells");
    AddJobs(*p, o->uAtOnce, "Files to convert at the same time, with --into")->needs(pInto);
    p->add_option("--from", o->sFrom, "Form of IN instead of what its content tells")
        ->check(CLI::IsMember({"xml", "dgraph", "dump", "json", "csv"}));
    p->add_option_function<std::string>("--separator", SetSeparator,
                                        "What stands between the fields of a csv file: a "
                                        "character, or tab; else its first lines tell");
    p->add_flag_callback(
        "--no-header", [] { TheCsvForm().bHeader = false; },
        "The first line of a csv file is a row, and does not name the columns");
    p->add_flag_callback(
        "--ragged", [] { TheCsvForm().bRagged = true; },
        "Take the rows of a csv file that have too few or too many fields, or a quote too few");
    p->add_option("--to", o->sTo, "Form of OUT instead of what its ending tells")
        ->check(CLI::IsMember({"xml", "dgraph", "dump", "json", "jsonl", "csv"}));
    p->add_option(
         "--records", o->sRecords,
         "Write every node at this path by itself: a line each of JSON Lines, whose default "
         "is \"/*\"; of other forms a file each, in the folder OUT")
        ->transform(ToLibrary);
    p->add_option("--dgraph-version", o->sVersion, "Version of DGraph documents")
        ->capture_default_str();
    auto* pCompress = p->add_flag("--compress", o->bCompress, "Write a zlib stream");
    p->add_flag("--zip", o->bZip, "Write a zip archive with one member")->excludes(pCompress);
    p->add_flag("--compact", o->bCompact, "Write JSON on one line");
    p->add_flag("--attachable", o->bAttachable,
                "Write a dump that programs use where it lies, without loading it");
    p->add_flag("--lossless", o->bLossless, "Write nothing if OUT would not keep all of IN");
    p->footer(
        "Example: vok convert orders.xml orders.dgraph --compress\n"
        "         vok convert orders.dgraph orders.jsonl\n"
        "         vok convert people.csv people.xml --separator ';'\n"
        "         vok convert *.xml --into converted --to dgraph -j 4\n"
        "OUT is compressed with gzip if its name ends in .gz. What OUT does not keep is told on\n"
        "standard error, a line for each kind of loss.\n"
        "JSON keeps all of a tree and loads from anywhere: members are successors by name, arrays\n"
        "those of one name; what plain JSON does not have is {\"#type\": ..., \"#value\": ...}.\n"
        "JSON Lines (jsonl) are for other programs: each record is an object with its attributes\n"
        "as \"@name\", its successors by name, those of a name that comes more than once anywhere "
        "in\n"
        "that place as a list, and beside attributes its value as \"#value\".\n"
        "Csv files are told by their endings, .csv or .tsv, or with --from: each row is a node\n"
        "\"row\" with a successor for each column; columns have the narrowest type that all of\n"
        "their fields have. Into one go the nodes below the top whose successors are scalars.\n"
        "Documents are read piece by piece, however large they are; the whole tree is held for\n"
        "dumps, JSON and csv files, for links, and for XML whose elements are not in the order of "
        "their "
        "names.");
    p->callback([o, asMore] {
        if (o->sInto.empty()) {
            if (o->sOut.empty()) throw CLI::RequiredError("OUT");
            if (!asMore->empty()) throw CLI::ExtrasError("convert", *asMore);
        } else {
            o->asIn = *asMore;
            if (!o->sOut.empty()) o->asIn.insert(o->asIn.begin(), o->sOut);
            o->asIn.insert(o->asIn.begin(), o->sIn);
            o->sOut.clear();
        }
        g_iExit = Convert(*o);
    });
}

void AddShow(CLI::App& oApp) {
    auto* p = oApp.add_subcommand("show", "Show a tree, or the parts of it at a path");
    auto o = std::make_shared<ShowOptions>();
    p->add_option("FILE", o->sFile, "File to read, - for standard input")->required();
    p->add_option("PATH", o->sPath, "What to show")->capture_default_str()->transform(ToLibrary);
    // By pointers: to look for an option by its name ends the process where there is no memory.
    auto* pDepth = p->add_option("--depth", o->uDepth, "Levels to show below that");
    p->add_flag("--plain", o->bPlain, "No colours, also on a terminal");
    auto* pJson = p->add_flag("--json", o->bJson,
                              "A JSON array of nodes: name, type, attributes, value, successors");
    auto* pHtml = p->add_flag("--html", o->bHtml,
                              "A page for a browser, which needs nothing else: opens level by "
                              "level, searches, follows links, copies paths")
                      ->excludes(pJson)
                      ->excludes(pDepth);
    p->add_flag("--bytes", o->bBytes, "With the bytes of each node in DGraph documents and XML")
        ->needs(pHtml);
    p->add_option("-o,--output", o->sOut, "File for the page; else standard output")->needs(pHtml);
    p->footer(std::string(PATHS) +
              "\nExample: vok show orders.dgraph /order[0] --depth 1\n"
              "         vok show orders.dgraph --html --bytes -o orders.html");
    p->callback([o] {
        AllowPager();
        g_iExit = o->bHtml ? ShowHtml(*o) : o->bJson ? ShowJson(*o) : Show(*o);
    });
}

void AddGet(CLI::App& oApp) {
    auto* p =
        oApp.add_subcommand("get", "Print what is at a path: values one a line, trees indented");
    auto o = std::make_shared<GetOptions>();
    p->add_option("FILE", o->sFile, "File to read, - for standard input")->required();
    p->add_option("PATH", o->sPath, "Nodes to print; /order/@state are attributes of nodes")
        ->required();
    auto* pNull =
        p->add_flag("-0,--null", o->bNull,
                    "End values with a NUL and print them as they are; else line breaks and other "
                    "control characters are printed as \\n, \\xHH");
    auto* pCount = p->add_flag("--count", o->bCount, "Print how many there are");
    auto* pPaths = p->add_flag("--paths", o->bPaths, "Print the path of each");
    pCount->excludes(pNull)->excludes(pPaths);
    p->add_flag("--json", o->bJson, "Print each as JSON, one a line")->excludes(pNull);
    p->add_option("--default", o->sDefault, "What to print when nothing is there; status 0 then")
        ->excludes(pCount);
    p->footer(std::string(PATHS) +
              "\nExample: vok get orders.xml '//order[@id=\"7\"]/price' --default 0\n"
              "Exit status 1 when nothing is there.");
    p->callback([o] {
        AllowPager();
        g_iExit = Get(*o);
    });
}

void AddFileCommands(CLI::App& oApp) {
    auto* pInfo = oApp.add_subcommand("info", "Tell the form, version and contents of a file");
    auto sFile = std::make_shared<std::string>();
    auto bJson = std::make_shared<bool>(false);
    pInfo->add_option("FILE", *sFile, "File to read, - for standard input")->required();
    pInfo->add_flag("--json", *bJson, "A JSON object");
    pInfo->footer("Example: vok info orders.dgraph.gz --json");
    pInfo->callback([sFile, bJson] { g_iExit = Info(*sFile, *bJson); });

    auto* pCheck = oApp.add_subcommand("check", "Load files and report the first fault of each");
    auto o = std::make_shared<CheckOptions>();
    pCheck->add_option("FILE", o->asFile, "Files to read, - for standard input")->required();
    AddJobs(*pCheck, o->uAtOnce, "Files to check at the same time");
    pCheck->add_flag("--json", o->bJson,
                     "A JSON object a line: file, good, form and nodes, or fault and its place");
    pCheck->footer(
        "A file is faulty also when it was cut short, or when bytes stand behind its document. "
        "Exit\n"
        "status 1 when one of them is faulty, 2 when one could not be read.\n"
        "Example: vok check -j 4 *.dgraph");
    pCheck->callback([o] {
        if (o->bJson) SpeakEnglish();
        g_iExit = Check(*o);
    });
}

void AddHash(CLI::App& oApp) {
    auto* p =
        oApp.add_subcommand("hash", "Print what tells trees apart, whatever form they are in");
    auto o = std::make_shared<HashOptions>();
    p->add_option("FILE", o->asFile, "Files to read, - for standard input")->required();
    AddJobs(*p, o->uAtOnce, "Files to hash at the same time");
    p->add_option("--path", o->sPath, "Hash the nodes at this path, each by itself")
        ->capture_default_str()
        ->transform(ToLibrary);
    p->add_flag("--sha256", o->bSha256,
                "SHA-256, for signatures; else XXH3 with 128 bits, for telling apart only");
    p->add_flag("--json", o->bJson, "A JSON object a line: file, path, hash");
    p->footer(
        "A line for each, as of sha256sum. Equal trees have the same hash in every form and\n"
        "wrapping.\n"
        "Example: vok hash orders.xml orders.dgraph.gz\n"
        "A file that was cut short, or with bytes behind its document, has none: exit status 1.");
    p->callback([o] { g_iExit = Hash(*o); });
}

void AddInspect(CLI::App& oApp) {
    auto* p = oApp.add_subcommand("inspect", "Show bytes beside what they mean");
    auto o = std::make_shared<InspectOptions>();
    p->add_option("FILE", o->sFile, "File to read, - for standard input")->required();
    p->add_option("--path", o->sPath, "Only what is at this path of names, positions and *")
        ->transform(ToLibrary);
    p->add_option("--offset", o->uOffset,
                  "From this byte of the document on, as messages name it; 0x for hexadecimal");
    p->add_option("--fields", o->uFields, "How many fields to show");
    p->add_flag("--plain", o->bPlain, "No colours, also on a terminal");
    p->add_flag("--json", o->bJson, "A line of JSON for each field");
    p->footer(
        "DGraph documents and native dumps, as they are, compressed or in zip archives: first the\n"
        "fields of the wrapping, then those of each document in it. Damaged files are shown up to\n"
        "and past their faults: what cannot be told is skipped.\n"
        "Example: vok inspect damaged.dgraph --offset 0x1a40 --fields 20\n"
        "Exit status 1 when something is wrong, or when nothing is there.");
    p->callback([o] {
        AllowPager();
        if (o->bJson) SpeakEnglish();
        g_iExit = Inspect(*o);
    });

    auto* pSalvage = oApp.add_subcommand("salvage", "Write what can be read of a DGraph document");
    auto sIn = std::make_shared<std::string>();
    auto sOut = std::make_shared<std::string>();
    pSalvage->add_option("IN", *sIn, "File to read, - for standard input")->required();
    pSalvage->add_option("OUT", *sOut, "File to write, - for standard output")->required();
    pSalvage->footer(
        "OUT is a DGraph document that loads, without a wrapping. What is wrong with IN is told "
        "on\n"
        "standard error. Exit status 0 when IN was whole, 1 when something is gone, 2 when there "
        "is\n"
        "nothing to be read.\n"
        "Example: vok salvage damaged.dgraph saved.dgraph");
    pSalvage->callback([sIn, sOut] { g_iExit = Salvage(*sIn, *sOut); });
}

void AddZip(CLI::App& oApp) {
    auto* pZip = oApp.add_subcommand("zip", "Work with zip archives");
    pZip->require_subcommand(1);
    struct Options {
        std::string sArchive;
        std::string sFolder = ".";
        std::vector<std::string> asFile;
        bool bStore = false;
        bool bJson = false;
    };
    auto o = std::make_shared<Options>();
    const auto oAdd = [&](const char* sName, const char* sWhat, const char* sExample) {
        auto* p = pZip->add_subcommand(sName, sWhat);
        p->footer(std::string("Example: vok zip ") + sExample);
        p->add_option("ARCHIVE", o->sArchive, "The archive")->required();
        return p;
    };
    auto* pList = oAdd("list", "List the members", "list archive.zip");
    pList->add_flag("--json", o->bJson, "A JSON object a line: name, size, packed, date, crc");
    pList->callback([o] { g_iExit = ZipList(o->sArchive, o->bJson); });
    oAdd("test", "Read every member and check its sum", "test archive.zip")->callback([o] {
        g_iExit = ZipTest(o->sArchive);
    });
    auto* pExtract = oAdd("extract", "Write members as files; never outside of the folder",
                          "extract archive.zip orders.xml -d extracted");
    pExtract->add_option("MEMBER", o->asFile, "Members to extract; all when none is named");
    pExtract->add_option("-d,--directory", o->sFolder, "Where to")->capture_default_str();
    pExtract->callback([o] { g_iExit = ZipExtract(o->sArchive, o->sFolder, o->asFile); });
    auto* pAdd = oAdd("add", "Append files and folders; makes the archive when it is missing",
                      "add archive.zip orders.dgraph");
    pAdd->add_option("FILE", o->asFile, "What to add")->required();
    pAdd->add_flag("--store", o->bStore, "Do not compress");
    pAdd->callback([o] { g_iExit = ZipAdd(o->sArchive, o->asFile, o->bStore); });
}

void AddCompletion(CLI::App& oApp) {
    auto* p = oApp.add_subcommand("completion", "Print what makes a shell complete words");
    auto sShell = std::make_shared<std::string>();
    p->add_option("SHELL", *sShell, "Which one")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    p->footer(
        "Example: vok completion bash\n"
        "bash: source <(vok completion bash), in ~/.bashrc\n"
        "zsh: vok completion zsh >_vok, in a folder of $fpath\n"
        "fish: vok completion fish >~/.config/fish/completions/vok.fish\n"
        "Commands, options and their values are completed, and paths in the file that was named.");
    p->callback([sShell] { Print(CompletionScript(*sShell)); });

    auto* pWords = oApp.add_subcommand("complete", "For those scripts")->group("");
    auto asWord = std::make_shared<std::vector<std::string>>();
    pWords->add_option("WORD", *asWord);
    pWords->callback([asWord, &oApp] {
        for (const std::string& s : Completions(oApp, *asWord)) Print(s + '\n');
    });
}

// What is wrong comes from the command line or from files: nothing in it may play with a terminal.
int Fail(const std::exception& oError) {
    if (dynamic_cast<const std::bad_alloc*>(&oError) != nullptr) {
        Complain(Say("not enough memory"));
        return EXIT_TROUBLE;
    }
    Complain(Visible(InOptions(Line(oError.what()))));
    return EXIT_TROUBLE;
}

// Help, the version, or what is wrong with the command line.
int ExitOf(const CLI::App& oApp, const CLI::ParseError& oError) {
    std::ostringstream oOut;
    std::ostringstream oErr;
    const int iExit = oApp.exit(oError, oOut, oErr);
    std::istringstream oLines(oErr.str());
    for (std::string sLine; std::getline(oLines, sLine);) {
        std::fprintf(stderr, "%s\n", Visible(sLine).c_str());
    }
    Print(oOut.str());
    FinishPrinting();
    return iExit == 0 ? EXIT_GOOD : EXIT_TROUBLE;
}

int Run(int argc, char** argv) {
    vok::Msg::SetBanner(false);
    ChooseLanguage();
    vok::sys::PrepareConsole();
    HandleSignals();
    CLI::App oApp("Shows, checks and converts object trees in XML, JSON and DGraph files.", "vok");
    oApp.require_subcommand(1);
    oApp.allow_windows_style_options(false);  // paths in trees begin with "/"
    oApp.set_version_flag("--version", std::to_string(vok::VERSION_MAJOR) + '.' +
                                           std::to_string(vok::VERSION_MINOR) + '.' +
                                           std::to_string(vok::VERSION_BUILD));
    std::vector<std::string> asLimit;
    oApp.add_option(
            "--limit", asLimit,
            "Raise a limit on what input may cost, NAME=NUMBER or NAME=none; with NAME one of " +
                LimitNames())
        ->take_last()
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false)
        ->each(SetLimit);
    oApp.add_flag_callback(
        "--trusted", [] { TheLimits() = vok::Limits::Trusted(); },
        "No limits on what input may cost: it is known where it comes from");
    oApp.add_option_function<std::string>("--color,--colour", SetColours, "When to use colours")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN");
    oApp.fallthrough();
    oApp.add_flag_callback("--no-pager", ForbidPager,
                           "Print to a terminal at once, not through VOK_PAGER, PAGER or less");
    oApp.footer(
        "Files may be XML, JSON, DGraph documents or native dumps, as they are, compressed (zlib,\n"
        "gzip) or in a zip archive of one member; with names in .csv or .tsv, csv files.\n"
        "Exit status: 0 good; 1 nothing found, different, or faulty; 2 trouble.");
    AddConvert(oApp);
    AddShow(oApp);
    AddGet(oApp);
    AddFileCommands(oApp);
    AddHash(oApp);
    AddEditCommands(oApp, g_iExit);
    AddCompareCommands(oApp, g_iExit);
    AddInspect(oApp);
    AddZip(oApp);
    AddCompletion(oApp);
    try {
        std::vector<std::string> asWord = vok::sys::Arguments(argc, argv);
        // The parser takes them from the end, without the name of the program.
        std::reverse(asWord.begin(), asWord.end());
        if (!asWord.empty()) asWord.pop_back();
        oApp.parse(asWord);
        FinishPrinting();
    } catch (const CLI::ParseError& oError) {
        return ExitOf(oApp, oError);
    }
    return g_iExit;
}

}  // namespace

int main(int argc, char** argv) {
    int iExit = EXIT_TROUBLE;
    try {
        iExit = Run(argc, argv);
    } catch (const std::exception& oError) {
        try {
            iExit = Fail(oError);
        } catch (const std::exception&) {
            iExit = Fail(std::bad_alloc());
        }
    }
    FinishPager();
    return iExit;
}

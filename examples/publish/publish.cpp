// SPDX-License-Identifier: MIT
// One process publishes trees, others read them where they lie, while new versions take the place
// of old ones:
//
//     publish write FILE VERSIONS    puts so many versions into the file, one behind the other
//     publish read FILE VERSION      attaches whatever is there, until that version has come
//
// Every version says in all of its nodes which one it is: a reader that met a mixture would tell.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "vok/base/msg.h"
#include "vok/data/view.h"
#include "vok/file/replacement.h"

namespace {

using namespace vok;

constexpr u2_t ORDERS = 10000;

void Publish(const Str& oPath, i2_t iVersion) {
    Data oTree;
    oTree.SetToRoot();
    oTree.Append("version").SetValInt(iVersion);
    for (u2_t u = 0; u < ORDERS; ++u) oTree.Append("order").Append("version").SetValInt(iVersion);
    // Never over the bytes that others look at: beside them, and then in their place.
    File_Replacement oFile(oPath);
    oTree.Dump(oFile.GetFile(), Data_DumpLayout::Attachable);
    oFile.Commit(false);
}

// The version of a tree; -1 where its nodes do not agree.
i2_t VersionOf(const Data& oTree) {
    const Data_View oTop(oTree);
    const i2_t iVersion = oTop.Find("version").Int();
    for (u2_t u = 0; u < oTop.GetSuccs(); ++u) {
        const Data_View oNode = oTop.GetSucc(u);
        const Data_View oSays = oNode.GetSuccs() != 0 ? oNode.GetSucc(0) : oNode;
        if (oSays.Int() != iVersion) return -1;
    }
    return oTop.GetSuccs() == ORDERS + 1 ? iVersion : -1;
}

int Read(const Str& oPath, i2_t iLast) {
    constexpr auto PATIENCE = std::chrono::seconds(60);
    const auto oSince = std::chrono::steady_clock::now();
    unsigned uRounds = 0;
    for (i2_t iSeen = 0; iSeen < iLast; ++uRounds) {
        if (std::chrono::steady_clock::now() - oSince > PATIENCE) {
            std::fprintf(stderr, "publish: version %d did not come\n", iLast);
            return 1;
        }
        if (File::Size(oPath) < 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            continue;  // nobody has published yet
        }
        Data oTree;
        // Whoever may write the file could have made anything of it: it is verified.
        oTree.Attach(oPath);
        const i2_t iVersion = VersionOf(oTree);
        if (iVersion < iSeen) {
            std::fprintf(stderr, "publish: version %d after %d\n", iVersion, iSeen);
            return 1;
        }
        iSeen = iVersion;
    }
    std::printf("version %d\n", iLast);
    return uRounds == 0;
}

}  // namespace

int main(int argc, char** argv) {
    Msg::SetBanner(false);
    const std::string_view sVerb(argc == 4 ? argv[1] : "");
    try {
        const int iVersions = argc == 4 ? std::atoi(argv[3]) : 0;
        if (sVerb == "read" && iVersions > 0) return Read(argv[2], iVersions);
        if (sVerb == "write" && iVersions > 0) {
            for (int i = 1; i <= iVersions; ++i) Publish(argv[2], i);
            return 0;
        }
    } catch (const std::exception& oError) {
        std::fprintf(stderr, "publish: %s", oError.what());
        return 1;
    }
    std::fprintf(stderr, "publish write FILE VERSIONS\npublish read FILE VERSION\n");
    return 2;
}

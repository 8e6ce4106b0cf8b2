// vok check: whether files can be loaded, and where they cannot.
#include "tools/commands.h"
#include "tools/input.h"

namespace tools {

int Check(const std::vector<std::string>& asFile) {
    int iExit = EXIT_GOOD;
    for (const std::string& sFile : asFile) {
        try {
            const Input oIn = Load(sFile);
            std::printf("%s: good (%s, %u nodes)\n", sFile.c_str(), oIn.sFormat.c_str(),
                        oIn.oTree.GetNodes());
        } catch (const InputError& oError) {
            std::printf("%s\n", oError.what());
            iExit = EXIT_NEGATIVE;
        }
    }
    return iExit;
}

}  // namespace tools

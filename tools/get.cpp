// vok get: the values at a path.
#include <string>

#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"

namespace tools {

int Get(const GetOptions& o) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        const std::string sValue = ValueText(oFound.GetNth(u));
        Print(o.bNull ? sValue + '\0' : Escaped(sValue) + '\n');
    }
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace tools

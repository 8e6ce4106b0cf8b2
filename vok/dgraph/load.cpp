// Tells the forms of a stored tree apart.
#include "vok/base/where.h"
#include "vok/dgraph/dgraph.h"

namespace vok {

void Dgraph_Load(Data& data, File_Stream& in, const Limits& oLimits, Load_Report* pReport) {
    return Where("vok::Dgraph_Load", [&] {
        data.Clear();
        if (Data::CanLoad(in)) {
            data.Load(in, oLimits, pReport);
        } else if (Dgraph_CanLoadDGraph(in)) {
            Dgraph_LoadDGraph(data, in, oLimits, pReport);
        } else {
            data.LoadFromXML(in, Data::XML_KEEP_UNKNOWN, oLimits, pReport);
        }
    });
}

}  // namespace vok

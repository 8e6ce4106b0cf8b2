// vok get: the values at a path.
#include <cstdio>
#include <string>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/records/path.h"

namespace tools {

namespace {

// Values in the order of the document, whoever finds them: those that were printed before are left
// out.
class Values {
  public:
    explicit Values(const GetOptions& o) : m_oOptions(o) {}

    void Add(const std::string& sValue) {
        if (++m_uFound <= m_uPrinted) return;
        Print(m_oOptions.bNull ? sValue + '\0' : Escaped(sValue) + '\n');
        m_uPrinted = m_uFound;
    }
    void StartAgain() noexcept { m_uFound = 0; }
    [[nodiscard]] int Exit() const noexcept { return m_uFound != 0 ? EXIT_GOOD : EXIT_NEGATIVE; }

  private:
    const GetOptions& m_oOptions;
    std::uint64_t m_uFound = 0;
    std::uint64_t m_uPrinted = 0;
};

int ByRecords(const GetOptions& o, Values& oValues) {
    if (vok::records::Path::NeedsTree(o.sPath)) throw NeedsTree();
    vok::records::Path oPath(o.sPath);
    Document oDocument(o.sFile);
    std::string sTop;
    // Reading ends with the answer.
    while (oDocument.Next() && !oPath.IsThrough(oDocument->GetDepth())) {
        const vok::Data_Record& r = *oDocument;
        if (r.GetDepth() == 0) sTop = r.GetName();
        const vok::records::Path::Verdict oVerdict = oPath.Look(r);
        if (oVerdict.bSelected) {
            // Only a tree knows where a link in XML leads to.
            if (r.HasTarget() && oDocument.IsXml()) throw NeedsTree();
            const bool bLink = r.GetType() == vok::Data_Node::Link;
            oValues.Add(bLink ? '/' + std::string(r.Text()) : ValueText(r));
        }
        if (!oVerdict.bBelow) oDocument.Reader().SkipSuccessors();
    }
    if (oValues.Exit() != EXIT_GOOD) TellNothingAt(o.sPath, sTop);
    return oValues.Exit();
}

int ByTree(const GetOptions& o, Values& oValues) {
    const Input oIn = Load(o.sFile);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    oValues.StartAgain();
    for (std::size_t u = 0; u < oFound.Size(); ++u) oValues.Add(ValueText(oFound.GetNth(u)));
    return oValues.Exit();
}

}  // namespace

int Get(const GetOptions& o) {
    Values oValues(o);
    return Answer(
        o.sFile, [&] { return ByRecords(o, oValues); }, [&] { return ByTree(o, oValues); });
}

}  // namespace tools

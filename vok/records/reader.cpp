// SPDX-License-Identifier: MIT
#include "vok/records/reader.h"

#include <optional>
#include <utility>

#include "vok/base/where.h"
#include "vok/base/work.h"
#include "vok/data/record_source.h"
#include "vok/dgraph/access.h"
#include "vok/dgraph/dgraph.h"
#include "vok/dgraph/record_reader.h"
#include "vok/records/messages.h"
#include "vok/records/take.h"
#include "vok/records/unwrapped.h"
#include "vok/xml/record_reader.h"

namespace vok {

class Data_Reader::Impl {
  public:
    template <class From>
    Impl(From& oFrom, const Limits& oLimits)
        : m_oDocument(oFrom, oLimits), m_oWork(m_oDocument.GetLimits()) {
        File_Stream& oIn = m_oDocument.In();
        if (Data::CanLoad(oIn)) records::RaiseDump();
        m_eForm = Dgraph_CanLoadDGraph(oIn) ? Form::DGraph : Form::Xml;
        if (m_eForm == Form::DGraph) {
            m_pSource = std::make_unique<dgraph::RecordReader>(oIn, m_oDocument.GetLimits());
        } else {
            m_oText.emplace(oIn, xml::Declares::Xml);
            m_pSource = std::make_unique<xml::RecordReader>(*m_oText, m_oDocument.GetLimits());
        }
        m_oTaker.emplace(*m_pSource);
    }

    Unwrapped m_oDocument;
    Work m_oWork;
    Form m_eForm;
    std::optional<xml::Source> m_oText;  // of an XML document
    std::unique_ptr<detail::Record_Source> m_pSource;
    std::optional<records::Taker> m_oTaker;
    u3_t m_uBehind = 0;  // bytes behind the document, once it is read
    bool m_bDone = false;
};

namespace {

constexpr char CONSTRUCTOR[] = "vok::Data_Reader::Data_Reader";

}  // namespace

Data_Reader::Data_Reader(File_Stream& oIn, const Limits& oLimits)
    : m_pImpl(Where(CONSTRUCTOR, [&] { return std::make_unique<Impl>(oIn, oLimits); })),
      m_pRecord(m_pImpl->m_pSource.get()) {}

Data_Reader::Data_Reader(const Str& oPath, const Limits& oLimits)
    : m_pImpl(Where(CONSTRUCTOR, [&] { return std::make_unique<Impl>(oPath, oLimits); })),
      m_pRecord(m_pImpl->m_pSource.get()) {}

Data_Reader::Data_Reader(Data_Reader&&) noexcept = default;
Data_Reader& Data_Reader::operator=(Data_Reader&&) noexcept = default;
Data_Reader::~Data_Reader() = default;

Data_Reader::Form Data_Reader::GetForm() const noexcept {
    return m_pImpl->m_eForm;
}

Str Data_Reader::GetVersion() const {
    return m_pImpl->m_pSource->Version();
}

bool Data_Reader::ReadNext() {
    return Where("vok::Data_Reader::Next", [&] {
        Impl& o = *m_pImpl;
        m_pRecord = o.m_pSource.get();
        if (const Data_Record* p = o.m_pSource->Next(); p != nullptr) {
            m_pRecord = p;
            return true;
        }
        if (!std::exchange(o.m_bDone, true)) {
            o.m_uBehind = o.m_oDocument.Finish(o.m_pSource->Left());
        }
        return false;
    });
}

void Data_Reader::SkipSuccessors() noexcept {
    // Below others there is nothing; what is behind them may be deeper, and read already.
    if (m_pRecord->GetType() == Data_Node::Tree) m_pImpl->m_pSource->SkipBelow(*m_pRecord);
}

Str Data_Reader::GetPath() const {
    return Where("vok::Data_Reader::GetPath",
                 [&] { return m_pImpl->m_pSource->PathOf(*m_pRecord); });
}

bool Data_Reader::IsInOrder() const noexcept {
    return m_pImpl->m_pSource->IsInOrder();
}

Load_Report Data_Reader::GetReport() const {
    return Where("vok::Data_Reader::GetReport", [&] {
        Load_Report oReport;
        m_pImpl->m_pSource->GoBack(m_pRecord);
        m_pImpl->m_pSource->AddTo(oReport);
        const Str& oFault = m_pImpl->m_oTaker->Fault();
        if (!oFault.IsEmpty()) oReport.m_oPath = oFault;
        if (m_pImpl->m_bDone) oReport.m_uBytesLeft = m_pImpl->m_uBehind;
        return oReport;
    });
}

void Data_Reader::Take(Data& oTree) {
    return Where("vok::Data_Reader::Take", [&] {
        detail::Record_Source& oSource = *m_pImpl->m_pSource;
        dgraph::Access::ResetNodes(oTree);
        if (m_pRecord != &oSource) oSource.GoBack(m_pRecord);
        m_pRecord = &oSource;
        const u2_t uTop = oSource.GetDepth();
        m_pImpl->m_oTaker->Take(oTree, m_pImpl->m_oWork);
        oSource.StandAt(uTop);
    });
}

const std::vector<Data_Reader::Outer_Link>& Data_Reader::GetOuterLinks() const noexcept {
    return m_pImpl->m_oTaker->OuterLinks();
}

}  // namespace vok

// SPDX-License-Identifier: MIT
#include "vok/records/canonical.h"

#include <algorithm>

#include "vok/base/where.h"
#include "vok/data/canonical.h"

namespace vok {

class Data_Canonical::Impl {
  public:
    explicit Impl(std::function<void(std::string_view)> oTake)
        : m_oTake(std::move(oTake)), m_oForm(m_oTake) {}

    bool Add(const Data_Reader& oReader) {
        const Data_Record& r = *oReader;
        if (r.HasTarget() || !oReader.IsInOrder()) return false;
        EndTo(r.GetDepth());
        m_oForm.Begin(r.GetName());
        if (r.GetAttributes().Size() != 0) TellAttributes(r);
        m_oForm.Value(r);
        return true;
    }
    void Finish() {
        EndTo(0);
        m_oForm.Finish();
    }

  private:
    void EndTo(std::size_t uDepth) {
        while (m_oForm.Depth() > uDepth) m_oForm.End();
    }
    // Of every name the last one, in the byte order of names.
    void TellAttributes(const Data_Record& r) {
        m_oSorted.Truncate(0);
        for (const Data_Record::Attribute& o : r.GetAttributes()) m_oSorted.Add(o);
        std::stable_sort(m_oSorted.Beg(), m_oSorted.End(),
                         [](const auto& a, const auto& b) { return a.sName < b.sName; });
        for (std::size_t u = 0; u < m_oSorted.Size(); ++u) {
            const auto& o = m_oSorted(u);
            const bool bLast = u + 1 == m_oSorted.Size() || m_oSorted(u + 1).sName != o.sName;
            if (bLast) m_oForm.Attribute(o.sName, o.sValue);
        }
    }

    std::function<void(std::string_view)> m_oTake;
    detail::Canonical m_oForm;
    Arr<Data_Record::Attribute> m_oSorted;
};

Data_Canonical::Data_Canonical(std::function<void(std::string_view)> oTake)
    : m_pImpl(std::make_unique<Impl>(std::move(oTake))) {}
Data_Canonical::Data_Canonical(Data_Canonical&&) noexcept = default;
Data_Canonical& Data_Canonical::operator=(Data_Canonical&&) noexcept = default;
Data_Canonical::~Data_Canonical() = default;

bool Data_Canonical::Add(const Data_Reader& oReader) {
    return Where("vok::Data_Canonical::Add", [&] { return m_pImpl->Add(oReader); });
}

void Data_Canonical::Finish() {
    return Where("vok::Data_Canonical::Finish", [&] { m_pImpl->Finish(); });
}

}  // namespace vok

// SPDX-License-Identifier: MIT
// The fields of a DGraph document. Internal.
#ifndef VOK_INSPECT_DOCUMENT_H
#define VOK_INSPECT_DOCUMENT_H

#include <optional>

#include "vok/dgraph/format.h"
#include "vok/dgraph/step.h"
#include "vok/inspect/fields.h"
#include "vok/inspect/place.h"
#include "vok/inspect/plausible.h"

namespace vok::inspect {

class Document {
  public:
    Document(Fields& oFields, const Limits& oLimits) : f(oFields), m_oLimits(oLimits) {}

    // The header. False for one of major version 2, behind which a dump stands.
    [[nodiscard]] bool PutHeader();
    // What has no header: it may be missing, with the beginning of the document, or be damaged.
    void PutWithoutHeader();
    // Records up to the end of the bytes.
    void PutRecords();

  private:
    void PutMissingRecords();
    // Each puts what it is named after. False where it is not known what comes next.
    [[nodiscard]] bool PutRecord();
    [[nodiscard]] bool PutStep();
    [[nodiscard]] bool PutValue(u0_t uCode);
    [[nodiscard]] bool PutCount();
    [[nodiscard]] bool PutBlock(const char* sLength, const char* sBytes, bool bText, bool bTarget);
    [[nodiscard]] bool IsTextLost(u3_t uLength);
    [[nodiscard]] bool PutQuad();
    template <class T, class Format>
    [[nodiscard]] bool PutNumber(const Format& oFormat);
    [[nodiscard]] Fault FaultOfLength(i2_t iLength) const noexcept;

    // Skips to where records may begin again; false where there are none.
    bool Resume();

    Fields& f;
    const Limits& m_oLimits;
    i2_t m_iMinor = 3;
    std::optional<Plausible> m_oPlausible;
    dgraph::Step m_oStep;
    Place m_oPlace;
};

}  // namespace vok::inspect

#endif  // VOK_INSPECT_DOCUMENT_H

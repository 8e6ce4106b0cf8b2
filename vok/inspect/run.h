// SPDX-License-Identifier: MIT
// Going through stored trees. Internal.
#ifndef VOK_INSPECT_RUN_H
#define VOK_INSPECT_RUN_H

#include <optional>

#include "vok/file/buf.h"
#include "vok/file/rest.h"
#include "vok/inspect/fields.h"

namespace vok::inspect {

// The rest of a stream, to be gone through as often as one likes: itself, or in memory where it is
// neither a file nor a memory buffer.
class Whole {
  public:
    explicit Whole(File_Stream& oIn) : m_pIn(&oIn), m_uSize(BytesLeft(oIn)) {
        if (m_uSize == 0) {
            oIn.Read(m_oBytes, File_Stream::ALL);
            m_uSize = m_oBytes.Size();
            m_pIn = &m_oBuf.emplace(m_oBytes.Beg(), m_oBytes.Size());
        }
        m_iStart = m_pIn->Tell();
    }
    Whole(const Whole&) = delete;
    Whole& operator=(const Whole&) = delete;

    // At its beginning.
    [[nodiscard]] File_Stream& In() {
        m_pIn->Seek(m_iStart);
        return *m_pIn;
    }
    [[nodiscard]] i3_t Start() const noexcept { return m_iStart; }
    [[nodiscard]] u3_t Size() const noexcept { return m_uSize; }

  private:
    Arr<char> m_oBytes;
    std::optional<File_Buf> m_oBuf;
    File_Stream* m_pIn;
    u3_t m_uSize;
    i3_t m_iStart = 0;
};

// Puts all fields of it.
void Run(Whole& oIn, Output& oOut, const Limits& oLimits);

}  // namespace vok::inspect

#endif  // VOK_INSPECT_RUN_H

// SPDX-License-Identifier: MIT
// The records of a DGraph document as bytes, wherever their nodes come from. Internal.
#ifndef VOK_DGRAPH_RECORD_WRITER_H
#define VOK_DGRAPH_RECORD_WRITER_H

#include <cstring>
#include <string_view>

#include "vok/base/hash.h"
#include "vok/data/escape.h"
#include "vok/dgraph/value_writer.h"

namespace vok::dgraph {

// Adds to values the steps of names that are known while running only, and attributes.
template <class Sink>
class RecordWriter : public ValueWriter<Sink&> {
    using Values = ValueWriter<Sink&>;

  public:
    using Values::Values;

    // A name in the form that documents have, without attributes.
    void Step(const Hash_Text& oForm, u2_t uIndex) {
        if (oForm.uLength > LONG_NAME) [[unlikely]]
            return LongStep(oForm, uIndex);
        char* const pStep = m_oSink.Space(oForm.uLength + Values::FIXED_ROOM) + 4;
        char* const pName = CopyName(pStep, oForm);
        char* const pEnd = uIndex == 0 ? StoreFirst(pName) : StoreIndex(pName, uIndex);
        Store(pStep - 4, static_cast<u2_t>(pEnd - pStep));
        m_oSink.Cut(pStep);
        m_oSink.Cut(pEnd);
    }
    // Any name as it is, with attributes, each of which has a value.
    void BeginStep(std::string_view sName, u2_t uIndex) {
        m_oStep.Truncate(0);
        detail::AppendStep(m_oStep, sName, uIndex);
    }
    void AddAttribute(std::string_view sName, std::string_view sValue) {
        m_oStep.Add("[@", 2);
        detail::AppendEncoded(m_oStep, sName, detail::RESERVED.data());
        m_oStep.Add("=\"", 2);
        detail::AppendEncoded(m_oStep, sValue, detail::RESERVED.data());
        m_oStep.Add("\"]", 2);
    }
    void EndStep() {
        Values::Block(m_oStep.Beg(), m_oStep.Size());
        (void)m_oSink.Space(Values::FIXED_ROOM);
    }

  protected:
    using Values::m_oSink;

    // Longer names may need more room than a sink has.
    static constexpr u2_t LONG_NAME = 1024;

    // The table of names has 16 bytes to spare behind each of its blocks.
    static char* CopyName(char* p, const Hash_Text& oName) noexcept {
        std::memcpy(p, oName.sText, Hash::SLACK);
        for (u2_t u = Hash::SLACK; u < oName.uLength; u += Hash::SLACK) [[unlikely]] {
                std::memcpy(p + u, oName.sText + u, Hash::SLACK);
            }
        return p + oName.uLength;
    }
    static char* StoreIndex(char* p, u2_t uIndex) noexcept {
        *p++ = '[';
        return Values::StoreDigits(p, uIndex);
    }

    // The index 0, with one byte more than it has.
    static char* StoreFirst(char* p) noexcept {
        constexpr u2_t TEXT = '[' | '0' << 8 | ']' << 16;
        Store(p, TEXT);
        return p + 3;
    }
    // In front of pEnd the last eight bytes of the step that ends in front of pBefore, but for the
    // last digit of its index, which is one more; false where that is a nine.
    [[nodiscard]] static bool StoreNext(char* pEnd, const char* pBefore) noexcept {
        constexpr u3_t ONE_MORE = u3_t{1} << 48;
        if (pBefore[-2] == '9') return false;
        Store(pEnd - 8, Load<u3_t>(pBefore - 8) + ONE_MORE);
        return true;
    }

  private:
    void LongStep(const Hash_Text& oForm, u2_t uIndex) {
        char sIndex[NUMBER_ROOM + 2];
        m_oStep.Truncate(0);
        m_oStep.Add(oForm.sText, oForm.uLength);
        m_oStep.Add(sIndex, static_cast<std::size_t>(StoreIndex(sIndex, uIndex) - sIndex));
        EndStep();
    }

    Arr<char> m_oStep;
};

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_RECORD_WRITER_H

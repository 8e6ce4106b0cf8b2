// The loop that most records are read by. Internal: reader.cpp includes it, so that a
// compiler may put the loop where it is called.
#ifndef VOK_DGRAPH_PLAIN_READER_H
#define VOK_DGRAPH_PLAIN_READER_H

#include <array>
#include <bit>
#include <cstring>

#include "vok/base/utf8.h"
#include "vok/data/escape.h"
#include "vok/dgraph/reader.h"

namespace vok::dgraph {

// The bytes of names that need no second look: ASCII without the reserved ones.
inline constexpr std::array<bool, 256> VERBATIM = [] {
    std::array<bool, 256> abVerbatim{};
    for (std::size_t u = 1; u < 128; ++u) abVerbatim[u] = !detail::RESERVED[u];
    return abVerbatim;
}();

// Whether the name stands at p and "[" behind it; uSize bytes can be read at p.
[[nodiscard]] inline bool IsNameAt(const Hash_Text& oName, const char* p,
                                   std::size_t uSize) noexcept {
    return oName.StandsAt(p, uSize) && p[oName.uLength] == '[';
}

template <class Source>
inline u2_t Reader<Source>::GuessName(const char* p, std::size_t uSize) const noexcept {
    const u2_t uFirst = m_oGuess.First();
    if (uFirst != 0 && IsNameAt(m_oBase.m_oName(uFirst), p, uSize)) return uFirst;
    const u2_t uSecond = m_oGuess.Second();
    return uSecond != 0 && IsNameAt(m_oBase.m_oName(uSecond), p, uSize) ? uSecond : 0;
}

template <class Source>
inline u2_t Reader<Source>::ScanName(const char* p, std::size_t uStep) {
    std::size_t uName = 0;
    while (uName < uStep && VERBATIM[static_cast<u0_t>(p[uName])]) ++uName;
    if (uName == 0 || uName == uStep || p[uName] != '[') return 0;
    const u2_t uKey = m_oBase.m_oName.Insert({p, uName});
    m_oGuess.Note(uKey, true, m_oBase.m_oName.Size());
    return uKey;
}

template <class Source>
inline bool Reader<Source>::IsIndex(const char* p, std::size_t uSize, u2_t uIndex) noexcept {
    if (uIndex < 10) [[likely]] {
        return uSize == 2 && static_cast<u2_t>(p[0] - '0') == uIndex && p[1] == ']';
    }
    if (uSize < 3 || uSize > 11 || p[uSize - 1] != ']') return false;
    while (--uSize > 0) {
        if (static_cast<u2_t>(p[uSize - 1] - '0') != uIndex % 10) return false;
        uIndex /= 10;
    }
    return uIndex == 0;
}

template <class Source>
void Reader<Source>::ReadFastRecords() {
    constexpr std::size_t LENGTH = 4;
    constexpr std::size_t LARGEST_VALUE = 8;
    while (Top().uPending != 0) {
        Level& oLevel = Top();
        const char* p = m_oSource.Peek();
        const std::size_t uAtHand = m_oSource.AtHand();
        if (uAtHand < LENGTH) return;
        const std::size_t uStep = Load<u2_t>(p);
        p += LENGTH;
        if (uAtHand < LENGTH + uStep + 1 + LARGEST_VALUE) return;
        if (uStep > m_oLimits.m_uTextBytes) return;
        u2_t uKey = GuessName(p, uAtHand - LENGTH);
        if (uKey != 0) {
            m_oGuess.Confirm(uKey);
        } else {
            uKey = ScanName(p, uStep);
            if (uKey == 0) return;
        }

        // The index is the one that the run has reached.
        const std::size_t uName = m_oBase.m_oName(uKey).uLength;
        const bool bSameRun = uKey == oLevel.uRunKey;
        const u2_t uIndex = bSameRun ? static_cast<u2_t>(oLevel.iRunCount) : 0;
        if (!IsIndex(p + uName + 1, uStep - uName - 1, uIndex)) return;
        if (!oLevel.bInOrder || (!bSameRun && IsBehind(oLevel, uKey))) return;
        if (m_oBase.m_oNode.Size() >= m_uMostNodes || !m_oBase.CanPlace(oLevel.uParent)) return;

        p += uStep;
        const Code eCode = static_cast<Code>(*p++);
        Data_Node oNode{uKey, (oLevel.uParent + 1) << 4, 0, 0};
        std::size_t uValue = 4;
        switch (eCode) {
            case CODE_NONE:
                if (Load<i2_t>(p) <= 0) return;
                break;
            case CODE_INTEGER:
                oNode.SetType(Data_Node::Integer);
                oNode.uWord2 = Load<u2_t>(p);
                break;
            case CODE_DOUBLE:
                oNode.SetType(Data_Node::Double);
                oNode.SetValue64(Load<u3_t>(p));
                uValue = 8;
                break;
            case CODE_BOOLEAN:
                oNode.SetType(Data_Node::Boolean);
                oNode.uWord2 = *p != 0;
                uValue = 1;
                break;
            case CODE_STRING: {
                const std::size_t uText = Load<u2_t>(p);
                const std::size_t uLeft = uAtHand - LENGTH - uStep - 1 - LENGTH;
                if (uText == 0 || uText > uLeft || uText > m_oLimits.m_uTextBytes) return;
                const char* pText = p + LENGTH;
                if (pText[uText - 1] != 0 || !IsAsciiText(pText, uText - 1)) return;
                oNode.SetType(Data_Node::String);
                oNode.uWord2 = m_oBase.m_oHeap.AddText({pText, uText - 1});
                oNode.uWord3 = static_cast<u2_t>(uText);
                uValue = LENGTH + uText;
                break;
            }
            default: return;
        }
        m_uNode = m_oBase.AppendLast(oLevel.uParent, oNode);
        oLevel.uRunKey = uKey;
        oLevel.iRunCount = static_cast<i2_t>(uIndex + 1);
        --oLevel.uPending;
        m_oSource.Skip(LENGTH + uStep + 1 + uValue);
        if (eCode == CODE_NONE) {
            OpenLevel(Load<i2_t>(p));
        } else {
            CloseLevels();
        }
    }
}

}  // namespace vok::dgraph

#endif  // VOK_DGRAPH_PLAIN_READER_H

// SPDX-License-Identifier: MIT
#include "vok/inspect/salvage.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_set>
#include <vector>

#include "vok/base/hash.h"
#include "vok/base/where.h"
#include "vok/dgraph/format.h"
#include "vok/dgraph/step.h"
#include "vok/inspect/names.h"
#include "vok/inspect/run.h"

namespace vok {

namespace inspect {

namespace {

using std::string_view;

constexpr std::size_t LONGEST_LINK = 4096;

// What the passes learn for those after them.
struct Known {
    Known() {
        oTarget.Start();
        oName.Start();
    }

    u2_t uDocument = 0;  // the one that is written
    bool bFound = false;
    std::vector<u2_t> auCount;  // successors, of each record that is written
    // Of each, whether a name comes back below it behind another one: then which of the nodes of
    // that name is the nth is the matter of who reads it.
    std::vector<bool> abAmbiguous;
    Hash oTarget;                 // paths of targets of links
    std::vector<bool> abWritten;  // by key: whether that is one of the nodes
    std::size_t uLongestTarget = 0;
    Hash oName;  // of the nodes
    dgraph::Version oVersion{1, 3, 0};
};

// The records of a document put together of their fields. Every pass decides the same on each of
// them: the first counts and collects the paths of links, the second finds their targets, the third
// writes.
class Pass {
  public:
    enum class Kind { Count, Find, Write };

    Pass(Kind eKind, Known& oKnown, Salvage_Report& oReport, File_Stream* pOut,
         const Limits& oLimits)
        : m_eKind(eKind), k(oKnown), m_oReport(oReport), m_pOut(pOut), m_oLimits(oLimits) {}

    void Add(const Inspect_Field& o) {
        const string_view sName(o.m_sName);
        if (m_eKind == Kind::Count) NoteDocument(o, sName);
        if (o.m_uDocument != k.uDocument || o.m_sPath.empty()) return;
        if (sName == STEP_LENGTH) return;
        if (sName == STEP) {
            Finish();
            return Begin(o);
        }
        if (sName == TYPE_CODE) {
            m_bBroken = o.m_sBytes.empty();
            const auto uCode = m_bBroken ? u0_t{0} : static_cast<u0_t>(o.m_sBytes[0]);
            m_uCode = uCode <= dgraph::CODE_QUAD ? uCode : u0_t{dgraph::CODE_NONE};
        } else if (m_uCode == dgraph::CODE_QUAD && sName == TEXT) {
            TakeQuad(o.m_sValue);
        } else if (m_uCode == dgraph::CODE_QUAD && sName == TEXT_LENGTH) {
            return;  // the form of older versions, whose only fault is that readers do not know it
        } else {
            if (sName == TARGET_PATH) m_uPath = m_sValue.size();
            if (m_bOpen) m_sValue += o.m_sBytes;
            m_bBroken = m_bBroken || !o.m_sFault.empty();
        }
    }
    // Completes the last record.
    void Finish() {
        if (!m_bOpen) return;
        m_bOpen = false;
        const bool bValue = m_uCode != dgraph::CODE_NONE;
        const bool bLink = m_uCode == dgraph::CODE_LINK && !m_bBroken;
        if (m_eKind == Kind::Count && bLink && Target().size() <= LONGEST_LINK) {
            k.oTarget.Insert(Target());
            k.uLongestTarget = std::max(k.uLongestTarget, Target().size());
        }
        if (m_eKind != Kind::Write) return;
        const u2_t uSuccs = k.auCount[m_uRecord - 1];
        const bool bLost = m_bBroken || uSuccs != 0;  // a root may have both
        if (bValue && !bLost && (!bLink || HasTarget())) {
            Put<u0_t>(m_uCode);
            m_pOut->Write(m_sValue.data(), m_sValue.size());
            return;
        }
        if (bValue) ++(bLost ? m_oReport.m_uWithoutValue : m_oReport.m_uLinks);
        Put<u0_t>(dgraph::CODE_NONE);
        Put<u2_t>(uSuccs);
    }

  private:
    // Of an open level: its record among those that are written, and the run at its end.
    struct Level {
        u2_t uRecord = 0;
        std::string sName;
        u3_t uRun = 0;
        u2_t uAmbiguous = 0;              // it and the levels above it
        std::unordered_set<u2_t> oNames;  // those that had their run
    };

    void NoteDocument(const Inspect_Field& o, string_view sName) {
        if (k.bFound) return;
        if (sName == VERSION_FIELD && o.m_sBytes.size() == 3 && o.m_sFault.empty()) {
            k.oVersion.iMinor = static_cast<u0_t>(o.m_sBytes[1]);
            k.oVersion.iPatch = static_cast<u0_t>(o.m_sBytes[2]);
        } else if (sName == MAGIC_FIELD) {
            k.oVersion = {1, 3, 0};
        }
        k.bFound = !o.m_sPath.empty();
        k.uDocument = o.m_uDocument;
    }

    void Begin(const Inspect_Field& o) {
        if (o.m_uDepth > m_uMostDepth) return LeaveOut();
        // The last step of the path is its own, decoded and encoded again.
        string_view sLast = o.m_sPath.substr(o.m_sPath.rfind('/') + 1);
        if (o.m_uDepth == 0) sLast = "Root[0]";
        const std::size_t uName = sLast.rfind('[');
        u2_t uIndex = 0;
        std::from_chars(sLast.data() + uName + 1, sLast.data() + sLast.size(), uIndex);
        if (m_aoLevel.empty() && o.m_uDepth != 0) {
            Keep(0, "Root[0]");
            PutRootWithoutRecord();
        }
        if (o.m_uDepth != 0 && !EnterRun(o.m_uDepth, sLast.substr(0, uName), uIndex)) {
            m_uMostDepth = o.m_uDepth;
            return LeaveOut();
        }
        m_uMostDepth = ~u2_t{0};
        Keep(o.m_uDepth, IsGood(o) ? o.m_sBytes : sLast);
        m_bOpen = true;
        m_bBroken = false;
        m_uCode = dgraph::CODE_NONE;
        m_sValue.clear();
        m_uPath = 0;
        // Below the root; a target is no matter of its own successors.
        const bool bPlain = o.m_uDepth != 0 && m_aoLevel[o.m_uDepth - 1].uAmbiguous == 0;
        if (m_eKind == Kind::Find && bPlain && o.m_sPath.size() - 1 <= k.uLongestTarget) {
            const u2_t uTarget = k.oTarget.Find(o.m_sPath.substr(1));
            k.abWritten.resize(k.oTarget.Size());
            if (uTarget != Hash::NONE) k.abWritten[uTarget] = true;
        }
    }
    void LeaveOut() {
        if (m_eKind == Kind::Count) ++m_oReport.m_uLeftOut;
    }

    // Whether a record can stand at that index, behind the last one of its level.
    [[nodiscard]] bool EnterRun(u2_t uDepth, string_view sName, u2_t uIndex) {
        Level& o = m_aoLevel[uDepth - 1];
        const u3_t uRun = o.sName == sName ? o.uRun : 0;
        if (uIndex < uRun || uIndex > 0x7FFFFFFE) return false;
        if (m_uSkipped + (uIndex - uRun) > m_oLimits.m_uSkippedSlots) return false;
        m_uSkipped += uIndex - uRun;
        if (m_eKind == Kind::Count && o.sName != sName) {
            const u2_t uName = k.oName.Insert(sName);
            if (!o.oNames.insert(uName).second) k.abAmbiguous[o.uRecord] = true;
        }
        o.sName = sName;
        o.uRun = u3_t{uIndex} + 1;
        return true;
    }
    // Whether a step can be written as it stands.
    [[nodiscard]] bool IsGood(const Inspect_Field& o) {
        if (!o.m_sFault.empty() || m_oStep.TryParse(o.m_sBytes) != dgraph::StepFault::None) {
            return false;
        }
        if (m_oStep.Attributes().Size() > m_oLimits.m_uAttributes) return false;
        for (const auto& oAttribute : m_oStep.Attributes()) {
            if (*oAttribute.sName == 0) return false;
        }
        return true;
    }
    void Keep(u2_t uDepth, string_view sStep) {
        m_aoLevel.resize(uDepth);
        if (m_eKind == Kind::Count) {
            if (uDepth != 0) ++k.auCount[m_aoLevel.back().uRecord];
            k.auCount.push_back(0);
            k.abAmbiguous.push_back(false);
            ++m_oReport.m_uNodes;
        }
        const u2_t uAbove = uDepth != 0 ? m_aoLevel.back().uAmbiguous : 0;
        const u2_t uAmbiguous = uAbove + k.abAmbiguous[m_uRecord];
        m_aoLevel.push_back({m_uRecord++, {}, 0, uAmbiguous, {}});
        if (m_eKind != Kind::Write) return;
        if (m_uRecord == 1) {
            char sHeader[dgraph::HEADER_SIZE];
            dgraph::StoreHeader(sHeader, k.oVersion);
            m_pOut->Write(sHeader, sizeof(sHeader));
        }
        Put<u2_t>(static_cast<u2_t>(sStep.size()));
        m_pOut->Write(sStep.data(), sStep.size());
    }
    void PutRootWithoutRecord() {
        if (m_eKind != Kind::Write) return;
        Put<u0_t>(dgraph::CODE_NONE);
        Put<u2_t>(k.auCount[0]);
    }

    void TakeQuad(string_view s) {
        for (int i = 0; i < 4; ++i) {
            u2_t uWord = 0;
            const char* const pEnd = s.data() + s.size();
            const auto o = std::from_chars(s.data(), pEnd, uWord);
            s.remove_prefix(
                std::min<std::size_t>(static_cast<std::size_t>(o.ptr - s.data()) + 1, s.size()));
            char sWord[4];
            dgraph::Store(sWord, uWord);
            m_sValue.append(sWord, 4);
        }
    }
    [[nodiscard]] std::string Target() const {
        const std::string s = m_sValue.substr(std::min(m_uPath, m_sValue.size()));
        return s.substr(0, s.find('\0'));
    }
    [[nodiscard]] bool HasTarget() const {
        const u2_t uTarget = k.oTarget.Find(Target());
        return uTarget < k.abWritten.size() && k.abWritten[uTarget];
    }

    template <class T>
    void Put(T tNumber) {
        char s[sizeof(T)];
        dgraph::Store(s, tNumber);
        m_pOut->Write(s, sizeof(T));
    }

    const Kind m_eKind;
    Known& k;
    Salvage_Report& m_oReport;
    File_Stream* const m_pOut;
    const Limits& m_oLimits;

    std::vector<Level> m_aoLevel;
    u2_t m_uRecord = 0;            // that are kept
    u2_t m_uMostDepth = ~u2_t{0};  // what is deeper is below one that is left out
    u3_t m_uSkipped = 0;           // places whose records are gone
    dgraph::Step m_oStep;

    // The record that is being read.
    bool m_bOpen = false;
    bool m_bBroken = false;
    u0_t m_uCode = 0;
    std::string m_sValue;
    std::size_t m_uPath = 0;  // of a link, where it begins in its value
};

}  // namespace

}  // namespace inspect

Salvage_Report Dgraph_Salvage(File_Stream& in, File_Stream& out,
                              const std::function<void(const Inspect_Field&)>& oTell,
                              const Limits& oLimits) {
    return Where("vok::Dgraph_Salvage", [&] {
        using inspect::Pass;
        Salvage_Report oReport;
        inspect::Known oKnown;
        inspect::Whole oIn(in);
        for (const auto eKind : {Pass::Kind::Count, Pass::Kind::Find, Pass::Kind::Write}) {
            Pass oPass(eKind, oKnown, oReport, &out, oLimits);
            const auto oVisit = [&](const Inspect_Field& o) {
                if (eKind == Pass::Kind::Count && (o.IsSkipped() || !o.m_sFault.empty())) {
                    oReport.m_uFaults += !o.m_sFault.empty();
                    if (o.IsSkipped()) oReport.m_uSkippedBytes += o.m_uLength;
                    oTell(o);
                }
                oPass.Add(o);
                return true;
            };
            const std::function<bool(const Inspect_Field&)> oVisitor = oVisit;
            inspect::Output oOut(oVisitor, ~u3_t{0});
            inspect::Run(oIn, oOut, oLimits);
            oPass.Finish();
            if (!oKnown.bFound) dgraph::RaiseNoBinaryDGraph();
        }
        out.Flush();
        return oReport;
    });
}

}  // namespace vok

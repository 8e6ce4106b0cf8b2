// SPDX-License-Identifier: MIT
#include "vok/data/attribute_table.h"

#include <algorithm>
#include <span>

#include "vok/base/mem.h"
#include "vok/data/names.h"

namespace vok {

namespace {

[[nodiscard]] bool IsBefore(const Data_Att& oA, const Data_Att& oB) noexcept {
    return oA.uId < oB.uId;
}

// The first record of a run whose node is not below uId.
[[nodiscard]] const Data_Att* Search(const Data_Att* pBegin, const Data_Att* pEnd,
                                     u2_t uId) noexcept {
    return std::lower_bound(pBegin, pEnd, uId, [](const Data_Att& a, u2_t u) { return a.uId < u; });
}

}  // namespace

Data_Attributes::~Data_Attributes() {
    for (Array* p : m_oArray) Mem::Dispose(p);
}

u2_t Data_Attributes::Intern(std::string_view sName) {
    const u2_t uKey = m_oName.Insert(sName);
    // Also those of earlier attempts that ran out of memory right here.
    while (uKey > m_oArray.Size()) {
        m_oArray.ReserveMore(1);
        void* pData = Mem::Create(sizeof(Array));
        m_oArray.Add(new (pData) Array);
    }
    return uKey;
}

// ---- of one node ------------------------------------------------------------

// The record of a node, null when there is none.
const Data_Att* Data_Attributes::FindIn(const Array& o, u2_t uId) noexcept {
    const Arr<Data_Att>& oAtt = o.oAtt;
    const u2_t uSize = static_cast<u2_t>(oAtt.Size());
    const runs::Starts* pRuns = o.oRuns.Size() != 0 ? o.oRuns.Beg() : nullptr;
    const u2_t uRuns = pRuns != nullptr ? pRuns->uCount : 1;
    for (u2_t u = 0; u < uRuns; ++u) {
        const u2_t uFrom = pRuns != nullptr ? pRuns->auStart[u] : 0;
        const Data_Att* pEnd = oAtt.Beg() + (pRuns != nullptr ? pRuns->End(u, uSize) : uSize);
        const Data_Att* pFound = Search(oAtt.Beg() + uFrom, pEnd, uId);
        if (pFound != pEnd && pFound->uId == uId) return pFound;
    }
    return nullptr;
}

const Data_Att* Data_Attributes::FindRecord(u2_t uId, u2_t uKey) const noexcept {
    if (uKey == 0 || uKey > m_oArray.Size()) return nullptr;
    return FindIn(*m_oArray(uKey - 1), uId);
}

u2_t Data_Attributes::Find(u2_t uId, u2_t uKey) const noexcept {
    const Data_Att* p = FindRecord(uId, uKey);
    return p != nullptr ? p->uValue : NO_VALUE;
}

void Data_Attributes::List(u2_t uId, Arr<u2_t>& oKeys) const {
    oKeys.Resize(0);
    if (!Has(uId)) return;
    for (u2_t uKey = m_oHead(uId); uKey != 0;) {
        const Data_Att* p = FindRecord(uId, uKey);
        if (p->uValue != NO_VALUE) oKeys.Add(uKey);
        uKey = p->uNext;
    }
    std::sort(oKeys.Beg(), oKeys.End());
}

void Data_Attributes::ListByName(u2_t uId, Arr<u2_t>& oKeys) const {
    List(uId, oKeys);
    std::sort(oKeys.Beg(), oKeys.End(),
              [this](u2_t uA, u2_t uB) { return m_oName.IsLess(uA, uB); });
}

void Data_Attributes::Set(u2_t uId, std::string_view sName, std::string_view sValue,
                          std::size_t uNodes, Data_Heap& oHeap) {
    const u2_t uKey = Intern(sName);
    Array& oArray = *m_oArray(uKey - 1);
    const Arr<Data_Att>& oAtt = oArray.oAtt;
    // Loaders and copies come in the order of ids: no search for them.
    const bool bLast = oAtt.Size() == 0 || (oArray.oRuns.Size() == 0 && oAtt.Last().uId < uId);
    const Data_Att* pFound = bLast ? nullptr : FindIn(oArray, uId);
    const u2_t uOld = pFound != nullptr ? pFound->uValue : NO_VALUE;
    if (uOld != NO_VALUE && sValue == oHeap.At(uOld)) return;

    oHeap.Start();
    if (m_oHead.Size() <= uId) m_oHead.Resize(uNodes);
    const bool bShared = !sValue.empty() && oHeap.Owns(sValue);
    const u2_t uValue =
        bShared ? static_cast<u2_t>(sValue.data() - oHeap.Begin()) : oHeap.AddText(sValue);
    if (pFound == nullptr) {
        AddRecord(oArray, Data_Att{uId, uValue, m_oHead(uId)});
        m_oHead(uId) = uKey;
    } else {
        m_uDead -= uOld == NO_VALUE;
        if (uOld != NO_VALUE) oHeap.Drop(oHeap.BytesOf(uOld));
        Writable(pFound, uKey).uValue = uValue;
    }
    if (bShared) oHeap.Share(sValue.size() + 1);
}

// Behind all others, where it begins a run unless it belongs there.
void Data_Attributes::AddRecord(Array& o, const Data_Att& oNew) {
    Arr<Data_Att>& oAtt = o.oAtt;
    const u2_t uSize = static_cast<u2_t>(oAtt.Size());
    oAtt.ReserveMore(1);
    const bool bInOrder = uSize == 0 || oAtt.Last().uId < oNew.uId;
    if (!bInOrder && o.oRuns.Size() == 0) o.oRuns.Add(runs::Starts{1, {0}});
    oAtt.Add(oNew);
    if (o.oRuns.Size() == 0) return;
    runs::Starts& oRuns = o.oRuns(0);
    // The last run took it; it may be long enough now to be merged.
    const u2_t uBegin = bInOrder ? oRuns.auStart[--oRuns.uCount] : uSize;
    m_uMoved += runs::Add(oRuns, oAtt.Beg(), uBegin, uSize + 1, IsBefore);
    if (oRuns.uCount == 1) o.oRuns.Clear();
}

void Data_Attributes::Remove(u2_t uId, std::string_view sName, Data_Heap& oHeap) noexcept {
    const u2_t uKey = m_oName.Find(sName);
    const Data_Att* pFound = FindRecord(uId, uKey);
    if (pFound == nullptr || pFound->uValue == NO_VALUE) return;
    oHeap.Drop(oHeap.BytesOf(pFound->uValue));
    Writable(pFound, uKey).uValue = NO_VALUE;
    ++m_uDead;
}

void Data_Attributes::Restore(u2_t uId, u2_t uKey, u2_t uValue) noexcept {
    const Data_Att* pFound = FindRecord(uId, uKey);
    if (pFound == nullptr || pFound->uValue == uValue) return;
    m_uDead -= pFound->uValue == NO_VALUE;
    m_uDead += uValue == NO_VALUE;
    Writable(pFound, uKey).uValue = uValue;
}

// ---- of all nodes -----------------------------------------------------------

// One run.
void Data_Attributes::Settle(Array& o) noexcept {
    if (o.oRuns.Size() == 0) return;
    m_uMoved +=
        runs::MergeAll(o.oRuns(0), o.oAtt.Beg(), static_cast<u2_t>(o.oAtt.Size()), IsBefore);
    o.oRuns.Clear();
}

const Arr<Data_Att>& Data_Attributes::Records(u2_t uKey) noexcept {
    static const Arr<Data_Att> s_oNone;
    if (uKey > m_oArray.Size()) return s_oNone;
    Settle(*m_oArray(uKey - 1));
    return m_oArray(uKey - 1)->oAtt;
}

void Data_Attributes::AddLast(u2_t uId, u2_t uKey, u2_t uValue, std::size_t uNodes) {
    if (m_oHead.Size() == 0) m_oHead.Resize(uNodes);
    m_oArray(uKey - 1)->oAtt.Add(Data_Att{uId, uValue, m_oHead(uId)});
    m_oHead(uId) = uKey;
}

void Data_Attributes::Rollback(u2_t uFirst, Data_Heap& oHeap) noexcept {
    m_oHead.Truncate(uFirst);
    for (Array* p : m_oArray) {
        Settle(*p);
        Arr<Data_Att>& oAtt = p->oAtt;
        for (; oAtt.Size() != 0 && oAtt.Last().uId >= uFirst; oAtt.Pop()) {
            const u2_t uValue = oAtt.Last().uValue;
            m_uDead -= uValue == NO_VALUE;
            if (uValue != NO_VALUE) oHeap.Drop(oHeap.BytesOf(uValue));
        }
    }
}

void Data_Attributes::Forget() noexcept {
    for (Array* p : m_oArray) {
        p->oAtt.Clear();
        p->oRuns.Clear();
    }
    m_oHead.Clear();
    m_uDead = 0;
}

void Data_Attributes::Restart() noexcept {
    if (m_oName.Size() == 1) return;
    for (Array* p : m_oArray) Mem::Dispose(p);
    m_oArray.Truncate(0);
    Hash oNone;
    m_oName.Swap(oNone);
    Reset();
}

std::size_t Data_Attributes::HeapBytes() const noexcept {
    std::size_t uBytes = m_oName.HeapBytes() + m_oHead.HeapBytes() + m_oArray.HeapBytes();
    for (const Array* p : m_oArray) {
        uBytes += Mem::HeapBytes(p) + p->oAtt.HeapBytes() + p->oRuns.HeapBytes();
    }
    return uBytes;
}

bool Data_Attributes::Check(std::size_t uNodes, const Data_Heap& oHeap, u3_t& uReferred) const {
    u3_t uDead = 0;
    std::size_t uRecords = 0;
    for (std::size_t u = 0; u < m_oArray.Size(); ++u) {
        const Array& o = *m_oArray(u);
        const u2_t uSize = static_cast<u2_t>(o.oAtt.Size());
        uRecords += uSize;
        for (u2_t uNth = 0; uNth < uSize; ++uNth) {
            const Data_Att& oAtt = o.oAtt(uNth);
            if (oAtt.uId >= uNodes || oAtt.uId >= m_oHead.Size()) return false;
            if (oAtt.uValue != NO_VALUE) {
                if (oAtt.uValue >= oHeap.Size()) return false;
                uReferred += oHeap.BytesOf(oAtt.uValue);
            }
            // Each is found, so runs are in order and no node is in two of them.
            if (FindIn(o, oAtt.uId) != &oAtt) return false;
            uDead += oAtt.uValue == NO_VALUE;
        }
    }
    // The chains lead to every record once.
    for (std::size_t uId = 0; uId < m_oHead.Size(); ++uId) {
        for (u2_t uKey = m_oHead(uId); uKey != 0;) {
            const Data_Att* p = FindRecord(static_cast<u2_t>(uId), uKey);
            if (p == nullptr || uRecords-- == 0) return false;
            uKey = p->uNext;
        }
    }
    return uRecords == 0 && uDead == m_uDead;
}

// ---- compaction -------------------------------------------------------------

Data_Attributes::Rewrite::Rewrite(Data_Attributes& oTable, bool bMayDrop, const Arr<u2_t>& oNewId)
    : m_oTable(oTable), m_oNewId(oNewId) {
    const Hash& oNames = m_oTable.m_oName;
    m_oNewKey.Resize(m_oTable.m_oArray.Size() + 1);
    u2_t uUsed = 0;
    for (u2_t uKey = 1; uKey < m_oNewKey.Size(); ++uKey) {
        const Arr<Data_Att>& oAtt = m_oTable.Records(uKey);
        const bool bUsed =
            std::any_of(oAtt.begin(), oAtt.end(), [this](const Data_Att& o) { return IsKept(o); });
        m_oNewKey(uKey) = bUsed ? uKey : 0;
        uUsed += bUsed;
    }
    m_bDrop = bMayDrop && Data_Names::IsWorthDropping(oNames.Size(), uUsed);
    if (!m_bDrop) return;
    for (u2_t& uKey : std::span(m_oNewKey.Beg(), m_oNewKey.End())) {
        if (uKey != 0) uKey = m_oName.Insert(oNames(uKey).View());
    }
}

u3_t Data_Attributes::Rewrite::KeepValues(Data_TextRanges& oRanges, const Data_Heap& oHeap) const {
    u3_t uReferred = 0;
    for (const Array* pArray : m_oTable.m_oArray) {
        for (const Data_Att& o : pArray->oAtt) {
            if (!IsKept(o)) continue;
            const std::size_t uBytes = oHeap.BytesOf(o.uValue);
            oRanges.Keep(o.uValue, uBytes);
            uReferred += uBytes;
        }
    }
    return uReferred;
}

void Data_Attributes::Rewrite::Copy(std::size_t uNodes, const Data_TextRanges& oRanges) {
    if (m_oTable.IsUnused()) return;
    m_oHead.Resize(uNodes);
    m_oBegin.Reserve(m_oTable.m_oArray.Size());
    for (std::size_t uName = 0; uName < m_oTable.m_oArray.Size(); ++uName) {
        m_oBegin.Add(m_oRecord.Size());
        for (const Data_Att& o : m_oTable.m_oArray(uName)->oAtt) {
            if (!IsKept(o)) continue;
            const u2_t uId = m_oNewId(o.uId);
            m_oRecord.Add(Data_Att{uId, oRanges.NewOffset(o.uValue), m_oHead(uId)});
            m_oHead(uId) = m_oNewKey(uName + 1);
        }
    }
}

void Data_Attributes::Rewrite::Commit() {
    if (m_bDrop) m_oTable.m_oName.Swap(m_oName);
    // The arrays only get shorter: nothing here needs memory any more.
    for (std::size_t uName = 0; uName < m_oBegin.Size(); ++uName) {
        Arr<Data_Att>& oAtt = m_oTable.m_oArray(uName)->oAtt;
        const std::size_t uEnd =
            uName + 1 < m_oBegin.Size() ? m_oBegin(uName + 1) : m_oRecord.Size();
        std::copy(m_oRecord.Beg() + m_oBegin(uName), m_oRecord.Beg() + uEnd, oAtt.Beg());
        oAtt.Truncate(uEnd - m_oBegin(uName));
    }
    if (m_bDrop) DropArrays();
    m_oTable.m_oHead.Swap(m_oHead);
    m_oTable.m_uDead = 0;
}

// The arrays of names that were dropped.
void Data_Attributes::Rewrite::DropArrays() noexcept {
    Arr<Array*>& oArray = m_oTable.m_oArray;
    std::size_t uKept = 0;
    for (std::size_t u = 0; u < oArray.Size(); ++u) {
        Array* const p = oArray(u);
        if (m_oNewKey(u + 1) != 0) {
            oArray(uKept++) = p;
        } else {
            Mem::Dispose(p);
        }
    }
    oArray.Truncate(uKept);
}

}  // namespace vok

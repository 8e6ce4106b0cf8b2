// SPDX-License-Identifier: MIT
// The library as a whole: failures, limits, texts handed out, counters.
#include <array>
#include <cstring>
#include <iterator>
#include <new>

#include "c/internal.h"
#include "vok/base/mem.h"
#include "vok/base/msg_entry.h"
#include "vok/base/utf8.h"
#include "vok/data/node.h"

namespace vok::c {

namespace {

// Plain memory: it costs a thread nothing to start with, nothing has to end with it.
struct Last {
    vok_tree_error oError;
    bool bPlaced;
    char sText[Msg_Exception::CAPACITY];
    char sTrail[Msg_Exception::CAPACITY];
    char sPath[1024];
};
thread_local Last t_oLast;

vok_tree_status Keep(vok_tree_status iCode, std::string_view sText, const char* sTrail) noexcept {
    Last& o = t_oLast;
    if (sText.ends_with('\n')) sText.remove_suffix(1);
    CopyCut(sText, o.sText, sizeof(o.sText));
    CopyCut(sTrail, o.sTrail, sizeof(o.sTrail));
    if (!o.bPlaced) {
        o.oError = {};
        o.sPath[0] = 0;
    }
    o.bPlaced = false;
    o.oError.code = iCode;
    return iCode;
}

vok_tree_status StatusOf(const std::exception& oError) noexcept {
    switch (Msg_Exception::KindOf(oError)) {
        case Msg_Kind::NoMemory: return VOK_TREE_NO_MEMORY;
        case Msg_Kind::Limit: return VOK_TREE_LIMIT;
        case Msg_Kind::System: return VOK_TREE_SYSTEM;
        default: return VOK_TREE_FAILED;
    }
}

constexpr u3_t Limits::*LIMITS[] = {
    &Limits::m_uNodes,          &Limits::m_uDepth,         &Limits::m_uSkippedSlots,
    &Limits::m_uTextBytes,      &Limits::m_uAttributes,    &Limits::m_uInflatedBytes,
    &Limits::m_uInflationRatio, &Limits::m_uZipEntries,    &Limits::m_uPathSteps,
    &Limits::m_uWorkPerByte,    &Limits::m_uMemoryPerByte,
};
static_assert(std::size(LIMITS) == VOK_TREE_LIMIT_COUNT);

// The banner is for programs with a console of their own; a program that uses this library sees
// every failure as a result.
const bool g_bQuiet = (Msg::SetBanner(false), true);

}  // namespace

void RaiseArgument(const char* sName) {
    RaiseAs(VOK_TREE_ARGUMENT, [&] { Msg::ParameterHasInvalidValue(sName); });
}

vok_tree_status KeepFailure() noexcept {
    try {
        throw;
    } catch (const Failure& e) {
        return Keep(e.m_iCode, e.what(), e.where());
    } catch (const Msg_Exception& e) {
        return Keep(StatusOf(e), e.what(), e.where());
    } catch (const std::bad_alloc&) {
        return Keep(VOK_TREE_NO_MEMORY, "out of memory", "");
    } catch (const std::exception& e) {
        return Keep(VOK_TREE_FAILED, e.what(), "");
    } catch (...) {
        return Keep(VOK_TREE_FAILED, "unknown failure", "");
    }
}

void KeepPlace(const Load_Report& oReport) noexcept {
    Last& o = t_oLast;
    o.oError = {};
    o.oError.offset = oReport.m_uOffset;
    o.oError.line = oReport.m_uLine;
    o.oError.column = oReport.m_uColumn;
    CopyCut(oReport.m_oPath.View(), o.sPath, sizeof(o.sPath));
    o.bPlaced = true;
}

std::string_view Text(const char* sText, std::size_t uSize, const char* sName) {
    if (sText == nullptr) {
        if (uSize != 0 && uSize != VOK_TREE_TO_NUL) RaiseArgument(sName);
        return {};
    }
    return uSize == VOK_TREE_TO_NUL ? std::string_view(sText) : std::string_view(sText, uSize);
}

const char* Path(const char* sPath) {
    if (sPath == nullptr || *sPath == 0) RaiseArgument("path");
    return sPath;
}

Limits ToLimits(const vok_tree_limits* pLimits) noexcept {
    Limits oLimits;
    if (pLimits == nullptr) return oLimits;
    for (std::size_t u = 0; u < std::size(LIMITS); ++u) {
        if (pLimits->at_most[u] != 0) oLimits.*LIMITS[u] = pLimits->at_most[u];
    }
    return oLimits;
}

void CopyCut(std::string_view sText, char* pTarget, std::size_t uRoom) noexcept {
    std::size_t uSize = sText.size();
    if (uSize >= uRoom) {
        uSize = uRoom - 1;
        while (uSize > 0 && (static_cast<u0_t>(sText[uSize]) & 0xC0) == 0x80) --uSize;
    }
    pTarget[sText.copy(pTarget, uSize)] = 0;
}

vok_tree_status CopyOut(std::string_view sText, char* pBuffer, std::size_t uRoom,
                        std::size_t* pLength) noexcept {
    SetIfWanted(pLength, sText.size());
    if (pBuffer == nullptr) return VOK_TREE_OK;
    if (uRoom <= sText.size()) return VOK_TREE_TOO_SMALL;
    pBuffer[sText.copy(pBuffer, sText.size())] = 0;
    return VOK_TREE_OK;
}

vok_tree_status CopyOut(std::string_view sText, vok_tree_char16* pBuffer, std::size_t uRoom,
                        std::size_t* pLength) {
    Str::Utf16 oText{Str(sText)};
    SetIfWanted(pLength, oText.Len());
    if (pBuffer == nullptr) return VOK_TREE_OK;
    if (uRoom <= oText.Len()) return VOK_TREE_TOO_SMALL;
    std::memcpy(pBuffer, oText.CStr(), (oText.Len() + 1) * sizeof(vok_tree_char16));
    return VOK_TREE_OK;
}

}  // namespace vok::c

using namespace vok;

int32_t vok_tree_interface_version(void) {
    return VOK_TREE_INTERFACE;
}

const vok_tree_error* vok_tree_last_error(void) {
    c::Last& o = c::t_oLast;
    o.oError.text = o.sText;
    o.oError.path = o.sPath;
    o.oError.trail = o.sTrail;
    return &o.oError;
}

void vok_tree_clear_error(void) {
    (void)c::Keep(VOK_TREE_OK, "", "");
}

vok_tree_status vok_tree_set_language(int32_t language) {
    return c::Call(__func__, [&] {
        if (language != VOK_TREE_ENGLISH && language != VOK_TREE_GERMAN) {
            c::RaiseArgument("language");
        }
        Msg::SetLanguageIndex(static_cast<u2_t>(language));
    });
}

int64_t vok_tree_live_handles(void) {
    return c::Counted::s_iLive.load(std::memory_order_relaxed);
}

int64_t vok_tree_live_blocks(void) {
    return static_cast<int64_t>(Mem::BlocksInUse());
}

int64_t vok_tree_live_bytes(void) {
    return static_cast<int64_t>(Mem::BytesInUse());
}

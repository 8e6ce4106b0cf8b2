// SPDX-License-Identifier: MIT
// The library as a whole: version, errors, statistics, settings.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>

#include "serializer/c/internal.h"
#include "serializer/exception.h"
#include "serializer/utilities.h"
#include "vok/base/mem.h"
#include "vok/base/msg.h"
#include "vok/base/msg_exception.h"
#include "vok/base/number.h"
#include "vok/base/types.h"
#include "vok/base/utf8.h"

namespace Velmar::Q7R::Serializer::C {

namespace {

// A text for the host, UTF-16, built from pieces. Plain memory: it costs a thread nothing to start
// with, nothing has to end with it.
template <std::size_t UNITS>
struct HostText {
    vok_char aUnits[UNITS];
    std::size_t uUsed;

    void Clear() noexcept { aUnits[uUsed = 0] = 0; }
    void Add(const char* sText) noexcept {
        const char* const pEnd = sText + std::strlen(sText);
        // Room for a pair of surrogates and the NUL.
        while (sText != pEnd && uUsed + 3 <= UNITS) {
            uUsed += vok::EncodeUtf16(vok::DecodeUtf8(sText, pEnd), aUnits + uUsed);
        }
        aUnits[uUsed] = 0;
    }
    void AddNumber(const char* sBefore, std::uint64_t uNumber) noexcept {
        char s[vok::NUMBER_ROOM];
        vok::FormatInteger(uNumber, s);
        Add(sBefore);
        Add(s);
    }
};

// A message and its trail have at most 1,023 bytes each, and UTF-16 never more units than UTF-8
// bytes.
thread_local HostText<2048> t_oLastError;
thread_local HostText<2816> t_oDetail;

void AddPlace(const System::ApplicationException::Place& o) noexcept {
    if (o.uOffset == 0 && o.uLine == 0) return;
    t_oDetail.AddNumber("at byte ", o.uOffset);
    if (o.uLine != 0) {
        t_oDetail.AddNumber(", line ", o.uLine);
        t_oDetail.AddNumber(", column ", o.uColumn);
    }
    if (o.sPath[0] != 0) t_oDetail.Add(", in ");
    t_oDetail.Add(o.sPath);
    t_oDetail.Add("\n");
}

// What the facade nested in its own failure.
void SetDetail(const System::ApplicationException& oFailure) noexcept {
    try {
        std::rethrow_if_nested(oFailure);
    } catch (const vok::Msg_Exception& e) {
        t_oDetail.Add(e.what());
        AddPlace(oFailure.GetPlace());
        t_oDetail.Add(e.where());
    } catch (const std::exception& e) {
        t_oDetail.Add(e.what());
        t_oDetail.Add("\n");
        AddPlace(oFailure.GetPlace());
    } catch (...) {
        t_oDetail.Add("unknown failure\n");
    }
}

// The banner is for programs with a console of their own; a host of this library sees every
// failure as a result.
const bool g_bQuiet = (vok::Msg::SetBanner(false), true);

}  // namespace

const Node& Disposed() noexcept {
    struct Gone : Node {
        Gone() { Dispose(); }
    };
    static const Gone s_oGone;
    return s_oGone;
}

void SetLastError(const std::exception& oFailure) noexcept {
    t_oLastError.Clear();
    t_oLastError.Add(oFailure.what());
    t_oDetail.Clear();
    if (const auto* p = dynamic_cast<const System::ApplicationException*>(&oFailure)) SetDetail(*p);
}

}  // namespace Velmar::Q7R::Serializer::C

using namespace Velmar::Q7R::Serializer;

int32_t vok_serializer_version(void) {
    return VOK_SERIALIZER_VERSION;
}

const vok_char* vok_last_error(void) {
    return C::t_oLastError.aUnits;
}

const vok_char* vok_last_error_detail(void) {
    return C::t_oDetail.aUnits;
}

int64_t vok_live_nodes(void) {
    return vok_node::s_iLive.load(std::memory_order_relaxed);
}

int64_t vok_live_blocks(void) {
    return static_cast<int64_t>(vok::Mem::BlocksInUse());
}

int64_t vok_live_bytes(void) {
    return static_cast<int64_t>(vok::Mem::BytesInUse());
}

int32_t vok_set_banner(int32_t on) {
    return vok::Msg::SetBanner(on != 0) ? 1 : 0;
}

vok_status vok_set_language(int32_t language) {
    return C::Do([&] { vok::Msg::SetLanguageIndex(static_cast<vok::u2_t>(language)); });
}

vok_status vok_set_log_file(const vok_char* path) {
    return C::Do([&] { vok::Msg::SetLogFile(Utilities::NativeText(C::Text(path)).CStr()); });
}

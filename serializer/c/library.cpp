// The library as a whole: version, errors, statistics, settings.
#include <cstring>

#include "serializer/c/internal.h"
#include "serializer/utilities.h"
#include "vok/base/mem.h"
#include "vok/base/msg.h"
#include "vok/base/utf8.h"

namespace Velmar::Q7R::Serializer::C {

namespace {

// A message and its trail have at most 1,023 bytes each, and UTF-16 never more units than UTF-8
// bytes. Plain memory: it costs a thread nothing to start with, nothing has to end with it.
constexpr std::size_t ERROR_UNITS = 2048;
thread_local vok_char t_aLastError[ERROR_UNITS];

}  // namespace

const Node& Disposed() noexcept {
    struct Gone : Node {
        Gone() { Dispose(); }
    };
    static const Gone s_oGone;
    return s_oGone;
}

void SetLastError(const char* sText) noexcept {
    const char* const pEnd = sText + std::strlen(sText);
    std::size_t uUnits = 0;
    // Room for a pair of surrogates and the NUL.
    while (sText != pEnd && uUnits + 3 <= ERROR_UNITS) {
        const vok::u2_t uCode = vok::DecodeUtf8(sText, pEnd);
        if (uCode < 0x10000) {
            t_aLastError[uUnits++] = static_cast<vok_char>(uCode);
        } else {
            t_aLastError[uUnits++] = static_cast<vok_char>(0xD7C0 + (uCode >> 10));
            t_aLastError[uUnits++] = static_cast<vok_char>(0xDC00 + (uCode & 0x3FF));
        }
    }
    t_aLastError[uUnits] = 0;
}

}  // namespace Velmar::Q7R::Serializer::C

using namespace Velmar::Q7R::Serializer;

int32_t vok_serializer_version(void) {
    return VOK_SERIALIZER_VERSION;
}

const vok_char* vok_last_error(void) {
    return C::t_aLastError;
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

// SPDX-License-Identifier: MIT
// Untrusted files of trees in every wrapping: what can be read is the same in all of them.
#include "fuzz/fuzz_support.h"
#include "vok/dgraph/container.h"
#include "vok/zip/buf.h"

namespace {

using namespace vok;

Limits ContainerLimits() {
    Limits oLimits = SmallLimits();
    oLimits.m_uInflatedBytes = 1u << 20;
    return oLimits;
}

std::string Load(Data& oTree, std::string_view sBytes) {
    return Raised(
        [&] { Dgraph_LoadFromBuffer(oTree, sBytes.data(), sBytes.size(), ContainerLimits()); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    [[maybe_unused]] static const bool s_bBanner = Msg::SetBanner(false);
    const std::string_view sBytes(reinterpret_cast<const char*>(pData), uSize);
    Data oTree;
    const bool bGood = Load(oTree, sBytes).empty();

    // The same bytes compressed once more: a wrapping inside another one is not looked into.
    const bool bPlain = !sBytes.starts_with('x') && !sBytes.starts_with("PK");
    Arr<char> oPacked;
    DGraph_Compress(oPacked, sBytes.data(), static_cast<u2_t>(uSize));
    Data oAgain;
    const bool bAgain = Load(oAgain, {oPacked.Beg(), oPacked.Size()}).empty();
    if (bPlain) Check(bAgain == bGood);
    Data oCut;
    Check(!Load(oCut, {oPacked.Beg(), oPacked.Size() - 1}).empty());
    if (!bGood || !oTree.IsNode()) return 0;

    std::string sSaved;
    if (!Raised([&] { sSaved = Save(oTree); }).empty()) return 0;  // no version, no document
    if (bPlain) Check(Save(oAgain) == sSaved);
    return 0;
}

// SPDX-License-Identifier: MIT
// Untrusted documents into objects with fields of every kind: straight from the records and through
// a tree must give the same object or the same error.
#include "fuzz/fuzz_support.h"
#include "tests/serializer/field_types.h"

namespace {

using namespace field_types;
using vok::Check;

// The object that oRead gives, as it is written, or the error.
template <class F>
std::string Outcome(const F& oRead) {
    All object;
    try {
        oRead(object);
    } catch (const System::ApplicationException& e) {
        return std::string("raised ") + e.what();
    }
    // A NaN is not equal to itself, its bytes are.
    const auto aoBytes = Serializer().Write(object);
    Check(aoBytes == fields::WriteThroughTree(fields::SourceOf(object), true));
    return {aoBytes.begin(), aoBytes.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
    const std::span<const Byte> oDocument(pData, uSize);
    for (const bool bRefuse : {false, true}) {
        const std::string sStraight =
            Outcome([&](All& o) { fields::ReadDocument(oDocument, o, bRefuse); });
        const std::string sByTree = Outcome(
            [&](All& o) { fields::ReadThroughTree(oDocument, fields::TargetOf(o), bRefuse); });
        Check(sStraight == sByTree);
    }
    return 0;
}

// Most damage leaves no document at all: half of the inputs are made of one.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* pData, std::size_t uSize, std::size_t uMost);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* pData, std::size_t uSize,
                                               std::size_t uMost, unsigned uSeed) {
    Filler oFiller(uSeed);
    if (oFiller.Below(8) == 0) {
        All object;
        oFiller.Fill(object);
        const auto aoBytes = Shuffler(uSeed).Shuffle(Serializer().Write(object));
        if (aoBytes.size() <= uMost) {
            std::copy(aoBytes.begin(), aoBytes.end(), pData);
            uSize = aoBytes.size();
        }
    }
    return LLVMFuzzerMutate(pData, uSize, uMost);
}

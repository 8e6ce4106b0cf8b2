// SPDX-License-Identifier: MIT
#include "serializer/node.h"

#include "serializer/document.h"
#include "serializer/fields/failure.h"
#include "serializer/fields/tree_in.h"
#include "serializer/guarded.h"
#include "serializer/utilities.h"
#include "vok/base/msg.h"
#include "vok/base/types.h"
#include "vok/data/view.h"

namespace Velmar::Q7R::Serializer {

using vok::Data_Node;
using vok::Data_View;

namespace {

// Hands oUse a name for the native side: UTF-8 as it is, UTF-16 converted.
template <class F>
decltype(auto) WithName(StringRef oName, F&& oUse) {
    if (oName.Utf8().data() != nullptr) return oUse(oName.Utf8());
    return oUse(std::string_view(Utilities::NativeText(oName).CStr()));
}

// The successor of a name, handed to one of two functions if there is one; tells whether there
// was. oFromView gets a value of the type asked for where it lies, oFromCursor all others.
template <class FromView, class FromCursor>
bool WithSuccessor(const vok::Data& oNode, StringRef oName, Int32 iIndex, Data_Node::Type eType,
                   const FromView& oFromView, const FromCursor& oFromCursor) {
    const auto uIndex = static_cast<vok::u2_t>(iIndex);
    return WithName(oName, [&](std::string_view sName) {
        Data_View oFound;
        vok::Data oSucc;
        if (Data_View::FindIfOrdered(oNode, sName, uIndex, oFound)) {
            if (!oFound.IsNode()) return false;
            if (oFound.GetType() == eType) {
                oFromView(oFound);
                return true;
            }
            oSucc = oNode.GetNodeFromID(oFound.GetId());
        } else {
            oSucc = oNode.GetNthSucc(sName, uIndex);
            if (!oSucc.IsNode()) return false;
        }
        oFromCursor(oSucc);
        return true;
    });
}

// The same where a cursor is what is wanted.
template <class FromCursor>
bool WithSuccessor(const vok::Data& oNode, StringRef oName, Int32 iIndex,
                   const FromCursor& oFromCursor) {
    constexpr auto NO_VALUE = static_cast<Data_Node::Type>(~0u);  // the type of no node
    return WithSuccessor(
        oNode, oName, iIndex, NO_VALUE, [](const Data_View&) {}, oFromCursor);
}

// The successor of a name read as fields are, with their errors.
template <class Read>
bool ReadSuccessor(const vok::Data& oNode, StringRef oName, Int32 iIndex, const char* sFailure,
                   const Read& oRead) {
    vok::Data oFound;
    const bool bFound = Guarded(sFailure, [&] {
        return WithSuccessor(oNode, oName, iIndex, [&](const vok::Data& o) { oFound = o; });
    });
    if (!bFound) return false;
    try {
        oRead(fields::TreeIn(oFound, false));
    } catch (const fields::Fault& e) {
        fields::RaiseAt(e.sPath, e.sReason);
    }
    return true;
}

vok::Data NewSuccessor(vok::Data& oNode, StringRef oName) {
    return WithName(oName, [&](std::string_view sName) { return oNode.CreateNewSucc(sName); });
}

// A value that could not be added added nothing; its successor stays, without one.
void LeaveSuccessor(vok::Data* pNode, StringRef oName) noexcept {
    if (pNode == nullptr || !pNode->IsNode()) return;
    try {
        WithName(oName, [&](std::string_view sName) {
            if (pNode->FindKey(sName).IsKnown()) (void)pNode->CreateNewSucc(sName);
        });
    } catch (...) {
        // Then it is not to be had either; the first reason is the one to tell.
    }
}

constexpr const char* QUAD_NAMES[] = {"V1", "V2", "V3", "V4"};

}  // namespace

Node::Node(bool isRootNode) {
    if (!isRootNode) return;
    m_oData.SetToRoot();
    Document::StampVersion(m_oData);
}

void Node::Dispose(bool) {
    m_oData.Clear();
    m_bDisposed = true;
}

const vok::Data& Node::Cursor() const {
    if (m_bDisposed) vok::Msg::ObjectPointsToNothing();
    return m_oData;
}

vok::Data& Node::Cursor() {
    if (m_bDisposed) vok::Msg::ObjectPointsToNothing();
    return m_oData;
}

// ---- writing ----------------------------------------------------------------

void Node::AddValue(StringRef name, StringRef value) {
    try {
        WithName(name, [&](std::string_view sName) {
            if (value.Utf8().data() != nullptr) {
                Cursor().AddStr(sName, value.Utf8());
            } else {
                Cursor().AddStr(sName, Utilities::NativeText(value).CStr());
            }
        });
    } catch (...) {
        LeaveSuccessor(static_cast<vok::Data*>(*this), name);
        std::throw_with_nested(System::ApplicationException("Failed to add Node String value"));
    }
}

void Node::AddValue(StringRef name, Int32 value) {
    Guarded("Failed to add Node int value", [&] {
        WithName(name, [&](std::string_view sName) { Cursor().AddInt(sName, value); });
    });
}

void Node::AddValue(StringRef name, double value) {
    Guarded("Failed to add Node double value", [&] {
        WithName(name, [&](std::string_view sName) { Cursor().AddDbl(sName, value); });
    });
}

void Node::AddValue(StringRef name, bool value) {
    Guarded("Failed to add Node bool value", [&] {
        WithName(name, [&](std::string_view sName) { Cursor().AddBool(sName, value); });
    });
}

void Node::AddValue(StringRef name, std::span<const Byte> value) {
    try {
        WithName(name, [&](std::string_view sName) {
            const auto uSize = static_cast<vok::u2_t>(vok::Msg::ToInt32(value.size()));
            Cursor().AddBin(sName, value.data(), uSize);
        });
    } catch (...) {
        LeaveSuccessor(static_cast<vok::Data*>(*this), name);
        std::throw_with_nested(System::ApplicationException("Failed to add Node byte array"));
    }
}

void Node::AddValue(StringRef name, Int32 v1, Int32 v2, Int32 v3, Int32 v4) {
    Guarded("Failed to add Node quad tuple", [&] {
        vok::Data oQuad = NewSuccessor(Cursor(), name);
        const Int32 ai[] = {v1, v2, v3, v4};
        for (int i = 0; i < 4; ++i) oQuad.AddInt(QUAD_NAMES[i], ai[i]);
    });
}

void Node::AddLong(StringRef name, std::uint64_t value) {
    Guarded("Failed to add Node int value", [&] {
        WithName(name, [&](std::string_view sName) { Cursor().AddLng(sName, value); });
    });
}

void Node::AddDate(StringRef name, double seconds) {
    Guarded("Failed to add Node int value", [&] {
        WithName(name,
                 [&](std::string_view sName) { Cursor().AddDbl(sName, seconds, Data_Node::Date); });
    });
}

Node Node::AddSubnode(StringRef name) {
    return Guarded("Failed to add subnode", [&] { return Node(NewSuccessor(Cursor(), name)); });
}

// ---- reading ----------------------------------------------------------------

bool Node::TryGetValue(StringRef name, Int32 index, std::string_view& value) const {
    try {
        return WithSuccessor(
            Cursor(), name, index, Data_Node::String, [&](const Data_View& o) { value = o.Text(); },
            [&](const vok::Data& o) {
                const char* sText = o.GetStr(nullptr);
                value = sText != nullptr ? sText : "";
            });
    } catch (const vok::Msg_Exception& e) {
        std::throw_with_nested(System::ApplicationException(e.what(), e.where()));
    } catch (...) {
        std::throw_with_nested(System::ApplicationException("Failed to get Node String value"));
    }
}

bool Node::TryGetValue(StringRef name, Int32 index, String& value) const {
    std::string_view sText;
    if (!TryGetValue(name, index, sText)) return false;
    Guarded("Failed to get Node String value", [&] { value = Utilities::Utf8ToString(sText); });
    return true;
}

bool Node::TryGetValue(StringRef name, Int32 index, std::string& value) const {
    std::string_view sText;
    if (!TryGetValue(name, index, sText)) return false;
    Guarded("Failed to get Node String value", [&] { value = sText; });
    return true;
}

bool Node::TryGetValue(StringRef name, Int32 index, Int32& value) const {
    return Guarded("Failed to get Node int value", [&] {
        return WithSuccessor(
            Cursor(), name, index, Data_Node::Integer, [&](const Data_View& o) { value = o.Int(); },
            [&](const vok::Data& o) { value = o.GetValInt(Data_Node::Integer); });
    });
}

bool Node::TryGetValue(StringRef name, Int32 index, double& value) const {
    return Guarded("Failed to get Node double value", [&] {
        return WithSuccessor(
            Cursor(), name, index, Data_Node::Double, [&](const Data_View& o) { value = o.Dbl(); },
            [&](const vok::Data& o) { value = o.GetValDbl(Data_Node::Double); });
    });
}

bool Node::TryGetValue(StringRef name, Int32 index, bool& value) const {
    return Guarded("Failed to get Node bool value", [&] {
        return WithSuccessor(
            Cursor(), name, index, Data_Node::Boolean,
            [&](const Data_View& o) { value = o.Int() != 0; },
            [&](const vok::Data& o) { value = o.GetValInt(Data_Node::Boolean) != 0; });
    });
}

bool Node::TryGetValue(StringRef name, Int32 index, std::span<const Byte>& value) const {
    return Guarded("Failed to get Node byte array", [&] {
        return WithSuccessor(Cursor(), name, index, [&](const vok::Data& oSucc) {
            vok::u2_t uSize = 0;
            const Byte* pData = static_cast<const Byte*>(oSucc.GetValBin(uSize));
            (void)vok::Msg::ToInt32(uSize);
            value = {pData, uSize};
        });
    });
}

bool Node::TryGetValue(StringRef name, Int32 index, std::vector<Byte>& value) const {
    std::span<const Byte> oBytes;
    if (!TryGetValue(name, index, oBytes)) return false;
    Guarded("Failed to get Node byte array", [&] { value.assign(oBytes.begin(), oBytes.end()); });
    return true;
}

bool Node::TryGetWhole(StringRef name, Int32 index, std::int64_t lowest, std::uint64_t highest,
                       std::uint64_t& bits) const {
    return ReadSuccessor(Cursor(), name, index, "Failed to get Node int value",
                         [&](const fields::TreeIn& in) { bits = in.WholeOf(lowest, highest); });
}

bool Node::TryGetValue(StringRef name, Int32 index, float& value) const {
    return ReadSuccessor(Cursor(), name, index, "Failed to get Node double value",
                         [&](const fields::TreeIn& in) { in.Get(value); });
}

bool Node::TryGetTicks(StringRef name, Int32 index, std::int64_t period, std::int64_t lowest,
                       std::uint64_t highest, std::int64_t& ticks) const {
    return ReadSuccessor(
        Cursor(), name, index, "Failed to get Node int value",
        [&](const fields::TreeIn& in) { (void)in.GetDate(ticks, period, lowest, highest); });
}

bool Node::TryGetValue(StringRef name, Int32 index, Int32& v1, Int32& v2, Int32& v3,
                       Int32& v4) const {
    return Guarded("Failed to get Node int value", [&] {
        bool bAll = true;
        const bool bFound = WithSuccessor(Cursor(), name, index, [&](const vok::Data& oQuad) {
            Int32* const api[] = {&v1, &v2, &v3, &v4};
            for (int i = 0; i < 4; ++i) {
                const vok::Data oValue = oQuad.GetNthSucc(QUAD_NAMES[i], 0);
                if (oValue.IsNode()) {
                    *api[i] = oValue.GetValInt(Data_Node::Integer);
                } else {
                    bAll = false;
                }
            }
        });
        return bFound && bAll;
    });
}

bool Node::TryGetSubnode(StringRef name, Int32 index, Node& node) const {
    return Guarded("Failed to get subnode", [&] {
        return WithSuccessor(Cursor(), name, index,
                             [&](const vok::Data& oSucc) { node = Node(oSucc); });
    });
}

Int32 Node::GetSubnodeCount(StringRef name) const {
    return Guarded("Failed to get subnode count", [&] {
        return WithName(name, [&](std::string_view sName) {
            return static_cast<Int32>(Cursor().GetSuccCount(sName));
        });
    });
}

Node::Subnodes Node::GetSubnodes() const {
    return Guarded("Failed to get subnode", [&] { return Subnodes(Cursor().GetSuccIt()); });
}

Node::Subnodes Node::GetSubnodes(StringRef name) const {
    return Guarded("Failed to get subnode", [&] {
        return WithName(
            name, [&](std::string_view sName) { return Subnodes(Cursor().GetSuccIt(sName)); });
    });
}

std::string_view Node::GetName() const {
    return Guarded("Failed to get subnode", [&] {
        const char* const sName = Cursor().GetName();
        return std::string_view(sName != nullptr ? sName : "");
    });
}

}  // namespace Velmar::Q7R::Serializer

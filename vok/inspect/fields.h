// SPDX-License-Identifier: MIT
// The bytes of one document, taken off field by field. Internal.
#ifndef VOK_INSPECT_FIELDS_H
#define VOK_INSPECT_FIELDS_H

#include <algorithm>
#include <cstdio>

#include "vok/base/arr.h"
#include "vok/file/window.h"
#include "vok/inspect/inspect.h"
#include "vok/inspect/messages.h"

namespace vok::inspect {

// Who gets the fields of all documents. Once they had enough, nothing more comes.
class Output {
  public:
    // Of each field uShown bytes are shown.
    explicit Output(const std::function<bool(const Inspect_Field&)>& oVisit,
                    u3_t uShown = Inspect_Field::SHOWN)
        : m_oVisit(oVisit), m_uShown(uShown) {}

    [[nodiscard]] u3_t Shown() const noexcept { return m_uShown; }

    void StartDocument(std::string_view sMember) noexcept {
        ++m_uDocument;
        m_sMember = sMember;
    }
    [[nodiscard]] bool IsOver() const noexcept { return m_bOver; }
    void Put(Inspect_Field& o) {
        o.m_uDocument = m_uDocument;
        o.m_sMember = m_sMember;
        if (!m_bOver) m_bOver = !m_oVisit(o);
    }

  private:
    const std::function<bool(const Inspect_Field&)>& m_oVisit;
    const u3_t m_uShown;
    u2_t m_uDocument = 0;
    std::string_view m_sMember;
    bool m_bOver = false;
};

// A value as text, made in place.
class Value {
  public:
    Value() noexcept = default;
    Value(const char* s) noexcept : m_s(s) {}  // NOLINT(google-explicit-constructor)
    template <class... T>
    explicit Value(const char* sFormat, T... t) {
        const int iLength = std::snprintf(m_sRoom, sizeof(m_sRoom), sFormat, t...);
        m_s = {m_sRoom, std::min(static_cast<std::size_t>(iLength), sizeof(m_sRoom) - 1)};
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // The bytes of the field are the text.
    [[nodiscard]] static const Value& Text() noexcept {
        static const Value s_o("");
        return s_o;
    }
    [[nodiscard]] bool IsText() const noexcept { return this == &Text(); }
    [[nodiscard]] std::string_view View() const noexcept { return m_s; }

  private:
    char m_sRoom[192];
    std::string_view m_s;
};

// Every byte that is taken off is put out as part of one field: that is all there is to read with,
// so that no byte can get lost.
class Fields {
  public:
    // uSize is how many bytes there are behind the position of oIn.
    Fields(File_Stream& oIn, u3_t uSize, Output& oOut)
        : m_oWindow(oIn), m_oOut(oOut), m_uEnd(uSize) {}

    [[nodiscard]] u3_t Offset() const noexcept { return m_oWindow.Offset(); }
    [[nodiscard]] u3_t Left() const noexcept { return m_uEnd - Offset(); }
    [[nodiscard]] bool IsOver() const noexcept { return m_oOut.IsOver(); }

    // The next bytes, or those that are left, without taking them off; until the next call.
    [[nodiscard]] std::string_view Look(u3_t uSize) {
        const auto uWanted = static_cast<std::size_t>(std::min(uSize, Left()));
        const std::string_view s = m_oWindow.Look(uWanted);
        if (s.size() < uWanted) m_uEnd = Offset() + s.size();  // a file that was cut meanwhile
        return s;
    }

    // What the fields that follow belong to.
    void SetPlace(std::string_view sPath, u2_t uDepth) noexcept {
        m_sPath = sPath;
        m_uDepth = uDepth;
    }

    // The next uLength bytes, or those that are left, which is a fault. Of none and without one
    // nothing.
    void Put(const char* sName, u3_t uLength, const Value& oValue, const char* sFault = "") {
        const bool bCut = uLength > Left();
        if (bCut) uLength = Left();
        if (uLength == 0 && !bCut && *sFault == 0) return;
        Begin();
        m_oField.m_sBytes = Look(std::min(uLength, m_oOut.Shown()));
        SetValue(oValue);
        m_oField.m_sFault = *sFault == 0 && bCut ? TextOf(Fault::Ends) : sFault;
        Emit(sName, uLength);
        Drop(uLength);
    }
    void Put(const char* sName, u3_t uLength, const Value& oValue, Fault eFault) {
        Put(sName, uLength, oValue, TextOf(eFault));
    }
    // Something that is not there.
    void PutMissing(const char* sName, Fault eFault, const Value& oValue = {}) {
        Put(sName, 0, oValue, eFault);
    }

    // A field whose length shows only while its bytes go by: between the two, Drop. Nothing else
    // may be put meanwhile.
    void Begin() {
        m_oField = {};
        m_oField.m_uOffset = Offset();
        m_oHead.Truncate(0);
    }
    void BeginLong() {
        Begin();
        const std::string_view s = Look(Inspect_Field::SHOWN);
        m_oHead.Add(s.data(), s.size());
    }
    void EndLong(const char* sName, const Value& oValue, Fault eFault) {
        const u3_t uLength = Offset() - m_oField.m_uOffset;
        if (uLength == 0 && eFault == Fault::None) return;
        const auto uHead = static_cast<std::size_t>(std::min<u3_t>(uLength, m_oHead.Size()));
        m_oField.m_sBytes = {m_oHead.Beg(), uHead};
        SetValue(oValue);
        m_oField.m_sFault = TextOf(eFault);
        Emit(sName, uLength);
    }
    void Drop(u3_t uLength) {
        while (uLength != 0) {
            const std::size_t uPart = Look(std::min<u3_t>(uLength, File_Window::CHUNK)).size();
            if (uPart == 0) return;
            m_oWindow.Skip(uPart);
            uLength -= uPart;
        }
    }
    // All that is left, of which nothing is known.
    void SkipRest() {
        BeginLong();
        Drop(Left());
        EndLong("", {}, Fault::None);
    }

    // A number. False where there are not enough bytes: they are put as what it would be.
    template <class T>
    bool Peek(const char* sName, T& tNumber) {
        const std::string_view s = Look(sizeof(T));
        if (s.size() < sizeof(T)) {
            Put(sName, sizeof(T), {});
            return false;
        }
        tNumber = le::Load<T>(s.data());
        return true;
    }

  private:
    void SetValue(const Value& oValue) {
        m_oField.m_bText = oValue.IsText();
        m_oField.m_sValue = m_oField.m_bText ? m_oField.m_sBytes : oValue.View();
    }
    void Emit(const char* sName, u3_t uLength) {
        if (m_oField.m_bText && m_oField.m_sBytes.size() == uLength &&
            m_oField.m_sValue.ends_with('\0')) {
            m_oField.m_sValue.remove_suffix(1);
        }
        m_oField.m_sName = sName;
        m_oField.m_uLength = uLength;
        m_oField.m_sPath = m_sPath;
        m_oField.m_uDepth = m_uDepth;
        m_oOut.Put(m_oField);
    }

    File_Window m_oWindow;
    Output& m_oOut;
    u3_t m_uEnd;
    std::string_view m_sPath;
    u2_t m_uDepth = 0;
    Inspect_Field m_oField;
    Arr<char> m_oHead;
};

}  // namespace vok::inspect

#endif  // VOK_INSPECT_FIELDS_H

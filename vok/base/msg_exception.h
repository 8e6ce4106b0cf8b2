// SPDX-License-Identifier: MIT
// The one exception type of the library.
#ifndef VOK_BASE_MSG_EXCEPTION_H
#define VOK_BASE_MSG_EXCEPTION_H

#include <exception>

#include "vok/base/types.h"

namespace vok {

// What a program tells failures apart by, whatever the language of their texts.
enum class Msg_Kind : u0_t {
    Other,     // what was asked for, or found in a document, is wrong
    NoMemory,  // there was no memory, or not as much as one block was to have
    Limit,     // a field of Limits is to be raised
    System,    // a call of the operating system failed; its reason ends the text
};

// A formatted message and the functions it passed through. The object owns all its
// storage: building, copying and throwing it takes no heap memory, so that running
// out of memory can be reported like anything else.
//
// Both texts are UTF-8 and NUL-terminated. What does not fit is dropped silently, at
// the border of a character.
class Msg_Exception : public std::exception {
  public:
    // Bytes of each text, its NUL included.
    static constexpr std::size_t CAPACITY = 1024;

    // Empty texts, stamped with the current time.
    Msg_Exception() noexcept;
    Msg_Exception(const Msg_Exception& oOther) noexcept;
    Msg_Exception& operator=(const Msg_Exception& oOther) noexcept;
    ~Msg_Exception() override;

    // The message; it ends in one line break unless it was cut.
    [[nodiscard]] const char* what() const noexcept override;

    // The qualified names of the functions passed, innermost first, each followed by a
    // line break.
    [[nodiscard]] const char* where() const noexcept { return m_sWhere; }

    // The kind of failure that any exception tells of; std::bad_alloc is NoMemory.
    [[nodiscard]] static Msg_Kind KindOf(const std::exception& oError) noexcept;
    [[nodiscard]] Msg_Kind Kind() const noexcept { return m_eKind; }
    void SetKind(Msg_Kind eKind) noexcept { m_eKind = eKind; }

    // When the object was made: whole seconds since 1970-01-01 UTC.
    [[nodiscard]] double Time() const noexcept { return m_fTime; }

    // Appends to the message as many characters as fit. Null appends nothing. A byte
    // that is not part of well-formed UTF-8 is taken as Latin-1.
    void Append(const char* sText) noexcept;
    // The same for uSize bytes without a NUL among them.
    void Append(const char* pText, std::size_t uSize) noexcept;

    // Appends "name\n", or "name(detail)\n" when a detail is given, to the trail. A null
    // or empty name appends nothing.
    void AddWhere(const char* sName, const char* sDetail = nullptr) noexcept;

  private:
    char m_sText[CAPACITY];
    char m_sWhere[CAPACITY];
    u2_t m_uText = 0;   // bytes used in m_sText, without the NUL
    u2_t m_uWhere = 0;  // bytes used in m_sWhere, without the NUL
    double m_fTime;
    Msg_Kind m_eKind = Msg_Kind::Other;
};

}  // namespace vok

#endif  // VOK_BASE_MSG_EXCEPTION_H

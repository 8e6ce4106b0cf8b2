// SPDX-License-Identifier: MIT
// The one exception type of the library.
#ifndef VOK_BASE_MSG_EXCEPTION_H
#define VOK_BASE_MSG_EXCEPTION_H

#include <exception>

#include "vok/base/types.h"

namespace vok {

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
};

}  // namespace vok

#endif  // VOK_BASE_MSG_EXCEPTION_H

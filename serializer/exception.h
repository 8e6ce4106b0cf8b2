// SPDX-License-Identifier: MIT
// The one exception that leaves the facade.
#ifndef SERIALIZER_EXCEPTION_H
#define SERIALIZER_EXCEPTION_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>

namespace Velmar::Q7R::Serializer::System {

// Carries the fixed text of the operation that failed. Exceptions of the host's own
// WriteValues and ReadValues pass through the facade as they are.
//
// Where there was a native error, what is thrown is a std::nested_exception as well: around a
// vok::Msg_Exception with its own text and the functions it passed, or whatever else was thrown:
//
//     catch (const System::ApplicationException& e) {
//         try { std::rethrow_if_nested(e); }
//         catch (const vok::Msg_Exception& reason) { print(reason.what(), e.GetPlace().uLine); }
//     }
//
// Owns all its storage, so that running out of memory can be reported like anything else.
class ApplicationException : public std::exception {
  public:
    // Where in a document reading failed; what is not known is 0, or empty.
    struct Place {
        std::uint64_t uOffset = 0;  // bytes from the beginning
        std::uint32_t uLine = 0;    // from 1
        std::uint32_t uColumn = 0;  // characters from 1
        char sPath[512] = "";       // of the node, UTF-8, cut to what there is room for
    };

    // Texts are cut to what there is room for.
    explicit ApplicationException(const char* sMessage, const char* sMore = "") noexcept {
        Append(sMessage);
        Append(sMore);
    }
    ApplicationException(const char* sMessage, const Place& oPlace) noexcept : m_oPlace(oPlace) {
        Append(sMessage);
    }
    [[nodiscard]] const char* what() const noexcept override { return m_sMessage; }
    [[nodiscard]] const Place& GetPlace() const noexcept { return m_oPlace; }

  private:
    void Append(const char* sText) noexcept {
        const std::size_t uUsed = std::strlen(m_sMessage);
        const std::size_t uRoom = sizeof(m_sMessage) - 1 - uUsed;
        const std::size_t uSize = std::strlen(sText);
        std::memcpy(m_sMessage + uUsed, sText, uSize < uRoom ? uSize : uRoom);
    }

    // A native message and its trail have at most 1,023 bytes each.
    char m_sMessage[2048] = "";
    Place m_oPlace;
};

}  // namespace Velmar::Q7R::Serializer::System

#endif  // SERIALIZER_EXCEPTION_H

// The one exception that leaves the facade.
#ifndef SERIALIZER_EXCEPTION_H
#define SERIALIZER_EXCEPTION_H

#include <exception>
#include <string>
#include <utility>

namespace Velmar::Q7R::Serializer::System {

// Carries the fixed text of the operation that failed. Exceptions of the host's own
// WriteValues and ReadValues pass through the facade as they are.
class ApplicationException : public std::exception {
  public:
    explicit ApplicationException(std::string sMessage) : m_sMessage(std::move(sMessage)) {}
    [[nodiscard]] const char* what() const noexcept override { return m_sMessage.c_str(); }

  private:
    std::string m_sMessage;
};

}  // namespace Velmar::Q7R::Serializer::System

#endif  // SERIALIZER_EXCEPTION_H

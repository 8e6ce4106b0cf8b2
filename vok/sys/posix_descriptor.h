// SPDX-License-Identifier: MIT
// Descriptors that are closed. Internal.
#ifndef VOK_SYS_POSIX_DESCRIPTOR_H
#define VOK_SYS_POSIX_DESCRIPTOR_H

#include <cerrno>
#include <utility>

#include <unistd.h>

namespace vok::sys {

// Leaves the reason of what went wrong before.
class Descriptor {
  public:
    explicit Descriptor(int i = -1) noexcept : m_i(i) {}
    Descriptor(Descriptor&& o) noexcept : m_i(std::exchange(o.m_i, -1)) {}
    Descriptor& operator=(Descriptor&& o) noexcept {
        std::swap(m_i, o.m_i);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        const int iError = errno;
        if (m_i >= 0) (void)::close(m_i);
        errno = iError;
    }
    [[nodiscard]] int Get() const noexcept { return m_i; }
    [[nodiscard]] bool IsOpen() const noexcept { return m_i >= 0; }
    [[nodiscard]] bool Close() noexcept { return ::close(std::exchange(m_i, -1)) == 0; }

  private:
    int m_i;
};

}  // namespace vok::sys

#endif  // VOK_SYS_POSIX_DESCRIPTOR_H

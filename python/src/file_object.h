// SPDX-License-Identifier: MIT
// File objects of Python as streams.
#ifndef VOK_PYTHON_FILE_OBJECT_H
#define VOK_PYTHON_FILE_OBJECT_H

#include <pybind11/pybind11.h>

#include "vok/file/stream.h"

namespace vok::python {

namespace py = pybind11;

// What a callback has raised, on its way through the library, which lets it pass: the error itself
// waits in the stream.
struct Callback_Raised {};

// The methods read or write of an object, in pieces, since a call costs as much as a thousand
// fields. They are called with the interpreter's lock, which is taken for that; so it may be given
// up around the whole operation, or not. Once one has raised an error it is not called any more.
class File_Object final : public File_Stream {
  public:
    explicit File_Object(py::object oFile) : m_oFile(std::move(oFile)) {}
    ~File_Object() override = default;

    std::size_t Read(Arr<char>& oBuffer, std::size_t uCount, bool bAppend) override {
        return ReadInChunks(oBuffer, uCount, bAppend);
    }
    std::size_t Read(void* pTarget, std::size_t uCount, bool bAllowShort) override;
    std::size_t Write(const void* pSource, std::size_t uCount) override;
    void Seek(i3_t iOffset, int iWhence) override;
    [[nodiscard]] i3_t Tell() override { return -1; }
    int Flush() override { return 0; }
    [[nodiscard]] bool CanSeek(int) const override { return false; }
    [[nodiscard]] const char* Name() const override { return "file object"; }
    [[nodiscard]] bool TakesPieces() const override { return true; }

    // Raises, as a Python error, what a callback has raised; with the lock.
    [[noreturn]] void RaiseAgain();

  private:
    static constexpr std::size_t PIECE = std::size_t{1} << 20;

    // What a method returned; notes and passes on what it raised.
    template <class Call>
    auto Guarded(const Call& oCall);
    [[nodiscard]] std::size_t ReadPiece(char* p, std::size_t uMost);
    [[nodiscard]] std::size_t WritePiece(const char* p, std::size_t uSize);

    py::object m_oFile;
    py::object m_oRaised;  // the error
    bool m_bRaised = false;
    bool m_bEnd = false;
};

}  // namespace vok::python

#endif  // VOK_PYTHON_FILE_OBJECT_H

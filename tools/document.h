// SPDX-License-Identifier: MIT
// Documents read record by record.
#ifndef TOOLS_DOCUMENT_H
#define TOOLS_DOCUMENT_H

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vok/base/limits.h"
#include "vok/records/reader.h"

namespace tools {

// A question that cannot be answered while a document goes by: it takes the whole tree.
struct NeedsTree : std::exception {};

// A file, or standard input ("-"), from its beginning. Raises InputError for what cannot be read;
// NeedsTree for native dumps, JSON and csv files, and for documents of another form than sFormat,
// which says what it must be unless it is empty.
class Document {
  public:
    explicit Document(const std::string& sPath, const std::string& sFormat = {});
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // Moves to the next record; false behind the last one. What stands behind the document is then
    // looked at as well.
    bool Next();
    [[nodiscard]] const vok::Data_Record* operator->() const noexcept;
    [[nodiscard]] const vok::Data_Record& operator*() const noexcept { return *operator->(); }
    [[nodiscard]] vok::Data_Reader& Reader() noexcept;
    // Runs a step of reading; what it raises is raised as an InputError with its place.
    void Guard(const std::function<void()>& oStep);

    [[nodiscard]] bool IsXml() const noexcept;
    [[nodiscard]] const std::string& Wrapping() const noexcept;
    // As stored, as far as is known.
    [[nodiscard]] std::uint64_t Bytes() const noexcept;
    // At the end: what was met on the way, and why what stands behind the document does not belong
    // to it; mostly empty.
    [[nodiscard]] vok::Load_Report Report() const;
    [[nodiscard]] const std::string& Behind() const noexcept;

  private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};

// The attributes of a record by name, each once: of two of one name the last one counts. They are
// valid as long as the record.
std::vector<vok::Data_Record::Attribute> AttributesOf(const vok::Data_Record& oRecord);

// Answers a question record by record, or with the whole tree where it takes that, and for a
// pipe, which cannot be gone through again. Raises InputError where that is needed of standard
// input that is gone.
int Answer(const std::string& sPath, const std::function<int()>& oByRecords,
           const std::function<int()>& oByTree);

}  // namespace tools

#endif  // TOOLS_DOCUMENT_H

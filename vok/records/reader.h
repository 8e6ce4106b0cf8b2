// SPDX-License-Identifier: MIT
// Documents record by record, in constant memory.
#ifndef VOK_RECORDS_READER_H
#define VOK_RECORDS_READER_H

#include <memory>
#include <vector>

#include "vok/data/data.h"
#include "vok/data/record.h"
#include "vok/file/stream.h"

namespace vok {

// Goes through a stored document of any size - XML or a DGraph document of major version 1, as it
// is, compressed or in a zip archive - and holds the names and positions of the open nodes, 16
// bytes and a name for each level, the largest single value, and what of the stream was read ahead.
//
//     Data_Reader oReader("orders.dgraph");
//     while (oReader.Next()) {
//         if (oReader->GetName() == "blob") oReader.SkipSuccessors();
//         else Use(oReader->GetName(), oReader->GetType());
//     }
//
// Records come in the order of the document: each node in front of its successors. A document that
// Dgraph_Load refuses is refused at the same place and with the same error; but a link is only
// known by what the document says of its target, so one to nothing is not. Limits are those of
// loading on nodes, depth, skipped slots, bytes and attributes, and of what is compressed.
//
// XML in another coding than UTF-8 is read whole and converted first. XML need not have its
// elements in the order of names; then positions are those in the document, not those in a tree.
class Data_Reader {
  public:
    enum class Form { DGraph, Xml };
    // A link of a tree that was taken out, whose target is not in it.
    struct Outer_Link {
        u2_t uId;     // of the node, which is empty
        Str oTarget;  // as Data_Record::Text has it
    };

    // Reads from the position of a stream, which must outlive the reader; an archive only from a
    // memory buffer. The stream is read ahead; where it can seek, and nothing is compressed, it is
    // left right behind the document when Next has returned false.
    // Raises "a native dump cannot be read record by record", "a zip archive is read from a file or
    // from memory only", the errors of Dgraph_LoadDGraph for a header, of LoadFromXML for an
    // unknown coding, those of Zip_Archive, and those of the stream.
    explicit Data_Reader(File_Stream& oIn, const Limits& oLimits = {});
    // Reads a file, which stays open. Raises "could not open file" as well.
    explicit Data_Reader(const Str& oPath, const Limits& oLimits = {});
    Data_Reader(Data_Reader&&) noexcept;
    Data_Reader& operator=(Data_Reader&&) noexcept;
    ~Data_Reader();

    [[nodiscard]] Form GetForm() const noexcept;
    // The version of a DGraph document as a tree has it, "DGraphBin 1.2.0"; else empty.
    [[nodiscard]] Str GetVersion() const;

    // Moves to the next record, the first of which is the root; false behind the last one. Linear
    // in the bytes gone over. Raises the errors of Dgraph_LoadDGraph or LoadFromXML, of Zip_Stream
    // and of the stream; after one only GetReport may be called.
    bool Next() {
        if (m_pRecord->m_pNext == nullptr) return ReadNext();
        m_pRecord = m_pRecord->m_pNext;
        return true;
    }
    // Leaves out what is below the record: it is read and checked, but Next does not stop there.
    // Take takes it still.
    void SkipSuccessors() noexcept;

    // The record: what Next has come to.
    [[nodiscard]] const Data_Record* operator->() const noexcept { return m_pRecord; }
    [[nodiscard]] const Data_Record& operator*() const noexcept { return *m_pRecord; }
    // Its path, "/a[0]/b[2]". Linear in the depth.
    [[nodiscard]] Str GetPath() const;

    // Whether the successors of every node came in the order of their names so far, as those of a
    // tree stand: then positions are those in a tree.
    [[nodiscard]] bool IsInOrder() const noexcept;

    // Where reading has got to or has failed, and what was met on the way; complete once Next has
    // returned false.
    [[nodiscard]] Load_Report GetReport() const;

    // Makes oTree, whose nodes are lost and whose memory is used again, a tree of the record and of
    // all below it, as if the document were that alone. The record then has its name and place
    // only, and Next goes to what is behind all of it. Linear in its records. Links lead to their
    // targets in it; others are empty, see GetOuterLinks. Raises the errors of Next, and those of
    // links.
    void Take(Data& oTree);
    // Of the tree taken last.
    [[nodiscard]] const std::vector<Outer_Link>& GetOuterLinks() const noexcept;

  private:
    class Impl;

    bool ReadNext();

    std::unique_ptr<Impl> m_pImpl;
    const Data_Record* m_pRecord;
};

}  // namespace vok

#endif  // VOK_RECORDS_READER_H

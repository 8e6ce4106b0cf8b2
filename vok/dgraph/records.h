// DGraph documents record by record, in constant memory.
#ifndef VOK_DGRAPH_RECORDS_H
#define VOK_DGRAPH_RECORDS_H

#include <bit>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace vok {

// Goes through a DGraph document of major version 1 in a stream, whatever its size: it holds the
// names and counts of the open nodes, 16 bytes and a name for each level, the largest single value
// and 64 KiB of what comes next.
//
//     Dgraph_Reader oReader(oIn);
//     while (oReader.Next()) {
//         if (oReader.GetName() == "blob") oReader.SkipSuccessors();
//         else Use(oReader.GetName(), oReader.GetType());
//     }
//
// Records come in the order of the document: each node in front of its successors. Texts are
// valid until the next call of Next or Take. A document that Dgraph_LoadDGraph refuses is refused
// at the same record and with the same error; but a link is only known by its path, so one to
// nothing is not. Limits are those of loading on nodes, depth, skipped slots, bytes and
// attributes.
//
// The stream is read ahead; where it can seek, it is left right behind the last record when Next
// has returned false.
class Dgraph_Reader {
  public:
    struct Attribute {
        std::string_view sName;
        std::string_view sValue;
    };
    // A link of a tree that was taken out, whose target is not in it.
    struct Outer_Link {
        u2_t uId;   // of the node, which is empty
        Str oPath;  // of the target in the document, without its first slash
    };

    // Reads the header. Raises "No binary DGraph buffer!", "Binary DGraph buffer has the wrong
    // version!" and the errors of the stream, which must outlive the reader.
    explicit Dgraph_Reader(File_Stream& oIn, const Limits& oLimits = {});
    Dgraph_Reader(const Dgraph_Reader&) = delete;
    Dgraph_Reader& operator=(const Dgraph_Reader&) = delete;
    ~Dgraph_Reader();

    // Moves to the next record, the first of which is the root; false behind the last one. Raises
    // the errors of Dgraph_LoadDGraph, and is not to be called again then.
    bool Next();
    // Leaves out what is below the record: it is read and checked, but Next does not stop there.
    void SkipSuccessors() noexcept;

    // ---- the record -------------------------------------------------------

    // 0 for the root.
    [[nodiscard]] u2_t GetDepth() const noexcept;
    // Without escapes, not empty but for unnamed nodes.
    [[nodiscard]] std::string_view GetName() const noexcept;
    // In its run of equal names, as the document has it.
    [[nodiscard]] i2_t GetIndex() const noexcept;
    // Tree where successors are announced; Link for a path.
    [[nodiscard]] Data_Node::Type GetType() const noexcept { return m_eType; }
    // How many are announced.
    [[nodiscard]] u2_t GetSuccs() const noexcept {
        return m_eType == Data_Node::Tree ? static_cast<u2_t>(m_uValue) : 0;
    }
    // Boolean, Integer, Char.
    [[nodiscard]] i2_t Int() const noexcept { return static_cast<i2_t>(m_uValue); }
    // Float, Double, Date (seconds since 1970).
    [[nodiscard]] double Dbl() const noexcept { return std::bit_cast<double>(m_uValue); }
    // Long.
    [[nodiscard]] u3_t Lng() const noexcept { return m_uValue; }
    // String, the bytes of a Binary, the path of a Link. In place, and not NUL-terminated.
    [[nodiscard]] std::string_view Text() const noexcept { return m_sText; }
    // Quad: word uNth from 0 to 3.
    [[nodiscard]] u2_t QuadWord(unsigned uNth) const noexcept { return m_auQuad[uNth]; }
    [[nodiscard]] const Arr<Attribute>& GetAttributes() const noexcept { return m_oAttribute; }

    // "/a[0]/b[2]", as Data::GetPath gives it. Linear in the depth.
    [[nodiscard]] Str GetPath() const;
    // Bytes from the start of the document to the record.
    [[nodiscard]] u3_t GetOffset() const noexcept { return m_uOffset; }
    // Bytes that fields lack because the stream ended, and nodes that did not come.
    [[nodiscard]] u3_t MissingBytes() const noexcept;
    [[nodiscard]] u3_t MissingNodes() const noexcept { return m_uMissingNodes; }

    // ---- subtrees ---------------------------------------------------------

    // Makes oTree, which is used again where it has nodes, a tree of the record and all below it,
    // to which the reader then has come: as if the document were that alone, with its version.
    // Linear in its records. Links lead to their targets in it; others are empty, see
    // GetOuterLinks. Raises the errors of Next, and those of links.
    void Take(Data& oTree);
    // Of the tree taken last.
    [[nodiscard]] const std::vector<Outer_Link>& GetOuterLinks() const noexcept;

  private:
    class Impl;

    std::unique_ptr<Impl> m_pImpl;
    Data_Node::Type m_eType = Data_Node::Empty;
    u3_t m_uValue = 0;
    std::string_view m_sText;
    u2_t m_auQuad[4] = {};
    Arr<Attribute> m_oAttribute;
    u3_t m_uOffset = 0;
    u3_t m_uMissingNodes = 0;
};

// The subtrees of a document that a path selects, one after the other, each as a tree of its own
// that the next one takes the place of:
//
//     for (const Data& oOrder : Dgraph_Records(oIn, "/order[@state=\"open\"]")) Use(oOrder);
//
// The path goes from the root downward by names, "*", positions and attributes. Other steps ask
// for the whole tree, and raise "path \"%0\" needs the whole tree" at once; other errors are those
// of Data_Xpath::Parse, and while going on those of Dgraph_Reader.
class Dgraph_Records {
  public:
    Dgraph_Records(File_Stream& oIn, std::string_view sPath, const Limits& oLimits = {});
    Dgraph_Records(const Dgraph_Records&) = delete;
    Dgraph_Records& operator=(const Dgraph_Records&) = delete;
    ~Dgraph_Records();

    // The tree is the next record; false when there is none any more.
    bool Next();
    [[nodiscard]] const Data& GetData() const noexcept { return m_oTree; }
    [[nodiscard]] const Dgraph_Reader& GetReader() const noexcept { return m_oReader; }

    class Iterator {
      public:
        using value_type = Data;
        using difference_type = std::ptrdiff_t;

        explicit Iterator(Dgraph_Records& oRecords) : m_pRecords(&oRecords) { ++*this; }
        [[nodiscard]] const Data& operator*() const noexcept { return m_pRecords->GetData(); }
        Iterator& operator++() {
            m_bMore = m_pRecords->Next();
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const Iterator& o, std::default_sentinel_t) noexcept {
            return !o.m_bMore;
        }

      private:
        Dgraph_Records* m_pRecords;
        bool m_bMore = false;
    };
    // Once: the stream is gone through.
    [[nodiscard]] Iterator begin() { return Iterator(*this); }
    [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  private:
    class Path;

    Dgraph_Reader m_oReader;
    std::unique_ptr<Path> m_pPath;
    Data m_oTree;
};

}  // namespace vok

#endif  // VOK_DGRAPH_RECORDS_H

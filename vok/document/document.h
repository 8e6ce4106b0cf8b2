// SPDX-License-Identifier: MIT
// Trees from and to documents of every form and wrapping.
#ifndef VOK_DOCUMENT_DOCUMENT_H
#define VOK_DOCUMENT_DOCUMENT_H

#include <string_view>

#include "vok/base/limits.h"
#include "vok/base/str.h"
#include "vok/data/data.h"
#include "vok/file/stream.h"
#include "vok/zip/wrapping.h"

namespace vok {

// Any: as the bytes tell where it is read, as the name of the file tells where it is written.
enum class Document_Form : u0_t { Any, Xml, Dgraph, Json, Dump };

// "xml", "dgraph", "json", "dump"; "" for Any. And back: Any for other texts.
[[nodiscard]] const char* Document_FormName(Document_Form eForm) noexcept;
[[nodiscard]] Document_Form Document_FormNamed(std::string_view sName) noexcept;

// What a document is.
struct Document_Format {
    Document_Form eForm = Document_Form::Any;
    Zip_Wrapping eWrapping = Zip_Wrapping::None;
};
// What the name of a file asks for: .xml, .dgraph, .dg, .json, .dump, in upper or lower case, with
// .gz or .zip behind. Any where it has no such ending.
[[nodiscard]] Document_Format Document_FormatNamed(std::string_view sPath);

// ---- loading ----------------------------------------------------------------

struct Document_LoadOptions {
    Document_Form eForm = Document_Form::Any;
    // Of Data::LoadFromXML. References that are unknown stay in the text, for it is not known
    // beforehand what there is to be read.
    u2_t uXmlFlags = Data::XML_KEEP_UNKNOWN;
    Limits oLimits;
};

// Loads a document, compressed or not, from a stream at whose position it begins, or from a file;
// an archive from a file or a File_Buf only. oTree becomes a cursor on its root; on failure it
// stays. Returns what the document was. Raises what the loader of its form raises, "file write
// error" and the like, and assertion failures for archives of more members than one. pReport is
// filled whether it fails or not.
Document_Format Document_Load(Data& oTree, File_Stream& oIn,
                              const Document_LoadOptions& oOptions = {},
                              Load_Report* pReport = nullptr);
Document_Format Document_Load(Data& oTree, const Str& oPath,
                              const Document_LoadOptions& oOptions = {},
                              Load_Report* pReport = nullptr);

// The form of plain bytes; the stream, which must be able to seek, stays where it is. What is none
// of the others is taken for XML, whose loader then tells what is wrong with it.
[[nodiscard]] Document_Form Document_FormOf(File_Stream& oIn);
// Loads a document that is not wrapped; the stream is then behind it, as far as its form tells.
// Returns its form.
Document_Form Document_LoadPlain(Data& oTree, File_Stream& oIn,
                                 const Document_LoadOptions& oOptions = {},
                                 Load_Report* pReport = nullptr);

// ---- saving -----------------------------------------------------------------

struct Document_SaveOptions {
    Document_Format oFormat;
    bool bDeclaration = true;  // of XML
    bool bCompact = false;     // JSON on one line
    // The name of the only member of an archive; empty: that of the file.
    Str oMember;
    bool bDurable = true;  // of a file: only once it is on the disk, see File_Replacement::Commit
    bool bAttachable = false;  // a dump, for Data::Attach
};

// Writes the tree of a node: XML and JSON from that node down, the others all of it. A DGraph
// document has the version that Dgraph_SetVersion has stamped on the tree; where there is none,
// 1.3.0 is stamped. Raises what the writers raise, "document form is not told" for Any, and "a zip
// archive needs a file" for one.
void Document_Save(Data oTree, File_Stream& oOut, const Document_SaveOptions& oOptions);
// Into a file, which takes its place once all is written: until then, and on failure, what was
// there stays. A form that is not told is that of the name, and so then is the
// wrapping.
void Document_Save(Data oTree, const Str& oPath, const Document_SaveOptions& oOptions = {});

}  // namespace vok

#endif  // VOK_DOCUMENT_DOCUMENT_H

// SPDX-License-Identifier: MIT
// DGraph documents: the binary form in which trees are exchanged.
#ifndef VOK_DGRAPH_DGRAPH_H
#define VOK_DGRAPH_DGRAPH_H

#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace vok {

// Stamps the format version that Dgraph_SaveDGraph will write on the tree: its user tag
// becomes "DGraphBin 1.2.0". Raises "node is empty" on an empty cursor.
void Dgraph_SetVersion(Data& data, int iMajor, int iMinor, int iPatch);

// Writes the whole tree of data, from its root, in the version stamped on it, and flushes
// the stream. Linear; needs memory for one entry per open level. Raises "No DGraph!" for an
// empty cursor or a tree without version, "Binary DGraph buffer has the wrong version!", and
// the errors of the stream, which keeps what was written by then. Major version 2 is a header
// and what Data::Dump writes, not flushed.
//
// Every field is one write of its exact width, except to streams that take pieces, as those of
// this library do.
void Dgraph_SaveDGraph(const Data& data, File_Stream& out);

// Replaces data by the tree of a document; data is then on its root and the tree carries the
// document's version. The stream is left right behind the last record. A failed load leaves
// data on the part that was read. pReport, unless it is null, is filled in either case. Major
// version 2 is read by Data::Load; the tree then has the user tag that was dumped with it.
//
// Linear in the bytes read, and in the nodes that links by "//" have to look at. Raises "No
// binary DGraph buffer!", "Binary DGraph buffer has the wrong version!", the errors of a
// corrupted stream, those of limits, and those of the stream itself. A document that ends
// early is loaded as far as it goes where a record could have ended; missing bytes of other
// fields read as zero.
void Dgraph_LoadDGraph(Data& data, File_Stream& in, const Limits& oLimits = {},
                       Load_Report* pReport = nullptr);

// Whether the next bytes are the header of a DGraph document of any version; the stream must
// be able to seek and stays where it is.
[[nodiscard]] bool Dgraph_CanLoadDGraph(File_Stream& in);

// Replaces data by the tree in a stream of any form: a native dump, else a DGraph document,
// else XML, which is what everything else is taken for (Data::LoadFromXML with flag 1). Errors
// are those of the loader that was chosen. The stream must be able to seek.
void Dgraph_Load(Data& data, File_Stream& in, const Limits& oLimits = {},
                 Load_Report* pReport = nullptr);

}  // namespace vok

#endif  // VOK_DGRAPH_DGRAPH_H

// SPDX-License-Identifier: MIT
// The wrappings in which a stored tree may come: as it is, compressed, or in a zip archive.
#ifndef VOK_DGRAPH_CONTAINER_H
#define VOK_DGRAPH_CONTAINER_H

#include "vok/dgraph/dgraph.h"

namespace vok {

// Lets the tree of data go and replaces it by the one in a file, which Dgraph_Load must know. The
// first bytes tell how it is wrapped:
//     "x"       a zlib stream, whatever follows: decompressed in memory
//     "PK"      a zip archive with exactly one member, decompressed in memory
//     others    the tree as it is, read from the file
// What is wrapped is read to its end, so that a wrapping which is cut, or whose checksum differs,
// is an error also where the tree in it was complete. A null or empty path leaves data without a
// tree. oLimits also bounds what comes out of a wrapping; places in pReport, unless it is null, are
// those inside of it. Linear. Raises "could not open file", "oGlobalInfo.number_entry == 1" for an
// archive with no or several members, the errors of Zip_Archive and Zip_Buf, and those of
// Dgraph_Load.
void Dgraph_LoadFromFile(Data& data, const char* sPath, const Limits& oLimits = {},
                         Load_Report* pReport = nullptr);

// The same for the bytes of such a file in memory, which are only used during the call. Raises
// "object points to nothing" for a null block with a size.
void Dgraph_LoadFromBuffer(Data& data, const void* pBytes, std::size_t uSize,
                           const Limits& oLimits = {}, Load_Report* pReport = nullptr);

// Replaces the bytes in buffer by the input as a zlib stream of the default level, which
// Dgraph_LoadFromFile takes. Raises "object points to nothing" for a null block with a size, and
// the errors of memory; the buffer is then unchanged.
void DGraph_Compress(Arr<char>& buffer, const void* pBytes, u2_t uCount);

}  // namespace vok

#endif  // VOK_DGRAPH_CONTAINER_H

// SPDX-License-Identifier: MIT
// Reading on in a stream that may give less than it is asked for. Internal.
#ifndef VOK_FILE_REST_H
#define VOK_FILE_REST_H

#include <algorithm>

#include "vok/file/buf.h"
#include "vok/file/file.h"

namespace vok {

// Reads uSize bytes, or those that are left. A stream may give less than it is asked for, a
// pipe for one: its end is where it gives nothing.
[[nodiscard]] inline std::size_t ReadUpTo(File_Stream& oIn, char* pTarget, std::size_t uSize) {
    std::size_t uGot = 0;
    while (uGot < uSize) {
        const std::size_t uRead = oIn.Read(pTarget + uGot, uSize - uGot, true);
        if (uRead == 0) break;
        uGot += std::min(uRead, uSize - uGot);
    }
    return uGot;
}

// How many bytes a memory buffer or a plain file still has; 0 for streams that do not tell, as
// pipes and compressed ones.
[[nodiscard]] inline u3_t BytesLeft(File_Stream& oIn) {
    if (const File_Buf* pBuffer = dynamic_cast<File_Buf*>(&oIn)) return pBuffer->Remaining();
    File* pFile = dynamic_cast<File*>(&oIn);
    if (pFile == nullptr || (pFile->Flags() & File::FLAG_GZIP) != 0) return 0;
    const i3_t iAt = pFile->Tell();
    const i3_t iSize = iAt >= 0 ? pFile->Size() : -1;
    return iSize > iAt ? static_cast<u3_t>(iSize - iAt) : 0;
}

}  // namespace vok

#endif  // VOK_FILE_REST_H

// SPDX-License-Identifier: MIT
// What documents are refused with: an extension of the message catalog. Each raises a
// Msg_Exception. Internal.
#ifndef VOK_DOCUMENT_MESSAGES_H
#define VOK_DOCUMENT_MESSAGES_H

namespace vok::document {

[[noreturn]] void RaiseArchiveNeedsFile();
// sName: the file whose name does not tell it; null for a stream.
[[noreturn]] void RaiseNoForm(const char* sName);

}  // namespace vok::document

#endif  // VOK_DOCUMENT_MESSAGES_H

// SPDX-License-Identifier: MIT
// The canonical form of a document, in constant memory.
#ifndef VOK_RECORDS_CANONICAL_H
#define VOK_RECORDS_CANONICAL_H

#include <functional>
#include <memory>
#include <string_view>

#include "vok/records/reader.h"

namespace vok {

// Hands out the bytes that Data::Canonical gives of the tree that a document is, while a reader
// goes through it:
//
//     Data_Hasher oHasher;
//     Data_Canonical oForm([&](std::string_view sPiece) { oHasher.Add(sPiece); });
//     for (Data_Reader o("orders.dgraph.gz"); o.Next();) {
//         if (!oForm.Add(o)) return HashOfTree();
//     }
//     oForm.Finish();
class Data_Canonical {
  public:
    explicit Data_Canonical(std::function<void(std::string_view)> oTake);
    Data_Canonical(Data_Canonical&&) noexcept;
    Data_Canonical& operator=(Data_Canonical&&) noexcept;
    ~Data_Canonical();

    // The record that the reader has come to. False where only the tree can tell, and what was
    // handed out is of no use: at a node that leads to another one, and at successors of XML that
    // are not in the order of their names. Linear. Raises what oTake raises.
    [[nodiscard]] bool Add(const Data_Reader& oReader);
    // Behind the last record.
    void Finish();

  private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace vok

#endif  // VOK_RECORDS_CANONICAL_H

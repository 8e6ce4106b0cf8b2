// Trees of records. Internal.
#ifndef VOK_RECORDS_TAKE_H
#define VOK_RECORDS_TAKE_H

#include <vector>

#include "vok/base/work.h"
#include "vok/data/record_source.h"
#include "vok/records/reader.h"

namespace vok::records {

// Makes an empty tree one of the record that a source has come to and of all below it. Links are
// charged to oWork; those that lead out of the tree are put into aoOuter. oFault receives the path
// of one that is an error.
void TakeTree(Data& oTree, detail::Record_Source& oSource, Work& oWork,
              std::vector<Data_Reader::Outer_Link>& aoOuter, Str& oFault);

}  // namespace vok::records

#endif  // VOK_RECORDS_TAKE_H

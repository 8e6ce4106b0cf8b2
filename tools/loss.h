// What a conversion does not keep.
#ifndef TOOLS_LOSS_H
#define TOOLS_LOSS_H

#include <string>
#include <vector>

#include "tools/input.h"

namespace tools {

// Lines such as "3 comments". Of the document that was read: what its tree does not hold.
std::vector<std::string> LostByReading(const Input& oIn);

// Of a tree: what a form does not keep of it. iMinor: of DGraph documents. Linear.
std::vector<std::string> LostByWriting(const vok::Data& oTree, const std::string& sFormat,
                                       int iMinor);

// What a form cannot be read back with at all; empty when it can.
std::string WhyNot(const vok::Data& oTree, const std::string& sFormat, int iMinor);

}  // namespace tools

#endif  // TOOLS_LOSS_H

// The page that shows a tree in a browser: page.html, as the build puts it in the program.
#ifndef TOOLS_PAGE_H
#define TOOLS_PAGE_H

#include <string_view>

namespace tools {

extern const char* const PAGE;
// What stands where its data belong.
inline constexpr std::string_view PAGE_DATA = "@DATA@";

}  // namespace tools

#endif  // TOOLS_PAGE_H

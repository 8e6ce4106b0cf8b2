// SPDX-License-Identifier: MIT
// Records as lines of JSON, for programs that take nothing else.
#ifndef TOOLS_JSON_LINES_H
#define TOOLS_JSON_LINES_H

#include <memory>
#include <string>
#include <vector>

#include "vok/data/data.h"
#include "vok/file/stream.h"

namespace tools {

// What the nodes at one place of all records have in common, so that the same names have values of
// the same kind in every line.
struct Shape {
    std::string sName;
    bool bList = false;                           // somewhere there are several of the name
    bool bObject = false;                         // somewhere it has successors or attributes
    std::vector<std::unique_ptr<Shape>> aoBelow;  // in the order of their names
};
// Adds what a record has. Linear.
void NoteShape(Shape& oTop, const vok::Data& oRecord);

class JsonLines {
  public:
    // oTop must know the shape of every record.
    JsonLines(vok::File_Stream& oOut, const Shape& oTop);
    ~JsonLines();
    JsonLines(const JsonLines&) = delete;
    JsonLines& operator=(const JsonLines&) = delete;

    void Add(const vok::Data& oRecord);
    // Hands on what was collected.
    void Finish();

  private:
    class Impl;
    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace tools

#endif  // TOOLS_JSON_LINES_H

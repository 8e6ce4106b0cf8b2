// SPDX-License-Identifier: MIT
// Documents written node by node, in constant memory.
#ifndef VOK_RECORDS_WRITER_H
#define VOK_RECORDS_WRITER_H

#include <memory>
#include <string_view>

#include "vok/data/data.h"
#include "vok/data/record.h"
#include "vok/file/stream.h"

namespace vok {

// Writes a document of any size, the counterpart of Data_Reader: what is told in the order of the
// document goes to a stream, and no tree is made.
//
//     Data_Writer oWriter(oOut);
//     oWriter.Open("orders");
//     for (const Order& o : aoOrder) {
//         oWriter.Open("order");
//         oWriter.SetAttVal("state", "open");
//         oWriter.Add("id", o.iId);
//         oWriter.Add("price", o.dPrice);
//         oWriter.Close();
//     }
//     oWriter.Close();
//     oWriter.Finish();
//
// The bytes are those that Dgraph_SaveDGraph or SaveToXML writes of a tree that was built in that
// order. So successors come in the byte order of their names.
//
// Memory is 32 bytes for each open level, 256 KiB of what is to be written, the names that came
// last, at most 65,536 of them, and those of attributes. A DGraph document has counts in front of
// successors: where nobody tells them, and the stream cannot seek, as a pipe or one that
// compresses, what is behind the first open one is held back, up to 64 MiB.
//
// An operation that raises an error has written nothing of its own node, unless it is an error of
// the stream. After one of those the document cannot be completed.
class Data_Writer {
  public:
    enum class Form { DGraph, Xml };
    static constexpr u2_t UNKNOWN = Data_Record::UNKNOWN;

    // Writes from the position of a stream on, which must outlive the writer. DGraph documents are
    // of version 1, with a minor version from which the forms of dates, Longs and Quads follow.
    explicit Data_Writer(File_Stream& oOut, Form eForm = Form::DGraph, int iMinor = 3,
                         int iPatch = 0);
    Data_Writer(Data_Writer&&) noexcept;
    Data_Writer& operator=(Data_Writer&&) noexcept;
    // What is not finished is not complete.
    ~Data_Writer();

    // Opens a node: the root, or one behind the other successors of the node that is open. It ends
    // with the Close that belongs to it. uSuccs is how many successors it will have, if that is
    // known.
    // Raises "names out of order: "%1" behind "%0"", "the document is complete" for a second root,
    // "node "%0" has its value or successors already" for a successor of a value, "the number of
    // successors has to be told when a node is opened: the stream cannot seek", and the errors of
    // the stream.
    void Open(std::string_view sName, u2_t uSuccs = UNKNOWN);
    // Gives the node that was opened last an attribute, in front of its value or its successors. Of
    // two of one name the last one counts. Raises "attributes of node "%0" come before its value
    // and its successors", "no node is open", and the error of an empty name.
    void SetAttVal(std::string_view sName, std::string_view sValue);
    // Gives the node that was opened last its value. Raises "node "%0" has its value or successors
    // already", "no node is open", and for texts and blocks of 2 GiB an assertion failure.
    void SetValue(const Data_Value& oValue);
    // Raises "no node is open", and "node "%0" has %1 successors, not %2 as was told".
    void Close();

    // Open, SetValue and Close in one.
    void Add(std::string_view sName, const Data_Value& oValue = {});
    // What a reader has come to, with its attributes. A Tree is opened, for as many successors as
    // are announced.
    void Add(const Data_Record& oRecord);
    // A node of a tree and all below it. Links are written by the paths that their targets have
    // there. Linear.
    void Add(const Data& oNode);

    // XML numbers the targets of links, and has to know them when they come: those of all links,
    // before the root is opened, by their paths from the root. A link to any other raises "link to
    // "%0", which was not announced". DGraph documents have paths: nothing is to be done.
    void AnnounceTarget(std::string_view sPath);

    // Closes nothing: all nodes are closed ("node "%0" is still open", "no node is open" for a
    // document without a root). Writes what is left and flushes the stream.
    void Finish();

  private:
    class Impl;
    class ToDGraph;
    class ToXml;

    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace vok

#endif  // VOK_RECORDS_WRITER_H

// SPDX-License-Identifier: MIT
// Tables as text: csv files of any program as trees, and rows of scalars as csv files.
#ifndef VOK_CSV_CSV_H
#define VOK_CSV_CSV_H

#include <vector>

#include "vok/base/limits.h"
#include "vok/data/data.h"
#include "vok/file/stream.h"
#include "vok/records/writer.h"

namespace vok {

// A column by its name. Types are Boolean, Integer, Long, Float, Double, Date, Char and String;
// Empty is that of a column nothing was told of.
struct Csv_Column {
    Str m_oName;
    Data_Node::Type m_eType = Data_Node::Empty;
};

// How a csv file is read.
struct Csv_Options {
    char m_cSeparator = 0;  // 0: the one among , ; tab | that its first lines have most alike
    char m_cQuote = '"';    // 0: none
    bool m_bHeader = true;  // the first line has the names of the columns

    // Columns whose type is not told get the narrowest one that all of their fields have, empty
    // ones apart: Boolean, Integer, Long, Double, Date, else String. Otherwise they are Strings.
    bool m_bGuess = true;
    bool m_bLeaveOutEmpty = false;  // empty fields become no node, else an empty String
    // A row with too few or too many columns, a quote without its partner, and a field that is not
    // of its told type raise an error. Otherwise they are reported, and what is there is taken: too
    // few fields are no nodes, too many get names of their own, a field of another type is a
    // String.
    bool m_bStrict = true;
    bool m_bTell = true;  // report what is passed over to the console and the log as well

    Str m_oRow = "row";  // the name of the nodes that rows become
    // With a header line the types of the columns that bear these names, of several with one name
    // in their order; without one the names and types of all columns in their order.
    std::vector<Csv_Column> m_aoColumn;
};

struct Csv_Report : Load_Report {
    char m_cSeparator = 0;
    u3_t m_uRows = 0;
    u3_t m_uEmptyLines = 0;              // passed over
    u3_t m_uFaults = 0;                  // of those that are errors if it is strict
    std::vector<Csv_Column> m_aoColumn;  // as they stand in the file, with their types
};

// Replaces oTree by the rows of a csv file, which is read from the position of the stream to its
// end (docs/csv.md): "Root(row(id:1 name:'Ada') row(id:2 name:'Bob'))"; oTree is then on its root.
// Fields are separated by one byte, and may be in quotes, then with line breaks in them and two
// quotes for one; lines end as File_Scan has them; a line with nothing in it is passed over.
// Columns without a name, and those that the header lacks, are "column" and their number from 1
// on. Bytes that are no UTF-8 are taken as Latin-1, as in all texts of a tree.
//
// Linear in the bytes read. Where a type is guessed all fields are held until the last one has
// come: their bytes, and 8 for each. A row has at most Limits::m_uTextBytes. A failed load leaves
// oTree on the rows that were read, none if types are guessed. pReport, unless it is null, is
// filled in either case, at an error with the place of the field or line.
//
// Raises "error in csv file "%0": missing char '%3' in line %1: \n%2", "... too few (%3 insted of
// %4) columns ...", "... too many ...", "missing column "%1" in table "%0"" for a told one that the
// header does not have, "a NUL in csv file "%0", line %1, column %2", "no %4 in csv file ...",
// "parameter "%0" has invalid value" for options that contradict each other, and the errors of
// limits and of the stream. Reports "empty line %1 in csv file "%0" was ignored", at most 20 times.
void Csv_Load(Data& oTree, File_Stream& oIn, const Csv_Options& oOptions = {},
              const Limits& oLimits = {}, Csv_Report* pReport = nullptr);

// The same to a document, in constant memory: a row after the other is written below the node that
// is open, its columns in the order of their names. Columns whose type is not told are Strings.
// Errors are those of the writer as well.
void Csv_Copy(Data_Writer& oOut, File_Stream& oIn, const Csv_Options& oOptions = {},
              const Limits& oLimits = {}, Csv_Report* pReport = nullptr);
// Reads a csv file and says what columns it has, guessed types included, also in constant memory:
// who gives them to Csv_Copy as told ones gets what Csv_Load makes.
[[nodiscard]] std::vector<Csv_Column> Csv_Columns(File_Stream& oIn,
                                                  const Csv_Options& oOptions = {},
                                                  const Limits& oLimits = {},
                                                  Csv_Report* pReport = nullptr);

// How a csv file is written.
struct Csv_Form {
    char m_cSeparator = ',';
    char m_cQuote = '"';  // 0: none; a text that needs one then does not fit
    bool m_bHeader = true;
    bool m_bCrLf = false;   // lines end with CR LF, else with LF
    bool m_bStrict = true;  // what does not fit raises an error, else it is left out and counted
    // The columns by name in their order; none stands for all there are, in the order of names.
    std::vector<Csv_Column> m_aoColumn;
};

struct Csv_Saved {
    u3_t m_uRows = 0;
    u3_t m_uLeftOut = 0;  // nodes, and attributes of nodes
    Str m_oFirst;         // the path of the first one; empty where there is none
};

// Writes the successors of a node as rows of a csv file in UTF-8: each a node with scalars as its
// successors. A name that comes more than once in a row has so many columns. What Csv_Load makes of
// it is the same, where types are told or can be guessed: Doubles have a point or an exponent,
// dates are "2026-11-24T18:35:56", in UTC, or the day alone.
//
// What does not fit: successors that are no rows, rows where none has a column, rows of another
// name than the first one, and in rows trees, links, Binaries, Quads, unnamed nodes, attributes,
// and names that are not among the columns that are told. Raises "node "%0" does not fit into a csv
// file", then with nothing written, "node is empty", "try to access deleted node", and the errors
// of the stream, which is not flushed. Linear, with memory for the columns.
//
// A table of next to nothing but empty fields, beyond 2^22 more of them than
// Limits::m_uMemoryPerByte for one that is none, raises the error of that limit.
Csv_Saved Csv_Save(const Data& oTop, File_Stream& oOut, const Csv_Form& oForm = {},
                   const Limits& oLimits = {});

}  // namespace vok

#endif  // VOK_CSV_CSV_H

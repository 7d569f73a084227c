// The CSV export: RFC 4180 text with a header row and CRLF line ends, one row per to-do, with
// text cells guarded so that spreadsheets do not run them as formulas.
#ifndef PINDLE_CSV_WRITER_H
#define PINDLE_CSV_WRITER_H

#include "todo_store.h"

#include <ostream>
#include <string>

namespace CsvWriter {

// Writes the header and one row per record of the list starting at `head`.
void write(std::ostream& out, const TodoRecord* head);

// A text cell as written: a leading '=', '+', '-', '@', tab or carriage return gets a single
// quote in front, and the cell is quoted when it holds a comma, quote or line break.
std::string textCell(const std::string& text);

} // namespace CsvWriter

#endif

// Parsing pindle_export's options and its help text.
#include "export_options.h"

#include "command_line.h"

namespace {

bool parseFormat(const std::string& name, ExportOptions::Format& format) {
    if (name == "csv")
        format = ExportOptions::Format::Csv;
    else if (name == "ics")
        format = ExportOptions::Format::Ics;
    else if (name == "json")
        format = ExportOptions::Format::Json;
    else
        return false;
    return true;
}

} // namespace

bool ExportOptions::parse(int argc, const char* const* argv, ExportOptions& options,
                          std::string& error) {
    CommandLine line;
    std::string format;
    line.option("--format", &format);
    line.option("--dir", &options.dir);
    if (!line.parse(argc, argv, options.help, error) || options.help)
        return error.empty();
    if (options.dir.empty())
        error = "option --dir needs a folder";
    else if (format.empty())
        error = "choose a format with --format csv, --format ics or --format json";
    else if (!parseFormat(format, options.format))
        error = "unknown format '" + format + "' (use csv, ics or json)";
    return error.empty();
}

const char* ExportOptions::helpText() {
    return R"(Usage: pindle_export --format csv|ics|json [--dir FOLDER]

Writes the to-dos of Pindle ToDo to standard output. Reads pindle_todo.db and cat.db from
FOLDER (default: the current folder) and never changes them.

Options:
  --format csv    RFC 4180 CSV: a header row, CRLF line ends, one row per to-do with the
                  columns due, priority, completed, category, description, notes.
  --format ics    iCalendar (RFC 5545): one VCALENDAR with a VTODO per to-do.
  --format json   {"todos": [...], "categories": [...]}; each to-do is an object with
                  "due", "priority", "completed", "category", "description", "notes".
  --dir FOLDER    read the files from FOLDER.
  -h, --help      show this text.

How the data is written:
  due          ISO 8601 (YYYY-MM-DD). A stored date that is not a real calendar date in the
               years 1-9999 is left out: an empty CSV cell, null in JSON, no DUE in iCalendar.
  priority     the number the list shows, 1 (highest) to 9. A damaged file may hold other
               numbers; CSV and JSON write them as they are, iCalendar leaves PRIORITY out.
  completed    CSV 0 or 1, JSON false or true, iCalendar STATUS:COMPLETED or NEEDS-ACTION.
  text         category, description and notes, line breaks kept. Bytes that are not valid
               UTF-8 are read as Latin-1, so the output is always valid UTF-8.
  CSV          a text cell starting with =, +, -, @, tab or carriage return gets a single
               quote (') in front, so that spreadsheets do not run it as a formula.
  iCalendar    the UID is a hash of the to-do's position and fields, so it stays the same
               while the to-do and those before it are unchanged. DTSTAMP is the current time,
               or SOURCE_DATE_EPOCH (seconds since 1970, UTC) when that is set. Control
               characters other than tab and line breaks are dropped from text.

Exit status: 0 on success, 1 when the folder or a file cannot be read or the output cannot be
written, 2 for a mistake on the command line.
)";
}

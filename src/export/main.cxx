// pindle_export's entry: checks the command line and the data files, loads the stores read-only
// (as one consistent state, under the folder's lock) and hands them to the writer of the chosen
// format.
#include "category_store.h"
#include "csv_writer.h"
#include "data_folder.h"
#include "export_options.h"
#include "folder_check.h"
#include "ics_writer.h"
#include "json_writer.h"
#include "todo_store.h"

#include <cstdlib>
#include <ctime>
#include <iostream>

namespace {

int fail(int status, const std::string& message) {
    std::cerr << "pindle_export: " << message << '\n';
    return status;
}

void writeFormat(const ExportOptions& options, std::time_t stamp) {
    TodoStore todos;
    CategoryStore categories;
    // The stores load one after the other: a save another program made meanwhile is read again
    // under the folder's lock, and the notes with it, so the output is one consistent state of
    // both files.
    DataFolder(todos, categories).refresh(DataFolder::Notes::All);
    if (options.format == ExportOptions::Format::Csv)
        CsvWriter::write(std::cout, todos.head);
    else if (options.format == ExportOptions::Format::Ics)
        IcsWriter::write(std::cout, todos.head, stamp);
    else
        JsonWriter::write(std::cout, todos.head, categories.head);
    // The stores never free their records; this run ends here, so clean leak checks need it.
    todos.clear();
    categories.clear();
}

} // namespace

int main(int argc, char** argv) {
    ExportOptions options;
    std::string error;
    if (!ExportOptions::parse(argc, argv, options, error))
        return fail(2, error + "\nTry 'pindle_export --help'.");
    if (options.help) {
        std::cout << ExportOptions::helpText();
        return 0;
    }
    std::time_t stamp = 0;
    bool ics = options.format == ExportOptions::Format::Ics;
    if (ics && !IcsWriter::chooseStamp(std::getenv("SOURCE_DATE_EPOCH"), std::time(nullptr), stamp))
        return fail(2, "SOURCE_DATE_EPOCH must be a number of seconds up to 253402300799");
    if (!FolderCheck::enter(options.dir, error))
        return fail(1, error);
    writeFormat(options, stamp);
    if (!std::cout.flush())
        return fail(1, "could not write the output");
    return 0;
}

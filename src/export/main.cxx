// pindle_export's entry: checks the command line and the data files, loads the stores read-only
// (as one consistent state, under the folder's lock) and hands them to the writer of the chosen
// format.
#include "category_store.h"
#include "csv_writer.h"
#include "data_folder.h"
#include "export_options.h"
#include "ics_writer.h"
#include "json_writer.h"
#include "todo_store.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int fail(int status, const std::string& message) {
    std::cerr << "pindle_export: " << message << '\n';
    return status;
}

// Checked before the stores load, since a store meets a missing file with a note that it
// starts empty, where an export should stop and say what is wrong.
bool readable(const char* name, std::string& reason) {
    struct stat info;
    if (stat(name, &info) != 0 || access(name, R_OK) != 0) {
        reason = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        reason = "not a regular file";
        return false;
    }
    return true;
}

int checkFolder(const std::string& dir) {
    if (chdir(dir.c_str()) != 0)
        return fail(1, "cannot enter folder " + dir + ": " + std::strerror(errno));
    for (const char* name : {"pindle_todo.db", "cat.db"}) {
        std::string reason;
        if (!readable(name, reason))
            return fail(1, "cannot read " + dir + "/" + name + ": " + reason);
    }
    return 0;
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
    if (int status = checkFolder(options.dir))
        return status;
    writeFormat(options, stamp);
    if (!std::cout.flush())
        return fail(1, "could not write the output");
    return 0;
}

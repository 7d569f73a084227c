// Fuzz target for what a CalDAV server sends: the input is read as a multistatus reply (the
// listings and what finds a task list) and every task inside it, as the error body of a refusal,
// and on its own as an iCalendar task. Whatever it holds, each task must land in
// a record with every text valid UTF-8 within its field and a priority the list can show.
#include "dav_xml.h"
#include "fuzz_check.h"
#include "server_todo.h"
#include "utf8_text.h"

#include <cstring>
#include <string>

namespace {

// Well-formed UTF-8 is what the reading as UTF-8 or Latin-1 keeps as it is. A text ends at its
// terminator or its field's end.
void requireText(const char* field, std::size_t fieldSize, std::size_t limit) {
    std::size_t size = strnlen(field, fieldSize);
    require(size <= limit, "text longer than its field");
    require(Utf8Text::fromBytes(field, size) == std::string(field, size),
            "text is not valid UTF-8");
}

void checkTask(const std::string& ics) {
    ServerTodo todo;
    if (!ServerTodo::parse(ics, todo))
        return;
    // Filled in place, as a sync fills a to-do that changed on the server.
    static TodoRecord record;
    todo.fill(record, {1, 1, 2030});
    // A 50-byte category or description has its terminator in the next field, which that
    // field's own text then overwrites.
    requireText(record.category, sizeof record.category, 50);
    requireText(record.description, sizeof record.description, 50);
    requireText(record.notes(), TodoRecord::kNotesMax + 1, TodoRecord::kNotesMax);
    require(record.priority >= 0 && record.priority <= 8, "priority the list cannot show");
    require(record.month >= 1 && record.month <= 12, "month out of range");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    DavListing listing;
    std::string error;
    if (DavXml::parseMultistatus(input, listing, error)) {
        for (const DavResource& resource : listing.resources)
            checkTask(resource.calendarData);
    }
    DavXml::errorCondition(input);
    checkTask(input);
    return 0;
}

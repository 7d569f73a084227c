// The VCALENDAR and its VTODOs.
#include "ics_writer.h"

#include "todo_view.h"
#include "utf8_text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace IcsWriter {

namespace {

constexpr std::size_t kLineOctets = 75;
// 9999-12-31T23:59:59Z: DTSTAMP has room for four digits of year only.
constexpr long long kLastStamp = 253402300799LL;

class Fnv1a {
public:
    void add(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; i++) {
            hash_ ^= bytes[i];
            hash_ *= 0x100000001b3ULL;
        }
    }
    // Big-endian, so the hash (and so the UID) is the same on every host.
    void addInt(long long value) {
        unsigned char bytes[8];
        auto u = static_cast<unsigned long long>(value);
        for (int i = 7; i >= 0; i--, u >>= 8)
            bytes[i] = static_cast<unsigned char>(u);
        add(bytes, sizeof bytes);
    }
    // With its terminator, so that moving bytes between neighbouring fields changes the hash.
    void addText(const std::string& text) { add(text.c_str(), text.size() + 1); }
    std::uint64_t value() const { return hash_; }

private:
    std::uint64_t hash_ = 0xcbf29ce484222325ULL;
};

std::string stampText(std::time_t stamp) {
    std::tm utc{};
    gmtime_r(&stamp, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &utc);
    return text;
}

std::string uid(int position, const TodoRecord& record) {
    char text[48];
    std::snprintf(text, sizeof text, "%016llx@pindle_todo",
                  static_cast<unsigned long long>(recordHash(position, record)));
    return text;
}

void writeTodo(std::ostream& out, int position, const TodoView& todo, const std::string& stamp) {
    writeFolded(out, "BEGIN:VTODO");
    writeFolded(out, "UID:" + uid(position, todo.record()));
    writeFolded(out, "DTSTAMP:" + stamp);
    writeFolded(out, "SUMMARY:" + escapeText(todo.description()));
    if (!todo.notes().empty())
        writeFolded(out, "DESCRIPTION:" + escapeText(todo.notes()));
    if (todo.hasDate())
        writeFolded(out, "DUE;VALUE=DATE:" + todo.basicDate());
    // PRIORITY 1-9 runs from highest to lowest, as the list's numbers do; 0 would mean "none".
    if (todo.priority() >= 1 && todo.priority() <= 9)
        writeFolded(out, "PRIORITY:" + std::to_string(todo.priority()));
    writeFolded(out, todo.completed() ? "STATUS:COMPLETED" : "STATUS:NEEDS-ACTION");
    if (!todo.category().empty())
        writeFolded(out, "CATEGORIES:" + escapeText(todo.category()));
    writeFolded(out, "END:VTODO");
}

} // namespace

bool chooseStamp(const char* sourceDateEpoch, std::time_t now, std::time_t& stamp) {
    if (sourceDateEpoch == nullptr) {
        stamp = now;
        return true;
    }
    if (*sourceDateEpoch < '0' || *sourceDateEpoch > '9')
        return false;
    char* end = nullptr;
    errno = 0;
    long long seconds = std::strtoll(sourceDateEpoch, &end, 10);
    if (errno != 0 || *end != '\0' || seconds > kLastStamp)
        return false;
    stamp = static_cast<std::time_t>(seconds);
    return true;
}

std::string escapeText(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c == '\\' || c == ';' || c == ',') {
            out += '\\';
            out += c;
        } else if (c == '\r' || c == '\n') {
            // CR LF, a lone CR and a lone LF are all one line break.
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                i++;
            out += "\\n";
        } else if ((static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) || c == '\t') {
            out += c;
        }
    }
    return out;
}

void writeFolded(std::ostream& out, const std::string& line) {
    std::size_t start = 0;
    std::size_t room = kLineOctets;
    while (line.size() - start > room) {
        std::size_t cut = start + room;
        while (Utf8Text::isContinuation(static_cast<unsigned char>(line[cut])))
            cut--;
        out.write(line.data() + start, static_cast<std::streamsize>(cut - start));
        out << "\r\n ";
        start = cut;
        // The leading space of a continuation line counts against its 75 octets.
        room = kLineOctets - 1;
    }
    out.write(line.data() + start, static_cast<std::streamsize>(line.size() - start));
    out << "\r\n";
}

std::uint64_t recordHash(int position, const TodoRecord& record) {
    TodoView view(record);
    Fnv1a hash;
    hash.addInt(position);
    hash.addInt(record.month);
    hash.addInt(record.day);
    hash.addInt(record.year);
    hash.addInt(record.priority);
    hash.addInt(record.completed);
    hash.addText(view.category());
    hash.addText(view.description());
    hash.addText(view.notes());
    return hash.value();
}

void write(std::ostream& out, const TodoRecord* head, std::time_t stamp) {
    std::string stampLine = stampText(stamp);
    writeFolded(out, "BEGIN:VCALENDAR");
    writeFolded(out, "VERSION:2.0");
    writeFolded(out, "PRODID:-//Pindle ToDo//pindle_export//EN");
    int position = 0;
    for (const TodoRecord* r = head; r != nullptr; r = r->next)
        writeTodo(out, position++, TodoView(*r), stampLine);
    writeFolded(out, "END:VCALENDAR");
}

} // namespace IcsWriter

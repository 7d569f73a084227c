// Digests of a record's significant bytes: strings up to their terminator or field end.
#include "record_digest.h"

#include "fnv_hash.h"

#include <cstring>
#include <string>

namespace {

template <std::size_t N> std::string text(const char (&field)[N]) {
    return std::string(field, strnlen(field, N));
}

// The digest of an empty text, which says nothing of a record's identity.
const std::uint32_t kEmptyText = FnvHash::digest("");

} // namespace

RecordDigest RecordDigest::of(const TodoRecord& r) {
    using namespace TodoField;
    RecordDigest d;
    const std::string texts[] = {text(r.category), text(r.description), r.notes()};
    d.fields[Date] = FnvHash::digest({r.month, r.day, r.year});
    d.fields[Priority] = FnvHash::digest({r.priority});
    d.fields[Completed] = FnvHash::digest({r.completed != 0});
    d.fields[Category] = FnvHash::digest(texts[0]);
    d.fields[Description] = FnvHash::digest(texts[1]);
    d.fields[Notes] = FnvHash::digest(texts[2]);
    FnvHash whole;
    for (long long v : {r.month, r.day, r.year, r.priority, r.completed != 0 ? 1 : 0})
        whole.addInt(v);
    for (const std::string& t : texts)
        whole.addText(t);
    d.whole = whole.value();
    return d;
}

int RecordDigest::likeness(const RecordDigest& a, const RecordDigest& b) {
    static const int kWeight[TodoField::kCount] = {1, 1, 1, 1, 4, 2};
    int score = 0;
    for (int f = 0; f < TodoField::kCount; f++) {
        bool emptyNotes = f == TodoField::Notes && a.fields[f] == kEmptyText;
        if (a.fields[f] == b.fields[f] && !emptyNotes)
            score += kWeight[f];
    }
    return score;
}

// The category records and their store: the list of names and the "cat.db" file of headerless
// 56-byte records. A category is only a name; to-dos refer to it by that name.
#ifndef PINDLE_CATEGORY_STORE_H
#define PINDLE_CATEGORY_STORE_H

#include "digest.h"
#include "file_version.h"
#include "record_store.h"

#include <cstddef>
#include <memory>
#include <optional>

struct CategoryRecord {
    static constexpr std::size_t kFileSize = 56;
    static constexpr std::size_t kLinkAt = 52;
    // A load reads the whole name.
    static constexpr std::size_t kHeadSize = kLinkAt;

    char name[52];
    CategoryRecord* next;

    // An empty name and no successor.
    CategoryRecord();

    // Bounded by the name field: a longer text is cut to 51 characters.
    void setName(const char* text);

    // True when the name is exactly what encode writes for it.
    bool decode(const unsigned char* head);
    // Always true: a category is all in memory.
    bool encode(unsigned char* block, bool last) const;
    // Of the name up to its terminator: all that encode writes but zeros and the link.
    Digest headDigest() const;
    std::optional<Digest> digest() const { return headDigest(); }

    // A category is its name, which the digest covers whole, and nothing is left in its file.
    bool alike(const CategoryRecord&) const { return true; }
    void file(const std::shared_ptr<const FileVersion>&, std::size_t) {}
    bool filedAt(const FileVersion*, std::size_t) const { return true; }
};

class CategoryStore : public RecordStore<CategoryRecord> {
public:
    // Loads "cat.db"; only when it cannot be opened does the store start with "Unassigned"
    // (kept in memory until the first save).
    CategoryStore();

    // The earliest record whose name equals `name` byte for byte, or null.
    CategoryRecord* find(const char* name) const;

    // Frees every record and loads the file again, as the constructor does.
    void reload();

private:
    // Starts the list with "Unassigned", as a first run does.
    void seed();
};

#endif

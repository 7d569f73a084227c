// The category record's file layout and the category store.
#include "category_store.h"

#include "field_codec.h"

#include <cstring>

CategoryRecord::CategoryRecord() : next(nullptr) {
    name[0] = '\0';
}

void CategoryRecord::setName(const char* text) {
    FieldCodec::copyBounded(name, text, name + sizeof name);
}

bool CategoryRecord::decode(const unsigned char* head) {
    std::memcpy(name, head, sizeof name);
    if (std::memchr(name, 0, sizeof name) == nullptr) {
        name[sizeof name - 1] = '\0';
        return false;
    }
    return FieldCodec::isPadded(head, sizeof name);
}

bool CategoryRecord::encode(unsigned char* block, bool last) const {
    FieldCodec::putText(block, name, sizeof name);
    FieldCodec::putLink(block + kLinkAt, last);
    return true;
}

Digest CategoryRecord::headDigest() const {
    unsigned char packed[sizeof name];
    return Digest::of(packed, FieldCodec::putSignificant(packed, name, sizeof name));
}

CategoryStore::CategoryStore() : RecordStore("cat.db") {
    if (!load())
        seed();
}

void CategoryStore::reload() {
    if (!reloadFile())
        seed();
}

void CategoryStore::seed() {
    auto* unassigned = new CategoryRecord;
    unassigned->setName("Unassigned");
    append(unassigned);
}

CategoryRecord* CategoryStore::find(const char* name) const {
    for (int i = 0; i < count(); i++) {
        if (std::strcmp(at(i)->name, name) == 0)
            return at(i);
    }
    return nullptr;
}

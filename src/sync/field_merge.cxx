// The three-way merge of one to-do's fields.
#include "field_merge.h"

namespace FieldMerge {

namespace {

TodoField::Set changed(const Side& side) {
    TodoField::Set out;
    for (int f = 0; f < TodoField::kCount; f++)
        out[f] = side.now != nullptr && (*side.now)[f] != side.base[f];
    return out;
}

} // namespace

Result merge(const Side& here, const Side& server, TodoField::Set agree) {
    TodoField::Set changedHere = changed(here), changedThere = changed(server);
    if (here.now == nullptr && server.now == nullptr)
        return {Fate::Forget, {}, {}};
    if (here.now == nullptr)
        return {changedThere.any() ? Fate::TakeBack : Fate::DeleteThere, {}, {}};
    if (server.now == nullptr)
        return {changedHere.any() ? Fate::SendAgain : Fate::DeleteHere, {}, {}};
    TodoField::Set both = changedHere & changedThere;
    if ((both & ~agree).any())
        return {Fate::KeepBoth, {}, {}};
    TodoField::Set fromHere = changedHere & ~both, fromServer = changedThere & ~both;
    if (fromHere.none() && fromServer.none())
        return {Fate::Same, {}, {}};
    return {Fate::Merge, fromHere, fromServer};
}

} // namespace FieldMerge

// The state file as JSON through nlohmann-json.
#include "sync_state.h"

#include "collection_url.h"
#include "private_file.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

// Version 1 kept one digest of each whole task and the URL as it was given.
constexpr int kVersion = 2;

std::string hex(std::uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

std::uint64_t fromHex(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 16);
}

json array(const RecordDigest::Fields& fields) {
    json out = json::array();
    for (std::uint32_t f : fields)
        out.push_back(f);
    return out;
}

void readArray(const json& from, RecordDigest::Fields& fields) {
    for (std::size_t f = 0; f < fields.size() && f < from.size(); f++)
        fields[f] = from[f].get<std::uint32_t>();
}

json toJson(const SyncEntry& e) {
    return {{"uid", e.uid},
            {"path", e.path},
            {"etag", e.etag},
            {"local", hex(e.local.whole)},
            {"fields", array(e.local.fields)},
            {"remote_fields", e.remoteKnown ? array(e.remote) : json(nullptr)}};
}

SyncEntry fromJson(const json& j) {
    SyncEntry e;
    e.uid = j.at("uid").get<std::string>();
    e.path = j.at("path").get<std::string>();
    e.etag = j.at("etag").get<std::string>();
    e.local.whole = fromHex(j.at("local").get<std::string>());
    readArray(j.at("fields"), e.local.fields);
    auto remote = j.find("remote_fields");
    e.remoteKnown = remote != j.end() && !remote->is_null();
    if (e.remoteKnown)
        readArray(*remote, e.remote);
    return e;
}

} // namespace

bool SyncState::load(std::string& error) {
    *this = SyncState();
    std::ifstream in(kFileName);
    if (!in)
        return true;
    try {
        json j = json::parse(in);
        int version = j.at("version").get<int>();
        if (version != 1 && version != kVersion)
            throw std::runtime_error("version " + std::to_string(version) + " is not known here");
        url = CollectionUrl::normal(j.at("url").get<std::string>());
        collection = j.value("collection", "");
        user = j.at("user").get<std::string>();
        const json& token = j.at("sync_token");
        tokenless = token.is_null();
        syncToken = tokenless ? "" : token.get<std::string>();
        for (const json& e : j.at("todos"))
            entries.push_back(fromJson(e));
    } catch (const std::exception& e) {
        *this = SyncState();
        error = std::string("cannot read ") + kFileName + ": " + e.what();
        return false;
    }
    return true;
}

bool SyncState::save(std::string& error) const {
    json todos = json::array();
    for (const SyncEntry& e : entries)
        todos.push_back(toJson(e));
    json j = {{"version", kVersion},
              {"url", url},
              {"collection", collection},
              {"user", user},
              {"sync_token", tokenless ? json(nullptr) : json(syncToken)},
              {"todos", todos}};
    std::string text = j.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
    // Unchanged, the file is left alone: a sync with nothing new touches nothing.
    std::ifstream old(kFileName, std::ios::binary);
    if (old && std::string(std::istreambuf_iterator<char>(old), {}) == text)
        return true;
    return PrivateFile::write(kFileName, text, error);
}

bool SyncState::knows(const std::string& normalUrl, const std::string& forUser) const {
    return !collection.empty() && user == forUser && (normalUrl == url || normalUrl == collection);
}

bool SyncState::belongsTo(const std::string& normalUrl, const std::string& collectionUrl,
                          const std::string& forUser) const {
    // A state of the first version knows only the URL as it was set up.
    bool same = collection.empty() ? normalUrl == url : collectionUrl == collection;
    return same && user == forUser;
}

void SyncState::startOver(const std::string& normalUrl, const std::string& collectionUrl,
                          const std::string& forUser) {
    *this = SyncState();
    url = normalUrl;
    collection = collectionUrl;
    user = forUser;
}

// The state file as JSON through nlohmann-json.
#include "sync_state.h"

#include "private_file.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

constexpr int kVersion = 1;

std::string hex(std::uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

std::uint64_t fromHex(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 16);
}

json toJson(const SyncEntry& e) {
    json fields = json::array();
    for (std::uint32_t f : e.local.fields)
        fields.push_back(f);
    return {{"uid", e.uid},     {"path", e.path},
            {"etag", e.etag},   {"local", hex(e.local.whole)},
            {"fields", fields}, {"remote", hex(e.remote)}};
}

SyncEntry fromJson(const json& j) {
    SyncEntry e;
    e.uid = j.at("uid").get<std::string>();
    e.path = j.at("path").get<std::string>();
    e.etag = j.at("etag").get<std::string>();
    e.local.whole = fromHex(j.at("local").get<std::string>());
    const json& fields = j.at("fields");
    for (std::size_t f = 0; f < e.local.fields.size() && f < fields.size(); f++)
        e.local.fields[f] = fields[f].get<std::uint32_t>();
    e.remote = fromHex(j.at("remote").get<std::string>());
    return e;
}

} // namespace

bool SyncState::load(const std::string& forUrl, const std::string& forUser, std::string& error) {
    *this = SyncState();
    url = forUrl;
    user = forUser;
    std::ifstream in(kFileName);
    if (!in)
        return true;
    try {
        json j = json::parse(in);
        if (j.at("version").get<int>() != kVersion || j.at("url") != forUrl ||
            j.at("user") != forUser)
            return true;
        const json& token = j.at("sync_token");
        tokenless = token.is_null();
        syncToken = tokenless ? "" : token.get<std::string>();
        for (const json& e : j.at("todos"))
            entries.push_back(fromJson(e));
    } catch (const json::exception& e) {
        entries.clear();
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

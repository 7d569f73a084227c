// The day's announcements as JSON through nlohmann-json.
#include "announced_today.h"

#include "private_file.h"

#include <fstream>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {
constexpr int kVersion = 1;
}

bool AnnouncedToday::load(std::string& error) {
    *this = AnnouncedToday();
    std::ifstream in(kFileName);
    if (!in)
        return true;
    try {
        json j = json::parse(in);
        if (j.at("version").get<int>() != kVersion)
            return true;
        day_ = j.at("day").get<std::string>();
        for (const json& todo : j.at("announced"))
            times_[{todo.at("due").get<std::string>(),
                    todo.at("description").get<std::string>()}]++;
    } catch (const json::exception& e) {
        *this = AnnouncedToday();
        error = std::string("cannot read ") + kFileName + ": " + e.what();
        return false;
    }
    return true;
}

bool AnnouncedToday::save(std::string& error) const {
    json announced = json::array();
    for (const auto& [key, times] : times_)
        for (int i = 0; i < times; i++)
            announced.push_back({{"due", key.first}, {"description", key.second}});
    json j = {{"version", kVersion}, {"day", day_}, {"announced", announced}};
    return PrivateFile::write(kFileName,
                              j.dump(1, ' ', false, json::error_handler_t::replace) + "\n", error);
}

std::vector<DueTodo> AnnouncedToday::announce(const std::vector<DueTodo>& due,
                                              const std::string& today) {
    if (day_ != today) {
        day_ = today;
        times_.clear();
    }
    // Each to-do already announced uses up one announcement of its kind; the rest are news.
    std::map<Key, int> unused = times_;
    std::vector<DueTodo> news;
    for (const DueTodo& todo : due) {
        Key key{todo.due, todo.description};
        auto found = unused.find(key);
        if (found != unused.end() && found->second > 0) {
            found->second--;
            continue;
        }
        times_[key]++;
        news.push_back(todo);
    }
    return news;
}

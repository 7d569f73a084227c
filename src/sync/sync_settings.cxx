// Settings: the TOML file read key by key with its lines, the command line over it, the file
// written back for --setup.
#include "sync_settings.h"

#include "private_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <sys/stat.h>
#include <toml++/toml.h>
#include <unistd.h>

namespace {

const char* const kKeys = "url, user, password, folder, ca_file, allow_http";

// The XDG rules ignore a variable that is unset, empty or not an absolute path.
std::string xdgHome(const char* variable, const char* fallback) {
    const char* value = std::getenv(variable);
    if (value != nullptr && value[0] == '/')
        return value;
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/" + fallback;
}

// "~/..." as the user's home, as a shell would read it.
std::string expandHome(const std::string& path) {
    const char* home = std::getenv("HOME");
    if (home != nullptr && (path == "~" || path.rfind("~/", 0) == 0))
        return home + path.substr(1);
    return path;
}

bool validPassword(const std::string& source) {
    return source == "keyring" || source == "environment" || source == "netrc" ||
           (source.rfind("file:", 0) == 0 && source.size() > 5);
}

std::string where(const std::string& path, const toml::source_region& region) {
    return path + " line " + std::to_string(region.begin.line);
}

// One key's value into its field; false, with the line, for a value of the wrong kind.
bool take(const std::string& path, const toml::key& key, const toml::node& value, SyncSettings& out,
          std::string& error) {
    const std::string name(key.str());
    out.origins[name] = where(path, value.source()) + ": ";
    if (name == "allow_http") {
        if (!value.is_boolean()) {
            error = where(path, value.source()) + ": allow_http must be true or false";
            return false;
        }
        out.allowHttp = value.as_boolean()->get();
        return true;
    }
    std::string* field = out.field(name);
    if (field == nullptr) {
        error = where(path, key.source()) + ": unknown setting '" + name + "' (the settings are " +
                kKeys + ")";
        return false;
    }
    if (!value.is_string() || value.as_string()->get().empty()) {
        error = where(path, value.source()) + ": " + name + " must be text in quotes";
        return false;
    }
    *field = value.as_string()->get();
    if (name == "password" && !validPassword(*field)) {
        error = where(path, value.source()) +
                ": password must be \"keyring\", \"environment\", \"netrc\" or \"file:PATH\"";
        return false;
    }
    if (name == "folder" || name == "ca_file")
        *field = expandHome(*field);
    return true;
}

// TOML strings in double quotes, with what needs escaping escaped.
std::string quoted(const std::string& text) {
    std::ostringstream out;
    out << toml::value<std::string>(text);
    return out.str();
}

} // namespace

std::string* SyncSettings::field(const std::string& key) {
    return key == "url"        ? &url
           : key == "user"     ? &user
           : key == "password" ? &password
           : key == "folder"   ? &folder
           : key == "ca_file"  ? &caFile
                               : nullptr;
}

std::string SyncSettings::origin(const std::string& key) const {
    auto found = origins.find(key);
    return found != origins.end() ? found->second : "";
}

std::string SyncSettings::filePath() {
    return xdgHome("XDG_CONFIG_HOME", ".config") + "/pindle_sync/config";
}

std::string SyncSettings::dataFolder() {
    return xdgHome("XDG_DATA_HOME", ".local/share") + "/pindle_todo";
}

bool SyncSettings::read(const std::string& path, bool& found, std::string& error) {
    found = access(path.c_str(), F_OK) == 0;
    if (!found)
        return true;
    toml::table table;
    try {
        table = toml::parse_file(path);
    } catch (const toml::parse_error& e) {
        error = path + " line " + std::to_string(e.source().begin.line) + ", column " +
                std::to_string(e.source().begin.column) + ": " + std::string(e.description());
        if (error.find("could not determine value type") != std::string::npos)
            error += " (text goes in double quotes: key = \"text\")";
        return false;
    }
    for (const auto& [key, value] : table) {
        if (!take(path, key, value, *this, error))
            return false;
    }
    return true;
}

bool SyncSettings::complete(const SyncOptions& options, bool fromFile, std::string& error) {
    const std::pair<const std::string*, const char*> given[] = {{&options.url, "url"},
                                                                {&options.user, "user"},
                                                                {&options.dir, "folder"},
                                                                {&options.caFile, "ca_file"}};
    for (const auto& [value, key] : given) {
        if (!value->empty()) {
            *field(key) = *value;
            origins.erase(key);
        }
    }
    if (!options.passwordFile.empty()) {
        password = "file:" + options.passwordFile;
        origins.erase("password");
    }
    allowHttp = allowHttp || options.allowHttp;
    if (folder.empty())
        folder = fromFile || options.setup ? dataFolder() : ".";
    const std::string source = fromFile ? " in " + filePath() : "";
    if (url.empty())
        error = "give the task collection with --url" + (fromFile ? ", or url" + source : "");
    else if (user.empty())
        error = "give the user name with --user" + (fromFile ? ", or user" + source : "");
    else if (options.dirGiven && options.dir.empty())
        error = "option --dir needs a folder";
    else if (!options.taskList.empty() && !options.setup)
        error = "option --task-list goes with --setup";
    else if (options.startOver && options.setup)
        error = "option --start-over goes with a sync, not with --setup";
    return error.empty();
}

bool SyncSettings::makePrivateFolder(const std::string& path, std::string& error) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
            error = "cannot make folder " + folder + ": " + std::strerror(errno);
            return false;
        }
        if (end == std::string::npos)
            return true;
    }
}

bool SyncSettings::write(const std::string& path, std::string& error) const {
    std::string text =
        "# pindle_sync's settings (written by pindle_sync --setup; see man pindle_sync)\n";
    text += "url = " + quoted(url) + "\nuser = " + quoted(user) + "\n";
    if (!password.empty())
        text += "password = " + quoted(password) + "\n";
    text += "folder = " + quoted(folder) + "\n";
    if (!caFile.empty())
        text += "ca_file = " + quoted(caFile) + "\n";
    if (allowHttp)
        text += "allow_http = true\n";
    if (!makePrivateFolder(path.substr(0, path.rfind('/')), error))
        return false;
    return PrivateFile::write(path, text, error);
}

// What a sync runs with: the collection, the user, where the password comes from, the data
// folder, a CA file and whether plain http may leave this machine. They come from the settings
// file, ${XDG_CONFIG_HOME:-~/.config}/pindle_sync/config, a few keys of TOML (read with toml++, so
// that every mistake is told with its line), and the command line overrides each of them. The
// file is written by --setup, readable by its owner only.
#ifndef PINDLE_SYNC_SETTINGS_H
#define PINDLE_SYNC_SETTINGS_H

#include "sync_options.h"

#include <map>
#include <string>

struct SyncSettings {
    // Where the password comes from: "keyring" (the desktop's Secret Service), "environment"
    // (PINDLE_SYNC_PASSWORD), "netrc" (~/.netrc) or "file:PATH". Empty: the environment when
    // PINDLE_SYNC_PASSWORD is set, else ~/.netrc.
    std::string password;
    std::string url;
    std::string user;
    std::string folder;
    std::string caFile;
    bool allowHttp = false;
    // Where each key was read from, "FILE line N: ", for the messages about its value.
    std::map<std::string, std::string> origins;

    // ${XDG_CONFIG_HOME:-~/.config}/pindle_sync/config.
    static std::string filePath();
    // ${XDG_DATA_HOME:-~/.local/share}/pindle_todo, where the menu's launcher keeps the files.
    static std::string dataFolder();

    // Reads the settings file at `path`. A missing file leaves the settings as they are and
    // `found` false; a file that cannot be read or holds a mistake gives false, with the file,
    // the line and the key in `error`.
    bool read(const std::string& path, bool& found, std::string& error);

    // The command line's values, each where it was given, over the file's; then the defaults
    // (the folder: the launcher's for a set-up or when there was a file, else the current one).
    // False, with the missing key, when the URL or the user is known from neither.
    bool complete(const SyncOptions& options, bool fromFile, std::string& error);

    // Writes the file whole, readable by its owner only, in a folder made private if new.
    bool write(const std::string& path, std::string& error) const;

    // The text field of a key of the file, null for another key.
    std::string* field(const std::string& key);
    // "FILE line N: " when the key's value came from the settings file, else nothing.
    std::string origin(const std::string& key) const;

    // Makes `path` and any folder above it that is missing, readable by the user alone (as the
    // XDG rules ask); folders already there keep their modes.
    static bool makePrivateFolder(const std::string& path, std::string& error);
};

#endif

// The program found through /proc/self/exe, so that an installed reminder starts the window of
// the same installation, and a build its own build's; spawned with GLib.
#include "window_start.h"

#include <glib.h>

namespace WindowStart {

bool inCurrentFolder(std::string& error) {
    GError* failure = nullptr;
    gchar* self = g_file_read_link("/proc/self/exe", &failure);
    gchar* folder = self != nullptr ? g_path_get_dirname(self) : nullptr;
    gchar* program = folder != nullptr ? g_build_filename(folder, "pindle_todo", nullptr) : nullptr;
    gchar* argv[] = {program, nullptr};
    bool started = program != nullptr && g_spawn_async(nullptr, argv, nullptr, G_SPAWN_DEFAULT,
                                                       nullptr, nullptr, nullptr, &failure);
    if (!started) {
        error = std::string("cannot start pindle_todo: ") + failure->message;
        g_error_free(failure);
    }
    g_free(program);
    g_free(folder);
    g_free(self);
    return started;
}

} // namespace WindowStart

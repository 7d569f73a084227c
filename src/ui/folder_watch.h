// Tells the main window when another program may have changed the data files in the current
// directory: inotify on the directory, its descriptor served by the toolkit's event loop, so
// nothing polls. Where inotify is not to be had (no instance left, a file system that does not
// report), a stamp check each second stands in. Either way it only says "look again"; the data
// folder's stamps decide whether a file changed, so the window's own saves cost one check.
#ifndef PINDLE_FOLDER_WATCH_H
#define PINDLE_FOLDER_WATCH_H

class FolderWatch {
public:
    using Handler = void (*)(void* data);

    // Watches from now on, calling `handler` with `data` a moment after a data file changed.
    FolderWatch(Handler handler, void* data);
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    bool usesInotify() const { return fd_ >= 0; }

    // Events that come together, as the many writes of one save do, give one call this long
    // after the first of them.
    static constexpr double kSettleSeconds = 0.05;
    // How often the fallback looks.
    static constexpr double kPollSeconds = 1.0;

private:
    static void readEvents(int fd, void* self);
    static void settled(void* self);
    static void poll(void* self);
    bool drainMentionsDataFile();

    Handler handler_;
    void* data_;
    int fd_;
    bool pending_;
};

#endif

// "done of total" on stderr while a sync works through many to-dos, so that a long first upload
// shows it is moving. Only on a terminal, and only once the sync has taken more than a moment;
// piped or quick, it prints nothing.
#ifndef PINDLE_PROGRESS_H
#define PINDLE_PROGRESS_H

#include <chrono>

class Progress {
public:
    Progress();
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void start(int total);
    void step();

private:
    using Clock = std::chrono::steady_clock;

    bool terminal_;
    bool shown_ = false;
    int done_ = 0;
    int total_ = 0;
    Clock::time_point began_;
    Clock::time_point lastShown_;
};

#endif

// Benchmarks of the user interface at 1000, 10000 and 50000 to-dos: the to-do list's rebuild on
// the real main window, a tab switch, the window reading the files again and following a write of
// another program, and the built program's start-up, peak memory and bytes read. Needs an X
// display. They use only what every version of the window offers, so that
// scripts/bench-compare.sh builds them against an older one too.
#include "bench_dir.h"
#include "bench_timing.h"
#include "globals.h"
#include "todo_generator.h"
#include "todo_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Browser.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Double_Window.H>
#include <X11/Xlib.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace {

using BenchTiming::alternate;
using BenchTiming::Clock;
using BenchTiming::secondsSince;
constexpr const char* kMainTitle = "To Do List";
// The slowest start-up measured before the list rebuild was reworked is well under this.
constexpr double kMapTimeoutSeconds = 120;

template <class Store> void discard(Store* store) {
    store->clear();
    delete store;
}

// Writes "pindle_todo.db" with `count` generated to-dos (see TodoGenerator::writeTodoFile for
// `holes`) and "cat.db" with their categories into the current directory. An empty category
// file first, so that the store built here loads nothing.
void writeDataFiles(int count, bool holes = true) {
    TodoGenerator generator;
    if (!generator.writeTodoFile("pindle_todo.db", count, holes))
        throw std::runtime_error("cannot write pindle_todo.db");
    std::fclose(std::fopen("cat.db", "wb"));
    auto* categories = new CategoryStore;
    generator.fillCategories(*categories);
    categories->save();
    discard(categories);
}

// ---- The list rebuild --------------------------------------------------------------------

// One main window for every rebuild measure, as the program has one for its whole run.
TodoWindow& mainWindow() {
    static std::unique_ptr<TodoWindow> window;
    if (!window)
        window = std::make_unique<TodoWindow>();
    return *window;
}

// Replaces whatever the global stores hold with `count` generated to-dos and their categories,
// written in the current directory and loaded from there, as the program loads them.
void fillGlobalStores(int count) {
    writeDataFiles(count);
    todoStore.reload();
    categoryStore.reload();
}

// A full fillTodoBrowser beside its floor: the browser cleared and given the same lines, already
// built, with their records. Range 1 is the state of "&Show Completed".
void measureRebuild(benchmark::State& state) {
    if (std::getenv("DISPLAY") == nullptr) {
        state.SkipWithError("no X display");
        return;
    }
    TodoWindow& win = mainWindow();
    fillGlobalStores(static_cast<int>(state.range(0)));
    win.fillCategoryChoice();
    win.showCompletedButton->value(static_cast<int>(state.range(1)));
    win.fillTodoBrowser();
    Fl_Browser* browser = win.todoBrowser;
    std::vector<std::string> texts;
    std::vector<void*> records;
    for (int line = 1; line <= browser->size(); line++) {
        texts.emplace_back(browser->text(line));
        records.push_back(browser->data(line));
    }
    auto rebuild = [&win] {
        auto start = Clock::now();
        win.fillTodoBrowser();
        return secondsSince(start);
    };
    auto floor = [browser, &texts, &records] {
        auto start = Clock::now();
        browser->clear();
        for (std::size_t i = 0; i < texts.size(); i++)
            browser->add(texts[i].c_str(), records[i]);
        return secondsSince(start);
    };
    alternate(state, rebuild, floor);
    state.counters["lines"] = static_cast<double>(texts.size());
}

// A switch between the tabs with nothing changed (the category check of every to-do, the save,
// the list rebuild and the category filter) beside the list rebuild alone.
void measureTabSwitch(benchmark::State& state) {
    if (std::getenv("DISPLAY") == nullptr) {
        state.SkipWithError("no X display");
        return;
    }
    BenchDir dir;
    TodoWindow& win = mainWindow();
    fillGlobalStores(static_cast<int>(state.range(0)));
    double written = 0;
    auto tabSwitch = [&win, &written] {
        double before = BenchTiming::writtenBytes();
        auto start = Clock::now();
        win.tabChanged();
        double seconds = secondsSince(start);
        written += BenchTiming::writtenBytes() - before;
        return seconds;
    };
    auto floor = [&win] {
        auto start = Clock::now();
        win.fillTodoBrowser();
        return secondsSince(start);
    };
    alternate(state, tabSwitch, floor);
    state.counters["written_kb"] =
        benchmark::Counter(written / 1e3, benchmark::Counter::kAvgIterations);
}

// ---- Reading the files again -----------------------------------------------------------------

// Another program's write of one to-do's description, made with plain system calls.
void writeElsewhere(int fd, int todo, int round) {
    char text[50] = {};
    std::snprintf(text, sizeof text, "written elsewhere %d", round);
    (void)!pwrite(fd, text, sizeof text, off_t{todo} * TodoRecord::kFileSize + 67);
}

// The window reading the files again after another program's write, as its watch has it do
// ("Show Completed" on, so that every to-do is listed): the check, the to-do file read, the
// selection found again and the list rebuilt. The floor is the list rebuild alone.
void measureReload(benchmark::State& state) {
    if (std::getenv("DISPLAY") == nullptr) {
        state.SkipWithError("no X display");
        return;
    }
    BenchDir dir;
    const int count = static_cast<int>(state.range(0));
    fillGlobalStores(count);
    auto win = std::make_unique<TodoWindow>();
    win->showCompletedButton->value(1);
    win->fillTodoBrowser();
    win->todoBrowser->value(1);
    const int fd = open("pindle_todo.db", O_WRONLY | O_CLOEXEC);
    int round = 0;
    auto reload = [&] {
        writeElsewhere(fd, count / 2, ++round);
        auto start = Clock::now();
        win->followFiles();
        return secondsSince(start);
    };
    auto floor = [&win] {
        auto start = Clock::now();
        win->fillTodoBrowser();
        return secondsSince(start);
    };
    alternate(state, reload, floor);
    if (std::strncmp(todoStore.at(count / 2)->description, "written elsewhere", 17) != 0)
        state.SkipWithError("the window did not read the file again");
    close(fd);
    delete win->window;
}

// ---- Following another program's writes ---------------------------------------------------

// Another program's write of one to-do's description into the file, made with plain system
// calls; the window, with "Show Completed" on so that every to-do is listed, is timed from
// before the write until it lists the new text and has drawn it: the watch's event, the settle,
// the to-do file read again and the list rebuilt. The floor is the reload and rebuild alone. It
// runs 20 times, and reports their median and the worst of them.
void measureFollow(benchmark::State& state) {
    if (std::getenv("DISPLAY") == nullptr) {
        state.SkipWithError("no X display");
        return;
    }
    BenchDir dir;
    const int count = static_cast<int>(state.range(0));
    fillGlobalStores(count);
    auto win = std::make_unique<TodoWindow>(); // watching this folder
    win->showCompletedButton->value(1);
    win->fillTodoBrowser();
    const int fd = open("pindle_todo.db", O_WRONLY | O_CLOEXEC);
    const int edited = count / 2;
    std::vector<double> times;
    int round = 0;
    auto follow = [&] {
        char text[50] = {};
        std::snprintf(text, sizeof text, "written elsewhere %d", ++round);
        auto start = Clock::now();
        writeElsewhere(fd, edited, round);
        while (std::strcmp(todoStore.at(edited)->description, text) != 0)
            Fl::wait(0.001);
        Fl::flush();
        times.push_back(secondsSince(start));
        return times.back();
    };
    auto floor = [&win] {
        auto start = Clock::now();
        todoStore.reload();
        win->fillTodoBrowser();
        return secondsSince(start);
    };
    alternate(state, follow, floor);
    std::sort(times.begin(), times.end());
    state.counters["median_ms"] = times[times.size() / 2] * 1e3;
    state.counters["worst_ms"] = times.back() * 1e3;
    close(fd);
    delete win->window;
}

// ---- Start-up and peak memory ------------------------------------------------------------

int ignoreXError(Display*, XErrorEvent*) {
    return 0;
}

// The number after `key` in a /proc file of `pid` ("status", "io"), or 0.
double procValue(pid_t pid, const char* file, const std::string& key) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/" + file);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind(key, 0) == 0)
            return std::atof(line.c_str() + key.size());
    }
    return 0;
}

// Starts the built program and times it from the spawn to the MapNotify of its main window,
// watched on the root window, so no polling sits between the map and the clock.
class Launcher {
public:
    // Read as soon as the window is mapped.
    struct Run {
        double seconds;
        long peakKiB;     // VmHWM
        double readBytes; // rchar: bytes from read() and its kin (not io_uring's reads)
        double diskBytes; // read_bytes: what had to come from the disk
    };

    Launcher() : display_(XOpenDisplay(nullptr)) {
        if (display_ == nullptr)
            throw std::runtime_error("cannot open the X display");
        XSetErrorHandler(ignoreXError);
        XSelectInput(display_, DefaultRootWindow(display_), SubstructureNotifyMask);
        XSync(display_, True);
    }
    ~Launcher() { XCloseDisplay(display_); }
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    // Runs the program in `folder` until its main window is mapped, then kills it.
    Run run(const std::string& folder) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        char* argv[] = {const_cast<char*>("pindle_todo"), nullptr};
        pid_t pid = 0;
        auto start = Clock::now();
        int failed = posix_spawn(&pid, PINDLE_TODO_PROGRAM, &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        if (failed != 0)
            throw std::runtime_error("cannot start " PINDLE_TODO_PROGRAM);
        std::optional<Clock::time_point> mapped = waitForMainWindow(start);
        Run run{0, static_cast<long>(procValue(pid, "status", "VmHWM:")),
                procValue(pid, "io", "rchar:"), procValue(pid, "io", "read_bytes:")};
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        if (!mapped)
            throw std::runtime_error("the main window was not mapped in time");
        run.seconds = std::chrono::duration<double>(*mapped - start).count();
        return run;
    }

private:
    // The moment the main window's MapNotify arrived; nothing on a timeout.
    std::optional<Clock::time_point> waitForMainWindow(Clock::time_point start) {
        pollfd connection{ConnectionNumber(display_), POLLIN, 0};
        while (secondsSince(start) < kMapTimeoutSeconds) {
            while (XPending(display_) > 0) {
                XEvent event;
                XNextEvent(display_, &event);
                auto arrived = Clock::now();
                if (event.type == MapNotify && isMainWindow(event.xmap.window))
                    return arrived;
            }
            poll(&connection, 1, 100);
        }
        return std::nullopt;
    }

    bool isMainWindow(Window window) {
        char* name = nullptr;
        bool main = XFetchName(display_, window, &name) != 0 && name != nullptr &&
                    std::strcmp(name, kMainTitle) == 0;
        if (name != nullptr)
            XFree(name);
        return main;
    }

    Display* display_;
};

// Start-up with `count` to-dos beside its floor, the same program started on empty files; the
// peak memory of the full start-ups is set against N x 32124 bytes, and beside the empty start's,
// as are the bytes read (the most of any run; the disk's share is nil once the file is cached).
void measureStartup(benchmark::State& state) {
    BenchDir dir;
    int count = static_cast<int>(state.range(0));
    writeDataFiles(count);
    std::filesystem::path empty = dir.path() / "empty";
    std::filesystem::create_directory(empty);
    std::ofstream(empty / "pindle_todo.db");
    std::ofstream(empty / "cat.db");
    Launcher launcher;
    Launcher::Run most{0, 0, 0, 0}, emptyMost{0, 0, 0, 0};
    auto keepMost = [](Launcher::Run& into, const Launcher::Run& run) {
        into = {run.seconds, std::max(into.peakKiB, run.peakKiB),
                std::max(into.readBytes, run.readBytes), std::max(into.diskBytes, run.diskBytes)};
        return run.seconds;
    };
    alternate(
        state, [&] { return keepMost(most, launcher.run(dir.path().string())); },
        [&] { return keepMost(emptyMost, launcher.run(empty.string())); });
    BenchTiming::reportPeak(state, most.peakKiB, static_cast<double>(count) * TodoRecord::kFileSize,
                            "peak_ratio");
    state.counters["floor_peak_mb"] = static_cast<double>(emptyMost.peakKiB) * 1024 / 1e6;
    state.counters["read_mb"] = most.readBytes / 1e6;
    state.counters["floor_read_mb"] = emptyMost.readBytes / 1e6;
    state.counters["disk_read_mb"] = most.diskBytes / 1e6;
}

// The file's pages out of the page cache, as after a reboot.
void evict(const char* name) {
    const int fd = open(name, O_RDONLY | O_CLOEXEC);
    fdatasync(fd);
    posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    close(fd);
}

// Start-up with the to-do file out of the page cache before each run: what had to come from the
// disk (read_bytes) is what the start-up read of the file, page by page. The file is written
// whole, zeros and all, as a save writes it: a hole would need no disk. No floor.
void measureColdStartup(benchmark::State& state) {
    BenchDir dir;
    const int count = static_cast<int>(state.range(0));
    writeDataFiles(count, false);
    Launcher launcher;
    double diskBytes = 0;
    for (auto _ : state) {
        evict("pindle_todo.db");
        const Launcher::Run run = launcher.run(dir.path().string());
        state.SetIterationTime(run.seconds);
        diskBytes = std::max(diskBytes, run.diskBytes);
    }
    state.counters["disk_read_mb"] = diskBytes / 1e6;
    state.counters["file_mb"] = static_cast<double>(count) * TodoRecord::kFileSize / 1e6;
}

void registerAll() {
    const int counts[] = {1000, 10000, 50000};
    for (int count : counts) {
        for (int shown : {1, 0}) {
            benchmark::RegisterBenchmark(shown ? "rebuild_all" : "rebuild_default", measureRebuild)
                ->Args({count, shown})
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (int count : counts) {
        for (auto [name, measure] :
             {std::pair{"tab_switch", measureTabSwitch}, std::pair{"reload", measureReload},
              std::pair{"startup", measureStartup}}) {
            benchmark::RegisterBenchmark(name, measure)
                ->Arg(count)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
        benchmark::RegisterBenchmark("follow", measureFollow)
            ->Arg(count)
            ->Iterations(20)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    // Reading 1.6 GB from the disk on every run says nothing the 10000 do not.
    for (int count : {1000, 10000}) {
        benchmark::RegisterBenchmark("startup_cold", measureColdStartup)
            ->Arg(count)
            ->Iterations(3)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

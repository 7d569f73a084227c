// Benchmarks of the user interface at 100, 1000 and 10000 to-dos: the to-do list's rebuild on the
// real main window, the window following a write of another program, and the built program's
// start-up and peak memory. Needs an X display.
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

// Writes "pindle_todo.db" with `count` generated to-dos and "cat.db" with their categories into
// the current directory. Empty files first, so that the stores built here load nothing.
void writeDataFiles(int count) {
    std::fclose(std::fopen("pindle_todo.db", "wb"));
    std::fclose(std::fopen("cat.db", "wb"));
    TodoGenerator generator;
    auto* todos = new TodoStore;
    generator.fillTodos(*todos, count);
    todos->save();
    discard(todos);
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
// saved in the current directory, so that the window's changes find the files as they left them.
void fillGlobalStores(int count) {
    todoStore.clear();
    categoryStore.clear();
    TodoGenerator generator;
    generator.fillTodos(todoStore, count);
    generator.fillCategories(categoryStore);
    todoStore.save();
    categoryStore.save();
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
        (void)!pwrite(fd, text, sizeof text, off_t{edited} * TodoRecord::kFileSize + 67);
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

long peakKiBOf(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::atol(line.c_str() + 6);
    }
    return 0;
}

// Starts the built program and times it from the spawn to the MapNotify of its main window,
// watched on the root window, so no polling sits between the map and the clock.
class Launcher {
public:
    struct Run {
        double seconds;
        long peakKiB; // VmHWM read as soon as the window is mapped
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
        long peakKiB = peakKiBOf(pid);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        if (!mapped)
            throw std::runtime_error("the main window was not mapped in time");
        return {std::chrono::duration<double>(*mapped - start).count(), peakKiB};
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
// peak memory of the full start-ups is set against N x 32124 bytes.
void measureStartup(benchmark::State& state) {
    BenchDir dir;
    int count = static_cast<int>(state.range(0));
    writeDataFiles(count);
    std::filesystem::path empty = dir.path() / "empty";
    std::filesystem::create_directory(empty);
    std::ofstream(empty / "pindle_todo.db");
    std::ofstream(empty / "cat.db");
    Launcher launcher;
    long peakKiB = 0;
    auto full = [&launcher, &dir, &peakKiB] {
        Launcher::Run run = launcher.run(dir.path().string());
        peakKiB = std::max(peakKiB, run.peakKiB);
        return run.seconds;
    };
    alternate(state, full, [&launcher, &empty] { return launcher.run(empty.string()).seconds; });
    BenchTiming::reportPeak(state, peakKiB, static_cast<double>(count) * TodoRecord::kFileSize,
                            "peak_ratio");
}

void registerAll() {
    for (int count : {100, 1000, 10000}) {
        for (int shown : {1, 0}) {
            benchmark::RegisterBenchmark(shown ? "rebuild_all" : "rebuild_default", measureRebuild)
                ->Args({count, shown})
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (int count : {100, 1000, 10000}) {
        benchmark::RegisterBenchmark("tab_switch", measureTabSwitch)
            ->Arg(count)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    for (int count : {1000, 10000}) {
        benchmark::RegisterBenchmark("follow", measureFollow)
            ->Arg(count)
            ->Iterations(20)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    for (int count : {100, 1000, 10000}) {
        benchmark::RegisterBenchmark("startup", measureStartup)
            ->Arg(count)
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

// Benchmarks of the to-do store at 1000, 10000 and 50000 to-dos, loaded from a file as the
// program loads them. Each measure is timed beside its floor, the least the machine must do for
// the same work, and interleaved with it so that load from other programs on the machine hits
// both alike; the "ratio" counter is measure / floor. They use only what every version of the
// store offers, so that scripts/bench-compare.sh builds them against an older one too.
#include "bench_dir.h"
#include "bench_timing.h"
#include "category_store.h"
#include "data_folder.h"
#include "todo_generator.h"
#include "todo_store.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using BenchTiming::alternate;
using BenchTiming::Clock;
using BenchTiming::secondsSince;
constexpr const char* kLoadOnly = "--load-only";
constexpr double kMega = 1e6;

// Stores never free their records, so the benchmarks do it.
void discard(TodoStore* store) {
    store->clear();
    delete store;
}

// See TodoGenerator::writeTodoFile for `holes`.
void writeTodoFile(int count, bool holes = true) {
    if (!TodoGenerator().writeTodoFile("pindle_todo.db", count, holes))
        throw std::runtime_error("cannot write pindle_todo.db");
}

// A store loaded from a file of `count` generated to-dos. The saves into it are timed on a file
// written whole, as the program's own are.
TodoStore* generatedStore(int count, bool holes = true) {
    writeTodoFile(count, holes);
    return new TodoStore;
}

// The load floor: every byte of the file through read(), a megabyte at a time.
double readFloor(const char* name) {
    auto start = Clock::now();
    int fd = open(name, O_RDONLY);
    constexpr std::size_t kChunk = 1 << 20;
    std::unique_ptr<char[]> buffer(new char[kChunk]);
    while (read(fd, buffer.get(), kChunk) > 0)
        benchmark::DoNotOptimize(buffer.get());
    close(fd);
    return secondsSince(start);
}

// The save floor: one write() of the same bytes to a file of its own in the same folder.
double writeFloor(const char* name, const std::string& bytes) {
    auto start = Clock::now();
    int fd = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
        if (n <= 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    close(fd);
    return secondsSince(start);
}

std::string readWhole(const char* name) {
    std::string bytes;
    if (std::FILE* in = std::fopen(name, "rb")) {
        char chunk[1 << 16];
        for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, in)) > 0;)
            bytes.append(chunk, n);
        std::fclose(in);
    }
    return bytes;
}

double diskMegabytes(const char* name) {
    struct stat info {};
    stat(name, &info);
    return static_cast<double>(info.st_blocks) * 512 / kMega;
}

void measureLoad(benchmark::State& state) {
    BenchDir dir;
    int count = static_cast<int>(state.range(0));
    writeTodoFile(count);
    auto load = [&state, count] {
        auto start = Clock::now();
        auto* store = new TodoStore;
        double seconds = secondsSince(start);
        if (store->count() != count)
            state.SkipWithError("the load lost records");
        discard(store);
        return seconds;
    };
    alternate(state, load, [] { return readFloor("pindle_todo.db"); });
}

// A save that writes every record: the file is removed first, so the store cannot build on what
// it last wrote (a file another program changed would also be copied aside first).
void measureSave(benchmark::State& state) {
    BenchDir dir;
    TodoStore* store = generatedStore(static_cast<int>(state.range(0)));
    store->save();
    const std::string bytes = readWhole("pindle_todo.db");
    auto save = [store] {
        unlink("pindle_todo.db");
        auto start = Clock::now();
        store->save();
        return secondsSince(start);
    };
    alternate(state, save, [&bytes] { return writeFloor("floor.db", bytes); });
    state.counters["disk_mb"] = diskMegabytes("pindle_todo.db");
    state.counters["floor_disk_mb"] = diskMegabytes("floor.db");
    discard(store);
}

// The saves that follow each kind of change, timed alone. The change before it and the restoring
// after it (saved too, untimed) keep the store at N to-dos, so every iteration is alike.
struct SaveKind {
    const char* name;
    void (*change)(TodoStore&, TodoGenerator&);
    void (*restore)(TodoStore&, TodoGenerator&, int count);
};

void topUp(TodoStore& store, TodoGenerator& generator, int count) {
    while (store.count() < count)
        store.append(generator.makeTodo());
}

const SaveKind kSaveKinds[] = {
    {"save_unchanged", [](TodoStore&, TodoGenerator&) {}, nullptr},
    {"save_edit",
     [](TodoStore& s, TodoGenerator&) {
         TodoRecord* r = s.at(s.count() / 2);
         r->priority = (r->priority + 1) % 9;
     },
     nullptr},
    {"save_append", [](TodoStore& s, TodoGenerator& g) { s.append(g.makeTodo()); },
     [](TodoStore& s, TodoGenerator&, int) { s.remove(s.at(s.count() - 1)); }},
    {"save_delete_first", [](TodoStore& s, TodoGenerator&) { s.remove(s.head); }, topUp},
    {"save_delete_last", [](TodoStore& s, TodoGenerator&) { s.remove(s.at(s.count() - 1)); },
     topUp},
    // A fifth completed, the first of them at the top: every record after it moves.
    {"save_purge", [](TodoStore& s, TodoGenerator&) { s.purgeCompleted(); },
     [](TodoStore& s, TodoGenerator& g, int count) {
         topUp(s, g, count);
         for (int i = 0; i < count; i++)
             s.at(i)->completed = i % 5 == 0 ? 1 : 0;
     }},
};

void measureSaveKind(benchmark::State& state, const SaveKind& kind) {
    BenchDir dir;
    const int count = static_cast<int>(state.range(0));
    TodoGenerator generator(7);
    TodoStore* store = generatedStore(count, false);
    if (kind.restore != nullptr)
        kind.restore(*store, generator, count);
    store->save();
    double written = 0;
    for (auto _ : state) {
        kind.change(*store, generator);
        double before = BenchTiming::writtenBytes();
        auto start = Clock::now();
        store->save();
        state.SetIterationTime(secondsSince(start));
        written += BenchTiming::writtenBytes() - before;
        if (kind.restore != nullptr) {
            kind.restore(*store, generator, count);
            store->save();
        }
    }
    state.counters["written_kb"] =
        benchmark::Counter(written / 1e3, benchmark::Counter::kAvgIterations);
    discard(store);
}

// An edit as the window makes it beside another program: the folder locked, both files checked
// for changes made elsewhere, the to-do changed and saved. The floor is the save alone.
void measureChangeEdit(benchmark::State& state) {
    BenchDir dir;
    TodoStore* todos = generatedStore(static_cast<int>(state.range(0)), false);
    todos->save();
    std::fclose(std::fopen("cat.db", "wb"));
    auto* categories = new CategoryStore;
    DataFolder folder(*todos, *categories);
    double written = 0;
    auto edit = [&] {
        TodoRecord* r = todos->at(todos->count() / 2);
        double before = BenchTiming::writtenBytes();
        auto start = Clock::now();
        {
            DataFolder::Change change(folder);
            r->priority = (r->priority + 1) % 9;
            todos->save();
        }
        double seconds = secondsSince(start);
        written += BenchTiming::writtenBytes() - before;
        return seconds;
    };
    auto floor = [todos] {
        TodoRecord* r = todos->at(todos->count() / 2);
        r->priority = (r->priority + 1) % 9;
        auto start = Clock::now();
        todos->save();
        return secondsSince(start);
    };
    alternate(state, edit, floor);
    state.counters["written_kb"] =
        benchmark::Counter(written / 1e3, benchmark::Counter::kAvgIterations);
    categories->clear();
    delete categories;
    discard(todos);
}

// The list rebuild asks count() before every row and fetches each row by position. The floor is
// the same loop over a plain array of the record pointers. Small lists repeat the loop so that
// every timing covers at least 10000 rows.
void measureRebuildAccess(benchmark::State& state) {
    BenchDir dir;
    int count = static_cast<int>(state.range(0));
    TodoStore* store = generatedStore(count);
    std::vector<TodoRecord*> plain;
    for (int i = 0; i < store->count(); i++)
        plain.push_back(store->at(i));
    int rounds = std::max(1, 10000 / count);
    auto rebuild = [store, rounds] {
        auto start = Clock::now();
        for (int round = 0; round < rounds; round++) {
            for (int i = 0; i < store->count(); i++)
                benchmark::DoNotOptimize(store->at(i));
        }
        return secondsSince(start) / rounds;
    };
    auto floor = [&plain, rounds] {
        auto start = Clock::now();
        for (int round = 0; round < rounds; round++) {
            for (std::size_t i = 0; i < plain.size(); i++)
                benchmark::DoNotOptimize(plain[i]);
        }
        return secondsSince(start) / rounds;
    };
    alternate(state, rebuild, floor);
    discard(store);
}

// Peak memory of a load, taken from a fresh process that does nothing else: this program
// started again with kLoadOnly in the directory holding the file.
void measureLoadPeakRss(benchmark::State& state) {
    BenchDir dir;
    int count = static_cast<int>(state.range(0));
    writeTodoFile(count);
    std::string expected = std::to_string(count);
    long peakKiB = 0;
    for (auto _ : state) {
        pid_t child = fork();
        if (child == 0) {
            execl("/proc/self/exe", "store_bench", kLoadOnly, expected.c_str(), nullptr);
            _exit(127);
        }
        int status = 0;
        rusage usage{};
        wait4(child, &status, 0, &usage);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            state.SkipWithError("the loading process failed");
        peakKiB = usage.ru_maxrss;
    }
    BenchTiming::reportPeak(state, peakKiB, static_cast<double>(count) * TodoRecord::kFileSize,
                            "ratio");
}

void registerAll() {
    const struct {
        const char* name;
        void (*function)(benchmark::State&);
    } measures[] = {{"load", measureLoad},
                    {"save", measureSave},
                    {"change_edit", measureChangeEdit},
                    {"rebuild_access", measureRebuildAccess}};
    for (const auto& m : measures) {
        for (int count : {1000, 10000, 50000}) {
            // Saving every record of 1.6 GB a few times over says nothing the 10000 do not.
            if (m.function == measureSave && count > 10000)
                continue;
            auto* b = benchmark::RegisterBenchmark(m.name, m.function)
                          ->Arg(count)
                          ->UseManualTime()
                          ->Unit(benchmark::kMillisecond);
            // A rebuild timing runs 10000 / count rebuilds but reports one; the usual half
            // second of reported time would take that many times longer.
            if (m.function == measureRebuildAccess)
                b->MinTime(0.5 * std::min(count, 10000) / 10000);
        }
    }
    for (const SaveKind& kind : kSaveKinds) {
        for (int count : {1000, 10000, 50000}) {
            benchmark::RegisterBenchmark(kind.name, measureSaveKind, kind)
                ->Arg(count)
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RegisterBenchmark("load_peak_rss", measureLoadPeakRss)
        ->Arg(1000)
        ->Arg(10000)
        ->Arg(50000)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

// The child side of measureLoadPeakRss: load, check, exit without freeing.
int loadOnly(const char* expected) {
    auto* store = new TodoStore;
    return store->count() == std::stoi(expected) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], kLoadOnly) == 0)
        return loadOnly(argv[2]);
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

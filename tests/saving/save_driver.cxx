// A to-do store driven from the command line in the current directory, for the tests that kill
// a save or make it fail. "fill N" writes a file of N numbered to-dos. "CHANGE N" makes one
// change (edit, append, delete-first, delete-last or purge) to them and saves it; with a third
// argument it also kills itself with SIGKILL that many microseconds into the save, and says
// "finished" and the save's length if the save ends first. "check CHANGE N" fails, saying how
// many were lost, unless the file holds every to-do that CHANGE is not about, once a save that
// was cut short is finished or thrown away as the program would at start-up.
#include "category_store.h"
#include "data_folder.h"
#include "support/store_helpers.h"
#include "todo_store.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// To-do i: its number in the description, every fifth completed, notes of up to 2000 bytes.
TodoRecord* numbered(int i) {
    auto* r = new TodoRecord;
    r->month = i % 12 + 1;
    r->completed = i % 5 == 0;
    r->setCategory(("category " + std::to_string(i % 7)).c_str());
    r->setDescription(("to-do " + std::to_string(i)).c_str());
    r->setNotes(std::string(i * 7919u % 2000, static_cast<char>('a' + i % 26)).c_str());
    return r;
}

bool changes(const std::string& change, int i, int n) {
    return (change == "edit" && i == n / 2) || (change == "delete-first" && i == 0) ||
           (change == "delete-last" && i == n - 1) || (change == "purge" && i % 5 == 0);
}

int check(const TodoStore& store, const std::string& change, int n) {
    std::set<int> found;
    for (const TodoRecord* r = store.head; r != nullptr; r = r->next) {
        int i = -1;
        std::unique_ptr<TodoRecord> expected;
        if (std::sscanf(r->description, "to-do %d", &i) == 1 && i >= 0 && i < n)
            expected.reset(numbered(i));
        if (expected && expected->digest() == r->digest())
            found.insert(i);
    }
    int lost = 0;
    for (int i = 0; i < n; i++)
        lost += !changes(change, i, n) && found.count(i) == 0;
    std::printf("%d lost\n", lost);
    return lost == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    const std::string command = argv[1];
    const int n = std::stoi(argv[command == "check" ? 3 : 2]);
    ScopedStore<TodoStore> store;
    if (command == "check") {
        ScopedStore<CategoryStore> categories;
        DataFolder(store, categories).refresh();
        return check(store, argv[2], n);
    }
    if (command == "fill") {
        for (int i = 0; i < n; i++)
            store.append(numbered(i));
    } else if (command == "edit") {
        store.at(n / 2)->setNotes("edited");
    } else if (command == "append") {
        store.append(numbered(n));
    } else if (command == "delete-first" || command == "delete-last") {
        store.remove(store.at(command == "delete-first" ? 0 : n - 1));
    } else if (command == "purge") {
        store.purgeCompleted();
    } else {
        return 2;
    }
    auto start = Clock::now();
    if (argc > 3) { // a thread of its own sends the SIGKILL, timed from the start of the save
        std::thread([deadline = start + std::chrono::microseconds(std::stol(argv[3]))] {
            std::this_thread::sleep_until(deadline);
            kill(getpid(), SIGKILL);
        }).detach();
    }
    store.save();
    auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    std::printf("finished %lld\n", static_cast<long long>(took.count()));
    std::fflush(stdout);
    _exit(0);
}

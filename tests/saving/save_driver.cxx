// A to-do store driven from the command line in the current directory, for the tests that kill
// a save or make it fail: it writes a file of numbered to-dos; makes one change and saves it;
// saves a change and kills itself with SIGKILL that many microseconds into the save (saying
// "finished" and the save's length if the save ends first); or checks that the file still holds
// every to-do the change was not about.
//   save_driver fill N
//   save_driver CHANGE N            CHANGE: edit, append, delete-first, delete-last or purge
//   save_driver kill CHANGE N MICROSECONDS
//   save_driver check CHANGE N
#include "support/store_helpers.h"
#include "todo_store.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// To-do i: its number in the description, every fifth completed, notes of up to 2000 bytes.
TodoRecord* numbered(int i) {
    auto* r = new TodoRecord;
    r->month = i % 12 + 1;
    r->day = i % 28 + 1;
    r->year = 2000 + i % 30;
    r->priority = i % 9;
    r->completed = i % 5 == 0;
    r->setCategory(("category " + std::to_string(i % 7)).c_str());
    r->setDescription(("to-do " + std::to_string(i)).c_str());
    auto letter = static_cast<char>('a' + i % 26);
    r->setNotes(std::string(static_cast<std::size_t>(i * 7919 % 2000), letter).c_str());
    return r;
}

// Whether to-do i of n is the one, or one of those, that `change` is about.
bool changes(const std::string& change, int i, int n) {
    return (change == "edit" && i == n / 2) || (change == "delete-first" && i == 0) ||
           (change == "delete-last" && i == n - 1) || (change == "purge" && i % 5 == 0);
}

void apply(TodoStore& store, const std::string& change, int n) {
    if (change == "edit")
        store.at(n / 2)->setNotes("edited");
    else if (change == "append")
        store.append(numbered(n));
    else if (change == "delete-first")
        store.remove(store.head);
    else if (change == "delete-last")
        store.remove(store.at(n - 1));
    else if (change == "purge")
        store.purgeCompleted();
    else
        std::exit(2);
}

// Every to-do the change was not about must be in the file, byte for byte.
int check(const TodoStore& store, const std::string& change, int n) {
    std::set<int> found;
    std::vector<unsigned char> have(TodoRecord::kFileSize), want(TodoRecord::kFileSize);
    for (const TodoRecord* r = store.head; r != nullptr; r = r->next) {
        int i = -1;
        if (std::sscanf(r->description, "to-do %d", &i) != 1 || i < 0 || i >= n)
            continue;
        TodoRecord* expected = numbered(i);
        r->encode(have.data(), true);
        expected->encode(want.data(), true);
        if (have == want)
            found.insert(i);
        delete expected;
    }
    int kept = 0, lost = 0;
    for (int i = 0; i < n; i++) {
        if (changes(change, i, n))
            continue;
        if (found.count(i) != 0)
            kept++;
        else
            lost++;
    }
    std::printf("%d kept, %d lost\n", kept, lost);
    return lost == 0 ? 0 : 1;
}

// A thread of its own sends the SIGKILL, timed from the start of the save; a save that ends
// first says so and how long it took.
int killDuringSave(TodoStore& store, long microseconds) {
    auto start = std::chrono::steady_clock::now();
    std::thread([deadline = start + std::chrono::microseconds(microseconds)] {
        std::this_thread::sleep_until(deadline);
        kill(getpid(), SIGKILL);
    }).detach();
    store.save();
    auto took = std::chrono::steady_clock::now() - start;
    std::printf("finished %lld\n",
                static_cast<long long>(
                    std::chrono::duration_cast<std::chrono::microseconds>(took).count()));
    std::fflush(stdout);
    _exit(0);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() < 2)
        return 2;
    ScopedStore<TodoStore> store;
    const bool killing = args[0] == "kill" && args.size() == 4;
    const std::string& change = killing || args[0] == "check" ? args[1] : args[0];
    const int n = std::atoi(args[killing || args[0] == "check" ? 2 : 1].c_str());
    if (args[0] == "check")
        return check(store, change, n);
    if (change == "fill") {
        for (int i = 0; i < n; i++)
            store.append(numbered(i));
    } else {
        apply(store, change, n);
    }
    if (killing)
        return killDuringSave(store, std::atol(args[3].c_str()));
    store.save();
    return 0;
}

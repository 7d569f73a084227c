// pindle_remind's entry: checks the command line and the folder, reads the to-dos under the
// folder's lock (as one consistent state, a save a crash cut short finished first), and
// announces on the desktop what is due today or overdue and was not announced yet today. Then,
// for a while, it waits for the person to answer "Open".
#include "announced_today.h"
#include "cal_date.h"
#include "data_folder.h"
#include "desktop_notifier.h"
#include "due_list.h"
#include "folder_check.h"
#include "notification_text.h"
#include "remind_options.h"
#include "window_start.h"

#include <iostream>

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kNoService = 3;

int fail(int status, const std::string& message) {
    std::cerr << "pindle_remind: " << message << '\n';
    return status;
}

std::vector<DueTodo> dueOn(int todayNumber) {
    TodoStore todos;
    CategoryStore categories;
    DataFolder(todos, categories).refresh();
    std::vector<DueTodo> due = DueList::collect(todos, todayNumber);
    // The stores never free their records; this run goes on without them.
    todos.clear();
    categories.clear();
    return due;
}

// Sends the news; what was announced is kept only once the service has taken it.
int announce(const std::vector<DueTodo>& news, AnnouncedToday& announced, int waitSeconds) {
    DesktopNotifier notifier;
    std::string error;
    if (!notifier.connect(error))
        return fail(kNoService, error);
    if (!notifier.send(NotificationText::compose(news, notifier.readsMarkup()), error))
        return fail(kNoService, error);
    if (!announced.save(error))
        return fail(kFailed, error);
    if (notifier.await(waitSeconds) != DesktopNotifier::Answer::Open)
        return 0;
    notifier.withdraw();
    if (!WindowStart::inCurrentFolder(error))
        return fail(kFailed, error);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    RemindOptions options;
    std::string error;
    if (!RemindOptions::parse(argc, argv, options, error))
        return fail(kUsage, error + "\nTry 'pindle_remind --help'.");
    if (options.help) {
        std::cout << RemindOptions::helpText();
        return 0;
    }
    if (!FolderCheck::enter(options.dir, error))
        return fail(kFailed, error);
    int month = 0, day = 0, year = 0;
    CalDate::today(month, day, year);
    char today[256];
    CalDate::format(month, day, year, today);
    std::vector<DueTodo> due = dueOn(CalDate::dayNumber(month, day, year));
    AnnouncedToday announced;
    if (!announced.load(error))
        std::cerr << "pindle_remind: " << error << "; all that is due is announced again\n";
    std::vector<DueTodo> news = announced.announce(due, today);
    if (news.empty())
        return 0;
    return announce(news, announced, options.waitSeconds);
}

// Parsing pindle_sync's options and its help text.
#include "sync_options.h"

#include "command_line.h"

bool SyncOptions::parse(int argc, const char* const* argv, SyncOptions& options,
                        std::string& error) {
    CommandLine line;
    line.option("--dir", &options.dir, &options.dirGiven);
    line.option("--url", &options.url);
    line.option("--user", &options.user);
    line.option("--password-file", &options.passwordFile);
    line.option("--ca-file", &options.caFile);
    line.option("--task-list", &options.taskList);
    line.flag("--setup", &options.setup);
    line.flag("--start-over", &options.startOver);
    line.flag("--dry-run", &options.dryRun);
    line.flag("--allow-http", &options.allowHttp);
    return line.parse(argc, argv, options.help, error);
}

const char* SyncOptions::helpText() {
    return R"(Usage: pindle_sync [--dry-run] [--start-over]
       pindle_sync --setup --url SERVER-URL --user NAME [--task-list LIST]
                   [--password-file FILE] [--dir FOLDER] [--ca-file FILE] [--allow-http]
       pindle_sync --url LIST-URL --user NAME [--password-file FILE] [--dir FOLDER]
                   [--ca-file FILE] [--dry-run] [--start-over] [--allow-http]

Syncs the to-dos of Pindle ToDo (pindle_todo.db and cat.db in FOLDER) both ways with one
CalDAV task list: what was added, changed, completed or deleted on either side since the
last sync reaches the other.

Set up once with --setup and the address of your server (or any URL on it): it finds your
task lists there as phones do (one is taken; of several, the one --task-list names or the
one you choose on the terminal; with none, it makes "Pindle ToDo"), asks for the password
(unless PINDLE_SYNC_PASSWORD or --password-file gives it), checks it with the server, keeps
it in the desktop's keyring (or, with --password-file, reads it from that file each time)
and writes the settings to ~/.config/pindle_sync/config (or
$XDG_CONFIG_HOME/pindle_sync/config). From then on pindle_sync alone syncs as set up, and
options given override the settings.

Options:
  --url URL             with --setup, the server's address or any URL on it; else the task
                        list, e.g. https://dav.example.com/calendars/alice/tasks/
  --user NAME           the user name to sign in with
  --task-list LIST      with --setup, the task list to take where the server has several:
                        its name or its URL
  --password-file FILE  read the password from the first line of FILE, which nobody but
                        its owner may read or write (chmod 600). Without it the password
                        comes from where the settings say (the keyring after --setup),
                        else from PINDLE_SYNC_PASSWORD, else from ~/.netrc.
  --dir FOLDER          sync the files in FOLDER; by default the folder of the settings,
                        else ~/.local/share/pindle_todo after --setup, else the current one.
  --ca-file FILE        trust the certificates in FILE (PEM) besides the system's: a
                        server of your own with a self-signed certificate, or your own
                        certificate authority.
  --setup               find the task list, check the password, keep it and write the
                        settings; sync nothing.
  --start-over          sync the folder with the task list now set up although it was
                        synced with another: its to-dos and the list's tasks are paired
                        by their fields, and nothing is deleted on either side.
  --dry-run             say what would change on each side, change nothing.
  --allow-http          allow plain http to a server that is not on this machine (the
                        password then crosses the network unencrypted).
  -h, --help            show this text.

Settings file: TOML, one key a line: url = "...", user = "...", password = "keyring" (or
"environment", "netrc", "file:PATH"), folder = "...", ca_file = "...", allow_http = true.

How a to-do maps onto a task (VTODO):
  description   SUMMARY, cut to 50 bytes
  notes         DESCRIPTION, cut to 31999 bytes
  due date      DUE as a date; a task without DUE gets today's date, as New does
  priority      PRIORITY 1 (highest) to 9; a task with none, 0 or anything else gets 5
  completed     STATUS:COMPLETED (open is NEEDS-ACTION)
  category      the first of CATEGORIES; a task without one gets "Unassigned", and a
                category not in cat.db yet is added to it
A date or priority filled in here for a task that has none stays absent on the server
until you change that field here: only the fields changed here go up, put on the server's
own copy of the task, so that its other properties (start date, alarms, further
categories) stay too. Texts from the server are cut at a character boundary, never inside
a UTF-8 sequence; tabs and line breaks in a summary or category become spaces. Local text
that is not UTF-8 goes up read as Latin-1.

A to-do changed on both sides since the last sync is merged field by field: what each side
changed is taken by the other. Only when both changed the same field differently are both
versions kept: the server's comes down as a new local to-do that stays linked to the task,
and the local one goes up as a new task. A to-do deleted on one side and changed on the
other is kept as changed.

Each to-do the server refuses is named on stderr with the server's answer; the others go
through, and the next sync tries the refused ones again. No reply is read past 32 MiB.

The sync runs beside an open Pindle ToDo window: it locks the folder only while it reads
and writes the files, never while it waits for the server, and the window shows what it
wrote. What is typed while a sync sends goes up with the next one. The sync keeps its state
in .pindle_sync.json beside the data files (readable by its owner only; it never holds the
password); it belongs to one task list and user, and another is refused (exit status 2)
until --start-over.

Exit status: 0 on success; 1 when the sync failed or left changes unsent (run it again);
2 for a mistake on the command line or in the settings, or a task list other than the
folder's; 3 when another sync of the folder is running.
)";
}

// What the list shows of a to-do, laid out as the first bytes of its record in the file: the
// numbers and the flag, then the category, the description and the start of the notes back to
// back, so that a full-length category or description, which has no terminator of its own, runs
// on into the next field here just as it does in the file.
#ifndef PINDLE_TODO_HEAD_H
#define PINDLE_TODO_HEAD_H

#include <cstddef>

struct TodoHead {
    // Enough of the notes for the longest run-on a list line shows: a line stops at 255
    // characters, and a full description after the shortest three columns before it ("1", "0/0/0"
    // and an empty category, with their tabs) takes 59 of them, which leaves 196 for the notes.
    static constexpr std::size_t kNotesKept = 200;

    int month;
    int day;
    int year;
    int priority; // 0-based: the list shows priority + 1
    unsigned char completed;
    char category[50];
    char description[50];
    // The first kNotesKept bytes of the notes, always ended inside: the notes whole when they are
    // shorter. Read the notes through TodoRecord::notes().
    char notesStart[kNotesKept + 1];
};

#endif

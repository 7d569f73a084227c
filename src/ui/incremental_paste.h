// Large pastes under X11. A selection bigger than the X server takes in one request comes in
// pieces (an "INCR" transfer); FLTK 1.3 reads those into a buffer sized from a length it never
// received and writes past its end, which ends the program on pastes of a megabyte or more.
// This takes such transfers over, collects the pieces, and hands the toolkit an ordinary,
// complete selection to read in its place.
#ifndef PINDLE_INCREMENTAL_PASTE_H
#define PINDLE_INCREMENTAL_PASTE_H

class IncrementalPaste {
public:
    // Watches the toolkit's X events from now on, when it draws through X; installing twice is
    // harmless. Opens the display.
    static void install();

private:
    static int onEvent(void* event, void* data);
};

#endif

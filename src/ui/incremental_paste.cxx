// The INCR protocol of the X11 selections (ICCCM 2.7.2), from the side that asks: the owner
// announces a transfer with a property of type INCR, waits for it to be deleted, then writes
// one piece after another into it, each read and deleted in turn, and ends with an empty one.
#include "incremental_paste.h"

#include <FL/Fl.H>
#include <FL/platform.H>

#include <algorithm>
#include <string>

namespace {

struct Transfer {
    bool active = false;
    XEvent announcement{};
    Atom type = None;
    std::string bytes;
};

// The toolkit asks for one selection at a time, so one transfer is enough.
Transfer transfer;

// A property as one piece: at most this many 32-bit units, far more than any owner sends.
constexpr long kPropertyUnits = 1L << 28;

bool isIncremental(const XSelectionEvent& e) {
    if (e.property == None)
        return false;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(fl_display, e.requestor, e.property, 0, 0, False, AnyPropertyType, &type,
                           &format, &count, &after, &data) != Success)
        return false;
    if (data != nullptr)
        XFree(data);
    return type == XInternAtom(fl_display, "INCR", False);
}

void begin(const XEvent& announcement) {
    transfer.active = true;
    transfer.announcement = announcement;
    transfer.type = XInternAtom(fl_display, "UTF8_STRING", False);
    transfer.bytes.clear();
    XDeleteProperty(fl_display, announcement.xselection.requestor,
                    announcement.xselection.property);
}

// Writes the whole selection where the announcement points, in pieces any server accepts,
// and queues the announcement again: the toolkit then reads a plain property of that size.
void complete() {
    const XSelectionEvent& e = transfer.announcement.xselection;
    const std::size_t piece = 64 * 1024;
    int mode = PropModeReplace;
    std::size_t at = 0;
    do {
        std::size_t length = std::min(piece, transfer.bytes.size() - at);
        const auto* bytes = reinterpret_cast<const unsigned char*>(transfer.bytes.data() + at);
        XChangeProperty(fl_display, e.requestor, e.property, transfer.type, 8, mode, bytes,
                        static_cast<int>(length));
        mode = PropModeAppend;
        at += length;
    } while (at < transfer.bytes.size());
    transfer.active = false;
    std::string().swap(transfer.bytes);
    XPutBackEvent(fl_display, &transfer.announcement);
}

// Reading a piece with deletion asks the owner for the next one.
void takePiece() {
    const XSelectionEvent& e = transfer.announcement.xselection;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(fl_display, e.requestor, e.property, 0, kPropertyUnits, True,
                           AnyPropertyType, &type, &format, &count, &after, &data) != Success) {
        transfer.active = false;
        return;
    }
    if (format == 8 && count > 0) {
        transfer.type = type;
        transfer.bytes.append(reinterpret_cast<const char*>(data), count);
    }
    if (data != nullptr)
        XFree(data);
    if (count == 0)
        complete();
}

bool isNextPiece(const XPropertyEvent& p) {
    const XSelectionEvent& e = transfer.announcement.xselection;
    return p.window == e.requestor && p.atom == e.property && p.state == PropertyNewValue;
}

} // namespace

void IncrementalPaste::install() {
    // FLTK 1.4 chooses between Wayland and X11 as the display opens. On Wayland it has no X
    // connection, and a paste comes whole through a pipe.
    fl_open_display();
    if (fl_display == nullptr)
        return;
    Fl::remove_system_handler(onEvent);
    Fl::add_system_handler(onEvent, nullptr);
}

int IncrementalPaste::onEvent(void* event, void*) {
    const XEvent& e = *static_cast<const XEvent*>(event);
    if (e.type == SelectionNotify && isIncremental(e.xselection)) {
        begin(e);
        return 1;
    }
    if (e.type == PropertyNotify && transfer.active && isNextPiece(e.xproperty)) {
        takePiece();
        return 1;
    }
    return 0;
}

// The desktop's notification service, org.freedesktop.Notifications on the session bus, through
// GDBus: one notification sent, with the action "Open" where the service offers actions, and the
// person's answer awaited for a bounded time, since an answer reaches only a sender that is still
// on the bus. Owns the subscription to the service's signals.
#ifndef PINDLE_DESKTOP_NOTIFIER_H
#define PINDLE_DESKTOP_NOTIFIER_H

#include "notification_text.h"

#include <cstdint>
#include <gio/gio.h>
#include <string>

class DesktopNotifier {
public:
    enum class Answer { Open, Closed, None };

    DesktopNotifier() = default;
    ~DesktopNotifier();
    DesktopNotifier(const DesktopNotifier&) = delete;
    DesktopNotifier& operator=(const DesktopNotifier&) = delete;

    // Joins the session bus and asks the service what it can show. False, with a one-line
    // reason, when there is no session bus or no notification service on it.
    bool connect(std::string& error);
    // Whether the service reads a body as markup, which then needs escaping.
    bool readsMarkup() const { return markup_; }

    bool send(const NotificationText& text, std::string& error);

    // Open when the person chose "Open" within `seconds`; Closed when the notification was
    // closed or expired first; None when the time ran out or the service has no actions.
    Answer await(int seconds);

    // Takes the notification away: some services leave it shown after its action.
    void withdraw();

private:
    static void onSignal(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                         const gchar* signal, GVariant* parameters, gpointer self);
    static gboolean onTimeout(gpointer self);
    void answered(const gchar* signal, GVariant* parameters);
    GVariant* call(const char* method, GVariant* parameters, const char* replyType,
                   std::string& error);

    GDBusConnection* bus_ = nullptr;
    guint subscription_ = 0;
    GMainLoop* loop_ = nullptr;
    bool actions_ = false;
    bool markup_ = false;
    std::uint32_t id_ = 0;
    Answer answer_ = Answer::None;
};

#endif

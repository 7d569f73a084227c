// The Desktop Notifications calls (GetCapabilities, Notify, CloseNotification) and signals
// (ActionInvoked, NotificationClosed), made synchronously but for the wait, which runs a GLib
// main loop with a timeout.
#include "desktop_notifier.h"

#include <cstring>

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
// A service started on demand by the bus may take a while to come up.
constexpr int kCallTimeoutMs = 25000;
// The default action, which a click on the notification invokes; services that list actions
// show it as "Open".
constexpr const char* kOpenKey = "default";

std::string reason(GError* error) {
    g_dbus_error_strip_remote_error(error);
    std::string text = error->message;
    g_error_free(error);
    return text;
}

} // namespace

DesktopNotifier::~DesktopNotifier() {
    if (subscription_ != 0)
        g_dbus_connection_signal_unsubscribe(bus_, subscription_);
    if (bus_ != nullptr)
        g_object_unref(bus_);
}

GVariant* DesktopNotifier::call(const char* method, GVariant* parameters, const char* replyType,
                                std::string& error) {
    GError* failure = nullptr;
    GVariant* reply = g_dbus_connection_call_sync(
        bus_, kService, kPath, kService, method, parameters, G_VARIANT_TYPE(replyType),
        G_DBUS_CALL_FLAGS_NONE, kCallTimeoutMs, nullptr, &failure);
    if (reply == nullptr)
        error = reason(failure);
    return reply;
}

bool DesktopNotifier::connect(std::string& error) {
    GError* failure = nullptr;
    bus_ = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &failure);
    if (bus_ == nullptr) {
        error = "no session bus: " + reason(failure);
        return false;
    }
    GVariant* reply = call("GetCapabilities", nullptr, "(as)", error);
    if (reply == nullptr) {
        error =
            std::string("no notification service (") + kService + ") on the session bus: " + error;
        return false;
    }
    GVariantIter* capabilities = nullptr;
    g_variant_get(reply, "(as)", &capabilities);
    for (const gchar* name; g_variant_iter_loop(capabilities, "&s", &name);) {
        actions_ = actions_ || std::strcmp(name, "actions") == 0;
        markup_ = markup_ || std::strcmp(name, "body-markup") == 0;
    }
    g_variant_iter_free(capabilities);
    g_variant_unref(reply);
    return true;
}

bool DesktopNotifier::send(const NotificationText& text, std::string& error) {
    // Subscribed before the call, so that no answer can come before anyone listens.
    subscription_ =
        g_dbus_connection_signal_subscribe(bus_, kService, kService, nullptr, kPath, nullptr,
                                           G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr);
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    if (actions_) {
        g_variant_builder_add(&actions, "s", kOpenKey);
        g_variant_builder_add(&actions, "s", "Open");
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                          g_variant_new_string("org.pindle.PindleToDo"));
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(1));
    GVariant* reply =
        call("Notify",
             g_variant_new("(susssasa{sv}i)", "Pindle ToDo", 0u, "pindle_todo",
                           text.summary.c_str(), text.body.c_str(), &actions, &hints, -1),
             "(u)", error);
    if (reply == nullptr) {
        error = std::string("the notification service refused the notification: ") + error;
        return false;
    }
    g_variant_get(reply, "(u)", &id_);
    g_variant_unref(reply);
    return true;
}

DesktopNotifier::Answer DesktopNotifier::await(int seconds) {
    if (!actions_ || seconds <= 0)
        return Answer::None;
    loop_ = g_main_loop_new(nullptr, FALSE);
    // In milliseconds: a timeout in seconds may fire up to a second early, to be batched with
    // others, and a wait of one second would then be none.
    GSource* timeout = g_timeout_source_new(static_cast<guint>(seconds) * 1000U);
    g_source_set_callback(timeout, onTimeout, this, nullptr);
    g_source_attach(timeout, nullptr);
    g_main_loop_run(loop_);
    g_source_destroy(timeout);
    g_source_unref(timeout);
    g_main_loop_unref(loop_);
    loop_ = nullptr;
    return answer_;
}

void DesktopNotifier::withdraw() {
    std::string ignored;
    if (GVariant* reply = call("CloseNotification", g_variant_new("(u)", id_), "()", ignored))
        g_variant_unref(reply);
}

void DesktopNotifier::onSignal(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                               const gchar* signal, GVariant* parameters, gpointer self) {
    static_cast<DesktopNotifier*>(self)->answered(signal, parameters);
}

gboolean DesktopNotifier::onTimeout(gpointer self) {
    g_main_loop_quit(static_cast<DesktopNotifier*>(self)->loop_);
    return G_SOURCE_REMOVE;
}

// Services that broadcast their signals tell every client about every notification: only this
// one's answer counts.
void DesktopNotifier::answered(const gchar* signal, GVariant* parameters) {
    std::uint32_t id = 0;
    if (std::strcmp(signal, "ActionInvoked") == 0 &&
        g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)"))) {
        const gchar* key = nullptr;
        g_variant_get(parameters, "(u&s)", &id, &key);
        if (id != id_ || std::strcmp(key, kOpenKey) != 0)
            return;
        answer_ = Answer::Open;
    } else if (std::strcmp(signal, "NotificationClosed") == 0 &&
               g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)"))) {
        g_variant_get(parameters, "(uu)", &id, nullptr);
        if (id != id_)
            return;
        answer_ = Answer::Closed;
    } else {
        return;
    }
    if (loop_ != nullptr)
        g_main_loop_quit(loop_);
}

#include "kelvo/platform/Notifier.h"

#include <libnotify/notify.h>

#include "kelvo/platform/SecretService.h"

namespace kelvo::platform {
namespace {

// What the callbacks of one shown notification share with the waiting loop.
struct Waiting {
    GMainLoop* loop = nullptr;
    std::optional<std::string> chosen;
    bool closed = false;
    guint timer = 0;
};

void onAction(NotifyNotification*, char* action, gpointer data) {
    auto* waiting = static_cast<Waiting*>(data);
    waiting->chosen = action;
    g_main_loop_quit(waiting->loop);
}

void onClosed(NotifyNotification*, gpointer data) {
    auto* waiting = static_cast<Waiting*>(data);
    waiting->closed = true;
    g_main_loop_quit(waiting->loop);
}

gboolean onTimeout(gpointer data) {
    auto* waiting = static_cast<Waiting*>(data);
    waiting->timer = 0;
    g_main_loop_quit(waiting->loop);
    return G_SOURCE_REMOVE;
}

// Whether a notification service answers on the bus: asked first, so that a bus without
// one costs one quick error instead of a notification sent into nothing.
bool serverAnswers() {
    char* name = nullptr;
    char* vendor = nullptr;
    char* version = nullptr;
    char* protocol = nullptr;
    const bool answered = notify_get_server_info(&name, &vendor, &version, &protocol);
    g_free(name);
    g_free(vendor);
    g_free(version);
    g_free(protocol);
    return answered;
}

}  // namespace

NotificationOutcome LiveNotifier::show(const Notification& notification) const {
    if (!sessionBusReachable()) return {};
    if (!notify_is_initted() && !notify_init(notification.applicationName.c_str())) return {};
    if (!serverAnswers()) return {};

    NotifyNotification* shown = notify_notification_new(notification.summary.c_str(), notification.body.c_str(),
                                                         notification.icon.empty() ? nullptr : notification.icon.c_str());
    // The loop runs on this thread's default context, where libnotify delivers its signals.
    Waiting waiting;
    waiting.loop = g_main_loop_new(nullptr, FALSE);
    for (const auto& action : notification.actions)
        notify_notification_add_action(shown, action.id.c_str(), action.label.c_str(), &onAction, &waiting, nullptr);
    g_signal_connect(shown, "closed", G_CALLBACK(&onClosed), &waiting);

    NotificationOutcome outcome;
    GError* error = nullptr;
    outcome.shown = notify_notification_show(shown, &error);
    g_clear_error(&error);
    if (outcome.shown && !notification.actions.empty() && notification.wait.count() > 0) {
        waiting.timer = g_timeout_add_seconds(static_cast<guint>(notification.wait.count()), &onTimeout, &waiting);
        g_main_loop_run(waiting.loop);
        if (waiting.timer != 0) g_source_remove(waiting.timer);
        if (!waiting.closed && !waiting.chosen) notify_notification_close(shown, nullptr);
        outcome.chosenAction = waiting.chosen;
    }
    g_signal_handlers_disconnect_by_data(shown, &waiting);
    g_object_unref(shown);
    g_main_loop_unref(waiting.loop);
    return outcome;
}

}  // namespace kelvo::platform

#pragma once
// Desktop notifications: org.freedesktop.Notifications on the session bus, through
// libnotify. Behind an interface so that tests and callers hand in a stub.
//
// Nothing here starts a bus: with no session bus to reach (sessionBusReachable) or no
// notification service on it, nothing is shown and the answer says so at once. A
// notification with actions is answered by this process alone, so show() waits on a GLib
// main loop until an action is picked, the notification is closed or the wait ends; at the
// end of the wait the notification is withdrawn, so that no button outlives the process
// that would answer it. Call from one thread at a time.
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::platform {

struct Notification {
    struct Action {
        std::string id;     // handed back when it is picked
        std::string label;  // the button's text
    };
    std::string applicationName = "Kelvo";
    std::string summary;
    std::string body;
    std::string icon;  // a theme icon name; empty for none
    std::vector<Action> actions;
    // How long to wait for an action; zero returns as soon as the notification is sent.
    std::chrono::seconds wait{0};
};

struct NotificationOutcome {
    bool shown = false;                       // false: no notification service took it
    std::optional<std::string> chosenAction;  // the id of the action picked within the wait
};

class Notifier {
public:
    virtual ~Notifier() = default;
    virtual NotificationOutcome show(const Notification& notification) const = 0;
};

class LiveNotifier final : public Notifier {
public:
    NotificationOutcome show(const Notification& notification) const override;
};

}  // namespace kelvo::platform

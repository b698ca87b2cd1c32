#pragma once
// The user's own systemd instance, as `systemctl --user` reaches it. Behind an interface so
// that tests hand in a stub; the live one runs /usr/bin/systemctl itself, without a shell.
#include <optional>
#include <string>
#include <vector>

namespace kelvo::platform {

class UserServiceManager {
public:
    virtual ~UserServiceManager() = default;
    // Whether a user manager runs for this session: its private socket
    // ($XDG_RUNTIME_DIR/systemd/private) is there. False without $XDG_RUNTIME_DIR.
    virtual bool running() const = 0;
    // Runs `systemctl --user ARGUMENTS` and waits for it: its exit status (0 success);
    // nothing when systemctl cannot be started (it is missing).
    virtual std::optional<int> systemctl(const std::vector<std::string>& arguments) const = 0;
};

class LiveUserServiceManager final : public UserServiceManager {
public:
    bool running() const override;
    std::optional<int> systemctl(const std::vector<std::string>& arguments) const override;
};

}  // namespace kelvo::platform

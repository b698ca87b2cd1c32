#pragma once
// Small text secrets in the desktop's Secret Service (the freedesktop.org interface that
// GNOME Keyring and KWallet serve), through libsecret. An item is found by two attributes,
// "service" and "account"; items live in the user's default collection.
//
// Nothing here starts a bus or waits for a person: with no session bus to reach (neither
// $DBUS_SESSION_BUS_ADDRESS nor a socket at $XDG_RUNTIME_DIR/bus) every call answers at
// once without touching D-Bus, so a headless machine is never made to launch one. Nothing
// prompts either: a locked item reads as absent and is not removed, and a locked or
// missing default collection takes no new item. Every failure reads as "nothing".
// Safe to call from any thread.
#include <optional>
#include <string>

namespace kelvo::platform {

bool sessionBusReachable();
// The secret of one unlocked item with these attributes, when it is valid UTF-8.
std::optional<std::string> findSecret(const std::string& service, const std::string& account);
// Removes every unlocked item with these attributes.
void removeSecrets(const std::string& service, const std::string& account);
// Adds an item to the default collection when that is unlocked; an earlier item with the
// same attributes stays (remove it first for one item per pair).
void addSecret(const std::string& service, const std::string& account, const std::string& label,
               const std::string& secret);

}  // namespace kelvo::platform

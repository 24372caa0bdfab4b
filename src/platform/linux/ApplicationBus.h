// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

struct sd_bus;
struct sd_bus_message;

namespace lexmira {

// Where the running companion answers org.freedesktop.Application (dbus/
// org.freedesktop.Application.xml), and the calls a later launch makes on it. The instance's side
// is the adaptor generated from that file; the later launch builds its call with sd-bus, before
// anything of Qt D-Bus is loaded, from the names and signatures here.
namespace ApplicationBus {

inline constexpr const char* serviceName = "com.lexmira.companion";
inline constexpr const char* objectPath = "/com/lexmira/companion";
inline constexpr const char* interfaceName = "org.freedesktop.Application";

struct Method {
    const char* name;
    const char* signature; // of the arguments, as the call carries them
};

inline constexpr Method activate{"Activate", "a{sv}"};
inline constexpr Method open{"Open", "asa{sv}"};

// The keys of the platform data under which a launch hands over its tokens (strings).
inline constexpr const char* startupIdKey = "desktop-startup-id";
inline constexpr const char* activationTokenKey = "activation-token";

// The tokens a launch carries (see LaunchActivation), in UTF-8; either may be empty.
struct LaunchTokens {
    std::string activationToken;
    std::string startupId;
};

// Builds the call a later launch makes on bus: Open with url (UTF-8), or Activate when url is
// null, carrying launch's tokens, and not starting an instance when none runs. On success *call
// is the new message (the caller unrefs it) and its arguments' signature is the method's;
// otherwise a negative errno and *call is untouched.
int newHandOverCall(sd_bus* bus, const char* url, const LaunchTokens& launch,
                    sd_bus_message** call);

// A later launch's hand-over, on a connection of its own: true when the running instance took
// the request, false when there is an instance and the call failed (said on stderr), nothing when
// no instance runs, there is no session bus or the request cannot be sent (the launch then goes
// on by itself). Links nothing but sd-bus, so that the launcher can make it before it loads the
// application.
std::optional<bool> handOverIfRunning(const char* url, const LaunchTokens& launch);

} // namespace ApplicationBus

} // namespace lexmira

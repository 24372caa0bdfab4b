// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/LaunchActivation.h"

#include <QString>

#include <optional>

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

// Builds the call a later launch makes on bus: Open with url, or Activate without one, carrying
// launch's tokens, and not starting an instance when none runs. On success *call is the new
// message (the caller unrefs it) and its arguments' signature is the method's; otherwise a
// negative errno and *call is untouched.
int newHandOverCall(sd_bus* bus, const std::optional<QString>& url, const LaunchActivation& launch,
                    sd_bus_message** call);

} // namespace ApplicationBus

} // namespace lexmira

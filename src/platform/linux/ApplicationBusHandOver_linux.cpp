// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/ApplicationBus.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

// The hand-over a later launch makes before it loads anything of the application: one call on a
// connection of its own, so that a launch that finds the instance running costs about what any
// process making one bus call costs. The launcher (app/launcher.cpp) makes it before it starts
// the application, and SingleInstance makes its calls through here too; the instance's side and
// its contract are in SingleInstance_linux.cpp and dbus/org.freedesktop.Application.xml. Nothing
// here may need Qt.

namespace lexmira {

namespace {

constexpr const char* serviceUnknown = "org.freedesktop.DBus.Error.ServiceUnknown";
constexpr const char* nameHasNoOwner = "org.freedesktop.DBus.Error.NameHasNoOwner";
constexpr std::uint64_t handOverTimeoutUs = 10'000'000;

struct BusUnref {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct MessageUnref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, BusUnref>;
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

int appendToken(sd_bus_message* message, const char* key, const std::string& token)
{
    if (token.empty())
        return 0;
    int r = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
    if (r >= 0)
        r = sd_bus_message_append(message, "s", key);
    if (r >= 0)
        r = sd_bus_message_append(message, "v", "s", token.c_str());
    if (r >= 0)
        r = sd_bus_message_close_container(message);
    return r;
}

// The launch's tokens as org.freedesktop.Application's platform data, keys as the instance
// reads them.
int appendPlatformData(sd_bus_message* message, const ApplicationBus::LaunchTokens& launch)
{
    int r = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    if (r >= 0)
        r = appendToken(message, ApplicationBus::startupIdKey, launch.startupId);
    if (r >= 0)
        r = appendToken(message, ApplicationBus::activationTokenKey, launch.activationToken);
    if (r >= 0)
        r = sd_bus_message_close_container(message);
    return r;
}

} // namespace

int ApplicationBus::newHandOverCall(sd_bus* bus, const char* url, const LaunchTokens& launch,
                                    sd_bus_message** call)
{
    const Method& method = url ? open : activate;
    sd_bus_message* created = nullptr;
    int r = sd_bus_message_new_method_call(bus, &created, serviceName, objectPath, interfaceName,
                                           method.name);
    if (r < 0)
        return r;
    Message message(created);
    // The bus must not start an instance for this call: a launch that finds none becomes it.
    r = sd_bus_message_set_auto_start(message.get(), 0);
    if (r >= 0 && url)
        r = sd_bus_message_append(message.get(), "as", 1, url);
    if (r >= 0)
        r = appendPlatformData(message.get(), launch);
    if (r < 0)
        return r;
    // A call that does not carry what the method takes is never sent.
    const char* signature = sd_bus_message_get_signature(message.get(), 1);
    if (!signature || std::strcmp(signature, method.signature) != 0)
        return -EINVAL;
    *call = message.release();
    return 0;
}

std::optional<bool> ApplicationBus::handOverIfRunning(const char* url, const LaunchTokens& launch)
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0)
        return std::nullopt; // no session bus: the launch finds that out itself, and says so
    const Bus bus(opened);

    sd_bus_message* created = nullptr;
    if (newHandOverCall(bus.get(), url, launch, &created) < 0)
        return std::nullopt;
    const Message call(created);

    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    int r = sd_bus_call(bus.get(), call.get(), handOverTimeoutUs, &error, &reply);
    sd_bus_message_unref(reply);
    if (r >= 0)
        return true;
    const bool noInstance = sd_bus_error_has_name(&error, serviceUnknown) ||
                            sd_bus_error_has_name(&error, nameHasNoOwner);
    if (!noInstance)
        std::fprintf(stderr, "lexmira-companion: could not reach the running instance: %s\n",
                     error.message ? error.message : std::strerror(-r));
    sd_bus_error_free(&error);
    if (noInstance)
        return std::nullopt;
    return false;
}

} // namespace lexmira

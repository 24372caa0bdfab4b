// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-dbus-call: one process making one D-Bus method call on the session bus and exiting,
// the least a hand-over between two processes can cost. The baseline of a second launch that
// forwards a sign-in URL.
//
//     bench-dbus-call DESTINATION PATH INTERFACE METHOD [STRING...]
//     bench-dbus-call --open-burst COUNT DESTINATION PATH URL_PREFIX
//
// The first form calls METHOD with the given string arguments and waits for its reply. The
// second sends COUNT org.freedesktop.Application.Open calls at once, the i-th with the URL
// URL_PREFIX followed by i, and then waits for all their replies: a burst of sign-in URLs.
// Exit status 0 when every call succeeded.

#include <systemd/sd-bus.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

int replies = 0;
int failures = 0;

int countReply(sd_bus_message* reply, void*, sd_bus_error*)
{
    ++replies;
    if (sd_bus_message_is_method_error(reply, nullptr))
        ++failures;
    return 0;
}

int openBurst(sd_bus* bus, int count, const char* destination, const char* path,
              const std::string& prefix)
{
    for (int i = 0; i < count; ++i) {
        sd_bus_message* call = nullptr;
        const std::string url = prefix + std::to_string(i);
        int result = sd_bus_message_new_method_call(bus, &call, destination, path,
                                                    "org.freedesktop.Application", "Open");
        if (result >= 0)
            result = sd_bus_message_append(call, "as", 1, url.c_str());
        if (result >= 0)
            result = sd_bus_message_append(call, "a{sv}", 0);
        if (result >= 0)
            result = sd_bus_call_async(bus, nullptr, call, countReply, nullptr, 0);
        sd_bus_message_unref(call);
        if (result < 0) {
            std::fprintf(stderr, "bench-dbus-call: could not send call %d\n", i);
            return 1;
        }
    }
    while (replies < count) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0)
            return 1;
        if (processed == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)
            return 1;
    }
    if (failures > 0)
        std::fprintf(stderr, "bench-dbus-call: %d of %d calls failed\n", failures, count);
    return failures > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 6 && std::string(argv[1]) == "--open-burst") {
        sd_bus* bus = nullptr;
        if (sd_bus_open_user(&bus) < 0)
            return 1;
        const int result = openBurst(bus, std::atoi(argv[2]), argv[3], argv[4], argv[5]);
        sd_bus_flush_close_unref(bus);
        return result;
    }
    if (argc < 5) {
        std::fprintf(stderr, "usage: bench-dbus-call DESTINATION PATH INTERFACE METHOD [STRING...]\n");
        return 2;
    }
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) {
        std::fprintf(stderr, "bench-dbus-call: no session bus\n");
        return 1;
    }
    sd_bus_message* call = nullptr;
    int result = sd_bus_message_new_method_call(bus, &call, argv[1], argv[2], argv[3], argv[4]);
    for (int i = 5; result >= 0 && i < argc; ++i)
        result = sd_bus_message_append_basic(call, 's', argv[i]);
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    if (result >= 0)
        result = sd_bus_call(bus, call, 0, &error, &reply);
    if (result < 0)
        std::fprintf(stderr, "bench-dbus-call: %s\n", error.message ? error.message : "call failed");
    sd_bus_error_free(&error);
    sd_bus_message_unref(reply);
    sd_bus_message_unref(call);
    sd_bus_flush_close_unref(bus);
    return result < 0 ? 1 : 0;
}

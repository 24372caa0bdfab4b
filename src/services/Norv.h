// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/AppInfo.h"
#include "services/NorvClient.h"
#include "services/NorvListener.h"
#include "util/MulticastDelegate.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lexmira {

// The usage-event vocabulary: builds each event's props, names the event after them, hands it to
// the analytics client and tells the listeners. Main thread only.
class Norv {
public:
    // The names of the standard property keys.
    struct Props {
        std::string component = "component";
        std::string pageId = "pageId";
        std::string objectId = "objectId";
        std::string object = "object";
        std::string action = "action";
    };

    struct MyActions {
        static constexpr std::string_view start = "start";
    };

    struct MyObjects {
        static constexpr std::string_view app = "app";
    };

    Norv(std::unique_ptr<NorvClient> client, Props props, AppInfo::Component component);

    // Records one event: extraProps first, then the standard props that are given, which win
    // over same-named extra ones.
    void record(const std::optional<std::string>& pageId = {},
                const std::optional<std::string>& objectId = {},
                const std::optional<std::string>& object = {},
                const std::optional<std::string>& action = {},
                const std::optional<nlohmann::ordered_json>& extraProps = {});
    // companion/app-start.
    void recordAppStart();

    // The props of an event, as record() builds them.
    nlohmann::ordered_json makeProps(const std::optional<std::string>& pageId,
                                     const std::optional<std::string>& objectId,
                                     const std::optional<std::string>& object,
                                     const std::optional<std::string>& action,
                                     const std::optional<nlohmann::ordered_json>& extraProps) const;
    // "<component>/<objectId>-<object>-<action>", leaving out whatever props lack (or hold as
    // something other than a string).
    std::string eventName(const nlohmann::ordered_json& props) const;

    NorvClient& client() const { return *client_; }
    MulticastDelegate<NorvListener>& listeners() { return listeners_; }
    const Props& props() const { return props_; }
    AppInfo::Component component() const { return component_; }

private:
    std::unique_ptr<NorvClient> client_;
    MulticastDelegate<NorvListener> listeners_;
    Props props_;
    AppInfo::Component component_;
};

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/Norv.h"

namespace lexmira {

Norv::Norv(std::unique_ptr<NorvClient> client, Props props, AppInfo::Component component)
    : client_(std::move(client))
    , props_(std::move(props))
    , component_(component)
{
}

void Norv::record(const std::optional<std::string>& pageId,
                  const std::optional<std::string>& objectId,
                  const std::optional<std::string>& object,
                  const std::optional<std::string>& action,
                  const std::optional<nlohmann::ordered_json>& extraProps)
{
    const auto props = makeProps(pageId, objectId, object, action, extraProps);
    const auto name = eventName(props);
    client_->track(name, props);
    listeners_.invoke([&](NorvListener& listener) { listener.norvDidRecordEvent(name, props); });
}

void Norv::recordAppStart()
{
    record(std::nullopt, std::nullopt, std::string(MyObjects::app), std::string(MyActions::start));
}

nlohmann::ordered_json
Norv::makeProps(const std::optional<std::string>& pageId,
                const std::optional<std::string>& objectId,
                const std::optional<std::string>& object, const std::optional<std::string>& action,
                const std::optional<nlohmann::ordered_json>& extraProps) const
{
    auto props = nlohmann::ordered_json::object();
    if (extraProps && extraProps->is_object())
        for (const auto& [key, value] : extraProps->items())
            props[key] = value;
    const std::pair<const std::string&, std::optional<std::string>> pairs[] = {
        {props_.component, std::string(rawValue(component_))},
        {props_.pageId, pageId},
        {props_.objectId, objectId},
        {props_.object, object},
        {props_.action, action},
    };
    for (const auto& [key, value] : pairs)
        if (value)
            props[key] = *value;
    return props;
}

std::string Norv::eventName(const nlohmann::ordered_json& props) const
{
    std::string joined;
    bool first = true;
    for (const auto* key : {&props_.objectId, &props_.object, &props_.action}) {
        const auto found = props.find(*key);
        if (found == props.end() || !found->is_string())
            continue;
        if (!first)
            joined += '-';
        joined += found->get<std::string>();
        first = false;
    }
    return std::string(rawValue(component_)) + "/" + joined;
}

} // namespace lexmira

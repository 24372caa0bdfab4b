// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/DataContainer.h"
#include "util/Json.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace lexmira {

// One shared value of type V under one key, stored as the JSON text of a one-element array:
// "abc" as ["abc"], true as [true], none as [null]. Nothing is cached: every read goes to the
// container and decodes again.
template <class V>
class ContainerValue {
public:
    using Value = std::optional<V>;

    ContainerValue(std::shared_ptr<DataContainer> container, QString key, Value defaultValue = {})
        : container_(std::move(container))
        , key_(std::move(key))
        , defaultValue_(std::move(defaultValue))
    {
    }

    const QString& key() const { return key_; }
    const Value& defaultValue() const { return defaultValue_; }

    // The stored value; the default when nothing is stored or the bytes are not JSON, not an
    // array of exactly one element, or hold an element of another type. [null] reads as none.
    Value value() const { return decode(container_->get(key_)); }

    // Stores value (none as [null], which keeps the key). When it cannot be encoded, nothing is
    // written.
    void setValue(const Value& value)
    {
        auto array = nlohmann::ordered_json::array();
        if (value)
            array.push_back(*value);
        else
            array.push_back(nullptr);
        if (const auto bytes = Json::encode(array))
            container_->set(*bytes, key_);
    }

    // Calls callback with the value read at the time of each change notification, on the
    // container's notification thread.
    std::shared_ptr<Unsubscriber> subscribe(std::function<void(Value)> callback) const
    {
        return container_->subscribe(
            key_, [reader = *this, callback = std::move(callback)] { callback(reader.value()); });
    }

private:
    Value decode(const std::optional<QByteArray>& bytes) const
    {
        if (!bytes)
            return defaultValue_;
        const auto array = Json::decode(*bytes);
        if (!array || !array->is_array() || array->size() != 1)
            return defaultValue_;
        const auto& element = array->front();
        if (element.is_null())
            return std::nullopt;
        try {
            return element.template get<V>();
        } catch (const nlohmann::json::exception&) {
            return defaultValue_;
        }
    }

    std::shared_ptr<DataContainer> container_;
    QString key_;
    Value defaultValue_;
};

} // namespace lexmira

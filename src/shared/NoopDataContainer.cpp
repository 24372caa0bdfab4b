// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/NoopDataContainer.h"

namespace lexmira {

std::optional<QByteArray> NoopDataContainer::get(const QString&) const
{
    return std::nullopt;
}

void NoopDataContainer::set(const std::optional<QByteArray>&, const QString&) {}

std::shared_ptr<Unsubscriber> NoopDataContainer::subscribe(const QString&, std::function<void()>)
{
    return std::make_shared<Unsubscriber>([] {});
}

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/Unsubscriber.h"

namespace lexmira {

Unsubscriber::Unsubscriber(std::function<void()> unsubscribe)
    : unsubscribe_(std::move(unsubscribe))
{
}

Unsubscriber::~Unsubscriber()
{
    unsubscribe();
}

void Unsubscriber::unsubscribe()
{
    std::function<void()> action;
    {
        const std::lock_guard lock(mutex_);
        action.swap(unsubscribe_);
    }
    if (action)
        action();
}

} // namespace lexmira

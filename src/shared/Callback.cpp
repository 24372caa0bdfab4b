// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/Callback.h"

Callback::Callback(std::function<void()> cb)
    : cb_(std::move(cb))
{
}

void Callback::observeValue(const QString&)
{
    cb_();
}

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/Callback.h"

namespace lexmira {

Callback::Callback(std::function<void()> cb)
    : cb_(std::move(cb))
{
}

void Callback::observeValue(const QString&)
{
    cb_();
}

} // namespace lexmira

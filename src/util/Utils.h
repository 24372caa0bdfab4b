// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace lexmira {

namespace Utils {

// An 8-character identifier, each character drawn uniformly from [A-Za-z0-9]. Thread-safe.
std::string randomIdentifier();

} // namespace Utils

} // namespace lexmira

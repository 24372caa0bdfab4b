// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <string>

namespace lexmira {

namespace SuiteKeyFileName {

// The name of the file that holds key in the suite's directory: the key's UTF-8 bytes, each byte
// outside [A-Za-z0-9._-] and a leading "." written as %XX (upper-case hex). Distinct keys get
// distinct names, and no name starts with "." (those are the writers' temporary files). Empty for
// the empty key, which has no file. Thread-safe.
std::string fromKey(const QString& key);

} // namespace SuiteKeyFileName

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

namespace lexmira {

// The directory of the application bundle: LEXMIRA_BUNDLE_DIR when set, otherwise
// <directory of the executable>/../share/lexmira-companion.
QString mainBundleDirectory();

} // namespace lexmira

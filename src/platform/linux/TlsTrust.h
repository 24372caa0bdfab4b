// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QSslConfiguration>

namespace lexmira {

// What every TLS connection of the application trusts: the system's certificate authorities and
// those of the PEM file named by LEXMIRA_EXTRA_CA_FILE, with the peer always verified. Reads the
// file on every call.
QSslConfiguration verifyingTlsConfiguration();

} // namespace lexmira

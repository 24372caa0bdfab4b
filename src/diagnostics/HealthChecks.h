// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "diagnostics/Diagnosis.h"
#include "platform/SystemHealth.h"

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>
#include <vector>

namespace lexmira {

// Judges what SystemHealth found: one check per thing the application relies on, each with a
// verdict and, when it is not ok, what to do. Texts are translated in the context
// "HealthChecks".
namespace HealthChecks {

// A first byte later than this still works, but the application's requests will feel slow.
inline constexpr std::chrono::milliseconds slowFirstByte = std::chrono::seconds(3);

std::vector<Check> sessionBus(const BusHealth& health);
std::vector<Check> sharedSuite(const SuiteHealth& health);
std::vector<Check> secretService(const SecretServiceHealth& health);
std::vector<Check> settingsPortal(const DesktopServiceHealth& health);
std::vector<Check> notificationServer(const DesktopServiceHealth& health);

// The services of the deployment, in the order they are checked.
enum class Service { account, analytics, log };

// url none: the configuration names no usable host (configured is what it names).
// health is read only when url is set.
std::vector<Check> service(Service which, const QString& configured, const std::optional<QUrl>& url,
                           const NetworkServiceHealth& health);
// The deployment's configuration could not be read: error says why.
Check unreadableServices(const QString& error);

} // namespace HealthChecks

} // namespace lexmira

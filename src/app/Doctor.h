// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/Bundle.h"
#include "diagnostics/Diagnosis.h"
#include "extensionhost/Installations.h"
#include "platform/SystemHealth.h"

#include <QProcessEnvironment>
#include <QString>

namespace lexmira {

// Examines everything the companion depends on, in the order it needs them: the session bus,
// the shared suite, the Secret Service, the extension's side, the settings portal, the
// notification server and each service of the deployment. Needs a QCoreApplication, nothing
// more; blocks for a bounded time per check. health must outlive the doctor.
class Doctor {
public:
    Doctor(SystemHealth& health, Installations installations, Bundle bundle,
           QProcessEnvironment environment, QString companionName);

    Diagnosis examine() const;

private:
    SystemHealth& health_;
    Installations installations_;
    Bundle bundle_;
    QProcessEnvironment environment_;
    QString companionName_;
};

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/AlertPresenter.h"

#include <QString>

namespace lexmira {

// Shows each alert as an application-modal message box and waits for the user's answer. When
// given a record file, it first appends the alert to it as one JSON line
// {"messageText":…,"informativeText":…,"style":"critical"|"warning"|"informational","buttons":[…]},
// so that whoever started the process can see exactly what it showed. Main thread only.
class ModalAlertPresenter final : public AlertPresenter {
public:
    // The environment variable that names the record file of the running application.
    static constexpr const char* recordFileVariable = "LEXMIRA_ALERT_RECORD_FILE";

    // recordFile empty records nothing.
    explicit ModalAlertPresenter(QString recordFile = {});

    int runModal(const Alert& alert) override;

private:
    void record(const Alert& alert) const;

    QString recordFile_;
};

} // namespace lexmira

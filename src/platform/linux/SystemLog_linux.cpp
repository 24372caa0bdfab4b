// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SystemLog.h"

#define SD_JOURNAL_SUPPRESS_LOCATION
#include <syslog.h>
#include <systemd/sd-journal.h>

namespace lexmira {

namespace {

// The journal's native protocol, under the application's identifier.
class JournalSystemLog final : public SystemLog {
public:
    void error(const std::string& line) override
    {
        sd_journal_send("MESSAGE=%s", line.c_str(), "PRIORITY=%i", LOG_ERR,
                        "SYSLOG_IDENTIFIER=lexmira-companion", nullptr);
    }
};

} // namespace

std::unique_ptr<SystemLog> SystemLog::create()
{
    return std::make_unique<JournalSystemLog>();
}

} // namespace lexmira

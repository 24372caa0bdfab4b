// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace lexmira {

// How one thing that the application depends on was found.
enum class Verdict { ok, warning, fail };

// One line of a diagnosis: what was looked at, what was found and, when it is not right, what
// to do about it.
struct Check {
    QString id;      // stable, for machines: "bus.reachable", "service.account.tls", ...
    QString area;    // the component, as the user reads it
    QString subject; // what of it was checked
    Verdict verdict = Verdict::ok;
    QString detail; // what was found
    QString remedy; // what to do; empty when there is nothing to do
};

// The checks of one run, in the order they were made, and their outcome.
class Diagnosis {
public:
    void add(Check check);
    void add(const std::vector<Check>& checks);

    const std::vector<Check>& checks() const { return checks_; }
    // The worst verdict of all checks; ok when there is none.
    Verdict verdict() const;
    // 0 unless a check failed: warnings alone do not make a failure.
    int exitCode() const;

    // A table for people: one line per check with its verdict, the remedy below a line that
    // is not ok, and a closing summary.
    QString table() const;
    // The same for machines: {"verdict": ..., "checks": [{"id", "area", "subject", "verdict",
    // "detail", "remedy"}...]}, verdicts as "ok", "warning" or "fail".
    QByteArray json() const;

    static QString verdictText(Verdict verdict);
    static const char* verdictKey(Verdict verdict);

private:
    std::vector<Check> checks_;
};

} // namespace lexmira

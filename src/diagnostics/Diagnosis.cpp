// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/Diagnosis.h"

#include <nlohmann/json.hpp>

#include <QCoreApplication>

#include <algorithm>

namespace lexmira {

namespace {

const char* const context = "Diagnosis";

const char* const okText = QT_TRANSLATE_NOOP("Diagnosis", "ok");
const char* const warningText = QT_TRANSLATE_NOOP("Diagnosis", "warning");
//: Written in capitals so that it stands out in the table.
const char* const failText = QT_TRANSLATE_NOOP("Diagnosis", "FAIL");
const char* const areaHeading = QT_TRANSLATE_NOOP("Diagnosis", "Component");
const char* const subjectHeading = QT_TRANSLATE_NOOP("Diagnosis", "Check");
const char* const verdictHeading = QT_TRANSLATE_NOOP("Diagnosis", "Verdict");
const char* const detailHeading = QT_TRANSLATE_NOOP("Diagnosis", "Found");
const char* const remedyLabel = QT_TRANSLATE_NOOP("Diagnosis", "What to do: %1");
const char* const allWellSummary =
    QT_TRANSLATE_NOOP("Diagnosis", "Everything the companion needs works.");
const char* const warningsSummary =
    QT_TRANSLATE_N_NOOP("Diagnosis", "Nothing is broken; %n check(s) gave a warning.");
const char* const failuresSummary =
    QT_TRANSLATE_N_NOOP("Diagnosis", "%n check(s) failed: the companion cannot work fully until "
                                     "they are fixed.");

QString translated(const char* text, int n = -1)
{
    return QCoreApplication::translate(context, text, nullptr, n);
}

QString padded(const QString& text, qsizetype width)
{
    return text + QString(std::max<qsizetype>(0, width - text.size()), QLatin1Char(' '));
}

} // namespace

void Diagnosis::add(Check check)
{
    checks_.push_back(std::move(check));
}

void Diagnosis::add(const std::vector<Check>& checks)
{
    checks_.insert(checks_.end(), checks.begin(), checks.end());
}

Verdict Diagnosis::verdict() const
{
    Verdict worst = Verdict::ok;
    for (const Check& check : checks_)
        worst = std::max(worst, check.verdict);
    return worst;
}

int Diagnosis::exitCode() const
{
    return verdict() == Verdict::fail ? 1 : 0;
}

QString Diagnosis::verdictText(Verdict verdict)
{
    switch (verdict) {
    case Verdict::ok:
        return translated(okText);
    case Verdict::warning:
        return translated(warningText);
    case Verdict::fail:
        return translated(failText);
    }
    return {};
}

const char* Diagnosis::verdictKey(Verdict verdict)
{
    switch (verdict) {
    case Verdict::ok:
        return "ok";
    case Verdict::warning:
        return "warning";
    case Verdict::fail:
        return "fail";
    }
    return "";
}

QString Diagnosis::table() const
{
    const QString areaTitle = translated(areaHeading);
    const QString subjectTitle = translated(subjectHeading);
    const QString verdictTitle = translated(verdictHeading);
    qsizetype areaWidth = areaTitle.size();
    qsizetype subjectWidth = subjectTitle.size();
    qsizetype verdictWidth = verdictTitle.size();
    for (const Verdict verdict : {Verdict::ok, Verdict::warning, Verdict::fail})
        verdictWidth = std::max(verdictWidth, verdictText(verdict).size());
    for (const Check& check : checks_) {
        areaWidth = std::max(areaWidth, check.area.size());
        subjectWidth = std::max(subjectWidth, check.subject.size());
    }
    const QString gap = QStringLiteral("  ");
    const QString remedyIndent(areaWidth + subjectWidth + verdictWidth + 3 * gap.size(),
                               QLatin1Char(' '));

    QString text;
    text += padded(areaTitle, areaWidth) + gap + padded(subjectTitle, subjectWidth) + gap +
            padded(verdictTitle, verdictWidth) + gap + translated(detailHeading) +
            QLatin1Char('\n');
    QString previousArea;
    for (const Check& check : checks_) {
        // A component is named once, on its first line.
        const QString area = check.area == previousArea ? QString() : check.area;
        previousArea = check.area;
        QString line = padded(area, areaWidth) + gap + padded(check.subject, subjectWidth) + gap +
                       padded(verdictText(check.verdict), verdictWidth) + gap +
                       QString(check.detail).replace(QLatin1Char('\n'), QLatin1Char(' '));
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
        if (check.verdict != Verdict::ok && !check.remedy.isEmpty())
            text += remedyIndent + translated(remedyLabel).arg(check.remedy) + QLatin1Char('\n');
    }

    const auto count = [this](Verdict verdict) {
        return int(std::count_if(checks_.begin(), checks_.end(), [verdict](const Check& check) {
            return check.verdict == verdict;
        }));
    };
    text += QLatin1Char('\n');
    switch (verdict()) {
    case Verdict::ok:
        text += translated(allWellSummary);
        break;
    case Verdict::warning:
        text += translated(warningsSummary, count(Verdict::warning));
        break;
    case Verdict::fail:
        text += translated(failuresSummary, count(Verdict::fail));
        break;
    }
    text += QLatin1Char('\n');
    return text;
}

QByteArray Diagnosis::json() const
{
    nlohmann::ordered_json checks = nlohmann::ordered_json::array();
    for (const Check& check : checks_)
        checks.push_back({{"id", check.id.toStdString()},
                          {"area", check.area.toStdString()},
                          {"subject", check.subject.toStdString()},
                          {"verdict", verdictKey(check.verdict)},
                          {"detail", check.detail.toStdString()},
                          {"remedy", check.remedy.toStdString()}});
    const nlohmann::ordered_json document{{"verdict", verdictKey(verdict())},
                                          {"checks", std::move(checks)}};
    return QByteArray::fromStdString(
               document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)) +
           '\n';
}

} // namespace lexmira

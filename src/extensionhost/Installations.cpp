// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/Installations.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSaveFile>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

namespace lexmira {

namespace {

const QString kRecordsDirName = QStringLiteral("lexmira-extension-host");
const QString kRecordsFileName = QStringLiteral("installations.json");
const QString kChromiumHostsDir = QStringLiteral("NativeMessagingHosts");
const QString kFirefoxHostsDir = QStringLiteral(".mozilla/native-messaging-hosts");
constexpr int kManifestIndent = 2;

QString manifestFileName()
{
    return QString::fromLatin1(Installations::kHostName) + QStringLiteral(".json");
}

std::string utf8(const QString& text)
{
    return text.toStdString();
}

QString fromUtf8(const nlohmann::json& value)
{
    return value.is_string() ? QString::fromStdString(value.get<std::string>()) : QString();
}

// Absolute and without a trailing separator, so one directory has one spelling in the records.
QString normalizedDir(const QString& dir)
{
    return dir.isEmpty() ? QString() : QDir::cleanPath(dir);
}

std::optional<Installation> installationFromJson(const nlohmann::json& object)
{
    if (!object.is_object())
        return std::nullopt;
    Installation installation;
    installation.browser = fromUtf8(object.value("browser", nlohmann::json()));
    installation.extensionId = fromUtf8(object.value("extensionId", nlohmann::json()));
    installation.userDataDir = fromUtf8(object.value("userDataDir", nlohmann::json()));
    installation.manifestPath = fromUtf8(object.value("manifestPath", nlohmann::json()));
    const nlohmann::json command = object.value("command", nlohmann::json::array());
    if (command.is_array()) {
        for (const nlohmann::json& argument : command)
            installation.command.append(fromUtf8(argument));
    }
    installation.installedAt = QDateTime::fromString(
        fromUtf8(object.value("installedAt", nlohmann::json())), Qt::ISODateWithMs);
    if (!Browsers::find(installation.browser) || installation.extensionId.isEmpty() ||
        installation.manifestPath.isEmpty() || !installation.installedAt.isValid())
        return std::nullopt;
    return installation;
}

nlohmann::ordered_json installationToJson(const Installation& installation)
{
    nlohmann::ordered_json command = nlohmann::ordered_json::array();
    for (const QString& argument : installation.command)
        command.push_back(utf8(argument));
    return {
        {"browser", utf8(installation.browser)},
        {"extensionId", utf8(installation.extensionId)},
        {"userDataDir", utf8(installation.userDataDir)},
        {"manifestPath", utf8(installation.manifestPath)},
        {"command", command},
        {"installedAt", utf8(installation.installedAt.toUTC().toString(Qt::ISODateWithMs))},
    };
}

bool sameTarget(const Installation& installation, const QString& browser,
                const QString& userDataDir)
{
    return installation.browser == browser && installation.userDataDir == userDataDir;
}

[[nodiscard]] bool writeAtomically(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        *error = QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace

Installations::Installations(QString configHome, QString home, Clock clock)
    : configHome_(QDir::cleanPath(configHome))
    , home_(QDir::cleanPath(home))
    , clock_(std::move(clock))
{
}

Installations Installations::fromEnvironment()
{
    const QString home = qEnvironmentVariable("HOME", QDir::homePath());
    QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
    // The XDG rules ignore a relative XDG_CONFIG_HOME.
    if (configHome.isEmpty() || QDir::isRelativePath(configHome))
        configHome = QDir(home).filePath(QStringLiteral(".config"));
    return Installations(configHome, home);
}

QString Installations::recordsPath() const
{
    return QDir(configHome_).filePath(kRecordsDirName + QLatin1Char('/') + kRecordsFileName);
}

std::optional<QString> Installations::manifestPath(const QString& browser,
                                                   const QString& userDataDir) const
{
    const std::optional<Browser> known = Browsers::find(browser);
    if (!known)
        return std::nullopt;
    QString dir;
    if (known->family == BrowserFamily::Firefox)
        dir = QDir(home_).filePath(kFirefoxHostsDir);
    else if (!userDataDir.isEmpty())
        dir = QDir(normalizedDir(userDataDir)).filePath(kChromiumHostsDir);
    else
        dir = QDir(QDir(configHome_).filePath(known->configSubdir)).filePath(kChromiumHostsDir);
    return QDir(dir).filePath(manifestFileName());
}

bool Installations::isValidExtensionId(BrowserFamily family, const QString& extensionId)
{
    if (family == BrowserFamily::Chromium) {
        static const QRegularExpression chromiumId(
            QStringLiteral("^[a-p]{%1}$").arg(kChromiumExtensionIdLength));
        return chromiumId.match(extensionId).hasMatch();
    }
    if (extensionId.size() > kMaxExtensionIdLength)
        return false;
    static const QRegularExpression emailLike(
        QStringLiteral("^[A-Za-z0-9._+-]+@[A-Za-z0-9-]+(\\.[A-Za-z0-9-]+)*$"));
    static const QRegularExpression uuid(QStringLiteral(
        "^\\{[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}\\}$"));
    return emailLike.match(extensionId).hasMatch() || uuid.match(extensionId).hasMatch();
}

QByteArray Installations::manifestBytes(const Browser& browser, const QString& extensionId,
                                        const QString& hostPath)
{
    nlohmann::ordered_json manifest{
        {"name", kHostName},
        {"description", "Lexmira native messaging host"},
        {"path", utf8(hostPath)},
        {"type", "stdio"},
    };
    if (browser.family == BrowserFamily::Firefox)
        manifest["allowed_extensions"] = nlohmann::ordered_json::array({utf8(extensionId)});
    else
        manifest["allowed_origins"] = nlohmann::ordered_json::array(
            {utf8(QStringLiteral("chrome-extension://%1/").arg(extensionId))});
    return QByteArray::fromStdString(manifest.dump(kManifestIndent) + '\n');
}

InstallResult Installations::install(const QString& browser, const QString& extensionId,
                                     const QString& userDataDir, const QString& browserCommand,
                                     const QString& hostPath) const
{
    const auto failure = [](QString message) { return InstallResult{std::nullopt, message}; };
    const std::optional<Browser> known = Browsers::find(browser);
    if (!known)
        return failure(QStringLiteral("Unknown browser \"%1\". Known browsers: %2.")
                           .arg(browser, Browsers::keyList()));
    if (extensionId.isEmpty())
        return failure(QStringLiteral("An extension id is required."));
    if (!isValidExtensionId(known->family, extensionId)) {
        if (known->family == BrowserFamily::Chromium)
            return failure(QStringLiteral("\"%1\" is not a %2 extension id: it has %3 letters, "
                                          "each from a to p.")
                               .arg(extensionId, known->displayName)
                               .arg(kChromiumExtensionIdLength));
        return failure(QStringLiteral("\"%1\" is not a Firefox extension id: it looks like "
                                      "name@domain or {uuid}, at most %2 characters.")
                           .arg(extensionId)
                           .arg(kMaxExtensionIdLength));
    }
    if (!userDataDir.isEmpty() && known->family == BrowserFamily::Firefox)
        return failure(QStringLiteral("--user-data-dir does not apply to Firefox: Firefox reads "
                                      "native messaging hosts from "
                                      "~/.mozilla/native-messaging-hosts for every profile."));
    if (!userDataDir.isEmpty() && QDir::isRelativePath(userDataDir))
        return failure(QStringLiteral("The user data directory must be an absolute path, "
                                      "not \"%1\".")
                           .arg(userDataDir));
    if (hostPath.isEmpty() || QDir::isRelativePath(hostPath))
        return failure(
            QStringLiteral("The host's path must be absolute, not \"%1\".").arg(hostPath));

    Installation installation;
    installation.browser = known->key;
    installation.extensionId = extensionId;
    installation.userDataDir = normalizedDir(userDataDir);
    installation.manifestPath = *manifestPath(known->key, installation.userDataDir);
    if (browserCommand.trimmed().isEmpty()) {
        installation.command = {Browsers::defaultExecutable(*known)};
        if (!installation.userDataDir.isEmpty())
            installation.command.append(QStringLiteral("--user-data-dir=") +
                                        installation.userDataDir);
    } else {
        installation.command = QProcess::splitCommand(browserCommand);
        if (installation.command.isEmpty())
            return failure(
                QStringLiteral("The browser command \"%1\" names no program.").arg(browserCommand));
    }
    installation.installedAt = clock_().toUTC();

    const QString manifestDir = QFileInfo(installation.manifestPath).absolutePath();
    if (!QDir().mkpath(manifestDir))
        return failure(QStringLiteral("Could not create the directory %1.").arg(manifestDir));
    QString error;
    if (!writeAtomically(installation.manifestPath,
                         manifestBytes(*known, extensionId, QDir::cleanPath(hostPath)), &error))
        return failure(error);

    std::vector<Installation> kept;
    for (Installation& earlier : records()) {
        if (!sameTarget(earlier, installation.browser, installation.userDataDir)) {
            kept.push_back(std::move(earlier));
        } else if (earlier.manifestPath != installation.manifestPath) {
            QFile::remove(earlier.manifestPath);
        }
    }
    kept.push_back(installation);
    if (!writeRecords(kept, &error))
        return failure(error);
    return InstallResult{installation, QString()};
}

UninstallResult Installations::uninstall(const QString& browser, const QString& userDataDir) const
{
    UninstallResult result;
    if (!Browsers::find(browser)) {
        result.status = UninstallResult::Status::Failed;
        result.error = QStringLiteral("Unknown browser \"%1\". Known browsers: %2.")
                           .arg(browser, Browsers::keyList());
        return result;
    }
    const QString dir = normalizedDir(userDataDir);
    std::vector<Installation> kept;
    for (Installation& installation : records()) {
        if (sameTarget(installation, browser, dir))
            result.removed = std::move(installation);
        else
            kept.push_back(std::move(installation));
    }
    if (!result.removed)
        return result;

    if (QFile::exists(result.removed->manifestPath) &&
        !QFile::remove(result.removed->manifestPath)) {
        result.status = UninstallResult::Status::Failed;
        result.error = QStringLiteral("Could not remove %1.").arg(result.removed->manifestPath);
        return result;
    }
    if (!writeRecords(kept, &result.error)) {
        result.status = UninstallResult::Status::Failed;
        return result;
    }
    result.status = UninstallResult::Status::Removed;
    return result;
}

std::vector<Installation> Installations::records() const
{
    std::vector<Installation> result;
    QFile file(recordsPath());
    if (file.size() > kMaxRecordsFileBytes || !file.open(QIODevice::ReadOnly))
        return result;
    const nlohmann::json parsed =
        nlohmann::json::parse(file.readAll().toStdString(), nullptr, /*allow_exceptions=*/false);
    if (!parsed.is_array())
        return result;
    for (const nlohmann::json& object : parsed) {
        if (std::optional<Installation> installation = installationFromJson(object))
            result.push_back(std::move(*installation));
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const auto& a, const auto& b) { return a.installedAt < b.installedAt; });
    return result;
}

std::optional<Installation> Installations::forConnection(BrowserFamily family,
                                                         const QString& extensionId) const
{
    std::optional<Installation> found;
    for (Installation& installation : records()) {
        const std::optional<Browser> browser = Browsers::find(installation.browser);
        if (browser && browser->family == family && installation.extensionId == extensionId)
            found = std::move(installation);
    }
    return found;
}

std::optional<Installation> Installations::mostRecent() const
{
    std::vector<Installation> all = records();
    if (all.empty())
        return std::nullopt;
    return std::move(all.back());
}

bool Installations::writeRecords(const std::vector<Installation>& records, QString* error) const
{
    const QString dir = QFileInfo(recordsPath()).absolutePath();
    if (!QDir().mkpath(dir) ||
        !QFile::setPermissions(dir, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)) {
        *error = QStringLiteral("Could not create the directory %1.").arg(dir);
        return false;
    }
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const Installation& installation : records)
        array.push_back(installationToJson(installation));
    return writeAtomically(recordsPath(),
                           QByteArray::fromStdString(array.dump(kManifestIndent) + '\n'), error);
}

} // namespace lexmira

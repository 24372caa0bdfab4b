// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/PrivateBus.h"

#include "support/TestSupport.h"

#include <QDir>
#include <QFile>

namespace lexmira {

namespace test {

PrivateBus::PrivateBus(const std::map<QString, QString>& services)
{
    const QDir dir(dir_.path());
    dir.mkpath(QStringLiteral("services"));
    for (const auto& [name, command] : services) {
        QFile service(QDir(serviceDirectory()).filePath(name + QStringLiteral(".service")));
        if (!service.open(QIODevice::WriteOnly))
            return;
        service.write("[D-BUS Service]\nName=" + name.toUtf8() + "\nExec=" + command.toUtf8() +
                      "\n");
    }
    QFile configuration(dir.filePath(QStringLiteral("bus.conf")));
    if (!configuration.open(QIODevice::WriteOnly))
        return;
    configuration.write(
        "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
        " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
        "<busconfig>\n"
        "  <type>session</type>\n"
        "  <keep_umask/>\n"
        "  <listen>unix:dir=" +
        dir_.path().toUtf8() +
        "</listen>\n"
        "  <servicedir>" +
        serviceDirectory().toUtf8() +
        "</servicedir>\n"
        "  <policy context=\"default\">\n"
        "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
        "    <allow eavesdrop=\"true\"/>\n"
        "    <allow own=\"*\"/>\n"
        "  </policy>\n"
        "</busconfig>\n");
    configuration.close();

    daemon_ = std::make_unique<ChildProcess>(
        QStringLiteral("dbus-daemon"),
        QStringList{QStringLiteral("--config-file=") + configuration.fileName(),
                    QStringLiteral("--print-address"), QStringLiteral("--nofork")},
        QProcessEnvironment::systemEnvironment());
    QProcess& daemon = daemon_->process();
    waitUntil([&] { return daemon.canReadLine() || !daemon_->running(); });
    address_ = QString::fromUtf8(daemon.readLine()).trimmed();
}

PrivateBus::~PrivateBus()
{
    daemon_.reset();
}

QString PrivateBus::serviceDirectory() const
{
    return QDir(dir_.path()).filePath(QStringLiteral("services"));
}

} // namespace test

} // namespace lexmira

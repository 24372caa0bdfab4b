// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/DBusContract.h"

#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QXmlStreamReader>

namespace lexmira {

namespace test {

std::optional<QString> DBusInterface::inSignature(const QString& method) const
{
    const auto found = inSignatures.find(method);
    if (found == inSignatures.end())
        return std::nullopt;
    return found->second;
}

std::string DBusInterface::listed() const
{
    std::string lines;
    for (const QString& member : members)
        lines += member.toStdString() + '\n';
    return lines;
}

std::map<QString, DBusInterface> interfacesIn(const QString& xml)
{
    std::map<QString, DBusInterface> interfaces;
    QXmlStreamReader reader(xml);
    DBusInterface* interface = nullptr;
    QString memberKind; // "method" or "signal" while inside one
    QString memberName;
    QString in;
    QString out;
    while (!reader.atEnd()) {
        reader.readNext();
        const auto name = reader.name();
        const auto attributes = reader.attributes();
        if (reader.isStartElement()) {
            if (name == QLatin1String("interface")) {
                interface = &interfaces[attributes.value(QLatin1String("name")).toString()];
            } else if (interface &&
                       (name == QLatin1String("method") || name == QLatin1String("signal"))) {
                memberKind = name.toString();
                memberName = attributes.value(QLatin1String("name")).toString();
                in.clear();
                out.clear();
            } else if (interface && name == QLatin1String("arg") && !memberKind.isEmpty()) {
                const QString type = attributes.value(QLatin1String("type")).toString();
                // A signal's arguments are all out; a method's are in unless said otherwise.
                const bool isOut =
                    memberKind == QLatin1String("signal") ||
                    attributes.value(QLatin1String("direction")) == QLatin1String("out");
                (isOut ? out : in) += type;
            } else if (interface && name == QLatin1String("property")) {
                interface->members.insert(
                    QStringLiteral("property %1 %2 %3")
                        .arg(attributes.value(QLatin1String("name")).toString(),
                             attributes.value(QLatin1String("type")).toString(),
                             attributes.value(QLatin1String("access")).toString()));
            }
        } else if (reader.isEndElement()) {
            if (name == QLatin1String("interface")) {
                interface = nullptr;
            } else if (interface && name.toString() == memberKind) {
                if (memberKind == QLatin1String("signal")) {
                    interface->members.insert(QStringLiteral("signal %1(%2)").arg(memberName, out));
                } else {
                    interface->members.insert(
                        out.isEmpty() ? QStringLiteral("%1(%2)").arg(memberName, in)
                                      : QStringLiteral("%1(%2)->%3").arg(memberName, in, out));
                    interface->inSignatures[memberName] = in;
                }
                memberKind.clear();
            }
        }
    }
    if (reader.hasError())
        return {};
    return interfaces;
}

QString contractFile(const QString& fileName)
{
    QFile file(QDir(QStringLiteral(LEXMIRA_DBUS_CONTRACTS_DIR)).filePath(fileName));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

std::map<QString, DBusInterface> contractInterfaces(const QString& fileName)
{
    return interfacesIn(contractFile(fileName));
}

QString introspect(const QDBusConnection& bus, const QString& service, const QString& path)
{
    const QDBusMessage reply = QDBusConnection(bus).call(
        QDBusMessage::createMethodCall(service, path,
                                       QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                       QStringLiteral("Introspect")),
        QDBus::Block, 10'000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        return {};
    return reply.arguments().front().toString();
}

testing::AssertionResult declaresContract(const std::map<QString, DBusInterface>& declared,
                                          const QString& fileName)
{
    const auto contract = contractInterfaces(fileName);
    if (contract.empty())
        return testing::AssertionFailure() << fileName.toStdString() << " declares no interface";
    for (const auto& [name, interface] : contract) {
        const auto found = declared.find(name);
        if (found == declared.end())
            return testing::AssertionFailure() << name.toStdString() << " is not declared";
        if (found->second.listed() != interface.listed())
            return testing::AssertionFailure()
                   << name.toStdString() << " declares\n"
                   << found->second.listed() << "where " << fileName.toStdString()
                   << " declares\n"
                   << interface.listed();
    }
    return testing::AssertionSuccess();
}

} // namespace test

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDBusConnection>
#include <QString>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <set>
#include <string>

namespace lexmira {

namespace test {

// What one D-Bus interface declares, each member as one comparable line: "Open(asa{sv})" for a
// method with its in-arguments, "Get(ss)->v" when it has out-arguments, "signal
// SettingChanged(ssv)", "property BrowserName s read". Annotations and argument names are left
// out: they are not what a caller and a callee must agree on.
struct DBusInterface {
    std::set<QString> members;
    // Only a method's signature of in-arguments, by name; empty when no such method.
    std::optional<QString> inSignature(const QString& method) const;
    std::map<QString, QString> inSignatures;

    // The members one per line, in order, for comparing and for reading in a failure.
    std::string listed() const;
};

// Every interface in introspection XML, by name; an empty map for XML that does not parse.
std::map<QString, DBusInterface> interfacesIn(const QString& xml);

// The text of a contract file in the tree's dbus/ folder ("org.freedesktop.Application.xml");
// empty when there is none.
QString contractFile(const QString& fileName);

// The interfaces one contract file declares.
std::map<QString, DBusInterface> contractInterfaces(const QString& fileName);

// Whether declared (what an object says of itself) holds each interface of one contract file
// with exactly its members; a failure names the interface and lists both sides.
testing::AssertionResult declaresContract(const std::map<QString, DBusInterface>& declared,
                                          const QString& fileName);

// What the object at path of service says of itself through org.freedesktop.DBus.Introspectable;
// empty when it does not answer.
QString introspect(const QDBusConnection& bus, const QString& service, const QString& path);

} // namespace test

} // namespace lexmira

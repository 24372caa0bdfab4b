// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace lexmira {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceNamespace = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");
constexpr int readTimeoutMs = 5'000;
// The portal's value for "prefer dark".
constexpr uint preferDark = 1;

// Unwraps variants until a plain value remains: ReadOne answers v, the older Read answers v
// wrapped in one more v.
QVariant unwrap(QVariant value)
{
    for (int depth = 0; depth < 4 && value.metaType() == QMetaType::fromType<QDBusVariant>();
         ++depth)
        value = value.value<QDBusVariant>().variant();
    return value;
}

bool isPreferDark(const QVariant& raw)
{
    const QVariant value = unwrap(raw);
    bool ok = false;
    const uint scheme = value.toUInt(&ok);
    return ok && scheme == preferDark &&
           (value.metaType() == QMetaType::fromType<uint>() ||
            value.metaType() == QMetaType::fromType<int>());
}

// The colour-scheme setting of the desktop portal. No portal, or any error: light.
class PortalAppearance final : public Appearance {
    Q_OBJECT

public:
    PortalAppearance()
        : bus_(QDBusConnection::sessionBus())
    {
        if (!bus_.isConnected())
            return;
        bus_.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"),
                     this, SLOT(onSettingChanged(QDBusMessage)));
        read(QStringLiteral("ReadOne"));
    }

    bool isDark() const override { return dark_; }

private Q_SLOTS:
    // (s namespace, s key, v value); anything else on that signal is not ours to read.
    void onSettingChanged(const QDBusMessage& message)
    {
        const QVariantList arguments = message.arguments();
        if (arguments.size() != 3 || arguments[0].toString() != appearanceNamespace ||
            arguments[1].toString() != colorSchemeKey)
            return;
        update(isPreferDark(arguments[2]), true);
    }

private:
    void read(const QString& method)
    {
        auto call =
            QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, method);
        call << appearanceNamespace << colorSchemeKey;
        auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, readTimeoutMs), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, method] {
            watcher->deleteLater();
            const QDBusPendingReply<QVariant> reply = *watcher;
            if (reply.isError()) {
                // Portals before version 2 have only Read.
                if (method == QStringLiteral("ReadOne") &&
                    reply.error().type() == QDBusError::UnknownMethod)
                    read(QStringLiteral("Read"));
                return;
            }
            update(isPreferDark(reply.argumentAt(0)), false);
        });
    }

    void update(bool dark, bool announced)
    {
        const bool differs = dark != dark_;
        dark_ = dark;
        if (differs || announced)
            Q_EMIT changed();
    }

    QDBusConnection bus_;
    bool dark_ = false;
};

} // namespace

std::unique_ptr<Appearance> Appearance::create()
{
    return std::make_unique<PortalAppearance>();
}

} // namespace lexmira

#include "Appearance_linux.moc"

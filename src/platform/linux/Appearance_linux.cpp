// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/Appearance.h"

#include "portal_settings_interface.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace lexmira {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
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
        : portal_(portalService, portalPath, QDBusConnection::sessionBus())
    {
        if (!portal_.connection().isConnected())
            return;
        portal_.setTimeout(readTimeoutMs);
        // The proxy finds its signal's argument types by name; a name the type system has not
        // seen yet matches no signal, and the change would never arrive.
        qRegisterMetaType<QDBusVariant>();
        connect(&portal_, &OrgFreedesktopPortalSettingsInterface::SettingChanged, this,
                &PortalAppearance::onSettingChanged);
        read(Method::readOne);
    }

    bool isDark() const override { return dark_; }

private:
    enum class Method { readOne, read };

    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value)
    {
        if (group != appearanceNamespace || key != colorSchemeKey)
            return;
        update(isPreferDark(QVariant::fromValue(value)), true);
    }

    void read(Method method)
    {
        auto* watcher = new QDBusPendingCallWatcher(
            method == Method::readOne ? portal_.ReadOne(appearanceNamespace, colorSchemeKey)
                                      : portal_.Read(appearanceNamespace, colorSchemeKey),
            this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, method] {
            watcher->deleteLater();
            const QDBusPendingReply<QDBusVariant> reply = *watcher;
            if (reply.isError()) {
                // Portals before version 2 have only Read.
                if (method == Method::readOne && reply.error().type() == QDBusError::UnknownMethod)
                    read(Method::read);
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

    OrgFreedesktopPortalSettingsInterface portal_;
    bool dark_ = false;
};

} // namespace

std::unique_ptr<Appearance> Appearance::create()
{
    return std::make_unique<PortalAppearance>();
}

} // namespace lexmira

#include "Appearance_linux.moc"

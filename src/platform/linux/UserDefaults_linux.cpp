// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/UserDefaults.h"

#include <QMutex>
#include <QMutexLocker>
#include <QSettings>

namespace lexmira {

namespace {

// QSettings in its native format under $XDG_CONFIG_HOME/<bundle identifier>.conf; its own
// serialisation keeps the type of a QDateTime.
class SettingsUserDefaults final : public UserDefaults {
public:
    explicit SettingsUserDefaults(const QString& bundleIdentifier)
        : settings_(QSettings::NativeFormat, QSettings::UserScope, bundleIdentifier)
    {
    }

    QVariant object(const QString& key) const override
    {
        const QMutexLocker lock(&mutex_);
        return settings_.value(key);
    }

    void setObject(const QVariant& value, const QString& key) override
    {
        const QMutexLocker lock(&mutex_);
        // What another process wrote meanwhile is read first, so the check below sees the file
        // as it is. A value that is already stored is not written again: every write replaces
        // the file and waits for the disk, on the thread that asked.
        settings_.sync();
        if (value.isValid() ? isStored(value, key) : !settings_.contains(key))
            return;
        if (value.isValid())
            settings_.setValue(key, value);
        else
            settings_.remove(key);
        settings_.sync();
    }

private:
    // The file keeps most values as text ("false" for false), so the stored value is compared
    // in the type of the new one.
    bool isStored(const QVariant& value, const QString& key) const
    {
        if (!settings_.contains(key))
            return false;
        QVariant stored = settings_.value(key);
        if (stored.metaType() != value.metaType() && !stored.convert(value.metaType()))
            return false;
        return stored == value;
    }

    mutable QMutex mutex_; // QSettings is reentrant, not thread-safe
    QSettings settings_;
};

} // namespace

std::unique_ptr<UserDefaults> UserDefaults::standard(const QString& bundleIdentifier)
{
    return std::make_unique<SettingsUserDefaults>(bundleIdentifier);
}

} // namespace lexmira

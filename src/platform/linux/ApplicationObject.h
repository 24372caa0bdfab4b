// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/SingleInstance.h"

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

namespace lexmira {

// The object the instance exports at /com/lexmira/companion. The adaptor generated from
// org.freedesktop.Application.xml calls its slots; it turns each call into a signal of the
// instance. Calls arrive on the main thread.
class ApplicationObject final : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    // instance is the parent and outlives the object.
    explicit ApplicationObject(SingleInstance* instance);

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    // The application offers no actions.
    void ActivateAction(const QString& actionName, const QVariantList& parameter,
                        const QVariantMap& platformData);

private:
    SingleInstance* instance_;
};

} // namespace lexmira

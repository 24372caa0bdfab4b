// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/Artwork.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>

namespace lexmira {

Artwork::Artwork(QString directory)
    : directory_(std::move(directory))
{
}

QPixmap Artwork::image(const QString& name, QSize size, qreal devicePixelRatio) const
{
    const QString path = QDir(directory_).filePath(name + QStringLiteral(".png"));
    if (!QFileInfo(path).isFile())
        return {};
    // QIcon picks up name@2x.png by itself.
    return QIcon(path).pixmap(size, devicePixelRatio);
}

Artwork::Animation Artwork::animation(const QString& name, qreal devicePixelRatio) const
{
    const QDir directory(directory_);
    if (devicePixelRatio > 1) {
        const QString dense = directory.filePath(name + QStringLiteral("@2x.gif"));
        if (QFileInfo(dense).isFile())
            return {dense, 2};
    }
    const QString path = directory.filePath(name + QStringLiteral(".gif"));
    return {QFileInfo(path).isFile() ? path : QString(), 1};
}

} // namespace lexmira

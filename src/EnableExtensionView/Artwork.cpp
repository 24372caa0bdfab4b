// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/Artwork.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>

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

QString Artwork::animationPath(const QString& name) const
{
    const QString path = QDir(directory_).filePath(name + QStringLiteral(".gif"));
    return QFileInfo(path).isFile() ? path : QString();
}

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QPixmap>
#include <QString>

// Images of the bundle's artwork, by name ("LexmiraMark" is LexmiraMark.png, with its @2x
// variant used on high-density screens).
class Artwork {
public:
    explicit Artwork(QString directory);

    // The image at size (in device-independent pixels) for a screen of devicePixelRatio; a null
    // pixmap when there is no such image.
    QPixmap image(const QString& name, QSize size, qreal devicePixelRatio) const;
    // The path of an animation "<name>.gif", or an empty string when there is none.
    QString animationPath(const QString& name) const;

private:
    QString directory_;
};

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QPixmap>
#include <QString>

namespace lexmira {

// Images of the bundle's artwork, by name ("LexmiraMark" is LexmiraMark.png, with its @2x
// variant used on high-density screens).
class Artwork {
public:
    explicit Artwork(QString directory);

    // The image at size (in device-independent pixels) for a screen of devicePixelRatio; a null
    // pixmap when there is no such image.
    QPixmap image(const QString& name, QSize size, qreal devicePixelRatio) const;
    // An animation file and how many of its pixels make one device-independent pixel.
    struct Animation {
        QString path;
        qreal pixelRatio = 1;
    };
    // The animation "<name>.gif", drawn at the size it is shown, or on a screen of more than one
    // device pixel to a point "<name>@2x.gif" when there is one; an empty path when there is
    // none.
    Animation animation(const QString& name, qreal devicePixelRatio) const;

private:
    QString directory_;
};

} // namespace lexmira

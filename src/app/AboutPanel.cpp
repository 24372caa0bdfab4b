// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/AboutPanel.h"

#include "Common/Bundle.h"
#include "platform/MainBundle.h"

#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace lexmira {

AboutPanel::AboutPanel(QWidget* parent)
    : QDialog(parent)
{
    const Bundle bundle(mainBundleDirectory());
    const QString name = bundle.name().value_or(QString());
    const QString version = bundle.shortVersion().value_or(QString());

    setWindowTitle(tr("About %1").arg(name));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* icon = new QLabel(this);
    icon->setPixmap(windowIcon().pixmap(64, 64));
    icon->setAlignment(Qt::AlignHCenter);

    auto* title = new QLabel(name, this);
    QFont titleFont = title->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    title->setFont(titleFont);
    title->setAlignment(Qt::AlignHCenter);

    auto* versionLabel = new QLabel(tr("Version %1").arg(version), this);
    versionLabel->setAlignment(Qt::AlignHCenter);
    versionLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(40, 24, 40, 24);
    layout->setSpacing(8);
    layout->addWidget(icon);
    layout->addWidget(title);
    layout->addWidget(versionLabel);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace lexmira

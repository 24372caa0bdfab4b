// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionView.h"

#include "EnableExtensionView/ExtensionPreferences.h"
#include "EnableExtensionView/TextView.h"
#include "bridge/CompanionMessage.h"
#include "bridge/OAuth.h"
#include "platform/AlertPresenter.h"
#include "platform/Appearance.h"
#include "platform/ExtensionBridge.h"
#include "shared/SharedData.h"
#include "util/FutureFunc.h"

#include <QApplication>
#include <QImageReader>
#include <QLabel>
#include <QMovie>
#include <QTimer>

namespace {

// The panels' texts, exactly as the product writes them.
const QString enabledTitle = QStringLiteral("You\u2019re all set! ");
const QString enabledBody = QStringLiteral(
    "If you don\u2019t see Lexmira in your \nSafari toolbar, try restarting Safari.");
const QString openSafariTitle = QStringLiteral("Ok, got it");
const QString stepNumbers = QStringLiteral("1\n2");
const QString stepDots = QStringLiteral(".\n.");
const QString steps = QStringLiteral("Open settings\nClick checkbox\n");
const QString stepsTail = QStringLiteral("\n\nto grant permission ");
const QString openSettingsTitle = QStringLiteral("Open settings to enable Lexmira");
const QString openingTitle = QStringLiteral("Opening...");
const QString openSafariFailure = QStringLiteral("Could not open Safari");
constexpr auto openSafariLogPrefix = "Could not open Safari: ";
constexpr auto stateLogPrefix = "Could not get extension state: ";
constexpr auto stateNilResult = "Could not get extension state: nil result";

constexpr int leftMargin = 48;
constexpr int openSafariButtonWidth = 96;
constexpr int openSettingsButtonWidth = 244;
// The animation is drawn on a 464-wide reference and shown at half size.
constexpr qreal animationScale = 232.0 / 464.0;

// The desktop's font, or Inter where it is installed: its light and bold cuts are what the
// panels were drawn for.
QFont systemFont(int pixelSize, QFont::Weight weight)
{
    QFont font = QApplication::font();
    font.setFamilies({QStringLiteral("Inter"), font.family()});
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

} // namespace

EnableExtensionView::EnableExtensionView(Dependencies dependencies, QWidget* parent)
    : QWidget(parent)
    , deps_(std::move(dependencies))
{
    setFixedSize(width, height);
    setAccessibleName(QStringLiteral("Lexmira"));
    connect(&deps_.appearance, &Appearance::changed, this,
            &EnableExtensionView::interfaceModeChanged);
    buildContent();
}

EnableExtensionView::~EnableExtensionView() = default;

void EnableExtensionView::interfaceModeChanged()
{
    buildContent();
}

void EnableExtensionView::buildContent()
{
    colorScheme_ = ColorScheme::forAppearance(deps_.appearance.isDark());

    extensionEnabledPanel_ = makePanel();
    buildExtensionEnabledPanel(extensionEnabledPanel_);
    enableExtensionPanel_ = makePanel();
    buildEnableExtensionPanel(enableExtensionPanel_);

    pollState(std::make_shared<bool>(true));
}

QWidget* EnableExtensionView::makePanel()
{
    auto* panel = new QWidget(this);
    panel->hide();
    panel->setGeometry(rect());
    panel->setAutoFillBackground(true);
    QPalette palette = panel->palette();
    palette.setColor(QPalette::Window, colorScheme_->panel);
    panel->setPalette(palette);
    // Later panels cover earlier ones.
    panel->raise();
    return panel;
}

void EnableExtensionView::buildExtensionEnabledPanel(QWidget* panel)
{
    const qreal ratio = devicePixelRatioF();
    const QFont title = systemFont(24, QFont::Bold);
    const QFont body = systemFont(16, QFont::Light);

    auto* mark = new QLabel(panel);
    mark->setPixmap(deps_.artwork.image(QStringLiteral("LexmiraMark"), {56, 56}, ratio));
    mark->setAccessibleName(QStringLiteral("Lexmira"));
    mark->setGeometry(leftMargin, 72, 56, 56);

    auto* heading =
        new TextView(enabledTitle, title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    heading->move(mark->x(), mark->geometry().bottom() + 1 + 32);

    auto* done = new QLabel(panel);
    done->setPixmap(deps_.artwork.image(QStringLiteral("DoneMark"), {32, 32}, ratio));
    done->setAccessibleName(QStringLiteral("Done"));
    done->setGeometry(heading->geometry().right() + 1, mark->geometry().bottom() + 1 + 32, 32, 32);

    auto* text = new TextView(enabledBody, body, colorScheme_->text, 3.0, Qt::AlignLeft, panel);
    text->move(heading->x(), heading->geometry().bottom() + 1 + 22);

    openSafariButton_ =
        new FlatButton(openSafariTitle, openSafariButtonWidth, colorScheme_->button, panel);
    openSafariButton_->move(heading->x(), text->geometry().bottom() + 1 + 34);
    connect(openSafariButton_, &QPushButton::clicked, this, &EnableExtensionView::openSafari);
}

void EnableExtensionView::buildEnableExtensionPanel(QWidget* panel)
{
    const qreal ratio = devicePixelRatioF();
    const QFont title = systemFont(24, QFont::Bold);

    auto* warning = new QLabel(panel);
    warning->setPixmap(deps_.artwork.image(colorScheme_->warningMarkImage, {46, 41}, ratio));
    warning->setAccessibleName(QStringLiteral("Warning"));
    warning->setGeometry(leftMargin, 71, 46, 41);

    const int stepsTop = warning->geometry().bottom() + 1 + 47;
    auto* numbers =
        new TextView(stepNumbers, title, colorScheme_->text, 4.0, Qt::AlignHCenter, panel);
    numbers->move(warning->x(), stepsTop);
    auto* dots = new TextView(stepDots, title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    dots->move(numbers->geometry().right() + 1 - 10, stepsTop);
    auto* stepText = new TextView(steps, title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    stepText->move(dots->geometry().right() + 1 - 6, stepsTop);
    auto* tail = new TextView(stepsTail, title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    tail->move(stepText->x() + 2, stepsTop);
    // A screen reader reads the steps once, in order; the pieces are only drawn.
    for (QWidget* piece :
         {static_cast<QWidget*>(numbers), static_cast<QWidget*>(dots), static_cast<QWidget*>(tail)})
        piece->setAccessibleName(QString());
    stepText->setAccessibleName(
        QStringLiteral("1. Open settings. 2. Click checkbox to grant permission."));

    openSafariExtensionPreferencesButton_ =
        new FlatButton(openSettingsTitle, openSettingsButtonWidth, colorScheme_->button, panel);
    openSafariExtensionPreferencesButton_->move(warning->x(),
                                                stepText->geometry().bottom() + 1 + 41);
    connect(openSafariExtensionPreferencesButton_, &QPushButton::clicked, this,
            &EnableExtensionView::openSafariExtensionPreferences);

    const QString animation =
        deps_.artwork.animationPath(colorScheme_->enableLexmiraAnimationImage);
    const QSize natural = QImageReader(animation).size();
    if (animation.isEmpty() || !natural.isValid())
        return;
    auto* movie = new QMovie(animation, QByteArray(), panel);
    if (!movie->isValid())
        return;
    const QSize shown = (QSizeF(natural) * animationScale).toSize();
    movie->setScaledSize(shown * ratio);
    auto* player = new QLabel(panel);
    player->setAccessibleName(QStringLiteral("How to enable Lexmira"));
    player->setScaledContents(true);
    player->setMovie(movie);
    player->setGeometry(panel->width() - shown.width(), panel->height() - shown.height(),
                        shown.width(), shown.height());
    movie->start();
}

void EnableExtensionView::pollState(std::shared_ptr<bool> logOnce)
{
    deps_.bridge.getState(deps_.extensionIdentifier, [view = QPointer(this), logOnce](
                                                         std::optional<bool> enabled,
                                                         std::optional<ExtensionError> error) {
        FutureFunc::onMain([view, logOnce, enabled, error] {
            if (!view)
                return;
            view->showStateResult(error ? std::optional<bool>() : enabled,
                                  error ? std::optional(error->localizedDescription) : std::nullopt,
                                  logOnce);
        });
    });
}

void EnableExtensionView::showStateResult(std::optional<bool> enabled, std::optional<QString> error,
                                          const std::shared_ptr<bool>& logOnce)
{
    if ((error || !enabled) && *logOnce) {
        deps_.skrivo.log(CompanionLogger::getExtensionState, LogLevel::error,
                         error ? stateLogPrefix + error->toStdString() : stateNilResult);
        *logOnce = false;
    }
    if (enabled.value_or(false))
        showEnabled();
    else
        showDisabled();
    QTimer::singleShot(deps_.pollInterval, this, [this, logOnce] { pollState(logOnce); });
}

void EnableExtensionView::showEnabled()
{
    if (extensionEnabledPanel_->isHidden()) {
        extensionEnabledPanel_->hide();
        enableExtensionPanel_->hide();
        extensionEnabledPanel_->show();
    }
    openLoginTabIfNeeded();
}

void EnableExtensionView::showDisabled()
{
    if (enableExtensionPanel_->isHidden()) {
        extensionEnabledPanel_->hide();
        enableExtensionPanel_->hide();
        enableExtensionPanel_->show();
    }
}

void EnableExtensionView::openLoginTabIfNeeded()
{
    if (!deps_.oauth.shouldAutoOpenLoginTab)
        return;
    deps_.oauth.shouldAutoOpenLoginTab = false;
    const auto user = deps_.sharedData.userInfo.value();
    if (!user || user->isAnonymous)
        deps_.oauth.oauthOpenLoginTab([](bool) {});
}

void EnableExtensionView::openSafari()
{
    openSafariButton_->setEnabled(false);
    sendCompanionMessage(
        deps_.bridge, deps_.extensionIdentifier, CompanionMessage::openSafari, std::nullopt,
        deps_.skrivo, CompanionLogger::openSafari,
        [view = QPointer(this), button = openSafariButton_](std::optional<ExtensionError> error) {
            if (!view)
                return;
            if (!error) {
                view->deps_.terminate();
                return;
            }
            view->deps_.alerts.runModal({openSafariFailure,
                                         error->localizedDescription,
                                         Alert::Style::critical,
                                         {QStringLiteral("OK")}});
            if (button)
                button->setEnabled(true);
            view->deps_.skrivo.log(CompanionLogger::openSafari, LogLevel::error,
                                   openSafariLogPrefix + error->localizedDescription.toStdString());
        });
}

void EnableExtensionView::openSafariExtensionPreferences()
{
    // The button and colours of this build, even if the appearance changes meanwhile.
    QPointer<FlatButton> button = openSafariExtensionPreferencesButton_;
    const ColorScheme scheme = *colorScheme_;
    setSettingsButtonBusy(*button, scheme, true);
    deps_.extensionPreferences.open([button, scheme] {
        if (button)
            setSettingsButtonBusy(*button, scheme, false);
    });
}

void EnableExtensionView::setSettingsButtonBusy(FlatButton& button, const ColorScheme& scheme,
                                                bool busy)
{
    button.setEnabled(!busy);
    if (busy)
        button.setLook(openingTitle, scheme.disableButton, scheme.disableButtonBorder, 1);
    else
        button.setLook(openSettingsTitle, scheme.button, scheme.disableButtonBorder, 0);
}

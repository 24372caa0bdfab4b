// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionView.h"

#include "EnableExtensionView/ExtensionPreferences.h"
#include "EnableExtensionView/TextView.h"
#include "bridge/BrowserName.h"
#include "bridge/CompanionMessage.h"
#include "bridge/OAuth.h"
#include "platform/AlertPresenter.h"
#include "platform/Appearance.h"
#include "platform/ExtensionBridge.h"
#include "shared/SharedData.h"

#include <QApplication>
#include <QLabel>
#include <QTimer>

namespace lexmira {

namespace {

// The panels' texts, exactly as the product writes them in English; each is translated where it
// is shown. Translations must fit the same boxes: the layout does not grow with them.
//: The enabled panel's title. The trailing blank keeps the check mark that follows at its place.
const char* const enabledTitle = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "You’re all set! ");
//: The enabled panel's text, two lines. "Safari" stands for the browser the extension runs in and
//: is replaced by its name ("Chromium", "Firefox", ...); keep the word "Safari" where that name goes.
const char* const enabledBodyText = QT_TRANSLATE_NOOP(
    "lexmira::EnableExtensionView", "If you don’t see Lexmira in your \nSafari toolbar, try restarting Safari.");
//: The enabled panel's button, 96 pixels wide: it hands the user over to the browser.
const char* const openSafariTitle = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Ok, got it");
//: The numbers of the two steps, one per line, drawn in a column of their own.
const char* const stepNumbers = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "1\n2");
//: The full stops after the step numbers, one per line.
const char* const stepDots = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", ".\n.");
//: The two steps, one per line; the third line is continued by the next text. Each line must stay
//: narrower than about 230 pixels in the 24-pixel bold font.
const char* const steps = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Open settings\nClick checkbox\n");
//: The third line of the steps, below "Click checkbox" (the two line breaks skip the steps).
const char* const stepsTail = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "\n\nto grant permission ");
//: What a screen reader reads for the steps: one sentence, in order.
const char* const stepsSpoken =
    QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "1. Open settings. 2. Click checkbox to grant permission.");
//: The disabled panel's button, 244 pixels wide: it opens the browser's settings page for the
//: extension.
const char* const openSettingsTitle =
    QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Open settings to enable Lexmira");
//: The settings button's title while the settings page is being opened.
const char* const openingTitle = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Opening...");
//: An alert's title. "Safari" is replaced by the name of the browser the extension runs in.
const char* const openSafariFailure = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Could not open Safari");
//: The one button of an alert.
const char* const okTitle = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "OK");
//: Spoken names of the panels' images.
const char* const markName = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Lexmira");
const char* const doneName = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Done");
const char* const warningName = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "Warning");
const char* const animationName = QT_TRANSLATE_NOOP("lexmira::EnableExtensionView", "How to enable Lexmira");
constexpr auto openSafariLogPrefix = "Could not open Safari: ";
constexpr auto stateLogPrefix = "Could not get extension state: ";
constexpr auto stateNilResult = "Could not get extension state: nil result";

constexpr int leftMargin = 48;
constexpr int openSafariButtonWidth = 96;
constexpr int openSettingsButtonWidth = 244;
// The enable animation shows the extensions page of the browser in use: Firefox's for Firefox,
// the Chromium family's for every other browser and when none is named.
QString animationVariant(const QString& browserName)
{
    return browserName.contains(QLatin1String("Firefox"), Qt::CaseInsensitive)
               ? QStringLiteral("Firefox")
               : QStringLiteral("Chromium");
}

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
    setAccessibleName(tr(markName));
    connect(&deps_.appearance, &Appearance::changed, this,
            &EnableExtensionView::interfaceModeChanged);
    buildContent();
    refreshBrowserName();
}

EnableExtensionView::~EnableExtensionView() = default;

void EnableExtensionView::interfaceModeChanged()
{
    buildContent();
}

void EnableExtensionView::buildContent()
{
    colorScheme_ = ColorScheme::forAppearance(deps_.appearance.isDark());

    // The new panels cover the earlier ones for good.
    if (animation_)
        animation_->retire();
    extensionEnabledPanel_ = makePanel();
    buildExtensionEnabledPanel(extensionEnabledPanel_);
    enableExtensionPanel_ = makePanel();
    buildEnableExtensionPanel(enableExtensionPanel_);

    pollState(std::make_shared<bool>(true));
}

Panel* EnableExtensionView::makePanel()
{
    auto* panel = new Panel(colorScheme_->panel, this);
    panel->hide();
    panel->setGeometry(rect());
    // Later panels cover earlier ones.
    panel->raise();
    return panel;
}

void EnableExtensionView::buildExtensionEnabledPanel(Panel* panel)
{
    const qreal ratio = devicePixelRatioF();
    const QFont title = systemFont(24, QFont::Bold);

    auto* mark = new QLabel(panel);
    mark->setPixmap(deps_.artwork.image(QStringLiteral("LexmiraMark"), {56, 56}, ratio));
    mark->setAccessibleName(tr(markName));
    mark->setGeometry(leftMargin, 72, 56, 56);

    auto* heading =
        new TextView(tr(enabledTitle), title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    heading->move(mark->x(), mark->geometry().bottom() + 1 + 32);

    auto* done = new QLabel(panel);
    done->setPixmap(deps_.artwork.image(QStringLiteral("DoneMark"), {32, 32}, ratio));
    done->setAccessibleName(tr(doneName));
    done->setGeometry(heading->geometry().right() + 1, mark->geometry().bottom() + 1 + 32, 32, 32);

    showEnabledBody(panel, {heading->x(), heading->geometry().bottom() + 1 + 22});

    openSafariButton_ =
        new FlatButton(tr(openSafariTitle), openSafariButtonWidth, colorScheme_->button, panel);
    openSafariButton_->move(heading->x(), enabledBody_->geometry().bottom() + 1 + 34);
    connect(openSafariButton_, &QPushButton::clicked, this, &EnableExtensionView::openSafari);
}

void EnableExtensionView::buildEnableExtensionPanel(Panel* panel)
{
    const qreal ratio = devicePixelRatioF();
    const QFont title = systemFont(24, QFont::Bold);

    auto* warning = new QLabel(panel);
    warning->setPixmap(deps_.artwork.image(colorScheme_->warningMarkImage, {46, 41}, ratio));
    warning->setAccessibleName(tr(warningName));
    warning->setGeometry(leftMargin, 71, 46, 41);

    const int stepsTop = warning->geometry().bottom() + 1 + 47;
    auto* numbers =
        new TextView(tr(stepNumbers), title, colorScheme_->text, 4.0, Qt::AlignHCenter, panel);
    numbers->move(warning->x(), stepsTop);
    auto* dots = new TextView(tr(stepDots), title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    dots->move(numbers->geometry().right() + 1 - 10, stepsTop);
    auto* stepText = new TextView(tr(steps), title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    stepText->move(dots->geometry().right() + 1 - 6, stepsTop);
    auto* tail = new TextView(tr(stepsTail), title, colorScheme_->text, 4.0, Qt::AlignLeft, panel);
    tail->move(stepText->x() + 2, stepsTop);
    // A screen reader reads the steps once, as one sentence in order; the pieces around the
    // steps' text are only drawn.
    for (QWidget* piece : {static_cast<QWidget*>(numbers), static_cast<QWidget*>(dots),
                           static_cast<QWidget*>(tail)})
        panel->setDrawnOnly(piece);
    stepText->setAccessibleName(tr(stepsSpoken));

    openSafariExtensionPreferencesButton_ =
        new FlatButton(tr(openSettingsTitle), openSettingsButtonWidth, colorScheme_->button, panel);
    openSafariExtensionPreferencesButton_->move(warning->x(),
                                                stepText->geometry().bottom() + 1 + 41);
    connect(openSafariExtensionPreferencesButton_, &QPushButton::clicked, this,
            &EnableExtensionView::openSafariExtensionPreferences);

    showAnimation(panel);
}

void EnableExtensionView::showEnabledBody(QWidget* panel, QPoint topLeft)
{
    // Only this build's text is replaced; earlier builds beneath keep theirs.
    if (enabledBody_ && enabledBody_->parentWidget() == panel)
        delete enabledBody_;
    enabledBody_ =
        new TextView(BrowserName::in(tr(enabledBodyText), browserName_), systemFont(16, QFont::Light),
                     colorScheme_->text, 3.0, Qt::AlignLeft, panel);
    enabledBody_->move(topLeft);
    enabledBody_->show();
}

void EnableExtensionView::showAnimation(QWidget* panel)
{
    if (animation_ && animation_->parentWidget() == panel)
        delete animation_;
    animation_ = nullptr;
    const qreal ratio = devicePixelRatioF();
    const auto file = deps_.artwork.animation(
        colorScheme_->enableLexmiraAnimationImage + animationVariant(browserName_), ratio);
    if (file.path.isEmpty())
        return;
    // The files are drawn so that a screen of one or two device pixels to a point needs no
    // scaling; at other densities each frame is scaled once, as it is decoded.
    auto* player = new AnimationView(file.path, file.pixelRatio, ratio, panel);
    if (!player->isValid()) {
        delete player;
        return;
    }
    player->setAccessibleName(tr(animationName));
    player->move(panel->width() - player->width(), panel->height() - player->height());
    // Plays from when its panel is on screen.
    player->show();
    animation_ = player;
}

void EnableExtensionView::refreshBrowserName()
{
    deps_.bridge.getBrowserName(deps_.extensionIdentifier, this,
                                [this](QString name) { setBrowserName(name); });
}

void EnableExtensionView::setBrowserName(const QString& name)
{
    const QString usable = BrowserName::isUsable(name) ? name : QString();
    if (usable == browserName_)
        return;
    const QString oldVariant = animationVariant(browserName_);
    browserName_ = usable;
    if (enabledBody_)
        showEnabledBody(extensionEnabledPanel_, enabledBody_->pos());
    if (animationVariant(browserName_) != oldVariant && enableExtensionPanel_)
        showAnimation(enableExtensionPanel_);
}

void EnableExtensionView::pollState(std::shared_ptr<bool> logOnce)
{
    deps_.bridge.getState(
        deps_.extensionIdentifier, this,
        [this, logOnce](std::optional<bool> enabled, std::optional<ExtensionError> error) {
            showStateResult(error ? std::optional<bool>() : enabled,
                            error ? std::optional(error->localizedDescription) : std::nullopt,
                            logOnce);
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
        // A browser came or went: the one the texts name may be another now.
        refreshBrowserName();
    }
    openLoginTabIfNeeded();
}

void EnableExtensionView::showDisabled()
{
    if (enableExtensionPanel_->isHidden()) {
        extensionEnabledPanel_->hide();
        enableExtensionPanel_->hide();
        enableExtensionPanel_->show();
        refreshBrowserName();
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
        deps_.skrivo, CompanionLogger::openSafari, this,
        [this, button = openSafariButton_](std::optional<ExtensionError> error) {
            if (!error) {
                deps_.terminate();
                return;
            }
            deps_.alerts.runModal({BrowserName::in(tr(openSafariFailure), browserName_),
                                   error->localizedDescription,
                                   Alert::Style::critical,
                                   {tr(okTitle)}});
            if (button)
                button->setEnabled(true);
            deps_.skrivo.log(CompanionLogger::openSafari, LogLevel::error,
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
    button.setBusy(busy);
    if (busy)
        button.setLook(tr(openingTitle), scheme.disableButton, scheme.disableButtonBorder, 1);
    else
        button.setLook(tr(openSettingsTitle), scheme.button, scheme.disableButtonBorder, 0);
}

} // namespace lexmira

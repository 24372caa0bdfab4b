// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "EnableExtensionView/AnimationView.h"
#include "EnableExtensionView/Artwork.h"
#include "EnableExtensionView/ColorScheme.h"
#include "EnableExtensionView/FlatButton.h"
#include "EnableExtensionView/Panel.h"
#include "EnableExtensionView/TextView.h"
#include "logging/Skrivo.h"

#include <QLabel>
#include <QPointer>
#include <QWidget>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace lexmira {

class AlertPresenter;
class Appearance;
class ExtensionBridge;
class ExtensionPreferences;
class OAuth;
class SharedData;

// The content of the main window, 550 × 367: whether the extension is enabled, and the way to
// enable it. Polls the extension's state once a second for as long as it lives, and follows the
// desktop's light or dark appearance. Main thread only.
class EnableExtensionView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 550;
    static constexpr int height = 367;

    // Everything the view talks to; each must outlive the view.
    struct Dependencies {
        ExtensionBridge& bridge;
        QString extensionIdentifier;
        OAuth& oauth;
        const SharedData& sharedData;
        Skrivo skrivo;
        AlertPresenter& alerts;
        Appearance& appearance;
        ExtensionPreferences& extensionPreferences;
        Artwork artwork;
        // Ends the application once the browser has the user.
        std::function<void()> terminate;
        std::chrono::milliseconds pollInterval = std::chrono::seconds(1);
    };

    explicit EnableExtensionView(Dependencies dependencies, QWidget* parent = nullptr);
    ~EnableExtensionView() override;

    // The panels and buttons of the latest build; earlier builds stay beneath them.
    QWidget* extensionEnabledPanel() const { return extensionEnabledPanel_; }
    FlatButton* openSafariButton() const { return openSafariButton_; }
    QWidget* enableExtensionPanel() const { return enableExtensionPanel_; }
    FlatButton* openSafariExtensionPreferencesButton() const
    {
        return openSafariExtensionPreferencesButton_;
    }
    const std::optional<ColorScheme>& colorScheme() const { return colorScheme_; }
    // The browser the texts name, as the extension's side last reported it; empty when it named
    // none (the texts then name the browser as written).
    const QString& browserName() const { return browserName_; }
    // The enabled panel's body text and the enable animation of the latest build; both follow
    // the browser's name.
    TextView* enabledBody() const { return enabledBody_; }
    AnimationView* animation() const { return animation_; }

    // Rebuilds the panels in the colours of the current appearance, over the old ones, and
    // starts one more state-polling loop.
    void interfaceModeChanged();
    // "Ok, got it": asks the extension to open the browser; the application ends on success.
    void openSafari();
    // "Open settings to enable Lexmira": opens the extension's settings page.
    void openSafariExtensionPreferences();

private:
    void buildContent();
    Panel* makePanel();
    void buildExtensionEnabledPanel(Panel* panel);
    void buildEnableExtensionPanel(Panel* panel);
    void pollState(std::shared_ptr<bool> logOnce);
    void showStateResult(std::optional<bool> enabled, std::optional<QString> error,
                         const std::shared_ptr<bool>& logOnce);
    void showEnabled();
    void showDisabled();
    void openLoginTabIfNeeded();
    void showEnabledBody(QWidget* panel, QPoint topLeft);
    void showAnimation(QWidget* panel);
    // Asks the extension's side which browser it runs in; the texts follow the answer.
    void refreshBrowserName();
    void setBrowserName(const QString& name);
    static void setSettingsButtonBusy(FlatButton& button, const ColorScheme& scheme, bool busy);

    Dependencies deps_;
    QPointer<Panel> extensionEnabledPanel_;
    QPointer<FlatButton> openSafariButton_;
    QPointer<Panel> enableExtensionPanel_;
    QPointer<FlatButton> openSafariExtensionPreferencesButton_;
    QPointer<TextView> enabledBody_;
    QPointer<AnimationView> animation_;
    std::optional<ColorScheme> colorScheme_;
    QString browserName_;
};

} // namespace lexmira

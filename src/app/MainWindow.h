// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMainWindow>

#include <memory>

namespace lexmira {

class EnableExtensionViewController;

// The one window: titled, closable, minimisable, never resizable; its content is the
// enable-extension view, and it can be dragged by its background.
class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(const QString& title, std::unique_ptr<EnableExtensionViewController> content);
    ~MainWindow() override;

    EnableExtensionViewController& contentViewController() const { return *content_; }

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    std::unique_ptr<EnableExtensionViewController> content_;
    bool exposed_ = false;
};

} // namespace lexmira

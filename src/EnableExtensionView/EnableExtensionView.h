#pragma once

#include <QWidget>

// The content of the main window: 550 × 367, fixed.
class EnableExtensionView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 550;
    static constexpr int height = 367;

    explicit EnableExtensionView(QWidget* parent = nullptr);
};

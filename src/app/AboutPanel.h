// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDialog>

namespace lexmira {

// The standard About panel: the application's icon, name and version, read from the bundle.
class AboutPanel final : public QDialog {
    Q_OBJECT

public:
    explicit AboutPanel(QWidget* parent = nullptr);
};

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "EnableExtensionView/EnableExtensionView.h"

#include <QObject>
#include <QPointer>

namespace lexmira {

// Hosts the enable-extension view. The view is handed to a window, which owns it from then on.
class EnableExtensionViewController final : public QObject {
    Q_OBJECT

public:
    explicit EnableExtensionViewController(EnableExtensionView::Dependencies dependencies,
                                           QObject* parent = nullptr);
    ~EnableExtensionViewController() override;

    EnableExtensionView* view() const { return view_; }

private:
    QPointer<EnableExtensionView> view_;
};

} // namespace lexmira

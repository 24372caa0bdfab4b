// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionViewController.h"

namespace lexmira {

EnableExtensionViewController::EnableExtensionViewController(
    EnableExtensionView::Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , view_(new EnableExtensionView(std::move(dependencies)))
{
}

EnableExtensionViewController::~EnableExtensionViewController()
{
    // A view that never went into a window is still ours.
    if (view_ && !view_->parent())
        delete view_;
}

} // namespace lexmira

#include "EnableExtensionView/EnableExtensionViewController.h"

#include "EnableExtensionView/EnableExtensionView.h"

EnableExtensionViewController::EnableExtensionViewController(QObject* parent)
    : QObject(parent)
    , view_(new EnableExtensionView())
{
}

EnableExtensionViewController::~EnableExtensionViewController()
{
    // A view that never went into a window is still ours.
    if (view_ && !view_->parent())
        delete view_;
}

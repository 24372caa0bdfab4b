#include "EnableExtensionView/EnableExtensionView.h"

EnableExtensionView::EnableExtensionView(QWidget* parent)
    : QWidget(parent)
{
    setFixedSize(width, height);
}

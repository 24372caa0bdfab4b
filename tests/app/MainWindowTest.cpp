// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainWindow.h"
#include "EnableExtensionView/EnableExtensionView.h"
#include "EnableExtensionView/EnableExtensionViewController.h"
#include "app/AppDelegate.h"

#include <gtest/gtest.h>

#include <QScreen>

namespace lexmira {

namespace {

std::unique_ptr<MainWindow> makeWindow()
{
    return std::make_unique<MainWindow>(QStringLiteral("Lexmira"),
                                        AppDelegate::makeEnableExtensionViewController());
}

TEST(MainWindow, ContentIsTheEnableExtensionViewAt550By367)
{
    const auto window = makeWindow();
    window->show();
    auto* content = window->centralWidget();
    ASSERT_NE(content, nullptr);
    EXPECT_EQ(content, window->contentViewController().view());
    EXPECT_NE(qobject_cast<EnableExtensionView*>(content), nullptr);
    EXPECT_EQ(content->size(), QSize(550, 367));
}

TEST(MainWindow, IsTitledWithTheApplicationName)
{
    EXPECT_EQ(makeWindow()->windowTitle(), QStringLiteral("Lexmira"));
}

TEST(MainWindow, IsClosableAndMinimisableButNotResizable)
{
    const auto window = makeWindow();
    window->show();
    const auto flags = window->windowFlags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    const QSize before = window->size();
    window->resize(before + QSize(100, 100));
    EXPECT_EQ(window->size(), before);
}

TEST(MainWindow, IsCentredOnItsScreen)
{
    const auto window = makeWindow();
    const QRect available = window->screen()->availableGeometry();
    EXPECT_LE(std::abs(window->frameGeometry().center().x() - available.center().x()), 1);
    EXPECT_LE(std::abs(window->frameGeometry().center().y() - available.center().y()), 1);
}

} // namespace

} // namespace lexmira

// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/Bundle.h"
#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/CommandLine.h"
#include "app/Doctor.h"
#include "app/Env.h"
#include "app/MainMenu.h"
#include "app/StartupTrace.h"
#include "platform/LaunchActivation.h"
#include "platform/MainBundle.h"
#include "platform/ProcessSession.h"
#include "platform/SingleInstance.h"
#include "platform/SystemHealth.h"

#include <QCoreApplication>
#include <QIcon>
#include <QLocale>
#include <QTranslator>

#include <cstdio>

namespace lexmira {

namespace {

const QString applicationId = QStringLiteral("com.lexmira.companion");

QStringList argumentList(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// The user's language when the bundle has a translation for it; the texts as written (English)
// otherwise.
void installTranslation(QCoreApplication& application, const QString& bundleDirectory)
{
    auto* translator = new QTranslator(&application);
    if (translator->load(QLocale(), QStringLiteral("lexmira"), QStringLiteral("_"),
                         bundleDirectory + QStringLiteral("/translations")))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

void print(std::FILE* stream, const QString& text)
{
    std::fprintf(stream, "%s\n", qUtf8Printable(text.trimmed()));
}

// A launch with no display: it can hand its request to the running instance, which needs only
// the session bus, but it cannot become the instance itself.
int forwardWithoutDisplay(int argc, char** argv, const std::optional<QString>& url,
                          const LaunchActivation& launch)
{
    QCoreApplication application(argc, argv);
    hideCommandLineArguments(argc, argv);
    const auto instance = SingleInstance::create();
    if (instance->claim() == SingleInstance::Role::secondary)
        return instance->forward(url, launch) ? 0 : 1;
    print(stderr, QStringLiteral("lexmira-companion: no display to show the window on (neither "
                                 "DISPLAY nor WAYLAND_DISPLAY is set)"));
    return 1;
}

// The application's icon, drawn ahead at each size the desktop shows it.
QIcon appIcon(const Bundle& bundle)
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128})
        if (const auto path = bundle.pathForResource(QStringLiteral("AppIcon-%1").arg(size),
                                                     QStringLiteral("png")))
            icon.addFile(*path, QSize(size, size));
    return icon;
}

// The doctor runs without a display (over ssh, say): a core application only, and never the
// companion itself.
int runDoctor(int argc, char** argv, const Bundle& bundle, bool json)
{
    QCoreApplication application(argc, argv);
    installTranslation(application, bundle.directory());
    const auto health = SystemHealth::create();
    const Doctor doctor(*health, Installations::fromEnvironment(), bundle,
                        QProcessEnvironment::systemEnvironment(), applicationId);
    const Diagnosis diagnosis = doctor.examine();
    if (json)
        std::fputs(diagnosis.json().constData(), stdout);
    else
        std::fputs(qUtf8Printable(diagnosis.table()), stdout);
    std::fflush(stdout);
    return diagnosis.exitCode();
}

} // namespace

} // namespace lexmira

using namespace lexmira;

int main(int argc, char** argv)
{
    startupTrace::mark("main");
    const Bundle mainBundle(mainBundleDirectory());
    const auto command =
        CommandLine::parse(argumentList(argc, argv),
                           mainBundle.shortVersion().value_or(QStringLiteral(LEXMIRA_VERSION)));
    switch (command.action) {
    case CommandLine::Action::showHelp:
    case CommandLine::Action::showVersion:
        print(stdout, command.text);
        return 0;
    case CommandLine::Action::doctor:
        return runDoctor(argc, argv, mainBundle, command.json);
    case CommandLine::Action::fail:
        print(stderr, QStringLiteral("lexmira-companion: ") + command.text);
        return 2;
    case CommandLine::Action::run:
        break;
    }

    // Taken before the application object connects to the display, which may consume them.
    const auto launch = LaunchActivation::ofThisProcess();
    // A launch that finds the instance running hands its request over before it builds an
    // application object; the checks below still catch an instance that started meanwhile.
    if (const auto handedOver = SingleInstance::handOverIfRunning(command.url, launch))
        return *handedOver ? 0 : 1;
    startupTrace::mark("noInstanceAnswered");
    if (!displayAvailable())
        return forwardWithoutDisplay(argc, argv, command.url, launch);

    Application application(argc, argv);
    startupTrace::mark("applicationBuilt");
    hideCommandLineArguments(argc, argv);
    installTranslation(application, mainBundleDirectory());
    application.setDesktopFileName(applicationId);
    application.setWindowIcon(appIcon(mainBundle));

    // A launch that finds the instance running hands its request over and does nothing else.
    const auto instance = SingleInstance::create();
    if (instance->claim() == SingleInstance::Role::secondary)
        return instance->forward(command.url, launch) ? 0 : 1;
    startupTrace::mark("instanceClaimed");

    // The menu's titles are the first use of the environment, so the whole object graph is
    // built here, before the delegate exists.
    application.setMainMenu(
        std::make_unique<MainMenu>(QString::fromStdString(env().appInfo.appName)));
    startupTrace::mark("menuBuilt");
    AppDelegate::shared();

    QObject::connect(instance.get(), &SingleInstance::activateRequested, &application,
                     &Application::reopen);
    QObject::connect(instance.get(), &SingleInstance::openRequested, &application,
                     [&application](const QStringList& uris, const LaunchActivation& launch) {
                         application.activate(launch);
                         application.openUrls(uris);
                     });
    if (command.url)
        application.openUrls({*command.url});

    return application.run();
}

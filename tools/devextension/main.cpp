// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// lexmira-dev-extension: a development stand-in for the browser extension's native side, so the
// companion's whole flow runs on a machine without a browser. See --help.

#include "Common/EnvCommon.h"
#include "DevExtension.h"
#include "devextension1_interface.h"
#include "platform/SharedSuite.h"
#include "platform/linux/ExtensionBus.h"
#include "shared/SharedData.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusPendingReply>

#include <cstdio>
#include <functional>
#include <map>

namespace lexmira {

namespace {

const QString defaultName = QStringLiteral("com.lexmira.companion.ext");
constexpr int controlTimeoutMs = 10'000;

void printError(const QString& text)
{
    std::fprintf(stderr, "lexmira-dev-extension: %s\n", qUtf8Printable(text));
}

using ControlProxy = ComLexmiraDevExtension1Interface;

// What a "ctl" command calls on a running peer, and the type of its one argument.
struct ControlCommand {
    enum class Argument { none, string, integer, unsignedInteger } argument;
    // Makes the call with the command's argument, converted to its type (invalid for none).
    std::function<QDBusPendingReply<>(ControlProxy&, const QVariant&)> call;
};

const std::map<QString, ControlCommand>& controlCommands()
{
    using A = ControlCommand::Argument;
    using P = ControlProxy;
    using V = QVariant;
    static const std::map<QString, ControlCommand> commands{
        {QStringLiteral("enable"), {A::none, [](P& p, const V&) { return p.SetEnabled(true); }}},
        {QStringLiteral("disable"), {A::none, [](P& p, const V&) { return p.SetEnabled(false); }}},
        {QStringLiteral("fail-next-dispatch"),
         {A::string, [](P& p, const V& a) { return p.FailNextDispatch(a.toString()); }}},
        {QStringLiteral("fail-every-dispatch"),
         {A::string, [](P& p, const V& a) { return p.FailEveryDispatch(a.toString()); }}},
        {QStringLiteral("fail-state"),
         {A::string, [](P& p, const V& a) { return p.FailGetState(a.toString()); }}},
        {QStringLiteral("fail-preferences"),
         {A::string, [](P& p, const V& a) { return p.FailShowPreferences(a.toString()); }}},
        {QStringLiteral("clear-failures"),
         {A::none, [](P& p, const V&) { return p.ClearFailures(); }}},
        {QStringLiteral("enable-after-preferences"),
         {A::integer, [](P& p, const V& a) { return p.SetEnableAfterPreferences(a.toInt()); }}},
        {QStringLiteral("sign-in-on-exchange"),
         {A::none, [](P& p, const V&) { return p.SetSignInOnExchange(true); }}},
        {QStringLiteral("no-sign-in-on-exchange"),
         {A::none, [](P& p, const V&) { return p.SetSignInOnExchange(false); }}},
        {QStringLiteral("reply-delay"),
         {A::unsignedInteger, [](P& p, const V& a) { return p.SetReplyDelay(a.toUInt()); }}},
        {QStringLiteral("wrong-state-type"),
         {A::none, [](P& p, const V&) { return p.SetWrongStateType(true); }}},
        {QStringLiteral("right-state-type"),
         {A::none, [](P& p, const V&) { return p.SetWrongStateType(false); }}},
        {QStringLiteral("browser-name"),
         {A::string, [](P& p, const V& a) { return p.SetBrowserName(a.toString()); }}},
        {QStringLiteral("quit"), {A::none, [](P& p, const V&) { return p.Quit(); }}},
    };
    return commands;
}

const QString helpText = QStringLiteral(R"(
Controlling a running peer:
  lexmira-dev-extension ctl [--name ID] COMMAND [ARGUMENT]
  COMMAND is one of: enable, disable, fail-next-dispatch MESSAGE, fail-every-dispatch MESSAGE,
  fail-state MESSAGE, fail-preferences MESSAGE, clear-failures, enable-after-preferences MS
  (negative: never), sign-in-on-exchange, no-sign-in-on-exchange, reply-delay MS,
  wrong-state-type, right-state-type, browser-name NAME ("" for none), quit.
  The same methods are on the bus as interface com.lexmira.DevExtension1 at the peer's path.

Each call of com.lexmira.Extension1 is appended to the --record file as one JSON line:
  {"method":"DispatchMessage","name":"...","userInfo":"<as received>",
   "storedRecord":"<shared \"message.<name>Message\" at that moment>"|null,"failedWith":"..."}
("name", "userInfo" and "storedRecord" only for DispatchMessage, "failedWith" only when the call
was failed).)");

int control(const QStringList& arguments)
{
    QStringList rest = arguments;
    QString name = defaultName;
    if (rest.size() >= 2 && rest.front() == QLatin1String("--name")) {
        name = rest.at(1);
        rest = rest.mid(2);
    }
    const auto found = controlCommands().find(rest.value(0));
    if (found == controlCommands().end()) {
        printError(QStringLiteral("unknown control command \"%1\"; see --help").arg(rest.value(0)));
        return 2;
    }
    const ControlCommand& command = found->second;
    using A = ControlCommand::Argument;
    const bool needsArgument = command.argument != A::none;
    if (rest.size() != (needsArgument ? 2 : 1)) {
        printError(
            QStringLiteral("%1 takes %2 argument")
                .arg(rest.front(), needsArgument ? QStringLiteral("one") : QStringLiteral("no")));
        return 2;
    }
    QVariant argument;
    bool numeric = true;
    switch (command.argument) {
    case A::none:
        break;
    case A::string:
        argument = rest.at(1);
        break;
    case A::integer:
        argument = rest.at(1).toInt(&numeric);
        break;
    case A::unsignedInteger:
        argument = rest.at(1).toUInt(&numeric);
        break;
    }
    if (!numeric) {
        printError(QStringLiteral("%1 is not a number").arg(rest.at(1)));
        return 2;
    }
    ControlProxy peer(name, ExtensionBus::objectPath(name), QDBusConnection::sessionBus());
    peer.setTimeout(controlTimeoutMs);
    QDBusPendingReply<> answer = command.call(peer, argument);
    answer.waitForFinished();
    if (answer.isError()) {
        printError(answer.error().message());
        return 1;
    }
    return 0;
}

std::optional<std::chrono::milliseconds> milliseconds(const QString& text)
{
    bool ok = false;
    const int value = text.toInt(&ok);
    if (!ok || value < 0)
        return std::nullopt;
    return std::chrono::milliseconds(value);
}

} // namespace

} // namespace lexmira

using namespace lexmira;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("lexmira-dev-extension"));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("ctl"))
        return control(arguments.mid(2));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A stand-in for the Lexmira browser extension's native side on the session "
                       "bus: owns its name, answers com.lexmira.Extension1 and records every "
                       "call.") +
        helpText);
    parser.addHelpOption();
    const QCommandLineOption nameOption(
        QStringLiteral("name"), QStringLiteral("The extension identifier (bus name) to own."),
        QStringLiteral("ID"), defaultName);
    const QCommandLineOption disabledOption(QStringLiteral("disabled"),
                                            QStringLiteral("Start disabled (default: enabled)."));
    const QCommandLineOption recordOption(
        QStringLiteral("record"), QStringLiteral("Append every call as a JSON line to FILE."),
        QStringLiteral("FILE"));
    const QCommandLineOption failNextOption(
        QStringLiteral("fail-next-dispatch"),
        QStringLiteral("Fail the next DispatchMessage with MESSAGE."), QStringLiteral("MESSAGE"));
    const QCommandLineOption failEveryOption(
        QStringLiteral("fail-every-dispatch"),
        QStringLiteral("Fail every DispatchMessage with MESSAGE."), QStringLiteral("MESSAGE"));
    const QCommandLineOption failStateOption(QStringLiteral("fail-state"),
                                             QStringLiteral("Fail every GetState with MESSAGE."),
                                             QStringLiteral("MESSAGE"));
    const QCommandLineOption failPreferencesOption(
        QStringLiteral("fail-preferences"),
        QStringLiteral("Fail every ShowPreferences with MESSAGE."), QStringLiteral("MESSAGE"));
    const QCommandLineOption enableAfterOption(
        QStringLiteral("enable-after-preferences"),
        QStringLiteral("Become enabled MS milliseconds after ShowPreferences."),
        QStringLiteral("MS"));
    const QCommandLineOption signInOption(
        QStringLiteral("sign-in-on-exchange"),
        QStringLiteral("Answer an \"oauthExchange\" carrying a code and a challenge by storing a "
                       "signed-in user as the shared \"userInfo\"."));
    const QCommandLineOption userIdOption(QStringLiteral("user-id"),
                                          QStringLiteral("userId of the signed-in user."),
                                          QStringLiteral("ID"), QStringLiteral("dev-user"));
    const QCommandLineOption containerIdOption(
        QStringLiteral("container-id"), QStringLiteral("containerId of the signed-in user."),
        QStringLiteral("ID"), QStringLiteral("dev-container"));
    const QCommandLineOption replyDelayOption(
        QStringLiteral("reply-delay"),
        QStringLiteral("Answer every call of the extension's interface after MS milliseconds."),
        QStringLiteral("MS"));
    const QCommandLineOption wrongStateTypeOption(QStringLiteral("wrong-state-type"),
                                                  QStringLiteral("Answer GetState with a string."));
    const QCommandLineOption browserNameOption(
        QStringLiteral("browser-name"),
        QStringLiteral("Report NAME as the property BrowserName (default: empty, none known)."),
        QStringLiteral("NAME"));
    parser.addOptions({nameOption, disabledOption, recordOption, failNextOption, failEveryOption,
                       failStateOption, failPreferencesOption, enableAfterOption, signInOption,
                       userIdOption, containerIdOption, replyDelayOption, wrongStateTypeOption,
                       browserNameOption});
    parser.process(application);

    DevExtension::Behaviour behaviour;
    behaviour.enabled = !parser.isSet(disabledOption);
    if (parser.isSet(failNextOption))
        behaviour.failNextDispatch = parser.value(failNextOption);
    if (parser.isSet(failEveryOption))
        behaviour.failEveryDispatch = parser.value(failEveryOption);
    if (parser.isSet(failStateOption))
        behaviour.failGetState = parser.value(failStateOption);
    if (parser.isSet(failPreferencesOption))
        behaviour.failShowPreferences = parser.value(failPreferencesOption);
    for (const auto* option : {&enableAfterOption, &replyDelayOption}) {
        if (!parser.isSet(*option))
            continue;
        const auto value = milliseconds(parser.value(*option));
        if (!value) {
            printError(
                QStringLiteral("--%1 takes a number of milliseconds").arg(option->names().front()));
            return 2;
        }
        if (option == &enableAfterOption)
            behaviour.enableAfterPreferences = value;
        else
            behaviour.replyDelay = *value;
    }
    behaviour.signInOnExchange = parser.isSet(signInOption);
    behaviour.signedInUser.userId = parser.value(userIdOption).toStdString();
    behaviour.signedInUser.containerId = parser.value(containerIdOption).toStdString();
    behaviour.wrongStateType = parser.isSet(wrongStateTypeOption);
    behaviour.browserName = parser.value(browserNameOption);

    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCWarning(lcDevExtension, "no session bus: %s", qUtf8Printable(bus.lastError().message()));
        return 1;
    }
    const QString name = parser.value(nameOption);

    // The same suite, through the same code, as the companion: what it stores is byte for byte
    // what the companion reads.
    std::shared_ptr<SharedSuite> suite = SharedSuite::open(QString::fromUtf8(appGroupSuiteName));
    if (!suite && behaviour.signInOnExchange)
        qCWarning(lcDevExtension, "the shared suite cannot be opened; signing in stores nothing");
    SharedData sharedData(suite, nullptr);

    DevExtension extension(bus, behaviour, parser.value(recordOption), sharedData);
    if (!bus.registerObject(ExtensionBus::objectPath(name), &extension,
                            QDBusConnection::ExportAdaptors)) {
        qCWarning(lcDevExtension, "cannot export %s: %s",
                  qUtf8Printable(ExtensionBus::objectPath(name)),
                  qUtf8Printable(bus.lastError().message()));
        return 1;
    }
    const auto claimed =
        bus.interface()->registerService(name, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (!claimed.isValid() || claimed.value() != QDBusConnectionInterface::ServiceRegistered) {
        qCWarning(lcDevExtension, "cannot own %s: %s", qUtf8Printable(name),
                  claimed.isValid() ? "another process owns it"
                                    : qUtf8Printable(claimed.error().message()));
        return 1;
    }
    std::printf("lexmira-dev-extension: serving %s at %s\n", qUtf8Printable(name),
                qUtf8Printable(ExtensionBus::objectPath(name)));
    std::fflush(stdout);
    return application.exec();
}

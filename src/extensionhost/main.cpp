#include "extensionhost/InstallCommand.h"
#include "extensionhost/Installations.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList arguments = app.arguments().mid(1);

    if (arguments.value(0) == QStringLiteral("--help")) {
        out << extensionHostUsage();
        return kExitOk;
    }
    if (arguments.value(0) == QStringLiteral("--version")) {
        out << "lexmira-extension-host " << LEXMIRA_VERSION << "\n";
        return kExitOk;
    }
    if (!isInstallCommand(arguments)) {
        err << "lexmira-extension-host: not available yet.\n";
        return kExitUsage;
    }
    // No broker to ask yet: status says so.
    return runInstallCommand(
        arguments, Installations::fromEnvironment(), QCoreApplication::applicationFilePath(),
        [] { return std::optional<std::vector<ConnectionSummary>>(); }, out, err);
}

#include <QApplication>

#include <exception>

#include "command_line.h"
#include "console.h"
#include "extract_command.h"
#include "host_tabs.h"
#include "plugin_library.h"
#include "recover_command.h"
#include "result_commands.h"
#include "volumes_command.h"

using namespace Qt::StringLiterals;

namespace {

QStringList arguments_of(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

/// Messages of Qt itself, which become notices like all others.
void show_qt_message(QtMsgType, const QMessageLogContext &, const QString &text)
{
    // Without a login session Qt only tells which folder it uses instead of the session's.
    if (!text.startsWith("QStandardPaths: XDG_RUNTIME_DIR not set"_L1))
        print_notice(text);
}

exit_code show(const command_line &command)
{
    if (command.code == exit_complete)
        write_line(stdout, command.text);
    else
        print_notice(command.text);
    return command.code;
}

/// Help is shown whether or not the plug-in can be asked for its tabs.
exit_code show_help(const QString &plugin_file)
{
    const loaded_plugin plugin = load_plugin(plugin_file);
    const QList<host_tab> tabs =
        plugin.object == nullptr ? QList<host_tab>() : tabs_of(*plugin.object);
    write_line(stdout, extract_help_text(names_of(tabs)));
    return exit_complete;
}

exit_code run(int argc, char **argv)
{
    const command_line command = parse_command_line(arguments_of(argc, argv));
    if (command.volumes)
        return list_volumes(*command.volumes);
    if (command.recover)
        return recover(*command.recover);
    if (command.results)
        return look_at_results(*command.results);
    if (!command.extract && !command.help_with_plugin)
        return show(command);
    qInstallMessageHandler(show_qt_message);
    // A plug-in is a widget, so Qt needs a platform; nothing is shown. The first looks for no
    // fonts.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "minimal;offscreen");
    // Qt removes its own options from the arguments it gets. All arguments are the examiner's.
    int program_name_only = 1;
    const QApplication application(program_name_only, argv);
    return command.extract ? extract(*command.extract) : show_help(*command.help_with_plugin);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        print_notice(u"the run failed: %1"_s.arg(QString::fromLocal8Bit(error.what())));
        return exit_run_failed;
    }
}

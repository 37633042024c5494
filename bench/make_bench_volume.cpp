#include "bench_volume.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse(const QString &reason)
{
    throw std::runtime_error(reason.toStdString());
}

/// Replaces the sizes that are given one by one.
void replace_sizes(volume_sizes &sizes, const QCommandLineParser &parser)
{
    for (const named_size &known : named_sizes()) {
        if (!parser.isSet(known.name))
            continue;
        bool is_number = false;
        sizes.*known.size = parser.value(known.name).toInt(&is_number);
        if (!is_number || sizes.*known.size < 0)
            refuse(u"--%1 takes a number from 0 on"_s.arg(known.name));
    }
    if (sizes.class_ids == 0 || sizes.uninstall_every == 0)
        refuse(u"--class-ids and --uninstall-every take numbers from 1 on"_s);
}

void declare_arguments(QCommandLineParser &parser)
{
    parser.setApplicationDescription(u"Writes a Windows volume for benchmarks."_s);
    parser.addPositionalArgument(u"SCENARIO"_s, scenario_names().join(u", "_s));
    parser.addPositionalArgument(u"DIR"_s, u"A new or empty folder."_s);
    for (const named_size &known : named_sizes())
        parser.addOption({known.name, u"Instead of the scenario's own number."_s, u"N"_s});
    parser.addHelpOption();
}

void write(const QCommandLineParser &parser)
{
    const QStringList arguments = parser.positionalArguments();
    std::optional<volume_sizes> sizes = scenario(arguments.value(0));
    if (arguments.size() != 2 || !sizes)
        refuse(u"give a scenario (%1) and a folder"_s.arg(scenario_names().join(u", "_s)));
    replace_sizes(*sizes, parser);
    const QDir folder(arguments.at(1));
    if (folder.exists() && !folder.isEmpty())
        refuse(folder.path() + u" is not empty; nothing was written"_s);
    write_bench_volume(folder.path(), *sizes);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    declare_arguments(parser);
    parser.process(application);
    try {
        write(parser);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "make_bench_volume: %s\n", error.what());
        return 1;
    }
}

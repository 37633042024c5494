#include "demo_volume.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdio>
#include <exception>

using namespace Qt::StringLiterals;

namespace {

enum exit_code
{
    written = 0,
    not_written = 1, ///< a file or folder could not be made
    refused = 2      ///< wrong arguments, or a folder that is not empty
};

int fail(exit_code code, const QString &reason)
{
    std::fprintf(stderr, "demo_volume: %s\n", qPrintable(reason));
    return code;
}

void print(const QString &text)
{
    std::fprintf(stdout, "%s\n", qPrintable(text));
}

/// Why nothing may be written to the folder; empty when it may.
QString objection_to(const QString &folder)
{
    const QFileInfo info(folder);
    if (info.exists() && !info.isDir())
        return folder + u" is not a folder"_s;
    const QDir::Filters everything = QDir::AllEntries | QDir::Hidden | QDir::System;
    if (info.exists() && !QDir(folder).isEmpty(everything | QDir::NoDotAndDotDot))
        return folder + u" is not empty; nothing was written"_s;
    return {};
}

int write_to(const QString &folder)
{
    const QString objection = objection_to(folder);
    if (!objection.isEmpty())
        return fail(refused, objection);
    try {
        const QStringList accounts = demo::write_demo_volume(folder);
        print(u"Demonstration volume written to %1 (accounts: %2)"_s.arg(folder,
                                                                         accounts.join(u", "_s)));
    } catch (const std::exception &error) {
        return fail(not_written, QString::fromUtf8(error.what()));
    }
    return written;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Writes a demonstration Windows volume."_s);
    parser.addPositionalArgument(u"DIR"_s, u"A new or empty folder."_s);
    const QCommandLineOption help = parser.addHelpOption();
    if (!parser.parse(QCoreApplication::arguments()))
        return fail(refused, parser.errorText());
    if (parser.isSet(help)) {
        print(parser.helpText());
        return written;
    }
    if (parser.positionalArguments().size() != 1)
        return fail(refused, u"give one folder: demo_volume DIR"_s);
    return write_to(parser.positionalArguments().first());
}

#include "extraction_process.h"

#include "file_privileges.h"

#include <stdexcept>

namespace test_support {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

/// Takes one line of the process's output into the outcome.
void note(extraction_outcome &outcome, const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    const auto number = [&words](qsizetype index) { return words.at(index).toLongLong(); };
    if (words.first() == "fault") {
        outcome.had_fault = true;
        outcome.finished_tabs_before_fault = outcome.finished_tabs;
    } else if (words.first() == "done") {
        outcome.completed = true;
        outcome.steps = number(1);
        outcome.writes = number(2);
        outcome.hive_opens = number(3);
        outcome.microseconds = number(4);
        outcome.cpu_ms = number(5);
        outcome.peak_kib = number(6);
        outcome.waited_us = number(7);
    } else if (words.first() == "records" || words.first() == "tabs") {
        outcome.events.append(QString::fromLatin1(line));
        outcome.finished_tabs += words.first() == "tabs" ? 1 : 0;
    }
}

} // namespace

extraction_process::extraction_process(const evidence_volume &volume, const QString &result_folder)
    : m_command{QStringLiteral(EXTRACTION_CHILD)}
{
    option(u"source"_s, volume.root());
    option(u"result"_s, result_folder);
    accounts(volume.accounts());
}

extraction_process &extraction_process::option(const QString &name, const QString &value)
{
    m_arguments.append(u"--"_s + name + u'=' + value);
    return *this;
}

extraction_process &extraction_process::accounts(const QStringList &names)
{
    for (const QString &name : names)
        option(u"account"_s, name);
    return *this;
}

extraction_process &extraction_process::tabs(const QStringList &names)
{
    for (const QString &name : names)
        option(u"tab"_s, name);
    return *this;
}

extraction_process &extraction_process::clear_tables()
{
    m_arguments.append(u"--clear"_s);
    return *this;
}

extraction_process &extraction_process::log(const QString &path)
{
    return option(u"log"_s, path);
}

extraction_process &extraction_process::fault(disk_fault fault, qint64 at)
{
    option(u"fault"_s, QString::number(static_cast<int>(fault)));
    return option(u"at"_s, QString::number(at));
}

extraction_process &extraction_process::file_size_limit(qint64 bytes)
{
    return option(u"file-size-limit"_s, QString::number(bytes));
}

extraction_process &extraction_process::memory_limit(qint64 bytes)
{
    return option(u"memory-limit"_s, QString::number(bytes));
}

extraction_process &extraction_process::kill_after(qint64 microseconds)
{
    return option(u"kill-after"_s, QString::number(microseconds));
}

extraction_process &extraction_process::read_only_source()
{
    m_arguments.append(u"--read-only-source"_s);
    return *this;
}

extraction_process &extraction_process::without_privileges()
{
    m_unprivileged = true;
    return *this;
}

extraction_process &extraction_process::under(const QStringList &command)
{
    m_command = command + m_command;
    return *this;
}

extraction_outcome extraction_process::run()
{
    QProcess process;
    if (m_unprivileged)
        process.setChildProcessModifier(drop_file_privileges);
    process.start(m_command.first(), m_command.mid(1) + m_arguments);
    if (!process.waitForStarted(-1) || !process.waitForFinished(-1))
        throw std::runtime_error("the process does not run");

    extraction_outcome outcome;
    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    for (const QByteArray &line : lines)
        note(outcome, line);
    outcome.errors = process.readAllStandardError();
    if (process.exitStatus() == QProcess::CrashExit)
        outcome.signal_number = process.exitCode();
    else
        outcome.not_permitted = process.exitCode() == not_permitted_exit_code;
    return outcome;
}

} // namespace test_support

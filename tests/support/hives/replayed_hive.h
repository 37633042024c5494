#ifndef REPLAYED_HIVE_H
#define REPLAYED_HIVE_H

#include "hive_builder.h"
#include "log_replay.h"
#include "regf_format.h"

#include <QByteArray>
#include <QList>
#include <QTest>

namespace test_support {

/// A hive after logs were applied, and what was told of that.
struct replayed_hive
{
    QByteArray bytes;
    replay_report report;

    /// All behind the base block.
    QByteArray bins() const { return bytes.mid(regf::first_bin); }

    QList<log_state> states() const
    {
        QList<log_state> states;
        for (const log_report &log : report.logs)
            states.append(log.state);
        return states;
    }
};

/// Applies the logs, which are named by their numbers from 1 on.
inline replayed_hive replayed(const QByteArray &hive, const QList<QByteArray> &logs)
{
    QList<log_input> inputs;
    for (const QByteArray &log : logs)
        inputs.append({QString::number(inputs.size() + 1), [log] { return std::optional(log); }});
    replayed_hive result{hive, {}};
    result.report = replay_logs(result.bytes, inputs);
    return result;
}

/// The columns of a test of which logs apply; replay_row() adds a row.
inline void add_replay_columns()
{
    QTest::addColumn<QByteArray>("hive");
    QTest::addColumn<QList<QByteArray>>("logs");
    QTest::addColumn<int>("state"); // of which the bins are afterwards
    QTest::addColumn<quint32>("sequence");
    QTest::addColumn<QList<log_state>>("states");
}

inline void replay_row(const char *name, const QByteArray &hive, const QList<QByteArray> &logs,
                       int state, quint32 sequence, const QList<log_state> &states)
{
    QTest::newRow(name) << hive << logs << state << sequence << states;
}

/// A hive of `states` changes: each adds a key with some values, and pages to the file.
inline QByteArray hive_in_state(int states)
{
    using namespace Qt::StringLiterals;
    evidence::hive_builder hive;
    for (int state = 0; state <= states; ++state)
        hive.key(u"Software\\Program %1"_s.arg(state))
            .text(u"Name"_s, QString(100 * state + 1, u'x'))
            .binary(u"Data"_s, QByteArray(9000, char('a' + state)));
    return hive.bytes();
}

} // namespace test_support

#endif

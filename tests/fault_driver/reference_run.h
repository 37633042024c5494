#ifndef REFERENCE_RUN_H
#define REFERENCE_RUN_H

#include "extraction_process.h"

#include <QHash>
#include <QTemporaryDir>
#include <functional>

namespace test_support {

/// A volume, and what an undisturbed run makes of it, to hold runs with a fault against. Throws
/// std::runtime_error when that run is not whole.
class reference_run
{
public:
    /// A volume with a few rows for every table.
    reference_run();

    /// A volume with whatever evidence `add_evidence` adds.
    explicit reference_run(const std::function<void(evidence::evidence_volume &)> &add_evidence);

    const evidence::evidence_volume &volume() const { return m_volume; }

    /// A result folder that does not exist yet and goes with the object.
    QString fresh_folder();

    /// A run over the volume in a process of its own.
    extraction_process process(const QString &result_folder) const;

    /// The table's rows after an undisturbed run, as rows_in() gives rows.
    QList<QStringList> rows_of(const QString &table) const { return m_rows.value(table); }

    /// The messages of the debug log of an undisturbed run, its database called DATABASE.
    const QStringList &log() const { return m_log; }

    /// The run's outcome, counts included.
    const extraction_outcome &outcome() const { return m_outcome; }

private:
    evidence::evidence_volume m_volume;
    QTemporaryDir m_folder;
    int m_folders = 0;
    QHash<QString, QList<QStringList>> m_rows;
    QStringList m_log;
    extraction_outcome m_outcome;
};

/// How many rows add_many_applications() gives install_apps_64; the other tables get none.
constexpr int many_row_count = 4000;

/// Adds more rows than SQLite keeps in memory: it writes some into the file while others are still
/// inserted.
void add_many_applications(evidence::evidence_volume &volume);

/// Where the plug-in puts the database below a result folder.
QString database_in(const QString &result_folder);

/// The rows of a table without their row ids.
QList<QStringList> rows_in(const QString &database_path, const QString &table);

/// Whether all rows of `part` stand in `whole`, in the same order.
bool is_part_of(const QList<QStringList> &part, const QList<QStringList> &whole);

/// What SQLite's integrity check says, after a connection that may write has put right what a dead
/// process left: "ok" if all is well.
QString integrity_after_recovery(const QString &database_path);

/// An existing, empty file for the debug log in the folder.
QString make_log_file(const QString &folder);

/// The messages of a debug log whose lines are one line each, the database called DATABASE.
QStringList messages_in(const QString &log_path, const QString &database_path);

/// The same for a log that was not written into a file.
QStringList messages_of(const QByteArray &log, const QString &database_path);

} // namespace test_support

#endif

#ifndef HOST_TEST_H
#define HOST_TEST_H

#include "evidence_volume.h"
#include "host_process.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

namespace test_support {

/// What the tests of the program share: a folder of their own for each test, and the runs whose
/// results go there.
class host_test
{
protected:
    /// To be called before each test: an empty folder.
    void begin_test() { m_folder = std::make_unique<QTemporaryDir>(); }

    /// The folder of the test, and paths in it. The canonical one leads through no link.
    QString folder() const { return m_folder->path(); }
    QString canonical_folder() const;
    QString folder_path(const QString &name) const { return m_folder->filePath(name); }
    QString result_path() const { return folder_path(QStringLiteral("results")); }
    QString database_path() const;

    /// The run record's file, the entries of its runs, and the last one of them. What is no record
    /// throws std::runtime_error.
    QString record_path() const;
    QList<QJsonObject> recorded_runs() const;
    QJsonObject last_run() const { return recorded_runs().last(); }

    /// The arguments that extract `source` into result_path().
    QStringList arguments(const QString &source, const QStringList &more = {}) const;
    /// Extracts the volume into result_path() and waits for the end.
    host_result extract(const evidence::evidence_volume &volume,
                        const QStringList &more = {}) const;

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};

/// Where the hives of the machine's software stand in a source.
extern const QString software_file;
extern const QString backup_file;

/// The options that load the plug-in that reports each call instead of the one under test.
extern const QStringList recorded;

/// How the host counts finished tabs where all of the plug-in's run: "1 of 8 tabs".
QString of_all_tabs(int done);

/// A line of the progress of such a run.
QString progress_line(int done, int rows);

/// The line of the total, which stands before the database's path.
QString total_line(const host_result &result);

/// Two applications of 64 bits, one of 32 bits and a registered one.
void fill_software(evidence::hive_builder &hive);

/// Two programs that were run, one of them an uninstaller; a stored program and a hidden icon.
void fill_user(evidence::hive_builder &hive);

/// Both of these: Ann has a hive and a package, Bob a package only.
std::unique_ptr<evidence::evidence_volume> small_volume();

/// How many rows a run over it gives the table; none for tables that it has nothing for.
int small_volume_rows(const QString &table);

/// What the program reports of that volume: a line for each table of the plug-in and the total; the
/// lines of its progress; and what it warns of.
extern const QStringList small_volume_report;
extern const QStringList small_volume_progress;
extern const QString bob_has_no_hive;

/// The lines that tell the options of a run.
extern const QString every_option;
extern const QString no_option;

/// The line that names the command to look at the rows in a folder.
QString next_line(const QString &folder);

} // namespace test_support

#endif

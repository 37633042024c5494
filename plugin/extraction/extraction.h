#ifndef EXTRACTION_H
#define EXTRACTION_H

#include "artifact.h"
#include "extraction_options.h"
#include "hive_output.h"
#include "result_table_writer.h"

#include <QString>
#include <QStringList>

#include <functional>

class hive_pool;

/// What each extraction knows of the run of all tables.
struct extraction_context
{
    QString database_path;
    QString source_root_path;          ///< where the source is mounted, ending in "/"
    QString software_hive_path;        ///< empty when missing
    QStringList user_hive_paths;       ///< in the order of the accounts
    QStringList package_folder_paths;  ///< in the order of the accounts
    QString virtual_source_path;       ///< the source kind of the path helpers
    QString os_scheme_display;         ///< written into every row
    const bool *is_cancelled;          ///< set when the run is cancelled
    std::function<void()> row_written; ///< counts a row and signals progress
    extraction_options options;
    hive_pool *kept_hives;   ///< where hives stay open for later tables; null when none does
    bool is_last_of_machine; ///< whether no later table reads the SOFTWARE hive
    bool is_last_of_users;   ///< whether no later table reads the users' hives

    /// What a table gets at most from the hive at the path.
    std::function<hive_output::limit(const QString &)> most_output_of;

    /// Returns where a file of the source lies. Its name may differ from `path` in letter case, if
    /// the host asked for that; `tell` then gets a text where several names would do.
    std::function<QString(const QString &path, const std::function<void(const QString &)> &tell)>
        find_on_volume;
};

/// The running extraction of one artefact into its table.
class extraction
{
public:
    /// Both must outlive the extraction.
    extraction(const artifact &extracted, const extraction_context &context);

    /// Opens the table, lets the artefact write its rows, commits them however that ends, and logs
    /// the beginning and the end.
    void run();

    /// The artefact and the run that it belongs to.
    const artifact &extracted() const { return m_artifact; }
    const extraction_context &context() const { return m_context; }
    /// Whether the run was cancelled; rows are written no more then.
    bool is_cancelled() const { return *m_context.is_cancelled; }

    /// Returns where the source file named by `path` lies. That differs from `path` only if letter
    /// case is ignored and nothing lies at `path` itself.
    QString on_volume(const QString &path) const;

    /// From now on rows are inserted by another statement of the same table.
    void use_statement(QLatin1StringView insert_statement)
    {
        m_writer.use_statement(insert_statement);
    }

    /// Inserts and counts one row: its own columns and source_columns(). A failure is logged.
    void write_row(const QStringList &values);

    /// Returns the columns that end every row that is read from `path`: source_file,
    /// os_scheme_display and source_count_name. `user_name` is empty outside of a user's files.
    QStringList source_columns(const QString &path, const QString &user_name) const;

    /// Returns the name of the account whose file lies at `path`.
    QString user_of(const QString &path) const;

    /// Removes the source's root from the start of `path`, if it stands there.
    QString without_source_root(const QString &path) const;

    /// Logs `text` behind the artefact's tag.
    void log(const QString &text) const;

private:
    const artifact &m_artifact;
    const extraction_context &m_context;
    result_table_writer m_writer;
};

#endif

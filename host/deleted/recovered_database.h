#ifndef RECOVERED_DATABASE_H
#define RECOVERED_DATABASE_H

#include <QHash>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include "deleted_records.h"
#include "rebuilt_generations.h"
#include "recovered_keys.h"
#include "result_location.h"

/// Where a find comes from.
struct find_origin
{
    QString evidence_file; ///< relative to the volume
    QString account;       ///< empty for the machine's hive
    QString source_count_name;
};

/// The database of rows that come from deleted records: the tables of a result with four columns
/// more, and a table of all finds. The plug-in fills the tables, this object the rest.
class recovered_database
{
public:
    /// Opens the file, or makes it. `failure()` tells what goes wrong from then on.
    explicit recovered_database(const QString &file);
    ~recovered_database();
    Q_DISABLE_COPY_MOVE(recovered_database)

    const QString &failure() const { return m_failure; }

    /// Enters all finds of a hive in one transaction. Ends early when `cancelled` says so.
    void add_finds(const deleted_records &records, const find_origin &origin,
                   const cancel_test &cancelled);

    /// Adds the columns to the tables that do not have them.
    void extend_tables(const QStringList &tables);

    /// Tells of each row of the keys' tabs that has not been told of yet what it comes from:
    /// `by_hive` has the records of the hives that were read, by the path that rows name; the
    /// machine's is under an empty one. Rows that come from none are removed.
    void tell_origins(const QList<recovered_key> &keys,
                      const QHash<QString, QHash<QString, placed_record>> &by_hive,
                      const QHash<QString, QString> &evidence_files);

    /// How many rows there are in the table.
    qint64 count_in(const QString &table);
    qint64 rows_removed() const { return m_rows_removed; }

private:
    void tell_origins_in(const QString &tab, const row_rule &rule,
                         const QHash<QString, QHash<QString, placed_record>> &by_hive,
                         const QHash<QString, QString> &evidence_files);
    void add_find(QSqlQuery &insert, const deleted_records &records, const deleted_key &key,
                  const deleted_value *value, const find_origin &origin);
    bool run(QSqlQuery &query);
    void run(const QString &statement);

    QSqlDatabase m_database;
    QString m_failure;
    qint64 m_rows_removed = 0;
};

/// Why the database of deleted records cannot be made; nothing if it can.
std::optional<refusal> check_deleted_database(const result_location &location);

#endif

#ifndef PARTS_TABLE_H
#define PARTS_TABLE_H

#include "log_capture.h"
#include "log_line.h"
#include "result_database.h"
#include "result_file.h"
#include "result_table_writer.h"

#include <QTemporaryDir>

namespace test_support {

constexpr QLatin1StringView fill_parts_signature("void parts_table::fill_parts()");

/// A table that is none of the plug-in's.
constexpr result_tab parts_tab = {
    QLatin1StringView("parts"),
    QLatin1StringView("create table parts(name, number integer, note)"),
    QLatin1StringView("insert into parts(name,number) values(?,?)"),
    fill_parts_signature,
    QLatin1StringView("[fill_parts]"),
    QLatin1StringView("---STARTS---"),
    QLatin1StringView(" insert -----FAILED----- parts"),
    true,
};

/// A database file with that table, and the captured log.
struct parts_table
{
    const log_capture log;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("parts.sqlite"));

    explicit parts_table(const QString &encoding = QStringLiteral("UTF-8"))
    {
        const sqlite_connection connection(path);
        execute(connection.database, QStringLiteral("pragma encoding = '%1'").arg(encoding));
        execute(connection.database, parts_tab.create_statement);
    }

    QList<QStringList> rows() const
    {
        return result_database(path).rows(
            QStringLiteral("parts"),
            {QStringLiteral("name"), QStringLiteral("number"), QStringLiteral("note")});
    }
};

/// The connection of the writer that is open.
inline QSqlDatabase writers_connection()
{
    return QSqlDatabase::database(fill_parts_signature, false);
}

/// The lines of the log that give the messages.
inline QStringList parts_lines(const QStringList &messages)
{
    return log_lines(QStringLiteral("parts_table::fill_parts"), messages);
}

/// The lines for a row that could not be inserted.
inline QStringList failure_lines(const QString &path, const insert_outcome &outcome)
{
    return parts_lines({QStringLiteral("[fill_parts] insert -----FAILED----- parts") + path,
                        outcome.error, outcome.statement});
}

} // namespace test_support

#endif

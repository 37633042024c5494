#ifndef MADE_RESULT_H
#define MADE_RESULT_H

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <memory>

#include "column.h"
#include "opened_result.h"

namespace test_support {

/// A column and the SQL expression of its value: {"exename", "'notepad.exe'"}.
using made_cells = QList<QPair<QString, QString>>;

/// A result database with the plug-in's tables and given rows.
class made_result
{
public:
    /// Makes the database at `path`, whose folder exists. Throws std::runtime_error if that fails.
    explicit made_result(const QString &path);

    /// Adds a row of Source1, unless the cells tell another source.
    made_result &add(const QString &table, made_cells cells);

    const QString &path() const { return m_path; }
    /// The result, opened anew.
    std::unique_ptr<results::opened_result> opened() const;

private:
    QString m_path;
};

/// The texts of a source's rows in the columns of these names; NULL is the empty text.
QList<QStringList> texts_of(results::row_source &source, const QStringList &columns);

/// A text as an SQL expression.
QString sql_text(const QString &text);

/// The output of a Python program for the arguments; what it writes to standard error if it fails.
/// Empty where there is no python3.
QString python_output(const QString &program, const QStringList &arguments);
bool has_python();

} // namespace test_support

#endif

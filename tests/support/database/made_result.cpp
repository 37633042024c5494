#include "made_result.h"

#include <QProcess>
#include <QStandardPaths>

#include "created_tables.h"
#include "plain_text.h"
#include "result_file.h"

namespace test_support {

using namespace Qt::StringLiterals;

made_result::made_result(const QString &path) : m_path(path)
{
    create_tables(path);
}

made_result &made_result::add(const QString &table, made_cells cells)
{
    QStringList names;
    QStringList values;
    for (const auto &[name, value] : std::as_const(cells)) {
        names.append(name);
        values.append(value);
    }
    if (!names.contains(u"source_count_name"_s)) {
        names.append(u"source_count_name"_s);
        values.append(u"'Source1'"_s);
    }
    // One connection for all rows would hold the file while a test looks at it.
    execute(m_path,
            u"INSERT INTO %1(%2) VALUES(%3)"_s.arg(table, names.join(u','), values.join(u',')));
    return *this;
}

std::unique_ptr<results::opened_result> made_result::opened() const
{
    return std::make_unique<results::opened_result>(m_path);
}

QList<QStringList> texts_of(results::row_source &source, const QStringList &columns)
{
    QList<QStringList> rows;
    while (const results::row *read = source.next()) {
        QStringList texts;
        for (const QString &name : columns)
            texts.append(results::shown_text(
                results::cell_at(*read, results::place_of(source.columns(), name))));
        rows.append(texts);
    }
    return rows;
}

QString sql_text(const QString &text)
{
    return u'\'' + QString(text).replace(u'\'', u"''"_s) + u'\'';
}

bool has_python()
{
    return !QStandardPaths::findExecutable(u"python3"_s).isEmpty();
}

QString python_output(const QString &program, const QStringList &arguments)
{
    constexpr int patience_ms = 120'000;
    QProcess python;
    python.start(u"python3"_s, QStringList{u"-c"_s, program} + arguments);
    python.waitForFinished(patience_ms);
    const QByteArray output =
        python.exitCode() == 0 ? python.readAllStandardOutput() : python.readAllStandardError();
    return QString::fromUtf8(output).trimmed();
}

} // namespace test_support

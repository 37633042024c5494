#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTemporaryFile>

#include "body_writer.h"
#include "console.h"
#include "csv_writer.h"
#include "export_target.h"
#include "json_writer.h"
#include "looked_at_result.h"
#include "result_commands.h"
#include "selected_rows.h"
#include "time_line.h"
#include "timesketch_writer.h"
#include "xlsx_writer.h"

using namespace Qt::StringLiterals;
using namespace results;

namespace {

using form = export_options::form;

QList<int> all_places(const QList<column> &columns)
{
    QList<int> places;
    for (int place = 0; place < int(columns.size()); ++place)
        places.append(place);
    return places;
}

/// Writes the rows of a source; false if the writer took no more.
bool write_rows(row_source &source, row_writer &writer)
{
    if (!writer.begin(source, all_places(source.columns())))
        return false;
    while (const row *read = source.next()) {
        if (!writer.write(*read))
            return false;
    }
    return true;
}

/// A name that a file may have: tables of a foreign database may be called anything.
QString file_name(QString table)
{
    for (QChar &character : table) {
        if (!character.isLetterOrNumber() && character != u'_' && character != u'-')
            character = u'_';
    }
    return table.left(100);
}

/// The name with a number where another table has the same one, in any letter case.
QString unused_name(const QString &name, const QStringList &used)
{
    QString unused = name;
    for (int number = 2; used.contains(unused, Qt::CaseInsensitive); ++number)
        unused = u"%1-%2"_s.arg(name).arg(number);
    return unused;
}

class exported_result
{
public:
    exported_result(const export_options &options, const looked_at_result &looked,
                    const QStringList &tables)
        : m_options(options), m_looked(looked), m_result(*looked.result), m_tables(tables)
    {
    }

    exit_code write();

private:
    QStringList files() const;
    QString path_of(const QString &file) const { return QDir(m_options.directory).filePath(file); }
    QString workbook_file() const;
    std::unique_ptr<row_source> rows_of(const QString &table) const;
    std::unique_ptr<row_writer> writer_for(const row_source &source, const text_sink &sink) const;
    void write_text_files();
    void write_text_file(row_source &source, const QString &file);
    void write_workbook();
    void put_workbook_in_place(QTemporaryFile &made);
    void note_reading(const row_source &source);
    void note_failure(const QString &file, const QString &reason);
    void note_written(const QString &file) const;

    const export_options &m_options;
    const looked_at_result &m_looked;
    const opened_result &m_result;
    QStringList m_tables;
    exit_code m_code = exit_complete;
};

QString exported_result::workbook_file() const
{
    return QFileInfo(m_looked.place.database_file).completeBaseName() + ".xlsx"_L1;
}

QStringList exported_result::files() const
{
    switch (m_options.format) {
    case form::timeline:
        return {u"timeline.jsonl"_s};
    case form::body_file:
        return {u"bodyfile.txt"_s};
    case form::xlsx:
        return {workbook_file()};
    default:
        break;
    }
    QStringList names;
    for (const QString &table : m_tables)
        names.append(unused_name(file_name(table), names));
    names.replaceInStrings(QRegularExpression(u"$"_s),
                           m_options.format == form::csv ? u".csv"_s : u".jsonl"_s);
    return names;
}

std::unique_ptr<row_source> exported_result::rows_of(const QString &table) const
{
    const table_layout layout = m_result.layout_of(table, !m_options.rows.is_raw);
    return selected_rows(m_result, layout, m_options.rows.filter);
}

std::unique_ptr<row_writer> exported_result::writer_for(const row_source &source,
                                                        const text_sink &sink) const
{
    QStringList names;
    for (const column &each : source.columns())
        names.append(each.name);
    switch (m_options.format) {
    case form::csv:
        return std::make_unique<csv_writer>(
            sink, names, csv_options{m_options.byte_order_mark, m_options.spreadsheet_safe});
    case form::timeline:
        return std::make_unique<timesketch_writer>(sink);
    case form::body_file:
        return std::make_unique<body_writer>(sink);
    default:
        return std::make_unique<json_writer>(sink);
    }
}

void exported_result::note_failure(const QString &file, const QString &reason)
{
    print_notice(u"%1 cannot be written: %2"_s.arg(file, reason));
    m_code = exit_result;
}

void exported_result::note_written(const QString &file) const
{
    write_line(stdout, printable(file));
}

void exported_result::note_reading(const row_source &source)
{
    if (source.failure().isEmpty())
        return;
    print_notice(source.failure());
    if (m_code == exit_complete)
        m_code = exit_run_failed;
}

void exported_result::write_text_file(row_source &source, const QString &file)
{
    QSaveFile out(path_of(file));
    if (!out.open(QIODevice::WriteOnly))
        return note_failure(out.fileName(), out.errorString());
    const auto writer = writer_for(source, [&out](std::string_view text) {
        return out.write(text.data(), qint64(text.size())) == qint64(text.size());
    });
    const bool is_written = write_rows(source, *writer) && writer->finish();
    if (!is_written || !out.commit())
        return note_failure(out.fileName(), out.errorString());
    note_reading(source);
    note_written(out.fileName());
    const auto *body = dynamic_cast<const body_writer *>(writer.get());
    if (body != nullptr && body->left_out() > 0)
        print_notice(u"%1 times before 1970 are left out, which mactime cannot read"_s.arg(
            body->left_out()));
}

void exported_result::write_text_files()
{
    const QStringList names = files();
    if (m_options.format == form::timeline || m_options.format == form::body_file) {
        time_line times(m_result, m_tables, m_options.rows.filter);
        return write_text_file(times, names.first());
    }
    for (qsizetype i = 0; i < m_tables.size(); ++i)
        write_text_file(*rows_of(m_tables.at(i)), names.at(i));
}

/// The workbook gets its name when it is whole.
void exported_result::write_workbook()
{
    QTemporaryFile made(path_of(u"workbook-XXXXXX.part"_s));
    const QString file = path_of(workbook_file());
    if (!made.open())
        return note_failure(file, made.errorString());
    made.close();
    xlsx_writer writer(made.fileName());
    for (const QString &table : std::as_const(m_tables)) {
        const auto rows = rows_of(table);
        if (!write_rows(*rows, writer))
            break;
        note_reading(*rows);
    }
    if (!writer.finish())
        return note_failure(file, writer.failure());
    for (const QString &remark : writer.remarks())
        print_notice(remark);
    put_workbook_in_place(made);
}

void exported_result::put_workbook_in_place(QTemporaryFile &made)
{
    const QString file = path_of(workbook_file());
    const QByteArray from = QFile::encodeName(made.fileName());
    if (std::rename(from.constData(), QFile::encodeName(file).constData()) != 0)
        return note_failure(file, u"the finished workbook cannot get this name"_s);
    made.setAutoRemove(false);
    QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                    QFile::ReadOther);
    note_written(file);
}

exit_code exported_result::write()
{
    const auto refused = check_export(m_options.directory, files(), m_looked, m_options.replaces);
    if (refused || !QDir().mkpath(m_options.directory)) {
        print_notice(refused ? refused->reason
                             : u"folder %1 cannot be made"_s.arg(m_options.directory));
        return exit_result;
    }
    if (m_options.format == form::xlsx)
        write_workbook();
    else
        write_text_files();
    return m_code;
}

} // namespace

exit_code export_result(const export_options &options)
{
    const looked_at_result looked = look_at(options.result);
    const selected_tables selected = looked.refused ? selected_tables{{}, looked.refused}
                                                    : select_tables(*looked.result, options.rows);
    if (selected.refused) {
        print_notice(selected.refused->reason);
        return selected.refused->code;
    }
    const exit_code code = exported_result(options, looked, selected.tables).write();
    tell_of_changes(*looked.result);
    return code;
}

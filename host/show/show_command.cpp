#include "console.h"
#include "looked_at_result.h"
#include "programs_view.h"
#include "result_commands.h"
#include "result_output.h"
#include "row_cursor.h"
#include "selected_rows.h"
#include "time_line.h"

using namespace Qt::StringLiterals;
using namespace results;

namespace {

/// Shows one result.
class shown_result
{
public:
    shown_result(const show_options &options, const opened_result &result,
                 const QStringList &tables)
        : m_options(options), m_result(result), m_tables(tables)
    {
    }

    exit_code show();

private:
    bool is_view() const { return m_options.shown != show_options::view::tables; }
    void prepare_views();
    QList<QList<column>> columns_of_sources() const;
    std::optional<refusal> check_columns() const;
    QList<int> places_in(const QList<column> &columns) const;
    QStringList csv_columns() const;
    std::unique_ptr<row_source> source_of(const QString &table) const;
    bool write_source(row_source &source, row_writer &writer);
    void write_all(row_writer &writer);

    const show_options &m_options;
    const opened_result &m_result;
    QStringList m_tables;
    std::unique_ptr<row_source> m_view;
    exit_code m_code = exit_complete;
};

void shown_result::prepare_views()
{
    if (m_options.shown == show_options::view::timeline) {
        m_view = std::make_unique<time_line>(m_result, m_tables, m_options.rows.filter);
    } else if (m_options.shown == show_options::view::programs) {
        programs_view view = make_programs_view(m_result);
        if (!view.failure.isEmpty()) {
            print_notice(view.failure);
            m_code = exit_run_failed;
        }
        if (m_options.sort)
            sort_rows(view.rows, view.columns, *m_options.sort);
        m_view = filtered(std::make_unique<memory_rows>(u"programs"_s,
                                                        u"one row for each program and account"_s,
                                                        view.columns, std::move(view.rows)),
                          m_options.rows.filter);
    }
}

QList<QList<column>> shown_result::columns_of_sources() const
{
    if (m_view)
        return {m_view->columns()};
    QList<QList<column>> all;
    for (const QString &table : m_tables)
        all.append(m_result.layout_of(table, !m_options.rows.is_raw).columns());
    return all;
}

/// Why a column that was asked for is in none of the tables.
std::optional<refusal> shown_result::check_columns() const
{
    QStringList known;
    for (const QList<column> &columns : columns_of_sources()) {
        for (const column &each : columns)
            known.append(each.name);
    }
    known.removeDuplicates();
    QStringList wanted = m_options.columns;
    if (m_options.sort)
        wanted.append(m_options.sort->column);
    for (const QString &name : wanted) {
        if (!known.contains(name))
            return refusal{exit_usage,
                           u"unknown column \"%1\"; there are %2"_s.arg(name, known.join(", "_L1))};
    }
    return std::nullopt;
}

/// The columns that are shown: those asked for in their order, all for programs to read, else those
/// for people; of raw tables, all but what only suites fill.
QList<int> shown_result::places_in(const QList<column> &columns) const
{
    QList<int> places;
    for (const QString &name : m_options.columns) {
        if (const int place = place_of(columns, name); place >= 0)
            places.append(place);
    }
    for (int place = 0; m_options.columns.isEmpty() && place < int(columns.size()); ++place) {
        const column &of = columns[place];
        const bool is_shown = m_options.rows.is_raw ? of.kind != column_kind::suite : of.is_shown;
        if (m_options.format != show_options::form::text || is_shown || of.meaning.isEmpty())
            places.append(place);
    }
    return places;
}

QStringList shown_result::csv_columns() const
{
    QStringList names;
    for (const QList<column> &columns : columns_of_sources()) {
        for (const int place : places_in(columns))
            names.append(columns[place].name);
    }
    names.removeDuplicates();
    return names;
}

std::unique_ptr<row_source> shown_result::source_of(const QString &table) const
{
    const table_layout layout = m_result.layout_of(table, !m_options.rows.is_raw);
    auto rows = selected_rows(m_result, layout, m_options.rows.filter);
    if (!m_options.sort || place_of(layout.columns(), m_options.sort->column) < 0)
        return rows;
    return std::make_unique<row_cursor>(m_result, layout, sorted_ids(*rows, *m_options.sort));
}

/// False once nobody reads any further.
bool shown_result::write_source(row_source &source, row_writer &writer)
{
    bool is_taken = writer.begin(source, places_in(source.columns()));
    qint64 left = m_options.limit.value_or(-1);
    while (is_taken && left != 0) {
        const row *read = source.next();
        if (read == nullptr)
            break;
        is_taken = writer.write(*read);
        --left;
    }
    if (!source.failure().isEmpty()) {
        print_notice(source.failure());
        m_code = exit_run_failed;
    }
    return is_taken;
}

void shown_result::write_all(row_writer &writer)
{
    if (m_view) {
        write_source(*m_view, writer);
        return;
    }
    for (const QString &table : std::as_const(m_tables)) {
        if (!write_source(*source_of(table), writer))
            return;
    }
}

exit_code shown_result::show()
{
    prepare_views();
    if (const auto refused = check_columns())
        return refuse(*refused);
    result_output output(m_options.format, m_options.width, m_options.may_page);
    write_all(output.begin(csv_columns()));
    return output.finish(m_code);
}

} // namespace

exit_code show_result(const show_options &options)
{
    const looked_at_result looked = look_at(options.result);
    const selected_tables selected = looked.refused ? selected_tables{{}, looked.refused}
                                                    : select_tables(*looked.result, options.rows);
    if (selected.refused) {
        print_notice(selected.refused->reason);
        return selected.refused->code;
    }
    const exit_code code = shown_result(options, *looked.result, selected.tables).show();
    tell_of_changes(*looked.result);
    return code;
}

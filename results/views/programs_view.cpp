#include "programs_view.h"

#include <QSet>

#include "known_names.h"
#include "plain_text.h"
#include "program_join.h"
#include "program_names.h"
#include "row_cursor.h"
#include "time_texts.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

/// The cells of a row by the names of their columns.
class named_cells
{
public:
    named_cells(const row &of, const table_layout &layout) : m_row(of), m_layout(layout) {}

    const cell &of(const QString &name) const
    {
        return cell_at(m_row, place_of(m_layout.columns(), name));
    }
    QString text(const QString &name) const { return shown_text(of(name)); }
    row_reference reference() const { return {m_layout.name(), m_row.id}; }

private:
    const row &m_row;
    const table_layout &m_layout;
};

/// One text for all that are alike: a million rows name few accounts.
class shared_texts
{
public:
    QString shared(const QString &text) { return *m_texts.insert(text); }

private:
    QSet<QString> m_texts;
};

/// Calls `take` with each row of the table, if the result has it. Returns why rows are missing.
template<typename Take>
QString for_each_row(const opened_result &result, const QString &table, const Take &take)
{
    if (!result.tables().contains(table))
        return {};
    row_cursor rows(result, result.layout_of(table));
    while (const row *read = rows.next())
        take(named_cells(*read, rows.layout()));
    return rows.failure();
}

installation installation_of(const named_cells &cells, shared_texts &texts)
{
    installation made;
    made.source = texts.shared(cells.text(u"source_count_name"_s));
    made.account = texts.shared(cells.text(u"system_account"_s));
    made.name = cells.text(u"display_name"_s);
    if (made.name.isEmpty())
        made.name = cells.text(u"parent_name"_s);
    made.version = cells.text(u"display_version"_s);
    made.publisher = cells.text(u"publisher"_s);
    made.install_date = cells.text(u"install_date_iso"_s);
    made.key_written = cells.of(u"modified_timestamp"_s).integer();
    made.location = cells.text(u"install_location"_s);
    made.uninstall_command = cells.text(u"uninstall_string"_s);
    made.row = cells.reference();
    return made;
}

program_use use_of(const named_cells &cells, const QString &name_column, shared_texts &texts)
{
    program_use use;
    use.source = texts.shared(cells.text(u"source_count_name"_s));
    use.account = texts.shared(cells.text(u"system_account"_s));
    use.name = cells.text(name_column + "_resolved"_L1);
    const std::string stored = cells.text(name_column).toStdString();
    const program_name decoded = resolve_program_name(stored);
    use.is_shortcut = decoded.form == name_form::shortcut;
    use.row = cells.reference();
    if (decoded.form == name_form::package)
        use.package = QString::fromStdString(decoded.package + "_" + decoded.publisher_id);
    if (const known_application *known = known_application_of(stored)) {
        use.path = comparable_path(
            QString::fromUtf8(known->folder.data(), qsizetype(known->folder.size())) +
                "\\program"_L1,
            use.account);
        use.is_hash = true;
    } else {
        use.path = comparable_path(use.name, use.account);
    }
    return use;
}

/// The entries of uninstall_apps stand in previously_executed_apps too, where they are counted.
program_use use_of_shell(const named_cells &cells, shared_texts &texts)
{
    program_use use = use_of(cells, u"exename"_s, texts);
    use.is_counted = use.row.table == "previously_executed_apps"_L1;
    use.run_count = cells.of(u"runcount"_s).integer();
    use.last_run = cells.of(u"lastruntime"_s).integer();
    return use;
}

program_use package_of(const named_cells &cells, shared_texts &texts)
{
    program_use use;
    use.source = texts.shared(cells.text(u"source_count_name"_s));
    use.account = texts.shared(cells.text(u"system_account"_s));
    use.name = cells.text(u"filename"_s);
    use.package = use.name;
    use.is_package_folder = true;
    use.row = cells.reference();
    return use;
}

} // namespace

programs_view make_programs_view(const opened_result &result)
{
    program_join join;
    shared_texts texts;
    QStringList failures;
    for (const QString &table : {u"install_apps_64"_s, u"install_apps_32"_s})
        failures += for_each_row(result, table, [&](const named_cells &cells) {
            join.add_installation(installation_of(cells, texts));
        });
    for (const QString &table : {u"previously_executed_apps"_s, u"uninstall_apps"_s})
        failures += for_each_row(result, table, [&](const named_cells &cells) {
            join.add_use(use_of_shell(cells, texts));
        });
    failures += for_each_row(result, u"third_party_applications"_s, [&](const named_cells &cells) {
        join.add_use(use_of(cells, u"windows_path"_s, texts));
    });
    failures += for_each_row(result, u"metro_apps"_s, [&](const named_cells &cells) {
        join.add_use(package_of(cells, texts));
    });
    failures.removeAll(QString());
    QList<column> columns = columns_of_programs();
    // One source needs no column that says so in each row.
    const int source = place_of(columns, u"source_count_name"_s);
    columns[source].is_shown = result.values_of(result.tables(), u"source_count_name"_s).size() > 1;
    return {columns, join.rows(), failures.join("; "_L1)};
}

} // namespace results

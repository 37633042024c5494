#include "compared_entries.h"

#include "plain_text.h"
#include "program_paths.h"
#include "row_cursor.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

QString text_in(const row &of, const table_layout &layout, const QString &name)
{
    return shown_text(cell_at(of, place_of(layout.columns(), name)));
}

qint64 number_in(const row &of, const table_layout &layout, const QString &name)
{
    return cell_at(of, place_of(layout.columns(), name)).integer();
}

compared_entry entry_of(const row &of, const table_layout &layout)
{
    compared_entry made;
    made.account = text_in(of, layout, u"system_account"_s);
    made.subject = shown_text(layout.subject_of(of));
    made.name = comparable_name(text_in(of, layout, u"display_name"_s));
    made.version = text_in(of, layout, u"display_version"_s);
    made.run_count = number_in(of, layout, u"runcount"_s);
    made.last_run = number_in(of, layout, u"lastruntime"_s);
    made.id = of.id;
    return made;
}

QString identity_of(const row &of, const table_layout &layout, const QStringList &columns)
{
    QString identity = text_in(of, layout, u"system_account"_s).toLower();
    for (const QString &name : columns)
        identity += u'\n' + text_in(of, layout, name).toLower();
    return identity;
}

} // namespace

const QList<compared_table> &compared_tables()
{
    static const QList<compared_table> tables{
        {u"install_apps_64"_s, table_kind::installations, {u"parent_name"_s}},
        {u"install_apps_32"_s, table_kind::installations, {u"parent_name"_s}},
        {u"metro_apps"_s, table_kind::packages, {u"filename"_s}},
        {u"previously_executed_apps"_s, table_kind::counted_runs, {u"class_id"_s, u"exename"_s}},
        {u"third_party_applications"_s, table_kind::seen_runs, {u"windows_path"_s}},
    };
    return tables;
}

compared_entries read_entries(const compared_state &state, const compared_table &table,
                              QString &failure)
{
    compared_entries read;
    if (!state.result->tables().contains(table.name))
        return read;
    row_cursor rows(*state.result, state.result->layout_of(table.name));
    while (const row *each = rows.next()) {
        const QString source = text_in(*each, rows.layout(), u"source_count_name"_s);
        if (state.source.isEmpty() || state.source == source)
            read[identity_of(*each, rows.layout(), table.identity)] =
                entry_of(*each, rows.layout());
    }
    if (!rows.failure().isEmpty())
        failure = rows.failure();
    return read;
}

} // namespace results

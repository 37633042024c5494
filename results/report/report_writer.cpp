#include "report_writer.h"

#include <QCryptographicHash>
#include <QFile>

#include "activity.h"
#include "html_text.h"
#include "packed_rows.h"
#include "programs_view.h"
#include "report_assets.h"
#include "report_facts.h"
#include "selected_rows.h"
#include "table_descriptions.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

std::string base64_sha256(const std::string &text)
{
    return QCryptographicHash::hash(QByteArrayView(text.data(), qsizetype(text.size())),
                                    QCryptographicHash::Sha256)
        .toBase64()
        .toStdString();
}

/// One script, which leaves nothing to others.
std::string whole_script()
{
    std::string script = "(() => {\n'use strict';\n";
    for (const std::string_view part : report_scripts)
        script += part;
    return script + "})();\n";
}

QString sha256_of_file(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return {};
    return QString::fromLatin1(hash.result().toHex());
}

QString text_of(const row_filter &filter)
{
    QStringList conditions;
    if (!filter.accounts.isEmpty())
        conditions.append(u"accounts: "_s + filter.accounts.join(", "_L1));
    if (filter.since)
        conditions.append(u"with a time since "_s +
                          QString::fromStdString(utc_text(*filter.since)));
    if (filter.until)
        conditions.append(u"with a time until "_s +
                          QString::fromStdString(utc_text(*filter.until)));
    if (!filter.text.isEmpty())
        conditions.append(u"with the text \"%1\""_s.arg(filter.text));
    return conditions.join("; "_L1);
}

/// The place of the later run that replaced the rows of the one at `place`; -1 if none did.
qsizetype replacing_run(const QList<QJsonObject> &runs, qsizetype place)
{
    const auto number = [&runs](qsizetype i) {
        return runs.at(i).value("source"_L1).toObject().value("number"_L1);
    };
    for (qsizetype i = runs.size() - 1; i > place; --i) {
        const QJsonObject options = runs.at(i).value("options"_L1).toObject();
        const bool is_made = runs.at(i).contains("tabs"_L1);
        if (is_made && number(i) == number(place) && !options.value("keeps_rows"_L1).toBool())
            return i;
    }
    return -1;
}

class page_writer
{
public:
    page_writer(const report_content &content, const text_sink &sink)
        : m_content(content), m_sink(sink), m_script(whole_script())
    {
    }

    written_report write();

private:
    void put(std::string_view text) { m_written.is_taken = m_written.is_taken && m_sink(text); }
    void put_part(std::string_view name);
    void put_facts();
    void put_runs();
    void put_ending();
    void put_meaning();
    void put_data();
    void put_rows(row_source &rows, const QList<int> &subjects, const std::string &id);
    void put_programs();
    void put_activity();
    void put_element(const std::string &id, std::string_view json);
    void note_failure(const QString &failure);
    QString title() const;
    QString footer() const;

    const report_content &m_content;
    const text_sink &m_sink;
    std::string m_script;
    written_report m_written;
};

void page_writer::note_failure(const QString &failure)
{
    if (!failure.isEmpty() && !m_written.failures.contains(failure))
        m_written.failures.append(failure);
}

QString page_writer::title() const
{
    QStringList volumes;
    const QList<QJsonObject> &runs = m_content.record.runs;
    for (qsizetype i = 0; i < runs.size(); ++i) {
        if (replacing_run(runs, i) < 0)
            volumes.append(runs.at(i).value("source"_L1).toObject().value("volume"_L1).toString());
    }
    volumes.removeAll(QString());
    volumes.removeDuplicates();
    const QString of = volumes.size() == 1 ? volumes.first()
                       : volumes.isEmpty() ? m_content.result.database_file()
                                           : u"%1 volumes"_s.arg(volumes.size());
    return u"Installed applications of %1"_s.arg(of);
}

QString page_writer::footer() const
{
    return u"Made by %1 on %2 from %3. This file loads nothing and sends nothing. Characters that "
           "cannot be seen, or that could reorder a line, stand as escapes such as \\u202e. Times "
           "are in UTC. Names in italics are derived and stand in no database."_s.arg(
               m_content.made_by, m_content.made_at.toUTC().toString(Qt::ISODate),
               m_content.result.database_file());
}

void page_writer::put_facts()
{
    if (!m_content.remarks.isEmpty())
        put(html_warning(u"Before you read on"_s, m_content.remarks));
    if (const QString selection = text_of(m_content.filter); !selection.isEmpty())
        put(html_warning(u"This report has selected rows only"_s, {selection}));
    if (!m_content.has_all_tables)
        put(html_warning(u"This report has selected tables only"_s,
                         {m_content.tables.join(", "_L1)}));
    put(html_facts(
        {{u"Result database"_s, m_content.result.database_file()},
         {u"SHA-256 of the database"_s, sha256_of_file(m_content.result.database_file())},
         {u"Report made"_s, m_content.made_at.toUTC().toString(Qt::ISODate)}}));
    put_runs();
}

/// Those whose rows are not in the database any more are folded.
void page_writer::put_runs()
{
    const QList<QJsonObject> &runs = m_content.record.runs;
    for (qsizetype i = 0; i < runs.size(); ++i) {
        const QString title = u"Run %1 of %2"_s.arg(i + 1).arg(runs.size());
        const qsizetype by = replacing_run(runs, i);
        const std::string facts = html_of_run(runs.at(i), title);
        put(by < 0 ? facts
                   : html_folded(u"%1: run %2 of the same source replaced the rows of its tables"_s
                                     .arg(title)
                                     .arg(by + 1),
                                 facts));
    }
}

/// What was found out while the rows were written. The script shows it first.
void page_writer::put_ending()
{
    QStringList notes = m_written.failures;
    if (m_content.result.has_changed())
        notes.append(opened_result::text_of_change());
    if (m_written.cut_cells > 0)
        notes.append(u"%1 cells are longer than %2 bytes and cut"_s.arg(m_written.cut_cells)
                         .arg(packed_rows::most_bytes_of_cell));
    if (!notes.isEmpty())
        put("<section id=\"ending\" aria-label=\"What this report lacks\">\n" +
            html_warning(u"What this report lacks"_s, notes) + "</section>\n");
}

void page_writer::put_meaning()
{
    QList<QStringList> lines;
    for (const QString &table : m_content.tables) {
        const table_evidence evidence = evidence_of(table);
        const QString title = m_content.result.layout_of(table).title();
        lines.append({table, title, evidence.proves, evidence.does_not_prove});
    }
    put(html_table({u"table"_s, u"rows"_s, u"proves"_s, u"does not prove"_s}, lines));
}

void page_writer::put_element(const std::string &id, std::string_view json)
{
    put("<script type=\"application/json\" id=\"" + id + "\">");
    put(json);
    put("</script>\n");
}

void page_writer::put_rows(row_source &rows, const QList<int> &subjects, const std::string &id)
{
    const packed_rows packed(rows, subjects);
    put_element(id, packed.json());
    m_written.cut_cells += packed.cut_cells();
    m_written.rows += id == "programs" ? 0 : packed.row_count();
    note_failure(packed.failure());
}

void page_writer::put_programs()
{
    programs_view view = make_programs_view(m_content.result);
    note_failure(view.failure);
    const auto rows = filtered(
        std::make_unique<memory_rows>(
            u"programs"_s, u"what was installed, by whom it was run, how often and last when"_s,
            view.columns, std::move(view.rows)),
        m_content.filter);
    put_rows(*rows, {0}, "programs");
}

void page_writer::put_activity()
{
    // Windows keeps none of these times from before 1990, and a clock may be a zone ahead.
    const qint64 first = QDateTime({1990, 1, 1}, {0, 0}, Qt::UTC).toSecsSinceEpoch();
    const QDate tomorrow = m_content.made_at.toUTC().date().addDays(1);
    const time_span drawn{first, QDateTime(tomorrow, {23, 59, 59}, Qt::UTC).toSecsSinceEpoch()};
    const activity numbers =
        read_activity(m_content.result, m_content.tables, m_content.filter, drawn);
    note_failure(numbers.failure);
    std::string json = "{\"first_time\":" + std::to_string(drawn.first) +
                       ",\"last_time\":" + std::to_string(drawn.last) +
                       ",\"runs_left_out\":" + std::to_string(numbers.runs_left_out) +
                       ",\"keys_left_out\":" + std::to_string(numbers.keys_left_out) +
                       ",\"days\":[";
    std::string separator;
    for (const runs_of_day &each : numbers.days) {
        json += separator + "{\"day\":" + std::to_string(each.day) +
                ",\"source\":" + shown_script_json(each.source) +
                ",\"account\":" + shown_script_json(each.account) +
                ",\"runs\":" + std::to_string(each.runs) + "}";
        separator = ",";
    }
    json += "],\"months\":[";
    separator.clear();
    for (const keys_of_month &each : numbers.months) {
        json += separator + "{\"year\":" + std::to_string(each.year) +
                ",\"month\":" + std::to_string(each.month) +
                ",\"keys\":" + std::to_string(each.keys) + "}";
        separator = ",";
    }
    put_element("activity", json + "]}");
}

void page_writer::put_data()
{
    std::string manifest;
    for (qsizetype i = 0; i < m_content.tables.size() && m_written.is_taken; ++i) {
        const table_layout layout = m_content.result.layout_of(m_content.tables.at(i));
        const std::string id = "table-" + std::to_string(i);
        put_rows(*selected_rows(m_content.result, layout, m_content.filter), layout.subjects(), id);
        manifest += (i == 0 ? "\"" : ",\"") + id + "\"";
    }
    if (m_content.has_all_tables)
        put_programs();
    put_activity();
    put_element("manifest", "{\"tables\":[" + manifest + "],\"programs\":" +
                                (m_content.has_all_tables ? "\"programs\"" : "null") + "}");
}

void page_writer::put_part(std::string_view name)
{
    if (name == "title")
        put(html(title()));
    else if (name == "style")
        put(report_style);
    else if (name == "style_hash")
        put(base64_sha256(std::string(report_style)));
    else if (name == "script")
        put(m_script);
    else if (name == "script_hash")
        put(base64_sha256(m_script));
    else if (name == "facts")
        put_facts();
    else if (name == "meaning")
        put_meaning();
    else if (name == "data")
        put_data();
    else if (name == "ending")
        put_ending();
    else if (name == "footer")
        put(html(footer()));
}

written_report page_writer::write()
{
    std::string_view rest = report_page;
    for (size_t open = rest.find("{{"); open != std::string_view::npos && m_written.is_taken;
         open = rest.find("{{")) {
        put(rest.substr(0, open));
        const size_t close = rest.find("}}", open);
        put_part(rest.substr(open + 2, close - open - 2));
        rest.remove_prefix(close + 2);
    }
    put(rest);
    return m_written;
}

} // namespace

written_report write_report(const report_content &content, const text_sink &sink)
{
    return page_writer(content, sink).write();
}

} // namespace results

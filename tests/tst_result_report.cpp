#include "activity.h"
#include "html_text.h"
#include "made_columns.h"
#include "made_result.h"
#include "packed_rows.h"
#include "report_facts.h"
#include "report_writer.h"
#include "table_descriptions.h"
#include "test_main.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace results;
using namespace test_support;

// The report: what its file holds. tests/report/ opens it in a browser.
class tst_result_report : public QObject
{
    Q_OBJECT

private slots:
    void values_stand_once();
    void packed_values_are_harmless_data();
    void packed_values_are_harmless();
    void long_texts_are_cut_between_characters();
    void html_is_escaped();
    void activity_counts_days_and_months();
    void times_that_cannot_be_are_left_out();
    void every_table_is_explained();
    void runs_are_told_data();
    void runs_are_told();
    void the_policy_allows_its_own_script_alone();
    void the_page_has_no_gaps();
    void a_selection_is_told();
    void replaced_runs_are_told_data();
    void replaced_runs_are_told();
    void what_was_written_meanwhile_is_told();
    void a_sink_that_takes_no_more_ends_the_report();

private:
    QString written(const opened_result &result, const row_filter &filter = {},
                    const recorded_runs &record = {}, const QStringList &remarks = {}) const;

    QTemporaryDir m_folder;
};

namespace {

const QString executed = u"previously_executed_apps"_s;

row row_of(std::initializer_list<cell> cells)
{
    row made;
    made.cells = cells;
    return made;
}

cell text_cell(std::string_view text)
{
    cell made;
    made.set_text(text);
    return made;
}

cell number_cell(qint64 number)
{
    cell made;
    made.set_number(number);
    return made;
}

QJsonObject packed(std::vector<row> rows, const QList<column> &columns)
{
    memory_rows source(u"made"_s, u"rows of a test"_s, columns, std::move(rows));
    const std::string json = packed_rows(source, {0}).json();
    return QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
}

QJsonArray values_of(const QJsonObject &table, int place)
{
    return table.value("columns"_L1).toArray().at(place).toObject().value("values"_L1).toArray();
}

/// What stands between the two texts.
QString between(const QString &text, const QString &before, const QString &after)
{
    const qsizetype begin = text.indexOf(before);
    if (begin < 0)
        return {};
    const qsizetype from = begin + before.size();
    return text.mid(from, text.indexOf(after, from) - from);
}

QString base64_sha256(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toBase64());
}

} // namespace

QString tst_result_report::written(const opened_result &result, const row_filter &filter,
                                   const recorded_runs &record, const QStringList &remarks) const
{
    std::string page;
    const report_content content{
        result, record,  result.tables(), true,
        filter, remarks, u"test"_s,       QDateTime({2024, 1, 2}, {3, 4, 5}, Qt::UTC)};
    const written_report report = write_report(content, [&page](std::string_view part) {
        page += part;
        return true;
    });
    return report.is_taken && report.failures.isEmpty() ? QString::fromStdString(page) : QString();
}

void tst_result_report::values_stand_once()
{
    const QList<column> columns{made_column(u"constant"_s, {}), made_column(u"different"_s, {}),
                                made_column(u"repeated"_s, {})};
    const QJsonObject table = packed({row_of({text_cell("a"), number_cell(1), text_cell("x")}),
                                      row_of({text_cell("a"), number_cell(2), text_cell("y")}),
                                      row_of({text_cell("a"), number_cell(3), text_cell("x")})},
                                     columns);
    QCOMPARE(table.value("rows"_L1).toInt(), 3);
    QCOMPARE(values_of(table, 0), (QJsonArray{u"a"_s}));
    QCOMPARE(values_of(table, 1), (QJsonArray{1, 2, 3}));
    QCOMPARE(values_of(table, 2), (QJsonArray{u"x"_s, u"y"_s}));
    const QJsonArray of = table.value("columns"_L1).toArray();
    QCOMPARE(of.at(0).toObject().value("places"_L1), QJsonValue());
    QCOMPARE(of.at(1).toObject().value("places"_L1), QJsonValue());
    QCOMPARE(of.at(2).toObject().value("places"_L1), QJsonValue(QJsonArray{0, 1, 0}));
}

void tst_result_report::packed_values_are_harmless_data()
{
    QTest::addColumn<cell>("value");
    QTest::addColumn<QString>("json");
    cell blob;
    blob.is = cell::kind::blob;
    blob.bytes = "<\x01";
    cell real;
    real.is = cell::kind::real;
    real.real = 0.5;
    constexpr qint64 exact = 9007199254740991;
    QTest::newRow("null") << cell() << u"null"_s;
    QTest::newRow("text") << text_cell("a \"b\" \\") << u"\"a \\\"b\\\" \\\\\""_s;
    QTest::newRow("end of a script")
        << text_cell("</script><!--") << u"\"\\u003c/script>\\u003c!--\""_s;
    QTest::newRow("reordering") << text_cell("a\u202eb") << u"\"a\\\\u202eb\""_s;
    QTest::newRow("lines") << text_cell("a\r\n\u2028") << u"\"a\\\\x0d\\\\x0a\\\\u2028\""_s;
    QTest::newRow("number") << number_cell(-7) << u"-7"_s;
    QTest::newRow("largest exact number") << number_cell(exact) << QString::number(exact);
    QTest::newRow("larger") << number_cell(exact + 1) << u"\"9007199254740992\""_s;
    QTest::newRow("smaller") << number_cell(-exact - 1) << u"\"-9007199254740992\""_s;
    QTest::newRow("real") << real << u"0.5"_s;
    QTest::newRow("bytes") << blob << u"{\"sql\":\"x'3c01'\"}"_s;
    QTest::newRow("no UTF-8") << text_cell("A\xff") << u"{\"sql\":\"CAST(x'41ff' AS TEXT)\"}"_s;
}

void tst_result_report::packed_values_are_harmless()
{
    QFETCH(const cell, value);
    QFETCH(const QString, json);
    memory_rows source(u"<t>"_s, u"<title>"_s, {made_column(u"<c>"_s, u"<m>"_s)},
                       {row_of({value})});
    const QString packed = QString::fromStdString(packed_rows(source, {0}).json());
    QVERIFY(packed.contains(",\"values\":["_L1 + json + "],"_L1));
    QVERIFY(!packed.contains(u'<'));
    QVERIFY(QJsonDocument::fromJson(packed.toUtf8()).isObject());
}

void tst_result_report::long_texts_are_cut_between_characters()
{
    constexpr auto most = packed_rows::most_bytes_of_cell;
    const std::string whole(most, 'x');
    const std::string longer = std::string(most - 1, 'x') + "\u00fc";
    memory_rows source(u"made"_s, {}, {made_column(u"c"_s, {})},
                       {row_of({text_cell(whole)}), row_of({text_cell(longer)})});
    const packed_rows rows(source, {0});
    QCOMPARE(rows.cut_cells(), 1);
    const QJsonObject table =
        QJsonDocument::fromJson(QByteArray::fromStdString(rows.json())).object();
    QCOMPARE(values_of(table, 0),
             (QJsonArray{QString::fromStdString(whole), QString::fromStdString(whole).chopped(1) +
                                                            u"\u2026 (%1 bytes)"_s.arg(most + 1)}));
}

void tst_result_report::html_is_escaped()
{
    QCOMPARE(html(u"<a href=\"x\">&\u202e\n"_s),
             std::string("&lt;a href=&quot;x&quot;&gt;&amp;\\u202e\\x0a"));
    QCOMPARE(html_facts({{u"<n>"_s, u"<v>"_s}, {u"empty"_s, {}}}),
             std::string("<dl class=\"facts\">\n<dt>&lt;n&gt;</dt><dd>&lt;v&gt;</dd>\n</dl>\n"));
    for (const std::string &made :
         {html_table({u"<h>"_s}, {{u"<c>"_s}}), html_warning(u"<t>"_s, {u"<i>"_s}),
          html_folded(u"<f>"_s, {})}) {
        QVERIFY(made.find("&lt;") != std::string::npos);
        QVERIFY(made.find("<h>") == std::string::npos && made.find("<c>") == std::string::npos);
        QVERIFY(made.find("<t>") == std::string::npos && made.find("<i>") == std::string::npos);
        QVERIFY(made.find("<f>") == std::string::npos);
    }
}

void tst_result_report::activity_counts_days_and_months()
{
    made_result made(m_folder.filePath(u"activity.sqlite"_s));
    const auto add_run = [&made](const QString &account, const QString &time) {
        made.add(executed, {{u"system_account"_s, sql_text(account)}, {u"lastruntime"_s, time}});
    };
    add_run(u"anna"_s, u"strftime('%s', '2023-12-28 00:00:00') + 0"_s);
    add_run(u"anna"_s, u"strftime('%s', '2023-12-28 23:59:59') + 0"_s);
    add_run(u"anna"_s, u"strftime('%s', '2023-12-29 00:00:00') + 0"_s);
    add_run(u"marek"_s, u"strftime('%s', '2023-12-28 12:00:00') + 0"_s);
    add_run(u"marek"_s, u"0"_s);
    // This entry stands in previously_executed_apps, too.
    made.add(u"uninstall_apps"_s, {{u"lastruntime"_s, u"strftime('%s', '2023-12-28') + 0"_s}});
    const QString key_time = u"strftime('%s', '2023-05-06') + 0"_s;
    made.add(u"install_apps_64"_s,
             {{u"install_date"_s, u"'06/11/2023'"_s}, {u"modified_timestamp"_s, key_time}});
    made.add(u"install_apps_32"_s,
             {{u"install_date"_s, u"'soon'"_s}, {u"modified_timestamp"_s, key_time}});
    made.add(u"install_apps_32"_s, {{u"modified_timestamp"_s, u"0"_s}});
    const auto result = made.opened();
    const activity counted = read_activity(*result, result->tables(), {}, {0, 2'000'000'000});
    QStringList days;
    for (const runs_of_day &each : counted.days)
        days.append(u"%1 %2 %3"_s.arg(QString::fromStdString(utc_text(each.day)), each.account)
                        .arg(each.runs));
    QCOMPARE(days, (QStringList{u"2023-12-28T00:00:00Z anna 2"_s, u"2023-12-28T00:00:00Z marek 1"_s,
                                u"2023-12-29T00:00:00Z anna 1"_s}));
    QStringList months;
    for (const keys_of_month &each : counted.months)
        months.append(u"%1-%2 %3"_s.arg(each.year).arg(each.month).arg(each.keys));
    QCOMPARE(months, (QStringList{u"2023-5 1"_s, u"2023-11 1"_s}));
    row_filter annas;
    annas.accounts = QStringList{u"ANNA"_s};
    QCOMPARE(read_activity(*result, result->tables(), annas, {0, 2'000'000'000}).days.size(), 2);
    QVERIFY(read_activity(*result, {u"metro_apps"_s}, {}, {0, 2'000'000'000}).days.isEmpty());
}

void tst_result_report::times_that_cannot_be_are_left_out()
{
    made_result made(m_folder.filePath(u"times.sqlite"_s));
    for (const auto &time : {u"-1"_s, u"999"_s, u"1000"_s, u"2000"_s, u"2001"_s})
        made.add(executed, {{u"lastruntime"_s, time}});
    const auto result = made.opened();
    const activity counted = read_activity(*result, result->tables(), {}, {1000, 2000});
    QCOMPARE(counted.runs_left_out, 3);
    QCOMPARE(counted.days.size(), 1);
    QCOMPARE(counted.days.first().runs, 2);
}

void tst_result_report::every_table_is_explained()
{
    QSet<QString> texts;
    for (const QString &table : described_tables()) {
        const table_evidence evidence = evidence_of(table);
        QVERIFY2(!evidence.proves.isEmpty() && !evidence.does_not_prove.isEmpty(),
                 qPrintable(table));
        texts.insert(evidence.proves);
    }
    QCOMPARE(texts.size(), described_tables().size() - 1); // keys of both views prove the same
    QVERIFY(evidence_of(u"unknown"_s).proves.isEmpty());
}

void tst_result_report::runs_are_told_data()
{
    QTest::addColumn<QByteArray>("run");
    QTest::addColumn<QStringList>("told");
    const auto row = [](const char *name, const QByteArray &run, const QStringList &told) {
        QTest::newRow(name) << run << told;
    };
    row("nothing", "{}", {u"<h3>Run</h3>"_s});
    row("a complete run",
        R"({"outcome": "complete", "not_read": [], "early_ends": [], "problems": [], "remarks": []})",
        {u"The run noted no warnings."_s, u"<dd>complete</dd>"_s});
    row("a complete run without its lists", R"({"outcome": "complete"})", {u"<dd>complete</dd>"_s});
    row("source", R"({"source": {"given": "/a b", "volume": "/a b/C", "number": 2}})",
        {u"<dd>/a b</dd>"_s, u"<dd>/a b/C</dd>"_s, u"<dd>2</dd>"_s});
    row("command line", R"({"command_line": ["extract", "it's", ""]})",
        {u"<dd>extract 'it'\\''s' ''</dd>"_s});
    row("program", R"({"program": {"version": "1.0", "file": "/p", "sha256": "ab"}})",
        {u"<dd>/p, version 1.0, SHA-256 ab</dd>"_s});
    row("same hash", R"({"files": [{"path": "/h", "sha256_before": "a", "sha256_after": "a"}]})",
        {u"Files that were read (1)"_s, u"<td>a (before and after)</td>"_s});
    row("changed file", R"({"files": [{"path": "/h", "sha256_before": "a", "sha256_after": "b"}]})",
        {u"<td>a before, b after: CHANGED</td>"_s});
    row("hash before alone", R"({"files": [{"sha256_before": "a"}]})", {u"<td>a (before)</td>"_s});
    row("no hash", R"({"files": [{"path": "/h", "failure": "denied"}]})",
        {u"<td>not hashed</td>"_s, u"<td>denied</td>"_s});
    row("replayed hive",
        R"({"replayed_hives": [{"path": "/h", "keys": {"before": 1, "after": 3, "added": 2,
            "changed": 4, "removed": 0}, "logs": [{"name": "L1", "result": "applied"}]}]})",
        {u"<td>L1: applied</td>"_s,
         u"<td>1 keys before, 3 after: 2 added, 4 changed, 0 removed</td>"_s});
    row("tables", R"({"tabs": [{"name": "t", "rows": 3, "seconds": 0.25, "done": false}]})",
        {u"<td>t</td><td>3</td><td>0.250</td><td>no</td>"_s});
    row("what was not read", R"({"outcome": "incomplete", "not_read": ["<hive>"]})",
        {u"What was not read (1)"_s, u"<li>&lt;hive&gt;</li>"_s});
    row("early ends", R"({"early_ends": ["a", "b"]})",
        {u"Hives that were left before their end (2)"_s});
    row("lists of another kind",
        R"({"outcome": "complete", "not_read": "a", "early_ends": [{"b": 1}],
            "problems": [], "remarks": []})",
        {u"<li>&quot;a&quot;</li>"_s, u"<li>{&quot;b&quot;:1}</li>"_s});
    row("other kinds than expected", R"({"files": 3, "tabs": {"a": 1}, "source": [], "begin": 4})",
        {u"<dd>4</dd>"_s});
}

void tst_result_report::runs_are_told()
{
    QFETCH(const QByteArray, run);
    QFETCH(const QStringList, told);
    const QString made =
        QString::fromStdString(html_of_run(QJsonDocument::fromJson(run).object(), u"Run"_s));
    for (const QString &text : told)
        QVERIFY2(made.contains(text), qPrintable(text + " is not in "_L1 + made));
    const bool is_clear = QByteArray(QTest::currentDataTag()) == "a complete run";
    QCOMPARE(made.contains("noted no warnings"_L1), is_clear);
}

void tst_result_report::the_policy_allows_its_own_script_alone()
{
    const made_result made(m_folder.filePath(u"policy.sqlite"_s));
    const QString page = written(*made.opened());
    const QString policy = between(page, u"Content-Security-Policy\" content=\""_s, u"\""_s);
    QCOMPARE(policy,
             u"default-src 'none'; script-src 'sha256-%1'; style-src 'sha256-%2'; img-src data:; "
             "base-uri 'none'; form-action 'none'"_s.arg(
                 base64_sha256(between(page, u"<script>"_s, u"</script>"_s)),
                 base64_sha256(between(page, u"<style>"_s, u"</style>"_s))));
}

void tst_result_report::the_page_has_no_gaps()
{
    made_result made(m_folder.filePath(u"page.sqlite"_s));
    made.add(executed, {{u"exename"_s, u"'{{facts}}'"_s}});
    recorded_runs record;
    record.runs.append({{"source"_L1, QJsonObject{{"volume"_L1, u"/<volume>"_s}}}});
    const QString page = written(*made.opened(), {}, record, {u"<remark>"_s});
    QVERIFY(page.startsWith("<!DOCTYPE html>\n"_L1) && page.endsWith("</html>\n"_L1));
    for (const auto gap :
         {"{{title}}"_L1, "{{style}}"_L1, "{{style_hash}}"_L1, "{{meaning}}"_L1, "{{footer}}"_L1,
          "{{data}}"_L1, "{{ending}}"_L1, "{{script}}"_L1, "{{script_hash}}"_L1})
        QVERIFY2(!page.contains(gap), gap.data());
    QVERIFY(page.contains("\"{{facts}}\""_L1)); // of the row
    QVERIFY(page.contains("<title>Installed applications of /&lt;volume&gt;</title>"_L1));
    QVERIFY(page.contains("<li>&lt;remark&gt;</li>"_L1));
    QCOMPARE(page.count("<script type=\"application/json\""_L1), described_tables().size() + 3);
    QCOMPARE(page.count("<script"_L1), page.count("</script>"_L1));
    static const QRegularExpression address(u"https?://"_s);
    QStringList addresses;
    for (auto found = address.globalMatch(page); found.hasNext();)
        addresses.append(page.mid(found.next().capturedStart(), 26));
    QCOMPARE(addresses, QStringList{u"http://www.w3.org/2000/svg"_s});
}

void tst_result_report::a_selection_is_told()
{
    made_result made(m_folder.filePath(u"selection.sqlite"_s));
    made.add(executed, {{u"system_account"_s, u"'anna'"_s}, {u"exename"_s, u"'hers.exe'"_s}});
    made.add(executed, {{u"system_account"_s, u"'marek'"_s}, {u"exename"_s, u"'his.exe'"_s}});
    const auto result = made.opened();
    row_filter filter;
    filter.accounts = QStringList{u"anna"_s};
    const QString page = written(*result, filter);
    QVERIFY(page.contains("This report has selected rows only"_L1));
    QVERIFY(page.contains("accounts: anna"_L1));
    QVERIFY(page.contains("hers.exe"_L1) && !page.contains("his.exe"_L1));
    QVERIFY(!written(*result).contains("This report has selected"_L1));
}

void tst_result_report::replaced_runs_are_told_data()
{
    QTest::addColumn<QByteArray>("later"); // the run after one of source 1
    QTest::addColumn<bool>("is_replaced");
    QTest::newRow("the same source")
        << QByteArray(R"({"source": {"number": 1}, "tabs": [], "options": {}})") << true;
    QTest::newRow("another source")
        << QByteArray(R"({"source": {"number": 2}, "tabs": [], "options": {}})") << false;
    QTest::newRow("rows were kept")
        << QByteArray(R"({"source": {"number": 1}, "tabs": [], "options": {"keeps_rows": true}})")
        << false;
    QTest::newRow("it never wrote") << QByteArray(R"({"source": {"number": 1}})") << false;
}

void tst_result_report::replaced_runs_are_told()
{
    QFETCH(const QByteArray, later);
    QFETCH(const bool, is_replaced);
    const made_result made(m_folder.filePath(u"replaced.sqlite"_s));
    recorded_runs record;
    record.runs.append({{"source"_L1, QJsonObject{{"number"_L1, 1}, {"volume"_L1, u"/first"_s}}}});
    record.runs.append(QJsonDocument::fromJson(later).object());
    const QString page = written(*made.opened(), {}, record);
    QCOMPARE(
        page.contains("Run 1 of 2: run 2 of the same source replaced the rows of its tables"_L1),
        is_replaced);
    QCOMPARE(page.contains("<title>Installed applications of /first</title>"_L1), !is_replaced);
}

void tst_result_report::what_was_written_meanwhile_is_told()
{
    made_result made(m_folder.filePath(u"meanwhile.sqlite"_s));
    const auto result = made.opened();
    QVERIFY(!written(*result).contains("id=\"ending\""_L1));
    made.add(executed, {{u"exename"_s, u"'late.exe'"_s}});
    QVERIFY(written(*result).contains("the database was written to while it was read"_L1));
}

void tst_result_report::a_sink_that_takes_no_more_ends_the_report()
{
    const made_result made(m_folder.filePath(u"sink.sqlite"_s));
    const auto result = made.opened();
    const recorded_runs record;
    const report_content content{*result, record, result->tables(), true, {}, {}, {}, {}};
    int taken = 0;
    const written_report report =
        write_report(content, [&taken](std::string_view) { return ++taken < 5; });
    QVERIFY(!report.is_taken);
    QCOMPARE(taken, 5);
}

TEST_MAIN(tst_result_report)
#include "tst_result_report.moc"

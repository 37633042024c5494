#include "body_writer.h"
#include "csv_writer.h"
#include "files.h"
#include "json_writer.h"
#include "made_result.h"
#include "row_cursor.h"
#include "test_main.h"
#include "time_line.h"
#include "timesketch_writer.h"
#include "xlsx_writer.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace results;
using namespace test_support;

// What the formats make of rows, hostile ones included.
class tst_result_formats : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void csv_and_json_lines_read_back_as_they_are_stored_data();
    void csv_and_json_lines_read_back_as_they_are_stored();
    void csv_is_to_the_letter();
    void csv_of_several_tables_has_one_header();
    void csv_for_spreadsheets_has_no_formulas();
    void json_lines_hold_nothing_that_steers_a_terminal();
    void a_workbook_reads_back();
    void a_workbook_goes_on_in_further_sheets();
    void timesketch_lines_read_back();
    void body_files_have_one_line_a_time();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QByteArray written(row_writer &writer, const QStringList &tables, const QByteArray &into) const;
    QByteArray csv(const QStringList &tables, const QStringList &columns,
                   const csv_options &options = {}) const;
    QByteArray json_lines(const QString &table) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<made_result> m_made;
    mutable QByteArray m_bytes;
};

namespace {

const auto executed = u"previously_executed_apps"_s;

QList<int> places_of(const row_source &source)
{
    QList<int> places;
    for (int place = 0; place < int(source.columns().size()); ++place)
        places.append(place);
    return places;
}

bool write_all(row_source &source, row_writer &writer)
{
    bool is_taken = writer.begin(source, places_of(source));
    while (const row *read = source.next())
        is_taken = writer.write(*read) && is_taken;
    return is_taken;
}

text_sink sink_of(QByteArray &bytes)
{
    return [&bytes](std::string_view text) {
        bytes.append(text.data(), qsizetype(text.size()));
        return true;
    };
}

/// Reads an exported file and compares it, cell by cell, with what Python's own SQLite reads. SQL
/// literals are given back to SQLite for that.
const auto comparing_program = uR"(
import csv, json, sqlite3, sys
database, form, file = sys.argv[1:]
connection = sqlite3.connect(database)
connection.text_factory = bytes
table = 'previously_executed_apps'
rows = connection.execute('SELECT * FROM ' + table + ' ORDER BY rowid').fetchall()
names = [c[1].decode() if isinstance(c[1], bytes) else c[1]
         for c in connection.execute('PRAGMA table_info(' + table + ')')]
csv.field_size_limit(1 << 30)
if form == 'csv':
    read = list(csv.DictReader(open(file, newline='', encoding='utf-8')))
else:
    read = [json.loads(line) for line in open(file, encoding='utf-8', newline='\n')]
assert len(read) == len(rows), (len(read), len(rows))
def text(value):
    if isinstance(value, bytes): return value.decode()
    if value is None: return '' if form == 'csv' else None
    return str(value) if form == 'csv' else value
for stored, found in zip(rows, read):
    literals = found.get('sql_literals') or ''
    literals = literals.split() if form == 'csv' else literals
    assert found['table'] == table
    for name, value in zip(names, stored):
        if name in literals:
            again = connection.execute('SELECT ' + found[name]).fetchone()[0]
            assert again == value and type(again) == type(value), (name, value, found[name])
        elif isinstance(value, float) and form == 'csv':
            assert float(found[name]) == value
        else:
            assert found[name] == text(value), (name, value, found[name])
print('same', len(rows))
)"_s;

} // namespace

void tst_result_formats::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_made = std::make_unique<made_result>(path(u"made.sqlite"_s));
    m_bytes.clear();
}

QByteArray tst_result_formats::written(row_writer &writer, const QStringList &tables,
                                       const QByteArray &into) const
{
    const auto result = m_made->opened();
    for (const QString &table : tables) {
        row_cursor rows(*result, result->layout_of(table));
        write_all(rows, writer);
    }
    writer.finish();
    return into;
}

QByteArray tst_result_formats::csv(const QStringList &tables, const QStringList &columns,
                                   const csv_options &options) const
{
    m_bytes.clear();
    csv_writer writer(sink_of(m_bytes), columns, options);
    written(writer, tables, {});
    return m_bytes;
}

QByteArray tst_result_formats::json_lines(const QString &table) const
{
    m_bytes.clear();
    json_writer writer(sink_of(m_bytes));
    written(writer, {table}, {});
    return m_bytes;
}

void tst_result_formats::csv_and_json_lines_read_back_as_they_are_stored_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::newRow("plain texts") << QStringList{u"'notepad.exe'"_s, u"''"_s, u"' '"_s, u"NULL"_s};
    QTest::newRow("quotes, commas and line ends")
        << QStringList{u"'a,b'"_s,    u"'\"'"_s,     u"'\"\"a\"'"_s, u"'a' || char(13,10) || 'b'"_s,
                       u"char(10)"_s, u"char(13)"_s, u"'a\\b'"_s};
    QTest::newRow("other scripts")
        << QStringList{u"'Büro für Müller'"_s, u"'会計'"_s, u"'😀'"_s, u"'e\u0301'"_s};
    QTest::newRow("controls") << QStringList{
        u"char(27) || '[2J'"_s, u"char(7)"_s,       u"char(127)"_s,
        u"char(155)"_s,         u"char(0x202e)"_s,  u"char(0x2028)"_s,
        u"char(0xfffe)"_s,      u"char(0xe0041)"_s, u"char(0xfeff)"_s};
    QTest::newRow("NUL") << QStringList{u"CAST(x'610062' AS TEXT)"_s, u"CAST(x'00' AS TEXT)"_s};
    QTest::newRow("no UTF-8") << QStringList{
        u"CAST(x'61ff62' AS TEXT)"_s, u"CAST(x'eda080' AS TEXT)"_s, u"CAST(x'c3' AS TEXT)"_s};
    QTest::newRow("bytes") << QStringList{u"x''"_s, u"x'00ff'"_s, u"x'41'"_s};
    QTest::newRow("numbers") << QStringList{
        u"5"_s, u"-9223372036854775807"_s, u"1.5"_s, u"0.1"_s, u"1e308"_s, u"9e999"_s, u"-9e999"_s};
    QTest::newRow("texts like literals") << QStringList{u"'x''41'''"_s, u"'9e999'"_s, u"'NULL'"_s};
    QTest::newRow("formulas and markup")
        << QStringList{u"'=1+1'"_s, u"'<script>'"_s, u"'@x'"_s, u"'%s%n'"_s};
    QTest::newRow("8 MB") << QStringList{u"replace(hex(zeroblob(4000000)), '00', 'äé')"_s,
                                         u"zeroblob(1000000)"_s};
}

void tst_result_formats::csv_and_json_lines_read_back_as_they_are_stored()
{
    if (!has_python())
        QSKIP("python3 is not installed");
    QFETCH(const QStringList, values);
    for (const QString &value : values)
        m_made->add(executed, {{u"exename"_s, value},
                               {u"class_id"_s, u"'{CEBFF5CD}'"_s},
                               {u"runcount"_s, u"3"_s},
                               {u"notes"_s, value}});
    const auto result = m_made->opened();
    QStringList names;
    const QList<column> columns = result->layout_of(executed).columns();
    for (const column &each : columns)
        names.append(each.name);
    const QString same = u"same %1"_s.arg(values.size());
    write_file(path(u"made.csv"_s), csv({executed}, names));
    QCOMPARE(python_output(comparing_program, {m_made->path(), u"csv"_s, path(u"made.csv"_s)}),
             same);
    write_file(path(u"made.jsonl"_s), json_lines(executed));
    QCOMPARE(python_output(comparing_program, {m_made->path(), u"jsonl"_s, path(u"made.jsonl"_s)}),
             same);
}

void tst_result_formats::csv_is_to_the_letter()
{
    m_made->add(executed, {{u"exename"_s, u"'a \"b\", c'"_s},
                           {u"runcount"_s, u"0"_s},
                           {u"lastruntime"_s, u"1703752244"_s},
                           {u"notes"_s, u"''"_s}});
    m_made->add(executed, {{u"exename"_s, u"x'ff'"_s}});
    QCOMPARE(csv({executed},
                 {u"exename"_s, u"runcount"_s, u"lastruntime_utc"_s, u"notes"_s, u"absent"_s}),
             QByteArray("table,exename,runcount,lastruntime_utc,notes,absent,sql_literals\r\n"
                        "previously_executed_apps,\"a \"\"b\"\", c\",0,2023-12-28T08:30:44Z,\"\",,"
                        "\r\n"
                        "previously_executed_apps,x'ff',,,,,exename\r\n"));
}

void tst_result_formats::csv_of_several_tables_has_one_header()
{
    m_made->add(executed, {{u"exename"_s, u"'a'"_s}});
    m_made->add(u"registered_apps"_s, {{u"key_name"_s, u"'b'"_s}});
    QCOMPARE(csv({executed, u"registered_apps"_s}, {u"exename"_s, u"key_name"_s}),
             QByteArray("table,exename,key_name,sql_literals\r\n"
                        "previously_executed_apps,a,,\r\n"
                        "registered_apps,,b,\r\n"));
    QCOMPARE(csv({}, {u"exename"_s}), QByteArray("table,exename,sql_literals\r\n"));
}

void tst_result_formats::csv_for_spreadsheets_has_no_formulas()
{
    for (const auto &value :
         {u"'=1+1'"_s, u"'+1'"_s, u"'-1'"_s, u"'@a'"_s, u"char(9) || '=1'"_s, u"'a=1'"_s})
        m_made->add(executed, {{u"exename"_s, value}, {u"runcount"_s, u"-1"_s}});
    QCOMPARE(csv({executed}, {u"exename"_s, u"runcount"_s}, {true, true}),
             QByteArray("\xef\xbb\xbftable,exename,runcount,sql_literals\r\n"
                        "previously_executed_apps,'=1+1,-1,\r\n"
                        "previously_executed_apps,'+1,-1,\r\n"
                        "previously_executed_apps,'-1,-1,\r\n"
                        "previously_executed_apps,'@a,-1,\r\n"
                        "previously_executed_apps,'\t=1,-1,\r\n"
                        "previously_executed_apps,a=1,-1,\r\n"));
    QVERIFY(csv({executed}, {u"exename"_s}).contains("previously_executed_apps,=1+1,"));
}

void tst_result_formats::json_lines_hold_nothing_that_steers_a_terminal()
{
    m_made->add(executed,
                {{u"exename"_s, u"char(27) || '[2J' || char(155, 0x202e, 0xe0041, 127)"_s},
                 {u"notes"_s, u"'</script>' || char(10)"_s}});
    const QByteArray lines = json_lines(executed);
    QVERIFY(lines.contains("\"exename\":\"\\u001b[2J\\u009b\\u202e\\udb40\\udc41\\u007f\""));
    QVERIFY(lines.contains("\"notes\":\"</script>\\n\""));
    QVERIFY(lines.contains("\"lastruntime\":null,\"lastruntime_utc\":null"));
    QCOMPARE(lines.count('\n'), 1);
}

void tst_result_formats::a_workbook_reads_back()
{
    if (!has_python())
        QSKIP("python3 is not installed");
    m_made->add(executed, {{u"exename"_s, u"'=1+1 <&> _x0041_'"_s},
                           {u"lastruntime"_s, u"1703752244"_s},
                           {u"runcount"_s, u"7"_s}});
    m_made->add(executed, {{u"exename"_s, u"char(27, 1, 0x202e, 0xfffe) || 'a'"_s}});
    m_made->add(executed, {{u"exename"_s, u"CAST(x'610062' AS TEXT)"_s}});
    m_made->add(executed, {{u"exename"_s, u"replace(hex(zeroblob(40000)), '00', '😀')"_s}});
    m_made->add(executed, {{u"exename"_s, u"x'ff'"_s},
                           {u"runcount"_s, u"9007199254740993"_s},
                           {u"lastruntime"_s, u"910692730085"_s}});
    const QString file = path(u"made.xlsx"_s);
    xlsx_writer writer(file);
    written(writer, {executed, u"registered_apps"_s}, {});
    QCOMPARE(writer.failure(), QString());
    QCOMPARE(
        writer.remarks(),
        (QStringList{u"2 cells are cut after 32767 characters, the most that a sheet takes"_s,
                     u"2 cells hold NUL characters, which stand as U+FFFD in the workbook"_s}));
    // Sheet names; then, of the first sheet, each cell of three columns as its type and text.
    const QString read = python_output(uR"(
import re, sys, zipfile, xml.etree.ElementTree as tree
book = zipfile.ZipFile(sys.argv[1])
n = {'m': 'http://schemas.openxmlformats.org/spreadsheetml/2006/main'}
print(','.join(s.get('name') for s in tree.fromstring(book.read('xl/workbook.xml')).find('m:sheets', n)))
sheet = tree.fromstring(book.read('xl/worksheets/sheet1.xml'))
print('pane' if sheet.find('.//m:pane', n) is not None else '', sheet.find('m:autoFilter', n).get('ref')[:3])
header = {}
for row in sheet.find('m:sheetData', n):
    cells = []
    for c in row:
        place = re.match('[A-Z]+', c.get('r')).group()
        t = c.find('m:is/m:t', n)
        value = t.text if t is not None else c.find('m:v', n).text
        if c.find('m:f', n) is not None: print('formula')
        if row.get('r') == '1': header[place] = value
        elif header[place] in ('exename', 'runcount', 'lastruntime_utc'):
            cells.append(ascii(value) if len(value) < 60 else str(len(value)))
    if row.get('r') != '1': print(' | '.join(cells))
)"_s,
                                       {file});
    QCOMPARE(read.split(u'\n'),
             (QStringList{executed + ",registered_apps"_L1, u"pane A1:"_s,
                          u"'=1+1 <&> _x005F_x0041_' | '7' | '45288.35467592593'"_s,
                          u"'_x001B__x0001_\\u202e\\ufffda'"_s, u"'a\\ufffdb'"_s, u"16383"_s,
                          u"\"x'ff'\" | '9007199254740993' | '+30828-09-14T02:48:05Z'"_s}));
}

void tst_result_formats::a_workbook_goes_on_in_further_sheets()
{
    for (int i = 0; i < 5; ++i)
        m_made->add(executed, {{u"exename"_s, u"'a'"_s}});
    xlsx_writer writer(path(u"made.xlsx"_s), 2);
    written(writer, {executed}, {});
    QCOMPARE(
        writer.remarks(),
        (QStringList{u"sheet previously_executed_apps goes on in previously_executed_apps (2): a "
                     "sheet takes no more than 2 rows"_s,
                     u"sheet previously_executed_apps (2) goes on in previously_executed_apps (3): "
                     "a sheet takes no more than 2 rows"_s}));
    xlsx_writer unwritable(path(u"no folder/made.xlsx"_s));
    QVERIFY(!unwritable.finish());
    QVERIFY(!unwritable.failure().isEmpty());
}

void tst_result_formats::timesketch_lines_read_back()
{
    m_made->add(executed, {{u"exename"_s, u"'{6D809377-6AF0-444B-8957-A3773F02200E}/a.exe'"_s},
                           {u"system_account"_s, u"'anna'"_s},
                           {u"runcount"_s, u"4"_s},
                           {u"lastruntime"_s, u"1703752244"_s}});
    m_made->add(u"install_apps_64"_s,
                {{u"display_name"_s, u"'Git'"_s}, {u"install_date"_s, u"'06/11/2023'"_s}});
    const auto result = m_made->opened();
    time_line times(*result, result->tables(), {});
    QByteArray lines;
    timesketch_writer writer(sink_of(lines));
    QVERIFY(write_all(times, writer));
    QVERIFY(writer.finish());
    QCOMPARE(
        lines,
        QByteArray(
            "{\"message\":\"Install date that the installer wrote (a day): Git\",\"datetime\":"
            "\"2023-11-06T00:00:00+00:00\",\"timestamp\":1699228800000000,\"timestamp_desc\":"
            "\"Install date that the installer wrote (a day)\",\"data_type\":"
            "\"windows:installed_applications:install_apps_64\",\"precision\":\"day\",\"subject\":"
            "\"Git\",\"system_account\":null,\"row_table\":\"install_apps_64\",\"row_id\":1,"
            "\"detail\":null,\"source_file\":null,\"source_count_name\":\"Source1\"}\n"
            "{\"message\":\"Last run: %ProgramFiles%\\\\a.exe\",\"datetime\":"
            "\"2023-12-28T08:30:44+00:00\",\"timestamp\":1703752244000000,\"timestamp_desc\":"
            "\"Last run\",\"data_type\":\"windows:installed_applications:previously_executed_apps\""
            ",\"precision\":\"second\",\"subject\":\"%ProgramFiles%\\\\a.exe\",\"system_account\":"
            "\"anna\",\"row_table\":\"previously_executed_apps\",\"row_id\":1,\"detail\":4,"
            "\"source_file\":null,\"source_count_name\":\"Source1\"}\n"));
}

void tst_result_formats::body_files_have_one_line_a_time()
{
    m_made->add(executed, {{u"exename"_s, u"'a|b' || char(10)"_s},
                           {u"system_account"_s, u"'anna'"_s},
                           {u"lastruntime"_s, u"1703752244"_s}});
    m_made->add(u"third_party_applications"_s, {{u"windows_path"_s, u"'C:\\x.exe'"_s},
                                                {u"creation_timestamp"_s, u"7"_s},
                                                {u"modification_timestamp"_s, u"8"_s},
                                                {u"last_access_timestamp"_s, u"-9"_s}});
    const auto result = m_made->opened();
    time_line times(*result, result->tables(), {});
    QByteArray lines;
    body_writer writer(sink_of(lines));
    QVERIFY(write_all(times, writer));
    QVERIFY(writer.finish());
    QCOMPARE(lines, QByteArray("0|[third_party_applications:1] C:\\x.exe (Program file created)"
                               "|0|0|0|0|0|0|0|0|7\n"
                               "0|[third_party_applications:1] C:\\x.exe (Program file last "
                               "written)|0|0|0|0|0|0|8|0|0\n"
                               "0|[previously_executed_apps:1] a\\x7cb\\x0a (Last run, anna)"
                               "|0|0|0|0|0|1703752244|0|0|0\n"));
    QCOMPARE(writer.left_out(), 1);
}

TEST_MAIN(tst_result_formats)
#include "tst_result_formats.moc"

#include "parts_table.h"
#include "recording_driver.h"
#include "test_main.h"

#include <QMap>
#include <QRegularExpression>
#include <QTest>
#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

/// So many that a statement that is prepared once has long been in use.
constexpr int many_rows = 70;

/// Every row of every table.
QMap<QString, QList<QStringList>> content(const QString &path)
{
    const result_database database(path);
    QMap<QString, QList<QStringList>> tables;
    const QStringList names = database.tables();
    for (const QString &name : names)
        tables.insert(name, database.rows(name, {u"*"_s}));
    return tables;
}

/// Lets a fault strike in the middle of a run; a lock ends with the next row.
class striking_fault
{
public:
    striking_fault(qsizetype row, const QString &statement, bool locks)
        : m_row(row), m_statement(statement), m_locks(locks)
    {
    }

    void before_row(const QSqlDatabase &database, qsizetype row)
    {
        m_other.reset();
        if (row != m_row)
            return;
        execute(database, m_statement);
        if (!m_locks)
            return;
        m_other.emplace(database.databaseName());
        execute(m_other->database, u"begin immediate"_s);
    }

private:
    qsizetype m_row;
    QString m_statement;
    bool m_locks;
    std::optional<sqlite_connection> m_other;
};

} // namespace

// What a row becomes in the table: just what a statement of its own would make of it.
class tst_result_table_rows : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void keeps_values_out_of_the_statement_data();
    void keeps_values_out_of_the_statement();
    void writes_values_of_any_kind_in_any_encoding_data();
    void writes_values_of_any_kind_in_any_encoding();
    void reports_a_row_as_a_statement_of_its_own_would_data();
    void reports_a_row_as_a_statement_of_its_own_would();

private:
    static void report_as_a_statement_of_its_own(int row_of_the_fault, const QString &statement,
                                                 bool locks);
};

void tst_result_table_rows::keeps_values_out_of_the_statement_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QString>("statement");
    QTest::newRow("where texts are stored as the bytes that are bound")
        << u"UTF-8"_s
        << u"insert into parts(name,number) values(CAST(:v0 AS TEXT),CAST(:v1 AS TEXT))"_s;
    QTest::newRow("where texts are stored otherwise")
        << u"UTF-16le"_s << u"insert into parts(name,number) values(:v0,:v1)"_s;
}

void tst_result_table_rows::keeps_values_out_of_the_statement()
{
    QFETCH(const QString, encoding);
    QFETCH(const QString, statement);
    const recording_driver_registration driver(encoding);
    result_table_writer writer(parts_tab, u"any.sqlite"_s);
    QVERIFY(writer.open());
    for (int row = 0; row < many_rows; ++row)
        QVERIFY(writer.insert({u"evidence"_s, u"12"_s}));
    QCOMPARE(driver.statements(), (QStringList{u"PRAGMA encoding"_s, statement}));
    QCOMPARE(driver.rows(), QList<QStringList>(many_rows, {u"evidence"_s, u"12"_s}));
}

void tst_result_table_rows::writes_values_of_any_kind_in_any_encoding_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("a text") << u"C:\\Program Files (x86)\\Tool"_s;
    QTest::newRow("an empty text") << u""_s;
    QTest::newRow("a number") << u"007"_s;
    QTest::newRow("quotation marks") << u"it's 'quoted' \"twice\" `thrice` [once]'"_s;
    QTest::newRow("what looks like a placeholder") << u":v1 ? :name ?2"_s;
    QTest::newRow("what looks like a statement") << u"'); drop table parts; --"_s;
    QTest::newRow("control characters") << u"line\r\nline\ttab\x1b"_s;
    QTest::newRow("a zero character") << u"a\0b"_s;
    QTest::newRow("a byte order mark in front") << u"\xfeff"_s + u"marked"_s;
    QTest::newRow("a swapped byte order mark in front") << u"\xfffe"_s + u"marked"_s;
    QTest::newRow("a byte order mark inside") << u"mar\xfeff"_s + u"ked"_s;
    QTest::newRow("letters beyond the first plane") << u"ナット \U0001F529"_s;
    QTest::newRow("half a character") << QString(QChar(0xd800));
    QTest::newRow("half a character inside") << u"a"_s + QChar(0xdc00) + u"b"_s;
    QTest::newRow("a very long text") << QString(5000, u'x');
    QTest::newRow("a text of one letter") << u"x"_s;
    QTest::newRow("characters that are none") << u"\xffff\ufdd0"_s;
    QTest::newRow("bytes that are no text") << u"\x80\xff\x01"_s;
}

// What is stored is what SQLite makes of a bound text.
void tst_result_table_rows::writes_values_of_any_kind_in_any_encoding()
{
    QFETCH(const QString, value);
    QList<QStringList> rows;
    for (int row = 0; row < many_rows; ++row)
        rows.append({value, QString::number(row)});
    rows.append({u"another"_s, value});
    rows.append({value, u"0"_s});
    for (const QString &encoding : {u"UTF-8"_s, u"UTF-16le"_s, u"UTF-16be"_s}) {
        const parts_table plain(encoding);
        const parts_table shop(encoding);
        insert_row_by_row(plain.path, parts_tab.insert_statement, rows);
        {
            result_table_writer writer(parts_tab, shop.path);
            QVERIFY(writer.open());
            for (const QStringList &row : std::as_const(rows))
                QVERIFY(writer.insert(row));
        }
        QCOMPARE(content(shop.path), content(plain.path));
        const QString stored = u"typeof(name) || hex(name) || typeof(number) || hex(number)"_s;
        QCOMPARE(result_database(shop.path).column(u"parts"_s, stored),
                 result_database(plain.path).column(u"parts"_s, stored));
        QCOMPARE(shop.log.lines(), QStringList());
    }
}

void tst_result_table_rows::reports_a_row_as_a_statement_of_its_own_would_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<bool>("locks");
    QTest::newRow("the table is dropped") << u"drop table parts"_s << false;
    QTest::newRow("the table is renamed") << u"alter table parts rename to pieces"_s << false;
    QTest::newRow("a column is renamed")
        << u"alter table parts rename column number to amount"_s << false;
    QTest::newRow("one row is refused")
        << u"create trigger refusal before insert on parts when new.name = 'the one' "
           "begin select raise(abort, 'no'); end"_s
        << false;
    QTest::newRow("the disk is full") << u"pragma max_page_count = 1"_s << false;
    QTest::newRow("writing is forbidden") << u"pragma query_only = 1"_s << false;
    QTest::newRow("somebody else locks the database for a while") << u"commit"_s << true;
}

void tst_result_table_rows::reports_a_row_as_a_statement_of_its_own_would()
{
    QFETCH(const QString, statement);
    QFETCH(const bool, locks);
    for (const int row : {2, many_rows})
        report_as_a_statement_of_its_own(row, statement, locks);
}

void tst_result_table_rows::report_as_a_statement_of_its_own(int row_of_the_fault,
                                                             const QString &statement, bool locks)
{
    const parts_table plain;
    const parts_table shop;
    QList<QStringList> rows;
    for (int row = 0; row < row_of_the_fault + 3; ++row)
        rows.append({u'r' + QString::number(row), QString(3000, u'x')}); // a page for each row
    rows[row_of_the_fault][0] = u"the one"_s;
    rows[row_of_the_fault + 2][0] = u"the one"_s; // behind a row that went in

    striking_fault plain_fault(row_of_the_fault, statement, locks);
    const QList<insert_outcome> outcomes =
        insert_row_by_row(plain.path, parts_tab.insert_statement, rows,
                          [&](const QSqlDatabase &database, qsizetype row) {
                              plain_fault.before_row(database, row);
                          });
    QVERIFY(!outcomes[row_of_the_fault].error.isEmpty());

    QStringList expected_log;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        execute(writers_connection(), u"pragma busy_timeout = 0"_s);
        striking_fault own_fault(row_of_the_fault, statement, locks);
        for (qsizetype row = 0; row < rows.size(); ++row) {
            own_fault.before_row(writers_connection(), row);
            const bool goes_in = outcomes[row].error.isEmpty();
            QCOMPARE(writer.insert(rows[row]), goes_in);
            if (!goes_in)
                expected_log += failure_lines(shop.path, outcomes[row]);
        }
    }
    QCOMPARE(shop.log.lines(), expected_log);
    QCOMPARE(content(shop.path), content(plain.path));
}

TEST_MAIN(tst_result_table_rows)
#include "tst_result_table_rows.moc"

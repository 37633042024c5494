#include "log_capture.h"
#include "recording_driver.h"
#include "result_database.h"
#include "result_file.h"
#include "result_table_writer.h"
#include "test_main.h"

#include <QFileInfo>
#include <QSqlError>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

/// So many that a statement that is prepared once has long been in use.
constexpr int many_rows = 70;

constexpr auto signature = "void workshop::fill_parts()"_L1;

constexpr result_tab parts_tab = {
    "parts"_L1,
    "create table parts(name, number integer, note)"_L1,
    "insert into parts(name,number) values(?,?)"_L1,
    signature,
    "[fill_parts]"_L1,
    "---STARTS---"_L1,
    " insert -----FAILED----- parts"_L1,
    true,
};

/// A database file with the table of parts, and the captured log.
struct workshop
{
    const log_capture log;
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"parts.sqlite"_s);

    explicit workshop(const QString &encoding = u"UTF-8"_s)
    {
        const sqlite_connection connection(path);
        execute(connection.database, u"pragma encoding = '%1'"_s.arg(encoding));
        execute(connection.database, parts_tab.create_statement);
    }

    QList<QStringList> rows() const
    {
        return result_database(path).rows(u"parts"_s, {u"name"_s, u"number"_s, u"note"_s});
    }
};

QSqlDatabase writers_connection()
{
    return QSqlDatabase::database(signature, false);
}

/// How long the statements of a connection wait for a lock, in milliseconds.
int busy_timeout(const QSqlDatabase &database)
{
    QSqlQuery query(u"pragma busy_timeout"_s, database);
    return query.next() ? query.value(0).toInt() : -1;
}

QString log_line(const QString &message)
{
    return u"[ARKEN_DESK][Artifacts Extraction][workshop::fill_parts]:-- "_s + message;
}

QStringList failure_lines(const QString &path, const insert_outcome &outcome)
{
    return {log_line(u"[fill_parts] insert -----FAILED----- parts"_s + path),
            log_line(outcome.error), log_line(outcome.statement)};
}

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

class tst_result_table_writer : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void writes_its_rows_as_texts();
    void writes_a_null_text_as_an_empty_one();
    void commits_its_rows_together_at_the_end();
    void closes_its_connection_at_the_end();
    void replaces_a_stale_connection_of_its_name();
    void makes_a_database_that_is_missing();
    void logs_a_database_that_cannot_be_opened();
    void leaves_nothing_behind_without_being_opened();
    void logs_a_row_that_cannot_be_inserted();
    void names_the_database_where_the_tab_says_so();
    void refuses_a_row_of_another_length_data();
    void refuses_a_row_of_another_length();
    void loses_no_row_but_those_that_a_lock_keeps_out();
    void waits_for_no_lock_without_a_row();
    void waits_for_a_lock_once_until_a_row_goes_in();
    void keeps_values_out_of_the_statement_data();
    void keeps_values_out_of_the_statement();
    void writes_values_of_any_kind_in_any_encoding_data();
    void writes_values_of_any_kind_in_any_encoding();
    void leaves_no_literal_in_the_list_of_connections();
    void reports_a_row_as_a_statement_of_its_own_would_data();
    void reports_a_row_as_a_statement_of_its_own_would();

private:
    static void report_as_a_statement_of_its_own(int row_of_the_fault, const QString &statement,
                                                 bool locks);
};

void tst_result_table_writer::writes_its_rows_as_texts()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writer.insert({u"bolt"_s, u"12"_s}));
        QVERIFY(writer.insert({u"ナット \U0001F529"_s, u"a dozen"_s}));
    }
    QCOMPARE(shop.rows(), (QList<QStringList>{{u"bolt"_s, u"12"_s, null_text},
                                              {u"ナット \U0001F529"_s, u"a dozen"_s, null_text}}));
    QCOMPARE(result_database(shop.path).column(u"parts"_s, u"typeof(name) || typeof(number)"_s),
             (QStringList{u"textinteger"_s, u"texttext"_s}));
    QCOMPARE(shop.log.lines(), QStringList());
}

void tst_result_table_writer::writes_a_null_text_as_an_empty_one()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writer.insert({QString(), u""_s}));
    }
    QCOMPARE(shop.rows(), (QList<QStringList>{{u""_s, u""_s, null_text}}));
}

void tst_result_table_writer::commits_its_rows_together_at_the_end()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writer.insert({u"bolt"_s, u"12"_s}));
        QCOMPARE(shop.rows(), QList<QStringList>());
    }
    QCOMPARE(shop.rows().size(), 1);
}

void tst_result_table_writer::closes_its_connection_at_the_end()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writers_connection().isOpen());
    }
    QVERIFY(QSqlDatabase::contains(signature));
    QVERIFY(!writers_connection().isOpen());
}

void tst_result_table_writer::replaces_a_stale_connection_of_its_name()
{
    const workshop stale;
    const workshop shop;
    for (const QString &path : {stale.path, shop.path}) {
        result_table_writer writer(parts_tab, path);
        QVERIFY(writer.open());
        QCOMPARE(writers_connection().databaseName(), path);
        QVERIFY(writer.insert({u"bolt"_s, u"12"_s}));
    }
    QCOMPARE(stale.rows().size(), 1);
    QCOMPARE(shop.rows().size(), 1);
}

void tst_result_table_writer::makes_a_database_that_is_missing()
{
    const workshop shop;
    const QString path = shop.folder.filePath(u"missing.sqlite"_s);
    {
        result_table_writer writer(parts_tab, path);
        QVERIFY(writer.open());
    }
    QVERIFY(QFileInfo::exists(path));
    QCOMPARE(shop.log.lines(), QStringList());
}

void tst_result_table_writer::logs_a_database_that_cannot_be_opened()
{
    const workshop shop;
    const QString path = shop.folder.filePath(u"no folder/parts.sqlite"_s);
    {
        result_table_writer writer(parts_tab, path);
        QVERIFY(!writer.open());
    }
    const QString error = sqlite_connection(path).database.lastError().text();
    QVERIFY(!error.isEmpty());
    QCOMPARE(
        shop.log.lines(),
        (QStringList{log_line(u"[fill_parts]Destination Db opening failed "_s), log_line(error)}));
}

void tst_result_table_writer::leaves_nothing_behind_without_being_opened()
{
    const workshop shop;
    const QString path = shop.folder.filePath(u"missing.sqlite"_s);
    {
        const result_table_writer writer(parts_tab, path);
    }
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(shop.log.lines(), QStringList());
}

void tst_result_table_writer::logs_a_row_that_cannot_be_inserted()
{
    const workshop shop;
    const QString path = shop.folder.filePath(u"missing.sqlite"_s);
    const QStringList row = {u"bolt"_s, u"12"_s};
    {
        result_table_writer writer(parts_tab, path);
        QVERIFY(writer.open());
        QVERIFY(!writer.insert(row));
    }
    const insert_outcome outcome =
        insert_row_by_row(path, parts_tab.insert_statement, {row}).first();
    QVERIFY(!outcome.error.isEmpty());
    QCOMPARE(shop.log.lines(), failure_lines(path, outcome));
}

void tst_result_table_writer::names_the_database_where_the_tab_says_so()
{
    const workshop shop;
    execute(shop.path, u"drop table parts"_s);
    result_tab discreet_tab = parts_tab;
    discreet_tab.failure_names_database = false;
    for (const result_tab &tab : {parts_tab, discreet_tab}) {
        result_table_writer writer(tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(!writer.insert({u"bolt"_s, u"12"_s}));
    }
    QCOMPARE(shop.log.lines().value(0),
             log_line(u"[fill_parts] insert -----FAILED----- parts"_s + shop.path));
    QCOMPARE(shop.log.lines().value(3), log_line(u"[fill_parts] insert -----FAILED----- parts"_s));
}

void tst_result_table_writer::refuses_a_row_of_another_length_data()
{
    QTest::addColumn<QStringList>("row");
    QTest::newRow("no value") << QStringList();
    QTest::newRow("a value too few") << QStringList{u"bolt"_s};
    QTest::newRow("a value too many") << QStringList{u"bolt"_s, u"12"_s, u"x"_s};
}

void tst_result_table_writer::refuses_a_row_of_another_length()
{
    QFETCH(const QStringList, row);
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(!writer.insert(row));
        QVERIFY(writer.insert({u"nut"_s, u"3"_s}));
        QVERIFY(!writer.insert(row));
        QVERIFY(writer.insert({u"washer"_s, u"3"_s}));
    }
    QCOMPARE(shop.rows(),
             (QList<QStringList>{{u"nut"_s, u"3"_s, null_text}, {u"washer"_s, u"3"_s, null_text}}));
}

void tst_result_table_writer::loses_no_row_but_those_that_a_lock_keeps_out()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        execute(writers_connection(), u"pragma busy_timeout = 0"_s);
        {
            const sqlite_connection other(shop.path);
            execute(other.database, u"begin immediate"_s);
            QVERIFY(!writer.insert({u"bolt"_s, u"12"_s}));
        }
        QVERIFY(writer.insert({u"nut"_s, u"3"_s}));
    }
    QCOMPARE(shop.rows(), (QList<QStringList>{{u"nut"_s, u"3"_s, null_text}}));
}

void tst_result_table_writer::waits_for_no_lock_without_a_row()
{
    const workshop shop;
    const sqlite_connection other(shop.path);
    execute(other.database, u"begin exclusive"_s);
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QCOMPARE(busy_timeout(writers_connection()), 5000); // it would be 0 after a wait
    }
    QCOMPARE(shop.log.lines(), QStringList());
}

// The lock is held by the test itself, so that the first wait is made none.
void tst_result_table_writer::waits_for_a_lock_once_until_a_row_goes_in()
{
    const workshop shop;
    result_table_writer writer(parts_tab, shop.path);
    QVERIFY(writer.open());
    QCOMPARE(busy_timeout(writers_connection()), 5000);
    execute(writers_connection(), u"pragma busy_timeout = 1"_s);
    {
        const sqlite_connection other(shop.path);
        execute(other.database, u"begin immediate"_s);
        QVERIFY(!writer.insert({u"bolt"_s, u"12"_s}));
        QCOMPARE(busy_timeout(writers_connection()), 0);
        QVERIFY(!writer.insert({u"bolt"_s, u"13"_s}));
        QCOMPARE(busy_timeout(writers_connection()), 0);
    }
    QVERIFY(writer.insert({u"nut"_s, u"3"_s}));
    QCOMPARE(busy_timeout(writers_connection()), 5000);
}

void tst_result_table_writer::keeps_values_out_of_the_statement_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QString>("statement");
    QTest::newRow("where texts are stored as the bytes that are bound")
        << u"UTF-8"_s
        << u"insert into parts(name,number) values(CAST(:v0 AS TEXT),CAST(:v1 AS TEXT))"_s;
    QTest::newRow("where texts are stored otherwise")
        << u"UTF-16le"_s << u"insert into parts(name,number) values(:v0,:v1)"_s;
}

void tst_result_table_writer::keeps_values_out_of_the_statement()
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

void tst_result_table_writer::leaves_no_literal_in_the_list_of_connections()
{
    const workshop shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
    }
    const QStringList names = QSqlDatabase::connectionNames();
    QString name = names.at(names.indexOf(signature));
    QVERIFY(name.data_ptr().d_ptr() != nullptr);
    QVERIFY(writers_connection().driverName().data_ptr().d_ptr() != nullptr);
}

void tst_result_table_writer::writes_values_of_any_kind_in_any_encoding_data()
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
void tst_result_table_writer::writes_values_of_any_kind_in_any_encoding()
{
    QFETCH(const QString, value);
    QList<QStringList> rows;
    for (int row = 0; row < many_rows; ++row)
        rows.append({value, QString::number(row)});
    rows.append({u"another"_s, value});
    rows.append({value, u"0"_s});
    for (const QString &encoding : {u"UTF-8"_s, u"UTF-16le"_s, u"UTF-16be"_s}) {
        const workshop plain(encoding);
        const workshop shop(encoding);
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

void tst_result_table_writer::reports_a_row_as_a_statement_of_its_own_would_data()
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

void tst_result_table_writer::reports_a_row_as_a_statement_of_its_own_would()
{
    QFETCH(const QString, statement);
    QFETCH(const bool, locks);
    for (const int row : {2, many_rows})
        report_as_a_statement_of_its_own(row, statement, locks);
}

void tst_result_table_writer::report_as_a_statement_of_its_own(int row_of_the_fault,
                                                               const QString &statement, bool locks)
{
    const workshop plain;
    const workshop shop;
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

TEST_MAIN(tst_result_table_writer)

#include "tst_result_table_writer.moc"

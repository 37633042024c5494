#include "parts_table.h"
#include "test_main.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace test_support;

// How a table is opened, filled and closed, and what is logged when that fails.
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
    void leaves_no_literal_in_the_list_of_connections();
};

void tst_result_table_writer::writes_its_rows_as_texts()
{
    const parts_table shop;
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
    const parts_table shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writer.insert({QString(), u""_s}));
    }
    QCOMPARE(shop.rows(), (QList<QStringList>{{u""_s, u""_s, null_text}}));
}

void tst_result_table_writer::commits_its_rows_together_at_the_end()
{
    const parts_table shop;
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
    const parts_table shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(writers_connection().isOpen());
    }
    QVERIFY(QSqlDatabase::contains(fill_parts_signature));
    QVERIFY(!writers_connection().isOpen());
}

void tst_result_table_writer::replaces_a_stale_connection_of_its_name()
{
    const parts_table stale;
    const parts_table shop;
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
    const parts_table shop;
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
    const parts_table shop;
    const QString path = shop.folder.filePath(u"no folder/parts.sqlite"_s);
    {
        result_table_writer writer(parts_tab, path);
        QVERIFY(!writer.open());
    }
    const QString error = sqlite_connection(path).database.lastError().text();
    QVERIFY(!error.isEmpty());
    QCOMPARE(shop.log.lines(),
             parts_lines({u"[fill_parts]Destination Db opening failed "_s, error}));
}

void tst_result_table_writer::leaves_nothing_behind_without_being_opened()
{
    const parts_table shop;
    const QString path = shop.folder.filePath(u"missing.sqlite"_s);
    {
        const result_table_writer writer(parts_tab, path);
    }
    QVERIFY(!QFileInfo::exists(path));
    QCOMPARE(shop.log.lines(), QStringList());
}

void tst_result_table_writer::logs_a_row_that_cannot_be_inserted()
{
    const parts_table shop;
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
    const parts_table shop;
    execute(shop.path, u"drop table parts"_s);
    result_tab discreet_tab = parts_tab;
    discreet_tab.failure_names_database = false;
    for (const result_tab &tab : {parts_tab, discreet_tab}) {
        result_table_writer writer(tab, shop.path);
        QVERIFY(writer.open());
        QVERIFY(!writer.insert({u"bolt"_s, u"12"_s}));
    }
    const QString failure = u"[fill_parts] insert -----FAILED----- parts"_s;
    QCOMPARE(shop.log.lines().value(0), parts_lines({failure + shop.path}).first());
    QCOMPARE(shop.log.lines().value(3), parts_lines({failure}).first());
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
    const parts_table shop;
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
    const parts_table shop;
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
    const parts_table shop;
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
    const parts_table shop;
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

void tst_result_table_writer::leaves_no_literal_in_the_list_of_connections()
{
    const parts_table shop;
    {
        result_table_writer writer(parts_tab, shop.path);
        QVERIFY(writer.open());
    }
    const QStringList names = QSqlDatabase::connectionNames();
    QString name = names.at(names.indexOf(fill_parts_signature));
    QVERIFY(name.data_ptr().d_ptr() != nullptr);
    QVERIFY(writers_connection().driverName().data_ptr().d_ptr() != nullptr);
}

TEST_MAIN(tst_result_table_writer)
#include "tst_result_table_writer.moc"

#include "log_capture.h"
#include "log_line.h"
#include "run_context_backup.h"
#include "scripted_driver.h"
#include "sqlite_helpers.h"
#include "test_main.h"

#include "plugin_static_function.h"

#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

} // namespace

// Helpers that look for values and tables, and what two lists differ in.
class tst_sqlite_listings : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void value_existence_is_told_data();
    void value_existence_is_told();
    void value_existence_logs_under_the_sibling_tag();
    void value_existence_is_false_when_cancelled();
    void value_existence_is_false_when_cancelled_between_rows();
    void tables_are_listed_without_views_and_system_tables();
    void tables_of_a_database_that_does_not_open_are_none();
    void unmatched_entries_are_listed_data();
    void unmatched_entries_are_listed();
    void unmatched_entries_stop_when_cancelled();

private:
    std::optional<run_context_backup> context;
};

void tst_sqlite_listings::value_existence_is_told_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("exists");
    QTest::newRow("both sides are trimmed") << u"  apple "_s << true;
    QTest::newRow("a later row") << u"Plum"_s << true;
    QTest::newRow("letter case is told apart") << u"plum"_s << false;
    QTest::newRow("a part of a value is none") << u"app"_s << false;
}

void tst_sqlite_listings::value_existence_is_told()
{
    QFETCH(const QString, value);
    const fruit_database fruit;
    const log_capture log;
    QTEST(
        library::check_value_existence_in_db_by_dbreference(good_command, 0, value, fruit.database),
        "exists");
    QCOMPARE(log.lines(), QStringList());
}

void tst_sqlite_listings::value_existence_logs_under_the_sibling_tag()
{
    const fruit_database fruit;
    const log_capture log;
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(bad_command, 0, u"apple"_s,
                                                                 fruit.database));
    const QString member = u"check_value_existence_in_db_by_dbreference"_s;
    const QString tag = u"[check_value_existence_in_db_by_dbpath]"_s;
    QCOMPARE(log.lines(),
             (QStringList{
                 library_line(member, tag + u" query --------FAILED------fruit"_s),
                 library_line(member, tag + u"command"_s + bad_command),
                 library_line(member, tag + u" error"_s + fruit.execution_error(bad_command))}));
}

void tst_sqlite_listings::value_existence_is_false_when_cancelled()
{
    const fruit_database fruit;
    library::set_cancel_extraction(true);
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(good_command, 0, u"apple"_s,
                                                                 fruit.database));
}

void tst_sqlite_listings::value_existence_is_false_when_cancelled_between_rows()
{
    const scripted_driver_registration driver(
        {u"first"_s, u"second"_s}, [](qsizetype row) { library::set_cancel_extraction(row == 1); });
    const log_capture log;
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(good_command, 0, u"first"_s,
                                                                 driver.database()));
    QVERIFY(library::bool_cancel_extraction);
    QCOMPARE(log.lines(), QStringList());
}

void tst_sqlite_listings::tables_are_listed_without_views_and_system_tables()
{
    const fruit_database fruit;
    fruit.run(u"CREATE TABLE counted (id INTEGER PRIMARY KEY AUTOINCREMENT)"_s);
    fruit.run(u"CREATE VIEW heavy AS SELECT * FROM fruit WHERE weight > 2"_s);
    const log_capture log;
    QStringList tables = library::get_total_tables_list_by_dbpath(fruit.path(), helpers_caller);
    tables.sort();
    QCOMPARE(tables, (QStringList{u"counted"_s, u"fruit"_s}));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(QSqlDatabase::contains(
        u"static QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString, QString)"_s +
        helpers_caller));
}

void tst_sqlite_listings::tables_of_a_database_that_does_not_open_are_none()
{
    const fruit_database fruit;
    const log_capture log;
    QCOMPARE(library::get_total_tables_list_by_dbpath(fruit.absent_path(), helpers_caller),
             QStringList());
    const QString member = u"get_total_tables_list_by_dbpath"_s;
    QCOMPARE(log.lines(),
             (QStringList{library_line(member, spaced_open_failure.at(0) + fruit.absent_path()),
                          library_line(member, spaced_open_failure.at(1) + helpers_caller),
                          library_line(member, spaced_open_failure.at(2) + fruit.open_error())}));
}

void tst_sqlite_listings::unmatched_entries_are_listed_data()
{
    QTest::addColumn<QStringList>("parent_list");
    QTest::addColumn<QStringList>("other_list");
    QTest::addColumn<QStringList>("unmatched");
    QTest::newRow("duplicates of the parent stay")
        << QStringList{u"a"_s, u"b"_s, u"a"_s} << QStringList{u"b"_s}
        << QStringList{u"a"_s, u"a"_s};
    QTest::newRow("letter case and blanks are told apart")
        << QStringList{u"A"_s, u"a "_s, u"a"_s} << QStringList{u"a"_s}
        << QStringList{u"A"_s, u"a "_s};
    QTest::newRow("an empty other list matches nothing")
        << QStringList{u"b"_s, u"a"_s} << QStringList() << QStringList{u"b"_s, u"a"_s};
    QTest::newRow("an empty parent gives nothing")
        << QStringList() << QStringList{u"a"_s} << QStringList();
}

void tst_sqlite_listings::unmatched_entries_are_listed()
{
    QFETCH(const QStringList, parent_list);
    QFETCH(const QStringList, other_list);
    QTEST(library::get_unmatched_varible_list_of_parentlist(parent_list, other_list), "unmatched");
}

void tst_sqlite_listings::unmatched_entries_stop_when_cancelled()
{
    library::set_cancel_extraction(true);
    QCOMPARE(library::get_unmatched_varible_list_of_parentlist({u"a"_s}, {u"b"_s}), QStringList());
}

TEST_MAIN(tst_sqlite_listings)
#include "tst_sqlite_listings.moc"

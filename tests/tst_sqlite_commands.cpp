#include "log_capture.h"
#include "result_database.h"
#include "run_context_backup.h"
#include "scripted_driver.h"
#include "test_main.h"

#include "plugin_static_function.h"

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

using library = plugin_static_function;

const QString caller = u"void caller::of_the_helper()"_s;
const QString good_command = u"SELECT name FROM fruit ORDER BY rowid"_s;
const QString bad_command = u"SELECT name FROM vegetables"_s;

// What a helper is asked for; a helper by path takes the path, one by reference the connection.
struct request
{
    QString command;
    QStringList bind_values;
    QString path;
    QSqlDatabase database;
};

enum class reach
{
    by_path,
    by_reference
};

// One member of the family: how it is called and what it logs, texts to the letter.
struct helper
{
    const char *name;
    reach how;
    bool binds;
    bool lists;
    std::function<QStringList(request &)> call; // rows; a bool is {"true"} or {"false"}
    QString connection_prefix;
    QStringList open_failure;  // the three openings of its lines
    QStringList query_failure; // the four openings of its lines
    QString end_line;
};

QStringList as_list(bool value)
{
    return {value ? u"true"_s : u"false"_s};
}

const QStringList spaced_open_failure = {u" Destination Db opening --------FAILED------ "_s,
                                         u"CALLER FUNCTION -  "_s, u" error -  "_s};
const QStringList plain_open_failure = {u"Destination Db opening --------FAILED------ "_s,
                                        u"CALLER FUNCTION -  "_s, u"error -  "_s};
const QStringList list_by_path_failure = {u"query  --------FAILED------db file - "_s,
                                          u"CALLER FUNCTION -  "_s, u"command -  "_s,
                                          u"error -  "_s};
const QStringList list_by_reference_failure = {u" query  --------FAILED------db file - "_s,
                                               u" CALLER FUNCTION -  -  "_s, u" command -  "_s,
                                               u" error -  "_s};
const QStringList execute_by_reference_failure = {u" query  --------FAILED------ db file - "_s,
                                                  u" CALLER FUNCTION -  -  "_s, u" command -  "_s,
                                                  u" error -  "_s};

QList<helper> execute_helpers()
{
    return {
        {"execute_db_command_by_dbpath",
         reach::by_path,
         false,
         false,
         [](request &r) {
             return as_list(library::execute_db_command_by_dbpath(r.command, r.path, caller));
         },
         u"static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_s,
         spaced_open_failure,
         {u" query  --------FAILED------ db file - "_s, u"CALLER FUNCTION -  "_s, u" command -  "_s,
          u" error -  "_s},
         {}},
        {"execute_db_command_with_addbindvalue_by_dbpath",
         reach::by_path,
         true,
         false,
         [](request &r) {
             return as_list(library::execute_db_command_with_addbindvalue_by_dbpath(
                 r.command, r.bind_values, r.path, caller));
         },
         u"static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(QString, QStringList, QString, QString)"_s,
         spaced_open_failure,
         {u" query  --------FAILED------ db file - "_s, u" CALLER FUNCTION -  "_s,
          u" command -  "_s, u" error -  "_s},
         {}},
        {"execute_db_command_by_dbreference",
         reach::by_reference,
         false,
         false,
         [](request &r) {
             return as_list(
                 library::execute_db_command_by_dbreference(r.command, r.database, caller));
         },
         {},
         {},
         execute_by_reference_failure,
         {}},
        {"execute_db_command_with_addbindvalue_by_dbreference",
         reach::by_reference,
         true,
         false,
         [](request &r) {
             return as_list(library::execute_db_command_with_addbindvalue_by_dbreference(
                 r.command, r.bind_values, r.database, caller));
         },
         {},
         {},
         execute_by_reference_failure,
         {}},
    };
}

QList<helper> list_helpers()
{
    return {
        {"get_stringlist_from_db_by_dbreference",
         reach::by_reference,
         false,
         true,
         [](request &r) {
             return library::get_stringlist_from_db_by_dbreference(r.command, 0, r.database,
                                                                   caller);
         },
         {},
         {},
         list_by_reference_failure,
         u" end "_s},
        {"get_stringlist_from_db_with_addbindvalues_by_dbreference",
         reach::by_reference,
         true,
         true,
         [](request &r) {
             return library::get_stringlist_from_db_with_addbindvalues_by_dbreference(
                 r.command, r.bind_values, 0, r.database, caller);
         },
         {},
         {},
         list_by_reference_failure,
         u" end "_s},
        {"get_stringlist_from_db_by_dbpath",
         reach::by_path,
         false,
         true,
         [](request &r) {
             return library::get_stringlist_from_db_by_dbpath(r.command, 0, r.path, caller);
         },
         {},
         plain_open_failure,
         list_by_path_failure,
         u" end "_s},
        {"get_stringlist_from_db_with_addbindvalues_by_dbpath",
         reach::by_path,
         true,
         true,
         [](request &r) {
             return library::get_stringlist_from_db_with_addbindvalues_by_dbpath(
                 r.command, r.bind_values, 0, r.path, caller);
         },
         {},
         plain_open_failure,
         list_by_path_failure,
         u" End "_s},
    };
}

const QList<helper> &helpers()
{
    static const QList<helper> all = execute_helpers() + list_helpers();
    return all;
}

QString log_line(const QString &member, const QString &message)
{
    return u"[ARKEN_DESK][Artifacts Extraction][plugin_static_function::"_s + member + u"]:-- "_s +
           message;
}

QStringList log_lines(const helper &tested, const QStringList &openings, const QStringList &values)
{
    QStringList lines;
    for (qsizetype index = 0; index < openings.size(); ++index)
        lines.append(
            log_line(QString::fromLatin1(tested.name), openings.at(index) + values.at(index)));
    return lines;
}

QStringList with_start(const helper &tested, const QStringList &lines)
{
    return tested.lists
               ? QStringList(log_line(QString::fromLatin1(tested.name), u" Start "_s)) + lines
               : lines;
}

// A statement in the form that the helper can run: one with a placeholder when it binds values.
QString statement(const helper &tested, const QString &table)
{
    return u"SELECT name FROM "_s + table + (tested.binds ? u" WHERE name LIKE ?"_s : QString()) +
           (table == "fruit"_L1 ? u" ORDER BY rowid"_s : QString());
}

QStringList bind_values(const helper &tested)
{
    return tested.binds ? QStringList{u"%p%"_s} : QStringList();
}

// A database file with a table of fruits, and an open connection to it.
class fruit_database
{
public:
    fruit_database()
    {
        database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"fruit"_s);
        database.setDatabaseName(path());
        database.open();
        run(u"CREATE TABLE fruit (name TEXT, weight INTEGER)"_s);
        run(u"INSERT INTO fruit VALUES (' apple ', 1), ('pear', NULL), ('Plum', 3)"_s);
    }
    ~fruit_database()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(u"fruit"_s);
    }
    Q_DISABLE_COPY_MOVE(fruit_database)

    QString path() const { return folder.filePath(u"fruit.sqlite"_s); }
    QString absent_path() const { return folder.filePath(u"absent/fruit.sqlite"_s); }
    request make(const QString &command, const QStringList &values = {}) const
    {
        return {command, values, path(), database};
    }
    void run(const QString &command) const { QVERIFY(QSqlQuery(database).exec(command)); }
    /// What Qt says of a statement that is prepared and then executed, whatever came of the first.
    QString execution_error(const QString &command, const QStringList &values = {}) const
    {
        QSqlQuery query(database);
        query.prepare(command);
        for (const QString &value : values)
            query.addBindValue(value);
        query.exec();
        return query.lastError().text();
    }
    QString open_error() const
    {
        QString error;
        {
            QSqlDatabase refused = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"refused"_s);
            refused.setDatabaseName(absent_path());
            refused.open();
            error = refused.lastError().text();
        }
        QSqlDatabase::removeDatabase(u"refused"_s);
        return error;
    }

    QSqlDatabase database;

private:
    QTemporaryDir folder;
};

using helper_choice = bool (*)(const helper &);

bool any(const helper & /*tested*/)
{
    return true;
}

bool opens_itself(const helper &tested)
{
    return tested.how == reach::by_path;
}

bool names_its_connection(const helper &tested)
{
    return !tested.connection_prefix.isEmpty();
}

bool binds_values(const helper &tested)
{
    return tested.binds;
}

bool lists_rows(const helper &tested)
{
    return tested.lists;
}

void add_rows(helper_choice is_chosen)
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < helpers().size(); ++index) {
        if (is_chosen(helpers().at(index)))
            QTest::newRow(helpers().at(index).name) << index;
    }
}

} // namespace

class tst_sqlite_commands : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void good_statement_succeeds_data() { add_rows(any); }
    void good_statement_succeeds();
    void bad_statement_logs_four_lines_data() { add_rows(any); }
    void bad_statement_logs_four_lines();
    void too_many_bind_values_fail_data() { add_rows(binds_values); }
    void too_many_bind_values_fail();
    void database_that_does_not_open_logs_three_lines_data() { add_rows(opens_itself); }
    void database_that_does_not_open_logs_three_lines();
    void cancel_before_binding_stops_without_a_line_data() { add_rows(binds_values); }
    void cancel_before_binding_stops_without_a_line();
    void cancel_between_rows_returns_the_rows_so_far_data() { add_rows(lists_rows); }
    void cancel_between_rows_returns_the_rows_so_far();
    void execute_helper_changes_the_database();
    void bind_values_are_bound_in_order();
    void path_helper_names_its_connection_after_the_caller_data()
    {
        add_rows(names_its_connection);
    }
    void path_helper_names_its_connection_after_the_caller();
    void path_helper_closes_its_connection_after_a_failed_statement_data()
    {
        add_rows(names_its_connection);
    }
    void path_helper_closes_its_connection_after_a_failed_statement();
    void path_helper_replaces_the_connection_of_an_earlier_call();
    void list_helper_leaves_no_connection_behind_data() { add_rows(lists_rows); }
    void list_helper_leaves_no_connection_behind();
    void no_rows_still_log_start_and_end();
    void column_is_chosen_and_null_is_empty();
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
    std::optional<test_support::run_context_backup> context;
};

void tst_sqlite_commands::good_statement_succeeds()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const test_support::log_capture log;
    request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked),
             tested.lists ? (QStringList{u"apple"_s, u"pear"_s, u"Plum"_s}) : as_list(true));
    QCOMPARE(log.lines(),
             tested.lists ? with_start(tested, log_lines(tested, {tested.end_line}, {QString()}))
                          : QStringList());
    QVERIFY(fruit.database.isOpen());
}

void tst_sqlite_commands::bad_statement_logs_four_lines()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const test_support::log_capture log;
    const QString command = statement(tested, u"vegetables"_s);
    request asked = fruit.make(command, bind_values(tested));
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(log.lines(),
             with_start(tested, log_lines(tested, tested.query_failure,
                                          {fruit.path(), caller, command,
                                           fruit.execution_error(command, bind_values(tested))})));
    QVERIFY(!fruit.execution_error(command, bind_values(tested)).isEmpty());
}

void tst_sqlite_commands::too_many_bind_values_fail()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const test_support::log_capture log;
    request asked = fruit.make(statement(tested, u"fruit"_s), {u"a"_s, u"b"_s});
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    const QStringList lines = log.messages();
    QCOMPARE(lines.size(), tested.lists ? 5 : 4);
    QVERIFY(lines.last().startsWith(tested.query_failure.last()));
}

void tst_sqlite_commands::database_that_does_not_open_logs_three_lines()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const test_support::log_capture log;
    request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    asked.path = fruit.absent_path();
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(log.lines(),
             with_start(tested, log_lines(tested, tested.open_failure,
                                          {fruit.absent_path(), caller, fruit.open_error()})));
}

void tst_sqlite_commands::cancel_before_binding_stops_without_a_line()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const test_support::log_capture log;
    library::set_cancel_extraction(true);
    request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), tested.lists ? QStringList() : as_list(false));
    QCOMPARE(log.lines(), with_start(tested, {}));
    if (!tested.connection_prefix.isEmpty())
        QVERIFY(QSqlDatabase::database(tested.connection_prefix + caller, false).isOpen());
    library::set_cancel_extraction(false);
    QCOMPARE(tested.call(asked).isEmpty(), false);
}

void tst_sqlite_commands::cancel_between_rows_returns_the_rows_so_far()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    // Its third row comes together with the user's cancel.
    const test_support::scripted_driver_registration driver(
        {u"first"_s, u" second "_s, u"third"_s},
        [](qsizetype row) { library::set_cancel_extraction(row == 2); });
    const test_support::log_capture log;
    request asked = {good_command, {}, u"scripted"_s, driver.database()};
    QCOMPARE(tested.call(asked), (QStringList{u"first"_s, u"second"_s}));
    QCOMPARE(log.lines(), with_start(tested, {}));
}

void tst_sqlite_commands::execute_helper_changes_the_database()
{
    const fruit_database fruit;
    QVERIFY(library::execute_db_command_by_dbpath(u"DELETE FROM fruit WHERE weight = 1"_s,
                                                  fruit.path(), caller));
    QCOMPARE(test_support::result_database(fruit.path()).row_count(u"fruit"_s), 2);
    QSqlDatabase database = fruit.database;
    QVERIFY(library::execute_db_command_by_dbreference(u"DELETE FROM fruit"_s, database, caller));
    QCOMPARE(test_support::result_database(fruit.path()).row_count(u"fruit"_s), 0);
}

void tst_sqlite_commands::bind_values_are_bound_in_order()
{
    const fruit_database fruit;
    const QString insert = u"INSERT INTO fruit (name, weight) VALUES (?, ?)"_s;
    QVERIFY(library::execute_db_command_with_addbindvalue_by_dbpath(
        insert, {u"fig'; DROP TABLE fruit; --"_s, u"7"_s}, fruit.path(), caller));
    QSqlDatabase database = fruit.database;
    QVERIFY(library::execute_db_command_with_addbindvalue_by_dbreference(
        insert, {u"kiwi"_s, u"8"_s}, database, caller));
    QCOMPARE(test_support::result_database(fruit.path())
                 .rows(u"fruit"_s, {u"name"_s, u"weight"_s})
                 .mid(3),
             (QList<QStringList>{{u"fig'; DROP TABLE fruit; --"_s, u"7"_s}, {u"kiwi"_s, u"8"_s}}));
}

void tst_sqlite_commands::path_helper_names_its_connection_after_the_caller()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const QString connection_name = tested.connection_prefix + caller;
    QSqlDatabase::removeDatabase(connection_name);
    request asked = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), as_list(true));
    QVERIFY(QSqlDatabase::contains(connection_name));
    QVERIFY(!QSqlDatabase::database(connection_name, false).isOpen());
}

void tst_sqlite_commands::path_helper_closes_its_connection_after_a_failed_statement()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    request asked = fruit.make(statement(tested, u"vegetables"_s), bind_values(tested));
    QCOMPARE(tested.call(asked), as_list(false));
    const QString connection_name = tested.connection_prefix + caller;
    QCOMPARE(QSqlDatabase::database(connection_name, false).databaseName(), fruit.path());
    QVERIFY(!QSqlDatabase::database(connection_name, false).isOpen());
}

void tst_sqlite_commands::path_helper_replaces_the_connection_of_an_earlier_call()
{
    const fruit_database first;
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    const QString connection_name =
        u"static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_s +
        caller;
    QVERIFY(!library::execute_db_command_by_dbpath(good_command, first.absent_path(), caller));
    QVERIFY(library::execute_db_command_by_dbpath(good_command, first.path(), caller));
    QCOMPARE(QSqlDatabase::database(connection_name, false).databaseName(), first.path());
}

void tst_sqlite_commands::list_helper_leaves_no_connection_behind()
{
    QFETCH(const int, index);
    const helper &tested = helpers().at(index);
    const fruit_database fruit;
    const QStringList before = QSqlDatabase::connectionNames();
    request good = fruit.make(statement(tested, u"fruit"_s), bind_values(tested));
    request bad = fruit.make(statement(tested, u"vegetables"_s), bind_values(tested));
    request absent = good;
    absent.path = fruit.absent_path();
    for (request *asked : {&good, &bad, &absent})
        tested.call(*asked);
    QCOMPARE(QSqlDatabase::connectionNames(), before);
}

void tst_sqlite_commands::no_rows_still_log_start_and_end()
{
    const fruit_database fruit;
    const test_support::log_capture log;
    QCOMPARE(library::get_stringlist_from_db_by_dbpath(u"SELECT name FROM fruit WHERE weight > 9"_s,
                                                       0, fruit.path(), caller),
             QStringList());
    QCOMPARE(log.messages(), (QStringList{u" Start "_s, u" end "_s}));
}

void tst_sqlite_commands::column_is_chosen_and_null_is_empty()
{
    const fruit_database fruit;
    QCOMPARE(library::get_stringlist_from_db_by_dbpath(
                 u"SELECT name, weight FROM fruit ORDER BY rowid"_s, 1, fruit.path(), caller),
             (QStringList{u"1"_s, QString(), u"3"_s}));
}

void tst_sqlite_commands::value_existence_is_told_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("exists");
    QTest::newRow("both sides are trimmed") << u"  apple "_s << true;
    QTest::newRow("a later row") << u"Plum"_s << true;
    QTest::newRow("letter case is told apart") << u"plum"_s << false;
    QTest::newRow("a part of a value is none") << u"app"_s << false;
}

void tst_sqlite_commands::value_existence_is_told()
{
    QFETCH(const QString, value);
    const fruit_database fruit;
    const test_support::log_capture log;
    QTEST(
        library::check_value_existence_in_db_by_dbreference(good_command, 0, value, fruit.database),
        "exists");
    QCOMPARE(log.lines(), QStringList());
}

void tst_sqlite_commands::value_existence_logs_under_the_sibling_tag()
{
    const fruit_database fruit;
    const test_support::log_capture log;
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(bad_command, 0, u"apple"_s,
                                                                 fruit.database));
    const QString member = u"check_value_existence_in_db_by_dbreference"_s;
    const QString tag = u"[check_value_existence_in_db_by_dbpath]"_s;
    QCOMPARE(
        log.lines(),
        (QStringList{log_line(member, tag + u" query --------FAILED------fruit"_s),
                     log_line(member, tag + u"command"_s + bad_command),
                     log_line(member, tag + u" error"_s + fruit.execution_error(bad_command))}));
}

void tst_sqlite_commands::value_existence_is_false_when_cancelled()
{
    const fruit_database fruit;
    library::set_cancel_extraction(true);
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(good_command, 0, u"apple"_s,
                                                                 fruit.database));
}

void tst_sqlite_commands::value_existence_is_false_when_cancelled_between_rows()
{
    const test_support::scripted_driver_registration driver(
        {u"first"_s, u"second"_s}, [](qsizetype row) { library::set_cancel_extraction(row == 1); });
    const test_support::log_capture log;
    QVERIFY(!library::check_value_existence_in_db_by_dbreference(good_command, 0, u"first"_s,
                                                                 driver.database()));
    QVERIFY(library::bool_cancel_extraction);
    QCOMPARE(log.lines(), QStringList());
}

void tst_sqlite_commands::tables_are_listed_without_views_and_system_tables()
{
    const fruit_database fruit;
    fruit.run(u"CREATE TABLE counted (id INTEGER PRIMARY KEY AUTOINCREMENT)"_s);
    fruit.run(u"CREATE VIEW heavy AS SELECT * FROM fruit WHERE weight > 2"_s);
    const test_support::log_capture log;
    QStringList tables = library::get_total_tables_list_by_dbpath(fruit.path(), caller);
    tables.sort();
    QCOMPARE(tables, (QStringList{u"counted"_s, u"fruit"_s}));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(QSqlDatabase::contains(
        u"static QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString, QString)"_s +
        caller));
}

void tst_sqlite_commands::tables_of_a_database_that_does_not_open_are_none()
{
    const fruit_database fruit;
    const test_support::log_capture log;
    QCOMPARE(library::get_total_tables_list_by_dbpath(fruit.absent_path(), caller), QStringList());
    const QString member = u"get_total_tables_list_by_dbpath"_s;
    QCOMPARE(log.lines(),
             (QStringList{log_line(member, spaced_open_failure.at(0) + fruit.absent_path()),
                          log_line(member, spaced_open_failure.at(1) + caller),
                          log_line(member, spaced_open_failure.at(2) + fruit.open_error())}));
}

void tst_sqlite_commands::unmatched_entries_are_listed_data()
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

void tst_sqlite_commands::unmatched_entries_are_listed()
{
    QFETCH(const QStringList, parent_list);
    QFETCH(const QStringList, other_list);
    QTEST(library::get_unmatched_varible_list_of_parentlist(parent_list, other_list), "unmatched");
}

void tst_sqlite_commands::unmatched_entries_stop_when_cancelled()
{
    library::set_cancel_extraction(true);
    QCOMPARE(library::get_unmatched_varible_list_of_parentlist({u"a"_s}, {u"b"_s}), QStringList());
}

TEST_MAIN(tst_sqlite_commands)
#include "tst_sqlite_commands.moc"

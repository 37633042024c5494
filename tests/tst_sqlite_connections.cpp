#include "log_capture.h"
#include "log_line.h"
#include "log_line_hook.h"
#include "result_file.h"
#include "run_context_backup.h"
#include "test_main.h"

#include "lock_wait.h"
#include "named_connection.h"
#include "plugin_static_function.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

using library = plugin_static_function;

const QString caller = u"void caller::of_the_helper()"_s;

/// A database file with a table of one row.
struct cellar
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"cellar.sqlite"_s);

    cellar()
    {
        execute(path, u"create table wine(name)"_s);
        execute(path, u"insert into wine values('red')"_s);
    }
};

using list_helper = std::function<QStringList(const QString &command, const QString &path)>;

const QList<std::pair<const char *, list_helper>> &list_helpers()
{
    static const QList<std::pair<const char *, list_helper>> helpers = {
        {"without bound values",
         [](const QString &command, const QString &path) {
             return library::get_stringlist_from_db_by_dbpath(command, 0, path, caller);
         }},
        {"with bound values",
         [](const QString &command, const QString &path) {
             return library::get_stringlist_from_db_with_addbindvalues_by_dbpath(command, {}, 0,
                                                                                 path, caller);
         }},
    };
    return helpers;
}

void add_list_helpers()
{
    QTest::addColumn<int>("helper");
    for (int helper = 0; helper < list_helpers().size(); ++helper)
        QTest::newRow(list_helpers().at(helper).first) << helper;
}

/// The connections that were not there before.
class new_connections
{
public:
    QStringList names() const
    {
        QStringList added = QSqlDatabase::connectionNames();
        added.removeIf([this](const QString &name) { return m_before.contains(name); });
        return added;
    }

private:
    QStringList m_before = QSqlDatabase::connectionNames();
};

/// Whether the text's memory is its own: that of a literal goes with the library that holds it.
bool is_on_the_heap(const QString &text)
{
    return const_cast<QString &>(text).data_ptr().d_ptr() != nullptr;
}

/// What comes of writing on a connection.
QSqlError error_of_writing(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    query.exec(u"insert into wine values('white')"_s);
    return query.lastError();
}

} // namespace

// What the SQLite helpers leave in Qt's list of connections, and how long they wait for locks.
class tst_sqlite_connections : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void list_helper_has_no_connection_any_more_when_it_logs_its_end_data() { add_list_helpers(); }
    void list_helper_has_no_connection_any_more_when_it_logs_its_end();
    void list_helper_takes_a_fresh_name_for_each_call_data() { add_list_helpers(); }
    void list_helper_takes_a_fresh_name_for_each_call();
    void table_list_closes_its_connection();
    void table_list_leaves_out_all_of_sqlites_own();
    void names_left_behind_are_no_literals_data();
    void names_left_behind_are_no_literals();
    void copy_has_memory_of_its_own();
    void lock_is_waited_for_once();
    void other_errors_leave_the_wait_as_it_is();

private:
    std::optional<run_context_backup> context;
};

void tst_sqlite_connections::list_helper_has_no_connection_any_more_when_it_logs_its_end()
{
    QFETCH(const int, helper);
    const cellar wines;
    const log_capture log;
    const new_connections connections;
    QStringList seen;
    const log_line_hook hook([&](const QString &line) {
        seen.append(message_of(line) + QString::number(connections.names().size()));
    });
    QCOMPARE(list_helpers().at(helper).second(u"select name from wine"_s, wines.path),
             QStringList{u"red"_s});
    QCOMPARE(seen.size(), 2);
    QCOMPARE(seen.first(), u" Start 0"_s);
    QCOMPARE(seen.last().toLower(), u" end 0"_s);
}

// A connection of another thread, or of an earlier call that was cancelled, is never replaced.
void tst_sqlite_connections::list_helper_takes_a_fresh_name_for_each_call()
{
    QFETCH(const int, helper);
    const cellar wines;
    const log_capture log;
    const new_connections connections;
    QStringList names;
    const log_line_hook hook([&](const QString &) {
        for (const QString &name : connections.names())
            names.append(name);
    });
    for (int call = 0; call < 3; ++call)
        list_helpers().at(helper).second(u"select name from beer"_s, wines.path);
    names.removeDuplicates();
    QCOMPARE(names.size(), 3);
    static const QRegularExpression digits(u"^[0-9]{14,}$"_s);
    for (const QString &name : std::as_const(names))
        QVERIFY2(digits.match(name).hasMatch(), qPrintable(name));
}

void tst_sqlite_connections::table_list_closes_its_connection()
{
    const cellar wines;
    const new_connections connections;
    QCOMPARE(library::get_total_tables_list_by_dbpath(wines.path, u"closing"_s),
             QStringList{u"wine"_s});
    QCOMPARE(connections.names().size(), 1);
    QVERIFY(!QSqlDatabase::database(connections.names().first(), false).isOpen());
}

void tst_sqlite_connections::table_list_leaves_out_all_of_sqlites_own()
{
    const cellar wines;
    execute(wines.path, u"create table counted(id integer primary key autoincrement)"_s);
    execute(wines.path, u"create index by_name on wine(name)"_s);
    execute(wines.path, u"analyze"_s);
    const QStringList all = sqlite_connection(wines.path).database.tables(QSql::Tables);
    QVERIFY(all.contains(u"sqlite_sequence"_s));
    QVERIFY(all.contains(u"sqlite_stat1"_s));
    QStringList tables = library::get_total_tables_list_by_dbpath(wines.path, caller);
    tables.sort();
    QCOMPARE(tables, (QStringList{u"counted"_s, u"wine"_s}));
}

void tst_sqlite_connections::names_left_behind_are_no_literals_data()
{
    QTest::addColumn<QString>("name_of_the_caller");
    QTest::newRow("a caller") << caller;
    QTest::newRow("no caller, so that the name is the helper's own") << u""_s;
    QTest::newRow("a null caller") << QString();
}

void tst_sqlite_connections::names_left_behind_are_no_literals()
{
    QFETCH(const QString, name_of_the_caller);
    const cellar wines;
    for (const QString &name : QSqlDatabase::connectionNames())
        QSqlDatabase::removeDatabase(name);
    library::execute_db_command_by_dbpath(u"delete from wine"_s, wines.path, name_of_the_caller);
    library::execute_db_command_with_addbindvalue_by_dbpath(u"delete from wine"_s, {}, wines.path,
                                                            name_of_the_caller);
    library::get_total_tables_list_by_dbpath(wines.path, name_of_the_caller);
    QCOMPARE(QSqlDatabase::connectionNames().size(), 3);
    for (const QString &name : QSqlDatabase::connectionNames()) {
        const QSqlDatabase database = QSqlDatabase::database(name, false);
        QVERIFY2(is_on_the_heap(name), qPrintable(name));
        QVERIFY(is_on_the_heap(database.connectionName()));
        QVERIFY(is_on_the_heap(database.driverName()));
        QVERIFY(is_on_the_heap(database.databaseName()));
    }
}

void tst_sqlite_connections::copy_has_memory_of_its_own()
{
    const QString literal = u"a literal"_s;
    QVERIFY(!is_on_the_heap(literal));
    QVERIFY(is_on_the_heap(heap_copy(literal)));
    QCOMPARE(heap_copy(literal), literal);
    QCOMPARE(heap_copy(QString()), QString());
}

void tst_sqlite_connections::lock_is_waited_for_once()
{
    const cellar wines;
    {
        const QSqlDatabase database =
            open_named_connection(u"waiting"_s, wines.path, u"QSQLITE_BUSY_TIMEOUT=1"_s);
        lock_wait wait;
        {
            const sqlite_connection other(wines.path);
            execute(other.database, u"begin immediate"_s);
            wait.note(error_of_writing(database), database);
        }
        QCOMPARE(busy_timeout(database), 0);
        QCOMPARE(wait.connect_options(), u"QSQLITE_BUSY_TIMEOUT=0"_s);
        wait.restore(database);
        QCOMPARE(busy_timeout(database), 5000);
        QCOMPARE(wait.connect_options(), QString());
    }
    QSqlDatabase::removeDatabase(u"waiting"_s);
}

void tst_sqlite_connections::other_errors_leave_the_wait_as_it_is()
{
    const cellar wines;
    execute(wines.path, u"drop table wine"_s);
    const sqlite_connection connection(wines.path);
    execute(connection.database, u"pragma busy_timeout = 7"_s);
    lock_wait wait;
    wait.note(error_of_writing(connection.database), connection.database);
    wait.note(QSqlError(), connection.database);
    wait.restore(connection.database);
    QCOMPARE(busy_timeout(connection.database), 7);
    QCOMPARE(wait.connect_options(), QString());
}

TEST_MAIN(tst_sqlite_connections)
#include "tst_sqlite_connections.moc"

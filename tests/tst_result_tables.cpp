#include "evidence_volume.h"
#include "host_double.h"
#include "log_capture.h"
#include "log_line.h"
#include "log_line_hook.h"
#include "plugin_helper_functions.h"
#include "result_database.h"
#include "tab_rows.h"
#include "test_main.h"
#include "windows_installed_applications.h"
#include "windows_installed_applications_winos.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

QString line_of(const QString &member, const QString &message)
{
    return log_line(u"windows_installed_applications::"_s + member, message);
}

class plugin_probe : public windows_installed_applications
{
public:
    using windows_installed_applications::bool_cancel_extraction;
    using windows_installed_applications::destination_db_file;
    using windows_installed_applications::destination_result_dir_path;
    using windows_installed_applications::destination_tmp_dir_path;
    using windows_installed_applications::winos_obj;
};

/// A plug-in object with a result directory in a temporary folder.
struct prepared_plugin
{
    const log_capture log;
    const QTemporaryDir folder;
    plugin_probe plugin;

    prepared_plugin()
    {
        plugin.pub_set_engine_type(0);
        plugin.pub_set_result_directory(folder.path());
        log.clear();
    }
};

QString signature(const QString &operation)
{
    return u"void windows_installed_applications::"_s + operation;
}

} // namespace

class tst_result_tables : public QObject
{
    Q_OBJECT

private slots:
    void the_paths_lie_below_the_result_directory_data();
    void the_paths_lie_below_the_result_directory();
    void setting_the_directory_makes_both_folders_but_no_database();
    void setting_the_directory_logs_its_start_and_end();
    void the_directory_may_be_set_again();
    void a_directory_that_cannot_be_made_is_not_reported();
    void working_copies_go_to_the_temporary_directory();
    void the_tables_are_created_in_order_by_their_statements();
    void every_table_has_the_shared_frame_data();
    void every_table_has_the_shared_frame();
    void creating_logs_its_start_and_end();
    void creating_again_changes_nothing_and_logs_no_failure();
    void creating_closes_its_connection();
    void an_unopenable_database_is_logged_in_three_lines();
    void a_table_that_cannot_be_created_does_not_stop_the_others();
    void clearing_without_a_database_is_logged();
    void a_missing_database_is_logged_for_an_unknown_edition_too();
    void clearing_nothing_deletes_nothing();
    void clearing_for_an_unknown_edition_is_silent();
    void clearing_after_a_cancellation_deletes_nothing();
    void a_cancellation_between_two_tables_stops_the_clearing();
    void clearing_deletes_the_rows_and_keeps_the_tables();
    void clearing_a_name_that_is_no_table_is_logged_and_the_next_cleared();
    void inserted_rows_leave_the_host_columns_null();
};

void tst_result_tables::the_paths_lie_below_the_result_directory_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("folder");
    QTest::newRow("without a trailing slash") << u"a"_s << u"a"_s;
    QTest::newRow("with a trailing slash") << u"a/"_s << u"a"_s;
    QTest::newRow("blanks stay") << u"my case 1"_s << u"my case 1"_s;
    QTest::newRow("any script") << u"Fälle/証拠"_s << u"Fälle/証拠"_s;
}

void tst_result_tables::the_paths_lie_below_the_result_directory()
{
    QFETCH(const QString, given);
    QFETCH(const QString, folder);
    const QTemporaryDir parent;
    const QString root = parent.path() + u'/';
    plugin_probe plugin;
    plugin.pub_set_result_directory(root + given);
    const QString own = root + folder + u"/Artifacts_Result/Windows_Installed_Applications/"_s;
    QCOMPARE(plugin.destination_result_dir_path, own);
    QCOMPARE(plugin.destination_tmp_dir_path, own + u"tmp/"_s);
    QCOMPARE(plugin.destination_db_file, own + u"Windows_Installed_Applications.sqlite"_s);
}

void tst_result_tables::setting_the_directory_makes_both_folders_but_no_database()
{
    const prepared_plugin prepared;
    QVERIFY(QFileInfo(prepared.plugin.destination_result_dir_path).isDir());
    QVERIFY(QFileInfo(prepared.plugin.destination_tmp_dir_path).isDir());
    QVERIFY(!QFileInfo::exists(prepared.plugin.destination_db_file));
}

void tst_result_tables::setting_the_directory_logs_its_start_and_end()
{
    prepared_plugin prepared;
    prepared.plugin.pub_set_result_directory(prepared.folder.path());
    QCOMPARE(
        prepared.log.lines(),
        log_lines(u"windows_installed_applications::set_destination_location"_s,
                  {u"[set_destination_location] starts"_s, u"[set_destination_location] ends"_s}));
}

void tst_result_tables::the_directory_may_be_set_again()
{
    struct worker_probe : windows_installed_applications_winos
    {
        using windows_installed_applications_winos::destination_db_file;
    };
    prepared_plugin prepared;
    const QTemporaryDir other;
    prepared.plugin.pub_set_result_directory(other.path());
    QVERIFY(prepared.plugin.destination_db_file.startsWith(other.path()));
    QCOMPARE(prepared.plugin.winos_obj->*(&worker_probe::destination_db_file),
             prepared.plugin.destination_db_file);
}

void tst_result_tables::a_directory_that_cannot_be_made_is_not_reported()
{
    prepared_plugin prepared;
    prepared.plugin.pub_set_result_directory(u"/dev/null/x"_s);
    QCOMPARE(prepared.log.messages(), (QStringList{u"[set_destination_location] starts"_s,
                                                   u"[set_destination_location] ends"_s}));
}

void tst_result_tables::working_copies_go_to_the_temporary_directory()
{
    struct helper_probe : windows_installed_applications
    {
        using windows_installed_applications::helper_obj;
    };
    prepared_plugin prepared;
    QFile file(prepared.folder.filePath(u"some.txt"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const auto *helper = prepared.plugin.*(&helper_probe::helper_obj);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(file.fileName()),
             prepared.plugin.destination_tmp_dir_path + u"some.txt"_s);
}

void tst_result_tables::the_tables_are_created_in_order_by_their_statements()
{
    prepared_plugin prepared;
    prepared.plugin.pub_create_db_tables();
    const result_database database(prepared.plugin.destination_db_file);
    QCOMPARE(database.tables(), all_tabs());
    for (const result_tab *tab : result_tabs()) {
        // SQLite keeps the statement from the table's name on.
        const QString statement = tab->create_statement;
        const QString definition = statement.mid(statement.indexOf(tab->name));
        QCOMPARE(database.create_statement(tab->name), u"CREATE TABLE "_s + definition);
    }
}

void tst_result_tables::every_table_has_the_shared_frame_data()
{
    QTest::addColumn<QStringList>("own_columns");
    const QStringList application = {u"parent_name"_s,
                                     u"display_name"_s,
                                     u"display_version"_s,
                                     u"publisher"_s,
                                     u"install_location"_s,
                                     u"install_source"_s,
                                     u"url"_s,
                                     u"uninstall_string"_s,
                                     u"reg_file"_s,
                                     u"node_name"_s,
                                     u"reg_path"_s,
                                     u"install_date"_s,
                                     u"modified_timestamp"_s};
    const QStringList user_assist = {u"class_id"_s, u"exename"_s,    u"entry_index"_s,
                                     u"runcount"_s, u"reg_file"_s,   u"node_name"_s,
                                     u"reg_path"_s, u"lastruntime"_s};
    const QStringList times = {u"creation_timestamp"_s, u"modification_timestamp"_s,
                               u"last_access_timestamp"_s};
    QTest::newRow("install_apps_64") << application;
    QTest::newRow("install_apps_32") << application;
    QTest::newRow("uninstall_apps") << user_assist;
    QTest::newRow("registered_apps")
        << QStringList{u"key_name"_s, u"value"_s, u"reg_file"_s, u"node_name"_s, u"reg_path"_s};
    QTest::newRow("metro_apps") << QStringList{u"filename"_s, u"file_path"_s, u"windows_path"_s} +
                                       times;
    QTest::newRow("previously_executed_apps") << user_assist;
    QTest::newRow("third_party_applications")
        << QStringList{u"windows_path"_s, u"file_path"_s, u"reg_file"_s, u"node_name"_s,
                       u"reg_path"_s} +
               times;
    QTest::newRow("hidden_desktop_icons_app")
        << QStringList{u"app_name"_s, u"hidden"_s, u"reg_file"_s, u"node_name"_s, u"reg_path"_s};
}

void tst_result_tables::every_table_has_the_shared_frame()
{
    QFETCH(const QStringList, own_columns);
    prepared_plugin prepared;
    prepared.plugin.pub_create_db_tables();
    const result_database database(prepared.plugin.destination_db_file);
    const QStringList head = {u"bookmark"_s, u"system_account"_s, u"INT"_s};
    const QStringList tail = {u"arken_tag_value"_s,
                              u"notes_icon"_s,
                              u"tags_icon"_s,
                              u"os_scheme_display"_s,
                              u"source_count_name"_s,
                              u"source_file"_s,
                              u"artifacts_relation_source_file"_s,
                              u"notes"_s};
    QCOMPARE(database.columns(QString::fromLatin1(QTest::currentDataTag())),
             head + own_columns + tail);
}

void tst_result_tables::creating_logs_its_start_and_end()
{
    prepared_plugin prepared;
    prepared.plugin.pub_create_db_tables();
    const QString outer = u"create_destination_database"_s;
    const QString inner = u"create_db_tables"_s;
    QCOMPARE(prepared.log.lines(),
             (QStringList{line_of(outer, u"[create_destination_database] starts"_s),
                          line_of(inner, u"[create_db_tables] -starts"_s),
                          line_of(inner, u"[create_db_tables] -ends"_s),
                          line_of(outer, u"[create_destination_database] ends"_s)}));
}

void tst_result_tables::creating_again_changes_nothing_and_logs_no_failure()
{
    evidence_volume volume;
    volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\A"_s);
    volume.write();
    const log_capture log;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.run();
    log.clear();
    host.plugin().pub_create_db_tables();
    QCOMPARE(
        log.messages(),
        (QStringList{u"[create_destination_database] starts"_s, u"[create_db_tables] -starts"_s,
                     u"[create_db_tables] -ends"_s, u"[create_destination_database] ends"_s}));
    const result_database database(host.database_path());
    QCOMPARE(database.tables(), all_tabs());
    QCOMPARE(database.row_count(u"install_apps_64"_s), 1);
}

void tst_result_tables::creating_closes_its_connection()
{
    prepared_plugin prepared;
    prepared.plugin.pub_create_db_tables();
    QVERIFY(!QSqlDatabase::database(signature(u"create_db_tables()"_s), false).isOpen());
}

void tst_result_tables::an_unopenable_database_is_logged_in_three_lines()
{
    prepared_plugin prepared;
    prepared.plugin.pub_set_result_directory(u"/dev/null/x"_s);
    prepared.log.clear();
    prepared.plugin.create_db_tables();

    QSqlDatabase reference = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"reference"_s);
    reference.setDatabaseName(prepared.plugin.destination_db_file);
    QVERIFY(!reference.open());
    QCOMPARE(prepared.log.messages(),
             (QStringList{
                 u"[create_db_tables] -starts"_s,
                 u"[create_db_tables]Destination Db opening failed for table creation"_s,
                 reference.lastError().text(),
                 u"/dev/null/x/Artifacts_Result/Windows_Installed_Applications/"
                 u"Windows_Installed_Applications.sqlite"_s,
             }));
}

void tst_result_tables::a_table_that_cannot_be_created_does_not_stop_the_others()
{
    prepared_plugin prepared;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"occupant"_s);
        database.setDatabaseName(prepared.plugin.destination_db_file);
        QVERIFY(database.open());
        // An index takes the name, so that "IF NOT EXISTS" does not find a table.
        QSqlQuery query(database);
        QVERIFY(query.exec(u"create table other(a)"_s));
        QVERIFY(query.exec(u"create index metro_apps on other(a)"_s));
    }
    QSqlDatabase::removeDatabase(u"occupant"_s);
    prepared.plugin.create_db_tables();

    const QStringList messages = prepared.log.messages();
    QCOMPARE(messages.first(), u"[create_db_tables] -starts"_s);
    QCOMPARE(messages.filter(QRegularExpression(u"^ table creation"_s)),
             QStringList{u" table creation -----FAILED---- metro_apps"_s});
    QCOMPARE(messages.last(), u"[create_db_tables] -ends"_s);
    QStringList expected = all_tabs();
    expected.removeAll(u"metro_apps"_s);
    QCOMPARE(result_database(prepared.plugin.destination_db_file).tables(),
             QStringList{u"other"_s} + expected);
}

void tst_result_tables::clearing_without_a_database_is_logged()
{
    prepared_plugin prepared;
    prepared.plugin.pub_set_clear_db(true);
    QCOMPARE(prepared.log.lines(),
             QStringList{line_of(u"clear_db_tables"_s,
                                 u"[clear_db_tables]DB not exists and so returning..."_s)});
}

void tst_result_tables::a_missing_database_is_logged_for_an_unknown_edition_too()
{
    prepared_plugin prepared;
    prepared.plugin.pub_set_engine_type(5);
    prepared.plugin.pub_set_clear_db(true);
    QCOMPARE(prepared.log.messages(),
             QStringList{u"[clear_db_tables]DB not exists and so returning..."_s});
}

namespace {

/// A finished run over a volume with one application in each of the two Uninstall tables.
struct finished_run
{
    const log_capture log;
    evidence_volume volume;
    std::optional<host_double> host;

    finished_run()
    {
        volume.software().key(u"Microsoft\\Windows\\CurrentVersion\\Uninstall\\A"_s);
        volume.software().key(u"WOW6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\B"_s);
        volume.write();
        host.emplace(volume);
        host->settings.general = log.general_info();
        host->run();
        log.clear();
    }

    void clear(const QStringList &tabs)
    {
        host->plugin().pub_set_essential_for_arken_desk_extraction(tabs, {});
        host->plugin().pub_set_clear_db(true);
    }

    QList<qint64> row_counts() const
    {
        const result_database database(host->database_path());
        return {database.row_count(u"install_apps_64"_s), database.row_count(u"install_apps_32"_s)};
    }
};

} // namespace

void tst_result_tables::clearing_nothing_deletes_nothing()
{
    finished_run run;
    run.clear({});
    QCOMPARE(run.row_counts(), (QList<qint64>{1, 1}));
    QCOMPARE(run.log.messages(), QStringList());
}

void tst_result_tables::clearing_for_an_unknown_edition_is_silent()
{
    finished_run run;
    run.host->plugin().pub_set_engine_type(5);
    run.clear(all_tabs());
    QCOMPARE(run.row_counts(), (QList<qint64>{1, 1}));
    QCOMPARE(run.log.messages(), QStringList());
}

void tst_result_tables::clearing_after_a_cancellation_deletes_nothing()
{
    finished_run run;
    run.host->plugin().pub_cancel_extraction();
    run.clear(all_tabs());
    QCOMPARE(run.row_counts(), (QList<qint64>{1, 1}));
    QCOMPARE(run.log.messages(), QStringList());
}

// The user cancels while the failure of a name that is no table is logged.
void tst_result_tables::a_cancellation_between_two_tables_stops_the_clearing()
{
    finished_run run;
    {
        const log_line_hook hook(
            [&run](const QString &) { run.host->plugin().pub_cancel_extraction(); });
        run.clear({u"install_apps_64"_s, u"Metro"_s, u"install_apps_32"_s});
    }
    QCOMPARE(run.row_counts(), (QList<qint64>{0, 1}));
    QCOMPARE(run.log.messages().size(), 4);
}

void tst_result_tables::clearing_deletes_the_rows_and_keeps_the_tables()
{
    finished_run run;
    run.clear(all_tabs());
    QCOMPARE(run.row_counts(), (QList<qint64>{0, 0}));
    QCOMPARE(result_database(run.host->database_path()).tables(), all_tabs());
    QCOMPARE(run.log.messages(), QStringList());
}

void tst_result_tables::clearing_a_name_that_is_no_table_is_logged_and_the_next_cleared()
{
    finished_run run;
    run.clear({u"Metro"_s, u"install_apps_32"_s});
    QCOMPARE(run.row_counts(), (QList<qint64>{1, 0}));
    const QStringList messages = run.log.messages();
    QCOMPARE(messages.size(), 4);
    QCOMPARE(messages.at(0),
             u" query  --------FAILED------ db file - "_s + run.host->database_path());
    QCOMPARE(messages.at(1), u"CALLER FUNCTION -  "_s + signature(u"clear_db_tables()"_s));
    QCOMPARE(messages.at(2), u" command -  delete from 'Metro'"_s);
}

void tst_result_tables::inserted_rows_leave_the_host_columns_null()
{
    const finished_run run;
    const result_database database(run.host->database_path());
    const QStringList columns = {
        u"bookmark"_s,   u"INT"_s,       u"system_account"_s, u"arken_tag_value"_s,
        u"notes_icon"_s, u"tags_icon"_s, u"notes"_s,          u"artifacts_relation_source_file"_s};
    const QStringList row = {u"0"_s,    u"1"_s,    null_text, null_text,
                             null_text, null_text, null_text, null_text};
    QCOMPARE(database.rows(u"install_apps_64"_s, columns), QList<QStringList>{row});
    QCOMPARE(database.rows(u"install_apps_32"_s, columns), QList<QStringList>{row});
}

TEST_MAIN(tst_result_tables)
#include "tst_result_tables.moc"

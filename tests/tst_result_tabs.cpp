#include "sample_fixture.h"
#include "tab_rows.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The contract that every result table and its artefact keep. The tests that spell texts out cover
// the first eight tables only. Later tables stand behind these.

namespace {

const QString table_head =
    u"(bookmark integer,system_account varchar(100),INT INTEGER PRIMARY KEY,"_s;
const QString table_tail =
    u",arken_tag_value varchar(100),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(100),source_count_name VARCHAR(500),source_file varchar(500),"
    "artifacts_relation_source_file VARCHAR(1024),notes varchar(500))"_s;

const QString application_columns =
    u"parent_name VARCHAR(500),display_name VARCHAR(200),display_version VARCHAR(200),"
    "publisher VARCHAR(200),install_location VARCHAR(1024),install_source VARCHAR(1024),"
    "url VARCHAR(1024),uninstall_string VARCHAR(1024),reg_file varchar(500),"
    "node_name varchar(500),reg_path varchar(1024),install_date VARCHAR(1024),"
    "modified_timestamp INTEGER"_s;
const QString user_assist_columns =
    u"class_id varchar(1024),exename varchar(1024),entry_index INTEGER,runcount INTEGER,"
    "reg_file varchar(500),node_name varchar(500),reg_path varchar(1024),lastruntime INTEGER"_s;
const QString time_columns = u"creation_timestamp INTEGER,modification_timestamp INTEGER,"
                             "last_access_timestamp INTEGER"_s;

/// The columns that the tab's statement fills, in its order.
QStringList filled_columns(const result_tab &tab)
{
    const QString columns = QString(tab.insert_statement).section(u'(', 1, 1).section(u')', 0, 0);
    QStringList names;
    for (const QString &name : columns.split(u','))
        names.append(name.trimmed());
    return names;
}

} // namespace

class tst_result_tabs : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void stand_in_their_order();
    void share_no_name_and_no_signature();
    void create_their_tables_by_these_statements_data();
    void create_their_tables_by_these_statements();
    void insert_their_rows_by_these_statements_data();
    void insert_their_rows_by_these_statements();
    void log_in_these_words_data();
    void log_in_these_words();
    void bear_the_signature_of_their_operation_data();
    void bear_the_signature_of_their_operation();
    void fill_columns_that_their_table_has_data() { add_tab_rows(); }
    void fill_columns_that_their_table_has();
    void end_every_row_with_its_source_data() { add_tab_rows(); }
    void end_every_row_with_its_source();
    void have_a_placeholder_for_every_column_but_the_bookmark_data() { add_tab_rows(); }
    void have_a_placeholder_for_every_column_but_the_bookmark();
    void are_filled_each_by_its_own_artefact_data() { add_tab_rows(); }
    void are_filled_each_by_its_own_artefact();
    void are_filled_by_their_operation_data();
    void are_filled_by_their_operation();
    void are_filled_in_the_order_of_their_creation();
};

void tst_result_tabs::stand_in_their_order()
{
    QCOMPARE(all_tabs().mid(0, 8),
             (QStringList{u"install_apps_64"_s, u"install_apps_32"_s, u"uninstall_apps"_s,
                          u"registered_apps"_s, u"metro_apps"_s, u"previously_executed_apps"_s,
                          u"third_party_applications"_s, u"hidden_desktop_icons_app"_s}));
}

void tst_result_tabs::share_no_name_and_no_signature()
{
    QSet<QString> names;
    QSet<QString> signatures;
    const auto tabs = result_tabs();
    for (const result_tab *tab : tabs) {
        names.insert(tab->name);
        signatures.insert(tab->signature);
    }
    QCOMPARE(names.size(), tabs.size());
    QCOMPARE(signatures.size(), tabs.size());
}

void tst_result_tabs::create_their_tables_by_these_statements_data()
{
    QTest::addColumn<QString>("beginning");
    QTest::addColumn<QString>("own_columns");
    const QString upper = u"CREATE TABLE IF NOT EXISTS "_s;
    const QString lower = u"create table IF NOT EXISTS "_s;
    QTest::newRow("install_apps_64") << upper << application_columns;
    QTest::newRow("install_apps_32") << upper << application_columns;
    QTest::newRow("uninstall_apps") << lower << user_assist_columns;
    QTest::newRow("registered_apps")
        << upper
        << u"key_name VARCHAR(1024),value VARCHAR(1024),reg_file varchar(500),"
           "node_name varchar(500),reg_path varchar(1024)"_s;
    QTest::newRow("metro_apps")
        << upper
        << u"filename VARCHAR(300),file_path VARCHAR(500),windows_path VARCHAR(500),"_s +
               time_columns;
    QTest::newRow("previously_executed_apps") << lower << user_assist_columns;
    QTest::newRow("third_party_applications")
        << upper
        << u"windows_path VARCHAR(500),file_path VARCHAR(500),reg_file varchar(500),"
           "node_name varchar(500),reg_path varchar(1024),"_s +
               time_columns;
    QTest::newRow("hidden_desktop_icons_app")
        << upper
        << u"app_name VARCHAR(300),hidden VARCHAR(300),reg_file VARCHAR(500),"
           "node_name VARCHAR(500),reg_path VARCHAR(1024)"_s;
}

void tst_result_tabs::create_their_tables_by_these_statements()
{
    QFETCH(const QString, beginning);
    QFETCH(const QString, own_columns);
    const result_tab &tab = current_tab();
    QCOMPARE(QString(tab.create_statement),
             beginning + tab.name + table_head + own_columns + table_tail);
}

void tst_result_tabs::insert_their_rows_by_these_statements_data()
{
    QTest::addColumn<QString>("statement");
    QTest::newRow("install_apps_64")
        << u"INSERT INTO install_apps_64(bookmark,parent_name,display_name,display_version,"
           "publisher,install_location,install_source,url,uninstall_string,reg_file,node_name,"
           "reg_path,install_date,modified_timestamp,source_file, os_scheme_display , "
           "source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("install_apps_32")
        << u"INSERT INTO install_apps_32(bookmark,parent_name,display_name,display_version,"
           "publisher,install_location,install_source,url,uninstall_string,reg_file,node_name,"
           "reg_path,install_date,modified_timestamp,source_file, os_scheme_display , "
           "source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("uninstall_apps")
        << u"INSERT INTO uninstall_apps(bookmark,system_account,class_id,exename,entry_index,"
           "runcount,reg_file,node_name,reg_path,lastruntime,source_file, os_scheme_display , "
           "source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("registered_apps")
        << u"insert into registered_apps(bookmark,key_name,value,reg_file,node_name,reg_path,"
           "source_file, os_scheme_display , source_count_name) values(0,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("metro_apps")
        << u"insert into metro_apps(bookmark,system_account,filename,file_path,windows_path,"
           "creation_timestamp,modification_timestamp,last_access_timestamp,source_file, "
           "os_scheme_display , source_count_name) values(0,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("previously_executed_apps")
        << u"INSERT INTO previously_executed_apps(bookmark,system_account,class_id,exename,"
           "entry_index,runcount,reg_file,node_name,reg_path,lastruntime,source_file, "
           "os_scheme_display , source_count_name) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("third_party_applications")
        << u"insert into third_party_applications(bookmark,system_account,windows_path,file_path,"
           "reg_file,node_name,reg_path,creation_timestamp,modification_timestamp,"
           "last_access_timestamp,source_file, os_scheme_display , source_count_name) "
           "values(0,?,?,?,?,?,?,?,?,?,?,?,?)"_s;
    QTest::newRow("hidden_desktop_icons_app")
        << u"INSERT INTO hidden_desktop_icons_app(bookmark,system_account,app_name,hidden,"
           "reg_file,node_name,reg_path,source_file, os_scheme_display , source_count_name) "
           "VALUES(0,?,?,?,?,?,?,?,?,?)"_s;
}

void tst_result_tabs::insert_their_rows_by_these_statements()
{
    QTEST(QString(current_tab().insert_statement), "statement");
}

void tst_result_tabs::log_in_these_words_data()
{
    QTest::addColumn<QString>("opening");
    QTest::addColumn<QString>("insert_failure");
    QTest::addColumn<bool>("names_database");
    QTest::newRow("install_apps_64")
        << u"[extract_installed_applications]---ENDS---"_s
        << u"[extract_installed_applications] query_insert -----FAILED----- install_apps_64"_s
        << true;
    QTest::newRow("install_apps_32")
        << u"[extract_installed_applications_for_32]---ENDS---"_s
        << u"[extract_installed_applications_for_32] query_insert -----FAILED----- install_apps_32"_s
        << true;
    QTest::newRow("uninstall_apps")
        << u"[extract_uninstall_applications]---STARTS---"_s
        << u"[extract_uninstall_applications] query_insert  uninstall_apps -----FAILED-----, table"_s
        << false;
    QTest::newRow("registered_apps")
        << u"[extract_registered_apps]---STARTS---"_s
        << u"[extract_registered_apps] query_insert -----FAILED----- registered_apps"_s << true;
    QTest::newRow("metro_apps")
        << u"[extract_metro_apps]---STARTS---"_s
        << u"[extract_metro_apps] query_insert -----FAILED----- metro_apps"_s << true;
    QTest::newRow("previously_executed_apps")
        << u"[extract_previously_executed_programs]---STARTS---"_s
        << u"[extract_previously_executed_programs] query_insert previously_executed_apps "
           "---FAILED---, table"_s
        << false;
    QTest::newRow("third_party_applications")
        << u"[extract_third_party_applications]---STARTS---"_s
        << u"[extract_third_party_applications] query_insert -----FAILED----- "
           "third_party_applications"_s
        << true;
    QTest::newRow("hidden_desktop_icons_app")
        << u"[extract_hidden_desktop_icons]---STARTS---"_s
        << u"[extract_hidden_desktop_icons]query_insert -----FAILED----- hidden_desktop_icons_app"_s
        << true;
}

void tst_result_tabs::log_in_these_words()
{
    const result_tab &tab = current_tab();
    QTEST(tab.log_line(tab.opening), "opening");
    QTEST(tab.log_line(tab.insert_failure), "insert_failure");
    QTEST(tab.failure_names_database, "names_database");
}

void tst_result_tabs::bear_the_signature_of_their_operation_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("install_apps_64") << u"extract_installed_applications"_s;
    QTest::newRow("install_apps_32") << u"extract_installed_applications_for_32"_s;
    QTest::newRow("uninstall_apps") << u"extract_uninstall_applications"_s;
    QTest::newRow("registered_apps") << u"extract_registered_apps"_s;
    QTest::newRow("metro_apps") << u"extract_metro_apps"_s;
    QTest::newRow("previously_executed_apps") << u"extract_previously_executed_programs"_s;
    QTest::newRow("third_party_applications") << u"extract_third_party_applications"_s;
    QTest::newRow("hidden_desktop_icons_app") << u"extract_hidden_desktop_icons"_s;
}

void tst_result_tabs::bear_the_signature_of_their_operation()
{
    QFETCH(const QString, operation);
    const result_tab &tab = current_tab();
    QCOMPARE(QString(tab.signature),
             u"void windows_installed_applications_winos::"_s + operation + u"()"_s);
    QCOMPARE(QString(tab.log_tag), u'[' + operation + u']');
}

void tst_result_tabs::fill_columns_that_their_table_has()
{
    const worker_fixture fixture;
    const result_tab &tab = current_tab();
    const QStringList columns = filled_columns(tab);
    const QStringList existing = fixture.database().columns(tab.name);
    QCOMPARE(QSet<QString>(columns.cbegin(), columns.cend()).size(), columns.size());
    for (const QString &column : columns)
        QVERIFY2(existing.contains(column), qUtf8Printable(column));
}

void tst_result_tabs::end_every_row_with_its_source()
{
    QCOMPARE(filled_columns(current_tab()).mid(filled_columns(current_tab()).size() - 3),
             (QStringList{u"source_file"_s, u"os_scheme_display"_s, u"source_count_name"_s}));
}

void tst_result_tabs::have_a_placeholder_for_every_column_but_the_bookmark()
{
    const QString statement = current_tab().insert_statement;
    const QStringList columns = filled_columns(current_tab());
    QStringList values = {u"0"_s};
    values.resize(columns.size(), u"?"_s);
    QCOMPARE(columns.first(), u"bookmark"_s);
    QVERIFY(!columns.contains(u"INT"_s));
    QCOMPARE(statement.section(u'(', 2), values.join(u',') + u')');
}

void tst_result_tabs::are_filled_each_by_its_own_artefact()
{
    QFETCH(const QString, tab);
    worker_fixture fixture;
    add_sample_evidence(fixture.volume);
    fixture.find_files();
    fixture.extract(tab);
    const QStringList names = all_tabs();
    for (const QString &name : names)
        QCOMPARE(fixture.database().row_count(name), name == tab ? sample_row_count : 0);
}

using operation = void (windows_installed_applications_winos::*)();
Q_DECLARE_METATYPE(operation)

void tst_result_tabs::are_filled_by_their_operation_data()
{
    using worker = windows_installed_applications_winos;
    QTest::addColumn<operation>("extract");
    QTest::newRow("install_apps_64") << &worker::extract_installed_applications;
    QTest::newRow("install_apps_32") << &worker::extract_installed_applications_for_32;
    QTest::newRow("uninstall_apps") << &worker::extract_uninstall_applications;
    QTest::newRow("registered_apps") << &worker::extract_registered_apps;
    QTest::newRow("metro_apps") << &worker::extract_metro_apps;
    QTest::newRow("previously_executed_apps") << &worker::extract_previously_executed_programs;
    QTest::newRow("third_party_applications") << &worker::extract_third_party_applications;
    QTest::newRow("hidden_desktop_icons_app") << &worker::extract_hidden_desktop_icons;
}

void tst_result_tabs::are_filled_by_their_operation()
{
    QFETCH(const operation, extract);
    sample_fixture fixture;
    (fixture.worker.*extract)();
    for (const QString &name : all_tabs())
        QCOMPARE(fixture.database().row_count(name),
                 name == current_tab().name ? sample_row_count : 0);
}

void tst_result_tabs::are_filled_in_the_order_of_their_creation()
{
    worker_fixture fixture;
    fixture.find_files();
    fixture.worker.selected_tabs_list = all_tabs();
    fixture.worker.extract_plugin_artifacts();
    QStringList openings;
    for (const result_tab *tab : result_tabs())
        openings.append(tab->log_line(tab->opening));
    QStringList lines = fixture.log.messages();
    lines.removeIf([&](const QString &line) { return !openings.contains(line); });
    QCOMPARE(lines, openings);
}

TEST_MAIN(tst_result_tabs)

#include "tst_result_tabs.moc"

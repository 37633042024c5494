#include "files.h"
#include "log_line.h"
#include "plugin_static_function.h"
#include "result_file.h"
#include "sample_fixture.h"
#include "tab_rows.h"
#include "test_main.h"
#include "volume_snapshot.h"
#include "worker_fixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlError>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What all artefacts have in common, over evidence that gives each table three rows.

namespace {

QStringList failure_lines(const result_tab &tab, const QString &path, const insert_outcome &outcome)
{
    const QString failure = tab.log_line(tab.insert_failure);
    return {tab.failure_names_database ? failure + path : failure, outcome.error,
            outcome.statement};
}

/// The log of a whole run whose rows had these outcomes.
QStringList log_of_run(const result_tab &tab, const QString &path,
                       const QList<insert_outcome> &outcomes)
{
    QStringList lines = {tab.log_line(tab.opening)};
    for (const insert_outcome &outcome : outcomes) {
        if (!outcome.error.isEmpty())
            lines += failure_lines(tab, path, outcome);
    }
    return lines << end_line(tab);
}

/// What becomes of the sample rows when they are inserted in the plainest way.
QList<insert_outcome> plain_outcomes(const result_tab &tab, const QString &path,
                                     const row_action &before_row = {})
{
    const QString statement = tab.insert_statement;
    const QStringList row(statement.count(u'?'), u"text"_s);
    return insert_row_by_row(path, statement, QList<QStringList>(sample_row_count, row),
                             before_row);
}

QSqlDatabase connection_of(const result_tab &tab)
{
    return QSqlDatabase::database(tab.signature, false);
}

bool comes_from_users(const result_tab &tab)
{
    return QString(tab.insert_statement).contains("system_account"_L1);
}

/// A copy of a result database, as it is now.
struct database_copy
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"copy.sqlite"_s);

    explicit database_copy(const QString &original) { write_file(path, read_file(original)); }
};

using fault = void (*)(const QString &path, const QString &table);
using running_fault = void (*)(const QSqlDatabase &, const QString &table,
                               std::optional<sqlite_connection> &other);

/// Adds a data row for each table and each fault, in the columns "tab" and "strike".
template<typename fault_type>
void add_fault_rows(const QList<std::pair<const char *, fault_type>> &faults)
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<fault_type>("strike");
    const QStringList tabs = all_tabs();
    for (const QString &tab : tabs) {
        for (const auto &[name, strike] : faults)
            QTest::addRow("the database of %s %s", qUtf8Printable(tab), name) << tab << strike;
    }
}

} // namespace

class tst_extraction_frame : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void writes_every_row_between_two_lines_data() { add_tab_rows(); }
    void writes_every_row_between_two_lines();
    void logs_with_its_operation_as_the_origin_data() { add_tab_rows(); }
    void logs_with_its_operation_as_the_origin();
    void leaves_the_columns_of_the_host_null_data() { add_tab_rows(); }
    void leaves_the_columns_of_the_host_null();
    void names_an_account_where_rows_come_from_users_data() { add_tab_rows(); }
    void names_an_account_where_rows_come_from_users();
    void fills_all_its_columns_data() { add_tab_rows(); }
    void fills_all_its_columns();
    void adds_to_the_rows_of_earlier_runs_data() { add_tab_rows(); }
    void adds_to_the_rows_of_earlier_runs();
    void leaves_the_evidence_as_it_was_data() { add_tab_rows(); }
    void leaves_the_evidence_as_it_was();
    void writes_nothing_without_evidence_data() { add_tab_rows(); }
    void writes_nothing_without_evidence();
    void writes_nothing_from_what_is_no_hive_data() { add_tab_rows(); }
    void writes_nothing_from_what_is_no_hive();

    void names_no_user_without_known_accounts_data() { add_tab_rows(); }
    void names_no_user_without_known_accounts();
    void goes_on_after_a_hive_that_cannot_be_opened_data() { add_tab_rows(); }
    void goes_on_after_a_hive_that_cannot_be_opened();
    void tells_user_and_source_file_by_the_root_as_it_stands_data();
    void tells_user_and_source_file_by_the_root_as_it_stands();

    void logs_a_database_that_cannot_be_opened_data() { add_tab_rows(); }
    void logs_a_database_that_cannot_be_opened();
    void replaces_a_stale_connection_and_closes_its_own_data() { add_tab_rows(); }
    void replaces_a_stale_connection_and_closes_its_own();
    void logs_every_row_that_a_faulty_database_refuses_data();
    void logs_every_row_that_a_faulty_database_refuses();
    void goes_on_after_a_row_that_is_refused_data() { add_tab_rows(); }
    void goes_on_after_a_row_that_is_refused();
    void keeps_what_was_written_before_a_fault_data();
    void keeps_what_was_written_before_a_fault();
};

void tst_extraction_frame::writes_every_row_between_two_lines()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    fixture.worker.record_count = 100;
    fixture.extract(tab.name);
    QCOMPARE(fixture.rows(tab.name).size(), sample_row_count);
    QCOMPARE(fixture.worker.record_count, 100 + sample_row_count);
    QCOMPARE(fixture.log.messages(), (QStringList{tab.log_line(tab.opening), end_line(tab)}));
}

void tst_extraction_frame::logs_with_its_operation_as_the_origin()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    fixture.extract(tab.name);
    const QString name = QString(tab.log_tag).mid(1).chopped(1);
    QCOMPARE(fixture.log.lines(), log_lines(u"windows_installed_applications_winos::"_s + name,
                                            {tab.log_line(tab.opening), end_line(tab)}));
}

void tst_extraction_frame::leaves_the_columns_of_the_host_null()
{
    sample_fixture fixture;
    fixture.extract(current_tab().name);
    const auto rows = fixture.database().rows(
        current_tab().name, {u"INT"_s, u"bookmark"_s, u"arken_tag_value"_s, u"notes_icon"_s,
                             u"tags_icon"_s, u"artifacts_relation_source_file"_s, u"notes"_s});
    QCOMPARE(rows.size(), sample_row_count);
    for (qsizetype row = 0; row < rows.size(); ++row)
        QCOMPARE(rows[row], (QStringList{QString::number(row + 1), u"0"_s, null_text, null_text,
                                         null_text, null_text, null_text}));
}

void tst_extraction_frame::names_an_account_where_rows_come_from_users()
{
    sample_fixture fixture;
    fixture.extract(current_tab().name);
    const QStringList machine_wide(sample_row_count, null_text);
    QCOMPARE(fixture.database().column(current_tab().name, u"system_account"_s),
             comes_from_users(current_tab()) ? (QStringList{u"ann"_s, u"ann"_s, u"bob"_s})
                                             : machine_wide);
}

void tst_extraction_frame::fills_all_its_columns()
{
    sample_fixture fixture;
    fixture.extract(current_tab().name);
    const auto rows = fixture.rows(current_tab().name);
    QCOMPARE(rows.size(), sample_row_count);
    for (const QStringList &row : rows) {
        QVERIFY(!row.mid(1).contains(null_text));
        QCOMPARE(row.mid(row.size() - 2), (QStringList{u"Windows"_s, u"Source3"_s}));
    }
}

void tst_extraction_frame::adds_to_the_rows_of_earlier_runs()
{
    sample_fixture fixture;
    fixture.extract(current_tab().name);
    const auto rows = fixture.rows(current_tab().name);
    fixture.extract(current_tab().name);
    QCOMPARE(fixture.rows(current_tab().name), rows + rows);
    QCOMPARE(fixture.worker.record_count, 2 * sample_row_count);
}

void tst_extraction_frame::leaves_the_evidence_as_it_was()
{
    sample_fixture fixture;
    const QStringList before = volume_snapshot(fixture.volume.root());
    fixture.extract(current_tab().name);
    QCOMPARE(volume_snapshot(fixture.volume.root()), before);
}

void tst_extraction_frame::writes_nothing_without_evidence()
{
    const result_tab &tab = current_tab();
    worker_fixture fixture;
    fixture.find_files();
    fixture.extract(tab.name);
    QCOMPARE(fixture.rows(tab.name), QList<QStringList>());
    QStringList expected_log = {tab.log_line(tab.opening)};
    if (comes_from_users(tab))
        expected_log += end_line(tab);
    QCOMPARE(fixture.log.messages(), expected_log);
}

void tst_extraction_frame::writes_nothing_from_what_is_no_hive()
{
    const result_tab &tab = current_tab();
    worker_fixture fixture;
    for (const QString &place :
         {u"Windows/System32/config/SOFTWARE"_s, u"Windows/System32/config/RegBack/SOFTWARE"_s,
          u"Users/ann/NTUSER.DAT"_s, u"Users/ann/AppData/Local/Packages"_s})
        fixture.volume.file(place, "no hive");
    fixture.volume.folder(u"Users/bob/NTUSER.DAT"_s).folder(u"Users/eve"_s);
    fixture.volume.file(u"Users/eve/NTUSER.DAT"_s);
    fixture.set_source(fixture.volume.root(), {u"ann"_s, u"bob"_s, u"eve"_s});
    fixture.worker.find_source_file();
    fixture.log.clear();
    QCOMPARE(fixture.worker.ntuser_path_list.size(), 3);

    fixture.extract(tab.name);
    QCOMPARE(fixture.rows(tab.name), QList<QStringList>());
    QStringList expected_log = {tab.log_line(tab.opening)};
    if (comes_from_users(tab))
        expected_log += end_line(tab);
    QCOMPARE(fixture.log.messages(), expected_log);
}

void tst_extraction_frame::names_no_user_without_known_accounts()
{
    sample_fixture fixture;
    plugin_static_function::system_account_QStringList.clear();
    fixture.extract(current_tab().name);
    QCOMPARE(fixture.database().column(current_tab().name, u"system_account"_s),
             QStringList(sample_row_count, comes_from_users(current_tab()) ? u""_s : null_text));
}

void tst_extraction_frame::goes_on_after_a_hive_that_cannot_be_opened()
{
    sample_fixture fixture;
    write_file(fixture.volume.ntuser_path(u"ann"_s), "garbage");
    QVERIFY(QDir(fixture.volume.packages_path(u"ann"_s)).removeRecursively());
    fixture.extract(current_tab().name);
    const QStringList machine_wide(sample_row_count, null_text);
    QCOMPARE(fixture.database().column(current_tab().name, u"system_account"_s),
             comes_from_users(current_tab()) ? QStringList{u"bob"_s} : machine_wide);
    QCOMPARE(fixture.log.messages(),
             (QStringList{current_tab().log_line(current_tab().opening), end_line(current_tab())}));
}

void tst_extraction_frame::tells_user_and_source_file_by_the_root_as_it_stands_data()
{
    // "ROOT" stands for the folder of the volume, "OTHER" for another of the same length.
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("source_file");
    const auto rows_of_tab = [](const QString &tab, const QString &source_file,
                                const QString &source_file_elsewhere) {
        const bool has_user = comes_from_users(tab_named(tab));
        const auto row = [&](const char *name, const QString &root, const QString &user,
                             const QString &path) {
            QTest::addRow("%s, %s", qUtf8Printable(tab), name)
                << tab << root << (has_user ? user : null_text) << path;
        };
        row("a root with its slash", u"ROOT/"_s, u"ann"_s, source_file);
        row("a root without its slash", u"ROOT"_s, u"Users"_s, source_file);
        row("another root of this length", u"OTHER/"_s, u"ann"_s, source_file_elsewhere);
    };
    const QString software = u"/Windows/System32/config/SOFTWARE"_s;
    for (const QString &tab : tabs_read_from(artifact_input::software_hive))
        rows_of_tab(tab, software, u"ROOT"_s + software);
    const QString hive = u"/Users/ann/NTUSER.DAT"_s;
    for (const QString &tab : tabs_read_from(artifact_input::user_hives)) {
        const bool is_cut = artifact_named(tab).source_file_path == root_removal::by_its_length;
        rows_of_tab(tab, hive, is_cut ? hive : u"ROOT"_s + hive);
    }
    const QString packages = u"/Users/ann/AppData/Local/Packages/"_s;
    rows_of_tab(u"metro_apps"_s, packages, u"ROOT"_s + packages);
}

void tst_extraction_frame::tells_user_and_source_file_by_the_root_as_it_stands()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, root);
    QFETCH(const QString, user);
    QFETCH(const QString, source_file);
    sample_fixture fixture;
    const QString folder = fixture.volume.root().chopped(1);
    const auto with_folder = [&](QString text) {
        return text.replace(u"ROOT"_s, folder).replace(u"OTHER"_s, QString(folder.size(), u'o'));
    };
    fixture.worker.source_root_path = with_folder(root);
    fixture.extract(tab);
    QCOMPARE(fixture.database().rows(tab, {u"system_account"_s, u"source_file"_s}).value(0),
             (QStringList{user, with_folder(source_file)}));
}

void tst_extraction_frame::logs_a_database_that_cannot_be_opened()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    const QString path = fixture.volume.path(u"no folder/result.sqlite"_s);
    fixture.worker.destination_db_file = path;
    fixture.worker.milliseconds = 1001;
    fixture.extract(tab.name);
    QCOMPARE(
        fixture.log.messages(),
        (QStringList{tab.log_line(tab.opening), tab.log_tag + "Destination Db opening failed "_L1,
                     sqlite_connection(path).database.lastError().text()}));
    QCOMPARE(fixture.worker.record_count, 0);
    QCOMPARE(fixture.signalled_totals(), QList<qint64>());
}

void tst_extraction_frame::replaces_a_stale_connection_and_closes_its_own()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    QSqlDatabase::removeDatabase(tab.signature);
    QSqlDatabase::addDatabase(u"QSQLITE"_s, tab.signature).setDatabaseName(u":memory:"_s);
    QVERIFY(QSqlDatabase::database(tab.signature).isOpen());
    fixture.extract(tab.name);
    QCOMPARE(fixture.database().row_count(tab.name), sample_row_count);
    QCOMPARE(connection_of(tab).databaseName(), fixture.database_path());
    QVERIFY(!connection_of(tab).isOpen());
}

void tst_extraction_frame::logs_every_row_that_a_faulty_database_refuses_data()
{
    const QList<std::pair<const char *, fault>> faults = {
        {"is missing", [](const QString &path, const QString &) { QFile::remove(path); }},
        {"has lost the table",
         [](const QString &path, const QString &table) {
             execute(path, u"drop table "_s + table);
         }},
        {"has the table under another name",
         [](const QString &path, const QString &table) {
             execute(path, u"alter table %1 rename to other"_s.arg(table));
         }},
        {"lacks a column of the table",
         [](const QString &path, const QString &table) {
             execute(path, u"alter table %1 rename source_file to source_path"_s.arg(table));
         }},
        {"is read-only", [](const QString &path, const QString &) { make_read_only(path); }},
        {"is no database",
         [](const QString &path, const QString &) { write_file(path, "not a database"); }},
    };
    add_fault_rows(faults);
}

void tst_extraction_frame::logs_every_row_that_a_faulty_database_refuses()
{
    QFETCH(const QString, tab);
    QFETCH(const fault, strike);
    sample_fixture fixture;
    const QString path = fixture.database_path();
    strike(path, tab);
    fixture.worker.milliseconds = 1001;
    fixture.extract(tab);

    const QList<insert_outcome> outcomes = plain_outcomes(tab_named(tab), path);
    for (const insert_outcome &outcome : outcomes)
        QVERIFY(!outcome.error.isEmpty());
    QCOMPARE(fixture.log.messages(), log_of_run(tab_named(tab), path, outcomes));
    QCOMPARE(fixture.worker.record_count, 0);
    QCOMPARE(fixture.signalled_totals(), QList<qint64>());
}

void tst_extraction_frame::goes_on_after_a_row_that_is_refused()
{
    const result_tab &tab = current_tab();
    sample_fixture fixture;
    execute(fixture.database_path(), u"create table tries(number)"_s);
    execute(fixture.database_path(), u"insert into tries values(0)"_s);
    // RAISE(FAIL) keeps what the trigger did before, so that the count goes on.
    execute(fixture.database_path(),
            u"create trigger refusal before insert on %1 begin "
            "update tries set number = number + 1; "
            "select raise(fail, 'not this one') from tries where number = 2; end"_s.arg(
                QString(tab.name)));
    const database_copy copy(fixture.database_path());
    fixture.worker.milliseconds = 1001;
    fixture.extract(tab.name);

    const QList<insert_outcome> outcomes = plain_outcomes(tab, copy.path);
    QVERIFY(outcomes[0].error.isEmpty());
    QVERIFY(outcomes[1].error.startsWith(u"not this one"_s));
    QVERIFY(outcomes[2].error.isEmpty());
    QCOMPARE(fixture.log.messages(), log_of_run(tab, fixture.database_path(), outcomes));
    QCOMPARE(fixture.database().row_count(tab.name), 2);
    QCOMPARE(fixture.signalled_totals(), (QList<qint64>{1, 2}));
}

void tst_extraction_frame::keeps_what_was_written_before_a_fault_data()
{
    using other_connection = std::optional<sqlite_connection>;
    const QList<std::pair<const char *, running_fault>> faults = {
        {"loses a column",
         [](const QSqlDatabase &database, const QString &table, other_connection &) {
             execute(database, u"alter table %1 rename source_file to source_path"_s.arg(table));
         }},
        {"becomes read-only",
         [](const QSqlDatabase &database, const QString &, other_connection &) {
             execute(database, u"pragma query_only = 1"_s);
         }},
        {"is locked by somebody else",
         [](const QSqlDatabase &database, const QString &, other_connection &other) {
             execute(database, u"commit"_s);
             execute(database, u"pragma busy_timeout = 0"_s);
             other.emplace(database.databaseName());
             execute(other->database, u"begin immediate"_s);
         }},
    };
    add_fault_rows(faults);
}

void tst_extraction_frame::keeps_what_was_written_before_a_fault()
{
    QFETCH(const QString, tab);
    QFETCH(const running_fault, strike);
    sample_fixture fixture;
    const database_copy copy(fixture.database_path());
    std::optional<sqlite_connection> other;
    const QList<insert_outcome> outcomes =
        plain_outcomes(tab_named(tab), copy.path, [&](const QSqlDatabase &database, qsizetype row) {
            if (row == 1)
                strike(database, tab, other);
        });
    other.reset();
    QVERIFY(outcomes[0].error.isEmpty());
    QVERIFY(!outcomes[1].error.isEmpty());

    fixture.on_row([&](qint64) { strike(connection_of(tab_named(tab)), tab, other); });
    fixture.extract(tab);
    QCOMPARE(fixture.log.messages(), log_of_run(tab_named(tab), fixture.database_path(), outcomes));
    QCOMPARE(fixture.database().row_count(tab), 1);
    QCOMPARE(fixture.worker.record_count, 1);
}

TEST_MAIN(tst_extraction_frame)

#include "tst_extraction_frame.moc"

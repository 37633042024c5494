#include "comparison.h"
#include "made_result.h"
#include "programs_view.h"
#include "result_file.h"
#include "row_cursor.h"
#include "row_filter.h"
#include "sorted_rows.h"
#include "test_main.h"
#include "time_line.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace results;
using namespace test_support;

// What the views make of rows, and which rows filters let pass.
class tst_result_views : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void programs_join_rows_by_folder();
    void programs_join_rows_by_name_hash_and_package();
    void programs_keep_apart_what_does_not_belong_together();
    void programs_know_uninstallers();
    void time_line_has_every_time_in_order();
    void time_line_leaves_out_what_the_filter_does();
    void states_differ_in_programs_data();
    void states_differ_in_programs();
    void sources_of_one_result_are_compared();
    void filters_data();
    void filters();
    void rows_are_sorted_data();
    void rows_are_sorted();

private:
    made_result &made() { return *m_made; }
    made_result &other() { return *m_other; }
    made_result &executed(const QString &account, const QString &name, int count, int time);
    QList<QStringList> programs(const QStringList &columns) const;
    QList<QStringList> changes() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<made_result> m_made;
    std::unique_ptr<made_result> m_other;
};

namespace {

const auto executed_table = u"previously_executed_apps"_s;

void add_executed(made_result &into, const QString &account, const QString &name, int count,
                  int time)
{
    into.add(executed_table, {{u"system_account"_s, sql_text(account)},
                              {u"exename"_s, sql_text(name)},
                              {u"class_id"_s, u"'{CEBFF5CD}'"_s},
                              {u"runcount"_s, QString::number(count)},
                              {u"lastruntime"_s, QString::number(time)}});
}

void add_installed(made_result &into, const QString &key, const QString &name,
                   const QString &version, const QString &location = {},
                   const QString &account = {}, const QString &source = u"Source1"_s)
{
    into.add(u"install_apps_64"_s, {{u"parent_name"_s, sql_text(key)},
                                    {u"display_name"_s, sql_text(name)},
                                    {u"display_version"_s, sql_text(version)},
                                    {u"install_location"_s, sql_text(location)},
                                    {u"system_account"_s, sql_text(account)},
                                    {u"source_count_name"_s, sql_text(source)}});
}

void add_seen(made_result &into, const QString &account, const QString &path)
{
    into.add(u"third_party_applications"_s,
             {{u"system_account"_s, sql_text(account)}, {u"windows_path"_s, sql_text(path)}});
}

} // namespace

void tst_result_views::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_made = std::make_unique<made_result>(m_folder->filePath(u"made.sqlite"_s));
    m_other = std::make_unique<made_result>(m_folder->filePath(u"other.sqlite"_s));
}

made_result &tst_result_views::executed(const QString &account, const QString &name, int count,
                                        int time)
{
    add_executed(made(), account, name, count, time);
    return made();
}

QList<QStringList> tst_result_views::programs(const QStringList &columns) const
{
    const auto result = m_made->opened();
    programs_view view = make_programs_view(*result);
    memory_rows rows(u"programs"_s, {}, view.columns, std::move(view.rows));
    return texts_of(rows, columns);
}

void tst_result_views::programs_join_rows_by_folder()
{
    add_installed(made(), u"Git_is1"_s, u"Git"_s, u"2.43"_s, u"C:\\Program Files\\Git\\"_s);
    add_installed(made(), u"Idle"_s, u"Idle"_s, u"1"_s, u"C:\\Idle"_s);
    made().add(u"install_apps_64"_s,
               {{u"display_name"_s, u"'Zip'"_s},
                {u"uninstall_string"_s, u"'\"C:\\Zip\\uninstall.exe\" /S'"_s}});
    executed(u"anna"_s, u"{6D809377-6AF0-444B-8957-A3773F02200E}/Git/bin/git.exe"_s, 3, 100);
    executed(u"anna"_s, u"C:/Program Files/Git/git-gui.exe"_s, 4, 50);
    executed(u"marek"_s, u"c:/program files/GIT/git.exe"_s, 0, 0);
    add_seen(made(), u"anna"_s, u"C:\\Program Files\\Git\\git.exe"_s);
    add_seen(made(), u"anna"_s, u"C:\\Zip\\zip.exe"_s);
    QCOMPARE(programs({u"program"_s, u"version"_s, u"system_account"_s, u"state"_s, u"run_count"_s,
                       u"last_run_utc"_s, u"joined_by"_s, u"rows"_s}),
             (QList<QStringList>{
                 {u"Git"_s, u"2.43"_s, u"anna"_s, u"registered"_s, u"7"_s,
                  u"1970-01-01T00:01:40Z"_s, u"install location"_s,
                  u"install_apps_64:1 previously_executed_apps:1,2 third_party_applications:1"_s},
                 {u"Git"_s, u"2.43"_s, u"marek"_s, u"registered"_s, u"0"_s, QString(),
                  u"install location"_s, u"install_apps_64:1 previously_executed_apps:3"_s},
                 {u"Idle"_s, u"1"_s, QString(), u"registered"_s, QString(), QString(), QString(),
                  u"install_apps_64:2"_s},
                 {u"Zip"_s, QString(), u"anna"_s, u"registered"_s, QString(), QString(),
                  u"install location"_s, u"install_apps_64:3 third_party_applications:2"_s},
             }));
}

void tst_result_views::programs_join_rows_by_name_hash_and_package()
{
    add_installed(made(), u"Mozilla Firefox 121.0"_s, u"Mozilla Firefox (x64 en-US)"_s, u"121.0"_s,
                  u"C:\\Program Files\\Mozilla Firefox"_s);
    executed(u"anna"_s, u"308046B0AF4A39CB"_s, 118, 200);
    executed(u"anna"_s, u"{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}/Firefox.lnk"_s, 37, 100);
    executed(u"anna"_s, u"A.Calculator_8wekyb3d8bbwe!App"_s, 4, 300);
    made().add(u"metro_apps"_s, {{u"system_account"_s, u"'anna'"_s},
                                 {u"filename"_s, u"'A.Calculator_8wekyb3d8bbwe'"_s}});
    executed(u"anna"_s, u"0123456789ABCDEF"_s, 1, 400);
    QCOMPARE(programs({u"program"_s, u"state"_s, u"run_count"_s, u"shortcut_count"_s,
                       u"joined_by"_s, u"rows"_s}),
             (QList<QStringList>{
                 {u"0123456789ABCDEF"_s, u"not registered"_s, u"1"_s, QString(), QString(),
                  u"previously_executed_apps:4"_s},
                 {u"A.Calculator_8wekyb3d8bbwe!App"_s, u"package folder"_s, u"4"_s, QString(),
                  u"package name"_s, u"metro_apps:1 previously_executed_apps:3"_s},
                 {u"Mozilla Firefox (x64 en-US)"_s, u"registered"_s, u"118"_s, u"37"_s,
                  u"install location, display name"_s,
                  u"install_apps_64:1 previously_executed_apps:1,2"_s},
             }));
}

void tst_result_views::programs_keep_apart_what_does_not_belong_together()
{
    add_installed(made(), u"A"_s, u"Shared"_s, {}, u"C:\\Program Files"_s);
    add_installed(made(), u"B"_s, u"Of Anna"_s, {}, u"D:\\Tool"_s, u"anna"_s);
    add_installed(made(), u"C"_s, u"Elsewhere"_s, {}, u"D:\\Other"_s, {}, u"Source2"_s);
    add_installed(made(), u"D"_s, u"Twice"_s, {});
    add_installed(made(), u"E"_s, u"Twice"_s, {});
    executed(u"marek"_s, u"C:/Program Files/x.exe"_s, 1, 1);
    executed(u"marek"_s, u"D:/Tool/x.exe"_s, 1, 1);
    executed(u"marek"_s, u"D:/Other/x.exe"_s, 1, 1);
    executed(u"marek"_s, u"D:/Links/Twice.lnk"_s, 1, 1);
    executed(u"marek"_s, u"D:/Toolbox/x.exe"_s, 1, 1);
    add_seen(made(), u"marek"_s, u"d:\\TOOLBOX\\x.exe"_s);
    const QList<QStringList> rows =
        programs({u"program"_s, u"system_account"_s, u"joined_by"_s, u"rows"_s});
    QCOMPARE(rows.size(), 10);
    QVERIFY(rows.contains({u"Of Anna"_s, u"anna"_s, QString(), u"install_apps_64:2"_s}));
    QVERIFY(rows.contains(
        {u"D:\\Tool\\x.exe"_s, u"marek"_s, QString(), u"previously_executed_apps:2"_s}));
    QVERIFY(rows.contains({u"D:\\Toolbox\\x.exe"_s, u"marek"_s, u"executable path"_s,
                           u"previously_executed_apps:5 third_party_applications:1"_s}));
}

void tst_result_views::programs_know_uninstallers()
{
    add_installed(made(), u"W"_s, u"Wireshark 4.2.0 x64"_s, {}, u"C:\\Program Files\\Wireshark"_s);
    for (const QString &name :
         {u"C:/Program Files/Wireshark/uninstall-wireshark.exe"_s, u"E:/shredder/uninstall.exe"_s,
          u"E:/uninstall notes/editor.exe"_s}) {
        executed(u"anna"_s, name, 2, 500);
        made().add(u"uninstall_apps"_s,
                   {{u"system_account"_s, u"'anna'"_s},
                    {u"exename"_s, sql_text(QString(name).replace(u'/', u'\\'))},
                    {u"runcount"_s, u"2"_s},
                    {u"lastruntime"_s, u"500"_s}});
    }
    add_seen(made(), u"anna"_s, u"E:\\shredder\\shredder.exe"_s);
    QCOMPARE(
        programs({u"program"_s, u"state"_s, u"run_count"_s, u"uninstaller_last_run"_s, u"rows"_s}),
        (QList<QStringList>{
            {u"E:\\shredder"_s, u"not registered, uninstaller started"_s, QString(), u"500"_s,
             u"previously_executed_apps:2 third_party_applications:1 uninstall_apps:2"_s},
            {u"E:\\uninstall notes\\editor.exe"_s, u"not registered"_s, u"2"_s, QString(),
             u"previously_executed_apps:3 uninstall_apps:3"_s},
            {u"Wireshark 4.2.0 x64"_s, u"registered, uninstaller started"_s, QString(), u"500"_s,
             u"install_apps_64:1 previously_executed_apps:1 uninstall_apps:1"_s},
        }));
}

void tst_result_views::time_line_has_every_time_in_order()
{
    made().add(u"install_apps_64"_s, {{u"display_name"_s, u"'Git'"_s},
                                      {u"install_date"_s, u"'06/11/2023'"_s},
                                      {u"modified_timestamp"_s, u"1699263904"_s}});
    made().add(u"third_party_applications"_s, {{u"windows_path"_s, u"'C:\\a.exe'"_s},
                                               {u"creation_timestamp"_s, u"300"_s},
                                               {u"modification_timestamp"_s, u"-5"_s},
                                               {u"last_access_timestamp"_s, u"0"_s}});
    // More rows than are looked up at once.
    execute(made().path(), u"WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE "
                           "i < 2499) INSERT INTO %1(exename, lastruntime) SELECT 'x', 2000000000 "
                           "- i FROM n"_s.arg(executed_table));
    const auto result = m_made->opened();
    time_line times(*result, result->tables(), {});
    const QList<QStringList> rows = texts_of(times, {u"time_utc"_s, u"precision"_s, u"event"_s,
                                                     u"subject"_s, u"row_table"_s, u"row_id"_s});
    QCOMPARE(times.failure(), QString());
    QCOMPARE(rows.size(), 2504);
    QCOMPARE(rows.mid(0, 5),
             (QList<QStringList>{
                 {u"1969-12-31T23:59:55Z"_s, u"second"_s, u"Program file last written"_s,
                  u"C:\\a.exe"_s, u"third_party_applications"_s, u"1"_s},
                 {u"1970-01-01T00:05:00Z"_s, u"second"_s, u"Program file created"_s, u"C:\\a.exe"_s,
                  u"third_party_applications"_s, u"1"_s},
                 {u"2023-11-06"_s, u"day"_s, u"Install date that the installer wrote (a day)"_s,
                  u"Git"_s, u"install_apps_64"_s, u"1"_s},
                 {u"2023-11-06T09:45:04Z"_s, u"second"_s, u"Uninstall key last written"_s, u"Git"_s,
                  u"install_apps_64"_s, u"1"_s},
                 {u"2033-05-18T02:51:41Z"_s, u"second"_s, u"Last run"_s, u"x"_s, executed_table,
                  u"2500"_s},
             }));
    QCOMPARE(rows.last().last(), u"1"_s);
}

void tst_result_views::time_line_leaves_out_what_the_filter_does()
{
    executed(u"anna"_s, u"x"_s, 1, 100);
    executed(u"marek"_s, u"x"_s, 1, 200);
    executed(u"anna"_s, u"x"_s, 1, 300);
    const auto result = m_made->opened();
    row_filter filter;
    filter.accounts = {u"ANNA"_s};
    filter.since = 101;
    time_line times(*result, result->tables(), filter);
    QCOMPARE(texts_of(times, {u"time"_s}), QList<QStringList>{{u"300"_s}});
}

QList<QStringList> tst_result_views::changes() const
{
    const auto before = m_made->opened();
    const auto after = m_other->opened();
    comparison found = compare({before.get(), {}}, {after.get(), {}});
    memory_rows rows({}, {}, found.columns, std::move(found.rows));
    return texts_of(rows, {u"change"_s, u"system_account"_s, u"subject"_s, u"before"_s, u"after"_s,
                           u"row_before"_s, u"row_after"_s});
}

void tst_result_views::states_differ_in_programs_data()
{
    using change = std::function<void(made_result &, made_result &)>;
    QTest::addColumn<change>("make");
    QTest::addColumn<QStringList>("difference");
    const auto add_row = [](const char *name, const change &make, const QStringList &difference) {
        QTest::newRow(name) << make << difference;
    };
    add_row("nothing", [](auto &, auto &) {}, {});
    add_row("installed", [](auto &, auto &b) { add_installed(b, u"K"_s, u"Git"_s, u"2"_s); },
            {u"installed"_s, {}, u"Git"_s, {}, u"2"_s, {}, u"1"_s});
    add_row("removed",
            [](auto &a, auto &) { add_installed(a, u"K"_s, u"Git"_s, u"2"_s, {}, u"anna"_s); },
            {u"removed"_s, u"anna"_s, u"Git"_s, u"2"_s, {}, u"1"_s, {}});
    const auto versions = [](const QString &first, const QString &second) {
        return [=](auto &a, auto &b) {
            add_installed(a, u"K"_s, u"Git"_s, first);
            add_installed(b, u"K"_s, u"Git"_s, second);
        };
    };
    add_row("upgraded", versions(u"2.9"_s, u"2.10"_s),
            {u"upgraded"_s, {}, u"Git"_s, u"2.9"_s, u"2.10"_s, u"1"_s, u"1"_s});
    add_row("downgraded", versions(u"2.10"_s, u"2.9"_s),
            {u"downgraded"_s, {}, u"Git"_s, u"2.10"_s, u"2.9"_s, u"1"_s, u"1"_s});
    add_row("other version", versions(u"alpha"_s, u"beta"_s),
            {u"version changed"_s, {}, u"Git"_s, u"alpha"_s, u"beta"_s, u"1"_s, u"1"_s});
    add_row("same", versions(u"2"_s, u"2"_s), {});
    add_row("key renamed",
            [](auto &a, auto &b) {
                add_installed(a, u"Firefox 120"_s, u"Mozilla Firefox 120"_s, u"120"_s);
                add_installed(b, u"Firefox 121"_s, u"Mozilla Firefox 121"_s, u"121"_s);
            },
            {u"upgraded"_s, {}, u"Mozilla Firefox 121"_s, u"120"_s, u"121"_s, u"1"_s, u"1"_s});
    const auto runs = [](int count, int time, int second_count, int second_time) {
        return [=](auto &a, auto &b) {
            add_executed(a, u"anna"_s, u"x"_s, count, time);
            add_executed(b, u"anna"_s, u"x"_s, second_count, second_time);
        };
    };
    add_row("newly run", [](auto &, auto &b) { add_executed(b, u"anna"_s, u"x"_s, 1, 9); },
            {u"newly run"_s, u"anna"_s, u"x"_s, {}, u"1"_s, {}, u"1"_s});
    add_row("newly run, listed before", runs(0, 0, 2, 9),
            {u"newly run"_s, u"anna"_s, u"x"_s, u"0"_s, u"2"_s, u"1"_s, u"1"_s});
    add_row("listed, not run", [](auto &, auto &b) { add_executed(b, u"anna"_s, u"x"_s, 0, 0); },
            {});
    add_row("run again", runs(1, 9, 2, 12),
            {u"run again"_s, u"anna"_s, u"x"_s, u"1"_s, u"2"_s, u"1"_s, u"1"_s});
    add_row("later time alone", runs(1, 9, 1, 12),
            {u"run again"_s, u"anna"_s, u"x"_s, u"1"_s, u"1"_s, u"1"_s, u"1"_s});
    add_row("set back", runs(5, 9, 1, 12),
            {u"count or time set back"_s, u"anna"_s, u"x"_s, u"5"_s, u"1"_s, u"1"_s, u"1"_s});
    add_row("entry gone", [](auto &a, auto &) { add_executed(a, u"anna"_s, u"x"_s, 1, 9); },
            {u"entry gone"_s, u"anna"_s, u"x"_s, u"1"_s, {}, u"1"_s, {}});
    add_row("seen", [](auto &, auto &b) { add_seen(b, u"anna"_s, u"D:\\a.exe"_s); },
            {u"newly run"_s, u"anna"_s, u"D:\\a.exe"_s, {}, {}, {}, u"1"_s});
    add_row("package",
            [](auto &a, auto &) {
                a.add(u"metro_apps"_s, {{u"filename"_s, u"'A.B_8wekyb3d8bbwe'"_s}});
            },
            {u"removed"_s, {}, u"A.B_8wekyb3d8bbwe"_s, {}, {}, u"1"_s, {}});
}

void tst_result_views::states_differ_in_programs()
{
    using change = std::function<void(made_result &, made_result &)>;
    QFETCH(const change, make);
    QFETCH(const QStringList, difference);
    make(made(), other());
    QCOMPARE(changes(),
             difference.isEmpty() ? QList<QStringList>() : QList<QStringList>{difference});
}

void tst_result_views::sources_of_one_result_are_compared()
{
    add_installed(made(), u"K"_s, u"Git"_s, u"1"_s);
    add_installed(made(), u"K"_s, u"Git"_s, u"2"_s, {}, {}, u"Source2"_s);
    const auto result = m_made->opened();
    const comparison found = compare({result.get(), u"Source1"_s}, {result.get(), u"Source2"_s});
    QCOMPARE(found.rows.size(), size_t(1));
    QCOMPARE(found.rows[0].cells[0].bytes, std::string("upgraded"));
}

void tst_result_views::filters_data()
{
    QTest::addColumn<row_filter>("filter");
    QTest::addColumn<QStringList>("names");
    const auto with = [](auto set) {
        row_filter filter;
        set(filter);
        return filter;
    };
    QTest::newRow("none") << row_filter() << QStringList{u"Büro"_s, u"b"_s, u"c"_s};
    QTest::newRow("account in other letters")
        << with([](row_filter &f) { f.accounts = {u"ANNA"_s}; }) << QStringList{u"Büro"_s, u"c"_s};
    QTest::newRow("text in other letters")
        << with([](row_filter &f) { f.text = u"BÜR"_s; }) << QStringList{u"Büro"_s};
    QTest::newRow("text that is derived")
        << with([](row_filter &f) { f.text = u"1970-01-01t00:03"_s; }) << QStringList{u"b"_s};
    QTest::newRow("since") << with([](row_filter &f) { f.since = 200; }) << QStringList{u"b"_s};
    QTest::newRow("until") << with([](row_filter &f) { f.until = 199; }) << QStringList{u"Büro"_s};
    QTest::newRow("both conditions") << with([](row_filter &f) {
        f.until = 300;
        f.accounts = {u"marek"_s};
    }) << QStringList{u"b"_s};
}

void tst_result_views::filters()
{
    QFETCH(const row_filter, filter);
    QFETCH(const QStringList, names);
    executed(u"anna"_s, u"Büro"_s, 1, 100).add(executed_table, {});
    executed(u"marek"_s, u"b"_s, 1, 200);
    executed(u"anna"_s, u"c"_s, 1, 0);
    const auto result = m_made->opened();
    filtered_rows rows(std::make_unique<row_cursor>(*result, result->layout_of(executed_table)),
                       filter);
    QStringList found;
    for (const QStringList &each : texts_of(rows, {u"exename"_s}))
        found += each;
    found.removeAll(QString()); // the row without cells
    QCOMPARE(found, names);
}

void tst_result_views::rows_are_sorted_data()
{
    QTest::addColumn<QString>("by");
    QTest::addColumn<bool>("is_descending");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("texts") << u"exename"_s << false << QStringList{u"a"_s, u"B"_s, u"c"_s, u"d"_s};
    QTest::newRow("texts, descending")
        << u"exename"_s << true << QStringList{u"d"_s, u"c"_s, u"B"_s, u"a"_s};
    QTest::newRow("numbers") << u"runcount"_s << false
                             << QStringList{u"d"_s, u"a"_s, u"c"_s, u"B"_s};
    QTest::newRow("a derived column, empty cells last")
        << u"lastruntime_utc"_s << true << QStringList{u"c"_s, u"d"_s, u"B"_s, u"a"_s};
}

void tst_result_views::rows_are_sorted()
{
    QFETCH(const QString, by);
    QFETCH(const bool, is_descending);
    executed(u"anna"_s, u"c"_s, 9, 300);
    executed(u"anna"_s, u"B"_s, 10, 0);
    executed(u"anna"_s, u"d"_s, -1, 200);
    executed(u"anna"_s, u"a"_s, 2, 0);
    const auto result = m_made->opened();
    const table_layout layout = result->layout_of(executed_table);
    row_cursor all(*result, layout);
    row_cursor sorted(*result, layout, sorted_ids(all, {by, is_descending}));
    QStringList names;
    for (const QStringList &each : texts_of(sorted, {u"exename"_s}))
        names += each;
    QTEST(names, "names");
}

TEST_MAIN(tst_result_views)
#include "tst_result_views.moc"

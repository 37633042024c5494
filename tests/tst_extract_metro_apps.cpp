#include "files.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const QString operation = u"extract_metro_apps"_s;
const QString table = u"metro_apps"_s;

QString packages_of(const QString &account)
{
    return u"Users/"_s + account + u"/AppData/Local/Packages/"_s;
}

/// The row of a package folder's entry on a source that is not mounted at "/".
QStringList row_of(const evidence_volume &volume, const QString &account, const QString &name)
{
    const QString entry = packages_of(account) + name;
    return {account,
            name,
            volume.path(entry),
            u"C:\\"_s + QString(entry).replace(u'/', u'\\'),
            u"0"_s,
            u"0"_s,
            u"0"_s,
            u'/' + packages_of(account),
            u"Windows"_s,
            u"Source3"_s};
}

/// The table's rows after a run, sorted: a folder is listed in no particular order.
QList<QStringList> rows_of_run(worker_fixture &fixture)
{
    fixture.extract(table);
    QList<QStringList> rows = fixture.rows(table);
    std::sort(rows.begin(), rows.end());
    return rows;
}

/// The sorted names of the entries after a run.
QStringList names_of_run(worker_fixture &fixture)
{
    fixture.extract(table);
    QStringList names = fixture.database().column(table, u"filename"_s);
    names.sort();
    return names;
}

} // namespace

class tst_extract_metro_apps : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void turns_paths_into_windows_paths_data();
    void turns_paths_into_windows_paths();
    void writes_each_entry_of_each_user();
    void takes_users_in_the_order_of_the_accounts();
    void writes_nothing_for_an_empty_folder();
    void writes_nothing_for_a_folder_that_cannot_be_listed();
    void lists_files_and_folders_but_nothing_below_them();
    void lists_what_links_name_without_following_them();
    void leaves_hidden_entries_and_pipes_out();
    void leaves_names_of_invalid_utf8_out();
    void lists_many_entries();
    void keeps_names_of_every_script();
    void looks_the_times_up_at_the_whole_path_below_the_root();
    void finds_the_times_on_a_source_mounted_at_the_root_folder();
    void tells_paths_by_the_root_as_it_stands_data();
    void tells_paths_by_the_root_as_it_stands();
};

void tst_extract_metro_apps::turns_paths_into_windows_paths_data()
{
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("windows_path");
    const QString root = u"/mnt/ev/"_s;
    QTest::newRow("a path of the source")
        << root << u"/mnt/ev/Users/ann/AppData/Local/Packages/App_1"_s
        << u"C:\\Users\\ann\\AppData\\Local\\Packages\\App_1"_s;
    QTest::newRow("no path") << root << u""_s << u""_s;
    QTest::newRow("the root") << root << root << u"C:\\"_s;
    QTest::newRow("a path shorter than the root") << root << u"/mnt"_s << u"C:\\"_s;
    QTest::newRow("a path elsewhere") << root << u"/opt/ab/Users/x"_s << u"C:\\Users\\x"_s;
    QTest::newRow("a root without its slash")
        << u"/mnt/ev"_s << u"/mnt/ev/a/b"_s << u"C:\\\\a\\b"_s;
    QTest::newRow("the root folder") << u"/"_s << u"/a/b"_s << u"C:\\a\\b"_s;
    QTest::newRow("no root") << u""_s << u"a/b"_s << u"C:\\a\\b"_s;
    QTest::newRow("a backslash in a name") << root << u"/mnt/ev/a\\b/ c"_s << u"C:\\a\\b\\ c"_s;
}

void tst_extract_metro_apps::turns_paths_into_windows_paths()
{
    QFETCH(const QString, root);
    QFETCH(const QString, path);
    winos_probe probe;
    probe.source_root_path = root;
    QTEST(probe.prepare_windows_path(path), "windows_path");
}

void tst_extract_metro_apps::writes_each_entry_of_each_user()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"Microsoft.WindowsCalculator_8wekyb3d8bbwe"_s)
        .package(u"ann"_s, u"Microsoft.BingNews_8wekyb3d8bbwe"_s)
        .package(u"bob"_s, u"Microsoft.BingNews_8wekyb3d8bbwe"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture),
             (QList<QStringList>{
                 row_of(fixture.volume, u"ann"_s, u"Microsoft.BingNews_8wekyb3d8bbwe"_s),
                 row_of(fixture.volume, u"ann"_s, u"Microsoft.WindowsCalculator_8wekyb3d8bbwe"_s),
                 row_of(fixture.volume, u"bob"_s, u"Microsoft.BingNews_8wekyb3d8bbwe"_s)}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_metro_apps::takes_users_in_the_order_of_the_accounts()
{
    worker_fixture fixture;
    for (const QString &account : {u"eve"_s, u"ann"_s, u"Bob"_s})
        fixture.volume.package(account, u"App"_s);
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.database().column(table, u"system_account"_s),
             (QStringList{u"eve"_s, u"ann"_s, u"Bob"_s}));
}

void tst_extract_metro_apps::writes_nothing_for_an_empty_folder()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u""_s);
    fixture.find_files();
    QCOMPARE(fixture.worker.packages_dir_list.size(), 1);
    QCOMPARE(rows_of_run(fixture), QList<QStringList>());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_metro_apps::writes_nothing_for_a_folder_that_cannot_be_listed()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"App"_s).package(u"bob"_s, u"App"_s);
    fixture.volume.file(packages_of(u"eve"_s).chopped(1), "a file");
    fixture.find_files();
    QVERIFY(QDir(fixture.volume.packages_path(u"ann"_s)).removeRecursively());
    fixture.worker.packages_dir_list.append(fixture.volume.packages_path(u"eve"_s));
    QCOMPARE(rows_of_run(fixture), QList<QStringList>{row_of(fixture.volume, u"bob"_s, u"App"_s)});
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_metro_apps::lists_files_and_folders_but_nothing_below_them()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"App"_s)
        .package(u"ann"_s, u"App/LocalState"_s)
        .file(packages_of(u"ann"_s) + u"App/settings.dat"_s)
        .file(packages_of(u"ann"_s) + u"plain file.txt"_s);
    fixture.find_files();
    QCOMPARE(names_of_run(fixture), (QStringList{u"App"_s, u"plain file.txt"_s}));
}

void tst_extract_metro_apps::lists_what_links_name_without_following_them()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"App"_s)
        .link(packages_of(u"ann"_s) + u"loop"_s, u"."_s)
        .link(packages_of(u"ann"_s) + u"outside"_s, u"/"_s)
        .link(packages_of(u"ann"_s) + u"dangling"_s, u"nowhere"_s);
    fixture.find_files();
    QCOMPARE(names_of_run(fixture), (QStringList{u"App"_s, u"loop"_s, u"outside"_s}));
}

void tst_extract_metro_apps::leaves_hidden_entries_and_pipes_out()
{
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"App"_s)
        .package(u"ann"_s, u".hidden"_s)
        .package(u"ann"_s, u"..."_s)
        .fifo(packages_of(u"ann"_s) + u"pipe"_s);
    fixture.find_files();
    QCOMPARE(names_of_run(fixture), QStringList{u"App"_s});
}

void tst_extract_metro_apps::leaves_names_of_invalid_utf8_out()
{
#ifdef Q_OS_LINUX
    worker_fixture fixture;
    fixture.volume.package(u"ann"_s, u"App"_s)
        .raw_folder(packages_of(u"ann"_s).toUtf8() + "bad\xff\xfe");
    fixture.find_files();
    QCOMPARE(names_of_run(fixture), QStringList{u"App"_s});
#else
    QSKIP("the file system takes names in UTF-8 alone");
#endif
}

void tst_extract_metro_apps::lists_many_entries()
{
    constexpr int count = 300;
    worker_fixture fixture;
    QStringList names;
    for (int i = 0; i < count; ++i) {
        names.append(u"App_"_s + QString::number(i).rightJustified(4, u'0'));
        fixture.volume.package(u"ann"_s, names.last());
    }
    fixture.find_files();
    QCOMPARE(names_of_run(fixture), names);
    QCOMPARE(fixture.worker.record_count, count);
}

void tst_extract_metro_apps::keeps_names_of_every_script()
{
    const QString account = u"ไทย user"_s;
    worker_fixture fixture;
    QList<QStringList> expected;
    for (const QString &name : {u"日本語"_s, u"עברית"_s, u"\U0001F600"_s, u"'); --"_s, u"%1%2"_s,
                                u" blank "_s, u"line\nfeed"_s, u"back\\slash"_s}) {
        fixture.volume.package(account, name);
        expected.append(row_of(fixture.volume, account, name));
    }
    std::sort(expected.begin(), expected.end());
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), expected);
}

void tst_extract_metro_apps::looks_the_times_up_at_the_whole_path_below_the_root()
{
    worker_fixture fixture;
    const QString entry = packages_of(u"ann"_s) + u"App"_s;
    fixture.volume.file(entry, {}, 1400000000);
    const QString place = fixture.volume.path(entry).mid(1);
    fixture.volume.file(place, {}, 1500000000);
    set_access_time(fixture.volume.path(place), 1600000000);
    const QFileInfo found(fixture.volume.path(place));
    fixture.volume.package(u"ann"_s, u""_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture).value(0).mid(4, 3),
             (QStringList{QString::number(found.birthTime().toSecsSinceEpoch()), u"1500000000"_s,
                          u"1600000000"_s}));
}

void tst_extract_metro_apps::finds_the_times_on_a_source_mounted_at_the_root_folder()
{
    worker_fixture fixture;
    const QString path = fixture.volume.path(packages_of(u"ann"_s) + u"App"_s);
    fixture.volume.package(u"ann"_s, u""_s);
    fixture.volume.file(packages_of(u"ann"_s) + u"App"_s, {}, 1500000000);
    fixture.find_files();
    fixture.worker.source_root_path = u"/"_s;
    const QStringList row = rows_of_run(fixture).value(0);
    QCOMPARE(row.value(0), path.section(u'/', 2, 2)); // the second folder, where Users has its own
    QCOMPARE(row.value(2), path);
    QCOMPARE(row.value(3), u"C:"_s + QString(path).replace(u'/', u'\\'));
    QCOMPARE(row.value(5), u"1500000000"_s);
    QCOMPARE(row.value(7), fixture.volume.packages_path(u"ann"_s));
}

void tst_extract_metro_apps::tells_paths_by_the_root_as_it_stands_data()
{
    // "ROOT" stands for the folder of the volume, "OTHER" for another of the same length.
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("row");
    QTest::newRow("a root with its slash") << u"ROOT/"_s << u"ROOT/Users/ann/"_s
                                           << u"ann|ROOT/Users/ann/App|C:\\Users\\ann\\App|"
                                              "/Users/ann/"_s;
    QTest::newRow("a root without its slash") << u"ROOT"_s << u"ROOT/Users/ann/"_s
                                              << u"Users|ROOT/Users/ann/App|C:\\\\Users\\ann\\App|"
                                                 "/Users/ann/"_s;
    QTest::newRow("another root of this length")
        << u"OTHER/"_s << u"ROOT/Users/ann/"_s
        << u"ann|ROOT/Users/ann/App|C:\\Users\\ann\\App|ROOT/Users/ann/"_s;
    QTest::newRow("a relative root")
        << u"Users/"_s << u"Users/ann/"_s << u"|/ann/App|C:\\ann\\App|/ann/"_s;
}

void tst_extract_metro_apps::tells_paths_by_the_root_as_it_stands()
{
    QFETCH(const QString, root);
    QFETCH(const QString, folder);
    QFETCH(const QString, row);
    worker_fixture fixture;
    const QString volume = fixture.volume.root().chopped(1);
    const auto with_volume = [&](QString text) {
        return text.replace(u"ROOT"_s, volume).replace(u"OTHER"_s, QString(volume.size(), u'o'));
    };
    const auto restore =
        qScopeGuard([earlier = QDir::currentPath()] { QDir::setCurrent(earlier); });
    QVERIFY(QDir::setCurrent(volume));
    fixture.volume.folder(u"Users/ann/App"_s);
    fixture.set_source(with_volume(root), {u"ann"_s});
    fixture.worker.packages_dir_list = {with_volume(folder)};
    fixture.extract(table);
    QCOMPARE(fixture.database().column(table, u"system_account || '|' || file_path || '|' || "
                                              "windows_path || '|' || source_file"_s),
             QStringList{with_volume(row)});
}

TEST_MAIN(tst_extract_metro_apps)

#include "tst_extract_metro_apps.moc"

#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const QString operation = u"extract_third_party_applications"_s;
const QString table = u"third_party_applications"_s;

struct program
{
    QString account;
    QString windows_path;
    QString file_path;
    QStringList times = {u"0"_s, u"0"_s, u"0"_s}; ///< creation, modification, last access
};

QStringList row_of(const program &program)
{
    return QStringList{program.account, program.windows_path, program.file_path,
                       u"NTUSER.DAT"_s, u"Store"_s,           compatibility_store_key} +
           program.times +
           QStringList{u"/Users/"_s + program.account + u"/NTUSER.DAT"_s, u"Windows"_s,
                       u"Source3"_s};
}

hive_key &store(evidence_volume &volume, const QString &account)
{
    return volume.user(account).key(compatibility_store_key);
}

QString seconds(const QDateTime &time)
{
    return QString::number(time.isValid() ? time.toMSecsSinceEpoch() / 1000 : 0);
}

QStringList times_of(const QString &path)
{
    const QFileInfo file(path);
    return {seconds(file.birthTime()), seconds(file.lastModified()), seconds(file.lastRead())};
}

QStringList column_of_run(worker_fixture &fixture, const QString &column)
{
    fixture.extract(table);
    return fixture.database().column(table, column);
}

} // namespace

class tst_extract_third_party_applications : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void writes_each_program_of_each_user();
    void reads_the_times_of_the_file_on_the_source();
    void reads_the_times_of_a_folder_and_of_what_a_link_leads_to();
    void takes_no_times_through_a_link_that_leads_out();
    void takes_the_times_of_what_lies_within_the_source_data();
    void takes_the_times_of_what_lies_within_the_source();
    void maps_paths_of_drive_c_alone_data();
    void maps_paths_of_drive_c_alone();
    void never_writes_the_data_of_a_value_data();
    void never_writes_the_data_of_a_value();
    void writes_nothing_without_the_store_data();
    void writes_nothing_without_the_store();
    void keeps_names_of_every_script();
    void cuts_as_many_letters_as_the_root_has_data();
    void cuts_as_many_letters_as_the_root_has();
    void loses_of_a_damaged_value_nothing_that_it_shows();
    void reads_nothing_from_a_damaged_list_of_values();
};

void tst_extract_third_party_applications::writes_each_program_of_each_user()
{
    worker_fixture fixture;
    store(fixture.volume, u"eve"_s)
        .binary(u"C:\\b.exe"_s, "data")
        .binary(u"C:\\a.exe"_s, "data")
        .key(u"Sub"_s)
        .binary(u"C:\\inner.exe"_s, "data");
    store(fixture.volume, u"ann"_s).binary(u"C:\\a.exe"_s, "data").binary(u"X:\\c.exe"_s, "data");
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table),
             (QList<QStringList>{row_of({u"eve"_s, u"C:\\b.exe"_s, u"/b.exe"_s}),
                                 row_of({u"eve"_s, u"C:\\a.exe"_s, u"/a.exe"_s}),
                                 row_of({u"ann"_s, u"C:\\a.exe"_s, u"/a.exe"_s}),
                                 row_of({u"ann"_s, u"X:\\c.exe"_s, u""_s})}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_third_party_applications::reads_the_times_of_the_file_on_the_source()
{
    worker_fixture fixture;
    fixture.volume.file(u"Program Files/App/app.exe"_s, "MZ", 1500000000);
    const QString path = fixture.volume.path(u"Program Files/App/app.exe"_s);
    set_access_time(path, 1600000000);
    const QString name = u"C:\\Program Files\\App\\app.exe"_s;
    store(fixture.volume, u"ann"_s).binary(name, "data");
    fixture.find_files();
    fixture.extract(table);
    const QStringList times = {seconds(QFileInfo(path).birthTime()), u"1500000000"_s,
                               u"1600000000"_s};
    QCOMPARE(fixture.rows(table),
             QList<QStringList>{row_of({u"ann"_s, name, u"/Program Files/App/app.exe"_s, times})});
    QCOMPARE(fixture.database().column(table, u"typeof(modification_timestamp)"_s),
             QStringList{u"integer"_s});
}

void tst_extract_third_party_applications::reads_the_times_of_a_folder_and_of_what_a_link_leads_to()
{
    worker_fixture fixture;
    fixture.volume.file(u"target.exe"_s, "MZ", 1500000000);
    fixture.volume.folder(u"Tools"_s).link(u"Tools/link.exe"_s, u"../target.exe"_s);
    fixture.volume.link(u"Tools/dangling.exe"_s, u"nowhere"_s);
    store(fixture.volume, u"ann"_s)
        .binary(u"C:\\Tools"_s, "data")
        .binary(u"C:\\Tools\\link.exe"_s, "data")
        .binary(u"C:\\Tools\\dangling.exe"_s, "data");
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, u"modification_timestamp"_s),
             (QStringList{times_of(fixture.volume.path(u"Tools"_s))[1], u"1500000000"_s, u"0"_s}));
}

void tst_extract_third_party_applications::takes_no_times_through_a_link_that_leads_out()
{
    evidence_volume outside;
    outside.file(u"Tools/tool.exe"_s, "MZ", 1500000000);
    worker_fixture fixture;
    fixture.volume.link(u"tool.exe"_s, outside.path(u"Tools/tool.exe"_s));
    fixture.volume.link(u"Tools"_s, outside.path(u"Tools"_s));
    store(fixture.volume, u"ann"_s)
        .binary(u"C:\\tool.exe"_s, "data")
        .binary(u"C:\\Tools\\tool.exe"_s, "data");
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(
        fixture.rows(table),
        (QList<QStringList>{row_of({u"ann"_s, u"C:\\tool.exe"_s, u"/tool.exe"_s}),
                            row_of({u"ann"_s, u"C:\\Tools\\tool.exe"_s, u"/Tools/tool.exe"_s})}));
}

void tst_extract_third_party_applications::takes_the_times_of_what_lies_within_the_source_data()
{
    // "VOLUME" stands for the name of the source's folder.
    constexpr qint64 none = 0;
    constexpr qint64 of_the_file = 1500000000;
    constexpr qint64 of_the_root = -1; // whichever it is
    QTest::addColumn<QString>("windows_path");
    QTest::addColumn<qint64>("modified");
    const auto row = [](const char *name, const QString &windows_path, qint64 modified) {
        QTest::newRow(name) << windows_path << modified;
    };
    row("a name", u"C:\\x.exe"_s, of_the_file);
    row("a name that ends in a blank", u"C:\\x.exe "_s, of_the_file);
    row("a name that ends in a tab", u"C:\\x.exe\t"_s, of_the_file);
    row("a name that ends in blanks of other kinds", u"C:\\x.exe \u00a0\n"_s, of_the_file);
    row("a name that begins with a blank", u"C:\\ x.exe"_s, of_the_file);
    row("a folder's name that ends in a blank", u"C:\\Windows \\x.exe"_s, none);
    row("the drive itself, which is no path", u"C:\\"_s, none);
    row("the drive and a blank", u"C:\\ "_s, none);
    row("the drive with two separators", u"C:\\\\"_s, of_the_root);
    row("the folder that the drive is", u"C:\\."_s, of_the_root);
    row("the folder above a folder", u"C:\\Windows\\.."_s, of_the_root);
    row("the folder above a folder, with its separator", u"C:\\Windows\\..\\"_s, of_the_root);
    row("the folder above one that is not there", u"C:\\none\\.."_s, none);
    row("a link to the root", u"C:\\root"_s, of_the_root);
    row("a file below a link to the root", u"C:\\root\\x.exe"_s, of_the_file);
    row("out of the source and back", u"C:\\..\\VOLUME\\x.exe"_s, of_the_file);
    row("the folder above the source", u"C:\\.."_s, none);
    row("a file above the source", u"C:\\..\\VOLUME-beside\\x.exe"_s, none);
    row("a link to a folder whose name goes on after the source's", u"C:\\beside\\x.exe"_s, none);
    row("the folder above a link that leads out", u"C:\\deep\\..\\x.exe"_s, none);
    row("a link to a file of 1970 outside", u"C:\\old.exe"_s, none);
    row("a link to a file outside that was last read in 1970", u"C:\\unread.exe"_s, none);
}

void tst_extract_third_party_applications::takes_the_times_of_what_lies_within_the_source()
{
    QFETCH(QString, windows_path);
    QFETCH(const qint64, modified);
    worker_fixture fixture;
    const QString folder = fixture.volume.root().chopped(1);
    const auto restore = qScopeGuard([folder] { QDir(folder + u"-beside"_s).removeRecursively(); });
    evidence_volume beside(folder + u"-beside"_s);
    beside.folder(u"deep"_s).file(u"x.exe"_s, "MZ", 1300000000).file(u"old.exe"_s, "MZ", 0);
    set_access_time(beside.path(u"old.exe"_s), 1600000000);
    fixture.volume.file(u"x.exe"_s, "MZ", 1500000000).folder(u"Windows"_s).link(u"root"_s, u"."_s);
    fixture.volume.link(u"beside"_s, beside.root().chopped(1));
    fixture.volume.link(u"deep"_s, beside.path(u"deep"_s));
    beside.file(u"unread.exe"_s, "MZ", 0);
    set_access_time(beside.path(u"unread.exe"_s), 0);
    fixture.volume.link(u"old.exe"_s, beside.path(u"old.exe"_s));
    fixture.volume.link(u"unread.exe"_s, beside.path(u"unread.exe"_s));
    store(fixture.volume, u"ann"_s)
        .binary(windows_path.replace(u"VOLUME"_s, QFileInfo(folder).fileName()), "data");
    fixture.find_files();
    const QString expected = modified < 0 ? times_of(folder)[1] : QString::number(modified);
    QCOMPARE(column_of_run(fixture, u"modification_timestamp"_s), QStringList{expected});
    QCOMPARE(fixture.database().column(table, u"creation_timestamp = 0 AND "
                                              "last_access_timestamp = 0"_s),
             QStringList{modified == 0 ? u"1"_s : u"0"_s});
}

void tst_extract_third_party_applications::maps_paths_of_drive_c_alone_data()
{
    // "ROOT/" stands for the root of the source.
    QTest::addColumn<QString>("windows_path");
    QTest::addColumn<QString>("file_path");
    QTest::newRow("a path on C") << u"C:\\Tools\\x.exe"_s << u"/Tools/x.exe"_s;
    QTest::newRow("a path on C with slashes") << u"C:/Tools/x.exe"_s << u"/Tools/x.exe"_s;
    QTest::newRow("a path on D") << u"D:\\Tools\\x.exe"_s << u""_s;
    QTest::newRow("a lower-case drive") << u"c:\\Tools\\x.exe"_s << u""_s;
    QTest::newRow("a share") << u"\\\\server\\C:\\x.exe"_s << u""_s;
    QTest::newRow("a prefixed path") << u"\\\\?\\C:\\x.exe"_s << u""_s;
    QTest::newRow("the drive without a separator") << u"C:x.exe"_s << u""_s;
    QTest::newRow("the drive itself") << u"C:\\"_s << u""_s;
    QTest::newRow("no path") << u"SIGN.MEDIA=1A2B setup.exe"_s << u""_s;
    QTest::newRow("the default value") << u""_s << u""_s;
    QTest::newRow("a doubled separator") << u"C:\\\\x.exe"_s << u"/x.exe"_s;
    QTest::newRow("a drive within the path")
        << u"C:\\a\\C:\\b\\c:\\c.exe"_s << u"/a/ROOT/b/c:/c.exe"_s;
    QTest::newRow("a blank path") << u"C:\\ "_s << u" "_s;
}

void tst_extract_third_party_applications::maps_paths_of_drive_c_alone()
{
    QFETCH(const QString, windows_path);
    QFETCH(const QString, file_path);
    worker_fixture fixture;
    store(fixture.volume, u"ann"_s).binary(windows_path, "data");
    fixture.find_files();
    fixture.extract(table);
    const QString expected = QString(file_path).replace(u"ROOT/"_s, fixture.volume.root());
    QCOMPARE(fixture.rows(table), QList<QStringList>{row_of({u"ann"_s, windows_path, expected})});
}

void tst_extract_third_party_applications::never_writes_the_data_of_a_value_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("bytes") << quint32(reg_binary) << QByteArray("SACP\x01");
    QTest::newRow("a text") << quint32(reg_sz) << registry_text(u"text"_s);
    QTest::newRow("a number") << quint32(reg_dword) << registry_dword(1);
    QTest::newRow("no data") << quint32(reg_none) << QByteArray();
    QTest::newRow("big data") << quint32(reg_binary) << QByteArray(50000, 'x');
}

void tst_extract_third_party_applications::never_writes_the_data_of_a_value()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    worker_fixture fixture;
    store(fixture.volume, u"ann"_s).value(u"D:\\x.exe"_s, type, data);
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table), QList<QStringList>{row_of({u"ann"_s, u"D:\\x.exe"_s, u""_s})});
}

void tst_extract_third_party_applications::writes_nothing_without_the_store_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("an empty hive") << u""_s;
    QTest::newRow("the key above") << compatibility_store_key.section(u'\\', 0, -2);
    QTest::newRow("the key below another") << u"Other\\"_s + compatibility_store_key;
}

void tst_extract_third_party_applications::writes_nothing_without_the_store()
{
    QFETCH(const QString, key);
    worker_fixture fixture;
    fixture.volume.user(u"ann"_s).key(key).binary(u"C:\\x.exe"_s, "data");
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, u"windows_path"_s), QStringList());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_third_party_applications::keeps_names_of_every_script()
{
    const QString account = u"山田 太郎"_s;
    worker_fixture fixture;
    QList<QStringList> expected;
    for (const QString &name : {u"Größe.exe"_s, u"日本語.exe"_s, u"ملف.exe"_s, u"\U0001F600.exe"_s,
                                u"'); --.exe"_s, u"%1%2.exe"_s}) {
        store(fixture.volume, account).binary(u"C:\\"_s + name, "data");
        fixture.volume.file(name, {}, 1500000000);
        expected.append(
            row_of({account, u"C:\\"_s + name, u'/' + name, times_of(fixture.volume.path(name))}));
    }
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table), expected);
}

void tst_extract_third_party_applications::cuts_as_many_letters_as_the_root_has_data()
{
    // "ROOT" stands for the folder of the volume, "OTHER" for another of the same length.
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("row");
    QTest::newRow("a root with its slash")
        << u"ROOT/"_s << u"ann|/Users/ann/NTUSER.DAT|/x.exe|1500000000"_s;
    QTest::newRow("a root without its slash")
        << u"ROOT"_s << u"Users|/Users/ann/NTUSER.DAT|/x.exe|0"_s;
    QTest::newRow("another root of this length")
        << u"OTHER/"_s << u"ann|/Users/ann/NTUSER.DAT|/x.exe|0"_s;
}

void tst_extract_third_party_applications::cuts_as_many_letters_as_the_root_has()
{
    QFETCH(QString, root);
    worker_fixture fixture;
    fixture.volume.file(u"x.exe"_s, {}, 1500000000);
    store(fixture.volume, u"ann"_s).binary(u"C:\\x.exe"_s, "data");
    fixture.find_files();
    const QString folder = fixture.volume.root().chopped(1);
    root.replace(u"ROOT"_s, folder).replace(u"OTHER"_s, QString(folder.size(), u'o'));
    fixture.worker.source_root_path = root;
    QTEST(column_of_run(fixture, u"system_account || '|' || source_file || '|' || file_path || "
                                 "'|' || modification_timestamp"_s)
              .join(u'\n'),
          "row");
}

void tst_extract_third_party_applications::loses_of_a_damaged_value_nothing_that_it_shows()
{
    worker_fixture fixture;
    hive_key &key = store(fixture.volume, u"ann"_s);
    key.binary(u"D:\\a.exe"_s, "some data").binary(u"D:\\b.exe"_s, "some data");
    fixture.find_files();
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    const value_cells &damaged = key.cells_of_value(u"D:\\a.exe"_s);
    write_file(fixture.volume.ntuser_path(u"ann"_s),
               hive_damage(hive).data_cell(damaged.value, hive.size() + 4096).bytes());
    QCOMPARE(column_of_run(fixture, u"windows_path"_s),
             (QStringList{u"D:\\a.exe"_s, u"D:\\b.exe"_s}));
}

void tst_extract_third_party_applications::reads_nothing_from_a_damaged_list_of_values()
{
    worker_fixture fixture;
    hive_key &key = store(fixture.volume, u"ann"_s);
    key.binary(u"D:\\a.exe"_s, "data");
    store(fixture.volume, u"bob"_s).binary(u"D:\\bob.exe"_s, "data");
    fixture.find_files();
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    write_file(fixture.volume.ntuser_path(u"ann"_s),
               hive_damage(hive).value_count(key.cells().key, 70000).bytes());
    QCOMPARE(column_of_run(fixture, u"windows_path"_s), QStringList{u"D:\\bob.exe"_s});
}

TEST_MAIN(tst_extract_third_party_applications)

#include "tst_extract_third_party_applications.moc"

#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "machine.h"
#include "test_main.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the program warns about.
class tst_host_warnings : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void leaves_out_what_a_link_leads_out_of_the_source();
    void warns_about_account_names_that_cannot_be_read();
    void warns_about_folders_without_permission_data();
    void warns_about_folders_without_permission();
    void tells_why_nothing_is_left_to_read();
    void warns_about_keys_that_cannot_be_listed();
    void warns_about_keys_of_the_backup_when_that_is_read();
    void warns_about_damage_below_a_key_that_gave_rows();
    void escapes_control_characters_of_the_evidence();
};

void tst_host_warnings::warns_about_damage_below_a_key_that_gave_rows()
{
    evidence_volume volume;
    fill_software(volume.software());
    hive_builder &user = volume.user(u"ann"_s);
    fill_user(user);
    const hive_key &damaged =
        user.key(user_assist_key + "\\{DA3A6E5D}\\Count"_L1).binary(u"lost"_s, "data");
    volume.write();
    const QString hive = volume.ntuser_path(u"ann"_s);
    write_file(hive, hive_damage(read_file(hive)).value_count(damaged.cells().key, 999).bytes());
    const host_result result = extract(volume, {u"--quiet"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users/ann/NTUSER.DAT: the content of %1\\{DA3A6E5D}\\Count cannot be listed, so it is not read"_s
                .arg(user_assist_key)});
    QVERIFY(result.output.contains(u"previously_executed_apps           2"_s));
    QCOMPARE(result.exit_code, 6);
}

void tst_host_warnings::leaves_out_what_a_link_leads_out_of_the_source()
{
    const auto outside = small_volume();
    evidence_volume volume;
    fill_user(volume.user(u"ann"_s));
    volume.write();
    volume.link(software_file, outside->software_path());
    volume.link(u"Users/hive"_s + "/NTUSER.DAT"_L1, outside->ntuser_path(u"ann"_s));
    volume.link(u"Users/package/AppData"_s, outside->path(u"Users/ann/AppData"_s));
    volume.link(u"Users/whole"_s, outside->path(u"Users/ann"_s));
    const host_result result = extract(volume, {u"--quiet"_s});
    const auto account_out =
        u"artifact_host: warning: Users/%1: a link leads out of the source; account %2 is left out"_s;
    QCOMPARE(
        result.errors,
        (QStringList{
            account_out.arg("hive/NTUSER.DAT"_L1, "hive"_L1),
            account_out.arg("package/AppData/Local/Packages"_L1, "package"_L1),
            account_out.arg("whole"_L1, "whole"_L1),
            u"artifact_host: warning: %1: a link leads out of the source; the tabs of the software hive are left out"_s
                .arg(software_file)}));
    QCOMPARE(result.output,
             (QStringList{u"uninstall_apps                     1"_s,
                          u"metro_apps                         0"_s,
                          u"previously_executed_apps           2"_s,
                          u"third_party_applications           1"_s,
                          u"hidden_desktop_icons_app           1"_s,
                          u"total                              5"_s, database_path()}));
    QCOMPARE(result.exit_code, 6);
}

void tst_host_warnings::warns_about_account_names_that_cannot_be_read()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system refuses names that are not UTF-8");
#endif
    const auto volume = small_volume();
    volume->raw_folder("Users/b\xe9la");
    const host_result result = extract(*volume, {u"--quiet"_s, u"--tab"_s, u"metro_apps"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users/b\ufffdla: its name is not valid UTF-8, so it is not read"_s});
}

void tst_host_warnings::warns_about_folders_without_permission_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<QStringList>("warnings");
    const auto hive = u"%1: cannot be read: Permission denied"_s;
    const auto packages = u"%1/AppData/Local/Packages: cannot be listed: Permission denied"_s;
    QTest::newRow("an account") << u"Users/ann"_s
                                << QStringList{hive.arg("Users/ann/NTUSER.DAT"_L1),
                                               packages.arg("Users/ann"_L1)};
    QTest::newRow("a folder above the packages")
        << u"Users/ann/AppData"_s << QStringList{packages.arg("Users/ann"_L1)};
    QTest::newRow("the packages") << u"Users/ann/AppData/Local/Packages"_s
                                  << QStringList{packages.arg("Users/ann"_L1)};
    QTest::newRow("all accounts") << u"Users"_s
                                  << QStringList{u"Users: cannot be listed: Permission denied"_s};
    QTest::newRow("the folder of the software hive")
        << u"Windows/System32/config"_s
        << QStringList{hive.arg(software_file), hive.arg(backup_file)};
}

void tst_host_warnings::warns_about_folders_without_permission()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    QFETCH(QString, closed);
    QFETCH(QStringList, warnings);
    evidence_volume volume;
    fill_software(volume.software());
    fill_user(volume.user(u"ann"_s));
    volume.package(u"ann"_s, u"Calculator"_s).write();
    QVERIFY(QFile::setPermissions(folder(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(volume.path(closed), {}));
    const host_result result =
        host_process().without_privileges().run(arguments(volume.root(), {u"--quiet"_s}));
    QVERIFY(QFile::setPermissions(volume.path(closed),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    for (QString &warning : warnings)
        warning.prepend("artifact_host: warning: "_L1);
    QCOMPARE(result.errors, warnings);
    QCOMPARE(result.exit_code, 6);
}

void tst_host_warnings::tells_why_nothing_is_left_to_read()
{
    const auto outside = small_volume();
    evidence_volume volume;
    volume.folder(u"Users"_s).link(software_file, outside->software_path());
    const host_result result = extract(volume);
    const QString root = QFileInfo(volume.root()).canonicalFilePath() + u'/';
    QCOMPARE(
        result.errors,
        (QStringList{
            u"artifact_host: warning: %1: a link leads out of the source; the tabs of the software hive are left out"_s
                .arg(software_file),
            u"artifact_host: source %1 holds nothing to read: no %2 and no account in Users"_s.arg(
                root, software_file)}));
    QCOMPARE(result.exit_code, 3);
}

void tst_host_warnings::warns_about_keys_that_cannot_be_listed()
{
    evidence_volume volume;
    volume.software()
        .key(u"Microsoft\\Windows\\CurrentVersion"_s)
        .add_key(hive_name::lone_surrogate());
    fill_software(volume.software());
    volume.folder(u"Users"_s).write();
    const host_result result = extract(volume, {u"--quiet"_s, u"--tab"_s, u"install_apps_64"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: %1: the keys in Microsoft\\Windows\\CurrentVersion cannot be listed, so Microsoft\\Windows\\CurrentVersion\\Uninstall is not read"_s
                .arg(software_file)});
    QCOMPARE(result.exit_code, 6);
}

void tst_host_warnings::warns_about_keys_of_the_backup_when_that_is_read()
{
    evidence_volume volume;
    volume.file(software_file, QByteArray(8192, 'x'));
    volume.reg_back_software()
        .key(u"Microsoft\\Windows\\CurrentVersion"_s)
        .add_key(hive_name::lone_surrogate());
    fill_software(volume.reg_back_software());
    volume.folder(u"Users"_s).write();
    const host_result result = extract(volume, {u"--quiet"_s, u"--tab"_s, u"install_apps_64"_s});
    QCOMPARE(result.errors.size(), 3);
    QCOMPARE(
        result.errors.last(),
        u"artifact_host: warning: %1: the keys in Microsoft\\Windows\\CurrentVersion cannot be listed, so Microsoft\\Windows\\CurrentVersion\\Uninstall is not read"_s
            .arg(backup_file));
}

void tst_host_warnings::escapes_control_characters_of_the_evidence()
{
    const auto volume = small_volume();
    volume->folder(u"Users/\x1b[2J\u202eeve\n/AppData/Local/Packages"_s);
    const host_result result = extract(*volume, {u"--quiet"_s});
    QVERIFY(result.errors.contains(
        u"artifact_host: warning: Users/\\x1b[2J\\u202eeve\\x0a/NTUSER.DAT: not found"_s));
}

TEST_MAIN(tst_host_warnings)
#include "tst_host_warnings.moc"

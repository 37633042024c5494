#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "host_test.h"
#include "machine.h"
#include "result_database.h"
#include "test_main.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the program asks of the plug-in, and the accounts that it reads.
class tst_host_options : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void tells_what_it_asked_for_data();
    void tells_what_it_asked_for();
    void reads_all_the_evidence_there_is_data();
    void reads_all_the_evidence_there_is();
    void decodes_texts_by_their_type_data();
    void decodes_texts_by_their_type();
    void finds_damage_below_the_installations_of_users_data();
    void finds_damage_below_the_installations_of_users();
    void reads_an_account_in_whatever_letter_case_data();
    void reads_an_account_in_whatever_letter_case();
    void takes_one_account_for_two_spellings();
    void prefers_the_account_that_is_spelt_so();
    void takes_each_account_that_it_may_not_look_at();
    void tells_why_it_finds_no_account();
    void knows_no_other_account_data();
    void knows_no_other_account();
    void names_the_first_of_many_accounts();
};

namespace {

const auto like_the_suite = u"--like-the-suite"_s;
const auto users_uninstall_key = u"Software\\"_s + uninstall_key;

void install_for_user(hive_builder &hive)
{
    hive.key(users_uninstall_key).key(u"Zoom"_s).text(u"DisplayName"_s, u"Zoom"_s);
}

} // namespace

void tst_host_options::tells_what_it_asked_for_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("call");
    QTest::newRow("everything by default")
        << QStringList() << every_option
        << u"call: pub_find_source_file(decode_by_type | ignore_letter_case | "
           "installations_of_users | keep_hives_open | old_layout | report_unread)"_s;
    QTest::newRow("nothing like the suite")
        << QStringList{like_the_suite} << no_option
        << u"call: pub_find_source_file(keep_hives_open | report_unread)"_s;
}

void tst_host_options::tells_what_it_asked_for()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, line);
    QFETCH(const QString, call);
    const auto volume = small_volume();
    const host_result result = extract(*volume, options + recorded);
    QCOMPARE(result.options_line, line);
    QVERIFY(result.errors.contains(call));
}

void tst_host_options::reads_all_the_evidence_there_is_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("total");
    QTest::newRow("by default") << QStringList() << u"11"_s;
    QTest::newRow("like the suite") << QStringList{like_the_suite} << u" 4"_s;
}

void tst_host_options::reads_all_the_evidence_there_is()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system ignores letter case");
#endif
    QFETCH(const QStringList, options);
    QFETCH(const QString, total);
    evidence_volume volume;
    fill_software(volume.software());
    fill_user(volume.hive(u"Users/ann/ntuser.dat"_s));
    install_for_user(volume.hive(u"Users/ann/ntuser.dat"_s));
    volume.folder(u"Users/ann/appdata/local/packages/Calculator"_s).write();
    const host_result result = extract(volume, options);
    QCOMPARE(total_line(result), "total                             "_L1 + total);
    // The suite passes over the hive that is spelt in lower case.
    QCOMPARE(result.exit_code, options.isEmpty() ? 0 : 6);
}

void tst_host_options::decodes_texts_by_their_type_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"Büro für Müller", "Яндекс Браузер", "微信", "Ελληνικά", "アプリ"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_host_options::decodes_texts_by_their_type()
{
    QFETCH(const QString, name);
    evidence_volume volume;
    volume.software().key(uninstall_key).key(u"x"_s).text(u"DisplayName"_s, name);
    volume.write();
    const auto names = [&](const QStringList &options) {
        extract(volume, options);
        return result_database(database_path()).column(u"install_apps_64"_s, u"display_name"_s);
    };
    QCOMPARE(names({}), QStringList{name});
    QVERIFY(names({like_the_suite}) != QStringList{name});
}

void tst_host_options::finds_damage_below_the_installations_of_users_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<qsizetype>("warnings");
    const QStringList tab{u"--quiet"_s, u"--tab"_s, u"install_apps_64"_s};
    QTest::newRow("when they are read") << tab << qsizetype(1);
    QTest::newRow("not when they are not read")
        << tab + QStringList{like_the_suite} << qsizetype(0);
    QTest::newRow("not for tabs that do not read them")
        << QStringList{u"--quiet"_s, u"--tab"_s, u"uninstall_apps"_s} << qsizetype(0);
}

void tst_host_options::finds_damage_below_the_installations_of_users()
{
    QFETCH(const QStringList, options);
    QFETCH(const qsizetype, warnings);
    evidence_volume volume;
    fill_software(volume.software());
    hive_builder &user = volume.user(u"ann"_s);
    install_for_user(user);
    const hive_key &damaged =
        user.key(users_uninstall_key).key(u"Lost"_s).text(u"DisplayName"_s, u"Lost"_s);
    volume.write();
    const QString hive = volume.ntuser_path(u"ann"_s);
    write_file(hive, hive_damage(read_file(hive)).value_count(damaged.cells().key, 999).bytes());
    const host_result result = extract(volume, options);
    const auto warning =
        u"artifact_host: warning: Users/ann/NTUSER.DAT: the content of %1\\Lost cannot be listed, so it is not read"_s
            .arg(users_uninstall_key);
    QCOMPARE(result.errors, QStringList(warnings, warning));
}

void tst_host_options::reads_an_account_in_whatever_letter_case_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("by default") << QStringList();
    QTest::newRow("like the suite") << QStringList{like_the_suite};
}

void tst_host_options::reads_an_account_in_whatever_letter_case()
{
    QFETCH(const QStringList, options);
    evidence_volume volume;
    fill_user(volume.user(u"Žofie"_s));
    volume.user(u"bob"_s);
    volume.write();
    const host_result result =
        extract(volume, QStringList{u"--quiet"_s, u"--user"_s, u"žOFIE"_s} + options + recorded);
    QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3), u"  | Žofie | )"_s);
}

void tst_host_options::takes_one_account_for_two_spellings()
{
    const auto volume = small_volume();
    const host_result result =
        extract(*volume, recorded + QStringList{u"--user"_s, u"ANN"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3), u"  | ann | )"_s);
}

void tst_host_options::prefers_the_account_that_is_spelt_so()
{
#ifdef Q_OS_MACOS
    QSKIP("the file system ignores letter case");
#endif
    const auto volume = small_volume();
    fill_user(volume->user(u"ANN"_s));
    volume->write();
    for (const QString &name : {u"ann"_s, u"ANN"_s}) {
        const host_result result = extract(*volume, recorded + QStringList{u"--user"_s, name});
        QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3),
                 u"  | %1 | )"_s.arg(name));
    }
}

void tst_host_options::takes_each_account_that_it_may_not_look_at()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    const auto volume = small_volume();
    QVERIFY(QFile::setPermissions(folder(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(volume->path(u"Users"_s), {}));
    const host_result result = host_process().without_privileges().run(arguments(
        volume->root(), {u"--quiet"_s, u"--tab"_s, u"uninstall_apps"_s, u"--tab"_s,
                         u"registered_apps"_s, u"--user"_s, u"ann"_s, u"--user"_s, u"bob"_s}));
    QVERIFY(QFile::setPermissions(volume->path(u"Users"_s),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const auto warning =
        u"artifact_host: warning: Users/%1/NTUSER.DAT: cannot be read: Permission denied"_s;
    QCOMPARE(result.errors, (QStringList{warning.arg("ann"_L1), warning.arg("bob"_L1)}));
    QCOMPARE(result.exit_code, 6);
}

// The exact name would be found; other letter case would have to be looked for.
void tst_host_options::tells_why_it_finds_no_account()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    const auto volume = small_volume();
    QVERIFY(QFile::setPermissions(folder(), QFile::Permissions(0x7777)));
    QVERIFY(QFile::setPermissions(volume->path(u"Users"_s), QFile::ExeOwner));
    const host_result result =
        host_process().without_privileges().run(arguments(volume->root(), {u"--user"_s, u"ANN"_s}));
    QVERIFY(QFile::setPermissions(volume->path(u"Users"_s),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.errors, QStringList{u"artifact_host: no account \"ANN\" is found in Users, "
                                        "which cannot be listed: Permission denied"_s});
    QCOMPARE(result.exit_code, 2);
}

void tst_host_options::knows_no_other_account_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const QString &user, const QStringList &options = {}) {
        QString shown = user;
        QTest::newRow(name) << options << user << shown.replace(u'\n', "\\x0a"_L1);
    };
    row("another name", u"nobody"_s);
    row("another name like the suite", u"nobody"_s, {like_the_suite});
    row("a name with a line break", u"ann\nbob"_s);
    row("a file beside the accounts", u"desktop.ini"_s);
    row("a link to itself", u"self"_s);
}

void tst_host_options::knows_no_other_account()
{
    QFETCH(const QStringList, options);
    QFETCH(const QString, name);
    QFETCH(const QString, shown);
    const auto volume = small_volume();
    volume->file(u"Users/desktop.ini"_s).link(u"Users/self"_s, u"self"_s);
    const host_result result =
        extract(*volume, QStringList{u"--user"_s, u"ann"_s, u"--user"_s, name} + options);
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: no account \"%1\" in Users; the accounts are ann, bob"_s.arg(shown)});
    QCOMPARE(result.exit_code, 2);
    QVERIFY(QDir(folder()).isEmpty());
}

void tst_host_options::names_the_first_of_many_accounts()
{
    evidence_volume volume;
    QStringList names;
    for (char letter = 'a'; letter <= 'z'; ++letter) {
        names.append(QString(QLatin1Char(letter)));
        volume.package(names.last(), u"App"_s);
    }
    const host_result result = extract(volume, {u"--user"_s, u"none"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: no account \"none\" in Users; the accounts are %1 and 6 more"_s.arg(
                names.first(20).join(", "_L1))});
}

TEST_MAIN(tst_host_options)
#include "tst_host_options.moc"

#include "installed_applications.h"
#include "log_line.h"
#include "test_main.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;
using namespace test_support::installed_applications;

namespace {

/// Adds the two views of the Uninstall key: what each is called and where its applications stand.
void add_view_rows()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("key");
    QTest::newRow("native view") << u"install_apps_64"_s << uninstall_key;
    QTest::newRow("32-bit view") << u"install_apps_32"_s << uninstall_key_32;
}

} // namespace

// Which rows come of the Uninstall keys of an intact hive.
class tst_extract_installed_applications : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void turns_install_dates_around_data();
    void turns_install_dates_around();
    void writes_each_application_with_all_its_values_data() { add_view_rows(); }
    void writes_each_application_with_all_its_values();
    void logs_an_end_at_both_ends_data();
    void logs_an_end_at_both_ends();
    void reads_its_own_view_alone_data() { add_view_rows(); }
    void reads_its_own_view_alone();
    void orders_applications_by_the_name_of_their_key();
    void writes_an_application_without_values();
    void writes_nothing_where_no_application_stands_data();
    void writes_nothing_where_no_application_stands();
    void shows_data_of_any_type_as_text_data();
    void shows_data_of_any_type_as_text();
    void knows_values_by_their_exact_name_data();
    void knows_values_by_their_exact_name();
    void keeps_names_of_every_script();
    void reads_all_of_many_applications();
    void tells_when_a_key_was_written_data();
    void tells_when_a_key_was_written();
};

void tst_extract_installed_applications::turns_install_dates_around_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("eight digits") << u"20210315"_s << u"15/03/2021"_s;
    QTest::newRow("nothing") << u""_s << u""_s;
    QTest::newRow("no text at all") << QString() << u""_s;
    QTest::newRow("a year alone") << u"2021"_s << u"//2021"_s;
    QTest::newRow("less than a year") << u"21"_s << u"//21"_s;
    QTest::newRow("a year and a month") << u"202103"_s << u"/03/2021"_s;
    QTest::newRow("half a day") << u"2021031"_s << u"1/03/2021"_s;
    QTest::newRow("more than a date") << u"20210315T1200"_s << u"15/03/2021"_s;
    QTest::newRow("no date") << u"notadate"_s << u"te/da/nota"_s;
    QTest::newRow("a date in parts already") << u"31/12/2020"_s << u"20/2//31/1"_s;
    QTest::newRow("digits of another script") << u"٢٠٢١٠٣١٥"_s << u"١٥/٠٣/٢٠٢١"_s;
}

void tst_extract_installed_applications::turns_install_dates_around()
{
    QFETCH(const QString, stored);
    QTEST(winos_probe().get_install_date(stored), "shown");
}

void tst_extract_installed_applications::writes_each_application_with_all_its_values()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, key);
    worker_fixture fixture;
    hive_key &uninstall = fixture.volume.software().key(key);
    uninstall.key(u"7-Zip"_s)
        .text(u"DisplayName"_s, u"7-Zip 22.01 (x64)"_s)
        .text(u"DisplayVersion"_s, u"22.01"_s)
        .text(u"Publisher"_s, u"Igor Pavlov"_s)
        .text(u"InstallLocation"_s, u"C:\\Program Files\\7-Zip\\"_s)
        .text(u"InstallSource"_s, u"C:\\Users\\ann\\Downloads\\"_s)
        .text(u"InstallDate"_s, u"20210315"_s)
        .text(u"URLInfoAbout"_s, u"https://www.7-zip.org/"_s)
        .text(u"UninstallString"_s, u"\"C:\\Program Files\\7-Zip\\Uninstall.exe\""_s)
        .text(u"HelpLink"_s, u"not of interest"_s)
        .dword(u"EstimatedSize"_s, 5600)
        .last_write_unix(1615808000);
    uninstall.key(u"Other"_s).text(u"Publisher"_s, u"Somebody"_s).last_write_unix(1);
    fixture.find_files();
    fixture.extract(tab);

    const application seven_zip = {u"7-Zip"_s,
                                   u"1615808000"_s,
                                   u"7-Zip 22.01 (x64)"_s,
                                   u"22.01"_s,
                                   u"Igor Pavlov"_s,
                                   u"C:\\Program Files\\7-Zip\\"_s,
                                   u"C:\\Users\\ann\\Downloads\\"_s,
                                   u"https://www.7-zip.org/"_s,
                                   u"\"C:\\Program Files\\7-Zip\\Uninstall.exe\""_s,
                                   u"15/03/2021"_s};
    application other = {u"Other"_s, u"1"_s};
    other.publisher = u"Somebody"_s;
    QCOMPARE(fixture.rows(tab), (QList<QStringList>{row_of(seven_zip, key), row_of(other, key)}));
}

void tst_extract_installed_applications::logs_an_end_at_both_ends_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("operation");
    QTest::newRow("native view") << u"install_apps_64"_s << u"extract_installed_applications"_s;
    QTest::newRow("32-bit view") << u"install_apps_32"_s
                                 << u"extract_installed_applications_for_32"_s;
}

void tst_extract_installed_applications::logs_an_end_at_both_ends()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, operation);
    worker_fixture fixture;
    application_key(fixture.volume, u"A"_s);
    fixture.find_files();
    fixture.extract(tab);
    const QString line = log_line(u"windows_installed_applications_winos::"_s + operation,
                                  u"[%1]---ENDS---"_s.arg(operation));
    QCOMPARE(fixture.log.lines(), (QStringList{line, line}));
}

void tst_extract_installed_applications::reads_its_own_view_alone()
{
    QFETCH(const QString, tab);
    QFETCH(const QString, key);
    worker_fixture fixture;
    fixture.volume.software().key(uninstall_key).key(uninstall_key);
    fixture.volume.software().key(uninstall_key_32).key(uninstall_key_32);
    fixture.find_files();
    fixture.extract(tab);
    QCOMPARE(fixture.database().column(tab, u"parent_name"_s),
             QStringList{key.section(u'\\', 0, 0)});
}

void tst_extract_installed_applications::orders_applications_by_the_name_of_their_key()
{
    worker_fixture fixture;
    hive_key &uninstall = fixture.volume.software().key(uninstall_key);
    for (const QString &name : {u"b"_s, u"a"_s, u"é"_s, u"A"_s, u"{1}"_s, u"_"_s})
        uninstall.add_key(name);
    QCOMPARE(column_of_run(fixture, u"parent_name"_s),
             (QStringList{u"A"_s, u"_"_s, u"a"_s, u"b"_s, u"{1}"_s, u"é"_s}));
}

void tst_extract_installed_applications::writes_an_application_without_values()
{
    worker_fixture fixture;
    application_key(fixture.volume, u"Bare"_s).key(u"Sub"_s).text(u"DisplayName"_s, u"Inner"_s);
    fixture.find_files();
    fixture.extract(native);
    QCOMPARE(fixture.rows(native), QList<QStringList>{row_of({u"Bare"_s, u"0"_s})});
}

void tst_extract_installed_applications::writes_nothing_where_no_application_stands_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("an empty hive") << u""_s;
    QTest::newRow("the path ends on the way") << u"Microsoft\\Windows"_s;
    QTest::newRow("the path misses a part") << u"Microsoft\\Windows\\Uninstall\\A"_s;
    QTest::newRow("the key has no subkeys") << uninstall_key;
    QTest::newRow("the key stands below another root")
        << u"Software\\"_s + uninstall_key + u"\\A"_s;
}

void tst_extract_installed_applications::writes_nothing_where_no_application_stands()
{
    QFETCH(const QString, key);
    worker_fixture fixture;
    fixture.volume.software().key(key).text(u"DisplayName"_s, u"stray"_s);
    QCOMPARE(column_of_run(fixture, u"parent_name"_s), QStringList());
    const QString line = u"[extract_installed_applications]---ENDS---"_s;
    QCOMPARE(fixture.log.messages(), (QStringList{line, line}));
}

void tst_extract_installed_applications::shows_data_of_any_type_as_text_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, quint32 type, const QByteArray &data,
                        const QString &shown) { QTest::newRow(name) << type << data << shown; };
    row("a text", reg_sz, registry_text(u"ABC"_s), u"ABC"_s);
    row("a text without a terminator", reg_sz, utf16le(u"ABC"_s), u"ABC"_s);
    row("a text with junk behind its end", reg_sz, registry_text(u"ABC"_s) + "junk", u"ABCjunk"_s);
    row("a text of an odd length", reg_sz, QByteArray("A\0B\0C", 5), u"ABC"_s);
    row("an expandable text", reg_expand_sz, registry_text(u"%A%\\b"_s), u"%A%\\b"_s);
    row("several texts", reg_multi_sz, registry_multi_text({u"one"_s, u"two"_s}), u"onetwo"_s);
    row("a number", reg_dword, registry_dword(0x41), u"A"_s);
    row("the number 0", reg_dword, registry_dword(0), u""_s);
    row("a long number", reg_qword, registry_qword(0x4200000041), u"AB"_s);
    row("bytes", reg_binary, QByteArray("a\0\0b\nc", 6), u"ab\nc"_s);
    row("no data", reg_sz, QByteArray(), u""_s);
    row("a single byte", reg_sz, "x", u"x"_s);
    row("nothing but zeros", reg_sz, QByteArray(64, '\0'), u""_s);
    row("no type", reg_none, "none", u"none"_s);
    row("an unknown type", 0xfffffff0, "odd", u"odd"_s);
    row("letters of one byte beyond ASCII", reg_sz, registry_text(u"é"_s), u"\ufffd"_s);
    row("letters of two bytes", reg_sz, registry_text(u"日"_s), QString::fromUtf8("\xe5\x65"));
    row("big data", reg_sz, registry_text(QString(20000, u'x')), QString(20000, u'x'));
}

void tst_extract_installed_applications::shows_data_of_any_type_as_text()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    QFETCH(const QString, shown);
    worker_fixture fixture;
    application_key(fixture.volume, u"A"_s)
        .value(u"DisplayName"_s, type, data)
        .text(u"Publisher"_s, u"next"_s);
    QCOMPARE(column_of_run(fixture, u"display_name"_s), QStringList{shown});
    QCOMPARE(fixture.database().column(native, u"publisher"_s), QStringList{u"next"_s});
}

void tst_extract_installed_applications::knows_values_by_their_exact_name_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("in lower case") << u"displayname"_s;
    QTest::newRow("in upper case") << u"DISPLAYNAME"_s;
    QTest::newRow("with a blank") << u"DisplayName "_s;
    QTest::newRow("with a letter too many") << u"DisplayNames"_s;
    QTest::newRow("without a name") << u""_s;
}

void tst_extract_installed_applications::knows_values_by_their_exact_name()
{
    QFETCH(const QString, value);
    worker_fixture fixture;
    application_key(fixture.volume, u"A"_s).text(value, u"wrong"_s);
    application_key(fixture.volume, u"B"_s)
        .text(u"DisplayName"_s, u"first"_s)
        .text(u"DisplayName"_s, u"last"_s)
        .text(value, u"wrong"_s);
    QCOMPARE(column_of_run(fixture, u"display_name"_s), (QStringList{u""_s, u"last"_s}));
}

void tst_extract_installed_applications::keeps_names_of_every_script()
{
    QStringList names = {u"Größe"_s,
                         u"日本語アプリ"_s,
                         u"برنامج"_s,
                         u"\U0001F600 emoji"_s,
                         u"'); drop table install_apps_64; --"_s,
                         u"with \"quotes\" and 'more'"_s,
                         u"line\nfeed\x1b[31m"_s,
                         u"a/slash"_s,
                         u" blanks "_s};
    worker_fixture fixture;
    for (const QString &name : names)
        fixture.volume.software().key(uninstall_key).add_key(name);
    names.sort();
    QCOMPARE(column_of_run(fixture, u"parent_name"_s), names);
}

void tst_extract_installed_applications::reads_all_of_many_applications()
{
    constexpr int count = 2000;
    worker_fixture fixture;
    QStringList names;
    for (int i = 0; i < count; ++i) {
        names.append(u"App"_s + QString::number(i).rightJustified(4, u'0'));
        application_key(fixture.volume, names.last()).text(u"DisplayName"_s, names.last());
    }
    QCOMPARE(column_of_run(fixture, u"display_name"_s), names);
    QCOMPARE(fixture.worker.record_count, count);
}

void tst_extract_installed_applications::tells_when_a_key_was_written_data()
{
    QTest::addColumn<qint64>("filetime");
    QTest::addColumn<QString>("seconds");
    const qint64 epoch = filetime_of_unix(0);
    QTest::newRow("1970") << epoch << u"0"_s;
    QTest::newRow("just below a second later") << epoch + 9999999 << u"0"_s;
    QTest::newRow("a second later") << epoch + 10000000 << u"1"_s;
    QTest::newRow("just below a second before") << epoch - 9999999 << u"0"_s;
    QTest::newRow("a second before") << epoch - 10000000 << u"-1"_s;
    QTest::newRow("no time") << qint64(0) << u"-11644473600"_s;
    QTest::newRow("a negative time is no time") << qint64(-2) << u"-11644473600"_s;
    QTest::newRow("the end of time") << std::numeric_limits<qint64>::max() << u"910692730085"_s;
}

void tst_extract_installed_applications::tells_when_a_key_was_written()
{
    QFETCH(const qint64, filetime);
    QFETCH(const QString, seconds);
    worker_fixture fixture;
    application_key(fixture.volume, u"A"_s).last_write(filetime);
    QCOMPARE(column_of_run(fixture, u"modified_timestamp"_s), QStringList{seconds});
    QCOMPARE(fixture.database().column(native, u"typeof(modified_timestamp)"_s),
             QStringList{u"integer"_s});
}

TEST_MAIN(tst_extract_installed_applications)
#include "tst_extract_installed_applications.moc"

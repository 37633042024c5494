#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "test_main.h"
#include "worker_fixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

const QString operation = u"extract_registered_apps"_s;
const QString source_file = u"/Windows/System32/config/SOFTWARE"_s;

QStringList row_of(const QString &name, const QString &value, const QString &source = source_file)
{
    return {null_text,
            name,
            value,
            u"SOFTWARE"_s,
            u"RegisteredApplications"_s,
            u"\\RegisteredApplications"_s,
            source,
            u"Windows"_s,
            u"Source3"_s};
}

hive_key &applications(hive_builder &hive)
{
    return hive.key(registered_applications_key);
}

QList<QStringList> rows_of_run(worker_fixture &fixture)
{
    fixture.extract(u"registered_apps"_s);
    return fixture.rows(u"registered_apps"_s);
}

} // namespace

class tst_extract_registered_apps : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void writes_each_value_in_the_order_of_the_hive();
    void finds_the_key_whatever_its_letters();
    void writes_nothing_without_the_key_data();
    void writes_nothing_without_the_key();
    void shows_data_of_any_type_as_text_data();
    void shows_data_of_any_type_as_text();
    void keeps_names_of_every_script();
    void reads_the_backup_of_a_hive_that_cannot_be_opened_data();
    void reads_the_backup_of_a_hive_that_cannot_be_opened();
    void gives_up_where_neither_hive_can_be_opened();
    void loses_of_a_damaged_value_its_data_alone();
    void reads_nothing_from_a_damaged_list_of_values();
    void ends_at_a_value_without_a_readable_name();
};

void tst_extract_registered_apps::writes_each_value_in_the_order_of_the_hive()
{
    worker_fixture fixture;
    applications(fixture.volume.software())
        .text(u"Zip"_s, u"Software\\Zip\\Capabilities"_s)
        .text(u"Mail"_s, u"Software\\Clients\\Mail\\Capabilities"_s)
        .text(u"Zip"_s, u"again"_s)
        .key(u"Sub"_s)
        .text(u"Inner"_s, u"not of interest"_s);
    fixture.volume.software().root().text(u"Outer"_s, u"not of interest"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture),
             (QList<QStringList>{row_of(u"Zip"_s, u"Software\\Zip\\Capabilities"_s),
                                 row_of(u"Mail"_s, u"Software\\Clients\\Mail\\Capabilities"_s),
                                 row_of(u"Zip"_s, u"again"_s)}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_registered_apps::finds_the_key_whatever_its_letters()
{
    worker_fixture fixture;
    fixture.volume.software().key(u"REGISTEREDapplications"_s).text(u"A"_s, u"a"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), QList<QStringList>{row_of(u"A"_s, u"a"_s)});
}

void tst_extract_registered_apps::writes_nothing_without_the_key_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("an empty hive") << u""_s;
    QTest::newRow("another key") << u"RegisteredApplication"_s;
    QTest::newRow("the key at another place") << u"Software\\RegisteredApplications"_s;
}

void tst_extract_registered_apps::writes_nothing_without_the_key()
{
    QFETCH(const QString, key);
    worker_fixture fixture;
    fixture.volume.software().key(key).text(u"A"_s, u"a"_s);
    fixture.volume.reg_back_software().key(registered_applications_key).text(u"B"_s, u"b"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), QList<QStringList>());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_registered_apps::shows_data_of_any_type_as_text_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, quint32 type, const QByteArray &data,
                        const QString &shown) { QTest::newRow(name) << type << data << shown; };
    row("a text", reg_sz, registry_text(u"Software\\A"_s), u"Software\\A"_s);
    row("a number", reg_dword, registry_dword(0x00430041), u"AC"_s);
    row("bytes", reg_binary, QByteArray("\0x\0\0y", 5), u"xy"_s);
    row("several texts", reg_multi_sz, registry_multi_text({u"a"_s, u"b"_s}), u"ab"_s);
    row("no data", reg_sz, QByteArray(), u""_s);
    row("a text of another script", reg_sz, registry_text(u"é!"_s), u"\ufffd!"_s);
}

void tst_extract_registered_apps::shows_data_of_any_type_as_text()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    QFETCH(const QString, shown);
    worker_fixture fixture;
    applications(fixture.volume.software()).value(u"A"_s, type, data).text(u"B"_s, u"next"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture),
             (QList<QStringList>{row_of(u"A"_s, shown), row_of(u"B"_s, u"next"_s)}));
}

void tst_extract_registered_apps::keeps_names_of_every_script()
{
    worker_fixture fixture;
    QList<QStringList> expected;
    for (const QString &name : {u""_s, u"Größe"_s, u"日本語"_s, u"תוכנה"_s, u"\U0001F600"_s,
                                u"'); delete from registered_apps; --"_s, u"a\\b/c\n"_s}) {
        applications(fixture.volume.software()).text(name, u"x"_s);
        expected.append(row_of(name, u"x"_s));
    }
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), expected);
}

void tst_extract_registered_apps::reads_the_backup_of_a_hive_that_cannot_be_opened_data()
{
    QTest::addColumn<bool>("is_missing");
    QTest::addColumn<QString>("source");
    QTest::newRow("a hive of garbage") << false << source_file;
    QTest::newRow("a missing hive") << true << u""_s;
}

void tst_extract_registered_apps::reads_the_backup_of_a_hive_that_cannot_be_opened()
{
    QFETCH(const bool, is_missing);
    QFETCH(const QString, source);
    worker_fixture fixture;
    applications(fixture.volume.reg_back_software()).text(u"A"_s, u"a"_s);
    if (!is_missing)
        fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "garbage");
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), QList<QStringList>{row_of(u"A"_s, u"a"_s, source)});
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_registered_apps::gives_up_where_neither_hive_can_be_opened()
{
    worker_fixture fixture;
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "garbage");
    fixture.volume.file(u"Windows/System32/config/RegBack/SOFTWARE"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), QList<QStringList>());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation).mid(0, 1));
}

void tst_extract_registered_apps::loses_of_a_damaged_value_its_data_alone()
{
    worker_fixture fixture;
    hive_key &key = applications(fixture.volume.software());
    key.text(u"A"_s, u"long enough"_s).text(u"B"_s, u"lost"_s).text(u"C"_s, u"kept"_s);
    fixture.find_files();
    const QByteArray hive = fixture.volume.software().bytes();
    write_file(
        fixture.volume.software_path(),
        hive_damage(hive).data_cell(key.cells_of_value(u"B"_s).value, hive.size() + 4096).bytes());
    QCOMPARE(rows_of_run(fixture),
             (QList<QStringList>{row_of(u"A"_s, u"long enough"_s), row_of(u"B"_s, u""_s),
                                 row_of(u"C"_s, u"kept"_s)}));
}

void tst_extract_registered_apps::reads_nothing_from_a_damaged_list_of_values()
{
    worker_fixture fixture;
    hive_key &key = applications(fixture.volume.software());
    key.text(u"A"_s, u"a"_s).text(u"B"_s, u"b"_s);
    fixture.find_files();
    const QByteArray hive = fixture.volume.software().bytes();
    write_file(
        fixture.volume.software_path(),
        hive_damage(hive).offset_entry(key.cells().value_list, 1, hive.size() + 4096).bytes());
    QCOMPARE(rows_of_run(fixture), QList<QStringList>());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_registered_apps::ends_at_a_value_without_a_readable_name()
{
    worker_fixture fixture;
    applications(fixture.volume.software())
        .text(u"A"_s, u"a"_s)
        .value(hive_name::lone_surrogate(), reg_sz, registry_text(u"b"_s))
        .text(u"C"_s, u"c"_s);
    fixture.find_files();
    QCOMPARE(rows_of_run(fixture), QList<QStringList>{row_of(u"A"_s, u"a"_s)});
}

TEST_MAIN(tst_extract_registered_apps)

#include "tst_extract_registered_apps.moc"

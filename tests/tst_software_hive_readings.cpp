#include "files.h"
#include "hive_damage.h"
#include "installed_applications.h"
#include "test_main.h"

#include <QDir>
#include <QRegularExpression>
#include <QScopeGuard>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;
using namespace test_support::installed_applications;

namespace {

/// The same for a hive that was damaged after it was written.
QStringList column_of_damaged_run(worker_fixture &fixture, const hive_damage &damage,
                                  const QString &column)
{
    fixture.find_files();
    write_file(fixture.volume.software_path(), damage.bytes());
    fixture.extract(native);
    return fixture.database().column(native, column);
}

} // namespace

// What is read where the software hive is missing, damaged or stands elsewhere.
class tst_software_hive_readings : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void reads_the_backup_of_a_hive_that_cannot_be_opened_data();
    void reads_the_backup_of_a_hive_that_cannot_be_opened();
    void names_no_source_for_a_missing_hive();
    void leaves_the_backup_of_a_readable_hive_alone();
    void gives_up_without_a_root_that_leads_to_the_backup();
    void names_the_source_file_within_the_source_data();
    void names_the_source_file_within_the_source();
    void loses_of_a_damaged_key_its_values_alone();
    void loses_of_a_damaged_value_its_data_alone();
    void loses_a_key_without_a_readable_name_alone();
    void reads_nothing_from_a_damaged_list_of_keys();
};

void tst_software_hive_readings::reads_the_backup_of_a_hive_that_cannot_be_opened_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("no hive") << QByteArray("MZ is no hive");
    QTest::newRow("a page of zeros") << QByteArray(4096, '\0');
    QTest::newRow("half a base block") << hive_builder().bytes().first(2048);
}

void tst_software_hive_readings::reads_the_backup_of_a_hive_that_cannot_be_opened()
{
    QFETCH(const QByteArray, content);
    worker_fixture fixture;
    fixture.volume.reg_back_software().key(uninstall_key).key(u"A"_s).last_write_unix(7);
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, content);
    fixture.find_files();
    fixture.extract(native);
    QCOMPARE(fixture.rows(native), QList<QStringList>{row_of({u"A"_s, u"7"_s})});
}

void tst_software_hive_readings::names_no_source_for_a_missing_hive()
{
    worker_fixture fixture;
    fixture.volume.reg_back_software().key(uninstall_key).key(u"A"_s);
    QCOMPARE(column_of_run(fixture, u"parent_name || '|' || source_file"_s), QStringList{u"A|"_s});
}

void tst_software_hive_readings::leaves_the_backup_of_a_readable_hive_alone()
{
    worker_fixture fixture;
    fixture.volume.software();
    fixture.volume.reg_back_software().key(uninstall_key).key(u"A"_s);
    QCOMPARE(column_of_run(fixture, u"parent_name"_s), QStringList());
    QCOMPARE(fixture.log.messages().size(), 2);
}

void tst_software_hive_readings::gives_up_without_a_root_that_leads_to_the_backup()
{
    worker_fixture fixture;
    fixture.volume.file(u"Windows/System32/config/SOFTWARE"_s, "no hive");
    fixture.volume.reg_back_software().key(uninstall_key).key(u"A"_s);
    fixture.find_files();
    fixture.worker.source_root_path.chop(1);
    fixture.extract(native);
    QCOMPARE(fixture.rows(native), QList<QStringList>());
    QCOMPARE(fixture.log.messages(), QStringList{u"[extract_installed_applications]---ENDS---"_s});
}

void tst_software_hive_readings::names_the_source_file_within_the_source_data()
{
    // "ROOT" stands for the folder of the volume, "SHOUTED" for the same in upper case.
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("hive_path");
    QTest::addColumn<QString>("source_file");
    const QString hive = u"/Windows/System32/config/SOFTWARE"_s;
    QTest::newRow("a root with its slash") << u"ROOT/"_s << u"ROOT"_s + hive << hive;
    QTest::newRow("a root without its slash") << u"ROOT"_s << u"ROOT"_s + hive << hive;
    QTest::newRow("no root") << u""_s << u"ROOT"_s + hive << u"ROOT"_s + hive;
    QTest::newRow("another root") << u"/elsewhere/"_s << u"ROOT"_s + hive << u"ROOT"_s + hive;
    QTest::newRow("a root in other letters")
        << u"SHOUTED/"_s << u"ROOT"_s + hive << u"ROOT"_s + hive;
    QTest::newRow("a relative path")
        << u"/elsewhere/"_s << u"Windows/System32/config/SOFTWARE"_s << hive;
}

void tst_software_hive_readings::names_the_source_file_within_the_source()
{
    QFETCH(const QString, root);
    QFETCH(const QString, hive_path);
    QFETCH(const QString, source_file);
    worker_fixture fixture;
    application_key(fixture.volume, u"A"_s);
    fixture.find_files();
    const QString folder = fixture.volume.root().chopped(1);
    const auto with_folder = [&](QString text) { return text.replace(u"ROOT"_s, folder); };
    const auto restore =
        qScopeGuard([earlier = QDir::currentPath()] { QDir::setCurrent(earlier); });
    QVERIFY(QDir::setCurrent(folder));
    fixture.worker.source_root_path = with_folder(root).replace(u"SHOUTED"_s, folder.toUpper());
    fixture.worker.hive_path_software = with_folder(hive_path);
    fixture.extract(native);
    QCOMPARE(fixture.database().column(native, u"source_file"_s),
             QStringList{with_folder(source_file)});
}

void tst_software_hive_readings::loses_of_a_damaged_key_its_values_alone()
{
    worker_fixture fixture;
    for (const QString &name : {u"A"_s, u"B"_s, u"C"_s})
        application_key(fixture.volume, name).text(u"DisplayName"_s, u"the "_s + name);
    const QByteArray hive = fixture.volume.software().bytes();
    const hive_key &damaged = application_key(fixture.volume, u"B"_s);
    QCOMPARE(column_of_damaged_run(
                 fixture, hive_damage(hive).value_list(damaged.cells().key, hive.size() + 4096),
                 u"parent_name || '|' || display_name"_s),
             (QStringList{u"A|the A"_s, u"B|"_s, u"C|the C"_s}));
}

void tst_software_hive_readings::loses_of_a_damaged_value_its_data_alone()
{
    worker_fixture fixture;
    hive_key &app = application_key(fixture.volume, u"A"_s);
    app.text(u"DisplayName"_s, u"lost"_s).text(u"Publisher"_s, u"kept"_s);
    application_key(fixture.volume, u"B"_s).text(u"DisplayName"_s, u"the B"_s);
    const QByteArray hive = fixture.volume.software().bytes();
    const value_cells &damaged = app.cells_of_value(u"DisplayName"_s);
    QCOMPARE(column_of_damaged_run(fixture,
                                   hive_damage(hive).data_cell(damaged.value, hive.size() + 4096),
                                   u"display_name || '|' || publisher"_s),
             (QStringList{u"|kept"_s, u"the B|"_s}));
}

void tst_software_hive_readings::loses_a_key_without_a_readable_name_alone()
{
    worker_fixture fixture;
    hive_key &uninstall = fixture.volume.software().key(uninstall_key);
    uninstall.add_key(u"A"_s);
    uninstall.add_key(hive_name::lone_surrogate());
    uninstall.add_key(u"C"_s);
    QCOMPARE(column_of_run(fixture, u"parent_name"_s), (QStringList{u"A"_s, u"C"_s}));
}

void tst_software_hive_readings::reads_nothing_from_a_damaged_list_of_keys()
{
    worker_fixture fixture;
    for (const QString &name : {u"A"_s, u"B"_s})
        application_key(fixture.volume, name);
    const QByteArray hive = fixture.volume.software().bytes();
    const qint64 list = fixture.volume.software().key(uninstall_key).cells().subkey_list;
    QCOMPARE(column_of_damaged_run(fixture,
                                   hive_damage(hive).list_entry(list, 1, hive.size() + 4096),
                                   u"parent_name"_s),
             QStringList());
    QCOMPARE(fixture.log.messages().size(), 2);
}

TEST_MAIN(tst_software_hive_readings)
#include "tst_software_hive_readings.moc"

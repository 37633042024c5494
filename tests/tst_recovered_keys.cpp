#include "created_tables.h"
#include "deleted_texts.h"
#include "plugin_tabs.h"
#include "recovered_keys.h"
#include "registry_data.h"
#include "result_database.h"
#include "test_main.h"
#include "wanted_keys.h"
#include "windows_installed_applications.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Where the host looks for deleted records, how it tells rows apart, and what it says of records.
class tst_recovered_keys : public QObject
{
    Q_OBJECT

private slots:
    void has_a_rule_for_each_tab_that_a_hive_fills();
    void names_columns_that_the_tables_have();
    void fits_all_keys_of_a_hive();
    void reads_installations_of_users_if_asked();
    void takes_one_key_for_tabs_that_share_it();
    void shows_data_by_their_type_data();
    void shows_data_by_their_type();
    void tells_how_sure_a_key_is_data();
    void tells_how_sure_a_key_is();
    void takes_no_time_that_no_machine_wrote_data();
    void takes_no_time_that_no_machine_wrote();
};

namespace {

QStringList registry_tabs(const QObject &plugin)
{
    QStringList names;
    for (const host_tab &tab : tabs_of(plugin)) {
        if (tab.input != tab_input::package_folder)
            names.append(tab.name);
    }
    return names;
}

} // namespace

void tst_recovered_keys::has_a_rule_for_each_tab_that_a_hive_fills()
{
    const windows_installed_applications plugin;
    const QStringList tabs = registry_tabs(plugin);
    QStringList known;
    for (const recovered_key &key : recovered_keys(plugin, tabs, false))
        known += key.tabs;
    known.sort();
    QStringList wanted = tabs;
    wanted.sort();
    QCOMPARE(known, wanted);
}

void tst_recovered_keys::names_columns_that_the_tables_have()
{
    const QTemporaryDir folder;
    create_tables(folder.filePath(u"tables"_s));
    const result_database database(folder.filePath(u"tables"_s));
    const windows_installed_applications plugin;
    for (const recovered_key &key : recovered_keys(plugin, registry_tabs(plugin), true)) {
        for (const QString &tab : key.tabs) {
            QStringList columns = database.columns(tab) << QString();
            QVERIFY2(columns.contains(key.rule.name_column), qPrintable(tab));
            QVERIFY2(columns.contains(key.rule.group_column), qPrintable(tab));
        }
    }
}

void tst_recovered_keys::fits_all_keys_of_a_hive()
{
    const windows_installed_applications plugin;
    const QList<recovered_key> keys = recovered_keys(plugin, registry_tabs(plugin), true);
    for (const bool is_of_users : {false, true}) {
        const QList<wanted_key> wanted = wanted_of(keys, is_of_users);
        const wanted_keys names(wanted);
        for (const wanted_key &key : wanted) {
            wanted_place place;
            bool is_first = true;
            for (const QString &name : key.path.split(u'\\')) {
                place = is_first ? names.below_root(name) : names.below(place, name);
                is_first = false;
            }
            QVERIFY2(names.is_wanted(place), qPrintable(key.path));
        }
    }
}

void tst_recovered_keys::reads_installations_of_users_if_asked()
{
    const windows_installed_applications plugin;
    const QStringList tab{u"install_apps_64"_s};
    QCOMPARE(recovered_keys(plugin, tab, false).size(), 1);
    const QList<recovered_key> keys = recovered_keys(plugin, tab, true);
    QCOMPARE(keys.size(), 2);
    QVERIFY(!keys.first().is_of_users && keys.last().is_of_users);
    QVERIFY(keys.last().rule.is_of_keys);
}

void tst_recovered_keys::takes_one_key_for_tabs_that_share_it()
{
    const windows_installed_applications plugin;
    const QStringList tabs{u"uninstall_apps"_s, u"previously_executed_apps"_s};
    const QList<recovered_key> keys = recovered_keys(plugin, tabs, true);
    QCOMPARE(keys.size(), 1);
    QCOMPARE(keys.first().tabs, tabs);
    const QList<recovered_key> icons =
        recovered_keys(plugin, {u"hidden_desktop_icons_app"_s}, true);
    QCOMPARE(icons.first().lookups.size(), 1);
}

void tst_recovered_keys::shows_data_by_their_type_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    QTest::newRow("a text") << quint32(reg_sz) << registry_text(u"Büro"_s) << u"Büro"_s;
    QTest::newRow("a text without an end") << quint32(reg_expand_sz) << utf16le(u"ab"_s) << u"ab"_s;
    QTest::newRow("half a character") << quint32(reg_sz) << QByteArray("a\0b", 3) << u"a"_s;
    QTest::newRow("a number") << quint32(reg_dword) << registry_dword(0xffffffff)
                              << u"4294967295"_s;
    QTest::newRow("a long number") << quint32(reg_qword) << registry_qword(5) << u"5"_s;
    QTest::newRow("a number of another length")
        << quint32(reg_dword) << QByteArray("\1\2") << u"0102"_s;
    QTest::newRow("bytes") << quint32(reg_binary) << QByteArray("\xff\0", 2) << u"ff00"_s;
    QTest::newRow("no data") << quint32(reg_sz) << QByteArray() << QString();
    QTest::newRow("long data") << quint32(reg_binary) << QByteArray(5000, '\1')
                               << QString::fromLatin1(QByteArray(4096, '\1').toHex());
}

void tst_recovered_keys::shows_data_by_their_type()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    QTEST(text_of_data(type, data), "text");
}

void tst_recovered_keys::tells_how_sure_a_key_is_data()
{
    QTest::addColumn<int>("list");
    QTest::addColumn<int>("values");
    QTest::addColumn<int>("lost");
    QTest::addColumn<QString>("state");
    const int none = int(record_flaw::none);
    QTest::newRow("whole") << none << 3 << 0 << u"whole"_s;
    QTest::newRow("values are gone") << none << 1 << 0 << u"partial: 2 of its 3 values are gone"_s;
    QTest::newRow("data are gone")
        << none << 3 << 1 << u"partial: the data of 1 of its values are not there"_s;
    QTest::newRow("both")
        << none << 2 << 2
        << u"partial: 1 of its 3 values are gone; the data of 2 of its values are "
           "not there"_s;
    QTest::newRow("the list is in use") << int(record_flaw::in_use) << 0 << 0
                                        << u"partial: the list of its 3 values is in use again"_s;
    QTest::newRow("the list was written over")
        << int(record_flaw::written_over) << 0 << 0
        << u"partial: the list of its 3 values is written over"_s;
}

void tst_recovered_keys::tells_how_sure_a_key_is()
{
    QFETCH(const int, list);
    QFETCH(const int, values);
    QFETCH(const int, lost);
    QFETCH(const QString, state);
    deleted_key key;
    key.path = path_state::whole;
    key.list = record_flaw(list);
    key.values_told = 3;
    key.values.resize(size_t(values));
    for (int i = 0; i < lost; ++i)
        key.values[size_t(i)].data = record_flaw::in_use;
    QCOMPARE(state_of(key), state);
    QCOMPARE(key.is_whole(), state == "whole"_L1);
}

void tst_recovered_keys::takes_no_time_that_no_machine_wrote_data()
{
    QTest::addColumn<quint64>("filetime");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("a time") << quint64(filetime_of_unix(1'700'000'000)) << qint64(1'700'000'000);
    QTest::newRow("none") << quint64(0) << qint64(0);
    QTest::newRow("before 1970") << quint64(1) << qint64(0);
    QTest::newRow("negative") << ~quint64(0) << qint64(0);
}

void tst_recovered_keys::takes_no_time_that_no_machine_wrote()
{
    QFETCH(const quint64, filetime);
    QTEST(unix_seconds_of(filetime), "seconds");
}

TEST_MAIN(tst_recovered_keys)
#include "tst_recovered_keys.moc"

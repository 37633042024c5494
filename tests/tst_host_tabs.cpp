#include "host_double.h"
#include "plugin_tabs.h"
#include "result_database.h"
#include "result_file.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "windows_installed_applications.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

/// The key paths of described keys.
QStringList paths_of(const QVariant &keys)
{
    QStringList paths;
    for (const QVariant &key : keys.toList())
        paths.append(key.toMap().value(u"path"_s).toString());
    return paths;
}

} // namespace

// What the host knows of the tabs agrees with what the plug-in does.
class tst_host_tabs : public QObject
{
    Q_OBJECT

private slots:
    void are_the_tables_of_the_plug_in();
    void are_none_when_the_plug_in_does_not_tell_them_data();
    void are_none_when_the_plug_in_does_not_tell_them();
    void name_the_keys_that_the_plug_in_reads();
    void name_the_keys_of_users_data();
    void name_the_keys_of_users();
    void are_chosen_in_their_own_order();
};

void tst_host_tabs::are_the_tables_of_the_plug_in()
{
    const windows_installed_applications plugin;
    QCOMPARE(names_of(tabs_of(plugin)), all_tabs());
}

void tst_host_tabs::are_none_when_the_plug_in_does_not_tell_them_data()
{
    QTest::addColumn<QVariant>("told");
    const QVariantMap known{{u"name"_s, u"a"_s}, {u"input"_s, u"user_hives"_s}};
    const QVariantMap nameless{{u"input"_s, u"user_hives"_s}};
    const QVariantMap foreign{{u"name"_s, u"b"_s}, {u"input"_s, u"event_logs"_s}};
    QTest::newRow("nothing") << QVariant();
    QTest::newRow("another kind of value") << QVariant(u"install_apps_64"_s);
    QTest::newRow("a tab without a name") << QVariant(QVariantList{known, nameless});
    QTest::newRow("an input of a later version") << QVariant(QVariantList{known, foreign});
}

void tst_host_tabs::are_none_when_the_plug_in_does_not_tell_them()
{
    QFETCH(const QVariant, told);
    QObject plugin;
    plugin.setProperty("artifacts", told);
    QCOMPARE(names_of(tabs_of(plugin)), QStringList());
}

void tst_host_tabs::name_the_keys_that_the_plug_in_reads()
{
    evidence_volume volume;
    add_sample_evidence(volume);
    volume.write();
    host_double host(volume);
    host.run();
    const result_database database(host.database_path());
    for (const QVariant &described : described_artifacts()) {
        const QVariantMap tab = described.toMap();
        const QString name = tab.value(u"name"_s).toString();
        const QString input = tab.value(u"input"_s).toString();
        if (input == "package_folders"_L1)
            continue;
        const QString key = paths_of(tab.value(u"keys"_s)).value(0);
        const QString hive = input == "user_hives"_L1 ? u"NTUSER.DAT"_s : u"SOFTWARE"_s;
        QCOMPARE(database.column(name, u"ltrim(reg_path, '\\')"_s),
                 QStringList(sample_row_count, key));
        QCOMPARE(database.column(name, u"reg_file"_s), QStringList(sample_row_count, hive));
    }
}

void tst_host_tabs::name_the_keys_of_users_data()
{
    QTest::addColumn<QStringList>("paths");
    const auto uninstall = u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s;
    for (const QString &tab : all_tabs()) {
        if (!tab.startsWith("install_apps"_L1))
            QTest::newRow(qPrintable(tab)) << QStringList();
    }
    QTest::newRow("install_apps_64") << QStringList{u"Software\\"_s + uninstall};
    QTest::newRow("install_apps_32") << QStringList{u"Software\\WOW6432Node\\"_s + uninstall};
}

void tst_host_tabs::name_the_keys_of_users()
{
    QFETCH(const QStringList, paths);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    for (const QVariant &described : described_artifacts()) {
        const QVariantMap tab = described.toMap();
        if (tab.value(u"name"_s) == name)
            QCOMPARE(paths_of(tab.value(u"keys_of_users"_s)), paths);
    }
    const host_tab tab = tabs_named(plugin_tabs(), {name}).value(0);
    QCOMPARE(reads_user_hives({tab}), !paths.isEmpty() || tab.input == tab_input::user_hive);
    QCOMPARE(reads_user_hives(without_installations_of_users({tab})),
             tab.input == tab_input::user_hive);
}

void tst_host_tabs::are_chosen_in_their_own_order()
{
    const QStringList wanted{u"metro_apps"_s, u"none"_s, u"install_apps_32"_s};
    QCOMPARE(names_of(tabs_named(plugin_tabs(), wanted)),
             (QStringList{u"install_apps_32"_s, u"metro_apps"_s}));
}

TEST_MAIN(tst_host_tabs)
#include "tst_host_tabs.moc"

#include "unread_keys.h"

#include "application_keys.h"
#include "evidence_volume.h"
#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "test_main.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;

// What is looked at in the hives of a volume once its tabs were filled.
class tst_unread_keys : public QObject
{
    Q_OBJECT

private slots:
    void looks_at_all_levels_that_tabs_list_of_one_key_data();
    void looks_at_all_levels_that_tabs_list_of_one_key();
};

void tst_unread_keys::looks_at_all_levels_that_tabs_list_of_one_key_data()
{
    QTest::addColumn<QList<listed_key>>("keys");
    QTest::addColumn<bool>("finds_the_value");
    const listed_key own_values{uninstall_key, 0, 0};
    const listed_key values_of_subkeys{uninstall_key, 1, 1};
    const listed_key subkeys_alone{uninstall_key, 2, 1};
    QTest::newRow("no values") << QList{subkeys_alone} << false;
    QTest::newRow("values of another level") << QList{own_values} << false;
    QTest::newRow("values of its level") << QList{values_of_subkeys} << true;
    QTest::newRow("a tab for each level") << QList{own_values, values_of_subkeys} << true;
    QTest::newRow("the other order") << QList{values_of_subkeys, own_values} << true;
    QTest::newRow("a tab without values and one with them")
        << QList{subkeys_alone, values_of_subkeys} << true;
}

void tst_unread_keys::looks_at_all_levels_that_tabs_list_of_one_key()
{
    QFETCH(const QList<listed_key>, keys);
    QFETCH(const bool, finds_the_value);
    evidence_volume volume;
    hive_key &application = volume.software().key(uninstall_key + "\\App"_L1);
    application.text(u"DisplayName"_s, u"App"_s);
    volume.write();
    hive_damage damage(volume.software().bytes());
    write_file(volume.software_path(), damage.value_count(application.cells().key, 1000).bytes());

    QList<host_tab> tabs;
    for (const listed_key &key : keys)
        tabs.append({u"tab"_s, tab_input::software_hive, {key}, {}});
    const QString warning = u"%1: the content of %2\\App cannot be listed, so it is not read"_s.arg(
        software_hive_path, uninstall_key);
    QCOMPARE(unread_key_warnings(source_volume(volume.root()), {}, tabs),
             finds_the_value ? QStringList{warning} : QStringList());
}

TEST_MAIN(tst_unread_keys)
#include "tst_unread_keys.moc"

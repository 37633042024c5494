#include "host_tabs.h"

#include "host_double.h"
#include "result_database.h"
#include "result_file.h"
#include "sample_evidence.h"
#include "test_main.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the host knows of the tabs agrees with what the plug-in does.
class tst_host_tabs : public QObject
{
    Q_OBJECT

private slots:
    void are_the_tables_of_the_plug_in();
    void name_the_keys_that_the_plug_in_reads();
    void are_chosen_in_their_own_order();
};

void tst_host_tabs::are_the_tables_of_the_plug_in()
{
    QCOMPARE(host_tab_names(), all_tabs());
}

void tst_host_tabs::name_the_keys_that_the_plug_in_reads()
{
    evidence_volume volume;
    add_sample_evidence(volume);
    volume.write();
    host_double host(volume);
    host.run();
    const result_database database(host.database_path());
    for (const host_tab &tab : host_tabs()) {
        if (tab.input == tab_input::package_folder)
            continue;
        const bool is_users = tab.input == tab_input::user_hive;
        const QStringList key_paths = database.column(tab.name, u"ltrim(reg_path, '\\')"_s);
        const QStringList hives = database.column(tab.name, u"reg_file"_s);
        QCOMPARE(key_paths, QStringList(sample_row_count, tab.keys.first().key_path));
        QCOMPARE(hives, QStringList(sample_row_count, is_users ? u"NTUSER.DAT"_s : u"SOFTWARE"_s));
    }
}

void tst_host_tabs::are_chosen_in_their_own_order()
{
    QStringList names;
    for (const host_tab &tab : tabs_named({u"metro_apps"_s, u"none"_s, u"install_apps_32"_s}))
        names.append(tab.name);
    QCOMPARE(names, (QStringList{u"install_apps_32"_s, u"metro_apps"_s}));
}

TEST_MAIN(tst_host_tabs)
#include "tst_host_tabs.moc"

#include "host_double.h"
#include "host_test.h"
#include "test_main.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSysInfo>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the program calls of a plug-in, and with which accounts.
class tst_host_calls : public QObject, private host_test
{
    Q_OBJECT

private slots:
    void init() { begin_test(); }
    void calls_the_operations_in_the_documented_order();
    void takes_all_accounts_with_artefacts_by_name();
    void takes_the_accounts_that_were_asked_for();
    void takes_an_account_once_that_is_asked_for_by_two_names();
    void follows_links_within_the_source_once();
};

void tst_host_calls::calls_the_operations_in_the_documented_order()
{
    const auto volume = small_volume();
    const QString result_directory = canonical_folder() + "/results"_L1;
    const QStringList calls = extract(*volume, recorded + QStringList{u"--quiet"_s, u"--user"_s,
                                                                      u"ann"_s, u"--keep-rows"_s})
                                  .errors.filter(u"call: "_s);
    const QString root = QFileInfo(volume->root()).canonicalFilePath() + u'/';
    const QString tabs = all_tabs().join(" | "_L1);
    QCOMPARE(calls, (QStringList{
                        u"call: pub_get_artifact_name()"_s,
                        u"call: pub_set_essentials()"_s,
                        u"call: pub_set_engine_type(0)"_s,
                        u"call: pub_set_examiner_machine_info(%1 | %2)"_s
                            .arg(QDateTime::currentDateTime().offsetFromUtc())
                            .arg(QSysInfo::prettyProductName()),
                        u"call: pub_set_general_info(true | true | false | )"_s,
                        u"call: pub_set_source_info(%1 | Windows | winOS |  | ann | )"_s.arg(root),
                        u"call: pub_set_source_count(1)"_s,
                        u"call: pub_set_essential_for_arken_desk_extraction(%1 | %1)"_s.arg(tabs),
                        u"call: pub_set_result_directory(%1)"_s.arg(result_directory),
                        u"call: pub_create_db_tables()"_s,
                        u"call: pub_set_clear_db(false)"_s,
                        u"call: pub_find_source_file(decode_by_type | ignore_letter_case | "
                        "installations_of_users | keep_hives_open | old_layout | report_unread)"_s,
                        u"call: pub_extract_artifacts()"_s,
                        u"call: pub_remove_temporary_asthetics()"_s,
                        u"call: delete()"_s,
                    }));
}

void tst_host_calls::takes_all_accounts_with_artefacts_by_name()
{
    evidence_volume volume;
    volume.user(u"zoë"_s);
    volume.user(u"Ann Lee"_s);
    volume.user(u".hidden"_s);
    volume.package(u"Иван"_s, u"App"_s).folder(u"Users/Public"_s).file(u"Users/desktop.ini"_s);
    volume.write();
    const QStringList calls =
        extract(volume, recorded).errors.filter(u"call: pub_set_source_info"_s);
    QCOMPARE(calls.value(0).section(u'|', 3), u"  | .hidden |  | Ann Lee |  | zoë |  | Иван | )"_s);
}

void tst_host_calls::takes_the_accounts_that_were_asked_for()
{
    const auto volume = small_volume();
    const host_result result = extract(
        *volume, recorded + QStringList{u"--quiet"_s, u"--tab"_s, u"metro_apps"_s, u"--user"_s,
                                        u"bob"_s, u"--user"_s, u"ann"_s, u"--user"_s, u"bob"_s});
    QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3),
             u"  | bob |  | ann | )"_s);
}

void tst_host_calls::takes_an_account_once_that_is_asked_for_by_two_names()
{
    const auto volume = small_volume();
    volume->link(u"Users/annie"_s, u"ann"_s);
    const host_result result = extract(*volume, {u"--quiet"_s, u"--tab"_s, u"metro_apps"_s,
                                                 u"--user"_s, u"annie"_s, u"--user"_s, u"ann"_s});
    QCOMPARE(
        result.errors,
        QStringList{
            u"artifact_host: warning: Users: some of the accounts share a folder, which is read once"_s});
    QCOMPARE(result.output.value(0), u"metro_apps                         1"_s);
}

void tst_host_calls::follows_links_within_the_source_once()
{
    evidence_volume volume;
    volume.user(u"zoe"_s);
    volume.write();
    volume.link(u"Users/All Users"_s, u"zoe"_s);
    volume.folder(u"Profiles/max/AppData/Local/Packages"_s);
    volume.link(u"Users/max"_s, u"../Profiles/max"_s);
    const QStringList calls =
        extract(volume, recorded).errors.filter(u"call: pub_set_source_info"_s);
    QCOMPARE(calls.value(0).section(u'|', 3), u"  | max |  | zoe | )"_s);
}

TEST_MAIN(tst_host_calls)
#include "tst_host_calls.moc"

#include "evidence_volume.h"
#include "files.h"
#include "host_process.h"
#include "sample_evidence.h"
#include "test_main.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the reference host chooses to read of a source, and when it finds nothing to read there.
class tst_chosen_input : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void needs_something_to_read_for_the_tabs_data();
    void needs_something_to_read_for_the_tabs();
    void leaves_the_software_hive_out_once_data();
    void leaves_the_software_hive_out_once();
    void needs_to_list_and_to_enter_the_source_data();
    void needs_to_list_and_to_enter_the_source();
    void takes_the_first_by_name_of_many_links_to_a_folder();
    void warns_of_accounts_by_name();
    void counts_rows_that_are_kept_without_a_word();

private:
    host_result extract(const QStringList &more = {}) const;

    std::unique_ptr<QTemporaryDir> m_results;
    std::unique_ptr<evidence_volume> m_volume;
};

namespace {

const auto software = u"Windows/System32/config/SOFTWARE"_s;
const auto backup = u"Windows/System32/config/RegBack/SOFTWARE"_s;

} // namespace

void tst_chosen_input::init()
{
    m_results = std::make_unique<QTemporaryDir>();
    m_volume = std::make_unique<evidence_volume>();
}

host_result tst_chosen_input::extract(const QStringList &more) const
{
    return host_process().run(QStringList{u"extract"_s, m_volume->root(), u"--quiet"_s,
                                          u"--result"_s, m_results->filePath(u"results"_s)} +
                              more);
}

void tst_chosen_input::needs_something_to_read_for_the_tabs_data()
{
    QTest::addColumn<QString>("has"); // a hive's place, or a folder in Users
    QTest::addColumn<QString>("tab");
    QTest::addColumn<int>("exit_code"); // 3: nothing to read; 6: the machine's hive is not there
    QTest::addColumn<QStringList>("options");
    const auto row = [](const char *name, const QString &has, const QString &tab, int exit_code,
                        const QStringList &options = {}) {
        QTest::newRow(name) << has << tab << exit_code << options;
    };
    const auto account = u"Users/ann/NTUSER.DAT"_s;
    row("the hive of the machine for a tab of it", software, u"install_apps_64"_s, 0);
    row("its backup for a tab of it", backup, u"install_apps_64"_s, 6);
    row("the hive of the machine for a tab of users", software, u"uninstall_apps"_s, 3);
    row("the hive of the machine for a tab of packages", software, u"metro_apps"_s, 3);
    row("an account for installations", account, u"install_apps_64"_s, 6);
    row("an account for installations as in a suite", account, u"install_apps_64"_s, 3,
        {u"--like-the-suite"_s});
    row("an account for another tab of the machine", account, u"registered_apps"_s, 3);
    row("an account for a tab of users", account, u"uninstall_apps"_s, 0);
    row("an account for a tab of packages", account, u"metro_apps"_s, 0);
}

void tst_chosen_input::needs_something_to_read_for_the_tabs()
{
    QFETCH(const QString, has);
    QFETCH(const QString, tab);
    QFETCH(const int, exit_code);
    QFETCH(const QStringList, options);
    m_volume->hive(has);
    m_volume->write();
    QCOMPARE(extract(QStringList{u"--tab"_s, tab} + options).exit_code, exit_code);
    QCOMPARE(QFileInfo::exists(m_results->filePath(u"results"_s)), exit_code != 3);
}

void tst_chosen_input::leaves_the_software_hive_out_once_data()
{
    QTest::addColumn<QStringList>("links");
    QTest::addColumn<QString>("warned_of");
    QTest::newRow("the hive leads out") << QStringList{software} << software;
    QTest::newRow("its backup leads out") << QStringList{backup} << backup;
    QTest::newRow("both lead out") << QStringList{software, backup} << software;
}

void tst_chosen_input::leaves_the_software_hive_out_once()
{
    QFETCH(const QStringList, links);
    QFETCH(const QString, warned_of);
    evidence_volume outside;
    outside.software();
    outside.write();
    add_sample_evidence(*m_volume);
    m_volume->write();
    for (const QString &link : links) {
        QFile::remove(m_volume->path(link));
        m_volume->link(link, outside.software_path());
    }
    const host_result result = extract();
    QCOMPARE(result.errors,
             QStringList{u"artifact_host: warning: %1: a link leads out of the "
                         "source; the tabs of the software hive are left out"_s.arg(warned_of)});
    QStringList counted;
    for (const QString &line : result.output.first(result.output.size() - 1))
        counted.append(line.section(u' ', 0, 0));
    QCOMPARE(counted, (QStringList{u"uninstall_apps"_s, u"metro_apps"_s,
                                   u"previously_executed_apps"_s, u"third_party_applications"_s,
                                   u"hidden_desktop_icons_app"_s, u"total"_s}));
    QCOMPARE(result.exit_code, 6);
}

void tst_chosen_input::needs_to_list_and_to_enter_the_source_data()
{
    QTest::addColumn<QFileDevice::Permissions>("permissions");
    QTest::newRow("it can be entered alone") << QFileDevice::Permissions(QFile::ExeOwner);
    QTest::newRow("it can be listed alone") << QFileDevice::Permissions(QFile::ReadOwner);
}

void tst_chosen_input::needs_to_list_and_to_enter_the_source()
{
    QFETCH(const QFileDevice::Permissions, permissions);
    add_sample_evidence(*m_volume);
    m_volume->write();
    const QString root = m_volume->root();
    QVERIFY(QFile::setPermissions(root, permissions));
    const host_result result = host_process().without_privileges().run(
        {u"extract"_s, root, u"--result"_s, m_results->filePath(u"results"_s)});
    QVERIFY(QFile::setPermissions(root, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(result.errors, QStringList{u"artifact_host: source %1 cannot be read"_s.arg(root)});
    QCOMPARE(result.exit_code, 3);
}

// A folder is listed in no order, so a few names would prove nothing.
void tst_chosen_input::takes_the_first_by_name_of_many_links_to_a_folder()
{
    m_volume->folder(u"Profiles/max/AppData/Local/Packages"_s);
    for (char letter = 'z'; letter >= 'a'; --letter)
        m_volume->link(u"Users/"_s + QLatin1Char(letter), u"../Profiles/max"_s);
    const host_result result = extract({u"--plugin"_s, QStringLiteral(RECORDING_PLUGIN)});
    QCOMPARE(result.errors.filter(u"source_info"_s).value(0).section(u'|', 3), u"  | a | )"_s);
}

void tst_chosen_input::warns_of_accounts_by_name()
{
    evidence_volume outside;
    outside.software();
    outside.write();
    QStringList expected;
    for (char letter = 'r'; letter >= 'a'; --letter) {
        const QString account(1, QLatin1Char(letter));
        const QString hive = u"Users/"_s + account + u"/NTUSER.DAT"_s;
        m_volume->link(hive, outside.software_path());
        expected.prepend(u"artifact_host: warning: %1: a link leads out of the source; account %2 "
                         "is left out"_s.arg(hive, account));
    }
    const host_result result = extract();
    QCOMPARE(result.errors.filter(u"is left out"_s), expected);
    QCOMPARE(result.exit_code, 3);
}

void tst_chosen_input::counts_rows_that_are_kept_without_a_word()
{
    add_sample_evidence(*m_volume);
    m_volume->write();
    QCOMPARE(extract({u"--keep-rows"_s}).errors, QStringList());
    const host_result result = extract({u"--keep-rows"_s});
    QCOMPARE(result.errors, QStringList());
    QCOMPARE(result.exit_code, 0);
}

TEST_MAIN(tst_chosen_input)

#include "tst_chosen_input.moc"

#include "files.h"
#include "host_double.h"
#include "log_capture.h"
#include "run_log.h"
#include "sample_evidence.h"
#include "test_main.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// The result folder goes during the run, or cannot be made.
class tst_faults_result_folder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void result_folder_removed_after_each_tab_data();
    void result_folder_removed_after_each_tab();
    void result_folder_removed_between_rows_data();
    void result_folder_removed_between_rows();
    void result_folder_that_cannot_be_made();

private:
    QStringList log_when_the_result_folder_goes(host_double &host, const QString &moment) const;

    std::optional<reference_run> m_reference;
};

void tst_faults_result_folder::initTestCase()
{
    m_reference.emplace();
}

/// The log of a run whose result folder is removed within the given signal.
QStringList tst_faults_result_folder::log_when_the_result_folder_goes(host_double &host,
                                                                      const QString &moment) const
{
    const log_capture log;
    host.settings.general = log.general_info();
    host.on_event([&](const QString &event) {
        if (event == moment)
            QVERIFY(QDir(host.settings.result_folder).removeRecursively());
    });
    host.set_up();
    log.clear();
    host.extract();
    return log.messages();
}

void tst_faults_result_folder::result_folder_removed_after_each_tab_data()
{
    QTest::addColumn<int>("tab");
    for (int tab = 0; tab <= all_tabs().size(); ++tab)
        QTest::addRow("after %d tabs", tab) << tab;
}

void tst_faults_result_folder::result_folder_removed_after_each_tab()
{
    QFETCH(const int, tab);
    host_double host(m_reference->volume());
    const QString moment = tab == 0 ? u"records 0"_s : u"tabs %1"_s.arg(tab);
    const QStringList lines = log_when_the_result_folder_goes(host, moment);
    const QList<const result_tab *> tabs = result_tabs();
    for (qsizetype i = tab; i < tabs.size(); ++i) {
        const QString failure = tabs[i]->log_line("Destination Db opening failed "_L1);
        QCOMPARE(lines.value(lines.indexOf(failure) + 1),
                 u"unable to open database file Error opening database"_s);
        QCOMPARE(lines.count(failure), 1);
    }
    QCOMPARE(lines.last(), u"[pub_extract_artifacts] - END"_s);
    QVERIFY(!QFileInfo::exists(host.settings.result_folder));
}

void tst_faults_result_folder::result_folder_removed_between_rows_data()
{
    QTest::addColumn<bool>("has_many_rows");
    QTest::addColumn<QString>("moment");
    QTest::addRow("after the first of 3") << false << u"records 1"_s;
    QTest::addRow("after 3,000 of 4,000") << true << u"records 3000"_s;
}

// SQLite goes on in the file that has no name any more: the table ends without a failure.
void tst_faults_result_folder::result_folder_removed_between_rows()
{
    QFETCH(const bool, has_many_rows);
    QFETCH(const QString, moment);
    std::optional<reference_run> many;
    if (has_many_rows)
        many.emplace(add_many_applications);
    host_double host(many ? many->volume() : m_reference->volume(), row_progress::every_row);
    const QStringList lines = log_when_the_result_folder_goes(host, moment);
    const QList<const result_tab *> tabs = result_tabs();
    QCOMPARE(lines_of_run(lines, *tabs.first()), QStringList());
    for (const result_tab *tab : tabs)
        QCOMPARE(lines.count(tab->log_line("Destination Db opening failed "_L1)),
                 tab == tabs.first() ? 0 : 1);
    const qint64 rows = has_many_rows ? many_row_count : sample_row_count;
    QVERIFY(host.events().contains(u"tabs %1"_s.arg(tabs.size())));
    QCOMPARE(rows_counted(host.events()).first(), rows);
    QVERIFY(!QFileInfo::exists(host.settings.result_folder));
}

void tst_faults_result_folder::result_folder_that_cannot_be_made()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"file"_s), "content");
    const log_capture log;
    host_double host(m_reference->volume());
    host.settings.general = log.general_info();
    host.settings.result_folder = folder.filePath(u"file/results"_s);
    host.run();

    QCOMPARE(log.messages().filter(u"opening failed"_s).size(), all_tabs().size() + 1);
    QCOMPARE(host.events().last(), u"records 0"_s);
    QCOMPARE(read_file(folder.filePath(u"file"_s)), QByteArray("content"));
}

TEST_MAIN(tst_faults_result_folder)
#include "tst_faults_result_folder.moc"

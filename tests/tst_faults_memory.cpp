#include "application_keys.h"
#include "host_double.h"
#include "reference_run.h"
#include "result_database.h"
#include "test_main.h"

#include <QFileInfo>
#include <optional>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// There is too little memory. A hive that does not fit is one that cannot be opened; where even
// less is left the process ends, and what was committed stays.
class tst_faults_memory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void a_hive_that_does_not_fit_is_left_out();
    void too_little_for_the_run_data();
    void too_little_for_the_run();

private:
    std::optional<reference_run> m_reference;
};

void tst_faults_memory::initTestCase()
{
#ifndef Q_OS_LINUX
    QSKIP("Memory is limited on Linux only");
#endif
    if (BUILT_WITH_SANITIZERS)
        QSKIP("A sanitizer needs more memory than any limit that would matter");
    m_reference.emplace();
}

void tst_faults_memory::a_hive_that_does_not_fit_is_left_out()
{
    constexpr qint64 large = 200 << 20;
    evidence_volume volume;
    volume.user(u"ann"_s).key(compatibility_store_key).binary(u"C:\\a.exe"_s, "data");
    volume.software().key(uninstall_key + u"\\App"_s);
    volume.write();
    QVERIFY(QFile::resize(volume.path(u"Windows/System32/config/SOFTWARE"_s), large));

    const QTemporaryDir results;
    extraction_process process(volume, results.path());
    QVERIFY(process.memory_limit(large / 2).run().completed);
    const result_database database(database_in(results.path()));
    QCOMPARE(database.row_count(u"install_apps_64"_s), 0);
    QCOMPARE(database.row_count(u"third_party_applications"_s), 1);
}

void tst_faults_memory::too_little_for_the_run_data()
{
    QTest::addColumn<qint64>("kib");
    for (qint64 kib = 0; kib <= 4096; kib += 128)
        QTest::addRow("%lld KiB", kib) << kib;
}

void tst_faults_memory::too_little_for_the_run()
{
    QFETCH(const qint64, kib);
    const QString folder = m_reference->fresh_folder();
    const extraction_outcome outcome = m_reference->process(folder).memory_limit(kib * 1024).run();
    QVERIFY(outcome.completed || outcome.signal_number != 0);
    const QString path = database_in(folder);
    if (!QFileInfo::exists(path))
        return; // not even SQLite found the memory that it needs
    QCOMPARE(integrity_after_recovery(path), u"ok"_s);
    const QStringList existing = result_database(path).tables();
    for (const QString &table : existing)
        QVERIFY(is_part_of(rows_in(path, table), m_reference->rows_of(table)));
    QVERIFY(kib < 4096 || outcome.completed);
}

TEST_MAIN(tst_faults_memory)
#include "tst_faults_memory.moc"

#include "extraction_process.h"
#include "hive_reader.h"
#include "host_double.h"
#include "hostile_hives.h"
#include "reference_run.h"
#include "result_database.h"
#include "test_main.h"
#include "walk_budget.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace test_support;

// What one hostile hive of 10 MB may cost: 1 GiB of memory and of results for all tabs together,
// and work that is bounded by the hive's length. The CPU time is shown, not tested.
class tst_bounds : public QObject
{
    Q_OBJECT

private slots:
    void one_hive_of_10_mb_data();
    void one_hive_of_10_mb();
};

namespace {

constexpr qint64 ten_mb = qint64(10) << 20;
constexpr qint64 gib = qint64(1) << 30;

/// A sanitizer's own memory would be measured with the rest.
constexpr bool is_memory_measurable = !BUILT_WITH_SANITIZERS;

/// The least that a row costs of a walk's budget: the entry in a list and the record it leads to.
constexpr qint64 least_cost_of_a_row = 4 + 0x18;

qint64 rows_in_all_tables(const QString &database_path)
{
    const result_database database(database_path);
    qint64 rows = 0;
    for (const QString &table : all_tabs())
        rows += database.row_count(table);
    return rows;
}

} // namespace

void tst_bounds::one_hive_of_10_mb_data()
{
    QTest::addColumn<int>("number");
    const QList<hostile_hive> hives = hostile_hives();
    for (int number = 0; number < hives.size(); ++number)
        QTest::newRow(qPrintable(hives.at(number).name)) << number;
}

void tst_bounds::one_hive_of_10_mb()
{
    QFETCH(const int, number);
    const hostile_hive hive = hostile_hives().at(number);
    const QString path = hive.kind == hive_kind::software ? u"Windows/System32/config/SOFTWARE"_s
                                                          : u"Users/ann/NTUSER.DAT"_s;
    evidence_volume volume;
    volume.file(path, hive.make());
    const qint64 length = QFileInfo(volume.path(path)).size();
    QVERIFY(length <= ten_mb);
    QVERIFY(hive_reader(volume.path(path)).is_open());

    const QTemporaryDir results;
    extraction_process process(volume, results.path());
    process.accounts({u"ann"_s}).fault(disk_fault::none, 0);
    if (is_memory_measurable)
        process.memory_limit(gib);
    const extraction_outcome outcome = process.run();
    const qint64 rows = rows_in_all_tables(database_in(results.path()));
    const qint64 database_size = QFileInfo(database_in(results.path())).size();
    qInfo("%.1f MB: %.1f s CPU, %lld MiB, %lld rows in %lld MiB, hive opened %lld times",
          static_cast<double>(length) / (1024 * 1024), static_cast<double>(outcome.cpu_ms) / 1000,
          outcome.peak_kib / 1024, rows, database_size >> 20, outcome.hive_opens);

    QVERIFY2(outcome.completed, outcome.errors.constData());
    QVERIFY(!is_memory_measurable || outcome.peak_kib < gib / 1024);
    QVERIFY(database_size <= gib);
    QVERIFY(rows <= all_tabs().size() * walk_budget::hive_lengths * length / least_cost_of_a_row);
}

TEST_MAIN(tst_bounds)
#include "tst_bounds.moc"

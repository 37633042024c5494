#include "extraction_process.h"
#include "hive_output.h"
#include "hive_reader.h"
#include "host_double.h"
#include "hostile_hives.h"
#include "reference_run.h"
#include "result_database.h"
#include "test_main.h"

#include <QFileInfo>
#include <numeric>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What one hostile hive of 10 MB may take: 1 GiB of memory, as much of results as a table takes
// from a hive, and work that is bounded by the hive's length. The CPU time is shown, not tested.
class tst_bounds : public QObject
{
    Q_OBJECT

private slots:
    void one_hive_of_10_mb_data();
    void one_hive_of_10_mb();
    void a_folder_of_many_packages();
};

namespace {

constexpr qint64 ten_mb = qint64(10) << 20;
constexpr qint64 mib = qint64(1) << 20;
constexpr qint64 gib = qint64(1) << 30;

#ifdef Q_OS_LINUX
constexpr bool is_linux = true;
#else
constexpr bool is_linux = false;
#endif

/// A sanitizer's own memory would be measured with the rest.
constexpr bool is_memory_measurable = is_linux && !BUILT_WITH_SANITIZERS;

/// What a row takes in a table besides its texts: the numbers of its cells.
constexpr qint64 most_overhead_of_a_row = 128;

/// How often a hive may be opened: libhivex opens it for each walk, and so does the guard before
/// it. Each tab walks it once, and the icons' tab again for their names.
qint64 most_opens()
{
    constexpr qint64 opens_per_walk = 2;
    return opens_per_walk * (all_tabs().size() + 1);
}

/// What a run makes of a package folder with this many entries.
struct package_run
{
    qint64 peak_kib = 0;
    qint64 rows = 0;
    qint64 names = 0; ///< how many of the rows' names differ
};

package_run run_over_packages(int entries)
{
    evidence_volume volume;
    for (int i = 0; i < entries; ++i)
        volume.package(u"ann"_s, u"Microsoft.Package_%1_neutral__8wekyb3d8bbwe"_s.arg(i));
    const QTemporaryDir results;
    const extraction_outcome outcome =
        extraction_process(volume, results.path()).tabs({u"metro_apps"_s}).run();
    const QStringList counts = result_database(database_in(results.path()))
                                   .query(u"select count(*), count(distinct filename) "
                                          "from metro_apps"_s)
                                   .first();
    return {outcome.peak_kib, counts.at(0).toLongLong(), counts.at(1).toLongLong()};
}

/// The rows of each table that has any.
QList<qint64> rows_of_tables(const QString &database_path)
{
    const result_database database(database_path);
    QList<qint64> rows;
    for (const QString &table : all_tabs()) {
        if (const qint64 count = database.row_count(table); count > 0)
            rows.append(count);
    }
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
    const QList<qint64> rows_by_table = rows_of_tables(database_in(results.path()));
    const qint64 rows = std::accumulate(rows_by_table.cbegin(), rows_by_table.cend(), qint64(0));
    const qint64 database_size = QFileInfo(database_in(results.path())).size();
    qInfo("%.1f MB: %.1f s CPU, %lld MiB, %lld rows in %lld MiB, hive opened %lld times",
          static_cast<double>(length) / (1024 * 1024), static_cast<double>(outcome.cpu_ms) / 1000,
          outcome.peak_kib / 1024, rows, database_size >> 20, outcome.hive_opens);

    QVERIFY2(outcome.completed, outcome.errors.constData());
    constexpr hive_output::limit most;
    for (const qint64 rows_of_table : rows_by_table)
        QVERIFY(rows_of_table <= most.rows);
    QVERIFY(database_size <=
            mib + rows_by_table.size() * most.text_bytes * 5 / 4 + rows * most_overhead_of_a_row);
    if (!is_linux)
        QSKIP("Memory is measured and opened files are counted on Linux only");
    QVERIFY(outcome.hive_opens >= 1);
    QVERIFY(outcome.hive_opens <= most_opens());
    QVERIFY(outcome.peak_kib > 0);
    QVERIFY(!is_memory_measurable || outcome.peak_kib < gib / 1024);
}

// Entries are read and written one by one: how many there are makes no difference to memory.
void tst_bounds::a_folder_of_many_packages()
{
    constexpr int few = 1000;
    constexpr int many = 100 * few;
    constexpr qint64 most_kib_more = qint64(6) * 1024; // SQLite's cache fills up, with 2 MiB
    const package_run run_of_few = run_over_packages(few);
    const package_run run_of_many = run_over_packages(many);
    qInfo("%lld KiB for %d entries, %lld KiB for %d", run_of_few.peak_kib, few,
          run_of_many.peak_kib, many);
    QCOMPARE(run_of_few.rows, few);
    QCOMPARE(run_of_few.names, few);
    QCOMPARE(run_of_many.rows, many);
    QCOMPARE(run_of_many.names, many);
    if (!is_linux)
        QSKIP("Memory is measured on Linux only");
    QVERIFY(run_of_few.peak_kib > 0);
    QVERIFY(!is_memory_measurable || run_of_many.peak_kib - run_of_few.peak_kib < most_kib_more);
}

TEST_MAIN(tst_bounds)
#include "tst_bounds.moc"

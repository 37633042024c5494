#include "files.h"
#include "intact_hives.h"
#include "plain_rows.h"
#include "test_main.h"
#include "worker_fixture.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// No row of an intact hive is lost, however long the reading takes: each table has to hold what
// libhivex alone gives, in its order, and the log reports no early end.
class tst_intact_hives : public QObject
{
    Q_OBJECT

private slots:
    void give_every_row_data();
    void give_every_row();
};

namespace {

/// The number of the first row that differs, and both rows; empty when all are the same.
QString first_difference(const QStringList &rows, const QStringList &expected)
{
    for (qsizetype i = 0; i < std::max(rows.size(), expected.size()); ++i) {
        const QString row = rows.value(i, u"(no row)"_s);
        const QString expected_row = expected.value(i, u"(no row)"_s);
        if (row != expected_row)
            return u"row %1 of %2 (%3 expected): %4 instead of %5"_s.arg(i)
                .arg(rows.size())
                .arg(expected.size())
                .arg(row.left(200), expected_row.left(200));
    }
    return {};
}

} // namespace

void tst_intact_hives::give_every_row_data()
{
    QTest::addColumn<int>("number");
    const QList<intact_hive> hives = intact_hives();
    for (int number = 0; number < hives.size(); ++number)
        QTest::newRow(qPrintable(hives.at(number).name)) << number;
}

void tst_intact_hives::give_every_row()
{
    QFETCH(const int, number);
    const intact_hive hive = intact_hives().at(number);
    worker_fixture fixture;
    fixture.volume.user(u"ann"_s);
    fixture.volume.software();
    fixture.find_files();
    const QString path = hive.kind == hive_kind::user ? fixture.volume.ntuser_path(u"ann"_s)
                                                      : fixture.volume.software_path();
    write_file(path, hive.make());
    const QStringList expected = plain_rows(hive.table, path);
    QVERIFY(expected.size() >= 20 || hive.table == "hidden_desktop_icons_app"_L1);
    QVERIFY(!expected.isEmpty());

    fixture.extract(hive.table);
    const QStringList rows =
        fixture.database().column(hive.table, plain_row_expression(hive.table));
    QCOMPARE(first_difference(rows, expected), QString());
    QCOMPARE(fixture.log.lines().size(), 2);
}

TEST_MAIN(tst_intact_hives)
#include "tst_intact_hives.moc"

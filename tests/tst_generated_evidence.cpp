#include "artifact_list.h"
#include "extraction_check.h"
#include "files.h"
#include "hive_generator.h"
#include "hive_walks.h"
#include "test_main.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What the fuzzers do, with seeds that never change: the walkers over generated hives, and the
// whole extraction over generated volumes.
class tst_generated_evidence : public QObject
{
    Q_OBJECT

private slots:
    void walks_end_data();
    void walks_end();
    void walks_find_records();
    void extractions_keep_their_promises_data();
    void extractions_keep_their_promises();

private:
    QTemporaryDir m_folder;
};

namespace {

/// Each of these hives gives at most one record for this many bytes, all walks together. Some give
/// more to a walk that visits a key twice.
constexpr qint64 least_bytes_of_a_record = 48;

void add_seed_rows(quint32 count)
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 0; seed < count; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

} // namespace

void tst_generated_evidence::walks_end_data()
{
    add_seed_rows(200);
}

void tst_generated_evidence::walks_end()
{
    QFETCH(const quint32, seed);
    byte_choices choices(random_bytes(seed, 600));
    const hive_kind kind = seed % 2 == 0 ? hive_kind::software : hive_kind::user;
    const QString path = m_folder.filePath(u"hive"_s);
    write_file(path, generate_hive(choices, kind, described_artifacts()).bytes);
    const qsizetype records = walk_hive_in_every_way(path);
    QVERIFY(records <= QFileInfo(path).size() / least_bytes_of_a_record);
    QCOMPARE(walk_hive_in_every_way(path), records); // a walk leaves nothing behind
}

void tst_generated_evidence::walks_find_records()
{
    const QString path = m_folder.filePath(u"hive"_s);
    qsizetype hives_with_records = 0;
    for (const hive_kind kind : {hive_kind::software, hive_kind::user}) {
        byte_choices choices{QByteArray()};
        write_file(path, generate_hive(choices, kind, described_artifacts()).bytes);
        hives_with_records += walk_hive_in_every_way(path) > 3 ? 1 : 0;
    }
    QCOMPARE(hives_with_records, 2);
}

void tst_generated_evidence::extractions_keep_their_promises_data()
{
    add_seed_rows(100);
}

void tst_generated_evidence::extractions_keep_their_promises()
{
    QFETCH(const quint32, seed);
    QString reason;
    try {
        check_extraction(random_bytes(seed, 2000));
    } catch (const std::logic_error &error) {
        reason = QString::fromUtf8(error.what());
    }
    QCOMPARE(reason, QString());
}

TEST_MAIN(tst_generated_evidence)
#include "tst_generated_evidence.moc"

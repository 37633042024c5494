#include "byte_choices.h"
#include "byte_fields.h"
#include "deleted_check.h"
#include "deleted_hive.h"
#include "deletion_generator.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_deletion.h"
#include "regf_format.h"
#include "test_main.h"

#include <QTest>

#include <random>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace regf;
using namespace test_support;

// Hives whose free cells hold what no deletion leaves.
class tst_hostile_deletions : public QObject
{
    Q_OBJECT

private slots:
    void finds_nothing_in_noise_data();
    void finds_nothing_in_noise();
    void keeps_its_promises_with_generated_hives();
    void gives_a_list_that_many_keys_name_to_none();
    void gives_data_that_many_values_name_to_none();
    void follows_parents_in_any_number();
    void looks_at_no_level_that_nobody_uses();
    void reads_no_list_beyond_its_cell();
};

namespace {

const QList<wanted_key> wanted{{u"Uninstall"_s, 1, 1}, {u"Assist"_s, 2, 1 << 20}};
constexpr qint64 time_of_deletion = 133500000000000000;

/// Cells in free space that begin like keys below `parent`, each with a list of one value at
/// `list`.
QByteArray keys_below(qint64 parent, int count, quint32 list)
{
    QByteArray cell(88, '\0');
    put_32(cell, cell_head::size, 88);
    cell.replace(cell_head::signature, 2, "nk");
    put_16(cell, nk::flags, nk::flag_compressed_name);
    put_32(cell, nk::parent, stored_offset(parent));
    put_32(cell, nk::value_count, 1);
    put_32(cell, nk::value_list, list);
    put_16(cell, nk::name_size, 4);
    cell.replace(nk::name, 4, "name");
    return cell.repeated(count);
}

QByteArray noise(qint64 size)
{
    std::mt19937_64 random(7); // NOLINT: always the same noise
    QByteArray bytes(size, '\0');
    for (qint64 offset = 0; offset + 8 <= size; offset += 8)
        put_64(bytes, offset, random());
    return bytes;
}

} // namespace

void tst_hostile_deletions::finds_nothing_in_noise_data()
{
    QTest::addColumn<qint64>("bin");
    QTest::newRow("in one free cell") << qint64(100) * 1024 * 1024;
    QTest::newRow("in free cells of one page each") << page_size;
}

void tst_hostile_deletions::finds_nothing_in_noise()
{
    QFETCH(const qint64, bin);
    constexpr qint64 size = qint64(100) * 1024 * 1024;
    hive_builder builder;
    builder.key(u"Uninstall"_s);
    const QByteArray hive = builder.bytes();
    QByteArray bytes = hive + noise(size);
    for (qint64 offset = hive.size(); offset < bytes.size(); offset += bin) {
        bytes.replace(offset, hbin::cells, bin_head(offset, bin));
        put_32(bytes, offset + hbin::cells, static_cast<quint32>(bin - hbin::cells));
    }
    bytes = hive_damage(bytes).bins_size(quint32(bytes.size() - first_bin)).bytes();
    const deleted_records found(bytes, wanted);
    QVERIFY(found.free_bytes() > size - size / 100);
    qInfo("records in %lld bytes of noise: %lld keys, %lld values", size,
          found.keys_in_free_space(), found.values_in_free_space());
    QCOMPARE(lines_about(found), QStringList());
}

void tst_hostile_deletions::keeps_its_promises_with_generated_hives()
{
    constexpr int rounds = 2'000;
    found_counts all;
    for (quint32 seed = 0; seed < rounds; ++seed) {
        byte_choices choices(random_bytes(seed, 400));
        const found_counts counts = check_deleted(generate_deletions(choices));
        all.whole += counts.whole;
        all.partial += counts.partial;
    }
    qInfo("in %d hives %d finds are whole and %d are not", rounds, all.whole, all.partial);
    QVERIFY(all.whole > rounds && all.partial > rounds / 10);
}

void tst_hostile_deletions::gives_a_list_that_many_keys_name_to_none()
{
    hive_builder builder;
    hive_key &editor = builder.key(u"Uninstall\\Editor"_s).text(u"DisplayName"_s, u"Editor"_s);
    builder.key(u"Uninstall"_s).last_write(time_of_deletion);
    const QByteArray hive = builder.bytes();
    const QByteArray gone = hive_deletion(hive).key(editor.cells().key, time_of_deletion).bytes();
    const quint32 list = stored_offset(editor.cells().value_list);
    constexpr int keys = 10'000;
    const QByteArray bytes =
        with_free_bin(gone, keys_below(builder.key(u"Uninstall"_s).cells().key, keys, list));
    const QStringList lines = lines_about({bytes, wanted});
    // Each of them, and the value that now has no key.
    QCOMPARE(lines.size(), keys + 1 + 2);
    QCOMPARE(lines.filter(u"list shared"_s).size(), keys + 1);
}

void tst_hostile_deletions::gives_data_that_many_values_name_to_none()
{
    hive_builder builder;
    hive_key &editor = builder.key(u"Uninstall\\Editor"_s);
    constexpr int values = 5'000;
    for (int i = 0; i < values; ++i)
        editor.binary(QString::number(i), QByteArray(100, 'x'));
    builder.key(u"Uninstall"_s).last_write(time_of_deletion);
    hive_damage damage(builder.bytes());
    const qint64 first = editor.cells_of_value(0).data;
    for (int i = 1; i < values; ++i)
        damage.data_cell(editor.cells_of_value(i).value, first);
    hive_deletion deletion(damage.bytes());
    deletion.cell(editor.cells().key).cell(editor.cells().value_list).cell(first);
    for (int i = 0; i < values; ++i)
        deletion.cell(editor.cells_of_value(i).value);
    const QStringList lines = lines_about({deletion.bytes(), wanted});
    QCOMPARE(lines.filter(u": shared"_s).size(), values);
}

void tst_hostile_deletions::follows_parents_in_any_number()
{
    hive_builder builder;
    hive_key *deepest = &builder.key(u"Assist"_s);
    for (int i = 0; i < 2'000; ++i)
        deepest = &deepest->add_key(u"k"_s);
    hive_deletion deletion(builder.bytes());
    deletion.key(builder.key(u"Assist"_s).cells().key, time_of_deletion);
    const deleted_records found(deletion.bytes(), wanted);
    QCOMPARE(found.keys_in_free_space(), 2'001);
    QCOMPARE(found.keys().size(), size_t(wanted_keys::most_levels) + 1);
}

void tst_hostile_deletions::looks_at_no_level_that_nobody_uses()
{
    hive_builder builder;
    hive_key &below = builder.key(u"Uninstall\\Editor\\Below"_s).text(u"DisplayName"_s, u"x"_s);
    hive_deletion deletion(builder.bytes());
    deletion.key(below.cells().key, time_of_deletion);
    QCOMPARE(lines_about({deletion.bytes(), wanted}), QStringList());
}

void tst_hostile_deletions::reads_no_list_beyond_its_cell()
{
    hive_builder builder;
    hive_key &editor = builder.key(u"Uninstall\\Editor"_s).text(u"DisplayName"_s, u"Editor"_s);
    QByteArray hive =
        hive_deletion(builder.bytes()).key(editor.cells().key, time_of_deletion).bytes();
    put_32(hive, editor.cells().key + nk::value_count, 0xffffffff);
    QCOMPARE(lines_about({hive, wanted}).first(),
             u"key Uninstall\\Editor: part, path whole, list in use"_s);
}

TEST_MAIN(tst_hostile_deletions)
#include "tst_hostile_deletions.moc"

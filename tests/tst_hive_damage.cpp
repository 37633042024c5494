#include "byte_fields.h"
#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_reader.h"
#include "regf_format.h"
#include "test_main.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_hive_damage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void leaves_a_hive_as_it_is_without_damage();
    void makes_the_checksum_right_after_any_change();
    void truncates();
    void marks_a_hive_as_dirty();
    void claims_other_counts_than_the_lists_hold();
    void makes_a_key_list_its_ancestor();
    void lets_two_keys_share_their_subkeys();
    void lists_one_key_in_every_place();
    void replaces_entries_of_plain_and_hashed_lists_data();
    void replaces_entries_of_plain_and_hashed_lists();
    void makes_an_index_of_lists_list_itself();
    void shrinks_a_cell();
    void sets_a_cell_size_that_leaves_the_bin();
    void changes_a_signature();
    void makes_a_last_write_time_negative();
    void makes_names_longer_than_their_cells();
    void lists_a_value_twice();
    void changes_the_type_size_and_place_of_data();
    void claims_more_blocks_than_big_data_has();
    void adds_a_cell_that_ends_with_the_file();
    void keeps_a_name_with_a_lone_surrogate();
    void throws_for_what_lies_outside_the_hive();

private:
    hive_reader reader_of(const hive_damage &damage);
    qint64 cell_of(const QString &path) { return m_hive->key(path).cells().key; }

    QTemporaryDir m_folder;
    std::unique_ptr<hive_builder> m_hive;
    QByteArray m_bytes;
};

namespace {

QStringList data_of(const QList<read_value> &values)
{
    QStringList texts;
    for (const read_value &value : values)
        texts.append(QString::fromLatin1(value.data));
    return texts;
}

} // namespace

// a has the subkeys a\b (with a\b\c) and a\d, and e has none; a has two values.
void tst_hive_damage::init()
{
    m_hive = std::make_unique<hive_builder>();
    m_hive->key(u"a\\b\\c"_s);
    m_hive->key(u"a\\d"_s);
    m_hive->key(u"e"_s);
    m_hive->key(u"a"_s).binary(u"one"_s, "first data").binary(u"two"_s, "second data");
    m_hive->key(u"big"_s).binary(u"big"_s, QByteArray(40000, 'x'));
    m_bytes = m_hive->bytes();
}

hive_reader tst_hive_damage::reader_of(const hive_damage &damage)
{
    const QString path = m_folder.filePath(u"hive"_s);
    write_file(path, damage.bytes());
    return hive_reader(path);
}

void tst_hive_damage::leaves_a_hive_as_it_is_without_damage()
{
    QVERIFY(hive_damage(m_bytes).bytes() == m_bytes);
}

void tst_hive_damage::makes_the_checksum_right_after_any_change()
{
    hive_damage damage(m_bytes);
    damage.set_32(regf::base_block::last_write, 0x11223344);
    QVERIFY(damage.bytes().mid(508, 4) != m_bytes.mid(508, 4));
    QVERIFY(reader_of(damage).is_open());
}

void tst_hive_damage::truncates()
{
    for (const qint64 size : {0, 4, 511, 4095, 4096, 8191}) {
        hive_damage damage(m_bytes);
        QCOMPARE(damage.truncate(size).bytes().size(), size);
        QVERIFY(!reader_of(damage).is_open());
    }
}

void tst_hive_damage::marks_a_hive_as_dirty()
{
    hive_damage damage(m_bytes);
    const QByteArray dirty = damage.sequence_numbers(7, 6).bytes();
    QCOMPARE(get_32(dirty, 4), 7U);
    QCOMPARE(get_32(dirty, 8), 6U);
    QVERIFY(reader_of(damage).is_open());
}

void tst_hive_damage::claims_other_counts_than_the_lists_hold()
{
    const key_cells &a = m_hive->key(u"a"_s).cells();
    QCOMPARE(reader_of(hive_damage(m_bytes)).subkeys(u"a"_s), (QStringList{u"b"_s, u"d"_s}));
    QVERIFY(reader_of(hive_damage(m_bytes).subkey_count(a.key, 3)).subkeys(u"a"_s).isEmpty());
    QVERIFY(reader_of(hive_damage(m_bytes).list_count(a.subkey_list, 3)).subkeys(u"a"_s).isEmpty());
    QCOMPARE(reader_of(hive_damage(m_bytes).value_count(a.key, 1)).values(u"a"_s).size(), 1);
    QVERIFY(reader_of(hive_damage(m_bytes).value_count(a.key, 9)).values(u"a"_s).isEmpty());
}

void tst_hive_damage::makes_a_key_list_its_ancestor()
{
    const key_cells &b = m_hive->key(u"a\\b"_s).cells();
    const hive_reader reader =
        reader_of(hive_damage(m_bytes).list_entry(b.subkey_list, 0, cell_of(u"a"_s)));
    QCOMPARE(reader.subkeys(u"a\\b"_s), QStringList{u"a"_s});
    QCOMPARE(reader.node(u"a\\b\\a\\b\\a"_s), reader.node(u"a"_s));
}

void tst_hive_damage::lets_two_keys_share_their_subkeys()
{
    const hive_reader reader =
        reader_of(hive_damage(m_bytes).share_subkeys(cell_of(u"e"_s), cell_of(u"a"_s)));
    QCOMPARE(reader.subkeys(u"e"_s), (QStringList{u"b"_s, u"d"_s}));
    QCOMPARE(reader.node(u"e\\b\\c"_s), reader.node(u"a\\b\\c"_s));
}

void tst_hive_damage::lists_one_key_in_every_place()
{
    const key_cells &a = m_hive->key(u"a"_s).cells();
    const hive_reader reader =
        reader_of(hive_damage(m_bytes).list_only(a.subkey_list, cell_of(u"a\\d"_s)));
    QCOMPARE(reader.subkeys(u"a"_s), (QStringList{u"d"_s, u"d"_s}));
}

void tst_hive_damage::replaces_entries_of_plain_and_hashed_lists_data()
{
    QTest::addColumn<subkey_list>("kind");
    QTest::addRow("li") << subkey_list::li;
    QTest::addRow("lf") << subkey_list::lf;
    QTest::addRow("lh") << subkey_list::lh;
}

void tst_hive_damage::replaces_entries_of_plain_and_hashed_lists()
{
    QFETCH(const subkey_list, kind);
    m_hive->key(u"a"_s).list_kind(kind);
    hive_damage damage(m_hive->bytes());
    const key_cells &a = m_hive->key(u"a"_s).cells();
    damage.list_entry(a.subkey_list, 1, cell_of(u"e"_s));
    QCOMPARE(reader_of(damage).subkeys(u"a"_s), (QStringList{u"b"_s, u"e"_s}));
}

void tst_hive_damage::makes_an_index_of_lists_list_itself()
{
    m_hive->key(u"a"_s).list_kind(subkey_list::ri);
    const QByteArray bytes = m_hive->bytes();
    const qint64 list = m_hive->key(u"a"_s).cells().subkey_list;
    QCOMPARE(reader_of(hive_damage(bytes)).subkeys(u"a"_s), (QStringList{u"b"_s, u"d"_s}));
    QVERIFY(reader_of(hive_damage(bytes).list_entry(list, 0, list)).subkeys(u"a"_s).isEmpty());
}

void tst_hive_damage::shrinks_a_cell()
{
    const key_cells &a = m_hive->key(u"a"_s).cells();
    const hive_reader list = reader_of(hive_damage(m_bytes).shrink_cell(a.value_list, 8));
    QVERIFY(list.is_open());
    QVERIFY(list.values(u"a"_s).isEmpty());
    const hive_reader key = reader_of(hive_damage(m_bytes).shrink_cell(cell_of(u"e"_s), 24));
    QVERIFY(key.is_open());
    QCOMPARE(key.subkeys(u""_s), (QStringList{u"a"_s, QString(), u"big"_s}));
}

void tst_hive_damage::sets_a_cell_size_that_leaves_the_bin()
{
    hive_damage damage(m_bytes);
    damage.cell_size(cell_of(u"e"_s), 0x100000);
    QCOMPARE(get_32(damage.bytes(), cell_of(u"e"_s)), 0xfff00000U);
    QVERIFY(!reader_of(damage).is_open());
}

void tst_hive_damage::changes_a_signature()
{
    const hive_reader reader = reader_of(hive_damage(m_bytes).signature(cell_of(u"a"_s), "xx"));
    QVERIFY(reader.values(u"a"_s).isEmpty());
}

void tst_hive_damage::makes_a_last_write_time_negative()
{
    const qint64 e = cell_of(u"e"_s);
    QCOMPARE(reader_of(hive_damage(m_bytes).last_write(e, 5)).last_write(u"e"_s), 5);
    QCOMPARE(reader_of(hive_damage(m_bytes).last_write(e, -5)).last_write(u"e"_s), -1);
}

void tst_hive_damage::makes_names_longer_than_their_cells()
{
    const hive_reader keys = reader_of(hive_damage(m_bytes).key_name_size(cell_of(u"e"_s), 60000));
    QCOMPARE(keys.subkeys(u""_s), (QStringList{u"a"_s, QString(), u"big"_s}));
    const qint64 value = m_hive->key(u"a"_s).cells_of_value(0).value;
    const hive_reader values = reader_of(hive_damage(m_bytes).value_name_size(value, 60000));
    QCOMPARE(values.values(u"a"_s).first().name, QString());
}

void tst_hive_damage::lists_a_value_twice()
{
    const key_cells &a = m_hive->key(u"a"_s).cells();
    const qint64 second = m_hive->key(u"a"_s).cells_of_value(1).value;
    const hive_reader reader =
        reader_of(hive_damage(m_bytes).offset_entry(a.value_list, 0, second));
    QCOMPARE(data_of(reader.values(u"a"_s)), (QStringList{u"second data"_s, u"second data"_s}));
    const hive_damage shared = hive_damage(m_bytes)
                                   .value_list(cell_of(u"e"_s), a.value_list)
                                   .value_count(cell_of(u"e"_s), 1);
    QCOMPARE(data_of(reader_of(shared).values(u"e"_s)), QStringList{u"first data"_s});
}

void tst_hive_damage::changes_the_type_size_and_place_of_data()
{
    const value_cells &one = m_hive->key(u"a"_s).cells_of_value(0);
    const value_cells &two = m_hive->key(u"a"_s).cells_of_value(1);
    hive_damage damage(m_bytes);
    damage.value_type(one.value, 0xfffffff0).data_size(one.value, 3).data_cell(one.value, two.data);
    QCOMPARE(reader_of(damage).values(u"a"_s).first(),
             (read_value{u"one"_s, 0xfffffff0, "sec"_ba}));
    damage.data_size(one.value, 0x80000000 | 5);
    QVERIFY(reader_of(damage).values(u"a"_s).first().data.isNull());
}

void tst_hive_damage::claims_more_blocks_than_big_data_has()
{
    const value_cells &big = m_hive->key(u"big"_s).cells_of_value(0);
    QCOMPARE(reader_of(hive_damage(m_bytes)).values(u"big"_s).first().data.size(), 40000);
    hive_damage damage(m_bytes);
    damage.block_count(big.data, 1);
    QCOMPARE(reader_of(damage).values(u"big"_s).first().data.size(), 16344);
}

void tst_hive_damage::adds_a_cell_that_ends_with_the_file()
{
    hive_damage damage(m_bytes);
    const qint64 cell = damage.add_last_cell("nk\x20\0"_ba).last_cell();
    QCOMPARE(cell + 8, damage.bytes().size());
    QCOMPARE(damage.bytes().size() % 4096, 0);
    damage.list_entry(m_hive->key(u"a"_s).cells().subkey_list, 0, cell);
    const hive_reader reader = reader_of(damage);
    QVERIFY(reader.is_open());
    QVERIFY(damage.bytes().endsWith("nk\x20\0"_ba));
}

void tst_hive_damage::keeps_a_name_with_a_lone_surrogate()
{
    m_hive->root().add_key(QString(QChar(0xd800)));
    m_bytes = m_hive->bytes();
    const hive_reader reader = reader_of(hive_damage(m_bytes));
    QCOMPARE(reader.subkeys(u""_s), (QStringList{u"a"_s, u"e"_s, u"big"_s, QString()}));
    QCOMPARE(reader.node(u"no such key"_s), size_t(0));
}

void tst_hive_damage::throws_for_what_lies_outside_the_hive()
{
    hive_damage damage(m_bytes);
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, damage.set_32(m_bytes.size() - 3, 0));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, damage.set_16(-1, 0));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, damage.subkey_count(0, 1));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, damage.shrink_cell(cell_of(u"e"_s), 4));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, damage.shrink_cell(cell_of(u"e"_s), 4096));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range,
                             damage.list_entry(m_hive->key(u"e"_s).cells().subkey_list, 0, 0));
    QVERIFY(damage.bytes() == m_bytes);
}

TEST_MAIN(tst_hive_damage)
#include "tst_hive_damage.moc"

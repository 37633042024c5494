#include "byte_choices.h"
#include "byte_fields.h"
#include "deleted_hive.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_deletion.h"
#include "regf_format.h"
#include "test_main.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace regf;
using namespace test_support;

// What is found of deleted keys and values in free cells and behind the last bin.
class tst_deleted_records : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void finds_what_is_left_data();
    void finds_what_is_left();
    void tells_where_and_when();
    void gives_names_and_data();
    void reads_a_key_behind_the_last_bin();
    void takes_the_later_of_two_records_that_overlap();
    void follows_no_loop_of_parents();
    void ends_when_cancelled();
    void tells_the_values_of_living_keys();
    void takes_no_file_without_bins_for_a_hive_data();
    void takes_no_file_without_bins_for_a_hive();

private:
    QList<wanted_key> m_wanted{{u"Microsoft\\Uninstall"_s, 1, 1},
                               {u"Registered"_s, 0, 0},
                               {u"Explorer\\Assist"_s, 2, 1 << 20}};
    std::unique_ptr<hive_builder> m_hive;
    QByteArray m_bytes;
    hive_key *m_uninstall = nullptr;
    hive_key *m_editor = nullptr;
    hive_key *m_registered = nullptr;
};

namespace {

constexpr qint64 editor_time = 133000000000000000;
constexpr qint64 deletion_time = 133500000000000000;
/// A cell of a list of values.
QByteArray list_of(const QList<qint64> &values)
{
    QByteArray list(4 + 4 * values.size(), '\0');
    for (qsizetype i = 0; i < values.size(); ++i)
        put_32(list, 4 + 4 * i, stored_offset(values.at(i)));
    return used_cell(list);
}

const auto long_text = u"C:\\Program Files\\Editor\\"_s;

} // namespace

/// Keys in an order that lets cells of living keys lie between those of others.
void tst_deleted_records::init()
{
    m_hive = std::make_unique<hive_builder>();
    m_hive->root().last_write(1);
    m_uninstall = &m_hive->key(u"Microsoft\\Uninstall"_s).last_write(2);
    m_hive->key(u"Microsoft"_s).last_write(3);
    m_editor = &m_uninstall->key(u"Editor"_s).last_write(editor_time);
    m_editor->text(u"DisplayName"_s, u"Editor 2.1"_s).dword(u"NoModify"_s, 1);
    m_editor->text(u"InstallLocation"_s, long_text);
    m_uninstall->key(u"Viewer"_s).text(u"DisplayName"_s, u"Viewer"_s);
    m_registered = &m_hive->key(u"Registered"_s);
    m_registered->text(u"One"_s, u"Software\\One"_s).text(u"Two"_s, u"Software\\Two"_s);
    m_registered->text(u"Three"_s, u"Software\\Three"_s);
    m_hive->key(u"Explorer\\Assist\\{1}\\Count"_s).binary(u"n.rkr"_s, QByteArray(72, 'x'));
    m_hive->key(u"Elsewhere\\Uninstall\\Other"_s).text(u"DisplayName"_s, u"Other"_s);
    m_bytes = m_hive->bytes();
}

void tst_deleted_records::finds_what_is_left_data()
{
    QTest::addColumn<QByteArray>("hive");
    QTest::addColumn<QStringList>("lines");
    init();
    const auto deleted = [this](qint64 key) {
        return hive_deletion(m_bytes).key(key, deletion_time);
    };
    const qint64 editor = m_editor->cells().key;
    const qint64 list = m_editor->cells().value_list;
    const value_cells name = m_editor->cells_of_value(u"DisplayName"_s);
    const value_cells place = m_editor->cells_of_value(u"InstallLocation"_s);
    const QStringList whole{u"key Microsoft\\Uninstall\\Editor: whole, path whole, list there"_s,
                            u"  DisplayName of 22: there"_s, u"  NoModify of 4: there"_s,
                            u"  InstallLocation of 50: there"_s};
    const auto with_line = [](QStringList lines, int at, const QString &line) {
        lines[at] = line;
        return lines;
    };
    const QString part = u"key Microsoft\\Uninstall\\Editor: part, path whole, list there"_s;
    const QByteArray gone = deleted(editor).bytes();

    QTest::newRow("nothing was deleted") << m_bytes << QStringList();
    QTest::newRow("a key with its values") << gone << whole;
    QTest::newRow("a key that lies elsewhere")
        << deleted(m_hive->key(u"Elsewhere\\Uninstall\\Other"_s).cells().key).bytes()
        << QStringList{};
    QTest::newRow("a tree of keys")
        << deleted(m_hive->key(u"Explorer\\Assist"_s).cells().key).bytes()
        << QStringList{u"key Explorer\\Assist: whole, path whole, list there"_s,
                       u"key Explorer\\Assist\\{1}: whole, path whole, list there"_s,
                       u"key Explorer\\Assist\\{1}\\Count: whole, path whole, list there"_s,
                       u"  n.rkr of 72: there"_s};
    QTest::newRow("a key without its data")
        << hive_damage(gone)
               .data_cell(place.value, m_uninstall->key(u"Viewer"_s).cells_of_value(0).data)
               .bytes()
        << with_line(with_line(whole, 0, part), 3, u"  InstallLocation of 50: in use"_s);
    QTest::newRow("a key whose data were written over")
        << hive_damage(gone).set_32(place.data, 16).bytes()
        << with_line(with_line(whole, 0, part), 3, u"  InstallLocation of 50: written over"_s);
    QTest::newRow("two values that claim the same data")
        << hive_damage(gone).data_cell(name.value, place.data).bytes()
        << with_line(with_line(with_line(whole, 0, part), 3, u"  InstallLocation of 50: shared"_s),
                     1, u"  DisplayName of 22: shared"_s);
    QTest::newRow("a value that is gone") << hive_damage(gone).signature(name.value, "xx").bytes()
                                          << QStringList{part, whole.at(2), whole.at(3)};
    QTest::newRow("a value that a list names twice")
        << hive_damage(gone).offset_entry(list, 1, name.value).bytes()
        << QStringList{part, whole.at(3), u"key : part, path unknown, list there"_s, whole.at(2)};
    QTest::newRow("a parent that is gone")
        << hive_damage(deleted(m_hive->key(u"Microsoft"_s).cells().key).bytes())
               .signature(m_hive->key(u"Microsoft"_s).cells().key, "xx")
               .bytes()
        << QStringList{u"key Uninstall: whole, path partial, list there"_s,
                       u"key Uninstall\\Editor: whole, path partial, list there"_s,
                       whole.at(1),
                       whole.at(2),
                       whole.at(3),
                       u"key Uninstall\\Viewer: whole, path partial, list there"_s,
                       u"  DisplayName of 14: there"_s};
    QTest::newRow("a parent that was written before its subkey")
        << hive_damage(gone).last_write(m_uninstall->cells().key, editor_time - 1).bytes()
        << with_line(whole, 0,
                     u"key Microsoft\\Uninstall\\Editor: whole, path doubtful, list there"_s);
    QTest::newRow("a value of a key that lives, named behind the end of its list")
        << hive_deletion(m_bytes)
               .value(m_registered->cells().key, m_registered->cells_of_value(u"Three"_s).value,
                      deletion_time)
               .bytes()
        << QStringList{u"living Registered: whole, path doubtful, list there"_s,
                       u"  Three of 30: there"_s};
    const value_cells one = m_registered->cells_of_value(u"One"_s);
    const qint64 two = m_registered->cells_of_value(u"Two"_s).value;
    const QByteArray without_one =
        hive_deletion(m_bytes).value(m_registered->cells().key, one.value, deletion_time).bytes();
    const QStringList unknown{u"key : part, path unknown, list there"_s, u"  One of 26: there"_s};
    QTest::newRow("a value of a key that lives, named by an older list")
        << with_free_bin(without_one, list_of({one.value, two}))
        << QStringList{u"living Registered: whole, path whole, list there"_s, unknown.at(1)};
    QTest::newRow("a value that an older list names beside values of two keys")
        << with_free_bin(without_one, list_of({one.value, two, place.value})) << unknown;
    QTest::newRow("a value that two older lists of different keys name")
        << with_free_bin(without_one, list_of({one.value, two}) + list_of({one.value, place.value}))
        << unknown;
    QTest::newRow("a value that an older list names alone")
        << with_free_bin(without_one, list_of({one.value})) << unknown;
    QTest::newRow("a value of a key that lives, named by nothing")
        << hive_deletion(m_bytes)
               .value(m_registered->cells().key, m_registered->cells_of_value(u"One"_s).value,
                      deletion_time)
               .bytes()
        << QStringList{u"key : part, path unknown, list there"_s, u"  One of 26: there"_s};
}

void tst_deleted_records::finds_what_is_left()
{
    QFETCH(const QByteArray, hive);
    QFETCH(const QStringList, lines);
    QCOMPARE(lines_about({hive, m_wanted}), lines);
}

void tst_deleted_records::tells_where_and_when()
{
    const qint64 editor = m_editor->cells().key;
    const deleted_records found(hive_deletion(m_bytes).key(editor, deletion_time).bytes(),
                                m_wanted);
    QCOMPARE(found.keys().size(), size_t(1));
    QCOMPARE(found.keys().front().offset, editor);
    QCOMPARE(found.keys().front().last_write, quint64(editor_time));
    QCOMPARE(found.keys().front().values.front().offset,
             m_editor->cells_of_value(u"DisplayName"_s).value);
    QCOMPARE(found.keys_in_free_space(), 1);
    QCOMPARE(found.values_in_free_space(), 3);
}

void tst_deleted_records::gives_names_and_data()
{
    const qint64 editor = m_editor->cells().key;
    const deleted_records found(hive_deletion(m_bytes).key(editor, deletion_time).bytes(),
                                m_wanted);
    const auto &values = found.keys().front().values;
    QCOMPARE(found.name_of(values.at(2)), u"InstallLocation"_s);
    QCOMPARE(found.data_of(values.at(2)), registry_text(long_text));
    QCOMPARE(values.at(2).type, quint32(reg_sz));
    QCOMPARE(found.data_of(values.at(1)), registry_dword(1));
}

void tst_deleted_records::reads_a_key_behind_the_last_bin()
{
    const QByteArray gone =
        hive_deletion(m_bytes).key(m_editor->cells().key, deletion_time).bytes();
    const QByteArray last_bin = bin_head(gone.size(), page_size);
    QByteArray key = gone.mid(m_editor->cells().key, 96);
    put_32(key, nk::value_count, 0);
    put_32(key, cell_head::size, quint32(-96));
    const QByteArray longer = m_bytes + (last_bin + key).leftJustified(page_size, '\0');
    QCOMPARE(lines_about({longer, m_wanted}),
             QStringList{u"key Microsoft\\Uninstall\\Editor: whole, path doubtful, list there"_s});
}

void tst_deleted_records::takes_the_later_of_two_records_that_overlap()
{
    const qint64 editor = m_editor->cells().key;
    QByteArray gone = hive_deletion(m_bytes).key(editor, deletion_time).bytes();
    const qint64 inner = m_editor->cells_of_value(u"DisplayName"_s).value;
    put_16(gone, editor + nk::name_size, static_cast<quint16>(inner - editor - nk::name + 8));
    put_32(gone, editor, quint32(m_uninstall->key(u"Viewer"_s).cells().key - editor));
    QCOMPARE(lines_about({gone, m_wanted}).first(), u"key : part, path unknown, list there"_s);
}

void tst_deleted_records::follows_no_loop_of_parents()
{
    const qint64 count = m_hive->key(u"Explorer\\Assist\\{1}\\Count"_s).cells().key;
    const qint64 top = m_hive->key(u"Explorer"_s).cells().key;
    QByteArray gone = hive_deletion(m_bytes).key(top, deletion_time).bytes();
    put_32(gone, top + nk::parent, stored_offset(count));
    const QStringList lines = lines_about({gone, m_wanted});
    QCOMPARE(lines.size(), 5);
    QVERIFY2(lines.at(1).contains(u"path partial"_s), qPrintable(lines.at(1)));
}

void tst_deleted_records::ends_when_cancelled()
{
    const QByteArray gone =
        hive_deletion(m_bytes).key(m_editor->cells().key, deletion_time).bytes();
    const deleted_records found(gone, m_wanted, [] { return true; });
    QVERIFY(found.is_cancelled());
    QVERIFY(found.keys().empty());
}

void tst_deleted_records::tells_the_values_of_living_keys()
{
    const deleted_records found(m_bytes, m_wanted);
    QStringList values;
    for (const living_value &value : found.living_values())
        values.append(found.path_of(value).last() + u'=' + found.name_of(value));
    const QStringList expected{u"Editor=DisplayName"_s,     u"Editor=NoModify"_s,
                               u"Editor=InstallLocation"_s, u"Viewer=DisplayName"_s,
                               u"Registered=One"_s,         u"Registered=Two"_s,
                               u"Registered=Three"_s,       u"Count=n.rkr"_s};
    QCOMPARE(values, expected);
    const living_value &one = found.living_values().at(4);
    QCOMPARE(found.data_of(one), registry_text(u"Software\\One"_s));
}

void tst_deleted_records::takes_no_file_without_bins_for_a_hive_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a few bytes") << QByteArray("regf");
    QTest::newRow("a base block") << QByteArray("regf").leftJustified(4096, '\0');
    QTest::newRow("zeros") << QByteArray(20000, '\0');
}

void tst_deleted_records::takes_no_file_without_bins_for_a_hive()
{
    QFETCH(const QByteArray, file);
    QVERIFY(deleted_records(file, m_wanted).keys().empty());
}

TEST_MAIN(tst_deleted_records)
#include "tst_deleted_records.moc"

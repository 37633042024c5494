#include "byte_fields.h"
#include "hive_builder.h"
#include "hive_reader.h"
#include "regf_format.h"
#include "test_main.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_hive_builder : public QObject
{
    Q_OBJECT

private slots:
    void reads_names_back_data();
    void reads_names_back();
    void stores_a_name_as_told();
    void reads_values_back_data();
    void reads_values_back();
    void lists_subkeys_in_every_kind_of_list_data();
    void lists_subkeys_in_every_kind_of_list();
    void hashes_names_as_windows_does();
    void reads_last_write_times_back_data();
    void reads_last_write_times_back();
    void finds_or_makes_keys_by_path();
    void sorts_subkeys_when_told();
    void keeps_duplicates_of_keys_and_values();
    void tells_where_the_cells_of_keys_and_values_lie();
    void tells_where_the_cells_of_lists_and_data_lie();
    void throws_for_the_cells_of_a_value_that_is_not_there();
    void fills_every_bin_with_cells_without_a_gap();
    void writes_the_same_bytes_each_time();
    void writes_70000_subkeys_and_100000_values();
    void writes_100000_levels();
    void throws_when_the_file_cannot_be_written();
    void is_read_by_hivexsh();
    void is_read_by_reglookup();
    void is_read_by_regfexport();

private:
    QString written(hive_builder &hive);
    static void fill_for_tools(hive_builder &hive);

    QTemporaryDir m_folder;
};

namespace {

QString output_of(const QString &tool, const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(tool, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool is_installed(const QString &tool)
{
    return !QStandardPaths::findExecutable(tool).isEmpty();
}

QStringList numbered_names(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(u"k%1"_s.arg(i));
    return names;
}

// Walks the cells of the bin at `bin` and returns where they end.
qint64 end_of_cells(const QByteArray &hive, qint64 bin)
{
    const qint64 bin_end = bin + get_32(hive, bin + regf::hbin::size);
    qint64 cell = bin + regf::hbin::cells;
    while (cell < bin_end) {
        const qint64 size = qAbs(static_cast<qint32>(get_32(hive, cell)));
        if (size < 8 || size % 8 != 0)
            return -1;
        cell += size;
    }
    return cell;
}

} // namespace

QString tst_hive_builder::written(hive_builder &hive)
{
    QString path = m_folder.filePath(u"hive"_s);
    hive.write_to(path);
    return path;
}

void tst_hive_builder::reads_names_back_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("compressed");
    QTest::addRow("ASCII is stored in one byte a letter") << u"Software"_s << true;
    QTest::addRow("Latin-1 is stored in one byte a letter") << u"Prüfung ÿ"_s << true;
    QTest::addRow("Cyrillic is stored in UTF-16") << u"Программа"_s << false;
    QTest::addRow("a character beyond the BMP is stored in UTF-16") << u"x\U0001F600"_s << false;
    QTest::addRow("slashes, controls and a line feed are kept") << u"a/b\r\n\x1b[31m"_s << true;
    QTest::addRow("a name of 255 letters is kept") << QString(255, u'n') << true;
}

void tst_hive_builder::reads_names_back()
{
    QFETCH(const QString, name);
    QFETCH(const bool, compressed);

    QCOMPARE(hive_name(name).compressed(), compressed);
    QCOMPARE(hive_name(name).text(), name);
    hive_builder hive;
    hive.root().add_key(name).dword(name, 1);
    const hive_reader reader(written(hive));

    QCOMPARE(reader.subkeys(u""_s), QStringList{name});
    QCOMPARE(reader.values(name),
             (QList<read_value>{{name, reg_dword, QByteArray::fromHex("01000000")}}));
}

void tst_hive_builder::stores_a_name_as_told()
{
    const hive_name wide = hive_name::utf16(u"ab"_s);
    QCOMPARE(wide.compressed(), false);
    QCOMPARE(wide.stored(), QByteArray("a\0b\0", 4));
    const hive_name odd = hive_name::raw("a\0b"_ba, true);
    hive_builder hive;
    hive.root().add_key(wide).text(wide, u"x"_s);
    hive.root().add_key(odd);
    const QByteArray bytes = hive.bytes();

    const hive_reader reader(written(hive));
    QCOMPARE(reader.subkeys(u""_s), (QStringList{u"ab"_s, u"a"_s}));
    QCOMPARE(reader.values(u"ab"_s).first().name, u"ab"_s);
    QVERIFY(bytes.contains("a\0b"_ba));
}

void tst_hive_builder::reads_values_back_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<quint32>("minor_version");
    const QList<int> sizes{0,     1,     4,     5,     16343, 16344,   16345,
                           16352, 32688, 32689, 65535, 99999, 1000000, 7999999};
    for (const int size : sizes) {
        QTest::addRow("%d bytes in a hive of version 1.5", size) << size << 5U;
        QTest::addRow("%d bytes in a hive of version 1.3", size) << size << 3U;
    }
}

void tst_hive_builder::reads_values_back()
{
    QFETCH(const int, size);
    QFETCH(const quint32, minor_version);
    QByteArray data(size, '\0');
    for (int i = 0; i < size; ++i)
        data[i] = static_cast<char>(i % 251 + 1);

    hive_builder hive;
    hive.minor_version(minor_version);
    hive.key(u"a"_s).value(u"before"_s, reg_sz, "x").value(u"data"_s, 0x1234567, data);
    const hive_reader reader(written(hive));

    const QList<read_value> values = reader.values(u"a"_s);
    QCOMPARE(values.size(), 2);
    QCOMPARE(values.at(1).type, 0x1234567U);
    QVERIFY(values.at(1).data == data);
    const value_cells &cells = hive.key(u"a"_s).cells_of_value(u"data"_s);
    QCOMPARE(cells.data != 0, size > 4);
    QCOMPARE(!cells.blocks.isEmpty(), size > 16344 && minor_version == 5);
}

void tst_hive_builder::lists_subkeys_in_every_kind_of_list_data()
{
    QTest::addColumn<subkey_list>("kind");
    QTest::addColumn<int>("count");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<qsizetype>("leaves");
    using list = subkey_list;
    QTest::addRow("li") << list::li << 3 << "li"_ba << qsizetype(0);
    QTest::addRow("lf") << list::lf << 3 << "lf"_ba << qsizetype(0);
    QTest::addRow("lh") << list::lh << 3 << "lh"_ba << qsizetype(0);
    QTest::addRow("ri over one lh") << list::ri << 3 << "ri"_ba << qsizetype(1);
    QTest::addRow("ri over four lh") << list::ri << 1600 << "ri"_ba << qsizetype(4);
    QTest::addRow("automatic up to a page") << list::automatic << 511 << "lh"_ba << qsizetype(0);
    QTest::addRow("automatic over a page") << list::automatic << 512 << "ri"_ba << qsizetype(2);
    QTest::addRow("one long li") << list::li << 65535 << "li"_ba << qsizetype(0);
    QTest::addRow("more than one li can count") << list::li << 65536 << "ri"_ba << qsizetype(2);
}

void tst_hive_builder::lists_subkeys_in_every_kind_of_list()
{
    QFETCH(const subkey_list, kind);
    QFETCH(const int, count);
    const QStringList names = numbered_names(count);

    hive_builder hive;
    hive_key &parent = hive.key(u"parent"_s).list_kind(kind);
    for (const QString &name : names)
        parent.add_key(name);
    const QByteArray bytes = hive.bytes();
    const hive_reader reader(written(hive));

    QCOMPARE(reader.subkeys(u"parent"_s), names);
    QVERIFY(reader.node(u"parent\\"_s + names.last()) != 0);
    QTEST(bytes.mid(parent.cells().subkey_list + 4, 2), "signature");
    QTEST(parent.cells().subkey_leaves.size(), "leaves");
}

// The hashes stand in hives that Windows wrote.
void tst_hive_builder::hashes_names_as_windows_does()
{
    hive_builder hive;
    hive.key(u"Control Panel"_s);
    hive.key(u"Software"_s);
    const auto second_entry_of = [&hive](subkey_list kind, qint64 entry_size) {
        hive.root().list_kind(kind);
        const QByteArray bytes = hive.bytes();
        return bytes.mid(hive.root().cells().subkey_list + 8 + entry_size, entry_size);
    };
    QCOMPARE(get_32(second_entry_of(subkey_list::lh, 8), 4), 0xe9fe1463U);
    QCOMPARE(second_entry_of(subkey_list::lf, 8).mid(4), "Soft"_ba);
    QCOMPARE(get_32(second_entry_of(subkey_list::li, 4), 0) + 4096LL,
             hive.key(u"Software"_s).cells().key);
    QCOMPARE(get_32(hive.bytes(), regf::base_block::root_cell), 32U);
}

void tst_hive_builder::reads_last_write_times_back_data()
{
    QTest::addColumn<qint64>("filetime");
    QTest::addColumn<qint64>("read");
    QTest::addRow("zero") << qint64(0) << qint64(0);
    QTest::addRow("the Unix epoch") << filetime_of_unix(0) << qint64(116444736000000000);
    QTest::addRow("the far future")
        << std::numeric_limits<qint64>::max() << std::numeric_limits<qint64>::max();
    QTest::addRow("a negative one is refused by the reader") << qint64(-2) << qint64(-1);
}

void tst_hive_builder::reads_last_write_times_back()
{
    QFETCH(const qint64, filetime);
    hive_builder hive;
    hive.key(u"a\\b"_s).last_write(filetime);
    hive.key(u"a"_s).last_write_unix(1234567890);
    const hive_reader reader(written(hive));

    QTEST(reader.last_write(u"a\\b"_s), "read");
    QCOMPARE(reader.last_write(u"a"_s), 12345678900000000 + 116444736000000000);
}

void tst_hive_builder::finds_or_makes_keys_by_path()
{
    hive_builder hive;
    hive_key &made = hive.key(u"Software\\\\Vendor\\"_s);

    QCOMPARE(&hive.key(u"SOFTWARE\\vendor"_s), &made);
    QCOMPARE(&hive.root().key(u"software"_s).key(u"Vendor"_s), &made);
    QCOMPARE(&hive.key(u""_s), &hive.root());
    const hive_reader reader(written(hive));
    QCOMPARE(reader.subkeys(u""_s), QStringList{u"Software"_s});
    QCOMPARE(reader.subkeys(u"Software"_s), QStringList{u"Vendor"_s});
}

void tst_hive_builder::sorts_subkeys_when_told()
{
    hive_builder hive;
    for (const QString &name : {u"b"_s, u"_"_s, u"A"_s, u"a\\z"_s, u"a\\Y"_s, u"C"_s})
        hive.key(name);
    QCOMPARE(hive_reader(written(hive)).subkeys(u""_s),
             (QStringList{u"b"_s, u"_"_s, u"A"_s, u"C"_s}));
    hive.sort_subkeys();
    QCOMPARE(hive_reader(written(hive)).subkeys(u""_s),
             (QStringList{u"A"_s, u"b"_s, u"C"_s, u"_"_s}));
    QCOMPARE(hive_reader(written(hive)).subkeys(u"a"_s), (QStringList{u"Y"_s, u"z"_s}));
}

void tst_hive_builder::keeps_duplicates_of_keys_and_values()
{
    hive_builder hive;
    hive.root().add_key(u"same"_s).text(u"v"_s, u"one"_s).text(u"v"_s, u"two"_s);
    hive.root().add_key(u"same"_s);
    const hive_reader reader(written(hive));

    QCOMPARE(reader.subkeys(u""_s), (QStringList{u"same"_s, u"same"_s}));
    QCOMPARE(reader.values(u"same"_s),
             (QList<read_value>{{u"v"_s, reg_sz, registry_text(u"one"_s)},
                                {u"v"_s, reg_sz, registry_text(u"two"_s)}}));
}

void tst_hive_builder::tells_where_the_cells_of_keys_and_values_lie()
{
    hive_builder hive;
    hive_key &key = hive.key(u"a\\b"_s).dword(u"v"_s, 1).binary(u"w"_s, QByteArray(50000, 'w'));
    const hive_reader reader(written(hive));

    const size_t node = reader.node(u"a\\b"_s);
    QCOMPARE(hive_builder::offset_of(key), static_cast<qint64>(node));
    const QList<size_t> values = reader.value_handles(node);
    QCOMPARE(values.size(), 2);
    QCOMPARE(key.cells_of_value(u"v"_s).value, static_cast<qint64>(values.at(0)));
    QCOMPARE(key.cells_of_value(1).value, static_cast<qint64>(values.at(1)));
}

void tst_hive_builder::tells_where_the_cells_of_lists_and_data_lie()
{
    hive_builder hive;
    hive_key &key =
        hive.key(u"a"_s).binary(u"five"_s, "12345").binary(u"w"_s, QByteArray(40000, 'w'));
    const QByteArray bytes = hive.bytes();

    const auto stored_at = [&bytes](qint64 offset) { return get_32(bytes, offset) + 4096LL; };
    QCOMPARE(stored_at(key.cells().value_list + 4), key.cells_of_value(0).value);
    QCOMPARE(stored_at(hive.root().cells().subkey_list + 8), key.cells().key);
    QCOMPARE(bytes.mid(key.cells_of_value(0).data + 4, 5), "12345"_ba);
    const value_cells &big = key.cells_of_value(1);
    QCOMPARE(bytes.mid(big.data + 4, 2), "db"_ba);
    QCOMPARE(stored_at(big.data + 8), big.block_list);
    QCOMPARE(big.blocks.size(), 3);
    QCOMPARE(stored_at(big.block_list + 4 + 8), big.blocks.at(2));
}

void tst_hive_builder::throws_for_the_cells_of_a_value_that_is_not_there()
{
    hive_builder hive;
    hive.root().dword(u"v"_s, 1);
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, hive.root().cells_of_value(u"V"_s));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, hive.root().cells_of_value(1));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, hive.root().cells_of_value(-1));
}

void tst_hive_builder::fills_every_bin_with_cells_without_a_gap()
{
    hive_builder hive;
    for (int i = 0; i < 300; ++i)
        hive.key(u"a\\k%1"_s.arg(i)).binary(u"v"_s, QByteArray(qsizetype(37) * i, 'x'));
    const QByteArray bytes = hive.bytes();

    QCOMPARE(get_32(bytes, regf::base_block::bins_size), bytes.size() - 4096);
    qint64 bin = 4096;
    while (bin < bytes.size()) {
        QCOMPARE(bytes.mid(bin, 4), "hbin"_ba);
        QCOMPARE(get_32(bytes, bin + regf::hbin::offset), bin - 4096);
        const qint64 bin_end = bin + get_32(bytes, bin + regf::hbin::size);
        QCOMPARE(bin_end % 4096, 0);
        QCOMPARE(end_of_cells(bytes, bin), bin_end);
        bin = bin_end;
    }
    QCOMPARE(bin, bytes.size());
}

void tst_hive_builder::writes_the_same_bytes_each_time()
{
    hive_builder one;
    hive_builder other;
    fill_for_tools(one);
    fill_for_tools(other);
    const QByteArray first = one.bytes();
    QCOMPARE(one.bytes(), first);
    QCOMPARE(other.bytes(), first);
}

void tst_hive_builder::writes_70000_subkeys_and_100000_values()
{
    hive_builder hive;
    for (int i = 0; i < 70000; ++i)
        hive.key(u"a\\k%1"_s.arg(i));
    for (int i = 0; i < 100000; ++i)
        hive.key(u"a"_s).dword(u"v%1"_s.arg(i), static_cast<quint32>(i));
    const hive_reader reader(written(hive));

    QCOMPARE(reader.subkey_nodes(reader.node(u"a"_s)).size(), 70000);
    QCOMPARE(reader.value_handles(reader.node(u"a"_s)).size(), 100000);
}

void tst_hive_builder::writes_100000_levels()
{
    hive_builder hive;
    hive_key *key = &hive.root();
    for (int level = 0; level < 100000; ++level)
        key = &key->add_key(u"d"_s);
    const hive_reader reader(written(hive));

    size_t node = reader.node(u""_s);
    for (int level = 0; level < 100000; ++level)
        node = reader.subkey_nodes(node).value(0);
    QCOMPARE(static_cast<qint64>(node), key->cells().key);
}

void tst_hive_builder::throws_when_the_file_cannot_be_written()
{
    hive_builder hive;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                             hive.write_to(m_folder.filePath(u"no such folder/hive"_s)));
}

void tst_hive_builder::fill_for_tools(hive_builder &hive)
{
    hive.key(u"Software\\Vendor"_s)
        .last_write_unix(1234567890)
        .text(u"DisplayName"_s, u"Some App"_s)
        .dword(u"Size"_s, 5)
        .multi_text(u"List"_s, {u"one"_s, u"two"_s})
        .qword(u"Long"_s, 0x10000000000)
        .binary(u"Big"_s, QByteArray(40000, 'b'));
    hive_key &many = hive.key(u"Many"_s);
    for (int i = 0; i < 1200; ++i)
        many.add_key(u"k%1"_s.arg(i));
}

void tst_hive_builder::is_read_by_hivexsh()
{
    if (!is_installed(u"hivexsh"_s))
        QSKIP("hivexsh is not installed");
    hive_builder hive;
    fill_for_tools(hive);
    const QStringList options{u"-w"_s, written(hive)};

    const QString values = output_of(u"hivexsh"_s, options, "cd Software\\Vendor\nlsval\n");
    QCOMPARE(
        values.split(u'\n').mid(0, 4),
        (QStringList{u"\"DisplayName\"=\"Some App\""_s, u"\"Size\"=dword:00000005"_s,
                     u"\"List\"=hex(7):6f,00,6e,00,65,00,00,00,74,00,77,00,6f,00,00,00,00,00"_s,
                     u"\"Long\"=hex(11):00,00,00,00,00,01,00,00"_s}));
    QCOMPARE(values.count(u"62,"_s), 39999);
    QStringList names = numbered_names(1200);
    names.sort();
    const QString listed = output_of(u"hivexsh"_s, options, "cd Many\nls\n");
    QCOMPARE(listed.split(u'\n', Qt::SkipEmptyParts), names);
}

void tst_hive_builder::is_read_by_reglookup()
{
    if (!is_installed(u"reglookup"_s))
        QSKIP("reglookup is not installed");
    hive_builder hive;
    fill_for_tools(hive);

    const QString path = written(hive);
    const QStringList lines = output_of(u"reglookup"_s, {u"-H"_s, path}).split(u'\n');
    QCOMPARE(lines.mid(0, 6),
             (QStringList{u"/,KEY,,2023-11-14 22:13:20"_s, u"/Software,KEY,,2023-11-14 22:13:20"_s,
                          u"/Software/Vendor,KEY,,2009-02-13 23:31:30"_s,
                          u"/Software/Vendor/DisplayName,SZ,Some App,"_s,
                          u"/Software/Vendor/Size,DWORD,0x00000005,"_s,
                          u"/Software/Vendor/List,MULTI_SZ,one|two,"_s}));
    QCOMPARE(lines.filter(u"/Many/k"_s).size(), 1200);
}

void tst_hive_builder::is_read_by_regfexport()
{
    if (!is_installed(u"regfexport"_s))
        QSKIP("regfexport is not installed");
    hive_builder hive;
    fill_for_tools(hive);

    const QString text = output_of(u"regfexport"_s, {written(hive)});
    QVERIFY(text.contains(u"Key path: ROOT\\Software\\Vendor\n"_s));
    QVERIFY(text.contains(u"Value: 0 DisplayName\nType: string (REG_SZ)\nData size: 18\n"
                          "Data: Some App\n"_s));
    QVERIFY(text.contains(u"Data size: 40000\n"_s));
    QCOMPARE(text.count(u"Key path: ROOT\\Many\\k"_s), 1200);
}

TEST_MAIN(tst_hive_builder)
#include "tst_hive_builder.moc"

#include "application_keys.h"
#include "base_block.h"
#include "byte_fields.h"
#include "files.h"
#include "guarded_memory.h"
#include "hive_bins.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "hive_generator.h"
#include "hive_reader.h"
#include "hive_walks.h"
#include "plugin_tabs.h"
#include "regf_format.h"
#include "registry.h"
#include "test_main.h"

#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// No hive makes the walkers or the host's check of keys, or libhivex on their behalf, read past the
// bytes of the file: those bytes stand between two pages that cannot be read.
class tst_overreads : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void the_guard_is_in_place();
    void every_walk_reads_from_guarded_memory();
    void walks_of_generated_hives_data();
    void walks_of_generated_hives();
    void walks_of_hives_cut_at_each_byte();
    void walks_of_hives_with_a_byte_changed_data();
    void walks_of_hives_with_a_byte_changed();
    void walks_of_hives_that_end_within_a_record_data();
    void walks_of_hives_that_end_within_a_record();
    void walks_of_hives_that_end_within_the_root_key_data();
    void walks_of_hives_that_end_within_the_root_key();
    void walks_of_hives_that_are_emptied_meanwhile();

private:
    QString write_guarded(const QByteArray &hive);
    void walk(const QByteArray &hive);

    QTemporaryDir m_folder;
};

namespace {

constexpr int hives_in_a_row = 100;

generated_hive hive_of_seed(quint32 seed)
{
    byte_choices choices(random_bytes(seed, 400));
    return generate_hive(choices, seed % 2 == 0 ? hive_kind::software : hive_kind::user,
                         described_artifacts());
}

QByteArray intact_hive(hive_kind kind)
{
    byte_choices choices{QByteArray()};
    return generate_hive(choices, kind, described_artifacts()).bytes;
}

/// A key whose values the plug-in reads.
struct walked_key
{
    const char *name;
    QString path;
};

const QList<walked_key> &walked_keys()
{
    static const QString class_id = u"\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;
    static const QList<walked_key> keys{
        {"an application", uninstall_key + u"\\app"_s},
        {"a 32-bit application", uninstall_key_32 + u"\\app"_s},
        {"the registered applications", registered_applications_key},
        {"the Store", compatibility_store_key},
        {"UserAssist", user_assist_key + class_id + u"\\Count"_s},
        {"a key below UserAssist", user_assist_key + class_id + u"\\Count\\below\\it"_s},
        {"the desktop icons", hide_desktop_icons_key + u"\\NewStartPanel"_s},
        {"an icon", name_space_key + class_id},
    };
    return keys;
}

/// Gives each of these keys a value of big data, another one, and a subkey.
void fill(hive_builder &hive)
{
    for (const walked_key &walked : walked_keys()) {
        hive_key &key = hive.key(walked.path);
        key.binary(u"DisplayName"_s, QByteArray(40000, 'x')).binary(u"Publisher"_s, "12345");
        key.key(u"below"_s);
    }
}

/// A key of the hive and the one that lists it first.
struct listed_in
{
    const hive_key &parent;
    const hive_key &key;
};

/// What claims more records than any file has room for.
constexpr quint16 endless = 60000;

/// The first bytes of the record in a cell.
QByteArray record_start(const hive_damage &damage, qint64 cell, qint64 length)
{
    return damage.bytes().mid(cell + regf::cell_head::signature, length);
}

/// The offset of one cell again and again.
QByteArray repeated_offset(qint64 cell, qint64 length)
{
    QByteArray offset(sizeof(quint32), '\0');
    put_32(offset, 0, stored_offset(cell));
    return offset.repeated(length / offset.size());
}

void cut_key(hive_damage &damage, const listed_in &place, qint64 length)
{
    damage.add_last_cell(record_start(damage, place.key.cells().key, length));
    damage.list_entry(place.parent.cells().subkey_list, 0, damage.last_cell());
}

void cut_value(hive_damage &damage, const listed_in &place, qint64 length)
{
    damage.add_last_cell(record_start(damage, place.key.cells_of_value(0).value, length));
    damage.offset_entry(place.key.cells().value_list, 0, damage.last_cell());
}

void cut_value_list(hive_damage &damage, const listed_in &place, qint64 length)
{
    damage.add_last_cell(repeated_offset(place.key.cells_of_value(1).value, length));
    damage.value_list(place.key.cells().key, damage.last_cell());
    damage.value_count(place.key.cells().key, endless);
}

void cut_subkey_list(hive_damage &damage, const listed_in &place, qint64 length)
{
    const QByteArray list = "li\xff\xff" + repeated_offset(place.key.cells().key, length);
    damage.add_last_cell(list.first(length));
    damage.subkey_list(place.parent.cells().key, damage.last_cell());
    damage.subkey_count(place.parent.cells().key, 0xffff);
}

void cut_big_data(hive_damage &damage, const listed_in &place, qint64 length)
{
    const value_cells &value = place.key.cells_of_value(0);
    damage.add_last_cell(record_start(damage, value.data, length));
    damage.data_cell(value.value, damage.last_cell());
}

void cut_block_list(hive_damage &damage, const listed_in &place, qint64 length)
{
    const value_cells &value = place.key.cells_of_value(0);
    damage.add_last_cell(repeated_offset(value.blocks.first(), length));
    damage.set_32(value.data + regf::db::block_list, stored_offset(damage.last_cell()));
    damage.block_count(value.data, endless);
}

using cut_operation = void (*)(hive_damage &, const listed_in &, qint64);

/// Cells take a multiple of 8 bytes, four of them for their size.
constexpr qint64 shortest_record = 4;
constexpr qint64 cell_step = regf::cell_head::alignment;

/// The most bytes of a record that leave its fixed part, which its name follows, cut.
constexpr qint64 longest_cut_key = regf::nk::name - regf::cell_head::signature - cell_step;
constexpr qint64 longest_cut_value = regf::vk::name - regf::cell_head::signature - cell_step;

/// What the file ends within, and the most bytes of it that are left.
struct cut_record
{
    const char *name;
    cut_operation cut;
    qint64 most_bytes;
};

constexpr cut_record cut_records[] = {
    {"its key", cut_key, longest_cut_key},
    {"a value", cut_value, longest_cut_value},
    {"the list of its values", cut_value_list, 12},
    {"the list that it stands in", cut_subkey_list, 12},
    {"big data", cut_big_data, shortest_record},
    {"the blocks of big data", cut_block_list, shortest_record},
};

/// Reads the time of the key that a walk starts at, which no walk of the plug-in needs.
class time_walker : public registry
{
public:
    void run_only_multiple_paths(hive_h *hive, unsigned long node) override
    {
        run_only_multiple(hive, static_cast<int>(node));
    }
};

/// Empties the hive's file before it reads the data of a value.
class emptying_walker : public registry
{
public:
    explicit emptying_walker(const QString &hive_path) : m_hive_path(hive_path) {}

    void find_node_value_length(hive_h *hive, unsigned long value, QString value_name) override
    {
        write_file(m_hive_path, {});
        data.append({value_name, value_bytes(hive, value)});
    }

    QList<QPair<QString, QByteArray>> data;

private:
    QString m_hive_path;
};

} // namespace

void tst_overreads::initTestCase()
{
    guard_memory_of_size(4096);
    std::free(std::malloc(4096));
    guard_memory_of_size(0);
    if (guarded_allocations() == 0)
        QSKIP("Memory is guarded with glibc only");
}

/// Writes the hive; memory of its size is guarded from then on.
QString tst_overreads::write_guarded(const QByteArray &hive)
{
    QString path = m_folder.filePath(u"hive"_s);
    write_file(path, hive);
    guard_memory_of_size(static_cast<size_t>(hive.size()));
    return path;
}

void tst_overreads::walk(const QByteArray &hive)
{
    const QString path = write_guarded(hive);
    walk_hive_in_every_way(path);
    guard_memory_of_size(0);
}

// A process of its own reads one byte beyond, on either side.
void tst_overreads::the_guard_is_in_place()
{
    const long page = sysconf(_SC_PAGESIZE);
    for (const qptrdiff offset : {qptrdiff(page), qptrdiff(-1)}) {
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGSEGV, SIG_DFL); // Qt Test would print where it happened
            guard_memory_of_size(static_cast<size_t>(page));
            const volatile char *const memory =
                static_cast<char *>(std::malloc(static_cast<size_t>(page)));
            _exit(memory[offset] == 0 ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGSEGV);
    }
}

void tst_overreads::every_walk_reads_from_guarded_memory()
{
    const size_t before = guarded_allocations();
    walk(intact_hive(hive_kind::user));
    QVERIFY(guarded_allocations() > before + 10); // each walk reads the file anew
}

void tst_overreads::walks_of_generated_hives_data()
{
    QTest::addColumn<quint32>("first_seed");
    for (quint32 first = 0; first < 1000; first += hives_in_a_row)
        QTest::addRow("from seed %u", first) << first;
}

void tst_overreads::walks_of_generated_hives()
{
    QFETCH(const quint32, first_seed);
    for (quint32 seed = first_seed; seed < first_seed + hives_in_a_row; ++seed)
        walk(hive_of_seed(seed).bytes);
}

void tst_overreads::walks_of_hives_cut_at_each_byte()
{
    for (const hive_kind kind : {hive_kind::software, hive_kind::user}) {
        hive_damage hive(intact_hive(kind));
        hive.add_last_cell("in a bin of its own").add_last_cell("and another one");
        const qsizetype whole = hive.bytes().size();
        for (qsizetype size = 0; size <= whole; ++size)
            walk(hive_damage(hive).truncate(size).bytes());
    }
}

void tst_overreads::walks_of_hives_with_a_byte_changed_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("value");
    for (const auto kind : {hive_kind::software, hive_kind::user}) {
        for (const int value : {0x00, 0xff})
            QTest::addRow("%s hive, each byte %02x", kind == hive_kind::user ? "user" : "software",
                          unsigned(value))
                << static_cast<int>(kind) << value;
    }
}

void tst_overreads::walks_of_hives_with_a_byte_changed()
{
    QFETCH(const int, kind);
    QFETCH(const int, value);
    const QByteArray hive = intact_hive(static_cast<hive_kind>(kind));
    for (qsizetype offset = 0; offset < hive.size(); ++offset) {
        const bool is_unused = offset >= 0x60 && offset < regf::first_bin;
        if (is_unused || hive.at(offset) == static_cast<char>(value))
            continue;
        QByteArray changed = hive;
        changed[offset] = static_cast<char>(value);
        put_checksum(changed);
        walk(changed);
    }
}

void tst_overreads::walks_of_hives_that_end_within_a_record_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<cut_operation>("cut");
    QTest::addColumn<qint64>("length");
    for (const walked_key &key : walked_keys()) {
        for (const cut_record &record : cut_records) {
            for (qint64 length = shortest_record; length <= record.most_bytes; length += cell_step)
                QTest::addRow("%s, %d bytes of %s", key.name, int(length), record.name)
                    << key.path << record.cut << length;
        }
    }
}

void tst_overreads::walks_of_hives_that_end_within_a_record()
{
    QFETCH(const QString, path);
    QFETCH(const cut_operation, cut);
    QFETCH(const qint64, length);
    hive_builder hive;
    fill(hive);
    hive_damage damage(hive.bytes());
    cut(damage, {hive.key(path.section(u'\\', 0, -2)), hive.key(path)}, length);
    walk(damage.bytes());
    QVERIFY(hive_reader(m_folder.filePath(u"hive"_s)).is_open());
}

void tst_overreads::walks_of_hives_that_end_within_the_root_key_data()
{
    QTest::addColumn<qint64>("length");
    for (qint64 length = shortest_record; length <= longest_cut_key; length += cell_step)
        QTest::addRow("%d bytes of it", int(length)) << length;
}

void tst_overreads::walks_of_hives_that_end_within_the_root_key()
{
    QFETCH(const qint64, length);
    hive_builder hive;
    fill(hive);
    hive_damage damage(hive.bytes());
    damage.add_last_cell(record_start(damage, hive.root().cells().key, length));
    damage.set_32(regf::base_block::root_cell, stored_offset(damage.last_cell()));
    walk(damage.bytes());

    const QString path = write_guarded(damage.bytes());
    time_walker walker;
    const int result = walker.start_registry_parse(path, u"\\"_s, false);
    guard_memory_of_size(0);
    QCOMPARE(result, 0);
    QCOMPARE(walker.current_key_timestamp, u"-11644473600"_s); // of a time that cannot be read
}

// libhivex goes on in its memory, but what the file says of the data cannot be checked any more.
void tst_overreads::walks_of_hives_that_are_emptied_meanwhile()
{
    hive_builder hive;
    hive.root().binary(u"big"_s, QByteArray(40000, 'x'));
    hive_damage damage(hive.bytes());
    cut_block_list(damage, {hive.root(), hive.root()}, shortest_record);
    const QString path = write_guarded(damage.bytes());
    emptying_walker walker(path);
    const int result = walker.start_registry_parse(path, u"\\"_s, true);
    guard_memory_of_size(0);
    QCOMPARE(result, 0);
    QCOMPARE(walker.data.size(), 1);
    QCOMPARE(walker.data.first().first, u"big"_s);
    QCOMPARE(walker.data.first().second, QByteArray());
}

TEST_MAIN(tst_overreads)
#include "tst_overreads.moc"

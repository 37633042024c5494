#include "base_block.h"
#include "files.h"
#include "guarded_memory.h"
#include "hive_damage.h"
#include "hive_generator.h"
#include "hive_reader.h"
#include "hive_walks.h"
#include "host_tabs.h"
#include "key_check.h"
#include "regf_format.h"
#include "test_main.h"

#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
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
    void walks_of_hives_cut_at_each_length();
    void walks_of_hives_with_a_byte_changed_data();
    void walks_of_hives_with_a_byte_changed();

private:
    void walk(const QByteArray &hive);

    QTemporaryDir m_folder;
};

namespace {

constexpr int hives_in_a_row = 100;

generated_hive hive_of_seed(quint32 seed)
{
    byte_choices choices(random_bytes(seed, 400));
    return generate_hive(choices, seed % 2 == 0 ? hive_kind::software : hive_kind::user);
}

QByteArray intact_hive(hive_kind kind)
{
    byte_choices choices{QByteArray()};
    return generate_hive(choices, kind).bytes;
}

} // namespace

void tst_overreads::initTestCase()
{
    guard_memory_of_size(4096);
    std::free(std::malloc(4096));
    guard_memory_of_size(0);
    if (guarded_allocations() == 0)
        QSKIP("Memory is guarded with glibc only");
}

void tst_overreads::walk(const QByteArray &hive)
{
    const QString path = m_folder.filePath(u"hive"_s);
    write_file(path, hive);
    guard_memory_of_size(static_cast<size_t>(hive.size()));
    walk_hive_in_every_way(path);
    for (const host_tab &tab : host_tabs())
        key_findings(path, {tab.key});
    guard_memory_of_size(0);
}

// A process of its own reads one byte beyond, on either side.
void tst_overreads::the_guard_is_in_place()
{
    for (const qptrdiff offset : {qptrdiff(4096), qptrdiff(-1)}) {
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGSEGV, SIG_DFL); // Qt Test would print where it happened
            guard_memory_of_size(4096);
            const volatile char *const memory = static_cast<char *>(std::malloc(4096));
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

void tst_overreads::walks_of_hives_cut_at_each_length()
{
    for (const hive_kind kind : {hive_kind::software, hive_kind::user}) {
        const QByteArray hive = intact_hive(kind);
        for (qsizetype size = 0; size <= hive.size(); size += 32)
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

TEST_MAIN(tst_overreads)
#include "tst_overreads.moc"

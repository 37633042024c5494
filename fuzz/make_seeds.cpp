#include "byte_choices.h"
#include "byte_fields.h"
#include "deletion_generator.h"
#include "evidence_volume.h"
#include "files.h"
#include "log_generator.h"
#include "sample_evidence.h"
#include "text_operations.h"

#include <QStringList>
#include <cstdio>
#include <exception>

// Writes the inputs that the fuzzers begin with, one folder for each fuzzer: make_seeds FOLDER

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr int choice_seeds = 40;
constexpr qsizetype choice_size = 600;

class seed_folder
{
public:
    explicit seed_folder(const QString &path) : m_path(path + u'/') { make_folder(path); }

    void add(const QByteArray &input) { write_file(m_path + QString::number(m_count++), input); }

private:
    QString m_path;
    int m_count = 0;
};

// The first byte is the kind of input, see fuzz_walkers.cpp.
void write_walker_seeds(const QString &path)
{
    seed_folder seeds(path);
    evidence_volume volume;
    test_support::add_sample_evidence(volume);
    seeds.add('r' + volume.software().bytes());
    for (const QString &account : volume.accounts())
        seeds.add('r' + volume.user(account).bytes());
    for (int seed = 0; seed < choice_seeds; ++seed)
        seeds.add((seed % 2 == 0 ? 's' : 'u') +
                  random_bytes(static_cast<quint32>(seed), choice_size));
    seeds.add("s");
    seeds.add("u");
}

void write_extraction_seeds(const QString &path)
{
    seed_folder seeds(path);
    for (int seed = 0; seed < choice_seeds; ++seed)
        seeds.add(random_bytes(static_cast<quint32>(seed), 3 * choice_size));
    seeds.add({});
}

// The first byte is the kind of input, see fuzz_replay.cpp.
void write_replay_seeds(const QString &path)
{
    seed_folder seeds(path);
    for (int seed = 0; seed < choice_seeds; ++seed) {
        const QByteArray bytes = random_bytes(static_cast<quint32>(seed), choice_size);
        byte_choices choices(bytes);
        const generated_logs made = generate_logs(choices);
        QByteArray lengths(8, '\0');
        put_32(lengths, 0, static_cast<quint32>(made.hive.size()));
        put_32(lengths, 4, static_cast<quint32>(made.logs.at(0).size()));
        seeds.add('c' + bytes);
        seeds.add('r' + lengths + made.hive + made.logs.at(0) + made.logs.at(1));
    }
}

// The first byte is the kind of input, see fuzz_deleted.cpp.
void write_deletion_seeds(const QString &path)
{
    seed_folder seeds(path);
    for (int seed = 0; seed < choice_seeds; ++seed) {
        const QByteArray bytes = random_bytes(static_cast<quint32>(seed), choice_size);
        byte_choices choices(bytes);
        seeds.add('c' + bytes);
        seeds.add('r' + generate_deletions(choices));
    }
}

// Texts that the helpers expect, so that the fuzzer gets past their first tests.
void write_text_seeds(const QString &path)
{
    static const QStringList texts{
        u"<CFNumber 0x1 [0x2]>{value = +123, type = kCFNumberSInt64Type}"_s,
        u"<CFBoolean 0x1 [0x2]>{value = true}"_s,
        u"<CFString 0x1 [0x2]>{contents = \"text\"}"_s,
        u"(\n    \"a (b)\",\n    \"c\"\n);"_s,
        u"\\U00e9 \\Ud83d\\Ude00"_s,
        u"2024-03-05 10:00:00.123 +0530"_s,
        u"20240305T100000Z"_s,
        u"Tue, 05 Mar 2024 10:00:00 GMT"_s,
        u"Mar 5, 2024, 10:00:00 AM UTC"_s,
        u"kMDItemLastUsedDate = 2024-03-05 10:00:00 +0000\nkMDItemUsedDates = (\n"
        u"    \"2024-03-05 10:00:00 +0000\"\n)"_s,
        u"13350000000000000"_s,
        u"-9223372036854775808"_s,
        u"1.50 KB"_s,
        u"/Users/ann/Library/x.SQLITE"_s,
        u"C:\\Program Files\\App\\app.exe"_s,
        u"HRZR_PGYFRFFVBA"_s,
        u"void plugin::operation(QString)"_s,
        u"20210315"_s,
        u"macOS 14.5"_s,
    };
    seed_folder seeds(path);
    for (int operation = 0; operation < text_operation_count; ++operation) {
        for (const QString &text : texts)
            seeds.add(char(operation) + text.toUtf8());
    }
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("usage: make_seeds FOLDER\n", stderr);
        return 2;
    }
    try {
        const QString folder = QString::fromLocal8Bit(argv[1]);
        write_walker_seeds(folder + u"/fuzz_walkers"_s);
        write_extraction_seeds(folder + u"/fuzz_extraction"_s);
        write_deletion_seeds(folder + u"/fuzz_deleted"_s);
        write_replay_seeds(folder + u"/fuzz_replay"_s);
        write_text_seeds(folder + u"/fuzz_texts"_s);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "make_seeds: %s\n", error.what());
        return 1;
    }
    return 0;
}

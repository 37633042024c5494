#include "artifact_list.h"
#include "base_block.h"
#include "files.h"
#include "fuzz_main.h"
#include "hive_generator.h"
#include "hive_walks.h"

#ifdef WITH_GUARDED_MEMORY
#include "guarded_memory.h"
#endif

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

// The first byte says what the rest is: choices for a generated hive, or the hive itself.
enum input_kind
{
    raw_hive = 'r',
    software_choices = 's'
};

QByteArray hive_of(const QByteArray &input)
{
    const QByteArray rest = input.mid(1);
    if (input.startsWith(raw_hive)) {
        QByteArray hive = rest;
        put_checksum(hive);
        return hive;
    }
    byte_choices choices(rest);
    const bool is_software = input.startsWith(software_choices);
    const hive_kind kind = is_software ? hive_kind::software : hive_kind::user;
    return generate_hive(choices, kind, described_artifacts()).bytes;
}

void guard(qsizetype hive_size)
{
#ifdef WITH_GUARDED_MEMORY
    guard_memory_of_size(static_cast<std::size_t>(hive_size));
#else
    Q_UNUSED(hive_size)
#endif
}

void walk(const QByteArray &input)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    const QByteArray hive = hive_of(input);
    write_file(path, hive);
    guard(hive.size());
    walk_hive_in_every_way(path);
    guard(0);
}

} // namespace

FUZZ_MAIN(walk)

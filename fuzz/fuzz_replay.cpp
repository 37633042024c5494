#include "base_block.h"
#include "byte_fields.h"
#include "fuzz_main.h"
#include "log_generator.h"
#include "replay_check.h"

using namespace evidence;
using namespace test_support;

namespace {

// The first byte says what the rest is: choices for a hive and two logs, or these files themselves,
// the lengths of the first two in front.
constexpr char raw_files = 'r';

QByteArray taken(QByteArray &bytes, qsizetype size)
{
    const QByteArray part = bytes.left(size);
    bytes.remove(0, part.size());
    return part;
}

generated_logs files_in(QByteArray bytes)
{
    const QByteArray lengths = taken(bytes, 8).leftJustified(8, '\0');
    QByteArray hive = taken(bytes, qsizetype(get_32(lengths, 0)));
    QByteArray log = taken(bytes, qsizetype(get_32(lengths, 4)));
    put_checksum(hive);
    put_checksum(log);
    put_checksum(bytes);
    return {hive, {log, bytes}};
}

void replay(const QByteArray &input)
{
    byte_choices choices(input.mid(1));
    const generated_logs files =
        input.startsWith(raw_files) ? files_in(input.mid(1)) : generate_logs(choices);
    check_replay(files.hive, files.logs);
}

} // namespace

FUZZ_MAIN(replay)

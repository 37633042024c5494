#include "base_block.h"
#include "deleted_check.h"
#include "deletion_generator.h"
#include "fuzz_main.h"

using namespace evidence;
using namespace test_support;

namespace {

// The first byte says what the rest is: choices for a hive, or the hive itself.
constexpr char raw_file = 'r';

QByteArray hive_in(QByteArray bytes)
{
    put_checksum(bytes);
    return bytes;
}

void look_for_deleted(const QByteArray &input)
{
    byte_choices choices(input.mid(1));
    check_deleted(input.startsWith(raw_file) ? hive_in(input.mid(1)) : generate_deletions(choices));
}

} // namespace

FUZZ_MAIN(look_for_deleted)

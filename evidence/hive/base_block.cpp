#include "base_block.h"

#include "byte_fields.h"
#include "hive_bins.h"
#include "regf_format.h"
#include "registry_data.h"

namespace evidence {

using namespace regf;

namespace {

constexpr quint32 sequence_number = 1; // equal in both places: nothing waits in a log
constexpr qint64 last_write_seconds = 1700000000;

} // namespace

void put_base_block(QByteArray &hive, qint64 root_cell, quint32 minor_version)
{
    hive.replace(0, 4, "regf");
    put_32(hive, base_block::primary_sequence, sequence_number);
    put_32(hive, base_block::secondary_sequence, sequence_number);
    put_64(hive, base_block::last_write,
           static_cast<quint64>(filetime_of_unix(last_write_seconds)));
    put_32(hive, base_block::major_version, 1);
    put_32(hive, base_block::minor_version, minor_version);
    put_32(hive, base_block::format, 1);
    put_32(hive, base_block::root_cell, stored_offset(root_cell));
    put_32(hive, base_block::bins_size, static_cast<quint32>(hive.size() - first_bin));
    put_32(hive, base_block::clustering_factor, 1);
    put_checksum(hive);
}

void put_checksum(QByteArray &hive)
{
    if (hive.size() < base_block::checksum + 4)
        return;
    quint32 sum = 0;
    for (qint64 offset = 0; offset < base_block::checksum; offset += 4)
        sum ^= get_32(hive, offset);
    if (sum == 0xffffffff)
        sum = 0xfffffffe;
    if (sum == 0)
        sum = 1;
    put_32(hive, base_block::checksum, sum);
}

} // namespace evidence

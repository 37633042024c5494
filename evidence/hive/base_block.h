#ifndef BASE_BLOCK_H
#define BASE_BLOCK_H

#include <QByteArray>

namespace evidence {

/// Fills the base block of a hive image whose bins are complete.
void put_base_block(QByteArray &hive, qint64 root_cell, quint32 minor_version);

/// Makes the base block's checksum right. An image too short to hold one stays as it is.
void put_checksum(QByteArray &hive);

} // namespace evidence

#endif

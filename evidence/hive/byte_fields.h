#ifndef BYTE_FIELDS_H
#define BYTE_FIELDS_H

#include <QByteArray>

namespace evidence {

/// Writes `value` in little-endian order at `offset`; throws std::out_of_range when a byte of the
/// field would lie outside `bytes`.
void put_16(QByteArray &bytes, qint64 offset, quint16 value);
void put_32(QByteArray &bytes, qint64 offset, quint32 value);
void put_64(QByteArray &bytes, qint64 offset, quint64 value);

/// Reads the little-endian number at `offset`; throws as the writers do.
quint16 get_16(const QByteArray &bytes, qint64 offset);
quint32 get_32(const QByteArray &bytes, qint64 offset);
quint64 get_64(const QByteArray &bytes, qint64 offset);

} // namespace evidence

#endif

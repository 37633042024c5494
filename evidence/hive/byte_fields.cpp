#include "byte_fields.h"

#include <QtEndian>
#include <stdexcept>
#include <string>

namespace evidence {

namespace {

void require_field(const QByteArray &bytes, qint64 offset, qint64 size)
{
    if (offset < 0 || offset > bytes.size() - size)
        throw std::out_of_range("field at " + std::to_string(offset) + " lies outside " +
                                std::to_string(bytes.size()) + " bytes");
}

template<typename number>
void put(QByteArray &bytes, qint64 offset, number value)
{
    require_field(bytes, offset, sizeof(number));
    qToLittleEndian(value, bytes.data() + offset);
}

template<typename number>
number get(const QByteArray &bytes, qint64 offset)
{
    require_field(bytes, offset, sizeof(number));
    return qFromLittleEndian<number>(bytes.constData() + offset);
}

} // namespace

void put_16(QByteArray &bytes, qint64 offset, quint16 value)
{
    put(bytes, offset, value);
}

void put_32(QByteArray &bytes, qint64 offset, quint32 value)
{
    put(bytes, offset, value);
}

void put_64(QByteArray &bytes, qint64 offset, quint64 value)
{
    put(bytes, offset, value);
}

quint16 get_16(const QByteArray &bytes, qint64 offset)
{
    return get<quint16>(bytes, offset);
}

quint32 get_32(const QByteArray &bytes, qint64 offset)
{
    return get<quint32>(bytes, offset);
}

quint64 get_64(const QByteArray &bytes, qint64 offset)
{
    return get<quint64>(bytes, offset);
}

} // namespace evidence

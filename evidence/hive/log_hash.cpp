#include "log_hash.h"

#include "byte_fields.h"

namespace evidence {

namespace {

constexpr quint64 seed = 0x82ef4d887a4e55c5;

/// Both halves of the hash in one number, as it is returned.
quint64 mixed(quint64 state, quint32 word)
{
    const auto rotate = [](quint32 number, int bits) {
        return (number << bits) | (number >> (32 - bits));
    };
    quint32 low = static_cast<quint32>(state & 0xffffffff) + word;
    quint32 high = static_cast<quint32>(state >> 32) ^ low;
    low = rotate(low, 20) + high;
    high = rotate(high, 9) ^ low;
    low = rotate(low, 27) + high;
    high = rotate(high, 19);
    return (static_cast<quint64>(high) << 32) + low;
}

} // namespace

quint64 log_hash(const QByteArray &bytes)
{
    quint64 state = seed;
    for (qint64 offset = 0; offset < bytes.size(); offset += 4)
        state = mixed(state, get_32(bytes, offset));
    return mixed(mixed(state, 0x80), 0);
}

} // namespace evidence

#include "marvin_hash.h"

#include <QtEndian>

namespace {

constexpr quint32 rotated_left(quint32 number, int bits)
{
    return number << bits | number >> (32 - bits);
}

struct marvin_state
{
    quint32 low = 0x7a4e55c5;
    quint32 high = 0x82ef4d88;

    void add(quint32 word)
    {
        low += word;
        high ^= low;
        low = rotated_left(low, 20) + high;
        high = rotated_left(high, 9) ^ low;
        low = rotated_left(low, 27) + high;
        high = rotated_left(high, 19);
    }
};

} // namespace

quint64 marvin_hash(QByteArrayView bytes)
{
    constexpr quint32 end_without_rest = 0x80;
    marvin_state state;
    for (qsizetype offset = 0; offset < bytes.size(); offset += qsizetype(sizeof(quint32)))
        state.add(qFromLittleEndian<quint32>(bytes.data() + offset));
    state.add(end_without_rest);
    state.add(0);
    return quint64(state.high) << 32 | state.low;
}

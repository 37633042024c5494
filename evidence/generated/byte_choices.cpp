#include "byte_choices.h"

#include <QRandomGenerator>
#include <algorithm>

namespace evidence {

namespace {

/// Longest run of bytes taken at once; long data repeats it instead of using the string up.
constexpr qsizetype longest_run = 24;

} // namespace

quint8 byte_choices::byte()
{
    return is_used_up() ? 0 : static_cast<quint8>(m_bytes.at(m_position++));
}

quint64 byte_choices::up_to(quint64 most)
{
    quint64 number = 0;
    for (quint64 reach = most; reach > 0; reach >>= 8)
        number = number << 8 | byte();
    return most == ~quint64(0) ? number : number % (most + 1);
}

qint64 byte_choices::between(qint64 least, qint64 most)
{
    const quint64 span = static_cast<quint64>(most) - static_cast<quint64>(least);
    return static_cast<qint64>(static_cast<quint64>(least) + up_to(span));
}

bool byte_choices::one_in(int chances)
{
    return between(0, chances - 1) == chances - 1;
}

byte_choices byte_choices::part(qsizetype size)
{
    byte_choices taken(m_bytes.mid(m_position, size));
    m_position = std::min(m_position + size, m_bytes.size());
    return taken;
}

QByteArray byte_choices::bytes(qsizetype size)
{
    const QByteArray run = m_bytes.mid(m_position, std::min(size, longest_run));
    m_position += run.size();
    if (run.isEmpty())
        return QByteArray(size, '\0');
    return run.repeated(size / run.size() + 1).left(size);
}

QByteArray random_bytes(quint32 seed, qsizetype size)
{
    QRandomGenerator generator(seed);
    QByteArray bytes;
    bytes.reserve(size);
    while (bytes.size() < size)
        bytes.append(static_cast<char>(generator.generate() & 0xff));
    return bytes;
}

} // namespace evidence

#ifndef BYTE_CHOICES_H
#define BYTE_CHOICES_H

#include <QByteArray>
#include <QList>

namespace evidence {

/// Reads choices off a byte string, front to back, so that whoever makes the string (a fuzzer, or a
/// random generator with a fixed seed) decides what is generated from it. A used-up string goes on
/// giving the first possibility of each choice.
class byte_choices
{
public:
    explicit byte_choices(const QByteArray &bytes) : m_bytes(bytes) {}

    /// Whether all bytes were read.
    bool is_used_up() const { return m_position >= m_bytes.size(); }

    /// The next byte; 0 when used up.
    quint8 byte();

    /// A number of up to eight bytes, as many as it takes to reach `most`, from 0 on.
    quint64 up_to(quint64 most);

    /// A number from `least` to `most`, both included.
    qint64 between(qint64 least, qint64 most);

    /// True for one of `chances` possibilities; false when used up.
    bool one_in(int chances);

    /// One of the elements, of which there is at least one.
    template<typename type>
    const type &pick(const QList<type> &elements)
    {
        return elements.at(between(0, elements.size() - 1));
    }

    /// Choices of their own from the next `size` bytes, or as many as are left.
    byte_choices part(qsizetype size);

    /// The next bytes, repeated from their start until there are `size`; zeros when used up.
    QByteArray bytes(qsizetype size);

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
};

/// Bytes without pattern that are the same for the same seed on every machine.
QByteArray random_bytes(quint32 seed, qsizetype size);

} // namespace evidence

#endif

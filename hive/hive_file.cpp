#include "hive_file.h"

#include "regf_format.h"

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace {

/// Cells are designated by 32-bit offsets.
constexpr qint64 longest_hive = qint64(1) << 32;

/// The cells of one key's values lie close together, mostly in the order of its list, so one
/// reading around the wanted cell brings all cells of an application. Keys lie in any order, so a
/// longer window would copy bytes that nobody needs.
constexpr qint64 bytes_before = 0x100;
constexpr qint64 bytes_behind = 0x600;

/// Returns how many bytes were read: fewer where the file ends, or cannot be read on.
qint64 read_at(int file, char *destination, qint64 length, qint64 offset)
{
    qint64 done = 0;
    while (done < length) {
        const ssize_t part =
            pread(file, destination + done, static_cast<size_t>(length - done), offset + done);
        if (part > 0)
            done += part;
        else if (part == 0 || errno != EINTR)
            break;
    }
    return done;
}

} // namespace

bool hive_file::open(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > longest_hive)
        return false;
    m_length = info.size();
    m_file.setFileName(path);
    m_window.clear();
    return m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

void hive_file::close()
{
    m_file.close();
    m_length = 0;
}

bool hive_file::holds(quint64 offset, qint64 length) const
{
    return static_cast<qint64>(offset) + length <= m_length;
}

quint16 hive_file::number_16(qint64 offset)
{
    const QByteArrayView bytes = bytes_at(offset, sizeof(quint16));
    return bytes.size() < qsizetype(sizeof(quint16)) ? quint16(0)
                                                     : qFromLittleEndian<quint16>(bytes.data());
}

quint32 hive_file::number_32(qint64 offset)
{
    const QByteArrayView bytes = bytes_at(offset, sizeof(quint32));
    return bytes.size() < qsizetype(sizeof(quint32)) ? 0 : qFromLittleEndian<quint32>(bytes.data());
}

qint64 hive_file::cell_at(qint64 offset)
{
    return regf::first_bin + qint64(number_32(offset));
}

qint64 hive_file::cell_of(const char *stored_offset)
{
    return regf::first_bin + qint64(qFromLittleEndian<quint32>(stored_offset));
}

QByteArrayView hive_file::bytes_at(qint64 offset, qint64 length)
{
    if (offset < m_window_offset || offset + length > m_window_offset + m_window.size())
        read_window(offset, length);
    const qint64 begin = std::min(offset - m_window_offset, qint64(m_window.size()));
    return QByteArrayView(m_window).sliced(begin).first(
        std::min(length, qint64(m_window.size()) - begin));
}

void hive_file::read_window(qint64 offset, qint64 length)
{
    m_window_offset = std::max(offset - bytes_before, qint64(0));
    m_window.resize(offset - m_window_offset + length + bytes_behind);
    m_window.truncate(read_at(m_file.handle(), m_window.data(), m_window.size(), m_window_offset));
}

#ifndef HIVE_FILE_H
#define HIVE_FILE_H

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QString>

/// The file of a hive, for the checks that libhivex does not make before it reads. Readings stop
/// where the file ends or cannot be read.
class hive_file
{
public:
    /// Opens the file at `path` for reading. False when that fails, when the file is longer than
    /// the offsets in a hive reach, and for anything but a regular file, since opening a FIFO or
    /// a device would block for ever.
    bool open(const QString &path);

    /// Closes the file; without effect when none is open.
    void close();

    /// Whether a file is open.
    bool is_open() const { return m_file.isOpen(); }

    /// Bytes of the file when it was opened; 0 before, and after close().
    qint64 length() const { return m_length; }

    /// Whether `length` bytes from `offset` on lie inside the file.
    bool holds(quint64 offset, qint64 length) const;

    /// The `length` bytes from `offset` on, or as many of them as there are. Valid until the next
    /// reading.
    QByteArrayView bytes_at(qint64 offset, qint64 length);

    /// The unsigned number that is stored at `offset`; 0 where the file ends before.
    quint16 number_16(qint64 offset);
    quint32 number_32(qint64 offset);

    /// The file offset of the cell whose stored offset stands at `offset`.
    qint64 cell_at(qint64 offset);

    /// The file offset of the cell that `stored_offset`, 4 bytes of the hive, designates.
    static qint64 cell_of(const char *stored_offset);

private:
    void read_window(qint64 offset, qint64 length);

    QFile m_file;
    qint64 m_length = 0;
    QByteArray m_window; ///< the part of the file that was read last
    qint64 m_window_offset = 0;
};

#endif

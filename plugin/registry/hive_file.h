#ifndef HIVE_FILE_H
#define HIVE_FILE_H

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QList>
#include <QString>

/// The fixed part of a record that ends with a name.
struct named_record
{
    qint64 length;             ///< up to the name, the cell's size included
    qint64 name_length_offset; ///< of the name's length in bytes, a 16-bit number
};

/// The file of the hive that is being walked, for the checks that libhivex leaves out. While it is
/// closed nothing is known of the hive, and every check passes.
class hive_file
{
public:
    /// Opens the file at `path` for reading. False when that fails, when the file is longer than
    /// the offsets in a hive reach, and for anything but a regular file: to open a FIFO or a
    /// device would block for ever.
    bool open(const QString &path);

    void close();

    bool is_open() const { return m_file.isOpen(); }

    /// Bytes of the file when it was opened.
    qint64 length() const { return m_length; }

    /// Whether `length` bytes from `offset` on lie inside the file.
    bool holds(quint64 offset, qint64 length) const;

    /// How long the record at `offset` says that its name is, in bytes; 0 outside of the file.
    qint64 name_length(quint64 offset, const named_record &record);

    /// Length in bytes of the list of blocks that libhivex reads for value data of
    /// `declared_length` bytes in the cell at `offset`: 0 when the data fit into the cell or the
    /// cell is no big-data record, negative when the record or the list leaves the file or the
    /// record cannot be read.
    qint64 block_list_length(quint64 offset, qint64 declared_length);

    /// How many lists of the subkeys of the key at `node` stand below indexes (ri), each as often
    /// as it is listed; 0 when the key has a single list. Counts no further than `most`.
    qint64 indexed_lists(quint64 node, qint64 most);

private:
    QList<qint64> lists_below(qint64 list, qint64 most);
    QList<qint64> cells_listed_at(qint64 offset, qint64 count);
    QByteArrayView bytes_at(qint64 offset, qint64 length);
    void read_window(qint64 offset, qint64 length);

    QFile m_file;
    qint64 m_length = 0;
    QByteArray m_window; ///< the part of the file that was read last
    qint64 m_window_offset = 0;
};

#endif

#ifndef HIVE_IMAGE_H
#define HIVE_IMAGE_H

#include "page_batch.h"

#include <QByteArray>

/// The bytes of a hive file while logs are applied to them.
class hive_image
{
public:
    /// Takes the bytes of the file, which has a base block at least. Bytes up to `told_length` are
    /// bins that the hive had before.
    hive_image(QByteArray bytes, qint64 told_length);

    /// Whether the bins would have a part afterwards that stands neither in the file nor in the
    /// pages: any part of bins that the hive had before, or one behind these that is longer than a
    /// bin. Bins that are new begin in a page of the log.
    bool would_have_hole(const page_batch &batch) const;

    /// Brings the pages in. Bins that grow are filled with zeros where no page is.
    void apply(const page_batch &batch);

    /// The file after some batches. Its base block gets the fields of a log's one, but for the file
    /// type and what is given here, and a right checksum. Bytes behind the last bin stay.
    QByteArray finished(const QByteArray &fields, quint32 sequence, quint32 flags) &&;

    /// The file as it came, if no batch was applied.
    QByteArray bytes() && { return std::move(m_bytes); }

private:
    qint64 longest_hole_from(qint64 offset) const;

    QByteArray m_bytes;
    qint64 m_told_length;
    quint32 m_bins_size = 0;
};

#endif

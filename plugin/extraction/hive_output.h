#ifndef HIVE_OUTPUT_H
#define HIVE_OUTPUT_H

#include <QStringList>

/// Counts what one table has got from one hive, and limits it. Rows may repeat what stands in the
/// hive once, such as the names of an icon in each list that hides it. A forged hive of a few
/// megabytes could fill a disk that way. The limit is far above anything that Windows writes.
class hive_output
{
public:
    /// How much a table takes.
    struct limit
    {
        qint64 rows = 5000000;
        qint64 text_bytes = qint64(1) << 30; ///< of all columns, in UTF-8 as tables keep them
        qint64 certain_rows = 1000000;       ///< that are taken beyond both
    };

    /// What a table takes from a hive of `length` bytes at most: as much as stands above, and
    /// whatever a hive gives that repeats nothing but the names of keys.
    static limit limit_for(qint64 length);

    /// `repeated_columns` end every row.
    explicit hive_output(const limit &most, const QStringList &repeated_columns = {});

    /// Counts a row by its other columns. False when it goes beyond the limit, and then for every
    /// further one; `is_certain` rows are taken beyond it, as many as the limit says.
    bool takes(const QStringList &columns, bool is_certain = false);

    /// The limit that was given.
    const limit &most() const { return m_limit; }

private:
    limit m_limit;
    qint64 m_repeated_bytes; ///< of each row
    qint64 m_rows = 0;
    qint64 m_text_bytes = 0;
    qint64 m_certain_rows = 0; ///< beyond the limit
    bool m_is_full = false;
};

#endif

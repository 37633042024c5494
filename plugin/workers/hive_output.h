#ifndef HIVE_OUTPUT_H
#define HIVE_OUTPUT_H

#include <QStringList>

/// What one table has got from one hive. Rows may repeat texts of the hive, such as the name of a
/// key, so that a few megabytes could fill a disk: there is an end to it, far above anything that
/// Windows writes.
class hive_output
{
public:
    struct limit
    {
        qint64 rows = 5000000;
        qint64 text_bytes = qint64(1) << 30; ///< of all columns, in UTF-8 as tables keep them
    };

    /// `repeated_columns` end every row.
    explicit hive_output(const limit &most, const QStringList &repeated_columns = {});

    /// Counts a row by its other columns. False when it goes beyond the limit, and then for every
    /// further one; `is_certain` rows are counted and taken all the same.
    bool takes(const QStringList &columns, bool is_certain = false);

    const limit &most() const { return m_limit; }

private:
    limit m_limit;
    qint64 m_repeated_bytes; ///< of each row
    qint64 m_rows = 0;
    qint64 m_text_bytes = 0;
    bool m_is_full = false;
};

#endif

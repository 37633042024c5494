#ifndef ROW_CURSOR_H
#define ROW_CURSOR_H

#include <vector>

#include "opened_result.h"

namespace results {

/// The rows of one table. They are read in batches, between which no lock is held; memory does not
/// grow with the table. The result must outlive the cursor.
class row_cursor : public row_source
{
public:
    /// All rows, in the order of their ids.
    row_cursor(const opened_result &result, const table_layout &layout);
    /// The rows of these ids, in this order. A row that is gone meanwhile is left out.
    row_cursor(const opened_result &result, const table_layout &layout, std::vector<qint64> ids);

    QString name() const override { return m_layout.name(); }
    QString title() const override { return m_layout.title(); }
    const QList<column> &columns() const override { return m_layout.columns(); }
    const row *next() override;
    QString failure() const override { return m_failure; }
    const table_layout &layout() const { return m_layout; }

private:
    void read_batch();
    void read_following();
    void read_listed();
    row &next_free_row();
    void read_row();
    bool is_batch_full() const;
    void note_failure();

    table_layout m_layout;
    sqlite_statement m_statement;
    bool m_is_listed = false;
    std::vector<qint64> m_ids;
    size_t m_next_id = 0;
    qint64 m_first_of_batch = 0;
    bool m_is_finished = false;
    std::vector<row> m_batch; ///< rows are used again, so that reading takes no new memory
    size_t m_batch_size = 0;
    size_t m_batch_bytes = 0;
    size_t m_next = 0;
    QString m_failure;
};

} // namespace results

#endif

#ifndef TEXT_TABLE_H
#define TEXT_TABLE_H

#include "row_writer.h"

/// Writes rows for people: one line a row, columns side by side, long cells cut with a "…". What
/// could steer the terminal is escaped. Where the columns do not fit side by side, each cell has a
/// line.
class text_table : public results::row_writer
{
public:
    /// Lines are no longer than `width`; 0: as long as the cells are, each cut after 100 columns.
    text_table(results::text_sink sink, int width) : m_out(std::move(sink)), m_width(width) {}

    bool begin(const results::row_source &source, const QList<int> &places) override;
    bool write(const results::row &of) override;
    bool finish() override;

private:
    struct shown_column
    {
        int place;
        std::string name;
        bool is_number;
        int width;
    };
    using line_cells = std::vector<std::string>;

    line_cells cells_of(const results::row &of) const;
    void measure();
    void fit();
    bool end_source();
    void begin_rows();
    void append_line(const line_cells &cells);
    void append_list(const line_cells &cells);
    void append_cells(const line_cells &cells);
    int total_width(int most) const;

    results::buffered_text m_out;
    int m_width;
    std::vector<shown_column> m_columns;
    std::vector<line_cells> m_first_rows; ///< by which the columns are measured
    bool m_is_begun = false;
    bool m_is_list = false;
    bool m_has_source = false;
    qint64 m_rows = 0;
};

#endif

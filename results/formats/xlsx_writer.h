#ifndef XLSX_WRITER_H
#define XLSX_WRITER_H

#include <QString>

#include <memory>

#include "row_writer.h"

namespace results {

/// A workbook with one sheet a source: times as dates, frozen headers, filters. Texts are texts to
/// a spreadsheet, whatever they begin with. Memory does not grow with the rows.
class xlsx_writer : public row_writer
{
public:
    /// A workbook at `file`, which is made when finish() is called. A sheet takes `most_rows` rows
    /// besides the header; more go on in a further sheet.
    explicit xlsx_writer(const QString &file, qint64 most_rows = most_rows_of_sheet);
    ~xlsx_writer() override;

    bool begin(const row_source &source, const QList<int> &places) override;
    bool write(const row &of) override;
    bool finish() override;

    /// What does not stand in the workbook as it stands in the result.
    QStringList remarks() const;
    /// Why the workbook could not be made.
    QString failure() const;

    /// What Excel takes, without the header.
    static constexpr qint64 most_rows_of_sheet = 1'048'575;

private:
    struct workbook;

    QString next_sheet_name();
    bool begin_sheet();
    void end_sheet();
    void write_cell(int column, const row &of, int place);
    void write_text(int column, const cell &value);

    std::unique_ptr<workbook> m_book;
    qint64 m_most_rows;
};

} // namespace results

#endif

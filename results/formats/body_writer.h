#ifndef BODY_WRITER_H
#define BODY_WRITER_H

#include "row_writer.h"

namespace results {

/// A body file, as mactime of The Sleuth Kit reads it, from the rows of a time_line: one line a
/// time, with what it tells and the row in the name. mactime knows no times before 1970, so these
/// are left out and counted.
class body_writer : public row_writer
{
public:
    explicit body_writer(text_sink sink) : m_out(std::move(sink)) {}

    bool begin(const row_source & /*source*/, const QList<int> & /*places*/) override
    {
        return true;
    }
    bool write(const row &of) override;
    bool finish() override { return m_out.flush(); }

    /// How many times were left out.
    qint64 left_out() const { return m_left_out; }

private:
    buffered_text m_out;
    qint64 m_left_out = 0;
};

} // namespace results

#endif

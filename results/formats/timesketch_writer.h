#ifndef TIMESKETCH_WRITER_H
#define TIMESKETCH_WRITER_H

#include "row_writer.h"

namespace results {

/// JSON Lines as Timesketch imports them, from the rows of a time_line: "message", "datetime",
/// "timestamp" (microseconds), "timestamp_desc" and "data_type", and what is known of the row.
class timesketch_writer : public row_writer
{
public:
    explicit timesketch_writer(text_sink sink) : m_out(std::move(sink)) {}

    bool begin(const row_source & /*source*/, const QList<int> & /*places*/) override
    {
        return true;
    }
    bool write(const row &of) override;
    bool finish() override { return m_out.flush(); }

private:
    buffered_text m_out;
};

} // namespace results

#endif

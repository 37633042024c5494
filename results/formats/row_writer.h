#ifndef ROW_WRITER_H
#define ROW_WRITER_H

#include <QList>

#include <functional>
#include <string_view>

#include "column.h"

namespace results {

/// Takes what a writer has made; false if it cannot be taken, after which nothing more is written.
using text_sink = std::function<bool(std::string_view)>;

/// Writes rows of one source after another in some format.
class row_writer
{
public:
    row_writer() = default;
    virtual ~row_writer() = default;
    Q_DISABLE_COPY_MOVE(row_writer)

    /// Begins with the rows of a source, of which the columns at `places` are written.
    virtual bool begin(const row_source &source, const QList<int> &places) = 0;
    /// Writes a row of that source.
    virtual bool write(const row &of) = 0;
    /// Ends the last source.
    virtual bool finish() = 0;
};

/// Hands a text on in large parts.
class buffered_text
{
public:
    explicit buffered_text(text_sink sink) : m_sink(std::move(sink)) {}

    /// The text that is not handed on yet, to append to.
    std::string &text() { return m_text; }
    /// Hands the text on if it is large.
    bool flush_large() { return m_text.size() < large || flush(); }
    /// Hands all of the text on.
    bool flush()
    {
        const bool is_taken = m_text.empty() || m_sink(m_text);
        m_text.clear();
        return is_taken;
    }

private:
    static constexpr size_t large = 256 << 10;

    text_sink m_sink;
    std::string m_text;
};

} // namespace results

#endif

#ifndef RESULT_OUTPUT_H
#define RESULT_OUTPUT_H

#include <memory>
#include <optional>

#include "exit_code.h"
#include "page_output.h"
#include "result_options.h"
#include "row_writer.h"

/// Standard output as the commands that look at results fill it.
class result_output
{
public:
    /// A `width` of nothing is that of the terminal.
    result_output(show_options::form format, std::optional<int> width, bool may_page);

    /// The writer of the format. `csv_columns` are those of all sources.
    results::row_writer &begin(const QStringList &csv_columns);

    /// Hands on what is left. The exit code for it and for what was said before.
    exit_code finish(exit_code code);

private:
    bool write(std::string_view text);

    show_options::form m_format;
    std::optional<int> m_width;
    page_output m_page;
    bool m_escapes = false; ///< whether CSV goes to a terminal
    std::unique_ptr<results::row_writer> m_writer;
};

#endif

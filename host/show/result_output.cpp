#include "result_output.h"

#include "characters.h"
#include "console.h"
#include "csv_writer.h"
#include "json_writer.h"
#include "text_table.h"

using namespace Qt::StringLiterals;

namespace {

/// CSV as it may go to a terminal, line by line.
std::string escaped_lines(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        result += results::escaped(line);
        if (end == std::string_view::npos)
            break;
        result += '\n';
        text.remove_prefix(end + 1);
    }
    return result;
}

int width_for(const std::optional<int> &wanted)
{
    if (wanted)
        return *wanted;
    const auto terminal = size_of_terminal(stdout);
    return terminal ? terminal->columns : 0;
}

} // namespace

result_output::result_output(show_options::form format, std::optional<int> width, bool may_page)
    : m_format(format),
      m_width(width),
      m_page(may_page),
      m_escapes(format == show_options::form::csv && size_of_terminal(stdout))
{
}

bool result_output::write(std::string_view text)
{
    return m_page.write(m_escapes ? escaped_lines(text) : std::string(text));
}

results::row_writer &result_output::begin(const QStringList &csv_columns)
{
    const auto sink = [this](std::string_view text) { return write(text); };
    switch (m_format) {
    case show_options::form::text:
        m_writer = std::make_unique<text_table>(sink, width_for(m_width));
        break;
    case show_options::form::csv:
        m_writer = std::make_unique<results::csv_writer>(sink, csv_columns);
        break;
    case show_options::form::json_lines:
        m_writer = std::make_unique<results::json_writer>(sink);
        break;
    }
    return *m_writer;
}

exit_code result_output::finish(exit_code code)
{
    m_writer->finish();
    m_page.close();
    if (!m_page.has_failed())
        return code;
    print_notice(u"the output cannot be written as a whole"_s);
    return exit_run_failed;
}

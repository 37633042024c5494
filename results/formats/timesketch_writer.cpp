#include "timesketch_writer.h"

#include "json_writer.h"
#include "plain_text.h"
#include "time_line.h"
#include "time_texts.h"

namespace results {

namespace {

struct copied_member
{
    const char *before;
    time_line_column::place place;
};

constexpr copied_member copied_members[] = {
    {",\"precision\":", time_line_column::precision},
    {",\"subject\":", time_line_column::subject},
    {",\"system_account\":", time_line_column::account},
    {",\"row_table\":", time_line_column::table},
    {",\"row_id\":", time_line_column::row_id},
    {",\"detail\":", time_line_column::detail},
    {",\"source_file\":", time_line_column::source_file},
    {",\"source_count_name\":", time_line_column::source},
};

std::string text_at(const row &of, int place)
{
    std::string scratch;
    return std::string(plain_text(cell_at(of, place), scratch));
}

/// The form that Timesketch expects: with an offset in place of "Z".
std::string date_time(qint64 unix_seconds)
{
    std::string text = utc_text(unix_seconds);
    text.pop_back();
    return text + "+00:00";
}

} // namespace

bool timesketch_writer::write(const row &of)
{
    std::string &out = m_out.text();
    const qint64 seconds = cell_at(of, time_line_column::time).integer();
    const std::string told = text_at(of, time_line_column::event);
    out += "{\"message\":";
    append_json_string(out, told + ": " + text_at(of, time_line_column::subject));
    out += ",\"datetime\":";
    append_json_string(out, date_time(seconds));
    // As digits, because microseconds of forged times do not fit into 64 bits.
    out += ",\"timestamp\":" + std::to_string(seconds) + "000000,\"timestamp_desc\":";
    append_json_string(out, told);
    out += ",\"data_type\":";
    append_json_string(out,
                       "windows:installed_applications:" + text_at(of, time_line_column::table));
    for (const copied_member &member : copied_members) {
        out += member.before;
        append_json_value(out, cell_at(of, member.place));
    }
    out += "}\n";
    return m_out.flush_large();
}

} // namespace results

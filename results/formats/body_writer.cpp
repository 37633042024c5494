#include "body_writer.h"

#include "characters.h"
#include "plain_text.h"
#include "time_line.h"

namespace results {

namespace {

/// A text of one line without "|", which ends a field.
std::string field_text(const row &of, int place)
{
    std::string scratch;
    std::string text = escaped(plain_text(cell_at(of, place), scratch));
    for (size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at))
        text.replace(at, 1, "\\x7c");
    return text;
}

/// What mactime shows: "[table:row] subject (event, account)".
std::string name_of(const row &of)
{
    const std::string account = field_text(of, time_line_column::account);
    return "[" + field_text(of, time_line_column::table) + ":" +
           field_text(of, time_line_column::row_id) + "] " +
           field_text(of, time_line_column::subject) + " (" +
           field_text(of, time_line_column::event) + (account.empty() ? "" : ", " + account) + ")";
}

} // namespace

bool body_writer::write(const row &of)
{
    const qint64 seconds = cell_at(of, time_line_column::time).integer();
    if (seconds < 0) {
        ++m_left_out;
        return true;
    }
    const std::string_view letter = cell_at(of, time_line_column::letter).text();
    const auto time_for = [&](std::string_view field) {
        return "|" + std::to_string(field == letter ? seconds : 0);
    };
    std::string &out = m_out.text();
    // MD5|name|inode|mode|UID|GID|size|atime|mtime|ctime|crtime
    out += "0|" + name_of(of) + "|0|0|0|0|0" + time_for("a") + time_for("m") + "|0" +
           time_for("b") + "\n";
    return m_out.flush_large();
}

} // namespace results

#include "xlsx_writer.h"

#include <QFile>
#include <QStringList>

#include <utility>

#include <xlsxwriter.h>

#include "characters.h"
#include "plain_text.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

constexpr size_t most_units_of_cell = 32'767;         // of UTF-16, by Excel
constexpr qint64 most_exact_number = qint64(1) << 53; // cells hold numbers as doubles
constexpr qint64 first_date = -2'203'891'200; // 1900-03-01, before which Excel miscounts the days
constexpr qint64 last_date = 253'402'300'799; // the end of the year 9999

/// Days since the last one of 1899, as Excel counts.
double day_number(qint64 unix_seconds)
{
    constexpr double day_of_1970 = 25'569;
    return double(unix_seconds) / 86'400 + day_of_1970;
}

/// Excel reads "_x0041_" as a character, so the underscore of such a text is written that way
/// itself. Characters that XML cannot have become U+FFFD.
std::string sheet_text(std::string_view text, size_t &units)
{
    std::string result;
    const char *at = text.data();
    const char *const end = at + text.size();
    while (at != end) {
        const char *const begin = at;
        const char32_t character = next_character(at, end);
        const size_t more = character >= 0x1'0000 ? 2 : 1;
        if (units + more > most_units_of_cell)
            break;
        units += more;
        if (character == U'_' && at != end && *at == 'x')
            result += "_x005F_";
        else if (character == 0 || character == 0xfffe || character == 0xffff)
            result += "\xef\xbf\xbd";
        else
            result.append(begin, at);
    }
    if (at != end)
        units = most_units_of_cell + 1;
    return result;
}

/// A name that a sheet may have: 31 characters at most, some of which are not allowed.
QString sheet_name(QString table, int part)
{
    for (QChar &character : table) {
        if (u"[]:*?/\\'"_s.contains(character) || !character.isPrint())
            character = u'_';
    }
    const QString number = part == 1 ? QString() : u" (%1)"_s.arg(part);
    return table.left(31 - number.size()) + number;
}

} // namespace

struct xlsx_writer::workbook
{
    std::string file;
    lxw_workbook *book = nullptr;
    lxw_worksheet *sheet = nullptr;
    lxw_format *header = nullptr;
    lxw_format *date = nullptr;
    const row_source *source = nullptr;
    QString table;
    QList<column> columns;
    QList<int> places;
    int part = 0;
    QString name; ///< of the table's sheet that is being written
    lxw_row_t line = 0;
    qint64 cells_cut = 0;
    qint64 cells_replaced = 0;
    QStringList remarks;
    QString failure;
};

xlsx_writer::xlsx_writer(const QString &file, qint64 most_rows)
    : m_book(std::make_unique<workbook>()), m_most_rows(most_rows)
{
    m_book->file = QFile::encodeName(file).toStdString();
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.use_zip64 = LXW_TRUE;
    m_book->book = workbook_new_opt(m_book->file.c_str(), &options);
    if (m_book->book == nullptr) {
        m_book->failure = u"there is no memory for a workbook"_s;
        return;
    }
    m_book->header = workbook_add_format(m_book->book);
    format_set_bold(m_book->header);
    m_book->date = workbook_add_format(m_book->book);
    format_set_num_format(m_book->date, "yyyy-mm-dd hh:mm:ss");
}

xlsx_writer::~xlsx_writer()
{
    if (m_book->book != nullptr)
        lxw_workbook_free(m_book->book);
}

bool xlsx_writer::begin(const row_source &source, const QList<int> &places)
{
    if (m_book->book == nullptr)
        return false;
    end_sheet();
    m_book->table = source.name();
    m_book->columns = source.columns();
    m_book->places = places;
    m_book->part = 0;
    m_book->name.clear();
    return begin_sheet();
}

/// The name of the next sheet of the table that no other table has taken.
QString xlsx_writer::next_sheet_name()
{
    QString name;
    do {
        name = sheet_name(m_book->table, ++m_book->part);
    } while (workbook_get_worksheet_by_name(m_book->book, name.toUtf8().constData()) != nullptr);
    return name;
}

bool xlsx_writer::begin_sheet()
{
    const QString before = std::exchange(m_book->name, next_sheet_name());
    const QString name = m_book->name;
    m_book->sheet = workbook_add_worksheet(m_book->book, name.toUtf8().constData());
    m_book->line = 0;
    if (m_book->sheet == nullptr) {
        m_book->failure = u"no sheet %1 can be made"_s.arg(name);
        return false;
    }
    worksheet_freeze_panes(m_book->sheet, 1, 0);
    for (int i = 0; i < int(m_book->places.size()); ++i) {
        const column &of = m_book->columns[m_book->places[i]];
        const double width = of.kind == column_kind::utc_time ? 20 : 16;
        worksheet_set_column(m_book->sheet, lxw_col_t(i), lxw_col_t(i), width, nullptr);
        worksheet_write_string(m_book->sheet, 0, lxw_col_t(i), of.name.toUtf8().constData(),
                               m_book->header);
    }
    if (!before.isEmpty())
        m_book->remarks.append(u"sheet %1 goes on in %2: a sheet takes no more than %3 rows"_s.arg(
            before, name, QString::number(m_most_rows)));
    return true;
}

void xlsx_writer::end_sheet()
{
    if (m_book->sheet != nullptr && !m_book->places.isEmpty())
        worksheet_autofilter(m_book->sheet, 0, 0, m_book->line,
                             lxw_col_t(m_book->places.size() - 1));
    m_book->sheet = nullptr;
}

bool xlsx_writer::write(const row &of)
{
    if (qint64(m_book->line) == m_most_rows) {
        end_sheet();
        if (!begin_sheet())
            return false;
    }
    ++m_book->line;
    for (int i = 0; i < int(m_book->places.size()); ++i)
        write_cell(i, of, m_book->places[i]);
    return m_book->failure.isEmpty();
}

void xlsx_writer::write_cell(int column, const row &of, int place)
{
    const cell &value = cell_at(of, place);
    const auto line = m_book->line;
    const auto at = lxw_col_t(column);
    // The column of a time in UTC stands behind the one of its seconds.
    const qint64 seconds = m_book->columns[place].kind == column_kind::utc_time && place > 0
                               ? cell_at(of, place - 1).integer()
                               : 0;
    if (value.is == cell::kind::null)
        return;
    if (seconds != 0 && value.bytes.size() > 10 && seconds >= first_date && seconds <= last_date)
        worksheet_write_number(m_book->sheet, line, at, day_number(seconds), m_book->date);
    else if (value.is == cell::kind::integer && value.number <= most_exact_number &&
             value.number >= -most_exact_number)
        worksheet_write_number(m_book->sheet, line, at, double(value.number), nullptr);
    else
        write_text(column, value);
}

void xlsx_writer::write_text(int column, const cell &value)
{
    std::string scratch;
    size_t units = 0;
    const std::string_view plain = plain_text(value, scratch);
    const std::string text = sheet_text(plain, units);
    m_book->cells_cut += units > most_units_of_cell ? 1 : 0;
    m_book->cells_replaced += plain.find('\0') != std::string_view::npos ? 1 : 0;
    worksheet_write_string(m_book->sheet, m_book->line, lxw_col_t(column), text.c_str(), nullptr);
}

bool xlsx_writer::finish()
{
    if (m_book->book == nullptr)
        return false;
    end_sheet();
    // Frees the workbook, whatever comes of it.
    const lxw_error error = workbook_close(std::exchange(m_book->book, nullptr));
    if (error != LXW_NO_ERROR)
        m_book->failure = QString::fromUtf8(lxw_strerror(error));
    return m_book->failure.isEmpty();
}

QStringList xlsx_writer::remarks() const
{
    QStringList remarks = m_book->remarks;
    if (m_book->cells_cut > 0)
        remarks.append(u"%1 cells are cut after %2 characters, the most that a sheet takes"_s
                           .arg(m_book->cells_cut)
                           .arg(most_units_of_cell));
    if (m_book->cells_replaced > 0)
        remarks.append(u"%1 cells hold NUL characters, which stand as U+FFFD in the workbook"_s.arg(
            m_book->cells_replaced));
    return remarks;
}

QString xlsx_writer::failure() const
{
    return m_book->failure;
}

} // namespace results

#include "row_filter.h"

#include <algorithm>

#include "plain_text.h"
#include "told_time.h"

namespace results {

namespace {

bool holds_time(const row_filter &filter, const row &of, const QList<column> &columns)
{
    for (int place = 0; place < int(columns.size()); ++place) {
        const auto time = told_time(cell_at(of, place), columns[place].kind);
        if (time && *time >= filter.since.value_or(*time) && *time <= filter.until.value_or(*time))
            return true;
    }
    return false;
}

bool holds_text(const QString &text, const row &of)
{
    std::string shown;
    return std::any_of(of.cells.begin(), of.cells.end(), [&](const cell &value) {
        const std::string_view found = plain_text(value, shown);
        return QUtf8StringView(found.data(), qsizetype(found.size()))
            .toString()
            .contains(text, Qt::CaseInsensitive);
    });
}

bool holds_account(const QStringList &accounts, const row &of, const QList<column> &columns)
{
    const cell &account = cell_at(of, place_of(columns, column_kind::account));
    const QString name = QString::fromStdString(std::string(account.text()));
    return accounts.contains(name, Qt::CaseInsensitive);
}

} // namespace

bool row_filter::is_set() const
{
    return !accounts.isEmpty() || since || until || !text.isEmpty();
}

bool row_filter::matches(const row &of, const QList<column> &columns) const
{
    return (accounts.isEmpty() || holds_account(accounts, of, columns)) &&
           ((!since && !until) || holds_time(*this, of, columns)) &&
           (text.isEmpty() || holds_text(text, of));
}

const row *filtered_rows::next()
{
    const row *found = m_all->next();
    while (found != nullptr && !m_filter.matches(*found, m_all->columns()))
        found = m_all->next();
    return found;
}

} // namespace results

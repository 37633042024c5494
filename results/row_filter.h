#ifndef ROW_FILTER_H
#define ROW_FILTER_H

#include <QStringList>

#include <memory>
#include <optional>

#include "column.h"

namespace results {

/// Which rows somebody wants to see. Each condition that is set must hold.
struct row_filter
{
    QStringList accounts;        ///< one of them, in any letter case; none: all accounts
    std::optional<qint64> since; ///< one of the row's times lies there or later, in Unix seconds
    std::optional<qint64> until; ///< the same time lies there or earlier
    QString text;                ///< stands in some cell, in any letter case

    bool is_set() const;
    bool matches(const row &of, const QList<column> &columns) const;
};

/// The rows of another source that a filter lets pass.
class filtered_rows : public row_source
{
public:
    filtered_rows(std::unique_ptr<row_source> all, row_filter filter)
        : m_all(std::move(all)), m_filter(std::move(filter))
    {
    }

    QString name() const override { return m_all->name(); }
    QString title() const override { return m_all->title(); }
    const QList<column> &columns() const override { return m_all->columns(); }
    const row *next() override;
    QString failure() const override { return m_all->failure(); }

private:
    std::unique_ptr<row_source> m_all;
    row_filter m_filter;
};

} // namespace results

#endif

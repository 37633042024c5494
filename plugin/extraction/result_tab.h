#ifndef RESULT_TAB_H
#define RESULT_TAB_H

#include <QLatin1StringView>
#include <QString>

/// What is fixed about one result table and the artefact that fills it.
struct result_tab
{
    QLatin1StringView name;             ///< the table, which is also the tab that the host selects
    QLatin1StringView create_statement; ///< makes the table unless it is there
    QLatin1StringView insert_statement; ///< one placeholder for each value of a row
    QLatin1StringView signature; ///< of its operation: origin of its log lines, connection name
    QLatin1StringView log_tag;   ///< the operation's name in brackets
    QLatin1StringView opening;   ///< follows the tag in the line that opens a run
    QLatin1StringView insert_failure; ///< follows the tag when a row cannot be inserted
    bool failure_names_database;      ///< whether the database's path follows insert_failure

    /// Returns the log line that consists of the tag and `text`.
    QString log_line(QLatin1StringView text) const { return QString(log_tag) + text; }
};

#endif

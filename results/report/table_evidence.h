#ifndef TABLE_EVIDENCE_H
#define TABLE_EVIDENCE_H

#include <QString>

namespace results {

/// What rows of a table say before a court, and what they do not.
struct table_evidence
{
    QString proves;
    QString does_not_prove;
};

/// Both are empty for an unknown table.
table_evidence evidence_of(const QString &table);

} // namespace results

#endif

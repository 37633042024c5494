#ifndef REPORT_FACTS_H
#define REPORT_FACTS_H

#include <QJsonObject>
#include <QStringList>

#include <string>

namespace results {

/// What the entry of a run record tells, as HTML: source, programs, options, files with their
/// hashes, what was not read, and tables with their rows.
std::string html_of_run(const QJsonObject &run, const QString &title);

} // namespace results

#endif

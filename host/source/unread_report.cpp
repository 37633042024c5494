#include "unread_report.h"

#include "hive_precheck.h"

using namespace Qt::StringLiterals;

namespace {

/// The relative path of a hive of which the plug-in only says that it does not open.
QString hive_that_did_not_open(const QString &warning)
{
    const auto mark = ": cannot be opened as a registry hive"_L1;
    const qsizetype end = warning.indexOf(mark);
    return end < 0 ? QString() : warning.left(end);
}

} // namespace

QStringList unread_warnings(const source_volume &volume, const QStringList &lines)
{
    QStringList warnings;
    for (const QString &line : lines) {
        const QString warning =
            line.startsWith(volume.root()) ? line.mid(volume.root().size()) : line;
        const QString unopened = hive_that_did_not_open(warning);
        if (unopened.isEmpty() || check_hive_file(volume.file_of(unopened)).readable)
            warnings.append(warning);
    }
    warnings.removeDuplicates();
    return warnings;
}

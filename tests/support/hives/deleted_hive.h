#ifndef DELETED_HIVE_H
#define DELETED_HIVE_H

#include "deleted_records.h"

#include <QString>
#include <QStringList>

namespace test_support {

/// One line for each find: "key PATH state path-state", and below it "  value NAME size flaw".
inline QStringList lines_about(const deleted_records &records)
{
    static const QStringList paths{QStringLiteral("whole"), QStringLiteral("doubtful"),
                                   QStringLiteral("partial"), QStringLiteral("unknown")};
    static const QStringList flaws{QStringLiteral("there"), QStringLiteral("in use"),
                                   QStringLiteral("written over"), QStringLiteral("shared"),
                                   QStringLiteral("in blocks")};
    QStringList lines;
    for (const deleted_key &key : records.keys()) {
        lines.append(QStringLiteral("%1 %2: %3, path %4, list %5")
                         .arg(key.is_alive ? QStringLiteral("living") : QStringLiteral("key"),
                              records.path_of(key).join(u'\\'),
                              key.is_whole() ? QStringLiteral("whole") : QStringLiteral("part"),
                              paths.at(int(key.path)), flaws.at(int(key.list))));
        for (const deleted_value &value : key.values)
            lines.append(QStringLiteral("  %1 of %2: %3")
                             .arg(records.name_of(value), QString::number(value.data_size),
                                  flaws.at(int(value.data))));
    }
    return lines;
}

} // namespace test_support

#endif

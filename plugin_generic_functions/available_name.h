#ifndef AVAILABLE_NAME_H
#define AVAILABLE_NAME_H

#include <QString>
#include <QStringList>

/// Returns the first of NAME, "1_NAME", "2_NAME" and so on under which the folder holds none of a
/// file's parts, each of which is the name followed by one of the suffixes. The folder is made when
/// absent. Empty when cancelled, during the listing too.
QString available_name(const QString &file_name, const QString &folder_path,
                       const QStringList &suffixes, const QString &function_info);

#endif
